// SPDX-License-Identifier: Apache-2.0
#include "str/core/prepared.h"

#include "str/core/buffer.h"
#include "str/core/frame.h"

#include <algorithm>
#include <atomic>

namespace libstr::prepared
{

namespace
{

// What says which arrays a record has.
struct Arrays {
    CaseTableRef map, expansions, leads;
    int32_t numExpansions, numLeads;

    bool operator==(const Arrays &) const = default;
};

Arrays ArraysOf(const CaseTableRecord &record)
{
    return {record.pByteMap, record.pExpansions, record.pLeads, record.NumExpansions,
            record.NumLeads};
}

struct Prepared {
    Arrays arrays;
    UpShiftTable table; // its pair rows come after it
};

// The tables of a registry, by the index of the record; null for those that are not prepared.
struct Registry {
    Buffer<Prepared *> tables;
    size_t count;
    const char *image; // the value of str_ba with which they may be used
};

// Both are kept, since an image may come and go.
Registry theOwn, theImage;

Prepared *Prepare(const CaseTableRecord &record)
{
    UpShiftTable table;
    PairRow rows[kMostPairRows];
    SetUpShiftTable(&table, &record);
    IndexUpShiftTable(&table);
    const size_t rowsSize = static_cast<size_t>(FindPairRows(&table, rows)) * sizeof(PairRow);
    auto *const made = static_cast<Prepared *>(os_malloc(sizeof(Prepared) + rowsSize));
    *made = {ArraysOf(record), table};
    if (rowsSize != 0) {
        std::memcpy(made + 1, rows, rowsSize);
        made->table.pairs = reinterpret_cast<const PairRow *>(made + 1);
    }
    return made;
}

void Drop(Prepared **place)
{
    os_free(*place);
    *place = nullptr;
}

// Drops all tables, and makes room for so many.
void Reset(Registry *registry, size_t count)
{
    std::for_each_n(registry->tables.at, registry->count, [](Prepared *&table) { Drop(&table); });
    registry->count = 0;
    if (registry->tables.capacity < count)
        Grow(&registry->tables, count);
    std::fill_n(registry->tables.at, count, nullptr);
    registry->count = count;
}

// Prepares a table of the image.  When two threads do so at once, one table is kept.
const Prepared *PrepareNow(std::atomic_ref<Prepared *> place, const CaseTableRecord &record)
{
    Prepared *made = nullptr;
    frame::Disregard([&] { made = Prepare(record); });
    Prepared *kept = nullptr;
    if (made == nullptr || place.compare_exchange_strong(kept, made, std::memory_order_acq_rel))
        return made;
    os_free(made);
    return kept;
}

} // namespace

void Add(size_t index, const CaseTableRecord &record)
{
    if (str_ba != nullptr)
        return;
    if (index >= theOwn.tables.capacity)
        Grow(&theOwn.tables, std::max<size_t>(32, 2 * index));
    for (; theOwn.count <= index; ++theOwn.count)
        theOwn.tables.at[theOwn.count] = nullptr;
    Drop(&theOwn.tables.at[index]);
    theOwn.tables.at[index] = Prepare(record);
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
        Prepared *&table = theOwn.tables.at[i];
        if (table != nullptr && (same(table->arrays.map, record.pByteMap) ||
                                 same(table->arrays.expansions, record.pExpansions) ||
                                 same(table->arrays.leads, record.pLeads)))
            Drop(&table);
    }
}

const UpShiftTable *Find(const CaseTableRecord *record)
{
    const Registry &registry = str_ba == nullptr ? theOwn : theImage;
    const uintptr_t offset =
        reinterpret_cast<uintptr_t>(record) - reinterpret_cast<uintptr_t>(pCaseTabs);
    const size_t index = offset / sizeof *record;
    if (index >= registry.count || registry.image != str_ba)
        return nullptr;
    const std::atomic_ref place(registry.tables.at[index]);
    const Prepared *table = place.load(std::memory_order_acquire);
    if (table == nullptr && str_ba != nullptr && record == pCaseTabs + index)
        table = PrepareNow(place, *record);
    return table != nullptr && table->arrays == ArraysOf(*record) ? &table->table : nullptr;
}

} // namespace libstr::prepared
