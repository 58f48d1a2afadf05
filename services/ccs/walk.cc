// SPDX-License-Identifier: Apache-2.0
//
// UnitAt says what every byte means.  NextSegment repeats it over a run.  To be fast, it passes
// over the bytes whose meaning cannot change within the run by their classes and, where they are
// plain characters, in blocks.
#include "services/ccs/walk.h"

#include "base/blocks.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace libstr::ccs
{
namespace
{

// ---- Runs ----------------------------------------------------------------------------------
//
// A run has sets of byte classes:
//     single       the byte is a unit
//     leads        the byte begins a unit of two bytes, if the other follows: in the left half any
//                  character of that half, in the right half one of `rightTrails`
//     foreign      the byte ends the run
// For any other byte UnitAt decides.
//
// Plain characters are passed over in blocks.  The masks of a block are all ones or 0:
//     oneHalf      the plain characters are all of one half
//     half         that half is the right one
//     edges        the two bytes at the edges of a half (20, 7F, A0, FF) need a closer look
// Where the run `differs`, the bytes in which any left half differs from ASCII need one too.

constexpr bool Differs(const Half &half) { return half.row != kNoRow && kSets[half.row].differs; }

constexpr unsigned int LeftSingles(const View &view)
{
    const unsigned int characters = Differs(view.left) ? kLeftSame : kLeft94;
    return kLow | (view.escapes || view.shifts ? 0U : kShiftC0) |
           (view.rightUsed && !view.utf8 && !view.noC1 ? kC1 : 0U) |
           (view.left.bytes == 1 ? characters : 0U);
}

constexpr unsigned int RightSingles(const View &view)
{
    if (view.utf8 || view.right.bytes != 1)
        return 0;
    return kRight94 | (IsMarked(view.right) ? 0U : kRightMark) |
           (view.right.is96 ? kRightEdge : 0U) |
           (view.rightUsed && !view.noC1 ? 0U : kC1 | kShiftC1);
}

[[gnu::noinline]] constexpr Run RunOf(const View &view, uint16_t kind)
{
    const bool left = view.left.kind == kind;
    const bool right = view.right.kind == kind;
    const bool marks = right && IsMarked(view.right) && view.partners;
    const bool leftPairs = left && view.left.bytes == 2;
    const bool rightPairs = right && view.right.bytes == 2;
    const unsigned int single = (left ? LeftSingles(view) : 0U) | (right ? RightSingles(view) : 0U);

    Run run = {};
    run.kind = kind;
    run.single = static_cast<uint16_t>(single);
    run.leads = static_cast<uint16_t>((leftPairs ? kLeft94 : 0U) | (rightPairs ? kRightPair : 0U) |
                                      (marks ? kRightMark : 0U));
    run.rightTrails = marks ? kLeft94 : kRightPair;
    if (kind != CS_SEG_RAW && !view.utf8)
        run.foreign = static_cast<uint16_t>((left ? 0U : kOfLeft) | (right ? 0U : kOfRight));
    run.differs = left && Differs(view.left);
    if (Differs(view.left))
        run.foreign &= static_cast<uint16_t>(~kLeftOther);

    const bool plainLeft = leftPairs || (single & kLeftSame) != 0;
    const bool plainRight = rightPairs || (single & kRightMark) != 0;
    run.pairs = leftPairs || rightPairs;
    run.inBlocks = run.pairs ? plainLeft != plainRight : plainLeft || plainRight;
    run.oneHalf = plainLeft != plainRight ? blocks::kAll : 0;
    run.half = plainRight ? blocks::kAll : 0;
    run.edges = run.pairs || (plainRight && (single & kRightEdge) == 0) ? blocks::kAll : 0;
    return run;
}

template <size_t... index>
blocks::Block Different(blocks::Block block, std::index_sequence<index...>)
{
    return (blocks::Equal(block, kDifferent[index]) | ...);
}

// The bytes of the next block that need a closer look: controls, what is not of the run, and the
// zeros after the end of the text.
template <bool differs>
uint32_t Looks(const Run &run, const char *at, size_t avail)
{
    if (!run.inBlocks)
        return blocks::kAll;
    const blocks::Block block = blocks::Load(at, avail);
    const blocks::Block low = blocks::Low7(block);
    const blocks::Block edges = blocks::Equal(low, 0x20) | blocks::Equal(low, 0x7F);
    blocks::Block flags = blocks::Controls(block);
    if constexpr (differs)
        flags |= Different(block, std::make_index_sequence<kDifferent.size()>());
    return blocks::Mask(flags) | (blocks::Mask(edges) & run.edges) |
           ((blocks::Mask(block) ^ run.half) & run.oneHalf);
}

// ---- Plain text ----------------------------------------------------------------------------

// The sequences that PassSevenBit knows designate sets of this table, of as many bytes.
constexpr bool IsFixed(Graphic graphic, char final, uint8_t bytes)
{
    const uint8_t row = FindGraphicRow(graphic, '\0', final);
    return row != kNoRow && kSets[row].units == Units::fixed && kSets[row].bytes == bytes &&
           kSets[row].left != 0;
}
static_assert(IsFixed(Graphic::set94, 'B', 1) && IsFixed(Graphic::set94, 'J', 1));
static_assert(IsFixed(Graphic::set94, 'I', 1) && IsFixed(Graphic::set94n, '@', 2));
static_assert(IsFixed(Graphic::set94n, 'B', 2));

// Pairs in the right half, with SS2 for the characters of one byte in G2.
constexpr plain::Right PairsOf(const State &state)
{
    const Half shifted = HalfOf(state.g[2], &SetRow::right);
    const bool isSingle =
        shifted.row != kNoRow && !shifted.is96 && shifted.bytes == 1 && !IsMarked(shifted);
    return isSingle ? plain::Right::shifted : plain::Right::pairs;
}

constexpr void FindPlain(const State &state, Runs *runs)
{
    const Half &left = runs->view.left, &right = runs->view.right;
    const bool isKnown = runs->view.escapes && !runs->view.utf8 && left.row != kNoRow &&
                         !left.is96 && !IsMarked(left);
    if (isKnown && !runs->view.rightUsed)
        runs->plain = Plain::sevenBit;
    if (!isKnown || !runs->view.rightUsed || left.bytes != 1 || right.row == kNoRow)
        return;
    runs->rightHalf = right.bytes == 2  ? PairsOf(state)
                      : IsMarked(right) ? plain::Right::marked
                      : right.is96      ? plain::Right::single96
                                        : plain::Right::single94;
    if (runs->view.noC1)
        return;
    const bool isUnit = right.bytes == 2 ? !right.is96 : runs->view.partners || !IsMarked(right);
    runs->plain = isUnit ? Plain::eightBit : Plain::none;
}

// ---- Runs by state -------------------------------------------------------------------------

constexpr Runs RunsOf(const State &state, Heeds heeds)
{
    Runs runs = {};
    runs.view = ViewOf(state, heeds);
    FindPlain(state, &runs);
    const uint16_t left = runs.view.left.kind, right = runs.view.right.kind;
    runs.left = RunOf(runs.view, left);
    runs.right = left == right ? runs.left : RunOf(runs.view, right);
    return runs;
}

// Runs that walks share, each once.  The first kDesignated are for the states of seven-bit codes,
// whose right half is empty, by the row of the left half, and the next for a left half that is
// unknown.  The last are nobody's.
constexpr size_t kUnknownLeft = kDesignated;
constexpr size_t kMostShared = kDesignated + 3 + 2 * kSets.size();

constexpr Heeds HeedsOf(const SetRow &set) { return IsBytes(set) ? Heeds::nothing : Heeds::shifts; }

// Runs that few walks need are not kept: those of text without escapes that is not one segment, and
// those of text with escapes in a set that no escape sequence leads back to.
constexpr bool IsRare(const SetRow &set, bool escapes)
{
    return IsBytes(set) &&
           (escapes ? set.graphic == Graphic::none : !set.differs && set.number != kIa5);
}

struct SharedRuns {
    std::array<Runs, kMostShared> runs;
    size_t count;
    std::array<std::array<uint16_t, 2>, kSets.size() + 1> beginnings; // the last is of no set

    constexpr uint16_t Add(const Runs &added)
    {
        size_t at = 0;
        while (at < count && !(runs[at] == added))
            ++at;
        if (at == count)
            runs[count++] = added;
        return static_cast<uint16_t>(at);
    }
};

constexpr SharedRuns SharedByAll()
{
    SharedRuns all = {};
    for (size_t row = 0; row <= kDesignated; ++row) {
        State state;
        if (row < kDesignated)
            state.g[0] = DesignationTo(static_cast<uint8_t>(row));
        all.runs[all.count++] = RunsOf(state, Heeds::escapes);
    }
    for (const bool escapes : {false, true})
        for (size_t row = 0; row <= kSets.size(); ++row) {
            const bool isKnown = row < kSets.size();
            const State state = isKnown ? StartOf(kRows[row]) : State{};
            const Heeds heeds = escapes   ? Heeds::escapes
                                : isKnown ? HeedsOf(kSets[row])
                                          : Heeds::nothing;
            if (!isKnown || !IsRare(kSets[row], escapes))
                all.beginnings[row][escapes] = all.Add(RunsOf(state, heeds));
        }
    for (size_t row = 0; row < kSets.size(); ++row)
        for (const bool escapes : {false, true})
            if (IsRare(kSets[row], escapes))
                all.beginnings[row][escapes] = static_cast<uint16_t>(all.count);
    return all;
}

constexpr size_t kNobodys = SharedByAll().count;
constexpr auto kShared = [] {
    const SharedRuns all = SharedByAll();
    std::array<Runs, kNobodys + 1> runs{};
    std::copy(all.runs.begin(), all.runs.begin() + kNobodys, runs.begin());
    return runs;
}();

// Where the walks over strings of each set begin, and where the runs without and with escapes are in
// kShared, in bytes, which saves a multiplication.  Strings of an unknown set, which are raw
// throughout, come last.
struct Beginning {
    State state;
    uint16_t runs[2];
};
constexpr uint16_t PlaceOf(size_t index) { return static_cast<uint16_t>(index * sizeof(Runs)); }
static_assert(sizeof kShared <= UINT16_MAX);

const Runs *SharedAt(uint16_t place)
{
    const void *const bytes = kShared.data();
    return static_cast<const Runs *>(
        static_cast<const void *>(static_cast<const char *>(bytes) + place));
}

constexpr auto kBeginnings = [] {
    const SharedRuns all = SharedByAll();
    std::array<Beginning, kSets.size() + 1> beginnings{};
    for (size_t row = 0; row <= kSets.size(); ++row)
        beginnings[row] = {row < kSets.size() ? StartOf(kRows[row]) : State{},
                           {PlaceOf(all.beginnings[row][0]), PlaceOf(all.beginnings[row][1])}};
    return beginnings;
}();
constexpr const Beginning &kUnknown = kBeginnings.back();

// Resolves the walk's state after a change.  Only where escapes are recognised does it change.
void Resolve(Walk *walk)
{
    const State &state = walk->state;
    const uint8_t row = state.left == kNowhere ? kNoRow : state.g[state.left].row;
    if (state.coding == Coding::iso2022 && state.right == kNowhere &&
        (row < kDesignated || row == kNoRow)) {
        walk->shared = &kShared[std::min<size_t>(row, kUnknownLeft)];
    } else {
        walk->own = RunsOf(state, Heeds::escapes);
        walk->shared = nullptr;
    }
}

// ---- Segments ------------------------------------------------------------------------------

// Whether every run ends before the byte: it begins an escape sequence or a locking shift.
bool EndsRuns(const View &view, const char *at, size_t avail)
{
    return view.escapes && ClassAt(at) == kShiftC0 && SingleShiftAt(at, avail).length == 0;
}

// The length of the unit at `at` if it is of the run, else 0.
size_t UnitOfRun(const State &state, const View &view, const Run &run, const char *at, size_t avail)
{
    const unsigned int byteClass = ClassAt(at);
    if ((byteClass & run.single) != 0)
        return 1;
    if (IsPair(run, at, avail))
        return 2;
    if ((byteClass & run.foreign) != 0 || EndsRuns(view, at, avail))
        return 0;
    const Unit unit = UnitAt(state, view, at, avail);
    return unit.kind == run.kind ? unit.length : 0;
}

// The bytes at `at` that are units of the run.  Branches, not counts, decide where the next block
// begins: the processor predicts a branch, but waits for a count.
template <bool differs>
size_t RunLength(const State &state, const View &view, const Run &run, const char *at, size_t avail)
{
    size_t length = 0;
    while (length < avail) {
        const size_t base = length;
        const size_t end = base + std::min<size_t>(avail - base, blocks::kSize);
        const uint32_t looks = Looks<differs>(run, at + base, end - base);
        if (looks == 0)
            length = end;
        while (length < end) {
            const size_t free = blocks::Free(looks, static_cast<unsigned int>(length - base));
            const bool isWhole = !run.pairs || (free & 1) == 0;
            if (free >= end - length && isWhole) {
                length = end;
                break;
            }
            length += isWhole ? free : free - 1;
            // A character that the end of the block cuts is whole in the next block.
            if (!isWhole && length + 1 == end && length != base)
                break;
            const size_t unit = UnitOfRun(state, view, run, at + length, avail - length);
            if (unit == 0)
                return length;
            length += unit;
        }
    }
    return length;
}

size_t RunLength(const Walk &walk, const Run &run, const char *at, size_t avail)
{
    if (run.differs) [[unlikely]]
        return RunLength<true>(walk.state, walk.Current().view, run, at, avail);
    return RunLength<false>(walk.state, walk.Current().view, run, at, avail);
}

// The bytes at `at` that repeat an eight-bit single shift, each with a character of its set.
// Half-width katakana is written so.
size_t ShiftedRunLength(const Designation &held, char shift, const char *at, size_t avail)
{
    if (held.row == kNoRow || kSets[held.row].units != Units::fixed)
        return 0;
    const size_t unit = 1U + kSets[held.row].bytes;
    const auto isUnit = [&](const char *here) {
        return here[0] == shift && (ClassAt(here + 1) & kRightPair) != 0 &&
               (ClassAt(here + unit - 1) & kRightPair) != 0;
    };
    size_t length = 0;
    while (avail - length >= unit && isUnit(at + length))
        length += unit;
    return length;
}

// The segment that begins with the unit `first`, which is text or raw.
Unit Lengthen(const Walk &walk, Unit first, const char *at, size_t avail)
{
    if (const SingleShift shift = SingleShiftAt(at, avail);
        shift.length != 0 && first.length > 1 && first.kind != CS_SEG_RAW && Byte(at + 1) >= 0x80)
        first.length += ShiftedRunLength(walk.state.g[shift.element], *at, at + first.length,
                                         avail - first.length);
    const Runs &runs = walk.Current();
    const Run run = first.kind == runs.left.kind    ? runs.left
                    : first.kind == runs.right.kind ? runs.right
                                                    : RunOf(runs.view, first.kind);
    return {first.kind,
            first.length + RunLength(walk, run, at + first.length, avail - first.length)};
}

// The segment of an escape sequence or locking shift.
Unit Switch(Walk *walk, const char *at, size_t length)
{
    Follow(walk, at, length);
    return {CS_SEG_IGNORE, length};
}

// Stores the last byte of a single shift that makes the next byte raw, or 0 for none.
void SetShift(Walk *walk, char shift)
{
    walk->state.shift = shift;
    walk->next = shift == 0 ? Walk::Next::any : Walk::Next::rawByte;
}

// The segment at `at`, which begins with a unit of any kind.
Unit SegmentOf(Walk *walk, const char *at, size_t avail)
{
    const View &view = walk->Current().view;
    const Unit first = UnitAt(walk->state, view, at, avail);
    if (first.kind == CS_SEG_END)
        return first;
    if (first.kind != CS_SEG_IGNORE)
        return Lengthen(*walk, first, at, avail);
    const SingleShift shift = view.shifts ? SingleShiftAt(at, avail) : SingleShift{0, 0};
    if (shift.length == 0)
        return Switch(walk, at, first.length);
    if ((view.escapes || Byte(at) != kEsc) && ShiftsToRaw(walk->state, shift, at, avail))
        SetShift(walk, at[shift.length - 1]);
    return first;
}

// Whether all the bytes are of the left half.  There are usually many.
bool AreSevenBit(const char *at, size_t avail)
{
    constexpr size_t stride = size_t{4} * blocks::kSize;
    const auto load = [&](size_t index) {
        return blocks::Load(at + index * blocks::kSize, blocks::kSize);
    };
    for (; avail >= stride; avail -= stride, at += stride)
        if (blocks::Mask(load(0) | load(1) | load(2) | load(3)) != 0)
            return false;
    for (; avail > 0; avail -= std::min<size_t>(avail, blocks::kSize), at += blocks::kSize)
        if (blocks::Mask(blocks::Load(at, avail)) != 0)
            return false;
    return true;
}

// The segment at `at`, if something is known of it; length 0 if it is like any other.
Unit KnownSegment(Walk *walk, const char *at, size_t avail)
{
    if (walk->next == Walk::Next::rawByte) {
        SetShift(walk, 0);
        return Lengthen(*walk, {CS_SEG_RAW, 1}, at, avail);
    }
    const bool isWhole = walk->set->right != 0 || AreSevenBit(at, avail);
    if (!isWhole)
        Settle(walk);
    return {walk->set->number, isWhole ? avail : 0};
}

// ---- Ends ----------------------------------------------------------------------------------

[[gnu::cold]] uint16_t KindOfLetter(const State &state)
{
    Walk walk;
    walk.state = state;
    Resolve(&walk);
    return UnitAt(state, walk.Current().view, &kLetter, 1).kind;
}

// Whether the last sequence is a single shift right before `at` that would make a letter raw.
[[gnu::cold]] bool MakesLetterRaw(Walk walk, const char *at)
{
    const auto length = static_cast<size_t>(at - walk.sequence);
    if (length > 2)
        return false;
    const char bytes[] = {walk.sequence[0], length == 2 ? walk.sequence[1] : kLetter, kLetter};
    walk.next = Walk::Next::any;
    return NextSegment(&walk, bytes, length + 1).length == length &&
           walk.next == Walk::Next::rawByte;
}

} // namespace

void Follow(Walk *walk, const char *at, size_t length)
{
    State *const state = &walk->state;
    const bool sevenBit = state->coding == Coding::iso2022 && state->right == kNowhere;
    const bool isShort = length == 3 && Byte(at) == kEsc && Byte(at + 2) >= 0x30;
    if (sevenBit && isShort && state->left == 0 && (at[1] == '(' || at[1] == '$')) {
        // By far the most frequent: a set for G0 in seven bits.
        const Graphic graphic = at[1] == '(' ? Graphic::set94 : Graphic::set94n;
        const uint8_t row = FindGraphicRow(graphic, '\0', at[2]);
        state->g[0] = {row, graphic, '\0', at[2]};
        walk->shared = &kShared[std::min<size_t>(row, kUnknownLeft)];
        return;
    }
    const State before = *state;
    Apply(state, at, length);
    if (std::memcmp(&before, state, sizeof before) != 0)
        Resolve(walk);
}

void Begin(Walk *walk, const CSDescriptor &cs)
{
    const uint8_t row = FindRow(cs.csNum);
    const SetRow *set = row == kNoRow ? nullptr : &kSets[row];
    const Beginning &beginning = row == kNoRow ? kUnknown : kBeginnings[row];
    walk->set = set;
    const bool isWhole = cs.escMode == 0 && set != nullptr && IsBytes(*set) && !set->differs;
    walk->next = isWhole ? Walk::Next::whole : Walk::Next::any;
    walk->state = beginning.state;
    walk->sequence = walk->raw = nullptr;
    const uint16_t place = beginning.runs[cs.escMode != 0];
    walk->shared = SharedAt(place);
    if (!isWhole && place == PlaceOf(kNobodys)) [[unlikely]]
        Resolve(walk);
}

void Settle(Walk *walk)
{
    if (walk->shared != &kShared[kNobodys])
        return;
    walk->own = RunsOf(walk->state, Heeds::nothing);
    walk->shared = nullptr;
}

const State &BeginningOf(const SetRow &set) { return kBeginnings[RowOf(set)].state; }

const State &GoalOf(const Walk &walk)
{
    return walk.set == nullptr ? walk.state : BeginningOf(*walk.set);
}

bool MayEnd(const Walk &walk, const char *at, bool isClosed)
{
    const View &view = walk.Current().view;
    for (const char *const odd : {walk.sequence, walk.raw})
        if (odd != nullptr && GoesOn(walk.state, view, odd, static_cast<size_t>(at - odd)))
            return false;
    const State &beginning = walk.set == nullptr ? kUnknown.state : BeginningOf(*walk.set);
    if ((walk.set == nullptr || !RestoresHalves(walk.state, beginning)) &&
        KindOfLetter(Restored(walk.state, GoalOf(walk))) != KindOfLetter(beginning))
        return false;
    return isClosed || walk.sequence == nullptr || !MakesLetterRaw(walk, at) ||
           KindOfLetter(beginning) == CS_SEG_RAW;
}

Unit NextSegment(Walk *walk, const char *at, size_t avail)
{
    if (avail == 0)
        return {CS_SEG_END, 0};
    if (walk->next != Walk::Next::any)
        if (const Unit known = KnownSegment(walk, at, avail); known.length != 0)
            return known;
    // Most segments begin with a byte whose class says what kind they are.
    const unsigned int byteClass = ClassAt(at);
    if ((byteClass & (kOfLeft | kOfRight)) != 0) {
        const Run &run = (byteClass & kOfLeft) != 0 ? walk->Current().left : walk->Current().right;
        const size_t length = RunLength(*walk, run, at, avail);
        if (length != 0)
            return {run.kind, length};
    } else if (EndsRuns(walk->Current().view, at, avail)) {
        return Switch(walk, at, Byte(at) == kEsc ? EscapeLength(at, avail) : 1);
    }
    return SegmentOf(walk, at, avail);
}

} // namespace libstr::ccs
