// SPDX-License-Identifier: Apache-2.0
//
// The upper case of one character.  All code that disregards case reads case tables through it.
#ifndef STR_CORE_UPSHIFT_H
#define STR_CORE_UPSHIFT_H

#include <str/case.h>

#include <platform/ccs.h>

#include "base/bytemap.h"
#include "str/core/case_record.h"
#include "str/core/registry.h"

#include <cstring>
#include <iterator>

namespace libstr
{

// What changes in the pairs of bytes that begin with one lead, for each trail: the pair xor its
// upper case, or kSeeLists.
struct PairRow {
    static constexpr uint16_t kSeeLists = 0xFFFF;

    uint16_t change[256];
};

// A case table with its references resolved.
struct UpShiftTable {
    ByteMap map;
    const PairRule *expansions;
    int32_t numExpansions; // 0 without a list
    const LeadEntry *leads;
    int32_t numLeads; // 0 without a list
    const char *base; // what the references of the leads are offsets from; null: of this process

    // The place of each lead byte's first entry, counted from 1; once the table has been indexed.
    bool isIndexed;
    uint16_t leadIndex[256];

    const PairRow *pairs; // null if not prepared
    uint8_t pairRow[256]; // of each lead byte
};

// So many rows hold the pairs of every table that is shipped.  The first is for all other leads.
inline constexpr int kMostPairRows = 40;

// The case table of a set for which none was registered a moment ago; null for none.  Other threads
// that want it too wait until one of them has it.
CaseTableRecord *FirstTable(const CSDescriptor *cs);

// The case table of a set that has case, from the number that is registered for it, 0 for none yet;
// null for none.
inline CaseTableRecord *TableOfCased(const CSDescriptor *cs, uint16_t number)
{
    return number != 0 ? registry::RecordOf(number) : FirstTable(cs);
}

// The case table of a set; null for none.
inline const CaseTableRecord *CaseTableOf(const CSDescriptor *cs)
{
    CaseTableRecord *table = nullptr;
    str_GetTouTable(cs, &table);
    return table;
}

// The case tables of the kinds of segments met last.  Most texts take turns between a few.
struct CaseTables {
    struct Entry {
        uint16_t kind; // 0 at first, and no text has kind 0
        const CaseTableRecord *table;
    };
    Entry entries[4];
};

// As CaseTableOf, for the set that a segment's kind names.
inline const CaseTableRecord *TableOfKind(CaseTables *tables, uint16_t kind)
{
    CaseTables::Entry &entry = tables->entries[kind % std::size(tables->entries)];
    if (entry.kind == kind)
        return entry.table;
    const CSDescriptor cs = {kind, 0};
    const CaseTableRecord *const table = CaseTableOf(&cs);
    if (table != nullptr)
        entry = {kind, table};
    return table;
}

void SetUpShiftTable(UpShiftTable *table, const CaseTableRecord *record, const char *base);

// Makes long runs fast.
void IndexUpShiftTable(UpShiftTable *table);

// Fills in pairRow of an indexed table and the rows.  Returns how many there are; 0 without pairs.
// A lead for which there is no room gets the first row.
int FindPairRows(UpShiftTable *table, PairRow (&rows)[kMostPairRows]);

// The upper case of one character, in one byte or two, and how many bytes the character had.
struct UpShifted {
    uint8_t bytes[2];
    int written;
    int consumed;
};

// The upper case of a character that has none in the byte map.
UpShifted UpShiftByLists(const UpShiftTable &table, const uint8_t *in, ptrdiff_t avail);

inline UpShifted UpShiftOne(const UpShiftTable &table, const uint8_t *in, ptrdiff_t avail)
{
    const uint8_t upper = table.map.upper[*in];
    return upper != 0 ? UpShifted{{upper, 0}, 1, 1} : UpShiftByLists(table, in, avail);
}

inline uint16_t LoadPair(const void *in)
{
    uint16_t pair;
    std::memcpy(&pair, in, sizeof pair);
    return pair;
}

// What changes in the pair at `in`, by a table with pairs.
inline uint16_t PairChange(const UpShiftTable &table, const uint8_t *in)
{
    return table.pairs[table.pairRow[in[0]]].change[in[1]];
}

// Whether the pairs at `a` and `b` have the same upper case, without a look at the lists.
inline bool IsPairAlike(const UpShiftTable &table, const uint8_t *a, const uint8_t *b)
{
    const uint16_t changeA = PairChange(table, a), changeB = PairChange(table, b);
    return changeA != PairRow::kSeeLists && changeB != PairRow::kSeeLists &&
           (LoadPair(a) ^ changeA) == (LoadPair(b) ^ changeB);
}

// Writes the upper case of so many pairs of bytes to `out`, up to the first that has to be looked
// up in the lists.  Returns how many it wrote.
size_t MapPairs(const UpShiftTable &table, const uint8_t *in, size_t pairs, uint8_t *out);

// How many of the first `pairs` pairs of bytes of `a` and `b` have the same upper case, up to the
// first that has to be looked up.
size_t PairsAlike(const UpShiftTable &table, const uint8_t *a, const uint8_t *b, size_t pairs);

} // namespace libstr

#endif
