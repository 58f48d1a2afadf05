// SPDX-License-Identifier: Apache-2.0
#include "str/core/comparison.h"

namespace libstr
{

namespace
{

// The first string, by the list of its segments.
struct {
    const CSSegment *list;
    int count;
    int index;
    unsigned int size; // of the segment returned last
    const char *str;
} theListWalk;

// The second string, segment by segment.
SegmentWalk theStepWalk;

bool TakesPart(uint16_t kind) { return IsText(kind) || kind == CS_SEG_RAW || kind == CS_SEG_END; }

} // namespace

const char *NextSegmentFromList(const CSDescriptor *cs, const char *str, int len, bool first,
                                size_t *segLen, uint16_t *kind, size_t *offset)
{
    auto &walk = theListWalk;
    if (first) {
        walk = {nullptr, 0, 0, 0, str};
        walk.list = ccs_GetAllStrs(cs, str, len, &walk.count);
        *offset = 0;
    } else {
        ++walk.index;
        *offset += walk.size;
    }
    while (walk.index < walk.count && !TakesPart(walk.list[walk.index].kind))
        *offset += walk.list[walk.index++].length;
    if (walk.index < walk.count) {
        *kind = walk.list[walk.index].kind;
        *segLen = walk.size = walk.list[walk.index].length;
    } else {
        *kind = CS_SEG_END;
    }
    return walk.str + *offset;
}

const char *NextSegmentByWalk(const CSDescriptor *cs, const char *str, int len, bool first,
                              size_t *segLen, uint16_t *kind, size_t *offset)
{
    SegmentWalk &walk = theStepWalk;
    if (first) {
        walk = WalkSegments(str, cs, len);
        *offset = 0;
    }
    do {
        *offset += walk.size;
        NextSegment(&walk);
    } while (!TakesPart(walk.kind));
    *kind = walk.kind;
    *segLen = walk.size;
    return walk.at;
}

bool EquivalentSegmentSets(uint16_t kind1, uint16_t kind2, uint16_t *common)
{
    if (kind1 == kind2) {
        *common = kind1;
        return true;
    }
    if (kind1 == CS_SEG_RAW || kind2 == CS_SEG_RAW)
        return false;
    const SetFlags set1 = FlagsOf(kind1);
    const SetFlags set2 = FlagsOf(kind2);
    if (IsAscii(set1) && HoldsAscii(set2))
        *common = kind2;
    else if (IsAscii(set2) && HoldsAscii(set1))
        *common = kind1;
    else
        return false;
    return true;
}

const CaseTableRecord *GetSegmentUpShiftTable(uint16_t kind)
{
    const CSDescriptor cs = {kind, 0};
    CaseTableRecord *table = nullptr;
    str_GetTouTable(&cs, &table);
    return table;
}

} // namespace libstr
