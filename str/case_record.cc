// SPDX-License-Identifier: Apache-2.0
//
// What compiler, loader, registry and work area do alike with records and their arrays.
#include "str/case_record.h"
#include "str/frame.h"

#include <platform/os.h>

namespace
{

constexpr char kSource[] = "str/case_record";

size_t BlockSize(int32_t elements, uint32_t elementSize)
{
    return static_cast<size_t>(elements) * elementSize;
}

void ReleaseArray(CaseTableRef *array, int32_t *capacity, int32_t *used)
{
    reference::Release(array);
    *capacity = *used = 0;
}

} // namespace

void *str_AllocEntry(void *block, int32_t *capacity, int32_t *used, uint32_t elementSize,
                     int32_t step, int16_t *index)
{
    if (*capacity == 0) {
        block = os_malloc(BlockSize(step, elementSize));
        *capacity = step;
        *used = 0;
    }
    if (*used >= kMostEntries)
        frame::Raise(kSource, OS_ESC_MEMORY);
    if (*used >= *capacity) {
        block = os_realloc(block, BlockSize(*capacity + step, elementSize));
        *capacity += step;
    }
    *index = static_cast<int16_t>((*used)++);
    return block;
}

void str_FreeCTEntry(CaseTableRecord *record)
{
    if (record->pByteMap != 0)
        reference::Release(&record->pByteMap);
    if (record->pExpansions != 0)
        ReleaseArray(&record->pExpansions, &record->MaxExpansions, &record->NumExpansions);
    if (record->pLeads != 0) {
        auto *const leads = reference::Resolve<LeadEntry>(record->pLeads);
        for (int32_t i = 0; i < record->NumLeads; ++i)
            if (leads[i].pTrails != 0)
                ReleaseArray(&leads[i].pTrails, &leads[i].MaxTrails, &leads[i].NumTrails);
        ReleaseArray(&record->pLeads, &record->MaxLeads, &record->NumLeads);
    }
    std::memset(record, 0, sizeof *record);
}
