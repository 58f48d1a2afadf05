// SPDX-License-Identifier: Apache-2.0
#include "services/names.h"

#include <algorithm>
#include <cstring>

namespace libstr::ccs
{
namespace
{

constexpr char InUpperCase(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }
constexpr bool IsBetweenParts(char c) { return c == '-' || c == '_' || c == ' '; }

// ---- Rows by name --------------------------------------------------------------------------

// The first of the names that a space is between.
constexpr std::string_view FirstOf(std::string_view names)
{
    return {names.data(), std::min(names.find(' '), names.size())};
}

// A row is at the slot of each of its names, or at the next that was free.
constexpr size_t kSlots = 1024;

constexpr size_t SlotOf(std::string_view name)
{
    uint32_t hash = 0;
    for (const char c : name)
        if (!IsBetweenParts(c))
            hash = hash * 31 + static_cast<unsigned char>(InUpperCase(c));
    return (hash ^ hash >> 10) % kSlots;
}

struct Slots {
    std::array<uint8_t, kSlots> rows;

    constexpr void Add(std::string_view name, uint8_t row)
    {
        size_t slot = SlotOf(name);
        while (rows[slot] != kNoRow && rows[slot] != row)
            slot = (slot + 1) % kSlots;
        rows[slot] = row;
    }
};

constexpr Slots kByName = [] {
    Slots slots{};
    slots.rows.fill(kNoRow);
    for (size_t index = 0; index < std::size(kRows); ++index) {
        const auto row = static_cast<uint8_t>(index);
        slots.Add(kRows[row].name, row);
        if (kRows[row].iconv != nullptr)
            slots.Add(kRows[row].iconv, row);
        for (std::string_view rest = kRows[row].aliases; !rest.empty();) {
            const std::string_view alias = FirstOf(rest);
            slots.Add(alias, row);
            rest.remove_prefix(std::min(alias.size() + 1, rest.size()));
        }
    }
    return slots;
}();

// ---- Names ---------------------------------------------------------------------------------

// The part of the names after the one at `part`.
const char *After(const char *part)
{
    const auto left = static_cast<size_t>(kNames.text.data() + kNames.text.size() - part);
    return static_cast<const char *>(std::memchr(part, '\0', left)) + 1;
}

// Whether they are the same name; what is between its parts does not matter if it `mayDiffer`.
bool AreOneName(std::string_view a, std::string_view b, bool mayDiffer)
{
    const auto skip = [=](std::string_view *text) {
        while (mayDiffer && !text->empty() && IsBetweenParts(text->front()))
            text->remove_prefix(1);
    };
    for (;; a.remove_prefix(1), b.remove_prefix(1)) {
        skip(&a);
        skip(&b);
        if (a.empty() || b.empty())
            return a.empty() && b.empty();
        if (InUpperCase(a.front()) != InUpperCase(b.front()))
            return false;
    }
}

bool IsAlias(size_t row, std::string_view name)
{
    if (const char *const iconv = IconvNameOf(row); iconv != nullptr && iconv != NameOf(row))
        if (AreOneName(iconv, name, true))
            return true;
    for (std::string_view rest = AliasesOf(row); !rest.empty();) {
        const std::string_view alias = FirstOf(rest);
        if (AreOneName(alias, name, true))
            return true;
        rest.remove_prefix(std::min(alias.size() + 1, rest.size()));
    }
    return false;
}

} // namespace

const char *IconvNameOf(size_t row)
{
    const char *const written = After(NameOf(row));
    return *written == '\0' ? nullptr : *written == *kSameName ? NameOf(row) : written;
}

const char *AliasesOf(size_t row) { return After(After(NameOf(row))); }

uint8_t FindName(const char *name)
{
    if (std::strcmp(name, NameOf(0)) == 0)
        return 0; // by far the most frequent
    const size_t first = SlotOf(name);
    const auto find = [first](auto &&isSo) {
        size_t slot = first;
        while (kByName.rows[slot] != kNoRow && !isSo(kByName.rows[slot]))
            slot = (slot + 1) % kSlots;
        return kByName.rows[slot];
    };
    uint8_t row = find([=](uint8_t at) { return std::strcmp(NameOf(at), name) == 0; });
    if (row == kNoRow)
        row = find([=](uint8_t at) { return AreOneName(NameOf(at), name, false); });
    if (row == kNoRow)
        row = find([=](uint8_t at) { return IsAlias(at, name); });
    if (row == kNoRow)
        row = find([=](uint8_t at) { return AreOneName(NameOf(at), name, true); });
    return row;
}

} // namespace libstr::ccs
