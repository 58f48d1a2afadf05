// SPDX-License-Identifier: Apache-2.0
#include "str/core/comparison.h"

namespace libstr
{

namespace
{

bool TakesPart(uint16_t kind) { return IsText(kind) || kind == CS_SEG_RAW || kind == CS_SEG_END; }

void NextInList(Side *side)
{
    while (++side->index < side->count && !TakesPart(side->list[side->index].kind))
        side->offset += side->list[side->index].length;
    const bool ended = side->index >= side->count;
    side->size = ended ? 0 : side->list[side->index].length;
    side->kind = ended ? uint16_t{CS_SEG_END} : side->list[side->index].kind;
}

void NextInWalk(Side *side)
{
    NextSegment(&side->walk);
    for (; !TakesPart(side->walk.kind); NextSegment(&side->walk))
        side->offset += side->walk.size;
    side->size = side->walk.size;
    side->kind = side->walk.kind;
}

void NextOfOne(Side *side)
{
    side->size = 0;
    side->kind = CS_SEG_END;
}

int WalkLength(size_t limit) { return limit == kNoByteLimit ? -1 : static_cast<int>(limit); }

void EnterSegment(Side *side)
{
    side->run.at = side->str + side->offset;
    side->run.size = side->size;
    if (side->offset < side->limit)
        side->run.size = std::min(side->run.size, side->limit - side->offset);
}

void Begin(Side *side, const char *str, size_t limit, void (*next)(Side *))
{
    side->str = str;
    side->limit = limit;
    side->next = next;
    side->offset = side->size = 0;
}

} // namespace

void BeginSides(Side *side1, const char *s1, const CSDescriptor *cs1, size_t limit1, Side *side2,
                const char *s2, const CSDescriptor *cs2, size_t limit2)
{
    Begin(side1, s1, limit1, NextInWalk);
    Begin(side2, s2, limit2, NextInWalk);
    WalkSegments(&side1->walk, s1, cs1, WalkLength(limit1));
    WalkSegments(&side2->walk, s2, cs2, WalkLength(limit2));
    if (!side1->walk.own) {
        side1->next = NextInList;
        side1->list = ccs_GetAllStrs(cs1, s1, WalkLength(limit1), &side1->count);
        side1->index = -1;
    }
    FetchSegment(side1);
    FetchSegment(side2);
}

void BeginOneSegment(Side *side, const char *str, const CSDescriptor *cs, size_t limit)
{
    Begin(side, str, limit, NextOfOne);
    side->size = strnlen(str, limit);
    side->kind = side->size != 0 ? cs->csNum : uint16_t{CS_SEG_END};
    EnterSegment(side);
}

void FetchSegment(Side *side)
{
    side->offset += side->size;
    side->next(side);
    EnterSegment(side);
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

RunResult CompareUpShiftedRun(const Run &run1, const Run &run2, int charLimit,
                              const CaseTableRecord *table)
{
    const auto differ = [](const UpShifted &upper1, const UpShifted &upper2) {
        return upper1.written != upper2.written || upper1.bytes[0] != upper2.bytes[0] ||
                       (upper1.written == 2 && upper1.bytes[1] != upper2.bytes[1])
                   ? 1
                   : 0;
    };
    return CompareRunInUpperCase(run1, run2, charLimit, table, differ);
}

} // namespace libstr
