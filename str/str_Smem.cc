// SPDX-License-Identifier: Apache-2.0
//
// The work area, where a server gathers the tables of all sets, and its image in shared memory,
// from which every other process reads them.
#include "str/core/case_record.h"
#include "str/core/closing.h"
#include "str/core/exclusive.h"
#include "str/core/frame.h"
#include "str/core/registry.h"

#include <platform/os.h>

#include <algorithm>
#include <cstdio>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_Smem";

// The work area.
CaseTableRecord *pWkAreaTabs;
int32_t NumWkAreaTabs;

// The number of the set whose source has this name; 0 when this is not the name of a source.
uint32_t SetOfSource(const char *name)
{
    unsigned long number = 0;
    char suffix[256];
    if (std::sscanf(name, "%lu%255s", &number, suffix) != 2 || std::strcmp(suffix, ".s") != 0)
        return 0;
    return static_cast<uint32_t>(
        std::min<unsigned long>(number, UINT32_MAX)); // no set has that number
}

void ReadSources(void *directory, int32_t companion, void *csTable)
{
    while (const os_dirent *entry = os_readdir(directory)) {
        const uint32_t set = SetOfSource(entry->name);
        if (set != 0 &&
            str_ReadCaseTable(set, &pWkAreaTabs, &NumWkAreaTabs, companion, csTable) == nullptr)
            er_LogMsg(3, 117, STR_LOG_NO_TABLE, entry->name, 0);
    }
}

// The bytes that an array may take in the segment: one element more than it has, rounded up.
template <class T>
uint32_t Budget(int32_t count)
{
    return static_cast<uint32_t>((ArraySize<T>(count) + sizeof(T) + 3) / 4 * 4);
}

uint32_t Budget(const CaseTableRecord &record)
{
    uint32_t total = sizeof record;
    if (record.pByteMap != 0)
        total += kByteMapSize;
    if (record.pExpansions != 0)
        total += Budget<PairRule>(record.NumExpansions);
    if (record.pLeads == 0)
        return total;
    total += Budget<LeadEntry>(record.NumLeads);
    const auto *const leads = reference::Resolve<LeadEntry>(record.pLeads);
    for (int32_t i = 0; i < record.NumLeads; ++i)
        if (leads[i].pTrails != 0)
            total += Budget<PairRule>(leads[i].NumTrails);
    return total;
}

struct Segment {
    SegmentAlloc alloc;
    char *start;
};

// Copies `size` bytes into a new block and stores its offset; false when there is no room.
bool Place(const Segment &segment, const void *bytes, size_t size, uint32_t *offset)
{
    const uint32_t given = segment.alloc(segment.start, static_cast<uint32_t>(size));
    if (given == 0)
        return false;
    if (size != 0)
        std::memcpy(segment.start + given, bytes, size);
    *offset = given;
    return true;
}

// Copies an array of this process.  Its reference, in the copied record, becomes the copy's offset.
bool PlaceArray(const Segment &segment, CaseTableRef *array, size_t size)
{
    return *array == 0 || Place(segment, reference::Resolve(*array), size, array);
}

template <class T>
T *At(const Segment &segment, uint32_t offset)
{
    return static_cast<T *>(static_cast<void *>(segment.start + offset));
}

// Copies the arrays of a record that has been copied.
bool PlaceArrays(const Segment &segment, CaseTableRecord *copy)
{
    if (!PlaceArray(segment, &copy->pByteMap, kByteMapSize) ||
        !PlaceArray(segment, &copy->pExpansions, ArraySize<PairRule>(copy->NumExpansions)) ||
        !PlaceArray(segment, &copy->pLeads, ArraySize<LeadEntry>(copy->NumLeads)))
        return false;
    LeadEntry *const leads = At<LeadEntry>(segment, copy->pLeads);
    for (int32_t i = 0; i < (copy->pLeads == 0 ? 0 : copy->NumLeads); ++i)
        if (!PlaceArray(segment, &leads[i].pTrails, ArraySize<PairRule>(leads[i].NumTrails)))
            return false;
    return true;
}

bool Scan(int32_t companion, void *csTable)
{
    void *directory = nullptr;
    return frame::Protect(
        kSource, frame::Accept(ER_CLASS_LIBRARY),
        [&] {
            directory = os_opendir("~/toupper");
            ReadSources(directory, companion, csTable);
            os_closedir(directory);
            directory = nullptr;
        },
        [&] {
            if (directory != nullptr)
                AbandonDirectory(directory);
        });
}

bool Copy(const Segment &shared, uint32_t *recordsOffset, int32_t *recordCount)
{
    uint32_t records = 0;
    if (!Place(shared, pWkAreaTabs, ArraySize<CaseTableRecord>(NumWkAreaTabs), &records))
        return false;
    *recordsOffset = records;
    *recordCount = NumWkAreaTabs;
    for (int32_t i = 0; i < NumWkAreaTabs; ++i)
        if (!PlaceArrays(shared, At<CaseTableRecord>(shared, records) + i))
            return false;
    return true;
}

} // namespace

int str_ReadStrToWkArea(int32_t companion, void *csTable)
{
    er_RealLogProc(ER_TRACE_STARTUP, __func__, 1);
    bool scanned = false;
    exclusive::Run(kSource, [&] { scanned = Scan(companion, csTable); });
    er_RealLogProc(ER_TRACE_STARTUP, __func__, 0);
    return scanned ? 1 : 0;
}

uint32_t str_TotalWorkArea(void)
{
    uint32_t total = 0;
    exclusive::Enter();
    for (int32_t i = 0; i < NumWkAreaTabs; ++i)
        total += Budget(pWkAreaTabs[i]);
    exclusive::Leave();
    return total;
}

int str_CopyWorkAreaToSMem(SegmentAlloc alloc, char *segment, uint32_t *recordsOffset,
                           int32_t *recordCount)
{
    exclusive::Enter();
    const bool copied = Copy({alloc, segment}, recordsOffset, recordCount);
    exclusive::Leave();
    return copied ? 1 : 0;
}

void str_FreeWkArea(void)
{
    exclusive::Enter();
    for (int32_t i = 0; i < NumWkAreaTabs; ++i)
        str_FreeCTEntry(&pWkAreaTabs[i]);
    os_free(pWkAreaTabs);
    pWkAreaTabs = nullptr;
    NumWkAreaTabs = 0;
    exclusive::Leave();
}

int str_IsDataStale(void) { return 0; }

void str_AttachSMem(uint32_t recordsOffset, int32_t recordCount, char *segment)
{
    void *const records = segment + recordsOffset;
    exclusive::Enter();
    registry::Attach(segment, static_cast<CaseTableRecord *>(records), recordCount);
    exclusive::Leave();
}
