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
#include <cstdint>
#include <cstring>

namespace libstr::wildcard
{

inline constexpr char kUs = 0x1F;

template <class Word>
bool AreSame(const char *a, const char *b)
{
    Word x, y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    return x == y;
}

// Most pieces are short, and not worth a call.
inline bool AreEqual(const char *a, const char *b, size_t size)
{
    if (size > 16)
        return std::memcmp(a, b, size) == 0;
    if (size > 8)
        return AreSame<uint64_t>(a, b) && AreSame<uint64_t>(a + size - 8, b + size - 8);
    if (size >= 4)
        return AreSame<uint32_t>(a, b) && AreSame<uint32_t>(a + size - 4, b + size - 4);
    return size == 0 || (*a == *b && a[size / 2] == b[size / 2] && a[size - 1] == b[size - 1]);
}

// The next `avail` places with the first and the last byte of the piece at their distance.
[[gnu::always_inline]] inline blocks::Block Places(const char *at, size_t avail, const char *piece,
                                                   size_t size)
{
    return blocks::Equal(blocks::Load(at, avail), piece[0]) &
           blocks::Equal(blocks::Load(at + size - 1, avail), piece[size - 1]);
}

// Passes over four blocks at a time, while they have no such place.
inline const char *PassBlocks(const char *at, const char *end, const char *piece, size_t size)
{
    constexpr ptrdiff_t kBlock = blocks::kSize, kFour = 4 * kBlock;
    const auto places = [=](const char *block) {
        return Places(block, blocks::kSize, piece, size);
    };
    while (end - at >= kFour &&
           blocks::Mask(places(at) | places(at + kBlock) | places(at + 2 * kBlock) |
                        places(at + 3 * kBlock)) == 0)
        at += kFour;
    return at;
}

// The leftmost place of the piece in the text; null for none.  Neither of them holds a NUL, and the
// bytes from `begin` on, before the text, can be read too.  Looks for the first and the last byte of
// the piece at their distance, at a block of places at once.  On the benchmarks' texts this makes a
// match up to 7 times as fast as memmem alone, 1.4 times in the median, and never slower.  Where the
// two bytes are often found without the piece, it falls back to memmem, whose time is linear.  Not
// inlined: registers for the two bytes would be lacking.
[[gnu::noinline]] inline const char *Find(const char *begin, const char *text, const char *textEnd,
                                          const char *piece, size_t size)
{
    const auto textSize = static_cast<size_t>(textEnd - text);
    if (size > textSize)
        return nullptr;
    if (size < 2)
        return static_cast<const char *>(memmem(text, textSize, piece, size));
    const char *const end = textEnd - size + 1; // of the places
    size_t failures = 0;
    for (const char *at = PassBlocks(text, end, piece, size); at < end;
         at = PassBlocks(at + blocks::kSize, end, piece, size)) {
        const size_t avail = std::min<size_t>(static_cast<size_t>(end - at), blocks::kSize);
        const bool isWhole = end - begin >= ptrdiff_t{blocks::kSize};
        const size_t passed = isWhole ? blocks::kSize - avail : 0; // a whole block is faster
        const char *const block = at - passed;
        uint32_t found = blocks::Mask(Places(block, avail + passed, piece, size));
        found &= ~uint32_t{0} << passed;
        for (; found != 0; found &= found - 1) {
            const char *const place = block + std::countr_zero(found);
            if (AreEqual(place, piece, size))
                return place;
            if (++failures * size > 1024 + 8 * static_cast<size_t>(at - text))
                return static_cast<const char *>(
                    memmem(at, static_cast<size_t>(textEnd - at), piece, size));
        }
    }
    return nullptr;
}

// The US of a pattern.
struct Marks {
    const char *block, *end;
    uint32_t us; // of the block, without those that Next has returned
};

inline uint32_t MarksIn(const char *at, const char *end)
{
    return blocks::Mask(blocks::Equal(blocks::Load(at, static_cast<size_t>(end - at)), kUs));
}

inline Marks MarksOf(const char *pattern, const char *end)
{
    return {pattern, end, pattern == end ? 0 : MarksIn(pattern, end)};
}

// The next US; the pattern's end when there are no more.
inline const char *Next(Marks *marks)
{
    while (marks->us == 0) {
        if (marks->end - marks->block <= ptrdiff_t{blocks::kSize})
            return marks->end;
        marks->block += blocks::kSize;
        marks->us = MarksIn(marks->block, marks->end);
    }
    const char *const us = marks->block + std::countr_zero(marks->us);
    marks->us &= marks->us - 1;
    return us;
}

// The last US after `first`, the US that has been returned last; `first` when there are no more.
inline const char *LastAfter(const char *first, const Marks &marks)
{
    for (const char *end = marks.end; end - marks.block > ptrdiff_t{blocks::kSize};) {
        const char *const at = end - std::min<ptrdiff_t>(end - marks.block, blocks::kSize);
        if (const uint32_t us = MarksIn(at, end); us != 0)
            return at + std::bit_width(us) - 1;
        end = at;
    }
    return marks.us != 0 ? marks.block + std::bit_width(marks.us) - 1 : first;
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

// Whether the string starts with the head, which has no NUL.
inline bool StartsWith(const char *string, const char *head, size_t size)
{
    const size_t few = std::min<size_t>(size, 8);
    for (size_t i = 0; i < few; ++i)
        if (string[i] != head[i])
            return false;
    return size == few || std::strncmp(string + few, head + few, size - few) == 0;
}

// Whether the whole string matches the pattern.  Several US in a row are the same as one.  Each
// piece is taken at its leftmost place, which leaves the most text for the others.
inline bool Matches(const char *string, const char *pattern)
{
    const char *const end = pattern + std::strlen(pattern);
    Marks marks = MarksOf(pattern, end);
    const char *us = Next(&marks);
    if (us == end)
        return std::strcmp(string, pattern) == 0;
    const auto head = static_cast<size_t>(us - pattern);
    if (!StartsWith(string, pattern, head))
        return false;
    const char *text = string + head;
    const char *const last = LastAfter(us, marks);
    const auto tail = static_cast<size_t>(end - last - 1), left = std::strlen(text);
    const char *const textEnd = text + left - std::min(left, tail);
    if (left < tail || !AreEqual(textEnd, last + 1, tail))
        return false;
    while (us != last) {
        const char *const piece = us + 1;
        us = Next(&marks);
        const auto size = static_cast<size_t>(us - piece);
        text = Find(string, text, textEnd, piece, size);
        if (text == nullptr)
            return false;
        text += size;
    }
    return true;
}

} // namespace libstr::wildcard

#endif
