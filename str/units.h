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

#include <bit>
#include <cstdint>
#include <cstring>

struct UnitRule {
    const CSDescriptor *cs; // of the segment
    bool baseUnits;         // lengths come from the service, character by character
    bool asciiUnits;        // ... but ASCII characters are known to be units of one byte
    int bytes;              // of every character, where baseUnits is false
    bool inWords;           // plain characters can be counted eight bytes at a time
};

inline UnitRule UnitRuleOf(const CSDescriptor *segCs)
{
    const uint32_t flags = ccs_GetCSFlags(segCs);
    const bool baseUnits = (flags & CS_FLAG_T61) != 0;
    const bool asciiUnits = baseUnits && (flags & CS_FLAG_ASCII_SUPERSET) != 0;
    const int bytes = baseUnits ? 1 : ccs_GetNumBytes(segCs);
    return {segCs, baseUnits, asciiUnits, bytes, baseUnits ? asciiUnits : bytes == 1 || bytes == 2};
}

inline bool IsControl(unsigned char byte) { return (byte & 0x60) == 0; }

inline constexpr unsigned char kSpace = 0x20;
inline constexpr unsigned char kDelete = 0x7F;

// The length of the unit at `at`, below 1 when it cannot be told.
inline int UnitLength(const UnitRule &rule, const char *at, unsigned int avail)
{
    const auto byte = static_cast<unsigned char>(*at);
    if (IsControl(byte))
        return ccs_GetCtrlLen(at, avail, rule.cs);
    if (byte == kSpace || byte == kDelete)
        return 1;
    if (!rule.baseUnits)
        return rule.bytes;
    return rule.asciiUnits && byte < 0x80 ? 1 : ccs_GetT61BaseUnitLen(at, avail, rule.cs);
}

// The first bytes at `at`, eight or as many as there are, with zeros behind them; the first in memory
// is the lowest of the word.
inline uint64_t LoadWord(const char *at, unsigned int avail)
{
    if (avail >= 8) {
        uint64_t word;
        std::memcpy(&word, at, 8);
        return word;
    }
    if (avail >= 4) { // two halves that overlap
        uint32_t low;
        uint32_t high;
        std::memcpy(&low, at, 4);
        std::memcpy(&high, at + avail - 4, 4);
        return low | static_cast<uint64_t>(high) << (avail - 4) * 8;
    }
    uint64_t word = 0;
    for (unsigned int i = 0; i < avail; ++i)
        word |= static_cast<uint64_t>(static_cast<unsigned char>(at[i])) << i * 8;
    return word;
}

// How many of the bytes of a word, from its first on, are plain characters: no controls, no DEL, no
// bytes of a base unit that the service must measure, no spaces between longer characters.  Whole
// characters only.
inline unsigned int PlainBytes(const UnitRule &rule, uint64_t word)
{
    constexpr uint64_t ones = 0x0101010101010101;
    constexpr uint64_t tops = ones << 7;
    // Sets the top bit of every zero byte; above the lowest of these it may err.
    const auto zeros = [](uint64_t bytes) { return (bytes - ones) & ~bytes & tops; };
    const uint64_t printable = word << 1 | word << 2; // in the top bit: bit 5 or 6
    uint64_t others = (~printable & tops) | zeros(word ^ (ones * kDelete));
    if (rule.baseUnits)
        others |= word & tops;
    else if (rule.bytes > 1)
        others |= zeros(word ^ (ones * kSpace));
    if (others == 0)
        return 8;
    const auto plain = static_cast<unsigned int>(std::countr_zero(others)) / 8;
    return rule.bytes > 1 ? plain & ~1U : plain;
}

#endif
