// SPDX-License-Identifier: Apache-2.0
//
// What a case table says, in words.
#ifndef TESTS_SUPPORT_RULES_H
#define TESTS_SUPPORT_RULES_H

#include "services/services.h"
#include "str/core/reference.h"

#include <str/codes.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

inline std::string Hex(std::string_view bytes)
{
    std::string digits;
    for (const char byte : bytes)
        digits += {"0123456789ABCDEF"[byte >> 4 & 0xF], "0123456789ABCDEF"[byte & 0xF]};
    return digits;
}

// Finds an array of so many bytes; called in the order of the compiled file.
using FindArray = std::function<std::string_view(CaseTableRef array, size_t size)>;

// A negative count means 0.
inline size_t Checked(int32_t count)
{
    if (count > CASE_TABLE_MOST_ENTRIES)
        throw STR_ESC_NOT_A_CASE_TABLE;
    return static_cast<size_t>(std::max(count, 0));
}

inline std::string Pairs(std::string_view pairs)
{
    std::string text;
    for (; !pairs.empty(); pairs.remove_prefix(3))
        text += " " + Hex(pairs.substr(0, 1)) + ":" + Hex(pairs.substr(1, 2));
    return text;
}

inline std::string Rules(const CaseTableRecord &record, const FindArray &find)
{
    std::string text(record.CharSetName, strnlen(record.CharSetName, sizeof record.CharSetName));
    const size_t expansions = 3 * Checked(record.NumExpansions);
    const std::string_view map = find(record.pByteMap, CASE_TABLE_MAP_SIZE);
    for (size_t byte = 0; byte < map.size(); ++byte)
        if (const char b = static_cast<char>(byte); map[byte] != b)
            text += " " + Hex({&b, 1}) + ">" + Hex(map.substr(byte, 1));
    text += Pairs(find(record.pExpansions, expansions));
    LeadEntry lead;
    for (auto leads = find(record.pLeads, Checked(record.NumLeads) * sizeof lead); !leads.empty();
         leads.remove_prefix(sizeof lead)) {
        std::memcpy(&lead, leads.data(), sizeof lead);
        const std::string pairs = Pairs(find(lead.pTrails, 3 * Checked(lead.NumTrails)));
        text += " " + Hex(leads.substr(0, 1)) + "[" + pairs.substr(!pairs.empty()) + "]";
    }
    return text;
}

// The name, the changes of the map, the expansions and the trails of each lead byte of a table of
// this process or of the image: "LATIN1 61>41 DF:5353 C2[61:C241 62:4200]".
inline std::string RulesOf(const CaseTableRecord &record)
{
    return Rules(record, [](CaseTableRef array, size_t size) -> std::string_view {
        return {libstr::reference::ResolveForReading<char>(array), size};
    });
}

// The same of a compiled file, or the code with which it is refused.
inline std::string RulesOf(std::string_view file)
{
    const auto take = [&](CaseTableRef, size_t size) {
        if (file.size() < size)
            throw STR_ESC_ENDS_TOO_EARLY;
        return std::exchange(file, file.substr(size)).substr(0, size);
    };
    try {
        if (take(0, sizeof(CaseTableHeader)).substr(0, 12) !=
            std::string_view("\x4E\x61\xBC\0\x0B\0\0\0\0\0\0", 12))
            throw STR_ESC_NOT_A_CASE_TABLE;
        CaseTableRecord record;
        std::memcpy(&record, take(0, sizeof record).data(), sizeof record);
        return Rules(record, take);
    } catch (int code) {
        return std::to_string(code);
    }
}

inline bool IsClear(const CaseTableRecord &record)
{
    const CaseTableRecord clear = {};
    return std::memcmp(&record, &clear, sizeof clear) == 0;
}

// Releases what was compiled or loaded, and returns its rules.  When it was not `done`, returns the
// code of the fault; the record must be clear then.
inline std::string TakeRules(bool done, CaseTableRecord *record)
{
    const std::string rules = done ? RulesOf(*record) : std::to_string(er_GetLastCode());
    if (done)
        str_FreeCTEntry(record);
    return IsClear(*record) ? rules : "not clear";
}

#endif
