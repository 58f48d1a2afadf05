// SPDX-License-Identifier: Apache-2.0
//
// Reads a text segment by segment.
//
// A segment is a run of units of one kind; every escape sequence and locking shift is a segment of
// its own.  Every byte belongs to exactly one segment, and a NUL ends the text even inside a unit.
#ifndef SERVICES_CCS_WALK_H
#define SERVICES_CCS_WALK_H

#include "base/plain_text.h"
#include "services/ccs/unit.h"

namespace libstr::ccs
{

// How to pass over a run of one kind without asking what each of its units is; see walk.cc.
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

    bool operator==(const Run &) const = default;
};

// Which of the kernels for plain text knows the text of a view.
enum class Plain : uint8_t { none, sevenBit, eightBit };

// A view with the runs of its halves.
struct Runs {
    View view;
    Plain plain;
    plain::Right rightHalf; // where plain is eightBit
    Run left;
    Run right;

    bool operator==(const Runs &) const = default;
};

// A walk over one string.
struct Walk {
    const SetRow *set; // of the string; null for one that the table does not know
    enum class Next : uint8_t { any, whole, rawByte } next; // what is known of the next segment

    State state; // after the segment returned last

    // What Measure passed last that may be read together with what follows: a sequence, and a raw
    // byte or an ESC that begins none; null for none.
    const char *sequence;
    const char *raw;

    const Runs *shared; // of that state; null: `own`.  May be nobody's: see Settle
    Runs own;

    const Runs &Current() const { return shared != nullptr ? *shared : own; }
};

// Whether a unit of two bytes of the run begins at `at`.
inline bool IsPair(const Run &run, const char *at, size_t avail)
{
    const unsigned int lead = ClassAt(at) & run.leads;
    if (lead == 0 || avail < 2)
        return false;
    return (ClassAt(at + 1) & ((lead & kLeft94) != 0 ? kLeft94 : run.rightTrails)) != 0;
}

// Begins a walk in the initial state of the descriptor's set.
void Begin(Walk *walk, const CSDescriptor &cs);

// Whoever asks a walk for its current runs settles it first: where the rest of the text is one
// segment, NextSegment does without.
void Settle(Walk *walk);

// Changes the walk's state as an escape sequence or locking shift says.
void Follow(Walk *walk, const char *at, size_t length);

// The state in which strings of the set begin.
const State &BeginningOf(const SetRow &set);

// The state to which the walk's string returns at its end, where that is possible.
const State &GoalOf(const Walk &walk);

// Whether the text may end at `at`, which Measure has reached: a letter of ASCII there would not
// change what is before it, and one after the escapes that lead to the goal is read as at the
// beginning of a string.  `isClosed` says that there are such escapes.
bool MayEnd(const Walk &walk, const char *at, bool isClosed);

// The segment at `at`, which the walk has reached.  The text ends after `avail` bytes, or before
// that at a NUL: CS_SEG_END with length 0.
Unit NextSegment(Walk *walk, const char *at, size_t avail);

} // namespace libstr::ccs

#endif
