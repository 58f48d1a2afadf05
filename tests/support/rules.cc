// SPDX-License-Identifier: Apache-2.0
#include "tests/support/rules.h"

#include "services/services.h"
#include "str/core/reference.h"

#include <str/codes.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

using namespace libstr;

namespace
{

std::string Hex(const char *bytes, size_t count)
{
    std::string digits;
    for (const char *at = bytes; at != bytes + count; ++at)
        digits += {"0123456789ABCDEF"[*at >> 4 & 0xF], "0123456789ABCDEF"[*at & 0xF]};
    return digits;
}

// Finds an array of so many bytes; called in the order of the compiled file.
using FindArray = std::function<const char *(CaseTableRef array, size_t size)>;

// A negative count means 0.
size_t Checked(int32_t count)
{
    if (count > CASE_TABLE_MOST_ENTRIES)
        throw STR_ESC_NOT_A_CASE_TABLE;
    return static_cast<size_t>(std::max(count, 0));
}

std::string Pairs(const char *pairs, size_t count)
{
    std::string text;
    for (const char *at = pairs; at != pairs + 3 * count; at += 3)
        text += " " + Hex(at, 1) + ":" + Hex(at + 1, 2);
    return text;
}

std::string Rules(const CaseTableRecord &record, const FindArray &find)
{
    std::string text(record.CharSetName, strnlen(record.CharSetName, sizeof record.CharSetName));
    const size_t expansions = Checked(record.NumExpansions);
    const char *const map = find(record.pByteMap, CASE_TABLE_MAP_SIZE);
    for (int byte = 0; byte < CASE_TABLE_MAP_SIZE; ++byte)
        if (const char b = static_cast<char>(byte); map[byte] != b)
            text += " " + Hex(&b, 1) + ">" + Hex(map + byte, 1);
    text += Pairs(find(record.pExpansions, 3 * expansions), expansions);
    const size_t leads = Checked(record.NumLeads);
    const char *entry = find(record.pLeads, leads * sizeof(LeadEntry));
    for (const char *end = entry + leads * sizeof(LeadEntry); entry != end;
         entry += sizeof(LeadEntry)) {
        LeadEntry lead;
        std::memcpy(&lead, entry, sizeof lead);
        const size_t count = Checked(lead.NumTrails);
        const std::string pairs = Pairs(find(lead.pTrails, 3 * count), count);
        text += " " + Hex(entry, 1) + "[" + pairs.substr(!pairs.empty()) + "]";
    }
    return text;
}

} // namespace

std::string RulesOf(const CaseTableRecord &record)
{
    return Rules(record, [](CaseTableRef array, size_t) {
        return reference::ResolveForReading<char>(array);
    });
}

std::string RulesOf(std::string_view file)
{
    const auto take = [&](CaseTableRef, size_t size) {
        if (file.size() < size)
            throw STR_ESC_ENDS_TOO_EARLY;
        return std::exchange(file, file.substr(size)).data();
    };
    try {
        if (std::memcmp(take(0, sizeof(CaseTableHeader)), "\x4E\x61\xBC\0\x0B\0\0\0\0\0\0\0", 12) !=
            0)
            throw STR_ESC_NOT_A_CASE_TABLE;
        CaseTableRecord record;
        std::memcpy(&record, take(0, sizeof record), sizeof record);
        return Rules(record, take);
    } catch (int code) {
        return std::to_string(code);
    }
}

std::string TakeRules(bool done, CaseTableRecord *record)
{
    const std::string rules = done ? RulesOf(*record) : std::to_string(er_GetLastCode());
    if (done)
        str_FreeCTEntry(record);
    if (!IsClear(*record))
        std::abort();
    return rules;
}
