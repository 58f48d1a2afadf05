// SPDX-License-Identifier: Apache-2.0
#include "services/ccs/measure.h"

namespace libstr::ccs
{
namespace
{

using plain::Passage;

// ---- Plain text ----------------------------------------------------------------------------

// Passes over what needs no closer look.
void PassPlain(Walk *walk, Passage *passage)
{
    const Runs &runs = walk->Current();
    if (walk->next != Walk::Next::any || runs.plain == Plain::none)
        return;
    if (runs.plain == Plain::eightBit)
        return plain::PassEightBit(passage, runs.rightHalf);
    plain::SevenBit state = {runs.view.left.bytes == 2, walk->state.left == 0, nullptr};
    plain::PassSevenBit(passage, &state);
    if (state.designation != nullptr)
        Follow(walk, state.designation, 3);
}

// ---- Units ---------------------------------------------------------------------------------

// Passes a unit that is not a sequence.  A single shift is not shown, but its character is.
void TakeUnit(const Unit &unit, const char *at, bool noC1, Passage *passage)
{
    const bool isRaw = unit.kind == CS_SEG_RAW;
    const bool isControl = !isRaw && IsControl(Byte(at)) && !(noC1 && Byte(at) >= 0x80);
    const size_t shift = isControl && unit.length > 1 ? (Byte(at) == kEsc ? 2 : 1) : 0;
    const bool shown = isRaw || ((!isControl || shift != 0) && Byte(at + shift) != 0x7F);
    passage->bytes += unit.length;
    passage->columns += shown;
    passage->shown += shown ? unit.length - shift : 0;
    passage->lines += isControl && *at == '\n';
}

// The unit at `at`, which the walk has reached.  Most units can be told by their first bytes.
Unit UnitOf(const Walk &walk, const char *at, size_t avail)
{
    const Runs &runs = walk.Current();
    for (const Run *run : {&runs.left, &runs.right}) {
        if ((ClassAt(at) & run->single) != 0)
            return {run->kind, 1};
        if (IsPair(*run, at, avail))
            return {run->kind, 2};
    }
    return UnitAt(walk.state, runs.view, at, avail);
}

enum class Outcome { passed, tooLong, cut };

// Passes over one unit or sequence.
Outcome PassUnit(Walk *walk, Passage *passage)
{
    const char *const at = passage->text + passage->bytes;
    const size_t avail = passage->known - passage->bytes;
    if (walk->next == Walk::Next::rawByte) {
        TakeUnit(NextSegment(walk, at, 1), at, false, passage);
        return Outcome::passed;
    }
    const Unit unit = UnitOf(*walk, at, avail);
    const bool isSequence = unit.kind == CS_SEG_IGNORE;
    if (unit.length > passage->mostBytes - passage->bytes)
        return isSequence && unit.length == avail ? Outcome::cut : Outcome::tooLong;
    if (isSequence) {
        walk->sequence = at;
        passage->bytes += NextSegment(walk, at, avail).length; // changes the state
    } else {
        if (unit.kind == CS_SEG_RAW || *at == static_cast<char>(kEsc))
            walk->raw = at;
        TakeUnit(unit, at, walk->Current().view.noC1, passage);
    }
    return Outcome::passed;
}

} // namespace

bool Measure(Walk *walk, Passage *passage)
{
    Settle(walk);
    for (;;) {
        PassPlain(walk, passage);
        if (passage->bytes == passage->known || IsOver(*passage))
            return false;
        if (const Outcome outcome = PassUnit(walk, passage); outcome != Outcome::passed)
            return outcome == Outcome::cut;
    }
}

} // namespace libstr::ccs
