// SPDX-License-Identifier: Apache-2.0
//
// The records of the registry: those of this process, and those of the image that is attached.
//
// Other threads read them while a table is added or an image attached, without a lock.  So records
// never move in their block, and a block that has become too small is kept.  What is kept of an
// image never changes.  pCaseTabs and str_ba change one after the other: where they do not belong
// together, nothing is taken for prepared.
#ifndef STR_CORE_REGISTRY_H
#define STR_CORE_REGISTRY_H

#include <str/casetable.h>

#include <atomic>

namespace libstr::registry
{

// An image that has been attached.
struct Image {
    const char *base;
    const CaseTableRecord *records;
    size_t count;
    std::atomic<void *> *kept; // what is prepared of each record, null at first
    const Image *before;       // the one attached before
};

extern std::atomic<const Image *> theImage;
extern std::atomic<const CaseTableRecord *> theBlock;

// Null before the first.
inline const Image *Attached() { return theImage.load(std::memory_order_acquire); }

// Whether this is the block of this process.
inline bool IsBlock(const CaseTableRecord *records)
{
    return records == theBlock.load(std::memory_order_acquire);
}

// The first record.  What was stored before a table was registered is read after it.
inline CaseTableRecord *First()
{
    return std::atomic_ref(pCaseTabs).load(std::memory_order_acquire);
}

// The record that is registered by that number, counted from 1.  Null where there is none, which
// can be while an image is being attached.
CaseTableRecord *RecordOf(uint16_t number);

// What the references of a record are offsets from; null for a record of this process.
const char *BaseOf(const CaseTableRecord *record);

// The rest only under the lock of the case tables.

// Adds a record, whose bytes are not set, and returns its index.  Raises OS_ESC_MEMORY.
int16_t Add();

// Makes an image the registry.
void Attach(char *base, CaseTableRecord *records, int32_t count);

} // namespace libstr::registry

#endif
