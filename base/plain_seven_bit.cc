// SPDX-License-Identifier: Apache-2.0
//
// Text in seven bits.
#include "base/plain_windows.h"

namespace libstr::plain
{
namespace
{

// Whether one of the sequences begins at `at`, and to what it switches.
bool SwitchAt(const unsigned char *at, bool *pairs)
{
    const unsigned char final = at[2];
    *pairs = at[1] == '$';
    return *pairs ? final == '@' || final == 'B'
                  : at[1] == '(' && (final == 'B' || final == 'I' || final == 'J');
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

#if defined(STR_AVX2)

namespace
{

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

#else

void PassSevenBit(Passage *passage, SevenBit *state) { PassSevenBitByByte(passage, state); }

Switches FindSwitches(const char *text, size_t known, SevenBit *state)
{
    return FindSwitchesByByte(text, known, state);
}

#endif

} // namespace libstr::plain
