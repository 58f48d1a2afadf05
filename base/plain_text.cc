// SPDX-License-Identifier: Apache-2.0
//
// A window is the next 64 bytes, or as many as there are.  Each question about its bytes is answered
// by a mask with a bit for each byte, and the masks answer what a reader would find out byte by
// byte, without a branch for each change of sets.
#include "base/plain_text.h"

#include "base/vector.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace libstr::plain
{
namespace
{

constexpr unsigned char kEsc = 0x1B;
constexpr size_t kSequence = 3; // bytes of a sequence that is known here
constexpr size_t kWindow = 64;

constexpr bool IsIn(unsigned char byte, unsigned char first, unsigned char last)
{
    return byte >= first && byte <= last;
}
constexpr bool IsShift(unsigned char byte) { return byte == kEsc || (byte & 0xFE) == 0x0E; }
constexpr bool IsShown(unsigned char byte) { return IsIn(byte, 0x20, 0x7E); }
constexpr bool IsMark(unsigned char byte) { return IsIn(byte, 0xC1, 0xCF); }

void Take(Passage *passage, size_t bytes, size_t shown, bool line)
{
    passage->bytes += bytes;
    passage->columns += shown != 0;
    passage->shown += shown;
    passage->lines += line;
}

const unsigned char *At(const Passage &passage)
{
    return reinterpret_cast<const unsigned char *>(passage.text + passage.bytes);
}

// The bytes that may be passed and read.
size_t Left(const Passage &passage)
{
    return std::min(passage.known, passage.mostBytes) - passage.bytes;
}

bool GoesOn(const Passage &passage) { return passage.bytes < passage.known && !IsOver(passage); }

// Whether one of the sequences begins at `at`, and to what it switches.
bool SwitchAt(const unsigned char *at, bool *pairs)
{
    const unsigned char final = at[2];
    *pairs = at[1] == '$';
    return *pairs ? final == '@' || final == 'B'
                  : at[1] == '(' && (final == 'B' || final == 'I' || final == 'J');
}

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

// Passes one unit; false where it is not known or does not fit.
bool PassSevenBitUnit(Passage *passage, SevenBit *state)
{
    const unsigned char *const at = At(*passage);
    const size_t left = Left(*passage);
    bool pairs;
    if (*at == kEsc && state->switches && left >= kSequence && SwitchAt(at, &pairs)) {
        state->pairs = pairs;
        state->designation = passage->text + passage->bytes;
        Take(passage, kSequence, 0, false);
    } else if (!state->pairs) {
        if (IsShift(*at) || *at >= 0x80)
            return false;
        Take(passage, 1, IsShown(*at), *at == '\n');
    } else {
        if (left < 2 || !IsIn(at[0], 0x21, 0x7E) || !IsIn(at[1], 0x21, 0x7E))
            return false;
        Take(passage, 2, 2, false);
    }
    return true;
}

} // namespace

void PassSevenBitByByte(Passage *passage, SevenBit *state)
{
    while (GoesOn(*passage) && PassSevenBitUnit(passage, state))
        continue;
}

Switches FindSwitchesByByte(const char *text, size_t known, SevenBit *state)
{
    Passage passage = {text, known, kWindow, SIZE_MAX, 0, 0, 0, 0};
    uint64_t places = 0;
    for (size_t begin = 0; GoesOn(passage) && PassSevenBitUnit(&passage, state);
         begin = passage.bytes)
        if (state->designation == text + begin)
            places |= uint64_t{1} << begin;
    return {passage.bytes, places};
}

void PassEightBitByByte(Passage *passage, Right right)
{
    while (GoesOn(*passage)) {
        const unsigned char *const at = At(*passage);
        size_t bytes = 1;
        size_t shown = IsShown(*at);
        if (*at >= 0x80)
            bytes = RightUnit(right, at, Left(*passage), &shown);
        if (bytes == 0 || IsShift(*at))
            return;
        Take(passage, bytes, shown, *at == '\n');
    }
}

#if defined(STR_AVX2)

namespace
{

constexpr size_t kBlock = 32;
constexpr uint64_t kEven = 0x5555555555555555;

// The first `count` bits, of which there may be 64.
STR_AVX2 inline uint64_t First(size_t count)
{
    return _bzhi_u64(~uint64_t{0}, static_cast<unsigned int>(count));
}

// ---- Windows -------------------------------------------------------------------------------

// Of at least 32 bytes; the second block may overlap the first.
struct Window {
    __m256i blocks[2];
    unsigned int second; // where the second block begins
    size_t most;         // the bytes of it that may be passed
    size_t columns;      // the columns that may be passed
};

// Loads the next window; false where there is none.
STR_AVX2 inline bool Load(Window *window, const Passage &passage)
{
    const size_t known = passage.known - passage.bytes;
    if (known < kBlock || IsOver(passage))
        return false;
    const char *const at = passage.text + passage.bytes;
    const size_t size = std::min(known, kWindow);
    window->second = static_cast<unsigned int>(size - kBlock);
    std::memcpy(&window->blocks[0], at, kBlock);
    std::memcpy(&window->blocks[1], at + window->second, kBlock);
    window->most = std::min(size, passage.mostBytes - passage.bytes);
    window->columns = passage.mostColumns - passage.columns - passage.lines;
    return true;
}

// An answer for each byte of a window; all bits of the byte, or at least the highest, are the answer.
struct Flags {
    __m256i blocks[2];
};

STR_AVX2 inline __m256i Bytes(unsigned char byte)
{
    return _mm256_set1_epi8(static_cast<char>(byte));
}

// The bytes that are `byte` in the bits of `care`.
STR_AVX2 inline Flags Equal(const Window &window, unsigned char byte, unsigned char care = 0xFF)
{
    return {{_mm256_cmpeq_epi8(window.blocks[0] & Bytes(care), Bytes(byte)),
             _mm256_cmpeq_epi8(window.blocks[1] & Bytes(care), Bytes(byte))}};
}

// The bytes above `byte`, as signed numbers.
STR_AVX2 inline Flags Above(const Window &window, unsigned char byte)
{
    return {{_mm256_cmpgt_epi8(window.blocks[0], Bytes(byte)),
             _mm256_cmpgt_epi8(window.blocks[1], Bytes(byte))}};
}

STR_AVX2 inline Flags High(const Window &window) { return {{window.blocks[0], window.blocks[1]}}; }

STR_AVX2 inline Flags Or(const Flags &a, const Flags &b)
{
    return {{a.blocks[0] | b.blocks[0], a.blocks[1] | b.blocks[1]}};
}

STR_AVX2 inline Flags Without(const Flags &a, const Flags &b)
{
    return {{_mm256_andnot_si256(b.blocks[0], a.blocks[0]),
             _mm256_andnot_si256(b.blocks[1], a.blocks[1])}};
}

STR_AVX2 inline uint64_t Mask(const Window &window, const Flags &flags)
{
    return static_cast<uint32_t>(_mm256_movemask_epi8(flags.blocks[0])) |
           static_cast<uint64_t>(static_cast<uint32_t>(_mm256_movemask_epi8(flags.blocks[1])))
               << window.second;
}

// The bytes up to and with the one of the `count`-th bit; 64 where there are not so many.
STR_AVX2 inline size_t AfterCounted(uint64_t mask, size_t count)
{
    return count == 0 ? 0 : _tzcnt_u64(_pdep_u64(uint64_t{1} << (count - 1), mask)) + 1;
}

STR_AVX2 inline size_t FirstOf(uint64_t mask) { return _tzcnt_u64(mask); }
STR_AVX2 inline size_t CountOf(uint64_t mask) { return static_cast<size_t>(_mm_popcnt_u64(mask)); }

// ---- Seven bits ----------------------------------------------------------------------------

// The bits from after each of `starts`, and from the first one if `atOnce`, up to the next of
// `events`.  An addition carries through the ones between two events.
STR_AVX2 inline uint64_t Spans(uint64_t events, uint64_t starts, bool atOnce)
{
    return ~events & ~(~events + (starts << 1) + (atOnce ? 1 : 0));
}

// How many of the first `size` bytes there are before half a pair.  A run of `pairs` that has an odd
// number of bytes ends in a half.
STR_AVX2 inline size_t WholePairs(uint64_t pairs, size_t size)
{
    pairs &= First(size);
    const uint64_t starts = pairs & ~(pairs << 1);
    const uint64_t afterEven = (pairs + (starts & kEven)) & ~pairs;
    const uint64_t afterOdd = (pairs + (starts & ~kEven)) & ~pairs;
    const uint64_t ends = (afterEven & ~kEven) | (afterOdd & kEven);
    if (ends != 0)
        return FirstOf(ends) - 1;
    // A run up to the last bit has no end in the mask.
    return size - (_lzcnt_u64(~pairs) & 1);
}

// The second bytes of pairs, in runs of an even number of them.
STR_AVX2 inline uint64_t SecondOfPairs(uint64_t pairs)
{
    const uint64_t evenStarts = pairs & ~(pairs << 1) & kEven;
    const uint64_t fromEven = pairs & ~(pairs + evenStarts); // of the runs that begin at even bits
    return (fromEven & ~kEven) | (pairs & ~fromEven & kEven);
}

// The masks of a window of text in seven bits.
struct SevenBitMasks {
    uint64_t toPairs;  // sequences that switch to pairs begin here
    uint64_t switches; // ... or to single bytes
    uint64_t pairs;    // bytes of pairs
    uint64_t shown;    // characters of single bytes
    uint64_t lines;    // line feeds
    uint64_t unknown;
};

STR_AVX2 inline SevenBitMasks Look(const Window &window, const SevenBit &state)
{
    const uint64_t escapes = Mask(window, Equal(window, kEsc));
    const uint64_t known = state.switches ? escapes : 0;
    const Flags singleFinals = Or(Equal(window, 'B', 0xF7), Equal(window, 'I')); // B, J and I
    const uint64_t toSingle =
        known & Mask(window, Equal(window, '(')) >> 1 & Mask(window, singleFinals) >> 2;
    const uint64_t toPairs = known & Mask(window, Equal(window, '$')) >> 1 &
                             Mask(window, Equal(window, '@', 0xFD)) >> 2; // @ and B
    const uint64_t switches = toSingle | toPairs;
    const uint64_t sequences = switches | switches << 1 | switches << 2;
    const uint64_t pairs = Spans(switches, toPairs, state.pairs) & ~sequences;
    const uint64_t singles = ~pairs & ~sequences;
    const uint64_t shown = Mask(window, Without(Above(window, 0x1F), Equal(window, 0x7F)));
    const uint64_t foreign =
        Mask(window, Or(High(window), Equal(window, 0x0E, 0xFE))) | escapes; // SO and SI
    const uint64_t unpaired = ~shown | Mask(window, Equal(window, ' '));
    return {toPairs,
            switches,
            pairs,
            singles & shown,
            singles & Mask(window, Equal(window, '\n')),
            (singles & foreign) | (pairs & unpaired)};
}

// How many of the first `size` bytes are whole units.
STR_AVX2 inline size_t WholeUnits(const SevenBitMasks &masks, size_t size)
{
    if (const uint64_t cut = masks.switches & First(size) & ~(First(size) >> (kSequence - 1));
        cut != 0)
        size = FirstOf(cut);
    return WholePairs(masks.pairs, size);
}

// Takes the state after the last of the sequences, which begin at `switches` in the text at `at`.
STR_AVX2 inline void Switch(SevenBit *state, const SevenBitMasks &masks, uint64_t switches,
                            const char *at)
{
    if (switches == 0)
        return;
    const size_t place = kWindow - 1 - _lzcnt_u64(switches);
    state->pairs = (masks.toPairs >> place & 1) != 0;
    state->designation = at + place;
}

STR_AVX2 Switches FindSwitchesInWindow(const char *text, size_t known, SevenBit *state)
{
    Window window;
    if (!Load(&window, {text, known, kWindow, SIZE_MAX, 0, 0, 0, 0}))
        return {0, 0};
    const SevenBitMasks masks = Look(window, *state);
    const size_t size = WholeUnits(masks, std::min(window.most, FirstOf(masks.unknown)));
    const uint64_t places = masks.switches & First(size);
    Switch(state, masks, places, text);
    return {size, places};
}

STR_AVX2 void PassSevenBitInWindows(Passage *passage, SevenBit *state)
{
    Window window;
    while (Load(&window, *passage)) {
        const SevenBitMasks masks = Look(window, *state);
        size_t size = WholeUnits(masks, std::min(window.most, FirstOf(masks.unknown)));
        if (window.columns < kWindow)
            size =
                std::min(size, AfterCounted(masks.shown | masks.lines | SecondOfPairs(masks.pairs),
                                            window.columns));
        if (size == 0)
            return;
        const uint64_t taken = First(size);
        const size_t single = CountOf(masks.shown & taken), paired = CountOf(masks.pairs & taken);
        Switch(state, masks, masks.switches & taken, passage->text + passage->bytes);
        passage->bytes += size;
        passage->columns += single + paired / 2;
        passage->shown += single + paired;
        passage->lines += CountOf(masks.lines & taken);
    }
}

// ---- Eight bits ----------------------------------------------------------------------------

// The masks of a window of text in eight bits.
struct EightBitMasks {
    uint64_t shown;   // bytes of characters
    uint64_t counted; // the last bytes of characters
    uint64_t leads;   // bytes that need the next one
    uint64_t lines;
    uint64_t unknown;
};

// The masks of a right half of pairs, of which `left` has the characters of the left half.
STR_AVX2 inline EightBitMasks LookAtPairs(const Window &window, Right right, uint64_t left)
{
    const uint64_t shifts = right == Right::shifted ? Mask(window, Equal(window, 0x8E)) : 0;
    const uint64_t bytes = Mask(window, Without(Above(window, 0xA0), Above(window, 0xFE)));
    const uint64_t pairs = bytes | shifts, seconds = SecondOfPairs(pairs);
    const uint64_t leads = pairs & ~seconds;
    return {left | bytes, left | seconds, leads, 0, (shifts & seconds) | (leads & ~(seconds >> 1))};
}

STR_AVX2 inline EightBitMasks Look(const Window &window, Right right)
{
    const Flags leftHalf = Without(Above(window, 0x1F), Equal(window, 0x7F));
    const uint64_t left = Mask(window, leftHalf);
    // ESC and CSI, SO and SI, SS2 and SS3 differ by their highest bit.
    uint64_t foreign = Mask(window, Or(Equal(window, 0x0E, 0x7E), Equal(window, kEsc, 0x7F)));
    if (right != Right::single96)
        foreign |= Mask(window, Or(Equal(window, 0xA0), Equal(window, 0xFF)));
    EightBitMasks masks = {};
    if (right == Right::pairs || right == Right::shifted) {
        masks = LookAtPairs(window, right, left);
        foreign &= ~(masks.leads & ~masks.shown); // SS2
    } else {
        const Flags marks = Without(Above(window, 0xC0), Above(window, 0xCF));
        masks.leads = right == Right::marked ? Mask(window, marks) : 0;
        masks.shown = Mask(window, Or(leftHalf, Without(High(window), Equal(window, 0x80, 0xE0))));
        masks.counted = masks.shown & ~masks.leads;
        masks.unknown = masks.leads & ~(left >> 1);
    }
    masks.lines = Mask(window, Equal(window, '\n'));
    masks.unknown |= foreign;
    return masks;
}

STR_AVX2 void PassEightBitInWindows(Passage *passage, Right right)
{
    Window window;
    while (Load(&window, *passage)) {
        const EightBitMasks masks = Look(window, right);
        size_t size = std::min(window.most, FirstOf(masks.unknown));
        if (size != 0 && (masks.leads >> (size - 1) & 1) != 0)
            --size; // the character ends in the next window, or is not known
        if (window.columns < kWindow)
            size = std::min(size, AfterCounted(masks.counted | masks.lines, window.columns));
        if (size == 0)
            return;
        const uint64_t taken = First(size);
        passage->bytes += size;
        passage->columns += CountOf(masks.counted & taken);
        passage->shown += CountOf(masks.shown & taken);
        passage->lines += CountOf(masks.lines & taken);
    }
}

} // namespace

void PassSevenBit(Passage *passage, SevenBit *state)
{
    if (passage->known >= kBlock && HasAvx2())
        PassSevenBitInWindows(passage, state);
    PassSevenBitByByte(passage, state);
}

Switches FindSwitches(const char *text, size_t known, SevenBit *state)
{
    return known >= kBlock && HasAvx2() ? FindSwitchesInWindow(text, known, state)
                                        : FindSwitchesByByte(text, known, state);
}

void PassEightBit(Passage *passage, Right right)
{
    if (passage->known >= kBlock && HasAvx2())
        PassEightBitInWindows(passage, right);
    PassEightBitByByte(passage, right);
}

#else

void PassSevenBit(Passage *passage, SevenBit *state) { PassSevenBitByByte(passage, state); }

Switches FindSwitches(const char *text, size_t known, SevenBit *state)
{
    return FindSwitchesByByte(text, known, state);
}

void PassEightBit(Passage *passage, Right right) { PassEightBitByByte(passage, right); }

#endif

} // namespace libstr::plain
