// SPDX-License-Identifier: Apache-2.0
//
// The state of a text in ISO 2022: what is designated to G0 to G3, and what is invoked; how escape
// and shift sequences change it; which sequences lead from one state to another.
#ifndef SERVICES_CCS_STATE_H
#define SERVICES_CCS_STATE_H

#include "services/ccs/bytes.h"

#include <bit>

namespace libstr::ccs
{

// What one of G0 to G3 holds: a set of the table, a designation that the table does not have (row
// is kNoRow), or nothing (final is 0 too).
struct Designation {
    uint8_t row = kNoRow;
    Graphic graphic = Graphic::none;
    char intermediate = 0;
    char final = 0;
};

constexpr bool Holds(const Designation &held) { return held.row != kNoRow || held.final != 0; }

// The row depends on the rest.
constexpr bool SameDesignation(const Designation &a, const Designation &b)
{
    return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b);
}

// How text is coded: by ISO 2022, or in another way, to which ESC % F has switched.
enum class Coding : uint8_t { iso2022, utf8, unknown };

// Everything that the meaning of the next byte depends on.
struct State {
    Designation g[4];
    uint8_t left = 0; // which of the four is invoked in this half, or kNowhere
    uint8_t right = kNowhere;
    Coding coding = Coding::iso2022;
    char codingIntermediate = 0; // of the sequence that switched to it, 0 for none
    char codingFinal = '@';
    char shift = 0; // last byte of a single shift that makes the next byte raw, 0 for none
};

constexpr Designation DesignationTo(uint8_t row)
{
    const SetRow &set = kSets[row];
    return {row, set.graphic, set.intermediate, set.final};
}

// The state in which a string of the set begins.
constexpr State StartOf(const Row &set)
{
    State state;
    state.left = set.start.left;
    state.right = set.start.right;
    if (set.units == Units::utf8) {
        state.coding = Coding::utf8;
        state.codingFinal = 'G';
    }
    for (size_t element = 0; element < 4; ++element)
        if (const uint8_t row = FindRow(set.start.g[element]); row != kNoRow)
            state.g[element] = DesignationTo(row);
    return state;
}

// Writes the sequence that designates what is held to G0..G3 (`element`); returns its length.
constexpr size_t DesignatingEscape(const Designation &held, size_t element, char *out)
{
    const bool is96 = held.graphic == Graphic::set96 || held.graphic == Graphic::set96n;
    const bool manyBytes = held.graphic == Graphic::set94n || held.graphic == Graphic::set96n;
    // The oldest sets of many bytes are designated to G0 without a byte that says so.
    const bool isShort = manyBytes && !is96 && element == 0 && held.intermediate == 0 &&
                         held.final >= '@' && held.final <= 'B';
    size_t length = 0;
    out[length++] = static_cast<char>(kEsc);
    if (manyBytes)
        out[length++] = '$';
    if (!isShort)
        out[length++] = (is96 ? ",-./" : "()*+")[element];
    if (held.intermediate != 0)
        out[length++] = held.intermediate;
    out[length++] = held.final;
    return length;
}

// The sequences that designate the sets, each to the lowest of G0 to G3 that can hold it.
struct Designating {
    char text[5];
};

inline constexpr auto kDesignating = [] {
    std::array<Designating, kDesignated> all{};
    for (size_t row = 0; row < kDesignated; ++row)
        DesignatingEscape(DesignationTo(static_cast<uint8_t>(row)),
                          kSets[row].graphic == Graphic::set96 ? 1 : 0, all[row].text);
    return all;
}();

// Null for a set that cannot be designated.
inline const char *DesignationOf(const SetRow &set)
{
    return set.graphic == Graphic::none ? nullptr : kDesignating[RowOf(set)].text;
}

// Changes the state as the `length` bytes at `at` say, an escape sequence or a locking shift.  Does
// nothing if the sequence is incomplete or does not change the state.
void Apply(State *state, const char *at, size_t length);

// Whether the sequences of RestoringEscapes surely give both halves back the sets that they have.
inline bool RestoresHalves(const State &from, const State &to)
{
    const auto restores = [&](uint8_t State::*half) {
        const uint8_t element = to.*half;
        if (element == kNowhere)
            return from.*half == kNowhere;
        return to.g[element].final != 0 || SameDesignation(from.g[element], to.g[element]);
    };
    return restores(&State::left) && restores(&State::right);
}

// The state to which they lead.
State Restored(const State &from, const State &to);

// The most bytes that RestoringEscapes writes.
inline constexpr size_t kMostEscapes = 40;

// Writes the sequences that lead from one state to the other, as far as there are any: no sequence
// empties one of G0 to G3.  Returns their length; adds no NUL.
size_t RestoringEscapes(const State &from, const State &to, char *out);

} // namespace libstr::ccs

#endif
