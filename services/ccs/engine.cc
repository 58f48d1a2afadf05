// SPDX-License-Identifier: Apache-2.0
//
// UnitAt says what every byte means; it alone decides.  NextSegment repeats it over a run, and
// passes over the bytes whose meaning cannot change within the run by a table of byte classes and,
// where they are plain characters, in blocks.
//
// Bad text is read as the standards' readers do: of a malformed escape sequence only its first
// byte is an (empty) control sequence and what follows is text; a sequence that the end of the
// text cuts off is ignored whole; a byte that cannot be a character is raw.
#include "services/ccs/engine.h"

#include "base/blocks.h"
#include "base/utf8.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>
#include <utility>

namespace libstr::ccs
{
namespace
{

constexpr unsigned char kSs2 = 0x8E;
constexpr unsigned char kSs3 = 0x8F;
constexpr unsigned char kCsi = 0x9B;

// A base unit takes no more marks than this, so that a run of marks costs linear time.
constexpr size_t kMostMarks = 4;

constexpr unsigned char Byte(const char *at) { return static_cast<unsigned char>(*at); }
constexpr bool InRange(unsigned char byte, unsigned char first, unsigned char last)
{
    return byte >= first && byte <= last;
}
constexpr bool IsControl(unsigned char byte) { return (byte & 0x60) == 0; }
constexpr bool IsSpaceOrDelete(unsigned char byte) { return byte == 0x20 || byte == 0x7F; }
constexpr bool IsGraphic94(unsigned char byte) { return InRange(byte & 0x7F, 0x21, 0x7E); }
constexpr bool IsMark(unsigned char byte) { return InRange(byte, 0xC1, 0xCF); }

// The byte at an offset, 0 where the text ends before it: whoever asks stops at 0.
unsigned char ByteWithin(const char *at, size_t offset, size_t avail)
{
    return offset < avail ? Byte(at + offset) : 0;
}

// ---- Sequences -----------------------------------------------------------------------------

enum class Form { complete, malformed, cutOff };

struct Sequence {
    Form form;
    size_t length; // of a malformed one, what is bad of it; of one cut off, what there is
};

// What a length service answers: a sequence that is cut off has no length.
size_t LengthOf(const Sequence &sequence)
{
    return sequence.form == Form::cutOff ? 0 : sequence.length;
}

size_t SkipRange(const char *at, size_t offset, size_t avail, unsigned char first,
                 unsigned char last)
{
    while (InRange(ByteWithin(at, offset, avail), first, last))
        ++offset;
    return offset;
}

// Ends a sequence whose final byte, from `firstFinal` to 0x7E, must stand at `offset`.
Sequence Finish(const char *at, size_t offset, size_t avail, unsigned char firstFinal)
{
    const unsigned char byte = ByteWithin(at, offset, avail);
    if (byte == 0)
        return {Form::cutOff, offset};
    if (!InRange(byte, firstFinal, 0x7E))
        return {Form::malformed, 1};
    return {Form::complete, offset + 1};
}

// A control sequence, whose parameters begin at `offset`.
Sequence ControlSequence(const char *at, size_t offset, size_t avail)
{
    offset = SkipRange(at, offset, avail, 0x30, 0x3F);
    offset = SkipRange(at, offset, avail, 0x20, 0x2F);
    return Finish(at, offset, avail, 0x40);
}

Sequence EscapeSequence(const char *at, size_t avail)
{
    if (ByteWithin(at, 1, avail) == '[')
        return ControlSequence(at, 2, avail);
    return Finish(at, SkipRange(at, 1, avail, 0x20, 0x2F), avail, 0x30);
}

// The single shift at `at`: its bytes, 0 for none, and the element that it shifts to.
struct SingleShift {
    size_t length;
    uint8_t element;
};

SingleShift SingleShiftAt(const char *at, size_t avail)
{
    const unsigned char byte = Byte(at);
    if (byte == kSs2 || byte == kSs3)
        return {1, static_cast<uint8_t>(byte - kSs2 + 2)};
    const unsigned char second = byte == kEsc ? ByteWithin(at, 1, avail) : 0;
    if (second == 'N' || second == 'O')
        return {2, static_cast<uint8_t>(second - 'N' + 2)};
    return {0, 0};
}

constexpr bool IsBytes(const SetRow &set) { return (set.flags & CS_FLAG_BYTE) != 0; }

// Whether ESC N and ESC O are single shifts where escape sequences are not recognised.  In a set of
// bytes they are characters, except in the right halves that seven-bit text reaches by these.
constexpr bool HeedsShifts(const SetRow &set)
{
    return set.units != Units::utf8 && (!IsBytes(set) || set.graphic == Graphic::none);
}

// ---- Characters ----------------------------------------------------------------------------

// The marks and the base of a base unit, which begins with a mark.
Sequence BaseUnit(const char *at, size_t avail)
{
    if (InRange(ByteWithin(at, 1, avail), 0x20, 0x7E))
        return {Form::complete, 2}; // nearly always
    size_t marks = 1;
    while (marks < kMostMarks && IsMark(ByteWithin(at, marks, avail)))
        ++marks;
    const unsigned char base = ByteWithin(at, marks, avail);
    if (base == 0)
        return {Form::cutOff, marks};
    const bool isBase = InRange(base, 0x20, 0x7E) || (InRange(base, 0xA1, 0xFE) && !IsMark(base));
    return isBase ? Sequence{Form::complete, marks + 1} : Sequence{Form::malformed, 1};
}

Sequence Utf8Character(const char *at, size_t avail)
{
    const auto length = static_cast<size_t>(static_cast<guchar>(g_utf8_skip[Byte(at)]));
    const size_t within = strnlen(at, std::min(length, avail));
    const gunichar character = g_utf8_get_char_validated(at, static_cast<gssize>(within));
    if (character < 0x80000000)
        return {Form::complete, length};
    return {utf8::IsCutOff(at, within) ? Form::cutOff : Form::malformed, 1};
}

// A character of two bytes of the same half.
Sequence TwoByteCharacter(const char *at, size_t avail)
{
    const unsigned char trail = ByteWithin(at, 1, avail);
    if (trail == 0)
        return {Form::cutOff, 1};
    const bool sameHalf = ((trail ^ Byte(at)) & 0x80) == 0;
    return IsGraphic94(trail) && sameHalf ? Sequence{Form::complete, 2}
                                          : Sequence{Form::malformed, 1};
}

// The character of `set` at `at`, a byte that is neither control nor space nor DEL.
Sequence Character(const SetRow &set, const char *at, size_t avail)
{
    if (set.units == Units::utf8)
        return Utf8Character(at, avail);
    if (set.units == Units::marked && IsMark(Byte(at)))
        return BaseUnit(at, avail);
    return set.bytes == 1 ? Sequence{Form::complete, 1} : TwoByteCharacter(at, avail);
}

// Whether the set, in the left half, has a character of its own where ASCII has another.
constexpr bool Differs(const SetRow &set, unsigned char byte)
{
    return byte < 0x80 && kIsDifferent[byte] &&
           std::string_view(set.differs).find(static_cast<char>(byte)) != std::string_view::npos;
}

// The character at `at`, a graphic byte of `half`, as a unit.  A mark's base mostly stands in the
// left half; where this is no partner, the mark has none.
Unit CharacterUnit(const Half &half, bool partners, const char *at, size_t avail)
{
    constexpr Unit raw = {CS_SEG_RAW, 1};
    if (half.row == kNoRow || (!half.is96 && !IsGraphic94(Byte(at))))
        return raw;
    const SetRow &set = kSets[half.row];
    const Sequence character = Character(set, at, avail);
    if (character.form != Form::complete)
        return raw;
    const unsigned char last = Byte(at + character.length - 1);
    if (!partners && set.units == Units::marked && last < 0x80)
        return raw;
    return {Differs(set, Byte(at)) ? set.number : half.kind, character.length};
}

// ---- Byte classes --------------------------------------------------------------------------

// Of every byte, what its meaning depends on.  A NUL is of no class, so every run stops there.
constexpr uint16_t kLow = 0x01;        // C0 control, space or DEL
constexpr uint16_t kShiftC0 = 0x02;    // ESC, SO, SI
constexpr uint16_t kLeftSame = 0x04;   // graphic character of the left half
constexpr uint16_t kLeftOther = 0x08;  // ... where a set may differ from ASCII
constexpr uint16_t kC1 = 0x10;         // C1 control
constexpr uint16_t kShiftC1 = 0x20;    // SS2, SS3, CSI
constexpr uint16_t kRight94 = 0x40;    // graphic character of the right half
constexpr uint16_t kRightMark = 0x80;  // ... where a marked set has a mark
constexpr uint16_t kRightEdge = 0x100; // graphic character of a 96-set alone
constexpr uint16_t kLeft94 = kLeftSame | kLeftOther;
constexpr uint16_t kRightPair = kRight94 | kRightMark;
constexpr uint16_t kOfLeft = kLow | kLeft94 | kC1;
constexpr uint16_t kOfRight = kRightPair | kRightEdge;

constexpr auto kClasses = [] {
    std::array<uint16_t, 256> classes{};
    for (size_t byte = 1; byte < 256; ++byte) {
        const size_t low = byte & 0x7F;
        const bool isRight = byte >= 0x80;
        if (low < 0x20)
            classes[byte] = isRight ? kC1 : kLow;
        else if (low == 0x20 || low == 0x7F)
            classes[byte] = isRight ? kRightEdge : kLow;
        else
            classes[byte] = isRight ? kRight94 : kIsDifferent[byte] ? kLeftOther : kLeftSame;
    }
    classes[kEsc] = classes[kSo] = classes[kSi] = kShiftC0;
    classes[kSs2] = classes[kSs3] = classes[kCsi] = kShiftC1;
    for (size_t byte = 0xC1; byte <= 0xCF; ++byte)
        classes[byte] = kRightMark;
    return classes;
}();

uint16_t ClassAt(const char *at) { return kClasses[Byte(at)]; }

// ---- Runs ----------------------------------------------------------------------------------
//
// In a run of one kind: `single` are the classes whose bytes are units by themselves; `leads` those
// whose bytes begin a unit of two when another of the left half follows one of the left half, or
// one of `rightTrails` follows one of the right; `foreign` those whose bytes end the run.  What none of these settles, UnitAt
// decides.
//
// Plain characters are passed over in blocks.  Of these the masks say: all are of one half, which is
// the right one where `half` says so; and the two bytes at the edges of a half are not of the run.
// Nor are, where it `differs`, the bytes in which left halves differ from ASCII, perhaps.

constexpr bool IsMarked(const Half &half)
{
    return half.row != kNoRow && kSets[half.row].units == Units::marked;
}

constexpr bool Differs(const Half &half)
{
    return half.row != kNoRow && *kSets[half.row].differs != '\0';
}

constexpr unsigned int LeftSingles(const View &view)
{
    const unsigned int characters = Differs(view.left) ? kLeftSame : kLeft94;
    return kLow | (view.escapes || view.shifts ? 0U : kShiftC0) |
           (view.rightUsed && !view.utf8 ? kC1 : 0U) | (view.left.bytes == 1 ? characters : 0U);
}

constexpr unsigned int RightSingles(const View &view)
{
    if (view.utf8 || view.right.bytes != 1)
        return 0;
    return kRight94 | (IsMarked(view.right) ? 0U : kRightMark) |
           (view.right.is96 ? kRightEdge : 0U) | (view.rightUsed ? 0U : kC1 | kShiftC1);
}

constexpr Run RunOf(const View &view, uint16_t kind)
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

// The bytes of the next block that need a closer look: controls, and what is not of the run.  Zeros
// stand behind the end of the text and do, too.
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

bool IsPair(const Run &run, const char *at, size_t avail)
{
    const unsigned int lead = ClassAt(at) & run.leads;
    if (lead == 0 || avail < 2)
        return false;
    return (ClassAt(at + 1) & ((lead & kLeft94) != 0 ? kLeft94 : run.rightTrails)) != 0;
}

// ---- Views ---------------------------------------------------------------------------------

constexpr Half HalfOf(const Designation &held, uint16_t SetRow::*side)
{
    if (held.row == kNoRow || kSets[held.row].*side == 0)
        return {kNoRow, CS_SEG_RAW, 1, true, {}};
    const SetRow &set = kSets[held.row];
    return {held.row, set.*side, set.bytes, set.graphic == Graphic::set96, {}};
}

constexpr Half HalfOf(const State &state, uint8_t element, uint16_t SetRow::*side)
{
    return HalfOf(element == kNowhere ? Designation{} : state.g[element], side);
}

constexpr bool ArePartners(const Half &left, const Half &right)
{
    if (left.row == kNoRow || right.row == kNoRow)
        return false;
    const SetRow &set = kSets[right.row];
    const uint16_t number = kSets[left.row].number;
    return set.partner == number || set.partner2 == number;
}

constexpr View HalvesOf(const State &state)
{
    View view = {};
    if (state.coding == Coding::utf8) {
        view.left = view.right = {FindRow(kUtf8), kUtf8, 1, true, {}};
        view.rightUsed = view.utf8 = true;
        return view;
    }
    if (state.coding == Coding::unknown) {
        view.left = view.right = HalfOf(Designation{}, &SetRow::left);
        return view;
    }
    view.left = HalfOf(state, state.left, &SetRow::left);
    view.right = HalfOf(state, state.right, &SetRow::right);
    view.rightUsed = state.right != kNowhere && Holds(state.g[state.right]);
    view.partners = ArePartners(view.left, view.right);
    if (view.partners && !IsMarked(view.right))
        view.left.kind = view.right.kind;
    return view;
}

// What a walk heeds beside characters: locking shifts and escape sequences are heeded with shifts.
enum class Heeds { nothing, shifts, escapes };

constexpr View ViewOf(const State &state, Heeds heeds)
{
    View view = HalvesOf(state);
    view.escapes = heeds == Heeds::escapes;
    view.shifts = heeds != Heeds::nothing && state.coding == Coding::iso2022;
    view.left.run = RunOf(view, view.left.kind);
    view.right.run =
        view.left.kind == view.right.kind ? view.left.run : RunOf(view, view.right.kind);
    return view;
}

// Where the walks over strings of every set begin, without and with escapes, ready made.
struct Beginning {
    State state;
    View views[2];
};

constexpr auto kBeginnings = [] {
    std::array<Beginning, std::size(kSets)> beginnings{};
    for (size_t row = 0; row < std::size(kSets); ++row) {
        const State state = StartOf(kSets[row]);
        const Heeds heeds = IsBytes(kSets[row]) ? Heeds::nothing : Heeds::shifts;
        beginnings[row] = {state, {ViewOf(state, heeds), ViewOf(state, Heeds::escapes)}};
    }
    return beginnings;
}();

// And over strings of none, which are raw throughout.
constexpr Beginning kUnknown = {{}, {ViewOf({}, Heeds::nothing), ViewOf({}, Heeds::escapes)}};

// The views of the states of seven-bit codes, whose right half has nothing, by the set in the left;
// and with nothing known in the left.
constexpr auto kSevenBitViews = [] {
    std::array<View, std::size(kSets) + 1> views{};
    for (size_t row = 0; row < std::size(kSets); ++row) {
        State state;
        state.g[0] = {static_cast<uint8_t>(row), kSets[row].graphic, '\0', kSets[row].final};
        views[row] = ViewOf(state, Heeds::escapes);
    }
    views[std::size(kSets)] = ViewOf(State{}, Heeds::escapes);
    return views;
}();

// Resolves the walk's state after a change, which there is only where escapes are recognised.
void Resolve(Walk *walk)
{
    const State &state = walk->state;
    if (state.coding == Coding::iso2022 && state.right == kNowhere) {
        const uint8_t row = state.left == kNowhere ? kNoRow : state.g[state.left].row;
        walk->view = &kSevenBitViews[std::min<size_t>(row, std::size(kSets))];
    } else {
        walk->own = ViewOf(state, Heeds::escapes);
        walk->view = &walk->own;
    }
}

// ---- Units of a view -----------------------------------------------------------------------

// What a single shift, whose next byte is a graphic one, makes of that byte's half.
Half ShiftedHalf(const State &state, SingleShift shift, unsigned char byte)
{
    return HalfOf(state.g[shift.element], byte < 0x80 ? &SetRow::left : &SetRow::right);
}

// The character that a single shift shifts stands in the half of its own byte, and the two are one
// unit.  A shift to nothing, or before what is no character, is an empty control function.  Where
// escape sequences are not recognised, ESC N and ESC O are, but reach no set.
Unit ShiftedUnit(const State &state, const View &view, SingleShift shift, const char *at,
                 size_t avail)
{
    const Unit empty = {CS_SEG_IGNORE, shift.length};
    const unsigned char byte = ByteWithin(at, shift.length, avail);
    if (IsControl(byte) || (Byte(at) == kEsc && !view.escapes))
        return empty;
    const Unit character = CharacterUnit(ShiftedHalf(state, shift, byte), false, at + shift.length,
                                         avail - shift.length);
    if (character.kind == CS_SEG_RAW)
        return empty;
    return {character.kind, shift.length + character.length};
}

// Whether the single shift at `at`, an empty one, makes the next byte raw: what is designated has
// nothing in its half.
bool ShiftsToRaw(const State &state, SingleShift shift, const char *at, size_t avail)
{
    const unsigned char byte = ByteWithin(at, shift.length, avail);
    return !IsControl(byte) && !IsSpaceOrDelete(byte) && Holds(state.g[shift.element]) &&
           ShiftedHalf(state, shift, byte).row == kNoRow;
}

// The unit at a byte that may begin an escape or shift sequence; length 0 when it begins none.
Unit SequenceUnit(const State &state, const View &view, const char *at, size_t avail)
{
    constexpr Unit none = {CS_SEG_RAW, 0};
    const unsigned char byte = Byte(at);
    if (byte >= 0x80 && (!view.rightUsed || view.utf8))
        return none;
    if (const SingleShift shift = SingleShiftAt(at, avail); shift.length != 0 && view.shifts)
        return ShiftedUnit(state, view, shift, at, avail);
    if (!view.escapes)
        return none;
    if (byte == kEsc)
        return {CS_SEG_IGNORE, EscapeSequence(at, avail).length};
    if (byte == kCsi)
        return {CS_SEG_IGNORE, ControlSequence(at, 1, avail).length};
    return byte == kSo || byte == kSi ? Unit{CS_SEG_IGNORE, 1} : none;
}

// The unit at `at`; CS_SEG_END where the text ends.
Unit UnitAt(const State &state, const View &view, const char *at, size_t avail)
{
    const unsigned char byte = ByteWithin(at, 0, avail);
    if (byte == 0)
        return {CS_SEG_END, 0};
    if ((kClasses[byte] & (kShiftC0 | kShiftC1)) != 0) {
        const Unit sequence = SequenceUnit(state, view, at, avail);
        if (sequence.length != 0)
            return sequence;
    }
    if (view.utf8)
        return CharacterUnit(view.left, false, at, avail);
    if (IsControl(byte) && byte >= 0x80 && !view.rightUsed)
        return {CS_SEG_RAW, 1};
    if (IsControl(byte) || IsSpaceOrDelete(byte))
        return {view.left.kind, 1};
    return CharacterUnit(byte < 0x80 ? view.left : view.right, view.partners, at, avail);
}

// The byte begins an escape sequence or a locking shift, so that every run ends before it.
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

// The bytes at `at` that are units of the run.  Where the next block begins is to follow from
// branches, which the processor foresees, and not from the counts, which it would wait for.
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
            // Half a character at the end of a block is whole in the next.
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
        return RunLength<true>(walk.state, *walk.view, run, at, avail);
    return RunLength<false>(walk.state, *walk.view, run, at, avail);
}

// The bytes at `at` that repeat an eight-bit single shift and characters of the set that it shifts
// to: half-width katakana come so, character by character.
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

// The run that the first unit of a segment, which is of text or raw, begins.
Unit Lengthen(const Walk &walk, Unit first, const char *at, size_t avail)
{
    const View &view = *walk.view;
    if (const SingleShift shift = SingleShiftAt(at, avail);
        shift.length != 0 && first.length > 1 && first.kind != CS_SEG_RAW && Byte(at + 1) >= 0x80)
        first.length += ShiftedRunLength(walk.state.g[shift.element], *at, at + first.length,
                                         avail - first.length);
    const Run run = first.kind == view.left.kind    ? view.left.run
                    : first.kind == view.right.kind ? view.right.run
                                                    : RunOf(view, first.kind);
    return {first.kind,
            first.length + RunLength(walk, run, at + first.length, avail - first.length)};
}

// The segment of an escape sequence or locking shift, where these are recognised.
Unit Switch(Walk *walk, const char *at, size_t length)
{
    Apply(&walk->state, at, length);
    Resolve(walk);
    return {CS_SEG_IGNORE, length};
}

// Notes the last byte of a single shift that makes the next byte raw, or 0 for none.
void SetShift(Walk *walk, char shift)
{
    walk->state.shift = shift;
    walk->next = shift == 0 ? Walk::Next::any : Walk::Next::rawByte;
}

// The segment at `at` that is begun by a unit of any kind.
Unit SegmentOf(Walk *walk, const char *at, size_t avail)
{
    const Unit first = UnitAt(walk->state, *walk->view, at, avail);
    if (first.kind == CS_SEG_END)
        return first;
    if (first.kind != CS_SEG_IGNORE)
        return Lengthen(*walk, first, at, avail);
    const View &view = *walk->view;
    const SingleShift shift = view.shifts ? SingleShiftAt(at, avail) : SingleShift{0, 0};
    if (shift.length == 0)
        return Switch(walk, at, first.length);
    if ((view.escapes || Byte(at) != kEsc) && ShiftsToRaw(walk->state, shift, at, avail))
        SetShift(walk, at[shift.length - 1]);
    return first;
}

// Whether all the bytes, nearly always many, are of the left half.
bool AreSevenBit(const char *at, size_t avail)
{
    constexpr size_t stride = 4 * blocks::kSize;
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

// The segment at `at` where something is known of it; length 0 when it is as any other.
Unit KnownSegment(Walk *walk, const char *at, size_t avail)
{
    if (walk->next == Walk::Next::rawByte) {
        SetShift(walk, 0);
        return Lengthen(*walk, {CS_SEG_RAW, 1}, at, avail);
    }
    const bool isWhole = walk->set->right != 0 || AreSevenBit(at, avail);
    return {walk->set->number, isWhole ? avail : 0};
}

// The single shift at `at` in text of the set.
SingleShift ShiftOf(const SetRow *set, bool escapes, const char *at, size_t avail)
{
    const bool heeded = set != nullptr && (escapes || HeedsShifts(*set) || Byte(at) != kEsc);
    return heeded ? SingleShiftAt(at, avail) : SingleShift{0, 0};
}

} // namespace

void Begin(Walk *walk, const CSDescriptor &cs)
{
    const uint8_t row = FindRow(cs.csNum);
    const SetRow *set = row == kNoRow ? nullptr : &kSets[row];
    const Beginning &beginning = row == kNoRow ? kUnknown : kBeginnings[row];
    walk->set = set;
    const bool isWhole =
        cs.escMode == 0 && set != nullptr && IsBytes(*set) && *set->differs == '\0';
    walk->next = isWhole ? Walk::Next::whole : Walk::Next::any;
    walk->state = beginning.state;
    walk->view = &beginning.views[cs.escMode != 0];
}

Unit NextSegment(Walk *walk, const char *at, size_t avail)
{
    if (avail == 0)
        return {CS_SEG_END, 0};
    if (walk->next != Walk::Next::any)
        if (const Unit known = KnownSegment(walk, at, avail); known.length != 0)
            return known;
    // Most segments begin with a byte whose class tells their kind.
    const unsigned int byteClass = ClassAt(at);
    if ((byteClass & (kOfLeft | kOfRight)) != 0) {
        const Half &half = (byteClass & kOfLeft) != 0 ? walk->view->left : walk->view->right;
        const size_t length = RunLength(*walk, half.run, at, avail);
        if (length != 0)
            return {half.kind, length};
    } else if (EndsRuns(*walk->view, at, avail)) {
        return Switch(walk, at, Byte(at) == kEsc ? EscapeSequence(at, avail).length : 1);
    }
    return SegmentOf(walk, at, avail);
}

size_t CharacterLength(const SetRow *set, const char *at, size_t avail)
{
    if (ByteWithin(at, 0, avail) == 0)
        return 0;
    return set == nullptr ? 1 : LengthOf(Character(*set, at, avail));
}

size_t ControlLength(const SetRow *set, bool escapes, const char *at, size_t avail)
{
    const unsigned char byte = ByteWithin(at, 0, avail);
    if (byte == 0)
        return 0;
    const SingleShift shift = ShiftOf(set, escapes, at, avail);
    if (shift.length != 0) {
        const unsigned char next = ByteWithin(at, shift.length, avail);
        if (next != 0 && (IsControl(next) || IsSpaceOrDelete(next)))
            return shift.length; // no character is shifted
        const size_t character = CharacterLength(set, at + shift.length, avail - shift.length);
        return character != 0 ? shift.length : 0;
    }
    if (escapes && byte == kEsc)
        return LengthOf(EscapeSequence(at, avail));
    return escapes && byte == kCsi ? LengthOf(ControlSequence(at, 1, avail)) : 1;
}

AnyUnit AnyUnitAt(const SetRow *set, bool escapes, const char *at, size_t avail)
{
    const unsigned char byte = ByteWithin(at, 0, avail);
    if (byte == 0)
        return {0, false};
    if (set == nullptr || IsSpaceOrDelete(byte))
        return {1, true};
    const size_t length =
        IsControl(byte) ? ControlLength(set, escapes, at, avail) : CharacterLength(set, at, avail);
    // Where bytes are characters but shifts are heeded, ESC alone is as if it began one.
    const bool isHalf = byte == kEsc && IsBytes(*set) && HeedsShifts(*set);
    if (length == 0)
        return {strnlen(at, avail), !isHalf};
    const bool counts = !IsControl(byte) || ShiftOf(set, escapes, at, avail).length == 0;
    return {length, counts && !isHalf};
}

} // namespace libstr::ccs
