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

namespace libstr::ccs
{

inline constexpr uint8_t kNoRow = 0xFF;
static_assert(std::size(kSets) < kNoRow);

// One more than the highest number.
inline constexpr size_t kNumbers = [] {
    size_t highest = 0;
    for (const SetRow &set : kSets)
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
    for (const SetRow &set : kSets)
        if ((set.left != 0 || set.right != 0) && set.iconv == nullptr &&
            set.reading.code == nullptr)
            return false;
    return true;
}());

// Every number that a row names has a row of its own.
constexpr bool IsKnown(uint16_t number) { return number == 0 || kRowByNumber[number] != kNoRow; }
static_assert([] {
    for (const SetRow &set : kSets) {
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
    for (const SetRow &set : kSets)
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

// The rows of the graphic sets by size and final byte.
inline constexpr size_t kFinals = 0x80;
inline constexpr auto kRowByFinal = [] {
    std::array<std::array<uint8_t, kFinals>, 5> rows{};
    for (auto &sized : rows)
        sized.fill(kNoRow);
    for (size_t row = 0; row < std::size(kSets); ++row)
        if (const SetRow &set = kSets[row]; set.graphic != Graphic::none)
            rows[static_cast<size_t>(set.graphic)][static_cast<unsigned char>(set.final)] =
                static_cast<uint8_t>(row);
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
    if (intermediate != 0 || byte >= kFinals)
        return kNoRow;
    return kRowByFinal[static_cast<size_t>(graphic)][byte];
}

// The set of a number; null when the table does not have it.
inline const SetRow *FindSet(uint16_t number)
{
    const uint8_t row = FindRow(number);
    return row == kNoRow ? nullptr : &kSets[row];
}

inline size_t RowOf(const SetRow &set) { return static_cast<size_t>(&set - kSets); }

} // namespace libstr::ccs

#endif
