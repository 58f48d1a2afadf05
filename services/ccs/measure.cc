// SPDX-License-Identifier: Apache-2.0
#include "services/ccs/measure.h"

#include <algorithm>

namespace libstr::ccs
{
namespace
{

using plain::Passage;

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

void PassSevenBit(Walk *walk, Passage *passage)
{
    plain::SevenBit state = {walk->Current().view.left.bytes == 2, walk->state.left == 0, nullptr};
    plain::PassSevenBit(passage, &state);
    if (state.designation != nullptr)
        Follow(walk, state.designation, 3);
}

// What the right half of the view has, where PassEightBit knows it.
bool FindRight(const Walk &walk, plain::Right *right)
{
    const View &view = walk.Current().view;
    if (view.right.row == kNoRow)
        return false;
    if (view.right.bytes == 2) {
        const Half half = HalfOf(walk.state.g[2], &SetRow::right);
        const bool isSingle =
            half.row != kNoRow && !half.is96 && half.bytes == 1 && !IsMarked(half);
        *right = isSingle ? plain::Right::shifted : plain::Right::pairs;
        return !view.right.is96;
    }
    *right = IsMarked(view.right) ? plain::Right::marked
             : view.right.is96    ? plain::Right::single96
                                  : plain::Right::single94;
    return view.partners || !IsMarked(view.right);
}

// Passes over what needs no closer look.
void PassPlain(Walk *walk, Passage *passage)
{
    const View &view = walk->Current().view;
    plain::Right right;
    if (!view.escapes || view.utf8 || walk->next != Walk::Next::any || view.left.row == kNoRow ||
        view.left.is96 || IsMarked(view.left))
        return;
    if (!view.rightUsed)
        PassSevenBit(walk, passage);
    else if (view.left.bytes == 1 && FindRight(*walk, &right))
        plain::PassEightBit(passage, right);
}

// ---- Units ---------------------------------------------------------------------------------

// Passes a unit that is not a sequence.  A single shift is not shown, but its character is.
void TakeUnit(const Unit &unit, const char *at, Passage *passage)
{
    const bool isRaw = unit.kind == CS_SEG_RAW;
    const bool isControl = !isRaw && IsControl(Byte(at));
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
        TakeUnit(NextSegment(walk, at, 1), at, passage);
        return Outcome::passed;
    }
    const Unit unit = UnitOf(*walk, at, avail);
    const bool isSequence = unit.kind == CS_SEG_IGNORE;
    if (unit.length > passage->mostBytes - passage->bytes)
        return isSequence && unit.length == avail ? Outcome::cut : Outcome::tooLong;
    if (isSequence)
        passage->bytes += NextSegment(walk, at, avail).length; // changes the state
    else
        TakeUnit(unit, at, passage);
    return Outcome::passed;
}

} // namespace

bool Measure(Walk *walk, Passage *passage)
{
    for (;;) {
        PassPlain(walk, passage);
        if (passage->bytes == passage->known || IsOver(*passage))
            return false;
        if (const Outcome outcome = PassUnit(walk, passage); outcome != Outcome::passed)
            return outcome == Outcome::cut;
    }
}

} // namespace libstr::ccs
