// SPDX-License-Identifier: Apache-2.0
//
// Look-ups in the table of character sets.
#ifndef SERVICES_CCS_SETS_H
#define SERVICES_CCS_SETS_H

#include "services/ccs/table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace libstr::ccs
{

inline constexpr uint8_t kNoRow = 0xFF;
static_assert(std::size(kRows) < kNoRow);

// A line of 80 columns has room for what a set is.
static_assert(std::all_of(std::begin(kRows), std::end(kRows), [](const Row &row) {
    return std::string_view(row.name).size() <= 24 && std::string_view(row.what).size() <= 39;
}));

inline constexpr auto kSets = [] {
    std::array<SetRow, std::size(kRows)> sets{};
    for (size_t row = 0; row < sets.size(); ++row) {
        const Row &from = kRows[row];
        sets[row] = {from.number,  static_cast<uint16_t>(from.flags),
                     from.left,    from.right,
                     from.partner, from.partner2,
                     from.escMode, from.bytes,
                     from.units,   from.graphic,
                     from.final,   from.intermediate,
                     from.isHalf,  *from.differs != '\0'};
    }
    return sets;
}();

// One more than the highest number.
inline constexpr size_t kNumbers = [] {
    size_t highest = 0;
    for (const Row &set : kRows)
        highest = std::max<size_t>(highest, set.number);
    return highest + 1;
}();

// The rows by number.
inline constexpr auto kRowByNumber = [] {
    std::array<uint8_t, kNumbers> rows{};
    rows.fill(kNoRow);
    for (size_t row = 0; row < std::size(kSets); ++row)
        rows[kSets[row].number] = static_cast<uint8_t>(row);
    return rows;
}();

// Every set that can be the kind of a text says how iconv reads it.
static_assert([] {
    for (const Row &set : kRows)
        if ((set.left != 0 || set.right != 0) && set.iconv == nullptr &&
            set.reading.code == nullptr)
            return false;
    return true;
}());

// Every number that a row names has a row of its own.
constexpr bool IsKnown(uint16_t number) { return number == 0 || kRowByNumber[number] != kNoRow; }
static_assert([] {
    for (const Row &set : kRows) {
        if (!IsKnown(set.left) || !IsKnown(set.right) || !IsKnown(set.partner) ||
            !IsKnown(set.partner2))
            return false;
        for (const uint16_t number : set.start.g)
            if (!IsKnown(number))
                return false;
    }
    return true;
}());

// The characters in which some left half differs from ASCII, each once.
inline constexpr auto kIsDifferent = [] {
    std::array<bool, 0x80> is{};
    for (const Row &set : kRows)
        for (const char *at = set.differs; *at != '\0'; ++at)
            is[static_cast<unsigned char>(*at)] = true;
    return is;
}();
inline constexpr auto kDifferent = [] {
    std::array<char, std::count(kIsDifferent.begin(), kIsDifferent.end(), true)> all{};
    size_t used = 0;
    for (size_t byte = 0; byte < kIsDifferent.size(); ++byte)
        if (kIsDifferent[byte])
            all[used++] = static_cast<char>(byte);
    return all;
}();

// They are the same in each set that has any.
static_assert([] {
    for (const Row &set : kRows)
        if (*set.differs != '\0' && std::string_view(set.differs).size() != kDifferent.size())
            return false;
    return true;
}());

// The sets that can be designated come first.
inline constexpr size_t kDesignated = [] {
    size_t count = 0;
    while (count < kSets.size() && kSets[count].graphic != Graphic::none)
        ++count;
    return count;
}();
static_assert(std::all_of(kSets.begin() + kDesignated, kSets.end(),
                          [](const SetRow &set) { return set.graphic == Graphic::none; }));

// Their rows by size and final byte; the last are those of 94-sets with an intermediate byte.
inline constexpr size_t kFinals = 0x80;
inline constexpr auto kRowByFinal = [] {
    std::array<std::array<uint8_t, kFinals>, 6> rows{};
    for (auto &sized : rows)
        sized.fill(kNoRow);
    for (size_t row = 0; row < kDesignated; ++row) {
        const SetRow &set = kSets[row];
        const size_t size = set.intermediate != 0 ? 5 : static_cast<size_t>(set.graphic);
        rows[size][static_cast<unsigned char>(set.final)] = static_cast<uint8_t>(row);
    }
    return rows;
}();

// The row of a number, or of a designation; kNoRow when the table does not have it.
constexpr uint8_t FindRow(uint16_t number)
{
    return number < kNumbers ? kRowByNumber[number] : kNoRow;
}

constexpr uint8_t FindGraphicRow(Graphic graphic, char intermediate, char final)
{
    const auto byte = static_cast<unsigned char>(final);
    if (byte >= kFinals)
        return kNoRow;
    if (intermediate == 0)
        return kRowByFinal[static_cast<size_t>(graphic)][byte];
    return intermediate == '!' && graphic == Graphic::set94 ? kRowByFinal[5][byte] : kNoRow;
}

// The set of a number; null when the table does not have it.
inline const SetRow *FindSet(uint16_t number)
{
    const uint8_t row = FindRow(number);
    return row == kNoRow ? nullptr : &kSets[row];
}

inline size_t RowOf(const SetRow &set) { return static_cast<size_t>(&set - kSets.data()); }

} // namespace libstr::ccs

#endif
