// SPDX-License-Identifier: Apache-2.0
//
// The one-character lookup: how everything that disregards case sees a case table.
#ifndef STR_CORE_UPSHIFT_H
#define STR_CORE_UPSHIFT_H

#include <str/case.h>

#include "str/core/bytemap.h"
#include "str/core/case_record.h"

namespace libstr
{

// A case table as a run of text needs it, its references resolved once.
struct UpShiftTable {
    ByteMap map;
    const PairRule *expansions;
    int32_t numExpansions; // 0 for no list
    const LeadEntry *leads;
    int32_t numLeads; // 0 for no list

    // Where the first entry of each lead byte stands, counted from 1, once a long run has asked.
    bool leadsAreIndexed;
    uint16_t leadIndex[256];
};

void SetUpShiftTable(UpShiftTable *table, const CaseTableRecord *record);

// The upper case of one character: what it is, in one byte or two, and how many bytes it was.
struct UpShifted {
    uint8_t bytes[2];
    int written;
    int consumed;
};

// What a character that has no one-byte upper case in the byte map becomes.
UpShifted UpShiftByLists(UpShiftTable *table, const uint8_t *in, ptrdiff_t avail);

inline UpShifted UpShiftOne(UpShiftTable *table, const uint8_t *in, ptrdiff_t avail)
{
    const uint8_t upper = table->map.upper[*in];
    return upper != 0 ? UpShifted{{upper, 0}, 1, 1} : UpShiftByLists(table, in, avail);
}

} // namespace libstr

#endif
