// SPDX-License-Identifier: Apache-2.0
//
// Validation by the method of J. Keiser and D. Lemire, "Validating UTF-8 in less than one
// instruction per byte": what two bytes in a row can have wrong follows from three of their four
// halves, so three look-ups and two ANDs find it.
#include "base/utf8_blocks.h"

#include "base/blocks.h"
#include "base/utf8.h"
#include "base/vector.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace libstr::utf8
{

namespace
{

size_t CountPlainly(const char *text, size_t length)
{
    if (g_utf8_validate(text, static_cast<gssize>(length), nullptr) == FALSE)
        return kNotUtf8;
    return length - static_cast<size_t>(std::count_if(text, text + length, IsContinuation));
}

#if defined(STR_AVX2)

constexpr size_t kBlock = 32;

// What may be wrong with a byte and the one before.
enum Fault : uint8_t {
    kTooShort = 1,    // a lead byte, and no continuation after it
    kTooLong = 2,     // a continuation after ASCII
    kOverlong3 = 4,   // E0 80..9F
    kTooLarge = 8,    // F4 90..BF, F5..FF 90..BF
    kSurrogate = 16,  // ED A0..BF
    kOverlong2 = 32,  // C0, C1
    kTooLarge8 = 64,  // F5..FF 80..8F
    kOverlong4 = 64,  // F0 80..8F
    kSecondCont = 128 // a continuation after one: right as the third or fourth byte of a character
};

// The faults that each half does not rule out.
constexpr uint8_t kAnyLow = kTooShort | kTooLong | kSecondCont;
constexpr uint8_t kLarge = kAnyLow | kTooLarge | kTooLarge8;
constexpr uint8_t kAnyCont = kTooLong | kOverlong2 | kSecondCont;
alignas(16) constexpr uint8_t kFirstHigh[16] = {
    // 0.. to 7..
    kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong,
    // 8.. to B..
    kSecondCont, kSecondCont, kSecondCont, kSecondCont,
    // C.. to F..
    kTooShort | kOverlong2, kTooShort, kTooShort | kOverlong3 | kSurrogate,
    kTooShort | kTooLarge | kTooLarge8 | kOverlong4};
alignas(16) constexpr uint8_t kFirstLow[16] = {
    // ..0 to ..4
    kAnyLow | kOverlong3 | kOverlong2 | kOverlong4, kAnyLow | kOverlong2, kAnyLow, kAnyLow,
    kAnyLow | kTooLarge,
    // ..5 to ..F
    kLarge, kLarge, kLarge, kLarge, kLarge, kLarge, kLarge, kLarge, kLarge | kSurrogate, kLarge,
    kLarge};
alignas(16) constexpr uint8_t kSecondHigh[16] = {
    // 0.. to 7..
    kTooShort, kTooShort, kTooShort, kTooShort, kTooShort, kTooShort, kTooShort, kTooShort,
    // 8.. to B..
    kAnyCont | kOverlong3 | kTooLarge8 | kOverlong4, kAnyCont | kOverlong3 | kTooLarge,
    kAnyCont | kSurrogate | kTooLarge, kAnyCont | kSurrogate | kTooLarge,
    // C.. to F..
    kTooShort, kTooShort, kTooShort, kTooShort};

STR_AVX2 inline __m256i Bytes(int byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }

STR_AVX2 inline __m256i Load(const char *at)
{
    __m256i block;
    std::memcpy(&block, at, sizeof block);
    return block;
}

// Less than a block, and zeros.
STR_AVX2 inline __m256i LoadRest(const char *at, size_t length)
{
    const size_t low = std::min<size_t>(length, blocks::kSize);
    return _mm256_set_m128i(blocks::Load(at + low, length - low), blocks::Load(at, low));
}

// The block moved up by N bytes, after zeros.
template <int N>
STR_AVX2 inline __m256i Before(__m256i block)
{
    return _mm256_alignr_epi8(block, _mm256_permute2x128_si256(block, block, 0x08), 16 - N);
}

STR_AVX2 inline __m256i LookUp(const uint8_t (&table)[16], __m256i halves)
{
    __m128i row;
    std::memcpy(&row, table, sizeof row);
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(row), halves);
}

STR_AVX2 inline __m256i HighHalves(__m256i block)
{
    return _mm256_srli_epi16(block, 4) & Bytes(0x0F);
}

// Not zero where a byte is wrong after the three bytes before it.
STR_AVX2 inline __m256i Faults(__m256i block, __m256i first, __m256i second, __m256i third)
{
    const __m256i faults = LookUp(kFirstHigh, HighHalves(first)) &
                           LookUp(kFirstLow, first & Bytes(0x0F)) &
                           LookUp(kSecondHigh, HighHalves(block));
    const __m256i thirds = _mm256_subs_epu8(second, Bytes(0xE0 - 0x80));
    const __m256i fourths = _mm256_subs_epu8(third, Bytes(0xF0 - 0x80));
    return faults ^ ((thirds | fourths) & Bytes(kSecondCont));
}

STR_AVX2 inline uint32_t Mask(__m256i flags)
{
    return static_cast<uint32_t>(_mm256_movemask_epi8(flags));
}

// The first bytes of characters.
STR_AVX2 inline uint32_t Starts(__m256i block)
{
    return Mask(_mm256_cmpgt_epi8(block, Bytes(-0x41)));
}

STR_AVX2 inline __m256i FirstFaults(__m256i block)
{
    return Mask(block) == 0 ? _mm256_setzero_si256()
                            : Faults(block, Before<1>(block), Before<2>(block), Before<3>(block));
}

STR_AVX2 inline __m256i NextFaults(const char *at, __m256i block)
{
    const __m256i third = Load(at - 3);
    return Mask(block | third) == 0 ? _mm256_setzero_si256()
                                    : Faults(block, Load(at - 1), Load(at - 2), third);
}

STR_AVX2 inline bool IsZero(__m256i block) { return _mm256_testz_si256(block, block) != 0; }

// The zeros after the text tell that its last character is cut off.
STR_AVX2 size_t CountShort(const char *text, size_t length)
{
    const __m256i block = LoadRest(text, length);
    if (!IsZero(FirstFaults(block)))
        return kNotUtf8;
    return static_cast<size_t>(std::popcount(Starts(block))) - (kBlock - length);
}

bool EndsInsideCharacter(const char *end)
{
    const auto back = [end](int bytes) { return static_cast<unsigned char>(end[-bytes]); };
    return back(1) >= 0xC0 || back(2) >= 0xE0 || back(3) >= 0xF0;
}

// The last block ends with the text, and may overlap the one before.
STR_AVX2 size_t CountLong(const char *text, size_t length)
{
    const __m256i first = Load(text);
    __m256i faults = FirstFaults(first);
    int64_t count = std::popcount(Starts(first));
    size_t at = kBlock;
    for (; at + kBlock <= length; at += kBlock) {
        const __m256i block = Load(text + at);
        faults |= NextFaults(text + at, block);
        count += std::popcount(Starts(block));
    }
    if (at < length) {
        const char *const last = text + length - kBlock;
        faults |= NextFaults(last, Load(last));
        count += std::popcount(Starts(Load(last)) >> (at + kBlock - length));
    }
    const bool isValid = IsZero(faults) && !EndsInsideCharacter(text + length);
    return isValid ? static_cast<size_t>(count) : kNotUtf8;
}

#endif

} // namespace

size_t CountValid(const char *text, size_t length)
{
#if defined(STR_AVX2)
    if (HasAvx2() && length < kBlock)
        return CountShort(text, length);
    // The last block, unless it is the first too, looks at the three bytes before it.
    if (HasAvx2() && (length == kBlock || length >= kBlock + 3))
        return CountLong(text, length);
#endif
    return CountPlainly(text, length);
}

} // namespace libstr::utf8
