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

constexpr bool IsIn(unsigned char byte, unsigned char first, unsigned char last)
{
    return byte >= first && byte <= last;
}
constexpr bool IsShift(unsigned char byte) { return byte == kEsc || (byte & 0xFE) == 0x0E; }
constexpr bool IsShown(unsigned char byte) { return IsIn(byte, 0x20, 0x7E); }
constexpr bool IsMark(unsigned char byte) { return IsIn(byte, 0xC1, 0xCF); }

// What counts for the limit of columns.
size_t CountedIn(const Passed &passed) { return passed.columns + passed.lines; }

void Count(Passed *passed, size_t bytes, bool shown, bool line)
{
    passed->bytes += bytes;
    passed->columns += shown;
    passed->shown += shown ? bytes : 0;
    passed->lines += line;
}

// Whether one of the sequences begins at `at`, and to what it switches.
bool SwitchAt(const unsigned char *at, bool *pairs)
{
    const unsigned char final = at[2];
    *pairs = at[1] == '$';
    return *pairs ? final == '@' || final == 'B'
                  : at[1] == '(' && (final == 'B' || final == 'I' || final == 'J');
}

} // namespace

Passed PassSevenBitByByte(const char *text, size_t avail, const Limits &limits, SevenBit *state)
{
    const auto *const bytes = reinterpret_cast<const unsigned char *>(text);
    const size_t end = std::min(avail, limits.bytes);
    Passed passed = {};
    while (passed.bytes < end && CountedIn(passed) < limits.columns) {
        const unsigned char *const at = bytes + passed.bytes;
        const size_t left = end - passed.bytes;
        if (bool pairs;
            *at == kEsc && state->switches && left >= kSequence && SwitchAt(at, &pairs)) {
            state->pairs = pairs;
            state->designation = text + passed.bytes;
            Count(&passed, kSequence, false, false);
        } else if (!state->pairs) {
            if (IsShift(*at) || *at >= 0x80)
                break;
            Count(&passed, 1, IsShown(*at), *at == '\n');
        } else {
            if (left < 2 || !IsIn(at[0], 0x21, 0x7E) || !IsIn(at[1], 0x21, 0x7E))
                break;
            Count(&passed, 2, true, false);
        }
    }
    return passed;
}

Passed PassEightBitByByte(const char *text, size_t avail, const Limits &limits,
                          const EightBit &form)
{
    const auto *const bytes = reinterpret_cast<const unsigned char *>(text);
    const size_t end = std::min(avail, limits.bytes);
    Passed passed = {};
    while (passed.bytes < end && CountedIn(passed) < limits.columns) {
        const unsigned char *const at = bytes + passed.bytes;
        const bool isControl = (*at & 0x60) == 0;
        if (IsShift(*at) || *at == 0x8E || *at == 0x8F || *at == 0x9B)
            break;
        if (form.marks && IsMark(*at)) {
            if (end - passed.bytes < 2 || !IsShown(at[1]))
                break;
            Count(&passed, 2, true, false);
            continue;
        }
        if (!form.edges && (*at == 0xA0 || *at == 0xFF))
            break;
        Count(&passed, 1, !isControl && *at != 0x7F, *at == '\n');
    }
    return passed;
}

#if defined(STR_AVX2)

namespace
{

constexpr size_t kBlock = 32;
constexpr size_t kWindow = 64;
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
    size_t size;
};

STR_AVX2 inline void Load(Window *window, const char *at, size_t avail)
{
    window->size = std::min(avail, kWindow);
    window->second = static_cast<unsigned int>(window->size - kBlock);
    std::memcpy(&window->blocks[0], at, kBlock);
    std::memcpy(&window->blocks[1], at + window->second, kBlock);
}

STR_AVX2 inline uint64_t Mask(const Window &window, __m256i flags0, __m256i flags1)
{
    return static_cast<uint32_t>(_mm256_movemask_epi8(flags0)) |
           static_cast<uint64_t>(static_cast<uint32_t>(_mm256_movemask_epi8(flags1)))
               << window.second;
}

