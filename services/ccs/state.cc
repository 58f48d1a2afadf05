// SPDX-License-Identifier: Apache-2.0
#include "services/ccs/state.h"

#include <cstring>
#include <string_view>

namespace libstr::ccs
{
namespace
{

// ---- Designations --------------------------------------------------------------------------

// The element that an intermediate byte selects, and whether for a 96-set; -1 for none.
int ElementOf(char selector, bool *is96)
{
    *is96 = selector >= ',' && selector <= '/';
    if (*is96)
        return selector == ',' ? -1 : selector - ',';
    return selector >= '(' && selector <= '+' ? selector - '(' : -1;
}

// ESC I F, ESC I I F and ESC $ ...: a graphic set for one of G0 to G3.  Does nothing for any other
// sequence.
void Designate(State *state, const char *at, size_t length)
{
    const bool manyBytes = at[1] == '$';
    size_t offset = manyBytes ? 2 : 1;
    bool is96 = false;
    int element = 0; // ESC $ @, ESC $ A and ESC $ B designate to G0
    if (!manyBytes || length > 3)
        element = ElementOf(at[offset++], &is96);
    if (element < 0)
        return;
    const size_t extra = length - 1 - offset; // bytes between the selector and the final byte
    const Graphic graphic = manyBytes ? (is96 ? Graphic::set96n : Graphic::set94n)
                                      : (is96 ? Graphic::set96 : Graphic::set94);
    const char intermediate = extra != 0 ? at[offset] : '\0';
    const char final = at[length - 1];
    state->g[element] = {FindGraphicRow(graphic, intermediate, final), graphic, intermediate,
                         final};
}

void SwitchCoding(State *state, const char *at, size_t length)
{
    const char final = at[length - 1];
    state->codingIntermediate = length == 3 ? '\0' : at[2];
    state->codingFinal = final;
    state->coding = length != 3    ? Coding::unknown
                    : final == '@' ? Coding::iso2022
                    : final == 'G' ? Coding::utf8
                                   : Coding::unknown;
}

// What invokes each of G0 to G3 in a half; nothing invokes G0 to the right.
constexpr std::string_view kLeftShifts[] = {"\x0F", "\x0E", "\x1Bn", "\x1Bo"};
constexpr std::string_view kRightShifts[] = {"", "\x1B~", "\x1B}", "\x1B|"};

void LockingShift(State *state, std::string_view sequence)
{
    for (uint8_t element = 0; element < 4; ++element) {
        if (sequence == kLeftShifts[element])
            state->left = element;
        if (sequence == kRightShifts[element])
            state->right = element;
    }
}

// ---- Escapes for a state -------------------------------------------------------------------

size_t Append(char *out, size_t length, std::string_view text)
{
    std::memcpy(out + length, text.data(), text.size());
    return length + text.size();
}

} // namespace

void Apply(State *state, const char *at, size_t length)
{
    if (length <= 2)
        LockingShift(state, {at, length});
    else if (at[0] != static_cast<char>(kEsc) || at[length - 1] < 0x30)
        return; // not an escape sequence, or without its final byte
    else if (at[1] == '%')
        SwitchCoding(state, at, length);
    else if (at[1] != '[')
        Designate(state, at, length);
}

State Restored(const State &from, const State &to)
{
    State state = to;
    for (size_t element = 0; element < 4; ++element)
        if (to.g[element].final == 0)
            state.g[element] = from.g[element];
    if (to.left == kNowhere)
        state.left = from.left;
    if (to.right == kNowhere)
        state.right = from.right;
    return state;
}

size_t RestoringEscapes(const State &from, const State &to, char *out)
{
    size_t length = 0;
    const bool sameCoding =
        from.codingIntermediate == to.codingIntermediate && from.codingFinal == to.codingFinal;
    if (!sameCoding && from.coding != Coding::iso2022)
        length = Append(out, length, "\x1B%@");
    for (size_t element = 0; element < 4; ++element) {
        const Designation &wanted = to.g[element];
        if (wanted.final != 0 && !SameDesignation(from.g[element], wanted))
            length += DesignatingEscape(wanted, element, out + length);
    }
    if (to.left != from.left && to.left != kNowhere)
        length = Append(out, length, kLeftShifts[to.left]);
    if (to.right != from.right && to.right != kNowhere)
        length = Append(out, length, kRightShifts[to.right]);
    if (!sameCoding && to.coding != Coding::iso2022) {
        length = Append(out, length, "\x1B%");
        if (to.codingIntermediate != 0)
            out[length++] = to.codingIntermediate;
        out[length++] = to.codingFinal;
    }
    if (to.shift == 'N' || to.shift == 'O')
        out[length++] = static_cast<char>(kEsc);
    if (to.shift != 0)
        out[length++] = to.shift;
    return length;
}

} // namespace libstr::ccs
