// SPDX-License-Identifier: Apache-2.0
//
// A window is the next 64 bytes, or as many as there are.  Each question about its bytes is
// answered by a mask with a bit for each byte, and the masks answer what a reader would find out
// byte by byte, without a branch for each change of sets.
#include "base/plain_text.h"

#include "base/blocks.h"
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

bool Has(const Others &others, unsigned char byte)
{
    return (others.highs[byte & 0xF] >> (byte >> 4) & 1U) != 0;
}

// Pass one unit; false where it is not known or does not fit.
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

[[gnu::noinline]] void PassSevenBitByByte(Passage *passage, SevenBit *state)
{
    while (GoesOn(*passage) && PassSevenBitUnit(passage, state))
        continue;
}

[[gnu::noinline]] Switches FindSwitchesByByte(const char *text, size_t known, SevenBit *state)
{
    Passage passage = {text, known, kWindow, SIZE_MAX, 0, 0, 0, 0};
    uint64_t places = 0;
    for (size_t begin = 0; GoesOn(passage) && PassSevenBitUnit(&passage, state);
         begin = passage.bytes)
        if (state->designation == text + begin)
            places |= uint64_t{1} << begin;
    return {passage.bytes, places};
}

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

constexpr size_t kBlock = 32;
constexpr size_t kLeast = 8; // fewer bytes are faster one by one
constexpr uint64_t kEven = 0x5555555555555555;

// The first `count` bits, of which there may be 64.
STR_AVX2 inline uint64_t First(size_t count)
{
    return _bzhi_u64(~uint64_t{0}, static_cast<unsigned int>(count));
}

// ---- Windows -------------------------------------------------------------------------------

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
bool AreForWindows(size_t left) { return left >= kLeast && HasAvx2(); }

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

// ---- Seven bits ----------------------------------------------------------------------------

// The bits from after each of `starts`, and from the first one if `atOnce`, up to the next of
// `events`.  An addition carries through the ones between two events.
STR_AVX2 inline uint64_t Spans(uint64_t events, uint64_t starts, bool atOnce)
{
    return ~events & ~(~events + (starts << 1) + (atOnce ? 1 : 0));
}

// How many of the first `size` bytes there are before half a pair.  A run of `pairs` that has an
// odd number of bytes ends in a half.
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

// ESC, (, $, the finals B, I and J, the finals @ and B, space, SO and SI, DEL.
constexpr Halves kSevenBit = HalvesOf({{0x0002, 0x0800},
                                       {0x0004, 0x0100},
                                       {0x0004, 0x0010},
                                       {0x0010, 0x0604},
                                       {0x0010, 0x0005},
                                       {0x0004, 0x0001},
                                       {0x0001, 0xC000},
                                       {0x0080, 0x8000}});

// The masks of a window of text in seven bits.
struct SevenBitMasks {
    uint64_t toPairs;  // sequences that switch to pairs begin here
    uint64_t switches; // ... or to single bytes
    uint64_t pairs;    // bytes of pairs
    uint64_t shown;    // characters of single bytes
    uint64_t controls; // control functions and DEL
    uint64_t unknown;
};

