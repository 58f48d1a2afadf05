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

#include "str/core/upshift.h"

namespace libstr::prepared
{

// Prepares the record of this index in the registry of the process.  Raises OS_ESC_MEMORY.
void Add(size_t index, const CaseTableRecord &record);

// Makes room for so many tables of the image that is attached.
void Attach(size_t count);

// Forgets tables that share an array with the record, whose arrays are about to be released.
void Release(const CaseTableRecord &record);

// The prepared table of a record; null for a record that is not in the registry or has changed.
const UpShiftTable *Find(const CaseTableRecord *record);

// The table of any record: a prepared one or, else, `*own`, which is filled in.  `length` says how
// long a run it is for.
inline const UpShiftTable &TableOf(const CaseTableRecord *record, size_t length, UpShiftTable *own)
{
    constexpr size_t kLongRun = 64; // bytes that make an index pay
    if (const UpShiftTable *const table = Find(record); table != nullptr)
        return *table;
    SetUpShiftTable(own, record);
    if (length >= kLongRun)
        IndexUpShiftTable(own);
    return *own;
}

} // namespace libstr::prepared

#endif
