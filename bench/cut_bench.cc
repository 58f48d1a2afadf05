// SPDX-License-Identifier: Apache-2.0
//
// Truncation, bounded copies and splitting.  With iconv alone one converts the text to wide
// characters, cuts there and converts back.  To truncate, it is enough to convert as many bytes as
// the budget has and to look how far iconv came.
#include "bench/support.h"
#include "bench/texts.h"

#include <glib.h>
#include <iconv.h>
#include <str/split.h>
#include <str/truncate.h>

#include <cstring>
#include <string_view>

namespace
{

using bench::Sort;
using bench::Text;
using bench::Way;

constexpr size_t kMost = 128 * 1024; // bytes of a text
constexpr size_t kBudgets[] = {16, 64, 256, 4096};
constexpr size_t kGrowingBudgets[] = {1024, 2048, 4096, 8192, 16384, 32768, 65536};

// What the ways write to.
wchar_t theWide[kMost];
char theCopy[kMost];
char theHalves[2][kMost];
std::string_view theParts[2];

// A result is wiped out once it is read, so that it does not pass for that of the next way.
std::string Taken(std::string outcome)
{
    std::memset(theCopy, 0xFF, sizeof theCopy);
    std::memset(theHalves, 0xFF, sizeof theHalves);
    return outcome;
}

// ---- iconv ---------------------------------------------------------------------------------

// The wide characters of the first `size` bytes; of a character that this cuts, nothing.  `*taken`
// receives the bytes that they take.
size_t Decode(iconv_t converter, const Text &text, size_t size, size_t *taken)
{
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char *in = const_cast<char *>(text.bytes.data());
    char *out = reinterpret_cast<char *>(theWide);
    size_t inLeft = size, outLeft = sizeof theWide;
    iconv(converter, &in, &inLeft, &out, &outLeft);
    *taken = size - inLeft;
    return (sizeof theWide - outLeft) / sizeof(wchar_t);
}

// The bytes of as many of the characters as fit in `room`.
size_t Encode(iconv_t encoder, wchar_t *characters, size_t count, char *out, size_t room)
{
    iconv(encoder, nullptr, nullptr, nullptr, nullptr);
    char *in = reinterpret_cast<char *>(characters);
    size_t inLeft = count * sizeof(wchar_t), outLeft = room;
    iconv(encoder, &in, &inLeft, &out, &outLeft);
    return room - outLeft;
}

using WithConverters = size_t (*)(const Text &text, iconv_t converter, iconv_t encoder);

template <WithConverters way>
size_t OpenedForTheText(const Text &text)
{
    const iconv_t converter = iconv_open("WCHAR_T", text.sort.iconv);
    const iconv_t encoder = iconv_open(text.sort.iconv, "WCHAR_T");
    const size_t answer = way(text, converter, encoder);
    iconv_close(encoder);
    iconv_close(converter);
    return answer;
}

template <WithConverters way>
size_t KeptOpen(const Text &text)
{
    return way(text, text.converter, text.encoder);
}

// ---- Truncation: to half the bytes, filled up with NULs ------------------------------------

size_t Budget(const Text &text) { return text.bytes.size() / 2; }

size_t FillUp(const Text &text, size_t kept)
{
    std::memset(theCopy + kept, 0, Budget(text) - kept);
    return kept;
}

size_t Truncate(const Text &text)
{
    unsigned int kept;
    str_truncate(theCopy, text.bytes.c_str(), static_cast<unsigned int>(Budget(text)), &text.cs,
                 &kept);
    return kept;
}

size_t ThereAndBack(const Text &text, iconv_t converter, iconv_t encoder)
{
    size_t taken;
    const size_t count = Decode(converter, text, text.bytes.size(), &taken);
    return FillUp(text, Encode(encoder, theWide, count, theCopy, Budget(text)));
}

size_t ThereOnly(const Text &text)
{
    size_t kept;
    Decode(text.converter, text, Budget(text), &kept);
    std::memcpy(theCopy, text.bytes.data(), kept);
    return FillUp(text, kept);
}

// The characters, since an escape sequence at the end is kept or not, and any bytes that are not
// filled up.
std::string Kept(const Text &text, size_t kept)
{
    std::string left(theCopy + kept, Budget(text) - kept);
    std::erase(left, '\0');
    return Taken(bench::Recode("UTF-8", text.sort.iconv, {theCopy, kept}) + left);
}

const std::vector<Way> kTruncations = {{"libstr", Truncate},
                                       {"iconv there and back", OpenedForTheText<ThereAndBack>},
                                       {"the same, kept open", KeptOpen<ThereAndBack>},
                                       {"there only, kept open", ThereOnly}};

// ---- Splitting: at half the columns --------------------------------------------------------

size_t Split(const Text &text)
{
    char *second;
    unsigned int firstLen, secondLen;
    const char *first =
        str_SplitByDispLen(text.bytes.c_str(), static_cast<int>(text.characters / 2), &second,
                           &firstLen, &secondLen, &text.cs);
    theParts[0] = {first, firstLen};
    theParts[1] = {second, secondLen};
    return firstLen;
}

size_t ConvertBothHalves(const Text &text, iconv_t converter, iconv_t encoder)
{
    size_t taken;
    const size_t count = Decode(converter, text, text.bytes.size(), &taken);
    const size_t half = count / 2;
    theParts[0] = {theHalves[0], Encode(encoder, theWide, half, theHalves[0], kMost)};
    theParts[1] = {theHalves[1],
                   Encode(encoder, theWide + half, count - half, theHalves[1], kMost)};
    return theParts[0].size();
}

std::string Parts(const Text &text, size_t)
{
    std::string parts;
    for (const std::string_view &part : theParts)
        parts += bench::Recode("UTF-8", text.sort.iconv, std::string(part)) + '\n';
    return Taken(parts);
}

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

// Copies the whole characters among the first `n` bytes and fills up with NULs.
void CopyByGLib(const char *src, size_t n)
{
    size_t kept = strnlen(src, n + 1);
    if (kept > n)
        kept = static_cast<size_t>(g_utf8_find_prev_char(src, src + n + 1) - src);
    std::memcpy(theCopy, src, kept);
    std::memset(theCopy + kept, 0, n - kept);
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
