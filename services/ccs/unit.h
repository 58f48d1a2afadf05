// SPDX-License-Identifier: Apache-2.0
//
// What every byte of a text means.
//
// A unit is what must not be cut: a character with its marks and its single shift, an escape or
// control sequence, a locking shift, or one byte that is none of these.
//
// Bad text is read as the standards' readers do.  Only the first byte of a malformed escape
// sequence is a control function; what follows it is text.  A sequence that the end of the text
// cuts off is ignored whole.  A byte that cannot be a character is raw.
//
// No function looks at more than `avail` bytes, nor at any byte after a NUL.
#ifndef SERVICES_CCS_UNIT_H
#define SERVICES_CCS_UNIT_H

#include "services/ccs/view.h"

namespace libstr::ccs
{

struct Unit {
    uint16_t kind; // a set's number or CS_SEG_...
    size_t length;
};

// The unit at `at`; CS_SEG_END where the text ends.
Unit UnitAt(const State &state, const View &view, const char *at, size_t avail);

// The bytes of the escape sequence at `at`, or of what there is of it.
size_t EscapeLength(const char *at, size_t avail);

// ---- Single shifts -------------------------------------------------------------------------

struct SingleShift {
    size_t length;   // 0: none
    uint8_t element; // of G0 to G3, to which it shifts
};

inline SingleShift SingleShiftAt(const char *at, size_t avail)
{
    const unsigned char byte = Byte(at);
    if (byte == kSs2 || byte == kSs3)
        return {1, static_cast<uint8_t>(byte - kSs2 + 2)};
    const unsigned char second = byte == kEsc ? ByteWithin(at, 1, avail) : 0;
    if (second == 'N' || second == 'O')
        return {2, static_cast<uint8_t>(second - 'N' + 2)};
    return {0, 0};
}

// A letter of ASCII that ends every sequence.  With ESC before it, it is a single shift.
inline constexpr char kLetter = 'N';

// Whether the letter, if it came after the `length` bytes at `at`, would belong to one unit with
// them.  They begin with a sequence or a raw byte, and hold no NUL.
bool GoesOn(const State &state, const View &view, const char *at, size_t length);

// Whether an empty single shift makes the next byte raw: the designated set has nothing in the half
// of that byte.
bool ShiftsToRaw(const State &state, SingleShift shift, const char *at, size_t avail);

// ---- Lengths in a set ----------------------------------------------------------------------

constexpr bool IsBytes(const SetRow &set) { return (set.flags & CS_FLAG_BYTE) != 0; }

// The bytes of the control function, or of the character of `set`, at `at`; 0 when it does not end
// within `avail` and the text.  Without `escapes` only single shifts are longer than a byte.
size_t ControlLength(const SetRow *set, bool escapes, const char *at, size_t avail);
size_t CharacterLength(const SetRow *set, const char *at, size_t avail);

// The unit of any sort at `at`; if it is cut off, the rest of the text.  Every unit except a single
// shift counts as a character.
struct AnyUnit {
    size_t length;
    bool counts;
};
AnyUnit AnyUnitAt(const SetRow *set, bool escapes, const char *at, size_t avail);

} // namespace libstr::ccs

#endif
