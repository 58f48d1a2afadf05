// SPDX-License-Identifier: Apache-2.0
#include "services/ccs/state.h"

namespace ccs
{
namespace
{

bool InRange(char byte, char first, char last) { return byte >= first && byte <= last; }

// ---- Designations --------------------------------------------------------------------------

constexpr char kEscape = static_cast<char>(kEsc);
constexpr char kShiftOut = static_cast<char>(kSo);
constexpr char kShiftIn = static_cast<char>(kSi);
constexpr char k94Selectors[] = "()*+";
constexpr char k96Selectors[] = ",-./"; // the first is not to be used

// The element that an intermediate byte selects, and whether for a 96-set; -1 for none.
int ElementOf(char selector, bool *is96)
{
    *is96 = InRange(selector, ',', '/');
    if (*is96)
        return selector == ',' ? -1 : selector - ',';
    return InRange(selector, '(', '+') ? selector - '(' : -1;
}

// ESC I F, ESC I I F and ESC $ ...: a graphic set for one of G0 to G3.  Anything else is without
// effect on how text is read.
void Designate(State *state, const char *at, size_t length)
{
    const bool manyBytes = at[1] == '$';
    size_t offset = manyBytes ? 2 : 1;
    bool is96 = false;
    int element = 0; // ESC $ @, ESC $ A and ESC $ B go to G0 without being told
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
    state->codingFinal = final;
    state->coding = length != 3    ? Coding::unknown
                    : final == '@' ? Coding::iso2022
                    : final == 'G' ? Coding::utf8
                                   : Coding::unknown;
}

void LockingShift(State *state, char final)
{
    switch (final) {
    case 'n':
        state->left = 2;
        break;
    case 'o':
        state->left = 3;
        break;
    case '~':
        state->right = 1;
        break;
    case '}':
        state->right = 2;
        break;
    case '|':
        state->right = 3;
        break;
    default:
        break;
    }
}

// ---- Escapes for a state -------------------------------------------------------------------

bool SameDesignation(const Designation &a, const Designation &b)
{
    return a.graphic == b.graphic && a.intermediate == b.intermediate && a.final == b.final;
}

size_t Append(char *out, size_t length, const char *text)
{
    while (*text != '\0')
        out[length++] = *text++;
    return length;
}

// Writes the sequence that designates a set to G0..G3 (`element`); returns its length.
size_t DesignatingEscape(const Designation &designation, int element, char *out)
{
    const Graphic graphic = designation.graphic;
    const bool is96 = graphic == Graphic::set96 || graphic == Graphic::set96n;
    const bool manyBytes = graphic == Graphic::set94n || graphic == Graphic::set96n;
    const bool isShort =
        graphic == Graphic::set94n && element == 0 && InRange(designation.final, '@', 'B');
    size_t length = 0;
    out[length++] = kEscape;
    if (manyBytes)
        out[length++] = '$';
    if (!isShort)
        out[length++] = (is96 ? k96Selectors : k94Selectors)[element];
    if (designation.intermediate != 0)
        out[length++] = designation.intermediate;
    out[length++] = designation.final;
    return length;
}

constexpr const char *kLeftShifts[] = {"\x0F", "\x0E", "\x1Bn", "\x1Bo"};
constexpr const char *kRightShifts[] = {"", "\x1B~", "\x1B}", "\x1B|"};

} // namespace

void Apply(State *state, const char *at, size_t length)
{
    const char last = at[length - 1];
    if (at[0] == kShiftOut)
        state->left = 1;
    else if (at[0] == kShiftIn)
        state->left = 0;
    else if (at[0] != kEscape || length < 2 || last < 0x30)
        return; // no escape sequence, or one without its final byte
    else if (length == 2)
        LockingShift(state, last);
    else if (at[1] == '%')
        SwitchCoding(state, at, length);
    else if (at[1] != '[')
        Designate(state, at, length);
}

size_t RestoringEscapes(const State &from, const State &to, char *out)
{
    size_t length = 0;
    const bool sameCoding = from.codingFinal == to.codingFinal;
    if (!sameCoding && from.coding != Coding::iso2022)
        length = Append(out, length, "\x1B%@");
    for (int element = 0; element < 4; ++element) {
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
        out[length++] = to.codingFinal;
    }
    return length;
}

} // namespace ccs
