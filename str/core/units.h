// SPDX-License-Identifier: Apache-2.0
//
// The unit-length rule of width, truncation and splitting: how long the unit is that starts at a
// byte inside a text segment.
//
//     low seven bits below 0x20     a control function; the service tells its length
//     0x20 and 0x7F                 one byte
//     any other byte                a character: a base unit, or the set's fixed bytes
//
// What depends on the set alone is asked once per segment.  Most text is runs of characters that
// need no question at all, so they are passed over in blocks of bytes:
//
//     UnitScan scan = ScanUnits(UnitRuleOf(segCs), seg, limit);
//     for (unsigned int offset = 0; offset < limit;) {
//         offset += PlainBytes(&scan, offset);  ... of characters of 1 << scan.shift bytes
//         if (offset < limit)
//             ... the unit at offset, by UnitLength(scan.rule, ...)
//     }
#ifndef STR_CORE_UNITS_H
#define STR_CORE_UNITS_H

#include <platform/ccs.h>

#include "base/blocks.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace libstr
{

// The bytes of a segment that a caller gives are those before the NUL: it ends every text.
inline unsigned int BeforeNul(const char *seg, unsigned int size)
{
    return static_cast<unsigned int>(strnlen(seg, size));
}

struct UnitRule {
    const CSDescriptor *cs; // of the segment
    bool baseUnits;         // lengths come from the service, character by character
    bool asciiUnits;        // ... but ASCII characters are known to be units of one byte
    int bytes;              // of every character, where baseUnits is false
};

inline UnitRule UnitRuleOf(const CSDescriptor *segCs)
{
    const uint32_t flags = ccs_GetCSFlags(segCs);
    const bool baseUnits = (flags & CS_FLAG_T61) != 0;
    const bool asciiUnits = baseUnits && (flags & CS_FLAG_ASCII_SUPERSET) != 0;
    return {segCs, baseUnits, asciiUnits, baseUnits ? 1 : ccs_GetNumBytes(segCs)};
}

inline bool IsControl(char byte) { return (byte & 0x60) == 0; }

inline constexpr char kSpace = 0x20;
inline constexpr char kDelete = 0x7F;

// The unit that begins with the byte takes a column.
inline bool IsDisplayed(char byte) { return !IsControl(byte) && byte != kDelete; }

// The length of the unit at `at`, below 1 when it cannot be told.
inline int UnitLength(const UnitRule &rule, const char *at, unsigned int avail)
{
    const char byte = *at;
    if (IsControl(byte))
        return ccs_GetCtrlLen(at, avail, rule.cs);
    if (byte == kSpace || byte == kDelete)
        return 1;
    if (!rule.baseUnits)
        return rule.bytes;
    return rule.asciiUnits && (byte & 0x80) == 0 ? 1 : ccs_GetT61BaseUnitLen(at, avail, rule.cs);
}

// The segment's bytes, passed over as far as they are plain: characters of one byte or, where the
// set's have two, of two, that need no look of their own.
struct UnitScan {
    UnitRule rule;
    const char *seg;
    unsigned int limit;  // of the bytes that may be passed over
    bool usable;         // false: every byte needs a look
    unsigned int shift;  // of a plain character's length, which is 1 or 2 bytes
    uint32_t highLooks;  // masks: do bytes from 0x80 on need a look,
    uint32_t spaceLooks; // and do spaces
    unsigned int base;   // the block looked at last, which of its bytes need a look, and its end
    uint32_t looks;
    unsigned int end;
};

inline UnitScan ScanUnits(const UnitRule &rule, const char *seg, unsigned int limit)
{
    const bool pairs = !rule.baseUnits && rule.bytes == 2;
    const bool usable = rule.baseUnits ? rule.asciiUnits : rule.bytes == 1 || pairs;
    return {rule,
            seg,
            limit,
            usable,
            pairs ? 1U : 0U,
            rule.baseUnits ? blocks::kAll : 0,
            pairs ? blocks::kAll : 0,
            0,
            0,
            0};
}

inline void LookAtBlock(UnitScan *scan, unsigned int offset)
{
    const unsigned int count = std::min(scan->limit - offset, blocks::kSize);
    scan->base = offset;
    scan->end = offset + count;
    scan->looks = blocks::kAll;
    if (!scan->usable)
        return;
    // Behind the limit stand zeros, which need a look and so end every search there.
    const blocks::Block block = blocks::Load(scan->seg + offset, count);
    scan->looks = blocks::Mask(blocks::Controls(block) | blocks::Equal(block, kDelete)) |
                  (blocks::Mask(block) & scan->highLooks) |
                  (blocks::Mask(blocks::Equal(block, kSpace)) & scan->spaceLooks);
}

// The bytes from `offset` on that are plain characters, whole ones, up to the limit.  Where the
// next block begins follows from branches, which the processor foresees, and not from counts,
// which it would wait for.
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
        scan->end = offset; // half a character at the end of a block may be whole in the next
    }
    return offset - begin;
}

// Sets the limit anew, for the bytes from where the scan has come to.
inline void SetLimit(UnitScan *scan, unsigned int limit)
{
    scan->limit = limit;
    if (limit < scan->end)
        scan->end = 0; // the block is to be looked at again
}

} // namespace libstr

#endif
