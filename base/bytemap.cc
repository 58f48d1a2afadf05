// SPDX-License-Identifier: Apache-2.0
//
// Byte maps: one look-up for each byte or, on x86-64 with AVX2, some shuffles for 32 bytes.
//
// A row is 16 entries of the map.  Rows that change no byte are left out, so a case table takes as
// many shuffles as it has rows with letters.  A fold takes two, however many rows it has.
#include "base/bytemap.h"

#include "base/vector.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace libstr
{

namespace
{

constexpr uint8_t kFoldBit = 0x20;
constexpr size_t kBlock = 32;

// A bit for each high half of the bytes with the fold bit: 2, 3, 6, 7, A, B, E and F.
constexpr uint8_t HighHalf(unsigned int byte)
{
    return static_cast<uint8_t>(1U << (byte >> 6) * 2 << (byte >> 4 & 1));
}

bool IsFold(const uint8_t *upper)
{
    for (unsigned int byte = 0; byte < 256; ++byte) {
        const unsigned int folded = byte & ~unsigned{kFoldBit};
        if (upper[byte] != byte && (upper[byte] != folded || upper[folded] != folded))
            return false;
    }
    return true;
}

void FindLetters(ByteMap *map)
{
    std::memset(map->folds, 0, sizeof map->folds);
    int first = 1, last = 0, count = 0;
    for (int byte = 0; byte < 256; ++byte) {
        if (map->upper[byte] == byte)
            continue;
        map->folds[byte & 15] |= HighHalf(static_cast<unsigned int>(byte));
        first = count++ == 0 ? byte : first;
        last = byte;
    }
    map->isRange = count == last - first + 1;
    map->shift = static_cast<int8_t>(INT8_MAX - last);
    map->below = static_cast<int8_t>(INT8_MAX - count);
}

#if defined(STR_AVX2)

STR_AVX2 inline void AddRow(ByteMap *map, int first, __m128i change)
{
    if (_mm_testz_si128(change, change) != 0)
        return;
    map->first[map->rows] = static_cast<uint8_t>(first);
    std::memcpy(map->change[map->rows++], &change, sizeof change);
}

STR_AVX2 void FindRowsByBlocks(ByteMap *map)
{
    map->rows = 0;
    const __m256i steps =
        _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20,
                         21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
    for (int first = 0; first < 256; first += 32) {
        __m256i rows;
        std::memcpy(&rows, map->upper + first, sizeof rows);
        rows ^= steps | _mm256_set1_epi8(static_cast<char>(first));
        if (_mm256_testz_si256(rows, rows) != 0)
            continue;
        AddRow(map, first, _mm256_castsi256_si128(rows));
        AddRow(map, first + 16, _mm256_extracti128_si256(rows, 1));
    }
}

void FindRows(ByteMap *map)
{
    if (HasAvx2())
        FindRowsByBlocks(map);
}

bool CanUseBlocks(const ByteMap &map, size_t length)
{
    return length >= kBlock && map.rows != ByteMap::kUnknown;
}

STR_AVX2 inline __m256i LoadBlock(const void *at)
{
    return _mm256_loadu_si256(static_cast<const __m256i *>(at));
}

STR_AVX2 inline __m256i LoadTwice(const uint8_t *at)
{
    __m128i half;
    std::memcpy(&half, at, sizeof half);
    return _mm256_broadcastsi128_si256(half);
}

// The rows of a map, for blocks.
struct ByRows {
    const ByteMap &map;

    // The entries of 32 bytes.  The shuffle gives 0 for places of 0x80 and above, so each row
    // changes only its own bytes.
    STR_AVX2 inline __m256i Mapped(__m256i bytes) const
    {
        __m256i mapped = bytes;
        for (int row = 0; row < map.rows; ++row) {
            const __m256i offsets = bytes ^ _mm256_set1_epi8(static_cast<char>(map.first[row]));
            const __m256i places = _mm256_adds_epu8(offsets, _mm256_set1_epi8(0x70));
            mapped ^= _mm256_shuffle_epi8(LoadTwice(map.change[row]), places);
        }
        return mapped;
    }

    // Flags the bytes with the same entry, except 0.
    STR_AVX2 inline __m256i Alike(__m256i a, __m256i b) const
    {
        const __m256i mapped = Mapped(a);
        return _mm256_min_epu8(mapped, _mm256_cmpeq_epi8(mapped, Mapped(b)));
    }
};

// The letters of a fold: Bits gives the fold bit of the bytes that change, and of those that they
// become.
struct AnyLetters {
    __m256i folds, highHalves;

    STR_AVX2 explicit AnyLetters(const ByteMap &map)
        : folds(LoadTwice(map.folds)),
          highHalves(_mm256_setr_epi8(1, 2, 1, 2, 4, 8, 4, 8, 16, 32, 16, 32, 64, -128, 64, -128, 1,
                                      2, 1, 2, 4, 8, 4, 8, 16, 32, 16, 32, 64, -128, 64, -128))
    {
    }

    STR_AVX2 inline __m256i Bits(__m256i bytes) const
    {
        const __m256i low = _mm256_set1_epi8(0xF), bit = _mm256_set1_epi8(kFoldBit);
        const __m256i both = _mm256_shuffle_epi8(folds, bytes & low) &
                             _mm256_shuffle_epi8(highHalves, _mm256_srli_epi16(bytes, 4) & low);
        return _mm256_andnot_si256(_mm256_cmpeq_epi8(both, _mm256_setzero_si256()), bit);
    }
};

// The same where the letters are one range, which is shifted to the greatest signed bytes.
struct RangeOfLetters {
    __m256i shift, below;

    STR_AVX2 explicit RangeOfLetters(const ByteMap &map)
        : shift(_mm256_set1_epi8(map.shift)), below(_mm256_set1_epi8(map.below))
    {
    }

    STR_AVX2 inline __m256i Bits(__m256i bytes) const
    {
        const __m256i bit = _mm256_set1_epi8(kFoldBit);
        return _mm256_cmpgt_epi8(_mm256_add_epi8(bytes | bit, shift), below) & bit;
    }
};

// A fold, for blocks.
template <class Letters>
struct ByFold : Letters {
    using Letters::Letters;

    STR_AVX2 inline __m256i Mapped(__m256i bytes) const
    {
        return _mm256_andnot_si256(Letters::Bits(bytes), bytes);
    }

    STR_AVX2 inline __m256i Alike(__m256i a, __m256i b) const
    {
        const __m256i differ = _mm256_andnot_si256(Letters::Bits(a), a ^ b);
        return _mm256_min_epu8(a, _mm256_cmpeq_epi8(differ, _mm256_setzero_si256()));
    }
};

// The mask of the bytes that are 0.
STR_AVX2 inline uint32_t Zeros(__m256i bytes)
{
    const __m256i zeros = _mm256_cmpeq_epi8(bytes, _mm256_setzero_si256());
    return static_cast<uint32_t>(_mm256_movemask_epi8(zeros));
}

// Where the next block begins.  The last block ends with the last byte, and may overlap the one
// before.
inline size_t NextBlock(size_t at, size_t length) { return std::min(at + kBlock, length - kBlock); }

template <class By>
STR_AVX2 inline size_t MapBlocks(const By &by, const uint8_t *in, size_t length, uint8_t *out)
{
    for (size_t at = 0;; at = NextBlock(at, length)) {
        const __m256i mapped = by.Mapped(LoadBlock(in + at));
        if (const uint32_t zeros = Zeros(mapped); zeros != 0) {
            const auto before = static_cast<size_t>(std::countr_zero(zeros));
            std::memcpy(out + at, &mapped, before);
            return at + before;
        }
        std::memcpy(out + at, &mapped, kBlock);
        if (at + kBlock == length)
            return length;
    }
}

template <class By>
STR_AVX2 inline size_t AlikeBlocks(const By &by, const uint8_t *a, const uint8_t *b, size_t length)
{
    size_t at = 0;
    for (; length - at > 2 * kBlock; at += 2 * kBlock) { // two at a time, while they are alike
        const __m256i alike0 = by.Alike(LoadBlock(a + at), LoadBlock(b + at));
        const __m256i alike1 = by.Alike(LoadBlock(a + at + kBlock), LoadBlock(b + at + kBlock));
        if (Zeros(_mm256_min_epu8(alike0, alike1)) != 0)
            break;
    }
    for (at = std::min(at, length - kBlock);; at = NextBlock(at, length)) {
        const __m256i alike = by.Alike(LoadBlock(a + at), LoadBlock(b + at));
        if (const uint32_t stops = Zeros(alike); stops != 0)
            return at + static_cast<size_t>(std::countr_zero(stops));
        if (at + kBlock == length)
            return length;
    }
}

STR_AVX2 size_t MapBlocks(const ByteMap &map, const uint8_t *in, size_t length, uint8_t *out)
{
    return map.isFold ? MapBlocks(ByFold<AnyLetters>(map), in, length, out)
                      : MapBlocks(ByRows{map}, in, length, out);
}

STR_AVX2 size_t AlikeBlocks(const ByteMap &map, const uint8_t *a, const uint8_t *b, size_t length)
{
    if (!map.isFold)
        return AlikeBlocks(ByRows{map}, a, b, length);
    return map.isRange ? AlikeBlocks(ByFold<RangeOfLetters>(map), a, b, length)
                       : AlikeBlocks(ByFold<AnyLetters>(map), a, b, length);
}

#else

void FindRows(ByteMap *) {}

bool CanUseBlocks(const ByteMap &, size_t) { return false; }

size_t MapBlocks(const ByteMap &, const uint8_t *, size_t, uint8_t *) { return 0; }

size_t AlikeBlocks(const ByteMap &, const uint8_t *, const uint8_t *, size_t) { return 0; }

#endif

} // namespace

void IndexByteMap(ByteMap *map) { FindRows(map); }

void FindFold(ByteMap *map)
{
    map->isTotal = map->upper[0] == 0 && std::memchr(map->upper + 1, 0, 255) == nullptr;
    map->foldsLetters = map->isTotal;
    for (int small = 'a'; small <= 'z'; ++small)
        map->foldsLetters &= map->upper[small] == map->upper[small ^ kFoldBit];
    map->isFold = map->isTotal && IsFold(map->upper);
    if (map->isFold)
        FindLetters(map);
}

size_t MapBytes(const ByteMap &map, const uint8_t *in, size_t length, uint8_t *out)
{
    size_t done = CanUseBlocks(map, length) ? MapBlocks(map, in, length, out) : 0;
    for (; done < length; ++done) {
        const uint8_t upper = map.upper[in[done]];
        if (upper == 0)
            break;
        out[done] = upper;
    }
    return done;
}

size_t MappedAlike(const ByteMap &map, const uint8_t *a, const uint8_t *b, size_t length)
{
    size_t done = CanUseBlocks(map, length) ? AlikeBlocks(map, a, b, length) : 0;
    for (; done < length; ++done) {
        const uint8_t upper = map.upper[a[done]];
        if (upper == 0 || upper != map.upper[b[done]])
            break;
    }
    return done;
}

} // namespace libstr
