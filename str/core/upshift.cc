// SPDX-License-Identifier: Apache-2.0
#include "str/core/upshift.h"

#include "base/blocks.h"

#include <algorithm>
#include <bit>
#include <iterator>

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
const LeadEntry *FindLead(const UpShiftTable &table, uint8_t byte)
{
    if (table.isIndexed) {
        const uint16_t place = table.leadIndex[byte];
        return place == 0 ? nullptr : &table.leads[place - 1];
    }
    for (int32_t i = 0; i < table.numLeads; ++i)
        if (table.leads[i].LeadByte == byte)
            return &table.leads[i];
    return nullptr;
}

// The rules for what follows a lead byte.
struct Trails {
    const PairRule *rules;
    int32_t count;
};

Trails TrailsOf(const LeadEntry *lead, const char *base)
{
    if (lead == nullptr)
        return {nullptr, 0};
    const auto *const rules = reference::ResolveForReading<PairRule>(lead->pTrails, base);
    return {rules, rules == nullptr ? 0 : std::max(lead->NumTrails, 0)};
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
int FindPairUpShift(const uint8_t *in, uint8_t *out, const UpShiftTable &table)
{
    const Trails trails = TrailsOf(FindLead(table, in[0]), table.base);
    const PairRule *const rule = FindRule(trails.rules, trails.count, in[1]);
    if (rule == nullptr)
        return 0;
    std::memcpy(out, rule->upper, 2);
    return rule->upper[1] == 0 ? 1 : 2;
}

// ---- Pairs ---------------------------------------------------------------------------------

// The first rule for a trail holds.  An upper case of one byte is left to the lists.
void FillPairRow(uint8_t lead, const Trails &trails, PairRow *row)
{
    std::fill_n(row->change, std::size(row->change), PairRow::kSeeLists);
    for (int32_t i = trails.count - 1; i >= 0; --i) {
        const PairRule &rule = trails.rules[i];
        const uint8_t pair[2] = {lead, rule.byte};
        row->change[rule.byte] = rule.upper[1] == 0
                                     ? PairRow::kSeeLists
                                     : static_cast<uint16_t>(LoadPair(pair) ^ LoadPair(rule.upper));
    }
}

} // namespace

void SetUpShiftTable(UpShiftTable *table, const CaseTableRecord *record, const char *base)
{
    using reference::ResolveForReading;
    SetByteMap(&table->map, ResolveForReading<uint8_t>(record->pByteMap, base));
    table->expansions = ResolveForReading<PairRule>(record->pExpansions, base);
    table->numExpansions = table->expansions == nullptr ? 0 : std::max(record->NumExpansions, 0);
    table->leads = ResolveForReading<LeadEntry>(record->pLeads, base);
    table->numLeads = table->leads == nullptr ? 0 : std::max(record->NumLeads, 0);
    table->base = base;
    table->isIndexed = false;
    table->pairs = nullptr;
}

void IndexUpShiftTable(UpShiftTable *table)
{
    IndexByteMap(&table->map);
    table->isIndexed = table->numLeads > 0;
    if (!table->isIndexed)
        return;
    std::memset(table->leadIndex, 0, sizeof table->leadIndex);
    for (int32_t i = table->numLeads; i > 0; --i)
        table->leadIndex[table->leads[i - 1].LeadByte] = static_cast<uint16_t>(i);
}

int FindPairRows(UpShiftTable *table, PairRow (&rows)[kMostPairRows])
{
    if (!table->isIndexed)
        return 0;
    std::memset(table->pairRow, 0, sizeof table->pairRow);
    FillPairRow(0, {nullptr, 0}, &rows[0]);
    int used = 1;
    for (int lead = 0; lead < 256 && used < kMostPairRows; ++lead) {
        const auto byte = static_cast<uint8_t>(lead);
        if (table->leadIndex[lead] == 0 || table->map.upper[lead] != 0 ||
            FindRule(table->expansions, table->numExpansions, byte) != nullptr)
            continue;
        FillPairRow(byte, TrailsOf(FindLead(*table, byte), table->base), &rows[used]);
        int row = 0;
        while (std::memcmp(&rows[row], &rows[used], sizeof rows[row]) != 0)
            ++row;
        table->pairRow[lead] = static_cast<uint8_t>(row);
        used += row == used ? 1 : 0;
    }
    return used == 1 ? 0 : used;
}

UpShifted UpShiftByLists(const UpShiftTable &table, const uint8_t *in, ptrdiff_t avail)
{
    UpShifted result = {{in[0], 0}, 1, 1};
    if (const int expanded = FindExpansion(in, result.bytes, table); expanded != 0) {
        result.written = expanded;
    } else if (avail > 1) {
        const int paired = FindPairUpShift(in, result.bytes, table);
        if (paired != 0) {
            result.written = paired;
            result.consumed = 2;
        }
    }
    return result;
}

size_t MapPairs(const UpShiftTable &table, const uint8_t *in, size_t pairs, uint8_t *out)
{
    size_t done = 0;
    for (; table.pairs != nullptr && done < pairs; ++done, in += 2, out += 2) {
        const uint16_t change = PairChange(table, in);
        if (change == PairRow::kSeeLists)
            break;
        const auto upper = static_cast<uint16_t>(LoadPair(in) ^ change);
        std::memcpy(out, &upper, sizeof upper);
    }
    return done;
}

size_t PairsAlike(const UpShiftTable &table, const uint8_t *a, const uint8_t *b, size_t pairs)
{
    size_t done = 0;
    for (; table.pairs != nullptr && done < pairs; ++done, a += 2, b += 2) {
        const uint16_t pairA = LoadPair(a), pairB = LoadPair(b), changeA = PairChange(table, a);
        if (changeA == PairRow::kSeeLists)
            break;
        if (pairA == pairB)
            continue;
        const uint16_t changeB = PairChange(table, b);
        if (changeB == PairRow::kSeeLists || (pairA ^ changeA) != (pairB ^ changeB))
            break;
    }
    return done;
}

} // namespace libstr
