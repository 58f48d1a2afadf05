// SPDX-License-Identifier: Apache-2.0
//
// Byte maps: one look-up for each byte or, on x86-64 with AVX2, some shuffles for 32 bytes.
//
// A row is 16 entries of the map.  Rows that change no byte are left out, so a case table takes as
// many shuffles as it has rows with letters.  A fold takes two, however many rows it has.
#include "base/bytemap.h"

#include "base/blocks.h"
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
constexpr size_t kLeast = 8; // bytes that a fold maps at once

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
    return length >= kLeast && map.rows != ByteMap::kUnknown;
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

    STR_AVX2 RangeOfLetters(int8_t theShift, int8_t theBelow)
        : shift(_mm256_set1_epi8(theShift)), below(_mm256_set1_epi8(theBelow))
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

    // 0 where the entries are the same.
    STR_AVX2 inline __m256i Differ(__m256i a, __m256i b) const
    {
        return _mm256_andnot_si256(Letters::Bits(a), a ^ b);
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

STR_AVX2 size_t MapByRows(const ByRows &by, const uint8_t *in, size_t length, uint8_t *out)
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

STR_AVX2 size_t AlikeByRows(const ByRows &by, const uint8_t *a, const uint8_t *b, size_t length)
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

// The first bytes and the last of a run shorter than a block, 8 or 16 each.  They may overlap.
[[gnu::noinline]] STR_AVX2 __m256i LoadEnds(const uint8_t *at, size_t length)
{
    if (length < 16) {
        int64_t first, last;
        std::memcpy(&first, at, sizeof first);
        std::memcpy(&last, at + length - sizeof last, sizeof last);
        return _mm256_set_epi64x(last, first, last, first);
    }
    __m128i first, last;
    std::memcpy(&first, at, sizeof first);
    std::memcpy(&last, at + length - sizeof last, sizeof last);
    return _mm256_set_m128i(last, first);
}

STR_AVX2 inline void StoreEnds(__m256i ends, uint8_t *at, size_t length)
{
    const __m128i low = _mm256_castsi256_si128(ends), high = _mm256_extracti128_si256(ends, 1);
    if (length < 16) {
        const int64_t first = _mm_cvtsi128_si64(low), last = _mm_extract_epi64(high, 1);
        std::memcpy(at, &first, sizeof first);
        std::memcpy(at + length - sizeof last, &last, sizeof last);
    } else {
        std::memcpy(at, &low, sizeof low);
        std::memcpy(at + length - sizeof high, &high, sizeof high);
    }
}

// Leaves what comes before a NUL in its block to the caller: few runs have one.
template <class Fold>
STR_AVX2 inline size_t MapByFold(const Fold &fold, const uint8_t *in, size_t length, uint8_t *out)
{
    if (length < kBlock) {
        const __m256i mapped = fold.Mapped(LoadEnds(in, length));
        if (Zeros(mapped) != 0)
            return 0;
        StoreEnds(mapped, out, length);
        return length;
    }
    size_t at = 0;
    for (; length - at >= 4 * kBlock; at += 4 * kBlock) {
        const __m256i mapped0 = fold.Mapped(LoadBlock(in + at));
        const __m256i mapped1 = fold.Mapped(LoadBlock(in + at + kBlock));
        const __m256i mapped2 = fold.Mapped(LoadBlock(in + at + 2 * kBlock));
        const __m256i mapped3 = fold.Mapped(LoadBlock(in + at + 3 * kBlock));
        if (Zeros(_mm256_min_epu8(_mm256_min_epu8(mapped0, mapped1),
                                  _mm256_min_epu8(mapped2, mapped3))) != 0)
            return at;
        std::memcpy(out + at, &mapped0, kBlock);
        std::memcpy(out + at + kBlock, &mapped1, kBlock);
        std::memcpy(out + at + 2 * kBlock, &mapped2, kBlock);
        std::memcpy(out + at + 3 * kBlock, &mapped3, kBlock);
    }
    for (at = std::min(at, length - kBlock);; at = NextBlock(at, length)) {
        const __m256i mapped = fold.Mapped(LoadBlock(in + at));
        if (Zeros(mapped) != 0)
            return at;
        std::memcpy(out + at, &mapped, kBlock);
        if (at + kBlock == length)
            return length;
    }
}

// Leaves a difference in less than a block to the caller.
template <class Fold>
[[gnu::always_inline]] STR_AVX2 inline size_t AlikeByFold(const Fold &fold, const uint8_t *a,
                                                          const uint8_t *b, size_t length)
{
    if (length < kBlock) {
        const __m256i differ = fold.Differ(LoadEnds(a, length), LoadEnds(b, length));
        return _mm256_testz_si256(differ, differ) != 0 ? length : 0;
    }
    if (length <= 2 * kBlock) { // most texts
        const size_t last = length - kBlock;
        const __m256i differ = fold.Differ(LoadBlock(a), LoadBlock(b)) |
                               fold.Differ(LoadBlock(a + last), LoadBlock(b + last));
        if (_mm256_testz_si256(differ, differ) != 0)
            return length;
    }
    size_t at = 0;
    for (; length - at >= 4 * kBlock; at += 4 * kBlock) {
        const uint8_t *const a0 = a + at, *const b0 = b + at;
        const __m256i differ = fold.Differ(LoadBlock(a0), LoadBlock(b0)) |
                               fold.Differ(LoadBlock(a0 + kBlock), LoadBlock(b0 + kBlock)) |
                               fold.Differ(LoadBlock(a0 + 2 * kBlock), LoadBlock(b0 + 2 * kBlock)) |
                               fold.Differ(LoadBlock(a0 + 3 * kBlock), LoadBlock(b0 + 3 * kBlock));
        if (_mm256_testz_si256(differ, differ) == 0)
            break;
    }
    for (at = std::min(at, length - kBlock);; at = NextBlock(at, length)) {
        const __m256i differ = fold.Differ(LoadBlock(a + at), LoadBlock(b + at));
        if (const uint32_t stops = ~Zeros(differ); stops != 0)
            return at + static_cast<size_t>(std::countr_zero(stops));
        if (at + kBlock == length)
            return length;
    }
}

STR_AVX2 size_t MapBlocks(const ByteMap &map, const uint8_t *in, size_t length, uint8_t *out)
{
    if (map.isFold)
        return MapByFold(ByFold<AnyLetters>(map), in, length, out);
    return length >= kBlock ? MapByRows(ByRows{map}, in, length, out) : 0;
}

// By a fold whose letters are one range.
STR_AVX2 size_t AlikeInRange(int8_t shift, int8_t below, const uint8_t *a, const uint8_t *b,
                             size_t length)
{
    return AlikeByFold(ByFold<RangeOfLetters>(shift, below), a, b, length);
}

STR_AVX2 size_t AlikeBlocks(const ByteMap &map, const uint8_t *a, const uint8_t *b, size_t length)
{
    if (!map.isFold)
        return length >= kBlock ? AlikeByRows(ByRows{map}, a, b, length) : 0;
    return map.isRange ? AlikeInRange(map.shift, map.below, a, b, length)
                       : AlikeByFold(ByFold<AnyLetters>(map), a, b, length);
}

size_t LettersAlikeInBlocks(const uint8_t *a, const uint8_t *b, size_t length)
{
    return length >= kLeast && HasAvx2()
               ? AlikeInRange(INT8_MAX - 'z', INT8_MAX - ('z' - 'a' + 1), a, b, length)
               : 0;
}

#else

void FindRows(ByteMap *) {}

bool CanUseBlocks(const ByteMap &, size_t) { return false; }

size_t MapBlocks(const ByteMap &, const uint8_t *, size_t, uint8_t *) { return 0; }

size_t AlikeBlocks(const ByteMap &, const uint8_t *, const uint8_t *, size_t) { return 0; }

size_t LettersAlikeInBlocks(const uint8_t *, const uint8_t *, size_t) { return 0; }

#endif

constexpr char LowerOf(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c | kFoldBit) : c;
}

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

size_t LettersAlike(const char *a, const char *b, size_t length)
{
    size_t at = LettersAlikeInBlocks(reinterpret_cast<const uint8_t *>(a),
                                     reinterpret_cast<const uint8_t *>(b), length);
    for (; length - at >= blocks::kSize; at += blocks::kSize) {
        const blocks::Block block1 = blocks::Lower(blocks::Load(a + at, blocks::kSize));
        const blocks::Block block2 = blocks::Lower(blocks::Load(b + at, blocks::kSize));
        if (blocks::Mask(blocks::Differ(block1, block2)) != 0)
            break;
    }
    while (at < length && LowerOf(a[at]) == LowerOf(b[at]))
        ++at;
    return at;
}

} // namespace libstr
