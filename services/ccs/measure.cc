// SPDX-License-Identifier: Apache-2.0
#include "services/ccs/measure.h"

#include <algorithm>

namespace libstr::ccs
{
namespace
{

using plain::Limits;
using plain::Passed;

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

Passed PassSevenBit(Walk *walk, const char *at, size_t avail, const Limits &limits)
{
    plain::SevenBit text = {walk->runs->view.left.bytes == 2, walk->state.left == 0, nullptr};
    const Passed passed = plain::PassSevenBit(at, avail, limits, &text);
    if (text.designation != nullptr) {
        Apply(&walk->state, text.designation, 3);
        Resolve(walk);
    }
    return passed;
}

// Passes over what needs no closer look.
Passed PassPlain(Walk *walk, const char *at, size_t avail, const Limits &limits)
{
    const View &view = walk->runs->view;
    if (!view.escapes || view.utf8 || view.left.row == kNoRow || walk->next != Walk::Next::any)
        return {};
    if (!view.rightUsed)
        return view.left.is96 || IsMarked(view.left) ? Passed{}
                                                     : PassSevenBit(walk, at, avail, limits);
    if (view.left.bytes != 1 || view.left.is96 || view.right.row == kNoRow || view.right.bytes != 1)
        return {};
    const bool marks = IsMarked(view.right);
    if (marks && !view.partners)
        return {};
    return plain::PassEightBit(at, avail, limits, {marks, view.right.is96});
}

// ---- Units ---------------------------------------------------------------------------------

// What a unit that is not a sequence adds.  A single shift is not shown, but its character is.
Passed MeasureUnit(const Unit &unit, const char *at)
{
    const unsigned char byte = Byte(at);
    const bool isControl = unit.kind != CS_SEG_RAW && IsControl(byte);
    if (isControl && unit.length > 1)
        return {unit.length, 1, unit.length - (byte == kEsc ? 2 : 1), 0};
    const bool shown = !isControl && (byte != 0x7F || unit.kind == CS_SEG_RAW);
    return {unit.length, shown ? 1U : 0U, shown ? unit.length : 0, byte == '\n' && isControl};
}

// The unit at `at`, which the walk has reached.  Most units can be told by their first bytes.
Unit UnitOf(const Walk &walk, const char *at, size_t avail)
{
    const Runs &runs = *walk.runs;
    for (const Run *run : {&runs.left, &runs.right}) {
        if ((ClassAt(at) & run->single) != 0)
            return {run->kind, 1};
        if (IsPair(*run, at, avail))
            return {run->kind, 2};
    }
    return UnitAt(walk.state, runs.view, at, avail);
}

// Passes over one unit or sequence; no bytes where it does not fit.
Passed PassUnit(Walk *walk, const char *at, size_t avail, size_t most, bool *isCut)
{
    if (walk->next == Walk::Next::rawByte)
        return MeasureUnit(NextSegment(walk, at, 1), at);
    const Unit unit = UnitOf(*walk, at, avail);
    if (unit.kind == CS_SEG_IGNORE)
        *isCut = unit.length == avail;
    if (unit.length > most)
        return {};
    if (unit.kind != CS_SEG_IGNORE)
        return MeasureUnit(unit, at);
    NextSegment(walk, at, avail); // changes the state
    return {unit.length, 0, 0, 0};
}

} // namespace

Passed Measure(Walk *walk, const char *at, size_t avail, const Limits &limits, bool *isCut)
{
    Passed total = {};
    *isCut = false;
    for (;;) {
        const size_t begin = total.bytes;
        plain::Add(&total, PassPlain(walk, at + begin, avail - begin, plain::Less(limits, total)));
        const Limits left = plain::Less(limits, total);
        if (total.bytes == avail || left.bytes == 0 || left.columns == 0)
            return total;
        const Passed unit =
            PassUnit(walk, at + total.bytes, avail - total.bytes, left.bytes, isCut);
        if (unit.bytes == 0)
            return total;
        plain::Add(&total, unit);
    }
}

} // namespace libstr::ccs
