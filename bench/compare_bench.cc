// SPDX-License-Identifier: Apache-2.0
//
// Comparison of equal texts, which takes longest: without regard to case with a text in capital
// letters, and with regard to case with a copy.
#include "bench/compare_ways.h"
#include "bench/tables.h"
#include "bench/texts.h"

namespace
{

using namespace bench::comparison;
using bench::Text;
using bench::Way;

constexpr size_t kSizes[] = {16, 64, 256, 4096, 65536};

// ---- The comparisons -----------------------------------------------------------------------

constexpr char kLatin1[] = "ISO-8859-1", kJapanese[] = "ISO-2022-JP";

struct Row {
    bench::Sort sort;
    std::vector<std::string> pieces;
    std::vector<Way> peers;
};

void CompareAll(const char *family, const Way &ours, const Row &row, Text (*with)(Text))
{
    for (const size_t size : kSizes) {
        std::vector<Way> ways = {ours};
        ways.insert(ways.end(), row.peers.begin(), row.peers.end());
        bench::Compare(family, with(bench::MakeText(row.sort, row.pieces, size)), ways);
    }
}

const bool theRegistration = [] {
    const Way icu = {"ICU, kept open", ByIcu}, glib = {"GLib", ByGLib};
    const Way iconv = {"iconv, wcscasecmp", ByIconv}, icu8 = {"ucasemap", ByIcuInUtf8};
    std::vector<Row> rows = {
        {{"ISO-8859-1, letter", kLatin1, kLatin1}, bench::kLetter, {icu, glib}},
        {{"T.61, letter", "T.61", "T.61-8BIT"}, bench::kLetter, {iconv, glib}},
        {{"ISO-2022-JP, subjects", kJapanese, kJapanese}, bench::kSubjects, {iconv, icu, glib}},
        {{"UTF-8, letter", "UTF8", "UTF-8"}, bench::kLetter, {icu8, icu, glib}},
        {{"UTF-8, Greek", "UTF8", "UTF-8"}, bench::kGreekLetter, {icu8, icu, glib}},
        {{"ASCII", "IA5", "US-ASCII"},
         {"Dear ", "Sir ", "or ", "Madam, ", "your ", "Order ", "No. 204 ", "is ", "on ", "its ",
          "way. "},
         {{"strcasecmp", ByStrcasecmp}, icu, glib}},
    };
    const bench::ShippedTables tables;
    for (const Row &row : rows) // the case tables stay in the registry
        Ours(WithCapitals(bench::MakeText(row.sort, row.pieces, 256)));
    if (bench::theLatin1 != nullptr)
        rows[0].peers.push_back({"strcasecmp_l", InLatin1});
    for (const Row &row : rows)
        CompareAll("str_strucasecmp", {"libstr", Ours}, row, WithCapitals);
    for (const size_t i : {0U, 2U})
        CompareAll("str_strcmp", {"libstr", OursInCase},
                   {rows[i].sort, rows[i].pieces, {{"strcmp", ByStrcmp}}}, WithCopy);
    return true;
}();

} // namespace
