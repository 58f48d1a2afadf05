// SPDX-License-Identifier: Apache-2.0
//
// Passes over the frequent parts of ISO 2022 text, as far as no table of sets is needed to know its
// units: with AVX2 64 bytes at a time, else byte by byte.
//
// A unit is a character, a control function of one byte, or one of the sequences named below.  What
// is passed over ends after a whole unit.  Whoever calls decides about the next one, which these
// functions do not know, or which does not fit.
#ifndef BASE_PLAIN_TEXT_H
#define BASE_PLAIN_TEXT_H

#include <cstddef>
#include <cstdint>

namespace libstr::plain
{

// What has been passed over.
struct Passed {
    size_t bytes;
    size_t columns; // characters
    size_t shown;   // bytes of these characters
    size_t lines;   // line feeds
};

// Where to stop: no unit is passed that ends after so many bytes, and none after so many characters
// and line feeds.
struct Limits {
    size_t bytes;
    size_t columns;
};

inline void Add(Passed *sum, const Passed &passed)
{
    sum->bytes += passed.bytes;
    sum->columns += passed.columns;
    sum->shown += passed.shown;
    sum->lines += passed.lines;
}

// What is left of the limits.
inline Limits Less(const Limits &limits, const Passed &passed)
{
    return {limits.bytes - passed.bytes, limits.columns - passed.columns - passed.lines};
}

// Text in seven bits: the left half has characters of one byte, or the set's pairs.
struct SevenBit {
    bool pairs;
    bool switches; // ESC ( B, ESC ( I, ESC ( J, ESC $ @ and ESC $ B switch between the two
    const char *designation; // the last of these that was passed over; null for none
};

// Passes over text of which `avail` bytes may be read, none of them NUL.  Knows in single bytes all
// except ESC, SO, SI and those from 0x80 on; in pairs only graphic characters.
Passed PassSevenBit(const char *at, size_t avail, const Limits &limits, SevenBit *text);

// Text in eight bits, with characters of one byte in both halves.
struct EightBit {
    bool
        marks; // 0xC1 to 0xCF are marks: with the byte of the left half after it, each is a character
    bool edges; // 0xA0 and 0xFF are characters
};

// The same.  Knows all bytes except ESC, SO, SI, SS2, SS3 and CSI, and marks before other bytes.
Passed PassEightBit(const char *at, size_t avail, const Limits &limits, const EightBit &text);

// The plain forms.
Passed PassSevenBitByByte(const char *at, size_t avail, const Limits &limits, SevenBit *text);
Passed PassEightBitByByte(const char *at, size_t avail, const Limits &limits, const EightBit &text);

} // namespace libstr::plain

#endif
