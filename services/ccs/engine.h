// SPDX-License-Identifier: Apache-2.0
//
// The ISO 2022 engine: reads a text unit by unit and segment by segment by the table of sets.
//
// A unit is what must not be cut: a character with its marks and its single shift, an escape or
// control sequence, a locking shift, or one byte that is none of these.  A segment is a run of
// units of one kind; every escape sequence and locking shift is a segment of its own.  Every byte
// belongs to exactly one segment, and a NUL ends the text even inside a unit.
//
// Wherever `avail` stands, no more than that many bytes are looked at, and none behind a NUL.
#ifndef SERVICES_CCS_ENGINE_H
#define SERVICES_CCS_ENGINE_H

#include "services/ccs/state.h"

namespace libstr::ccs
{

struct Unit {
    uint16_t kind; // a set's number or CS_SEG_...
    size_t length;
};

// How to pass over a run of one kind without asking what each of its units is; see engine.cc.
struct Run {
    uint16_t kind;
    uint16_t single;
    uint16_t leads;
    uint16_t rightTrails;
    uint16_t foreign;
    bool pairs;
    bool inBlocks;
    uint32_t oneHalf;
    uint32_t half;
    uint32_t edges;
    bool differs;
};

// What a half of the code table means in a state.
struct Half {
    uint8_t row; // kNoRow: the bytes are raw
    uint16_t kind;
    uint8_t bytes;
    bool is96;
    Run run;
};

// A state resolved for reading.
struct View {
    Half left;
    Half right;
    bool rightUsed; // something is invoked there, so C1 controls mean what they say
    bool utf8;
    bool partners; // the left half goes together with the right
    bool escapes;  // escape sequences and locking shifts are recognised
    bool shifts;   // single shifts are
};

// A walk over one string.
struct Walk {
    const SetRow *set; // of the string; null for one that the table does not know
    enum class Next : uint8_t { any, whole, rawByte } next; // what is known of the next segment
    State state;      // in force for the segment answered last
    const View *view; // of that state: one of the table's, or `own`
    View own;
};

// Begins a walk in the initial state of the descriptor's set.  A walk must not be copied.
void Begin(Walk *walk, const CSDescriptor &cs);

// The segment at `at`, where the walk has come to, of a text that ends `avail` bytes later, if not
// before at a NUL; CS_SEG_END with length 0 at the end.
Unit NextSegment(Walk *walk, const char *at, size_t avail);

// The bytes of the control function, or of the character of `set`, at `at`; 0 when it does not end
// within `avail` and the text.  Without `escapes` only single shifts are longer than a byte.
size_t ControlLength(const SetRow *set, bool escapes, const char *at, size_t avail);
size_t CharacterLength(const SetRow *set, const char *at, size_t avail);

// The unit of any sort at `at`, what there is of one that is cut off, and whether it counts as a
// character: all but single shifts do.
struct AnyUnit {
    size_t length;
    bool counts;
};
AnyUnit AnyUnitAt(const SetRow *set, bool escapes, const char *at, size_t avail);

} // namespace libstr::ccs

#endif