STR_AVX2 inline __m256i Bytes(unsigned char byte)
{
    return _mm256_set1_epi8(static_cast<char>(byte));
}

// The bytes that are `byte` in the bits of `care`.
STR_AVX2 inline uint64_t Equal(const Window &window, unsigned char byte, unsigned char care = 0xFF)
{
    return Mask(window, _mm256_cmpeq_epi8(window.blocks[0] & Bytes(care), Bytes(byte)),
                _mm256_cmpeq_epi8(window.blocks[1] & Bytes(care), Bytes(byte)));
}

// The bytes above `byte`, as signed numbers.
STR_AVX2 inline uint64_t Above(const Window &window, unsigned char byte)
{
    return Mask(window, _mm256_cmpgt_epi8(window.blocks[0], Bytes(byte)),
                _mm256_cmpgt_epi8(window.blocks[1], Bytes(byte)));
}

STR_AVX2 inline uint64_t High(const Window &window)
{
    return Mask(window, window.blocks[0], window.blocks[1]);
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

// Where the first run of ones ends that has an odd number of them; 65 for none.  A run that goes on
// after the last bit ends at 64.
STR_AVX2 inline size_t EndOfOddRun(uint64_t runs)
{
    const uint64_t starts = runs & ~(runs << 1);
    const uint64_t afterEven = (runs + (starts & kEven)) & ~runs;
    const uint64_t afterOdd = (runs + (starts & ~kEven)) & ~runs;
    const uint64_t ends = (afterEven & ~kEven) | (afterOdd & kEven);
    if (ends != 0)
        return FirstOf(ends);
    return (_lzcnt_u64(~runs) & 1) != 0 ? kWindow : kWindow + 1;
}

// The second bytes of pairs, in runs of an even number of them.
STR_AVX2 inline uint64_t SecondOfPairs(uint64_t pairs)
{
    const uint64_t evenStarts = pairs & ~(pairs << 1) & kEven;
    const uint64_t fromEven = pairs & ~(pairs + evenStarts); // the runs that begin at even bits
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
    const uint64_t escapes = Equal(window, kEsc);
    const uint64_t known = state.switches ? escapes : 0;
    const uint64_t toSingle = known & Equal(window, '(') >> 1 &
                              (Equal(window, 'B', 0xF7) | Equal(window, 'I')) >> 2; // B, J
    const uint64_t toPairs =
        known & Equal(window, '$') >> 1 & Equal(window, '@', 0xFD) >> 2; // @, B
    const uint64_t switches = toSingle | toPairs;
    const uint64_t sequences = switches | switches << 1 | switches << 2;
    const uint64_t pairs = Spans(switches, toPairs, state.pairs) & ~sequences;
    const uint64_t singles = ~pairs & ~sequences;
    const uint64_t shown = Above(window, 0x1F) & ~Equal(window, 0x7F);
    return {toPairs,
            switches,
            pairs,
            singles & shown,
            singles & Equal(window, '\n'),
            (singles & (High(window) | escapes | Equal(window, 0x0E, 0xFE))) |
                (pairs & (~shown | Equal(window, ' ')))};
}

// How many of the first `size` bytes are whole units.
STR_AVX2 inline size_t WholeUnits(const SevenBitMasks &masks, size_t size)
{
    if (const uint64_t cut = masks.switches & First(size) & ~(First(size) >> (kSequence - 1));
        cut != 0)
        size = FirstOf(cut);
    const size_t end = EndOfOddRun(masks.pairs & First(size));
    return end <= kWindow ? end - 1 : size;
}

// The ends of the units that count for the limit of columns, in whole units.
STR_AVX2 inline uint64_t Counted(const SevenBitMasks &masks)
{
    return masks.shown | masks.lines | SecondOfPairs(masks.pairs);
}

STR_AVX2 Passed PassSevenBitInWindows(const char *text, size_t avail, const Limits &limits,
                                      SevenBit *state)
{
    Passed passed = {};
    while (passed.bytes < limits.bytes && avail - passed.bytes >= kBlock) {
        const char *const at = text + passed.bytes;
        const Limits left = Less(limits, passed);
        Window window;
        Load(&window, at, avail - passed.bytes);
        const SevenBitMasks masks = Look(window, *state);
        size_t size = std::min({window.size, left.bytes, FirstOf(masks.unknown)});
        size = WholeUnits(masks, size);
        if (left.columns < kWindow)
            size = std::min(size, AfterCounted(Counted(masks), left.columns));
        if (size == 0)
            break;
        const uint64_t taken = First(size);
        const size_t single = CountOf(masks.shown & taken), paired = CountOf(masks.pairs & taken);
        passed.bytes += size;
        passed.columns += single + paired / 2;
        passed.shown += single + paired;
        passed.lines += CountOf(masks.lines & taken);
        if (const uint64_t last = masks.switches & taken; last != 0) {
            const size_t place = kWindow - 1 - _lzcnt_u64(last);
            state->pairs = (masks.toPairs >> place & 1) != 0;
            state->designation = at + place;
        }
    }
    return passed;
}

// ---- Eight bits ----------------------------------------------------------------------------

STR_AVX2 Passed PassEightBitInWindows(const char *text, size_t avail, const Limits &limits,
                                      const EightBit &form)
{
    Passed passed = {};
    while (passed.bytes < limits.bytes && avail - passed.bytes >= kBlock) {
        const Limits left = Less(limits, passed);
        Window window;
        Load(&window, text + passed.bytes, avail - passed.bytes);
        const uint64_t high = High(window);
        const uint64_t leftHalf = Above(window, 0x1F) & ~Equal(window, 0x7F);
        const uint64_t shown = leftHalf | (high & ~Equal(window, 0x80, 0xE0));
        const uint64_t marks = form.marks ? high & Above(window, 0xC0) & ~Above(window, 0xCF) : 0;
        const uint64_t edges = form.edges ? 0 : Equal(window, 0xA0) | Equal(window, 0xFF);
        const uint64_t unknown = edges | (marks & ~(leftHalf >> 1)) | Equal(window, kEsc) |
                                 Equal(window, 0x0E, 0x7E) | Equal(window, 0x9B);

        size_t size = std::min({window.size, left.bytes, FirstOf(unknown)});
        if (size != 0 && (marks >> (size - 1) & 1) != 0)
            --size; // a mark at the end of the window belongs to the next one
        const uint64_t lines = Equal(window, '\n');
        if (left.columns < kWindow)
            size = std::min(size, AfterCounted((shown & ~marks) | lines, left.columns));
        if (size == 0)
            break;
        const uint64_t taken = First(size);
        passed.bytes += size;
        passed.columns += CountOf(shown & ~marks & taken);
        passed.shown += CountOf(shown & taken);
        passed.lines += CountOf(lines & taken);
    }
    return passed;
}

} // namespace

Passed PassSevenBit(const char *at, size_t avail, const Limits &limits, SevenBit *text)
{
    Passed passed = {};
    if (avail >= kBlock && HasAvx2())
        passed = PassSevenBitInWindows(at, avail, limits, text);
    Add(&passed,
        PassSevenBitByByte(at + passed.bytes, avail - passed.bytes, Less(limits, passed), text));
    return passed;
}

Passed PassEightBit(const char *at, size_t avail, const Limits &limits, const EightBit &text)
{
    Passed passed = {};
    if (avail >= kBlock && HasAvx2())
        passed = PassEightBitInWindows(at, avail, limits, text);
    Add(&passed,
        PassEightBitByByte(at + passed.bytes, avail - passed.bytes, Less(limits, passed), text));
    return passed;
}

#else

Passed PassSevenBit(const char *at, size_t avail, const Limits &limits, SevenBit *text)
{
    return PassSevenBitByByte(at, avail, limits, text);
}

Passed PassEightBit(const char *at, size_t avail, const Limits &limits, const EightBit &text)
{
    return PassEightBitByByte(at, avail, limits, text);
}

#endif

} // namespace libstr::plain
