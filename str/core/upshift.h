// SPDX-License-Identifier: Apache-2.0
//
// The upper case of one character.  All code that disregards case reads case tables through it.
#ifndef STR_CORE_UPSHIFT_H
#define STR_CORE_UPSHIFT_H

#include <str/case.h>

#include "base/bytemap.h"
#include "str/core/case_record.h"

namespace libstr
{

// A case table with its references resolved, once for a run of text.
struct UpShiftTable {
    ByteMap map;
    const PairRule *expansions;
    int32_t numExpansions; // 0 without a list
    const LeadEntry *leads;
    int32_t numLeads; // 0 without a list

    // The place of each lead byte's first entry, counted from 1.  Filled in for long runs only.
    bool leadsAreIndexed;
    uint16_t leadIndex[256];
};

// The case table of a set; null for none.
inline const CaseTableRecord *CaseTableOf(const CSDescriptor *cs)
{
    CaseTableRecord *table = nullptr;
    str_GetTouTable(cs, &table);
    return table;
}

void SetUpShiftTable(UpShiftTable *table, const CaseTableRecord *record);

// The upper case of one character, in one byte or two, and how many bytes the character had.
struct UpShifted {
    uint8_t bytes[2];
    int written;
    int consumed;
};

// The upper case of a character that has none in the byte map.
UpShifted UpShiftByLists(UpShiftTable *table, const uint8_t *in, ptrdiff_t avail);

inline UpShifted UpShiftOne(UpShiftTable *table, const uint8_t *in, ptrdiff_t avail)
{
    const uint8_t upper = table->map.upper[*in];
    return upper != 0 ? UpShifted{{upper, 0}, 1, 1} : UpShiftByLists(table, in, avail);
}

} // namespace libstr

#endif
