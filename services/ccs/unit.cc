// SPDX-License-Identifier: Apache-2.0
#include "services/ccs/unit.h"

#include "base/utf8.h"

#include <glib.h>

#include <algorithm>
#include <cstring>

namespace libstr::ccs
{
namespace
{

// A base unit has at most this many marks, so that a run of marks costs linear time.
constexpr size_t kMostMarks = 4;

// ---- Sequences -----------------------------------------------------------------------------

enum class Form { complete, malformed, cutOff };

struct Sequence {
    Form form;
    size_t length; // malformed: of the bad bytes; cut off: of what there is
};

// The length services return 0 for a sequence that is cut off.
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

// Ends a sequence that must have its final byte, from `firstFinal` to 0x7E, at `offset`.
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

// An escape or control sequence; a malformed one if neither begins here.
Sequence SequenceAt(const char *at, size_t avail)
{
    if (Byte(at) == kEsc)
        return EscapeSequence(at, avail);
    return Byte(at) == kCsi ? ControlSequence(at, 1, avail) : Sequence{Form::malformed, 1};
}

// ---- Characters ----------------------------------------------------------------------------

// A base unit that begins with a mark: its marks and its base.
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

// The character of `set` at `at`, a byte that is not a control, space or DEL.
Sequence Character(const SetRow &set, const char *at, size_t avail)
{
    if (set.units == Units::utf8)
        return Utf8Character(at, avail);
    if (set.units == Units::marked && IsMark(Byte(at)))
        return BaseUnit(at, avail);
    return set.bytes == 1 ? Sequence{Form::complete, 1} : TwoByteCharacter(at, avail);
}

// Whether the set, in the left half, has another character for this byte than ASCII.
constexpr bool Differs(const SetRow &set, unsigned char byte)
{
    return set.differs && byte < 0x80 && kIsDifferent[byte];
}

// The character at `at`, a graphic byte of `half`, as a unit.  The base of a mark is usually in the
// left half; if the halves are not partners, the mark has no base there.
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

// ---- Single shifts and units ----------------------------------------------------------------

// Whether ESC N and ESC O are single shifts where escape sequences are not recognised.  In a set of
// bytes they are characters, except in a right half used in seven bits, which they switch to.
constexpr bool HeedsShifts(const SetRow &set)
{
    return set.units != Units::utf8 && (!IsBytes(set) || set.isHalf);
}

// Whether the byte begins a control function in text of the set.
constexpr bool IsControlIn(const SetRow &set, unsigned char byte)
{
    return IsControl(byte) && (byte < 0x80 || !HasNoC1(set));
}

// The half that a single shift gives the graphic byte after it.
Half ShiftedHalf(const State &state, SingleShift shift, unsigned char byte)
{
    return HalfOf(state.g[shift.element], byte < 0x80 ? &SetRow::left : &SetRow::right);
}

// A single shift and the character after it, which is in the half of its own byte, are one unit.
// A shift to an empty set, or before bytes that are not a character, is a control function by
// itself.  Where escape sequences are not recognised, ESC N and ESC O reach no set.
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

// The unit at a byte that may begin an escape or shift sequence; length 0 when it begins none.
Unit SequenceUnit(const State &state, const View &view, const char *at, size_t avail)
{
    constexpr Unit none = {CS_SEG_RAW, 0};
    const unsigned char byte = Byte(at);
    if (byte >= 0x80 && (!view.rightUsed || view.utf8 || view.noC1))
        return none;
    if (const SingleShift shift = SingleShiftAt(at, avail); shift.length != 0 && view.shifts)
        return ShiftedUnit(state, view, shift, at, avail);
    if (!view.escapes)
        return none;
    if (byte == kEsc || byte == kCsi)
        return {CS_SEG_IGNORE, SequenceAt(at, avail).length};
    return byte == kSo || byte == kSi ? Unit{CS_SEG_IGNORE, 1} : none;
}

// The single shift at `at` in text of the set.
SingleShift ShiftOf(const SetRow *set, bool escapes, const char *at, size_t avail)
{
    const bool heeded = set != nullptr && IsControlIn(*set, Byte(at)) &&
                        (escapes || HeedsShifts(*set) || Byte(at) != kEsc);
    return heeded ? SingleShiftAt(at, avail) : SingleShift{0, 0};
}

} // namespace

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
    if ((IsControl(byte) && (byte < 0x80 || !view.noC1)) || IsSpaceOrDelete(byte))
        return {view.left.kind, 1};
    return CharacterUnit(byte < 0x80 ? view.left : view.right, view.partners, at, avail);
}

size_t EscapeLength(const char *at, size_t avail) { return EscapeSequence(at, avail).length; }

[[gnu::cold]] bool GoesOn(const State &state, const View &view, const char *at, size_t length)
{
    char bytes[8]; // only escape and control sequences are longer
    if (length >= sizeof bytes)
        return SequenceAt(at, length).form == Form::cutOff &&
               UnitAt(state, view, at, length).kind == CS_SEG_IGNORE;
    std::memcpy(bytes, at, length);
    bytes[length] = kLetter;
    return UnitAt(state, view, bytes, length + 1).length > length;
}

bool ShiftsToRaw(const State &state, SingleShift shift, const char *at, size_t avail)
{
    const unsigned char byte = ByteWithin(at, shift.length, avail);
    return !IsControl(byte) && !IsSpaceOrDelete(byte) && Holds(state.g[shift.element]) &&
           ShiftedHalf(state, shift, byte).row == kNoRow;
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
    const bool isSequence =
        escapes && (byte == kEsc || (byte == kCsi && (set == nullptr || !HasNoC1(*set))));
    return isSequence ? LengthOf(SequenceAt(at, avail)) : 1;
}

AnyUnit AnyUnitAt(const SetRow *set, bool escapes, const char *at, size_t avail)
{
    const unsigned char byte = ByteWithin(at, 0, avail);
    if (byte == 0)
        return {0, false};
    if (set == nullptr || IsSpaceOrDelete(byte))
        return {1, true};
    if (!IsControlIn(*set, byte)) {
        const size_t length = CharacterLength(set, at, avail);
        return {length == 0 ? strnlen(at, avail) : length, true};
    }
    const size_t length = ControlLength(set, escapes, at, avail);
    // Where bytes are characters but shifts are heeded, a lone ESC counts as half a shift.
    const bool isHalf = byte == kEsc && IsBytes(*set) && HeedsShifts(*set);
    if (length == 0)
        return {strnlen(at, avail), !isHalf};
    return {length, !isHalf && ShiftOf(set, escapes, at, avail).length == 0};
}

} // namespace libstr::ccs
