// SPDX-License-Identifier: Apache-2.0
#include "str/core/prepared.h"

#include "str/core/frame.h"
#include "str/core/sets.h"

#include <algorithm>
#include <cstring>

namespace libstr::prepared
{

Steady<Prepared *> theOwn;

namespace
{

size_t theOwnCount;

Prepared *Prepare(const CaseTableRecord &record, const char *base)
{
    UpShiftTable table;
    PairRow rows[kMostPairRows];
    SetUpShiftTable(&table, &record, base);
    IndexUpShiftTable(&table);
    FindFold(&table.map);
    const size_t rowsSize = static_cast<size_t>(FindPairRows(&table, rows)) * sizeof(PairRow);
    auto *const made = static_cast<Prepared *>(os_malloc(sizeof(Prepared) + rowsSize));
    *made = {record, table};
    if (rowsSize != 0) {
        std::memcpy(made + 1, rows, rowsSize);
        made->table.pairs = reinterpret_cast<const PairRow *>(made + 1);
    }
    return made;
}

void Replace(size_t index, Prepared *table)
{
    os_free(std::atomic_ref(*ElementAt(theOwn, index)).exchange(table, std::memory_order_acq_rel));
}

[[gnu::noinline]] const Prepared *AddOfImage(const registry::Image &image, size_t index)
{
    Prepared *made = nullptr;
    frame::Disregard([&] { made = Prepare(image.records[index], image.base); });
    void *kept = nullptr;
    std::atomic<void *> &place = image.kept[index];
    if (made == nullptr || place.compare_exchange_strong(kept, made, std::memory_order_acq_rel))
        return made;
    os_free(made); // another thread was faster
    return static_cast<const Prepared *>(kept);
}

} // namespace

void Add(size_t index, const CaseTableRecord &record)
{
    if (str_ba != nullptr)
        return;
    GrowTo(&theOwn, index);
    Replace(index, Prepare(record, nullptr));
    theOwnCount = std::max(theOwnCount, index + 1);
}

void Release(const CaseTableRecord &record)
{
    const auto same = [](CaseTableRef a, CaseTableRef b) { return a != 0 && a == b; };
    for (size_t i = 0; i < theOwnCount; ++i) {
        const Prepared *const table = *ElementAt(theOwn, i);
        if (table != nullptr && (same(table->record.pByteMap, record.pByteMap) ||
                                 same(table->record.pExpansions, record.pExpansions) ||
                                 same(table->record.pLeads, record.pLeads)))
            Replace(i, nullptr);
    }
}

const Prepared *OfImage(const registry::Image &image, size_t index)
{
    const void *const table = image.kept[index].load(std::memory_order_acquire);
    return table != nullptr ? static_cast<const Prepared *>(table) : AddOfImage(image, index);
}

const UpShiftTable &TableOf(const CaseTableRecord *record, size_t length, UpShiftTable *own)
{
    constexpr size_t kLongRun = 32; // bytes that make an index pay
    if (const UpShiftTable *const table = Find(record); table != nullptr)
        return *table;
    SetUpShiftTable(own, record, registry::BaseOf(record));
    if (length >= kLongRun)
        IndexUpShiftTable(own);
    return *own;
}

const UpShiftTable *FindOfKind(uint16_t kind)
{
    const CSDescriptor cs = {kind, 0};
    if (!HasCase(&cs))
        return nullptr;
    const uint16_t number = ccs_GetToUpperTable(&cs);
    return number == 0 ? nullptr : FindAt(number - 1U);
}

} // namespace libstr::prepared
