// SPDX-License-Identifier: Apache-2.0
//
// Passes over the frequent parts of ISO 2022 text, as far as no table of sets is needed to know its
// units: with AVX2 64 bytes at a time, else byte by byte.
//
// A unit is a character, a control function of one byte, or one of the sequences named below.  What
// is passed over ends after a whole unit.  The caller decides about the next one, which either
// these functions do not know, or is beyond a limit.
#ifndef BASE_PLAIN_TEXT_H
#define BASE_PLAIN_TEXT_H

#include <cstddef>
#include <cstdint>

namespace libstr::plain
{

// A text, how far to read it, and what has been passed over.
struct Passage {
    const char *text;
    size_t known; // bytes of it that may be read, none of them NUL

    // No unit is passed that ends after so many bytes, and none after so many characters and line
    // feeds.
    size_t mostBytes;
    size_t mostColumns;

    size_t bytes;
    size_t columns; // characters
    size_t shown;   // bytes of these characters, without single shifts
    size_t lines;   // line feeds
};

// A limit has been reached.
inline bool IsOver(const Passage &passage)
{
    return passage.bytes >= passage.mostBytes ||
           passage.columns + passage.lines >= passage.mostColumns;
}

// Seven bits: the left half has characters of one byte, or pairs of bytes.
struct SevenBit {
    bool pairs;
    bool switches; // ESC ( B, ESC ( I, ESC ( J, ESC $ @ and ESC $ B switch between the two
    const char *designation; // the last of these that was passed over; null for none
};

// Knows in single bytes all except ESC, SO, SI and those from 0x80 on; in pairs only the graphic
// characters.
void PassSevenBit(Passage *passage, SevenBit *state);

// The places of the sequences in the next bytes of a text in seven bits.
struct Switches {
    size_t bytes;    // how many were looked at, at most 64: whole units that PassSevenBit knows
    uint64_t places; // a bit for each byte
};
Switches FindSwitches(const char *text, size_t known, SevenBit *state);

// Eight bits: the left half has characters of one byte.  What the right half has:
enum class Right : uint8_t {
    single94, // 0xA1 to 0xFE are characters
    single96, // 0xA0 to 0xFF are
    marked,   // as single94, but 0xC1 to 0xCF are marks: each is a character with the next byte
    pairs,    // pairs of these bytes are characters
    shifted   // the same, and SS2 makes a character of the one byte after it
};

// Knows all bytes except ESC, SO, SI, SS2, SS3 and CSI, and what the right half does not have.
// After a mark it knows only bytes of the left half.
void PassEightBit(Passage *passage, Right right);

// Some of the bytes below 0x80: for each low half, a bit for each high half.
struct Others {
    alignas(16) uint8_t highs[16];
};

constexpr Others OthersOf(const char *bytes)
{
    Others others = {};
    for (; *bytes != '\0'; ++bytes)
        others.highs[*bytes & 0xF] |= static_cast<uint8_t>(1U << (*bytes >> 4));
    return others;
}

// The sets of the next bytes of a text in eight bits whose right half is marked.
struct Parts {
    size_t bytes;   // how many were looked at, at most 64: whole units that PassEightBit knows
    uint64_t right; // a bit for each byte of a character of the right half, its base included
    uint64_t other; // a bit for each character of `others` in the left half
};
Parts FindParts(const char *text, size_t known, const Others &others);

// The plain forms.
void PassSevenBitByByte(Passage *passage, SevenBit *state);
void PassEightBitByByte(Passage *passage, Right right);
Switches FindSwitchesByByte(const char *text, size_t known, SevenBit *state);
Parts FindPartsByByte(const char *text, size_t known, const Others &others);

} // namespace libstr::plain

#endif
