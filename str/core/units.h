// SPDX-License-Identifier: Apache-2.0
//
// The unit-length rule of width, truncation and splitting: how long the unit is that starts at a
// byte of a text segment.
//
//     low seven bits below 0x20     a control function, except above 0x7F in a set without C1; the
//                                   service knows its length
//     0x20 and 0x7F                 one byte
//     any other byte                a character: a base unit, or the set's fixed number of bytes
//
// What depends on the set alone is asked once per segment.  In most text, long runs of characters
// need no question at all.  They are passed over in blocks of bytes:
//
//     UnitScan scan = ScanUnits(UnitRuleOf(segCs), seg, limit);
//     for (unsigned int offset = 0; offset < limit;) {
//         offset += PlainBytes(&scan, offset);  ... of characters of 1 << scan.shift bytes
//         if (offset < limit)
//             ... the unit at offset, by UnitLength(scan.rule, ...)
//     }
#ifndef STR_CORE_UNITS_H
#define STR_CORE_UNITS_H

#include "base/blocks.h"
#include "str/core/sets.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace libstr
{

// The bytes of a segment that a caller passes: a NUL ends every text.
inline unsigned int BeforeNul(const char *seg, unsigned int size)
{
    return static_cast<unsigned int>(strnlen(seg, size));
}

struct UnitRule {
    const CSDescriptor *cs; // of the segment
    bool baseUnits;         // lengths come from the service, character by character,
    bool asciiUnits;        // ... but an ASCII character is a unit of one byte
    bool noC1;              // 0x80 to 0x9F are characters
    int bytes;              // of every character, where baseUnits is false
};

inline UnitRule UnitRuleOf(const CSDescriptor *segCs)
{
    const SetFlags set = segCs;
    const bool baseUnits = HasBaseUnits(set);
    return {segCs, baseUnits, baseUnits && HoldsAscii(set), HasNoC1(set),
            baseUnits ? 1 : ccs_GetNumBytes(segCs)};
}

inline bool IsControl(const UnitRule &rule, char byte)
{
    return (byte & 0x60) == 0 && (!rule.noC1 || (byte & 0x80) == 0);
}

inline constexpr char kSpace = 0x20;
inline constexpr char kDelete = 0x7F;

// The unit that begins with the byte takes a column.
inline bool IsDisplayed(const UnitRule &rule, char byte)
{
    return !IsControl(rule, byte) && byte != kDelete;
}

// The length of the unit at `at`; below 1 when the service does not know it.
inline int UnitLength(const UnitRule &rule, const char *at, unsigned int avail)
{
    const char byte = *at;
    if (IsControl(rule, byte))
        return ccs_GetCtrlLen(at, avail, rule.cs);
    if (byte == kSpace || byte == kDelete)
        return 1;
    if (!rule.baseUnits)
        return rule.bytes;
    return rule.asciiUnits && (byte & 0x80) == 0 ? 1 : ccs_GetT61BaseUnitLen(at, avail, rule.cs);
}

// Passes over the plain characters of a segment: those of one byte or, in a set of two-byte
// characters, of two bytes, that need no UnitLength.
struct UnitScan {
    UnitRule rule;
    const char *seg;
    unsigned int limit;  // see SetLimit
    bool usable;         // false: every byte needs UnitLength
    unsigned int shift;  // a plain character has 1 << shift bytes
    uint32_t highLooks;  // masks: do bytes of 0x80 and above need UnitLength,
    uint32_t spaceLooks; // and do spaces
    unsigned int base;   // the current block begins here
    unsigned int end;    // and ends here; 0 for no block
    uint32_t looks;      // its bytes that need UnitLength
};

inline UnitScan ScanUnits(const UnitRule &rule, const char *seg, unsigned int limit)
{
    const bool pairs = !rule.baseUnits && rule.bytes == 2;
    return {.rule = rule,
            .seg = seg,
            .limit = limit,
            .usable = rule.baseUnits ? rule.asciiUnits : rule.bytes == 1 || pairs,
            .shift = pairs ? 1U : 0U,
            .highLooks = rule.baseUnits ? blocks::kAll : 0,
            .spaceLooks = pairs ? blocks::kAll : 0,
            .base = 0,
            .end = 0,
            .looks = 0};
}

// The next PlainBytes looks at the bytes again.
inline void ForgetBlock(UnitScan *scan) { scan->end = 0; }

// No byte at the limit or after it is read or passed over.  The limit may go up and down, but stays
// inside the segment.
inline void SetLimit(UnitScan *scan, unsigned int limit)
{
    scan->limit = limit;
    if (limit < scan->end)
        ForgetBlock(scan);
}

inline void LookAtBlock(UnitScan *scan, unsigned int offset)
{
    const unsigned int count = std::min(scan->limit - offset, blocks::kSize);
    scan->base = offset;
    scan->end = offset + count;
    scan->looks = blocks::kAll;
    if (!scan->usable)
        return;
    // Zeros follow the limit.  They are controls, so every search ends there.
    const blocks::Block block = blocks::Load(scan->seg + offset, count);
    scan->looks = blocks::Mask(blocks::Controls(block) | blocks::Equal(block, kDelete)) |
                  (blocks::Mask(block) & scan->highLooks) |
                  (blocks::Mask(blocks::Equal(block, kSpace)) & scan->spaceLooks);
}

// The bytes of whole plain characters from `offset` on.  The offset never goes back.  Branches
// decide where the next block begins, since the processor predicts them; it would wait for a
// computed offset.
inline unsigned int PlainBytes(UnitScan *scan, unsigned int offset)
{
    const unsigned int begin = offset;
    while (offset < scan->limit) {
        if (offset >= scan->end) {
            LookAtBlock(scan, offset);
            if (scan->looks == 0) {
                offset = scan->end;
                continue;
            }
        }
        const unsigned int reached = offset + blocks::Free(scan->looks, offset - scan->base);
        const bool half = scan->shift != 0 && ((reached - offset) & 1) != 0;
        if (reached < scan->end)
            return reached - begin - half;
        if (!half) {
            offset = scan->end;
            continue;
        }
        offset = reached - 1;
        if (offset == scan->base)
            break;
        ForgetBlock(scan); // the next block may hold the whole character
    }
    return offset - begin;
}

} // namespace libstr

#endif
