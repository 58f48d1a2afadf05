// SPDX-License-Identifier: Apache-2.0
//
// Upper case of texts in their sets.
#include "bench/tables.h"
#include "bench/texts.h"
#include "bench/upper_ways.h"

#include <algorithm>
#include <iterator>

namespace
{

using namespace bench::upper;
using bench::Way;

constexpr size_t kSizes[] = {16, 64, 256, 1024, 4096};

// ---- The comparisons -----------------------------------------------------------------------

struct Row {
    bench::Sort sort;
    const std::vector<std::string> &pieces;
    std::vector<Way> peers;
};

const bool theRegistration = [] {
    MakeTable();
    std::vector<Row> rows = {
        {{"ISO-8859-1, letter", kLatin1, kLatin1},
         bench::kLetter,
         {{"256-byte table", ByTable}, {"ICU, kept open", ByIcu<kLatin1>}, {"GLib", ByGLib}}},
        {{"T.61, letter", "T.61", "T.61-8BIT"},
         bench::kLetter,
         {{"iconv, kept open", ByIconv}, {"GLib", ByGLib}}},
        {{"ISO-2022-JP, subjects", kJapanese, kJapanese},
         bench::kSubjects,
         {{"iconv, kept open", ByIconv}, {"ICU, kept open", ByIcu<kJapanese>}, {"GLib", ByGLib}}},
        {{"UTF-8, letter", "UTF8", "UTF-8"},
         bench::kLetter,
         {{"ucasemap_utf8ToUpper", ByIcuInUtf8}, {"g_utf8_strup", ByGLibInUtf8}}},
    };
    const bench::ShippedTables tables;
    for (const Row &row : rows) // the case tables stay in the registry
        Ours(bench::MakeText(row.sort, row.pieces, 256));
    if (bench::theLatin1 != nullptr)
        rows[0].peers.push_back({"toupper_l", ByToupper});
    for (const Row &row : rows)
        for (const size_t size : kSizes) {
            std::vector<Way> ways = {{"libstr", Ours}};
            std::copy(row.peers.begin(), row.peers.end(), std::back_inserter(ways));
            bench::Compare("str_ToUpper", bench::MakeText(row.sort, row.pieces, size), ways,
                           UpperCase);
        }
    return true;
}();

} // namespace
