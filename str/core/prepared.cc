// SPDX-License-Identifier: Apache-2.0
#include "str/core/prepared.h"

#include "str/core/frame.h"
#include "str/core/sets.h"

#include <algorithm>
#include <cstring>

namespace libstr::prepared
{

Registry theOwn, theImage;

namespace
{

Prepared *Prepare(const CaseTableRecord &record)
{
    UpShiftTable table;
    PairRow rows[kMostPairRows];
    SetUpShiftTable(&table, &record);
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

void Drop(Place *place)
{
    os_free(place->table);
    place->table = nullptr;
}

// Drops all tables, and makes room for so many.
void Reset(Registry *registry, size_t count)
{
    std::for_each_n(registry->places.at, registry->count, [](Place &place) { Drop(&place); });
    registry->count = 0;
    if (registry->places.capacity < count)
        Grow(&registry->places, count);
    std::fill_n(registry->places.at, count, Place{nullptr});
    registry->count = count;
}

} // namespace

void Add(size_t index, const CaseTableRecord &record)
{
    if (str_ba != nullptr)
        return;
    if (index >= theOwn.places.capacity)
        Grow(&theOwn.places, std::max<size_t>(32, 2 * index));
    for (; theOwn.count <= index; ++theOwn.count)
        theOwn.places.at[theOwn.count].table = nullptr;
    Drop(&theOwn.places.at[index]);
    theOwn.places.at[index].table = Prepare(record);
}

void Attach(size_t count)
{
    frame::Disregard([&] { Reset(&theImage, count); });
    theImage.image = str_ba;
}

void Release(const CaseTableRecord &record)
{
    const auto same = [](CaseTableRef a, CaseTableRef b) { return a != 0 && a == b; };
    for (size_t i = 0; i < theOwn.count; ++i) {
        const Prepared *const table = theOwn.places.at[i].table;
        if (table != nullptr && (same(table->record.pByteMap, record.pByteMap) ||
                                 same(table->record.pExpansions, record.pExpansions) ||
                                 same(table->record.pLeads, record.pLeads)))
            Drop(&theOwn.places.at[i]);
    }
}

const Prepared *AddOfImage(size_t index)
{
    if (str_ba == nullptr)
        return nullptr;
    Prepared *made = nullptr, *kept = nullptr;
    frame::Disregard([&] { made = Prepare(pCaseTabs[index]); });
    const std::atomic_ref place(theImage.places.at[index].table);
    if (made == nullptr || place.compare_exchange_strong(kept, made, std::memory_order_acq_rel))
        return made;
    os_free(made); // another thread was faster
    return kept;
}

const UpShiftTable &TableOf(const CaseTableRecord *record, size_t length, UpShiftTable *own)
{
    constexpr size_t kLongRun = 32; // bytes that make an index pay
    if (const UpShiftTable *const table = Find(record); table != nullptr)
        return *table;
    SetUpShiftTable(own, record);
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
