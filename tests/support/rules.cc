// SPDX-License-Identifier: Apache-2.0
#include "tests/support/rules.h"

#include "str/core/reference.h"

#include <algorithm>
#include <cstring>
#include <functional>

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

std::string Pairs(const FindArray &find, CaseTableRef array, int32_t count)
{
    const size_t size = 3 * static_cast<size_t>(std::max(count, 0));
    const char *const pairs = find(array, size);
    std::string text;
    for (size_t at = 0; at < size; at += 3)
        text += " " + Hex(pairs + at, 1) + ":" + Hex(pairs + at + 1, 2);
    return text;
}

std::string Rules(const CaseTableRecord &record, const FindArray &find)
{
    std::string text(record.CharSetName, strnlen(record.CharSetName, sizeof record.CharSetName));
    const char *const map = find(record.pByteMap, CASE_TABLE_MAP_SIZE);
    for (int byte = 0; byte < CASE_TABLE_MAP_SIZE; ++byte)
        if (const char b = static_cast<char>(byte); map[byte] != b)
            text += " " + Hex(&b, 1) + ">" + Hex(map + byte, 1);
    text += Pairs(find, record.pExpansions, record.NumExpansions);
    const size_t leads = static_cast<size_t>(std::max(record.NumLeads, 0));
    const char *const entries = find(record.pLeads, leads * sizeof(LeadEntry));
    for (size_t i = 0; i < leads; ++i) {
        LeadEntry lead;
        std::memcpy(&lead, entries + i * sizeof lead, sizeof lead);
        const std::string pairs = Pairs(find, lead.pTrails, lead.NumTrails);
        text += " " + Hex(entries + i * sizeof lead, 1) + "[" + pairs.substr(!pairs.empty()) + "]";
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
    CaseTableRecord record;
    std::memcpy(&record, file.data() + sizeof(CaseTableHeader), sizeof record);
    const char *next = file.data() + sizeof(CaseTableHeader) + sizeof record;
    return Rules(record, [&](CaseTableRef, size_t size) { return (next += size) - size; });
}
