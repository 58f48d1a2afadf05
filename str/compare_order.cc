// SPDX-License-Identifier: Apache-2.0
//
// The order of two texts, each in a set of its own.
#include "str/core/comparison.h"

#include <array>
#include <bit>

using namespace libstr;

namespace
{

// Where an upper-case character comes in the order.  Bytes are signed: those of 0x80 and above come
// first.
int OrderValue(const UpShifted &upper)
{
    const auto [first, second] = std::bit_cast<std::array<int8_t, 2>>(upper.bytes);
    return upper.written == 1 ? first : first * 256 + second;
}

// The last byte of a set's designation; 0 for none.
int FinalByte(const CSDescriptor *cs)
{
    const char *const designation = ccs_GetDesignation(cs, 1);
    if (designation == nullptr || *designation == '\0')
        return 0;
    return static_cast<int8_t>(designation[std::strlen(designation) - 1]);
}

// The order of two sets whose texts cannot be compared: single-byte sets first, then by
// designation, then by number.
int OrderOfSets(uint16_t kind1, uint16_t kind2)
{
    const CSDescriptor cs1 = {kind1, 0};
    const CSDescriptor cs2 = {kind2, 0};
    const bool bytes1 = HasByteCharacters(&cs1);
    const bool bytes2 = HasByteCharacters(&cs2);
    if (bytes1 != bytes2)
        return bytes1 ? -1 : 1;
    const int difference = FinalByte(&cs1) - FinalByte(&cs2);
    return difference != 0 ? difference : static_cast<int16_t>(kind1) - static_cast<int16_t>(kind2);
}

// The order of two strings of which one or both have ended.
int OrderOfEnds(bool ended1, bool ended2) { return ended1 && ended2 ? 0 : ended1 ? -1 : 1; }

RunResult OrderRun(const Run &run1, const Run &run2, const CaseTableRecord *table)
{
    if (table != nullptr)
        return CompareRunInUpperCase(run1, run2, kNoLimit, table,
                                     [](const UpShifted &upper1, const UpShifted &upper2) {
                                         return OrderValue(upper1) - OrderValue(upper2);
                                     });
    const size_t bytes = std::min(run1.size, run2.size);
    return {std::strncmp(run1.at, run2.at, bytes), bytes, bytes, 0};
}

} // namespace

int str_cmpTextStr(const char *s1, const char *s2, int caseless, const CSDescriptor *cs1,
                   const CSDescriptor *cs2)
{
    if (*s1 == '\0' || *s2 == '\0')
        return OrderOfEnds(*s1 == '\0', *s2 == '\0');
    Side side1, side2;
    BeginSides(&side1, s1, cs1, kNoByteLimit, &side2, s2, cs2, kNoByteLimit);
    CaseTables tables = {};
    for (;;) {
        const bool ended1 = side1.kind == CS_SEG_END;
        const bool ended2 = side2.kind == CS_SEG_END;
        if (ended1 || ended2)
            return OrderOfEnds(ended1, ended2);
        uint16_t common = CS_SEG_NONE;
        if (!EquivalentSegmentSets(side1.kind, side2.kind, &common))
            return OrderOfSets(side1.kind, side2.kind);
        const RunResult run =
            OrderRun(side1.run, side2.run, caseless != 0 ? TableOfKind(&tables, common) : nullptr);
        if (run.order != 0)
            return run.order;
        PassRun(&side1, &side2, run);
    }
}
