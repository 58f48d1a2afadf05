// SPDX-License-Identifier: Apache-2.0
//
// Truncation, bounded copies and splitting.
#include "bench/cut_ways.h"
#include "bench/texts.h"

namespace
{

using namespace bench::cut;
using bench::Sort;
using bench::Text;
using bench::Way;

constexpr size_t kBudgets[] = {16, 64, 256, 4096};
constexpr size_t kGrowingBudgets[] = {1024, 2048, 4096, 8192, 16384, 32768, 65536};

const std::vector<Way> kTruncations = {{"libstr", Truncate},
                                       {"iconv there and back", OpenedForTheText<ThereAndBack>},
                                       {"the same, kept open", KeptOpen<ThereAndBack>},
                                       {"there only, kept open", ThereOnly}};

const std::vector<Way> kSplits = {{"libstr", Split},
                                  {"iconv there and back", OpenedForTheText<ConvertBothHalves>},
                                  {"the same, kept open", KeptOpen<ConvertBothHalves>}};

// ---- Bounded copies: to half the bytes -----------------------------------------------------

size_t CopyFilled(const Text &text)
{
    str_strncpy(theCopy, text.bytes.c_str(), static_cast<unsigned int>(Budget(text)), &text.cs);
    return Budget(text);
}

size_t CopyEnded(const Text &text)
{
    str_strlcpy(theCopy, text.bytes.c_str(), static_cast<unsigned int>(Budget(text)), &text.cs);
    return Budget(text);
}

size_t Strncpy(const Text &text)
{
    std::strncpy(theCopy, text.bytes.c_str(), Budget(text));
    return Budget(text);
}

size_t CopyFilledByGLib(const Text &text)
{
    CopyByGLib(text.bytes.c_str(), Budget(text));
    return Budget(text);
}

size_t CopyEndedByGLib(const Text &text)
{
    CopyByGLib(text.bytes.c_str(), Budget(text) - 1);
    theCopy[Budget(text) - 1] = '\0';
    return Budget(text);
}

std::string Copied(const Text &, size_t size) { return Taken({theCopy, size}); }

const std::vector<Way> kFilledBytes = {{"libstr", CopyFilled}, {"strncpy", Strncpy}};
const std::vector<Way> kFilledUtf8 = {{"libstr", CopyFilled},
                                      {"g_utf8_find_prev_char", CopyFilledByGLib}};
const std::vector<Way> kEndedUtf8 = {{"libstr", CopyEnded},
                                     {"g_utf8_find_prev_char", CopyEndedByGLib}};

// ---- The comparisons -----------------------------------------------------------------------

struct Row {
    Sort sort;
    const std::vector<std::string> &pieces;
};
const Row kSets[] = {
    {{"ISO-2022-JP, subjects", "ISO-2022-JP", "ISO-2022-JP"}, bench::kSubjects},
    {{"ISO-2022-JP, letter", "ISO-2022-JP", "ISO-2022-JP"}, bench::kJapaneseLetter},
    {{"EUC-JP, directory", "EUC-JP", "EUC-JP"}, bench::kDirectory},
    {{"T.61, letter", "T.61", "T.61-8BIT"}, bench::kLetter},
    {{"ISO-8859-1, letter", "ISO-8859-1", "ISO-8859-1"}, bench::kLetter},
};
const Row kBytes[] = {{{"ISO-8859-1, letter", "ISO-8859-1", "ISO-8859-1"}, bench::kLetter}};
const Row kUtf8[] = {
    {{"UTF-8, letter", "UTF8", "UTF-8"}, bench::kLetter},
    {{"UTF-8, Japanese letter", "UTF8", "UTF-8"}, bench::kJapaneseLetter},
};

template <size_t Count>
void CompareAll(const char *family, const Row (&rows)[Count], const std::vector<Way> &ways,
                bench::Outcome outcome)
{
    for (const Row &row : rows)
        for (const size_t budget : kBudgets)
            bench::Compare(family, bench::MakeText(row.sort, row.pieces, 2 * budget), ways,
                           outcome);
}

void CompareGrowth(const char *family, const std::vector<Way> &ways, bench::Outcome outcome)
{
    for (const Row &row : kSets) {
        std::vector<Text> texts;
        for (const size_t budget : kGrowingBudgets)
            texts.push_back(bench::MakeText(row.sort, row.pieces, 2 * budget));
        bench::CompareGrowth(family, texts, ways, outcome);
    }
}

const bool theRegistration = [] {
    constexpr const char *truncation = "str_truncate to half the bytes";
    constexpr const char *split = "str_SplitByDispLen at half the columns";
    CompareAll(truncation, kSets, kTruncations, Kept);
    CompareAll(split, kSets, kSplits, Parts);
    CompareAll("str_strncpy of half the bytes", kBytes, kFilledBytes, Copied);
    CompareAll("str_strncpy of half the bytes", kUtf8, kFilledUtf8, Copied);
    CompareAll("str_strlcpy to half the bytes", kUtf8, kEndedUtf8, Copied);
    CompareGrowth(truncation, kTruncations, Kept);
    CompareGrowth(split, kSplits, Parts);
    return true;
}();

} // namespace
