// SPDX-License-Identifier: Apache-2.0
//
// The ISO 2022 engine: reads a text unit by unit and segment by segment by the table of sets.
//
// A unit is what must not be cut: a character with its marks and its single shift, an escape or
// control sequence, a shift function, or one byte that is none of these.  A segment is a run of
// units of one kind; every escape sequence and locking shift is a segment of its own.  Every byte
// belongs to exactly one segment, and a NUL ends the text even inside a unit.
#ifndef SERVICES_CCS_ENGINE_H
#define SERVICES_CCS_ENGINE_H

#include "services/ccs/sets.h"

#include <cstddef>

namespace ccs
{

// What one of G0 to G3 holds: a set of the table, a designation that the table does not know
// (set is null, final is not 0), or nothing.
struct Designation {
    const SetRow *set;
    Graphic graphic;
    char intermediate;
    char final;
};

// Which way text is coded apart from ISO 2022 (ESC % F).
enum class Coding : uint8_t { iso2022, utf8, unknown };

// All that a position in a text depends on; small, and copied freely.
struct State {
    Designation g[4];
    uint8_t left; // 0 to 3, or kNowhere
    uint8_t right;
    Coding coding;
    char codingFinal;
};

// What a half of the code table means in a state.
struct Half {
    const SetRow *set; // null: the bytes are raw
    uint16_t kind;
    uint8_t bytes;
    bool is96;
};

// A state resolved for reading.
struct View {
    Half left;
    Half right;
    bool rightUsed; // something is invoked there, so C1 controls mean what they say
    bool utf8;
    bool escapes; // escape sequences and locking shifts are recognised
};

struct Unit {
    uint16_t kind;
    size_t length;
};

// A walk over one string.
struct Walk {
    const SetRow *set; // of the string; null for one that the table does not know
    State state;       // in force for the segment last answered
    View view;
    bool plain; // all of the string is one segment
};

// Begins a walk in the initial state of the descriptor's set.
void Begin(Walk *walk, const CSDescriptor &cs);

// The segment at `at`, where the walk has come to; CS_SEG_END with length 0 at the end.
Unit NextSegment(Walk *walk, const char *at, size_t avail);

// The unit at `at`, read in a given view; CS_SEG_END where the text ends.
Unit UnitAt(const State &state, const View &view, const char *at, size_t avail);

View ViewOf(const State &state, bool escapes);

// Carries out the escape or shift sequence of `length` bytes at `at`.
void Apply(State *state, const char *at, size_t length);

// The bytes of the control function, or of the character of `set`, at `at`; 0 when it does not end
// within `avail` and the text.
size_t ControlLength(const SetRow *set, const char *at, size_t avail);
size_t CharacterLength(const SetRow *set, const char *at, size_t avail);

// The unit of any sort at `at`, a byte by itself where its length cannot be told, and whether it
// counts as a character: all but single shifts do.
struct AnyUnit {
    size_t length;
    bool counts;
};
AnyUnit AnyUnitAt(const SetRow *set, const char *at, size_t avail);

// The most bytes that RestoringEscapes may write: four designations, two shifts, a coding system.
inline constexpr size_t kMostEscapes = 32;

// The sequences that lead from one state to the other, as far as sequences can: an element that
// holds nothing in `to` keeps what it holds.  Returns their length; no NUL is added.
size_t RestoringEscapes(const State &from, const State &to, char *out);

// The state in which a string of the set begins.
State InitialState(const SetRow &set);

} // namespace ccs

#endif
