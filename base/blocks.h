// SPDX-License-Identifier: Apache-2.0
//
// Looks at many bytes at once.  A block is the next bytes of a text.  A mask has a bit for each of
// them, the lowest bit for the first byte.
//
//     Load      the block at `at`; where fewer bytes are left, zeros follow them
//     Low7      clears the top bits
//     Equal     flags the bytes of one value
//     Controls  flags the bytes whose low seven bits are below 0x20
//     Differ    flags the bytes that differ between two blocks
//     AtLeast   flags the bytes that are not below one of 0x80 and above
//     Lower     turns capital ASCII letters into small ones
//     Upper     turns small ASCII letters into capital ones
//     Mask      the mask of the flagged bytes; of a text's block, the bytes of 0x80 and above
//
// Flags are blocks too, and | and ^ combine them.  Only the top bit of each byte of them counts.
#ifndef BASE_BLOCKS_H
#define BASE_BLOCKS_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) && !defined(STR_NO_VECTOR)
#define STR_SSE2
#include <emmintrin.h>
#endif

namespace libstr::blocks
{

// The first eight bytes at `at` as a number whose lowest byte is the first.  Where fewer bytes are
// left, zeros follow them.
inline uint64_t LoadWord(const char *at, size_t avail)
{
    uint64_t word = 0;
    if (avail >= 8) {
        std::memcpy(&word, at, 8);
    } else if (avail >= 4) { // two halves that overlap
        uint32_t low;
        uint32_t high;
        std::memcpy(&low, at, 4);
        std::memcpy(&high, at + avail - 4, 4);
        word = low | static_cast<uint64_t>(high) << (avail - 4) * 8;
    } else {
        for (size_t i = 0; i < avail; ++i)
            word |= static_cast<uint64_t>(static_cast<unsigned char>(at[i])) << i * 8;
    }
    return word;
}

#if defined(STR_SSE2)

inline constexpr unsigned int kSize = 16;
using Block = __m128i;

inline Block Load(const char *at, size_t avail)
{
    if (avail >= kSize) {
        Block block;
        std::memcpy(&block, at, kSize);
        return block;
    }
    if (avail <= 8)
        return _mm_set_epi64x(0, static_cast<int64_t>(LoadWord(at, avail)));
    const uint64_t high = LoadWord(at + avail - 8, 8) >> (kSize - avail) * 8;
    return _mm_set_epi64x(static_cast<int64_t>(high), static_cast<int64_t>(LoadWord(at, 8)));
}

inline Block Equal(Block block, char byte) { return _mm_cmpeq_epi8(block, _mm_set1_epi8(byte)); }

inline Block Controls(Block block) { return Equal(block & _mm_set1_epi8(0x60), 0); }

inline Block Low7(Block block) { return block & _mm_set1_epi8(0x7F); }

inline Block AtLeast(Block block, char byte)
{
    return _mm_cmpeq_epi8(_mm_max_epu8(block, _mm_set1_epi8(byte)), block);
}

inline Block Differ(Block a, Block b) { return ~_mm_cmpeq_epi8(a, b); }

inline Block Lower(Block block)
{
    const Block capital = _mm_and_si128(_mm_cmpgt_epi8(block, _mm_set1_epi8('A' - 1)),
                                        _mm_cmplt_epi8(block, _mm_set1_epi8('Z' + 1)));
    return block | (capital & _mm_set1_epi8('a' - 'A'));
}

inline Block Upper(Block block)
{
    const Block toggle = _mm_set1_epi8('a' - 'A');
    return Lower(block ^ toggle) ^ toggle;
}

inline uint32_t Mask(Block flags) { return static_cast<uint32_t>(_mm_movemask_epi8(flags)); }

#else

inline constexpr unsigned int kSize = 8;
using Block = uint64_t;
inline constexpr Block kOnes = 0x0101010101010101;

inline Block Load(const char *at, size_t avail) { return LoadWord(at, avail); }

inline Block Low7(Block block) { return block & kOnes * 0x7F; }

inline Block Equal(Block block, char byte)
{
    const Block differ = block ^ kOnes * static_cast<unsigned char>(byte);
    return ~((Low7(differ) + kOnes * 0x7F) | differ);
}

inline Block Controls(Block block) { return ~(block << 1 | block << 2); }

inline Block AtLeast(Block block, char byte)
{
    return block & (Low7(block) + kOnes * (0x100U - static_cast<unsigned char>(byte)));
}

inline Block Differ(Block a, Block b)
{
    const Block differ = a ^ b;
    return (Low7(differ) + kOnes * 0x7F) | differ;
}

inline Block Lower(Block block)
{
    const Block low = Low7(block);
    const Block capital = (low + kOnes * (0x80 - 'A')) & ~(low + kOnes * (0x7F - 'Z')) & ~block;
    return block | (capital >> 2 & kOnes * ('a' - 'A'));
}

inline Block Upper(Block block)
{
    const Block toggle = kOnes * ('a' - 'A');
    return Lower(block ^ toggle) ^ toggle;
}

// The product shifts each top bit to a place of its own.
inline uint32_t Mask(Block flags)
{
    return static_cast<uint32_t>((flags >> 7 & kOnes) * 0x0102040810204080 >> 56);
}

#endif

// The bit after the last byte, which ends every search, and the mask with every byte flagged.
inline constexpr uint32_t kEnd = uint32_t{1} << kSize;
inline constexpr uint32_t kAll = kEnd - 1;

// How many bytes in a row, from the byte `from` on, are not in the mask.
inline unsigned int Free(uint32_t mask, unsigned int from)
{
    return static_cast<unsigned int>(std::countr_zero((mask | kEnd) >> from));
}

// The first byte of that value from `at` on, not NUL; `end` for none.  Needs no call, so it is
// faster than memchr where the byte is near.
inline const char *Find(const char *at, const char *end, char byte)
{
    for (; at < end; at += kSize) {
        const Block block = Load(at, static_cast<size_t>(end - at));
        if (const uint32_t found = Mask(Equal(block, byte)); found != 0)
            return at + std::countr_zero(found);
    }
    return end;
}

} // namespace libstr::blocks

#endif
