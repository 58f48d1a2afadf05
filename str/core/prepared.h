// SPDX-License-Identifier: Apache-2.0
//
// What is worked out once for a case table of the registry, beside its record: an image is shared
// with other processes, and must not be written to.
//
// A prepared table serves every record that refers to the arrays for which it was made.  The arrays
// of a process are private and never change once a table is in the registry; str_FreeCTEntry
// releases the prepared table with them.  Those of an image do not change while it is attached;
// str_AttachSMem releases what was prepared for the image before.
//
// Threads: prepared tables are made and released by the calls that change the registry, one at a
// time.  Only those of an image are made on first use, and published by one atomic store.
#ifndef STR_CORE_PREPARED_H
#define STR_CORE_PREPARED_H

#include "str/core/buffer.h"
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

// The place of a table; null where the record is not prepared.
struct Place {
    Prepared *table;
};

// The tables of a registry, by the index of the record.
struct Registry {
    Buffer<Place> places;
    size_t count;
    const char *image; // the value of str_ba with which they may be used
};

// Both are kept, since an image may come and go.
extern Registry theOwn, theImage;

// Prepares the record of this index in the registry of the process.  Raises OS_ESC_MEMORY.
void Add(size_t index, const CaseTableRecord &record);

// Makes room for so many tables of the image that is attached.
void Attach(size_t count);

// Forgets tables that share an array with the record, whose arrays are about to be released.
void Release(const CaseTableRecord &record);

// Prepares the record of this index in the image, on its first use.  Returns null if it cannot.
const Prepared *AddOfImage(size_t index);

// The prepared table of the record of this index in the registry; null if there is none.  Every
// comparison of plain text calls it, and most are short.
[[gnu::always_inline]] inline const UpShiftTable *FindAt(size_t index)
{
    Registry &registry = str_ba == nullptr ? theOwn : theImage;
    if (index >= registry.count || registry.image != str_ba)
        return nullptr;
    const std::atomic_ref place(registry.places.at[index].table);
    const Prepared *table = place.load(std::memory_order_acquire);
    if (table == nullptr)
        table = AddOfImage(index);
    return table != nullptr && HaveSameArrays(table->record, pCaseTabs[index]) ? &table->table
                                                                               : nullptr;
}

// The prepared table of a record; null for a record that is not in the registry.
inline const UpShiftTable *Find(const CaseTableRecord *record)
{
    const uintptr_t offset =
        reinterpret_cast<uintptr_t>(record) - reinterpret_cast<uintptr_t>(pCaseTabs);
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
