// SPDX-License-Identifier: Apache-2.0
//
// Text in eight bits.
#include "base/plain_windows.h"

namespace libstr::plain
{
namespace
{

// The bytes of the unit of the right half at `at`, and how many of them are shown; 0 when it is not
// known.
size_t RightUnit(Right right, const unsigned char *at, size_t left, size_t *shown)
{
    const bool edge = *at == 0xA0 || *at == 0xFF;
    const bool paired = right == Right::pairs || right == Right::shifted;
    const bool shift = right == Right::shifted && *at == 0x8E;
    *shown = shift ? 1 : 2;
    if (paired && (shift || (*at >= 0xA0 && !edge)))
        return left >= 2 && IsIn(at[1], 0xA1, 0xFE) ? 2 : 0;
    if (right == Right::marked && IsMark(*at))
        return left >= 2 && IsShown(at[1]) ? 2 : 0;
    *shown = (*at & 0x60) != 0;
    return IsShift(*at & 0x7F) || (edge && right != Right::single96) ? 0 : 1;
}

bool Has(const Others &others, unsigned char byte)
{
    return (others.highs[byte & 0xF] >> (byte >> 4) & 1U) != 0;
}

// Passes one unit; false where it is not known or does not fit.
bool PassEightBitUnit(Passage *passage, Right right)
{
    const unsigned char *const at = At(*passage);
    size_t bytes = 1;
    size_t shown = IsShown(*at);
    if (*at >= 0x80)
        bytes = RightUnit(right, at, Left(*passage), &shown);
    if (bytes == 0 || IsShift(*at))
        return false;
    Take(passage, bytes, shown, *at == '\n');
    return true;
}

} // namespace

[[gnu::noinline]] void PassEightBitByByte(Passage *passage, Right right)
{
    while (GoesOn(*passage) && PassEightBitUnit(passage, right))
        continue;
}

[[gnu::noinline]] Parts FindPartsByByte(const char *text, size_t known, const Others &others)
{
    Passage passage = {text, known, kWindow, SIZE_MAX, 0, 0, 0, 0};
    Parts parts = {0, 0, 0};
    while (GoesOn(passage)) {
        const size_t begin = passage.bytes;
        const unsigned char byte = *At(passage);
        if (!PassEightBitUnit(&passage, Right::marked))
            break;
        const uint64_t unit = (passage.bytes - begin == 2 ? uint64_t{3} : uint64_t{1}) << begin;
        parts.right |= byte >= 0xA0 ? unit : 0;
        parts.other |= Has(others, byte) ? unit : 0;
    }
    parts.bytes = passage.bytes;
    return parts;
}

#if defined(STR_AVX2)

namespace
{

// ESC and CSI; SO, SI, SS2 and SS3; 0xA0; 0xFF; marks; 0x20 to 0x6F; 0x70 to 0x7E; 0xA0 to 0xFF.
constexpr Halves kEightBit = HalvesOf({{0x0202, 0x0800},
                                       {0x0101, 0xC000},
                                       {0x0400, 0x0001},
                                       {0x8000, 0x8000},
                                       {0x1000, 0xFFFE},
                                       {0x007C, 0xFFFF},
                                       {0x0080, 0x7FFF},
                                       {0xFC00, 0xFFFF}});
constexpr unsigned char kShifts = 0x03, kEdges = 0x0C, kLeft = 0x60, kShown = 0xE0;

// The masks of a window of text in eight bits.
struct EightBitMasks {
    uint64_t shown;   // bytes of characters
    uint64_t counted; // the last bytes of characters
    uint64_t leads;   // bytes that need the next one
    uint64_t unknown;
};

STR_AVX2 inline EightBitMasks LookAtSingles(const Classified &bytes, Right right)
{
    const uint64_t shown = OfAny(bytes, kShown);
    if (right == Right::single96)
        return {shown, shown, 0, OfAny(bytes, kShifts)};
    const uint64_t foreign = OfAny(bytes, kShifts | kEdges);
    if (right == Right::single94)
        return {shown, shown, 0, foreign};
    const uint64_t marks = Of<4>(bytes);
    return {shown, shown & ~marks, marks, foreign | (marks & ~(OfAny(bytes, kLeft) >> 1))};
}

STR_AVX2 inline EightBitMasks LookAtPairs(const Window &window, const Classified &bytes,
                                          Right right)
{
    const uint64_t shifts = right == Right::shifted ? Equal(window, '\x8E') : 0;
    const uint64_t shown = OfAny(bytes, kShown) & ~OfAny(bytes, kEdges);
    const uint64_t pairs = (shown & High(window)) | shifts;
    const uint64_t seconds = SecondOfPairs(pairs), leads = pairs & ~seconds;
    const uint64_t foreign = OfAny(bytes, kShifts | kEdges) & ~(shifts & leads);
    return {shown, shown & ~leads, leads, foreign | (leads & ~(seconds >> 1))};
}

STR_AVX2 Parts FindPartsInWindow(const char *text, size_t known, const Others &others)
{
    Window window;
    Load(&window, {text, known, kWindow, SIZE_MAX, 0, 0, 0, 0});
    const Classified bytes = Classify(window, kEightBit);
    const EightBitMasks masks = LookAtSingles(bytes, Right::marked);
    size_t size = std::min(window.most, FirstOf(masks.unknown));
    if (size != 0 && (masks.leads >> (size - 1) & 1) != 0)
        --size;
    const uint64_t bases = masks.leads << 1;
    alignas(16) static constexpr uint8_t kHighs[16] = {1, 2, 4, 8, 16, 32, 64, 128};
    const uint64_t other = OfAny(Classify(window, others.highs, kHighs), 0xFF);
    return {size, (Of<7>(bytes) | bases) & First(size), other & ~bases & First(size)};
}

// Flags the bytes of a block that are not graphic, except spaces.
STR_AVX2 inline __m256i NotShown(__m256i block)
{
    const __m256i low = block & _mm256_set1_epi8(0x7F);
    return _mm256_cmpgt_epi8(_mm256_set1_epi8(0x21), _mm256_add_epi8(low, _mm256_set1_epi8(1))) |
           Equal(block, '\xA0');
}

STR_AVX2 inline __m256i Marks(__m256i block)
{
    return _mm256_cmpgt_epi8(block, _mm256_set1_epi8('\xC0')) &
           _mm256_cmpgt_epi8(_mm256_set1_epi8('\xD0'), block);
}

// Full windows of graphic characters and spaces, likewise.
STR_AVX2 inline void PassFullSingles(Passage *passage, bool marked)
{
    uint64_t cut = 0; // the first byte ends a character
    size_t size = 0, leading = 0;
    for (size_t count = FullWindows(*passage, 0); count != 0; --count, size += kWindow) {
        const Full bytes = LoadFull(passage->text + passage->bytes + size);
        const __m256i foreign = NotShown(bytes.blocks[0]) | NotShown(bytes.blocks[1]);
        uint64_t leads = Where([&](int i) STR_AVX2 { return Marks(bytes.blocks[i]); });
        leads = marked ? leads : 0;
        const uint64_t high = Where([&](int i) STR_AVX2 { return bytes.blocks[i]; });
        if (!_mm256_testz_si256(foreign, foreign) || ((leads << 1 | cut) & high) != 0)
            break;
        cut = leads >> 63;
        leading += CountOf(leads);
    }
    passage->bytes += size - cut;
    passage->columns += size - leading;
    passage->shown += size - cut;
}

// The same with pairs.  A single shift is not shown.
STR_AVX2 inline void PassFullPairs(Passage *passage, bool shifted)
{
    uint64_t cut = 0, cutShift = 0; // the first byte ends a character, which is shifted
    size_t size = 0, leading = 0, shifting = 0;
    for (size_t count = FullWindows(*passage, 0); count != 0; --count, size += kWindow) {
        const Full bytes = LoadFull(passage->text + passage->bytes + size);
        const uint64_t high = Where([&](int i) STR_AVX2 { return bytes.blocks[i]; });
        const uint64_t foreign = Where([&](int i) STR_AVX2 { return NotShown(bytes.blocks[i]); });
        const uint64_t pairs = high & ~cut, seconds = SecondOfPairs(pairs),
                       leads = pairs & ~seconds;
        uint64_t shifts = 0;
        if (shifted && foreign != 0)
            shifts = leads & Where([&](int i) STR_AVX2 { return Equal(bytes.blocks[i], '\x8E'); });
        if ((foreign ^ shifts) != 0 || (leads << 1 | cut) != (seconds | (cut & high)))
            break;
        cut = leads >> 63;
        cutShift = shifts >> 63;
        leading += CountOf(leads);
        shifting += CountOf(shifts);
    }
    passage->bytes += size - cut;
    passage->columns += size - leading;
    passage->shown += size - cut - (shifting - cutShift);
}

STR_AVX2 void PassEightBitInWindows(Passage *passage, Right right)
{
    const bool arePairs = right == Right::pairs || right == Right::shifted;
    Window window;
    size_t size;
    do {
        if (arePairs)
            PassFullPairs(passage, right == Right::shifted);
        else
            PassFullSingles(passage, right == Right::marked);
        if (Left(*passage) == 0)
            return;
        Load(&window, *passage);
        const Classified bytes = Classify(window, kEightBit);
        const EightBitMasks masks =
            arePairs ? LookAtPairs(window, bytes, right) : LookAtSingles(bytes, right);
        size = std::min(window.most, FirstOf(masks.unknown));
        if (size != 0 && (masks.leads >> (size - 1) & 1) != 0)
            --size; // the character ends in the next window, or is not known
        const uint64_t lines = LinesIn(window, ~masks.shown & First(size));
        if (window.columns < kWindow)
            size = std::min(size, AfterCounted(masks.counted | lines, window.columns));
        const uint64_t taken = First(size);
        passage->bytes += size;
        passage->columns += CountOf(masks.counted & taken);
        passage->shown += CountOf(masks.shown & taken);
        passage->lines += CountOf(lines & taken);
    } while (MayGoOn(window, size));
}

} // namespace

Parts FindParts(const char *text, size_t known, const Others &others)
{
    return AreForWindows(known) ? FindPartsInWindow(text, known, others)
                                : FindPartsByByte(text, known, others);
}

void PassEightBit(Passage *passage, Right right)
{
    AreForWindows(Left(*passage)) ? PassEightBitInWindows(passage, right)
                                  : PassEightBitByByte(passage, right);
}

#else

Parts FindParts(const char *text, size_t known, const Others &others)
{
    return FindPartsByByte(text, known, others);
}

void PassEightBit(Passage *passage, Right right) { PassEightBitByByte(passage, right); }

#endif

} // namespace libstr::plain
