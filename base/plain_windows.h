// SPDX-License-Identifier: Apache-2.0
//
// A window is the next 64 bytes, or as many as there are.  Each question about its bytes is
// answered by a mask with a bit for each byte, and the masks answer what a reader would find out
// byte by byte, without a branch for each change of sets.
#ifndef BASE_PLAIN_WINDOWS_H
#define BASE_PLAIN_WINDOWS_H

#include "base/blocks.h"
#include "base/plain_units.h"
#include "base/vector.h"

#if defined(STR_AVX2)

namespace libstr::plain
{

inline constexpr size_t kBlock = 32;
inline constexpr size_t kLeast = 8; // fewer bytes are faster one by one
inline constexpr uint64_t kEven = 0x5555555555555555;

// The first `count` bits, of which there may be 64.
STR_AVX2 inline uint64_t First(size_t count)
{
    return _bzhi_u64(~uint64_t{0}, static_cast<unsigned int>(count));
}

// Two blocks, of which the second may overlap the first.  Zeros follow a text that is shorter.
struct Window {
    __m256i blocks[2];
    unsigned int second; // where the second block begins
    bool isLast;         // no byte after it is known
    size_t most;         // the bytes of it that may be passed
    size_t columns;      // the columns that may be passed
};

STR_AVX2 inline __m256i LoadBlock(const char *at)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(at));
}

// The bytes from `skip` on of the sixteen at `at`.
STR_AVX2 inline __m128i LoadAfter(const char *at, size_t skip)
{
    alignas(16) static constexpr int8_t kPlaces[32] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10,
                                                       11, 12, 13, 14, 15, -1, -1, -1, -1, -1, -1,
                                                       -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(at)),
                            _mm_loadu_si128(reinterpret_cast<const __m128i *>(kPlaces + skip)));
}

// The next bytes, fewer than a block.  Bytes that were passed over may be read once more.
STR_AVX2 inline __m256i LoadRest(const Passage &passage)
{
    const char *const at = passage.text + passage.bytes;
    const size_t size = passage.known - passage.bytes;
    if (size > blocks::kSize)
        return _mm256_set_m128i(LoadAfter(at + size - blocks::kSize, kBlock - size),
                                _mm_loadu_si128(reinterpret_cast<const __m128i *>(at)));
    if (passage.known >= blocks::kSize)
        return _mm256_zextsi128_si256(LoadAfter(at + size - blocks::kSize, blocks::kSize - size));
    return _mm256_zextsi128_si256(blocks::Load(at, size));
}

// Whether windows are faster than single bytes.
inline bool AreForWindows(size_t left) { return left >= kLeast && HasAvx2(); }

// Loads the next window.
STR_AVX2 inline void Load(Window *window, const Passage &passage)
{
    const char *const at = passage.text + passage.bytes;
    const size_t known = passage.known - passage.bytes, size = std::min(known, kWindow);
    window->second = kBlock;
    if (size >= kBlock) {
        window->second = static_cast<unsigned int>(size - kBlock);
        window->blocks[0] = LoadBlock(at);
        window->blocks[1] = LoadBlock(at + window->second);
    } else {
        window->blocks[0] = LoadRest(passage);
        window->blocks[1] = _mm256_setzero_si256();
    }
    window->isLast = known <= kWindow;
    window->most = std::min(size, passage.mostBytes - passage.bytes);
    window->columns = passage.mostColumns - passage.columns - passage.lines;
}

// Whether more may be passed after the first `size` bytes.  A unit that the window cuts may be.
STR_AVX2 inline bool MayGoOn(const Window &window, size_t size)
{
    return !window.isLast && size + kSequence > kWindow;
}

// A class of bytes has all whose high half is one of some, and whose low half is one of others: a
// bit for each.
struct Class {
    uint16_t highs;
    uint16_t lows;
};

// For each half of a byte, the classes that allow it.
struct Halves {
    alignas(16) uint8_t low[16];
    alignas(16) uint8_t high[16];
};

constexpr Halves HalvesOf(const Class (&classes)[8])
{
    Halves halves = {};
    for (unsigned int half = 0; half < 16; ++half)
        for (unsigned int i = 0; i < 8; ++i) {
            halves.low[half] |= static_cast<uint8_t>((classes[i].lows >> half & 1U) << i);
            halves.high[half] |= static_cast<uint8_t>((classes[i].highs >> half & 1U) << i);
        }
    return halves;
}

// The classes of each byte of a window.
struct Classified {
    __m256i blocks[2];
    unsigned int second;
};