STR_AVX2 inline SevenBitMasks Look(const Window &window, const SevenBit &state)
{
    const Classified bytes = Classify(window, kSevenBit);
    const uint64_t escapes = Of<0>(bytes);
    const uint64_t known = state.switches ? escapes : 0;
    const uint64_t toSingle = known & Of<1>(bytes) >> 1 & Of<3>(bytes) >> 2;
    const uint64_t toPairs = known & Of<2>(bytes) >> 1 & Of<4>(bytes) >> 2;
    const uint64_t switches = toSingle | toPairs;
    const uint64_t sequences = switches | switches << 1 | switches << 2;
    const uint64_t pairs = Spans(switches, toPairs, state.pairs) & ~sequences;
    const uint64_t singles = ~pairs & ~sequences;
    const uint64_t below = BelowSpace(window), hidden = below | Of<7>(bytes);
    return {toPairs,
            switches,
            pairs,
            singles & ~hidden,
            singles & hidden,
            (singles & (High(window) | Of<6>(bytes) | escapes)) |
                (pairs & (below | OfAny(bytes, 0xA0)))};
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
STR_AVX2 inline void Switch(SevenBit *state, uint64_t toPairs, uint64_t switches, const char *at)
{
    if (switches == 0)
        return;
    const size_t place = kWindow - 1 - _lzcnt_u64(switches);
    state->pairs = (toPairs >> place & 1) != 0;
    state->designation = at + place;
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
size_t FullWindows(const Passage &passage, size_t beyond)
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
STR_AVX2 inline __m256i EqualBut(__m256i block, char bit, char byte)
{
    return Equal(block & _mm256_set1_epi8(static_cast<char>(~bit)), byte);
}

// What is carried from one full window into the next.
struct Carried {
    bool pairs;
    bool half;      // the first byte is the second one of a pair
    uint64_t spill; // the bytes there of a sequence
};

// What a full window of text in seven bits has, if it has only graphic characters, whole pairs,
// spaces between single bytes, and the sequences.
struct FullMasks {
    bool isKnown; // it has nothing else
    uint64_t toPairs;
    uint64_t switches;
    uint64_t sequences; // their bytes
    uint64_t pairs;
    Carried next;
};

[[gnu::always_inline]] STR_AVX2 inline FullMasks LookAtFull(const char *at, const Carried &carried)
{
    const Full first = LoadFull(at), second = LoadFull(at + 1), third = LoadFull(at + 2);
    const uint64_t toPairs = Where([&](int i) STR_AVX2 {
        return Equal(first.blocks[i], kEsc) & Equal(second.blocks[i], '$') &
               EqualBut(third.blocks[i], '@' ^ 'B', '@');
    });
    const uint64_t toSingle = Where([&](int i) STR_AVX2 {
        return Equal(first.blocks[i], kEsc) & Equal(second.blocks[i], '(') &
               (EqualBut(third.blocks[i], 'B' ^ 'J', 'B') | Equal(third.blocks[i], 'I'));
    });
    const uint64_t spaces = Where([&](int i) STR_AVX2 { return Equal(first.blocks[i], ' '); });
    const uint64_t graphic = Where([&](int i) STR_AVX2 {
        return _mm256_cmpgt_epi8(_mm256_add_epi8(first.blocks[i], _mm256_set1_epi8(1)),
                                 _mm256_set1_epi8(0x21));
    });
    const uint64_t switches = toPairs | toSingle;
    const uint64_t sequences = switches | switches << 1 | switches << 2 | carried.spill;
    unsigned long long sum; // as in Spans, and it carries into the next window
    const bool goesOn = _addcarry_u64(carried.pairs, ~switches, toPairs << 1, &sum) != 0;
    const uint64_t half = carried.half ? 1 : 0, pairs = ~switches & ~sum & ~sequences;
    const size_t size = WholePairs(pairs & ~half, kWindow);
    const uint64_t foreign = (~graphic & ~switches & ~(spaces & ~pairs)) | (half & ~pairs);
    return {foreign == 0 && size + 1 >= kWindow,
            toPairs,
            switches,
            sequences,
            pairs,
            {goesOn || toPairs >> 63 != 0, size != kWindow, switches >> 63 | switches >> 62}};
}

// Passes such windows.  Where the next one begins does not depend on what is in this one, so the
// processor works at several at a time.
[[gnu::noinline]] STR_AVX2 void PassFullSevenBit(Passage *passage, SevenBit *state, size_t count)
{
    Carried carried = {state->pairs, false, 0};
    size_t paired = 0, shown = 0;
    const char *const begin = passage->text + passage->bytes;
    const char *at = begin;
    for (; count != 0; --count, at += kWindow) {
        const FullMasks masks = LookAtFull(at, carried);
        if (!masks.isKnown)
            break;
        if (masks.switches != 0)
            state->designation = at + (kWindow - 1 - _lzcnt_u64(masks.switches));
        carried = masks.next;
        paired += CountOf(masks.pairs);
        shown += kWindow - CountOf(masks.sequences);
    }
    const size_t half = carried.half ? 1 : 0;
    state->pairs = carried.pairs;
    passage->bytes += static_cast<size_t>(at - begin) + CountOf(carried.spill) - half;
    passage->columns += shown - (paired + half) / 2;
    passage->shown += shown - half;
}

// Passes a window; false where nothing more is known or wanted.  Where `places` are asked for,
// nothing is counted.
[[gnu::noinline]] STR_AVX2 bool PassSevenBitWindow(Passage *passage, SevenBit *state,
                                                   uint64_t *places)
{
    Window window;
    Load(&window, *passage);
    const SevenBitMasks masks = Look(window, *state);
    size_t size = WholeUnits(masks, std::min(window.most, FirstOf(masks.unknown)));
    if (places == nullptr) {
        const uint64_t lines = LinesIn(window, masks.controls & First(size));
        if (window.columns < kWindow)
            size = std::min(size, AfterCounted(masks.shown | lines | SecondOfPairs(masks.pairs),
                                               window.columns));
        const uint64_t taken = First(size);
        const size_t single = CountOf(masks.shown & taken), paired = CountOf(masks.pairs & taken);
        passage->columns += single + paired / 2;
        passage->shown += single + paired;
        passage->lines += CountOf(lines & taken);
    }
    const uint64_t switches = masks.switches & First(size);
    Switch(state, masks.toPairs, switches, passage->text + passage->bytes);
    passage->bytes += size;
    if (places != nullptr)
        *places = switches;
    return MayGoOn(window, size);
}

STR_AVX2 void PassSevenBitInWindows(Passage *passage, SevenBit *state)
{
    do
        if (const size_t count = FullWindows(*passage, kSequence - 1);
            count != 0 && state->switches)
            PassFullSevenBit(passage, state, count);
    while (Left(*passage) != 0 && PassSevenBitWindow(passage, state, nullptr));
}

STR_AVX2 Switches FindSwitchesInWindow(const char *text, size_t known, SevenBit *state)
{
    if (known >= kWindow + kSequence - 1 && state->switches) {
        const FullMasks masks = LookAtFull(text, {state->pairs, false, 0});
        const size_t spill = CountOf(masks.next.spill); // the sequence begins so many bytes on
        const size_t size = spill != 0 ? kWindow - kSequence + spill
                                       : kWindow - static_cast<size_t>(masks.next.half);
        if (masks.isKnown) {
            const uint64_t places = masks.switches & First(size);
            Switch(state, masks.toPairs, places, text);
            return {size, places};
        }
    }
    Passage passage = {text, known, kWindow, SIZE_MAX, 0, 0, 0, 0};
    uint64_t places;
    PassSevenBitWindow(&passage, state, &places);
    return {passage.bytes, places};
}

// ---- Eight bits ----------------------------------------------------------------------------

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

void PassSevenBit(Passage *passage, SevenBit *state)
{
    AreForWindows(Left(*passage)) ? PassSevenBitInWindows(passage, state)
                                  : PassSevenBitByByte(passage, state);
}

Switches FindSwitches(const char *text, size_t known, SevenBit *state)
{
    return AreForWindows(known) ? FindSwitchesInWindow(text, known, state)
                                : FindSwitchesByByte(text, known, state);
}

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

void PassSevenBit(Passage *passage, SevenBit *state) { PassSevenBitByByte(passage, state); }

Switches FindSwitches(const char *text, size_t known, SevenBit *state)
{
    return FindSwitchesByByte(text, known, state);
}

Parts FindParts(const char *text, size_t known, const Others &others)
{
    return FindPartsByByte(text, known, others);
}

void PassEightBit(Passage *passage, Right right) { PassEightBitByByte(passage, right); }

#endif

} // namespace libstr::plain
