// SPDX-License-Identifier: Apache-2.0
//
// What is worked out once for a case table of the registry, beside its record: an image is shared
// with other processes, and must not be written to.
//
// A prepared table serves every record that refers to the arrays for which it was made.  The arrays
// of a process are private and never change once a table is in the registry; str_FreeCTEntry
// releases the prepared table with them.  Those of an image do not change while it is attached.
//
// Threads: prepared tables are made and released under the lock of the case tables.  Only those of
// an image are made on first use, and published by one atomic store.  Whoever reads them takes no
// lock, so those of an image are kept when another is attached.
#ifndef STR_CORE_PREPARED_H
#define STR_CORE_PREPARED_H

#include "str/core/registry.h"
#include "str/core/steady.h"
#include "str/core/upshift.h"

#include <atomic>

namespace libstr::prepared
{

struct Prepared {
    CaseTableRecord record; // as it was
    UpShiftTable table;     // its pair rows come after it
};

// Whether two records refer to the same arrays.
inline bool HaveSameArrays(const CaseTableRecord &a, const CaseTableRecord &b)
{
    const auto differ = [](auto x, auto y) { return static_cast<uint32_t>(x ^ y); };
    return (differ(a.pByteMap, b.pByteMap) | differ(a.pExpansions, b.pExpansions) |
            differ(a.NumExpansions, b.NumExpansions) | differ(a.pLeads, b.pLeads) |
            differ(a.NumLeads, b.NumLeads)) == 0;
}

// The tables of the registry of this process, by the index of the record; null where it is not
// prepared.
extern Steady<Prepared *> theOwn;

// Prepares the record of this index in the registry of the process.  Raises OS_ESC_MEMORY.
void Add(size_t index, const CaseTableRecord &record);

// Forgets tables that share an array with the record, whose arrays are about to be released.
void Release(const CaseTableRecord &record);

// The table of an image's record, which is prepared on its first use; null if it cannot be.
const Prepared *OfImage(const registry::Image &image, size_t index);

// The same for the record of this index in the registry of this process.
inline const Prepared *OfOwn(const CaseTableRecord *records, size_t index)
{
    if (!registry::IsBlock(records) || PartWith(theOwn, index) == nullptr)
        return nullptr;
    return std::atomic_ref(*ElementAt(theOwn, index)).load(std::memory_order_acquire);
}

// The prepared table of the record of this index in the registry; null if there is none.  Every
// comparison of plain text calls it, and most are short.
[[gnu::always_inline]] inline const UpShiftTable *FindAt(size_t index)
{
    const char *const base = std::atomic_ref(str_ba).load(std::memory_order_acquire);
    const CaseTableRecord *const records = registry::First();
    const Prepared *table = nullptr;
    if (base == nullptr)
        table = OfOwn(records, index);
    else if (const registry::Image *const image = registry::Attached(); image != nullptr)
        if (image->base == base && image->records == records && index < image->count)
            table = OfImage(*image, index);
    return table != nullptr && HaveSameArrays(table->record, records[index]) ? &table->table
                                                                             : nullptr;
}

// The prepared table of a record; null for a record that is not in the registry.
inline const UpShiftTable *Find(const CaseTableRecord *record)
{
    const uintptr_t offset =
        reinterpret_cast<uintptr_t>(record) - reinterpret_cast<uintptr_t>(registry::First());
    return offset % sizeof *record == 0 ? FindAt(offset / sizeof *record) : nullptr;
}

// The table of any record: a prepared one or, else, `*own`, which is filled in.  `length` says how
// long a run it is for.
const UpShiftTable &TableOf(const CaseTableRecord *record, size_t length, UpShiftTable *own);

// The prepared tables of the kinds of segments met last.  They stay where they are during a call.
// Most calls are for short texts, so only the kinds have values at first.
struct Kinds {
    uint16_t kinds[4] = {}; // no text has kind 0
    const UpShiftTable *tables[4];

    // Null when it is not known.
    const UpShiftTable *TableOf(uint16_t kind) const
    {
        const size_t place = kind % std::size(kinds);
        return kinds[place] == kind ? tables[place] : nullptr;
    }

    const UpShiftTable *Keep(uint16_t kind, const UpShiftTable *table)
    {
        const size_t place = kind % std::size(kinds);
        kinds[place] = kind;
        return tables[place] = table;
    }
};

// The table of a kind of text, if its record is in the registry already and prepared; else null.
const UpShiftTable *FindOfKind(uint16_t kind);

} // namespace libstr::prepared

#endif
