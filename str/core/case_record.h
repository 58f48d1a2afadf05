// SPDX-License-Identifier: Apache-2.0
//
// The case table record, for the code that fills and reads it.
#ifndef STR_CORE_CASE_RECORD_H
#define STR_CORE_CASE_RECORD_H

#include <str/casetable.h>

#include "str/core/reference.h"

#include <cstddef>
#include <cstring>

namespace libstr
{

// The upper case of a single byte (an expansion), or of the second byte of a pair (a trail).
struct PairRule {
    uint8_t byte;
    uint8_t upper[2];
};
static_assert(sizeof(PairRule) == CASE_TABLE_RULE_SIZE);

inline constexpr size_t kByteMapSize = CASE_TABLE_MAP_SIZE;
// The most elements of any array: an index is a signed 16-bit number.
inline constexpr int32_t kMostEntries = CASE_TABLE_MOST_ENTRIES;

// The bytes of an array of a record.  A negative count means 0.
template <class T>
size_t ArraySize(int32_t count)
{
    return count > 0 ? static_cast<size_t>(count) * sizeof(T) : 0;
}

// Adds a cleared element to an array of a record that is being compiled.
template <class T>
T *AddEntry(CaseTableRef *array, int32_t *capacity, int32_t *used)
{
    constexpr int32_t kStep = 20;
    reference::Reserve();
    int16_t index = 0;
    void *const block = str_AllocEntry(reference::Resolve(*array), capacity, used,
                                       static_cast<uint32_t>(sizeof(T)), kStep, &index);
    *array = reference::Make(block, *array);
    T *const entry = static_cast<T *>(block) + index;
    std::memset(entry, 0, sizeof *entry);
    return entry;
}

} // namespace libstr

#endif
