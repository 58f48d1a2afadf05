// SPDX-License-Identifier: Apache-2.0
//
// The names of the character sets, packed: a set takes one text, in which its name, iconv's name and
// its aliases follow each other, each ended by a NUL.
#ifndef SERVICES_NAMES_H
#define SERVICES_NAMES_H

#include "services/ccs/sets.h"

#include <string_view>

namespace libstr::ccs
{

// What is written for iconv's name where it is the set's own.
inline constexpr char kSameName[] = "=";

constexpr std::string_view IconvWritten(const Row &row)
{
    if (row.iconv == nullptr)
        return "";
    return std::string_view(row.iconv) == row.name ? kSameName : row.iconv;
}

inline constexpr size_t kNamesSize = [] {
    size_t size = 0;
    for (const Row &row : kRows)
        size += std::string_view(row.name).size() + IconvWritten(row).size() +
                std::string_view(row.aliases).size() + 3;
    return size;
}();

struct Names {
    std::array<char, kNamesSize> text;
    std::array<uint16_t, std::size(kRows)> at; // by row
};
static_assert(kNamesSize <= UINT16_MAX);

inline constexpr Names kNames = [] {
    Names names{};
    size_t used = 0;
    for (size_t row = 0; row < std::size(kRows); ++row) {
        names.at[row] = static_cast<uint16_t>(used);
        for (const std::string_view part :
             {std::string_view(kRows[row].name), IconvWritten(kRows[row]),
              std::string_view(kRows[row].aliases)}) {
            for (const char c : part)
                names.text[used++] = c;
            ++used;
        }
    }
    return names;
}();

inline const char *NameOf(size_t row) { return kNames.text.data() + kNames.at[row]; }

// Null where iconv does not know the set.
const char *IconvNameOf(size_t row);

// With spaces between them.
const char *AliasesOf(size_t row);

// The row of the set with this name, or else with this alias; kNoRow if there is none.
uint8_t FindName(const char *name);

} // namespace libstr::ccs

#endif