STR_AVX2 inline __m256i Classify(__m256i block, const uint8_t *lows, const uint8_t *highs)
{
    const __m256i nibble = _mm256_set1_epi8(0xF);
    const __m256i low =
        _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i *>(lows)));
    const __m256i high =
        _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i *>(highs)));
    return _mm256_shuffle_epi8(low, block & nibble) &
           _mm256_shuffle_epi8(high, _mm256_srli_epi16(block, 4) & nibble);
}

STR_AVX2 inline Classified Classify(const Window &window, const uint8_t *lows, const uint8_t *highs)
{
    return {{Classify(window.blocks[0], lows, highs), Classify(window.blocks[1], lows, highs)},
            window.second};
}

STR_AVX2 inline Classified Classify(const Window &window, const Halves &halves)
{
    return Classify(window, halves.low, halves.high);
}

// The highest bits of two blocks.
STR_AVX2 inline uint64_t Mask(__m256i first, __m256i second, unsigned int shift)
{
    return static_cast<uint32_t>(_mm256_movemask_epi8(first)) |
           static_cast<uint64_t>(static_cast<uint32_t>(_mm256_movemask_epi8(second))) << shift;
}

// The bytes of one class.
template <int bit>
STR_AVX2 inline uint64_t Of(const Classified &bytes)
{
    return Mask(_mm256_slli_epi16(bytes.blocks[0], 7 - bit),
                _mm256_slli_epi16(bytes.blocks[1], 7 - bit), bytes.second);
}

// The bytes of any of the classes, a bit for each.
STR_AVX2 inline uint64_t OfAny(const Classified &bytes, unsigned char classes)
{
    const __m256i wanted = _mm256_set1_epi8(static_cast<char>(classes));
    const __m256i top = _mm256_set1_epi8(0x7F);
    return Mask(_mm256_adds_epu8(bytes.blocks[0] & wanted, top),
                _mm256_adds_epu8(bytes.blocks[1] & wanted, top), bytes.second);
}

STR_AVX2 inline uint64_t Equal(const Window &window, char byte)
{
    const __m256i bytes = _mm256_set1_epi8(byte);
    return Mask(_mm256_cmpeq_epi8(window.blocks[0], bytes),
                _mm256_cmpeq_epi8(window.blocks[1], bytes), window.second);
}

// C0 controls and the bytes of 0x80 and above.
STR_AVX2 inline uint64_t BelowSpace(const Window &window)
{
    const __m256i space = _mm256_set1_epi8(' ');
    return Mask(_mm256_cmpgt_epi8(space, window.blocks[0]),
                _mm256_cmpgt_epi8(space, window.blocks[1]), window.second);
}

STR_AVX2 inline uint64_t High(const Window &window)
{
    return Mask(window.blocks[0], window.blocks[1], window.second);
}

// The bytes up to and with the one of the `count`-th bit; 64 where there are not so many.
STR_AVX2 inline size_t AfterCounted(uint64_t mask, size_t count)
{
    return count == 0 ? 0 : _tzcnt_u64(_pdep_u64(uint64_t{1} << (count - 1), mask)) + 1;
}

STR_AVX2 inline size_t FirstOf(uint64_t mask) { return _tzcnt_u64(mask); }
STR_AVX2 inline size_t CountOf(uint64_t mask) { return static_cast<size_t>(_mm_popcnt_u64(mask)); }

// The second bytes of pairs, in runs of an even number of them.
STR_AVX2 inline uint64_t SecondOfPairs(uint64_t pairs)
{
    const uint64_t evenStarts = pairs & ~(pairs << 1) & kEven;
    const uint64_t fromEven = pairs & ~(pairs + evenStarts); // of the runs that begin at even bits
    return (fromEven & ~kEven) | (pairs & ~fromEven & kEven);
}

// The line feeds among the control functions, of which there are few.
STR_AVX2 inline uint64_t LinesIn(const Window &window, uint64_t controls)
{
    return controls == 0 ? 0 : controls & Equal(window, '\n');
}

// Two blocks of a window, without a limit within reach.
struct Full {
    __m256i blocks[2];
};

STR_AVX2 inline Full LoadFull(const char *at) { return {{LoadBlock(at), LoadBlock(at + kBlock)}}; }

// The flags that a function makes of each of the blocks.
template <class Flags>
STR_AVX2 inline uint64_t Where(Flags flags)
{
    return Mask(flags(0), flags(1), kBlock);
}

// The full windows that no limit ends, if each of their bytes were a character.
inline size_t FullWindows(const Passage &passage, size_t beyond)
{
    const size_t left = Left(passage);
    return left < kWindow + beyond
               ? 0
               : std::min(left - beyond, passage.mostColumns - passage.columns - passage.lines) /
                     kWindow;
}

STR_AVX2 inline __m256i Equal(__m256i block, char byte)
{
    return _mm256_cmpeq_epi8(block, _mm256_set1_epi8(byte));
}

} // namespace libstr::plain

#endif
#endif
