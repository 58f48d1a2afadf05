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
// need no question at all, so they are taken eight bytes at a time.
#ifndef STR_UNITS_H
#define STR_UNITS_H

#include <platform/ccs.h>

#include "base/blocks.h"

#include <cstdint>

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

// Which bytes of a block need a closer look; all others are characters of one byte or, where the
// set's have two, halves of such.  So are, as zeros, those behind the end of the text.
struct PlainRule {
    bool usable;
    unsigned int shift;  // of a plain character's length, which is 1 or 2 bytes
    uint32_t highLooks;  // masks: do bytes from 0x80 on need a look,
    uint32_t spaceLooks; // and do spaces
};

inline PlainRule PlainRuleOf(const UnitRule &rule)
{
    if (rule.baseUnits)
        return {rule.asciiUnits, 0, blocks::kAll, 0};
    if (rule.bytes == 2)
        return {true, 1, 0, blocks::kAll};
    return {rule.bytes == 1, 0, 0, 0};
}

inline uint32_t Looks(const PlainRule &rule, const char *at, unsigned int avail)
{
    if (!rule.usable)
        return blocks::kAll;
    const blocks::Block block = blocks::Load(at, avail);
    return blocks::Mask(blocks::Controls(block) | blocks::Equal(block, kDelete)) |
           (blocks::Mask(block) & rule.highLooks) |
           (blocks::Mask(blocks::Equal(block, kSpace)) & rule.spaceLooks);
}

#endif
