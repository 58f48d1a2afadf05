// SPDX-License-Identifier: Apache-2.0
//
// A state of ISO 2022 resolved for reading: what each half of the code table means, and which
// sequences are recognised.
#ifndef SERVICES_CCS_VIEW_H
#define SERVICES_CCS_VIEW_H

#include "services/ccs/state.h"

namespace libstr::ccs
{

struct Half {
    uint8_t row; // kNoRow: the bytes are raw
    uint16_t kind;
    uint8_t bytes;
    bool is96;

    bool operator==(const Half &) const = default;
};

struct View {
    Half left;
    Half right;
    bool rightUsed; // something is invoked there, so C1 controls have their meaning
    bool utf8;
    bool partners; // the two halves go together
    bool escapes;  // escape sequences and locking shifts are recognised
    bool shifts;   // single shifts are recognised
    bool noC1;     // 0x80 to 0x9F are characters of the right half

    bool operator==(const View &) const = default;
};

constexpr bool HasNoC1(const SetRow &set) { return (set.flags & CS_FLAG_NO_C1) != 0; }

constexpr bool IsMarked(const Half &half)
{
    return half.row != kNoRow && kSets[half.row].units == Units::marked;
}

constexpr Half HalfOf(const Designation &held, uint16_t SetRow::*side)
{
    if (held.row == kNoRow || kSets[held.row].*side == 0)
        return {kNoRow, CS_SEG_RAW, 1, true};
    const SetRow &set = kSets[held.row];
    return {held.row, set.*side, set.bytes, set.graphic == Graphic::set96 || HasNoC1(set)};
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
        view.left = view.right = {FindRow(kUtf8), kUtf8, 1, true};
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
    view.noC1 = view.right.row != kNoRow && HasNoC1(kSets[view.right.row]);
    view.partners = ArePartners(view.left, view.right);
    if (view.partners && !IsMarked(view.right))
        view.left.kind = view.right.kind;
    return view;
}

// What a walk recognises besides characters.  `escapes` includes locking shifts and single shifts.
enum class Heeds { nothing, shifts, escapes };

constexpr View ViewOf(const State &state, Heeds heeds)
{
    View view = HalvesOf(state);
    view.escapes = heeds == Heeds::escapes;
    view.shifts = heeds != Heeds::nothing && state.coding == Coding::iso2022;
    return view;
}

} // namespace libstr::ccs

#endif
