// SPDX-License-Identifier: Apache-2.0
//
// Display width, beside the way through wide characters.
#include "bench/texts.h"
#include "bench/width_ways.h"

namespace
{

using namespace bench::width;
using bench::Sort;
using bench::Way;

constexpr size_t kSizes[] = {16, 64, 256, 4096};

const std::vector<Way> kWaysOfSets = {
    {"libstr", Ours}, {"iconv, opened anew", OpenedForTheText}, {"iconv, kept open", KeptOpen}};
const std::vector<Way> kWaysOfUtf8 = {
    {"libstr", Ours}, {"mbstowcs, wcswidth", Mbstowcs}, {"g_utf8_strlen", CountedByGLib}};

struct Row {
    Sort sort;
    const std::vector<std::string> &pieces;
    const std::vector<Way> &ways;
};
const Row kRows[] = {
    {{"ISO-2022-JP, subjects", "ISO-2022-JP", "ISO-2022-JP"}, bench::kSubjects, kWaysOfSets},
    {{"ISO-2022-JP, letter", "ISO-2022-JP", "ISO-2022-JP"}, bench::kJapaneseLetter, kWaysOfSets},
    {{"EUC-JP, letter", "EUC-JP", "EUC-JP"}, bench::kJapaneseLetter, kWaysOfSets},
    {{"EUC-JP, directory", "EUC-JP", "EUC-JP"}, bench::kDirectory, kWaysOfSets},
    {{"T.61, letter", "T.61", "T.61-8BIT"}, bench::kLetter, kWaysOfSets},
    {{"ISO-8859-1, letter", "ISO-8859-1", "ISO-8859-1"}, bench::kLetter, kWaysOfSets},
    {{"UTF-8, letter", "UTF8", "UTF-8"}, bench::kLetter, kWaysOfUtf8},
    {{"UTF-8, Japanese letter", "UTF8", "UTF-8"}, bench::kJapaneseLetter, kWaysOfUtf8},
};

const bool theRegistration = [] {
    for (const Row &row : kRows)
        for (const size_t size : kSizes)
            bench::Compare("display width", bench::MakeText(row.sort, row.pieces, size), row.ways);
    return true;
}();

} // namespace
