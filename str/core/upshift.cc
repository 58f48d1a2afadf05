// SPDX-License-Identifier: Apache-2.0
#include "str/core/upshift.h"

#include "base/blocks.h"

#include <algorithm>
#include <bit>

namespace libstr
{

namespace
{

// One bit in three: the bytes of three blocks where rules begin.
constexpr uint64_t kRuleStarts = [] {
    uint64_t starts = 0;
    for (unsigned int bit = 0; bit < 3 * blocks::kSize; bit += sizeof(PairRule))
        starts |= uint64_t{1} << bit;
    return starts;
}();

// The first rule for a byte; null for none.  Looks at as many rules at once as a block has bytes.
const PairRule *FindRule(const PairRule *rules, int32_t count, uint8_t byte)
{
    constexpr int32_t kStride = blocks::kSize;
    for (; count >= kStride; count -= kStride, rules += kStride) {
        const char *const bytes = reinterpret_cast<const char *>(rules);
        uint64_t matches = 0;
        for (size_t i = 0; i < 3; ++i) {
            const auto block = blocks::Load(bytes + i * blocks::kSize, blocks::kSize);
            const uint64_t mask = blocks::Mask(blocks::Equal(block, static_cast<char>(byte)));
            matches |= mask << i * blocks::kSize;
        }
        matches &= kRuleStarts;
        if (matches != 0)
            return rules + std::countr_zero(matches) / 3;
    }
    for (; count > 0; --count, ++rules)
        if (rules->byte == byte)
            return rules;
    return nullptr;
}

// The first entry of a lead byte; null for none.
const LeadEntry *FindLead(UpShiftTable *table, uint8_t byte, ptrdiff_t avail)
{
    constexpr int kLongRun = 16; // bytes that make an index pay
    if (!table->leadsAreIndexed && avail >= kLongRun) {
        std::memset(table->leadIndex, 0, sizeof table->leadIndex);
        for (int32_t i = table->numLeads; i > 0; --i)
            table->leadIndex[table->leads[i - 1].LeadByte] = static_cast<uint16_t>(i);
        table->leadsAreIndexed = true;
    }
    if (table->leadsAreIndexed) {
        const uint16_t place = table->leadIndex[byte];
        return place == 0 ? nullptr : &table->leads[place - 1];
    }
    for (int32_t i = 0; i < table->numLeads; ++i)
        if (table->leads[i].LeadByte == byte)
            return &table->leads[i];
    return nullptr;
}

// Returns the bytes written; 0 when this byte has no expansion.
int FindExpansion(const uint8_t *in, uint8_t *out, const UpShiftTable &table)
{
    const PairRule *const rule = FindRule(table.expansions, table.numExpansions, in[0]);
    if (rule == nullptr)
        return 0;
    std::memcpy(out, rule->upper, 2);
    return 2;
}

// Returns the bytes written; 0 when this pair of bytes has no rule.
int FindPairUpShift(const uint8_t *in, ptrdiff_t avail, uint8_t *out, UpShiftTable *table)
{
    const LeadEntry *const lead = FindLead(table, in[0], avail);
    if (lead == nullptr)
        return 0;
    const auto *const trails = reference::ResolveForReading<PairRule>(lead->pTrails);
    const PairRule *const rule = FindRule(trails, trails == nullptr ? 0 : lead->NumTrails, in[1]);
    if (rule == nullptr)
        return 0;
    std::memcpy(out, rule->upper, 2);
    return rule->upper[1] == 0 ? 1 : 2;
}

} // namespace

void SetUpShiftTable(UpShiftTable *table, const CaseTableRecord *record)
{
    SetByteMap(&table->map, reference::ResolveForReading<uint8_t>(record->pByteMap));
    table->expansions = reference::ResolveForReading<PairRule>(record->pExpansions);
    table->numExpansions = table->expansions == nullptr ? 0 : std::max(record->NumExpansions, 0);
    table->leads = reference::ResolveForReading<LeadEntry>(record->pLeads);
    table->numLeads = table->leads == nullptr ? 0 : std::max(record->NumLeads, 0);
    table->leadsAreIndexed = false;
}

UpShifted UpShiftByLists(UpShiftTable *table, const uint8_t *in, ptrdiff_t avail)
{
    UpShifted result = {{in[0], 0}, 1, 1};
    if (const int expanded = FindExpansion(in, result.bytes, *table); expanded != 0) {
        result.written = expanded;
    } else if (avail > 1) {
        const int paired = FindPairUpShift(in, avail, result.bytes, table);
        if (paired != 0) {
            result.written = paired;
            result.consumed = 2;
        }
    }
    return result;
}

} // namespace libstr
