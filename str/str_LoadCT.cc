// SPDX-License-Identifier: Apache-2.0
//
// The case table loader: from a compiled file to a record.
//
// The file may be damaged.  So counts are checked before anything is allocated, the references in
// the file are never used, and at every moment the record refers only to blocks of this load.
#include "str/core/case_record.h"
#include "str/core/closing.h"
#include "str/core/exclusive.h"
#include "str/core/frame.h"

#include <platform/mdc.h>
#include <platform/os.h>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_LoadCT";

void Read(void *into, size_t size, FILE *stream)
{
    if (os_fread(into, 1, size, stream) < size)
        frame::Raise(kSource, STR_ESC_ENDS_TOO_EARLY);
}

void ReadCaseTableHeader(FILE *stream)
{
    CaseTableHeader header;
    Read(&header, sizeof header, stream);
    if (header.magic != CASE_TABLE_MAGIC || header.version != CASE_TABLE_VERSION ||
        header.zero != 0)
        frame::Raise(kSource, STR_ESC_NOT_A_CASE_TABLE);
}

// The record in the file, without its references.
CaseTableRecord ReadRecord(FILE *stream)
{
    CaseTableRecord record;
    Read(&record, sizeof record, stream);
    record.pByteMap = record.pExpansions = record.pLeads = 0;
    return record;
}

// A negative count means 0; a count that no array can have is an error.
int32_t CheckedCount(int32_t count)
{
    if (count > kMostEntries)
        frame::Raise(kSource, STR_ESC_NOT_A_CASE_TABLE);
    return count < 0 ? 0 : count;
}

// Reads an array into a block of its own.  The record refers to it before it is filled, so it is
// released whatever happens.
void ReadBlock(CaseTableRef *array, size_t size, FILE *stream)
{
    if (size == 0)
        return;
    reference::Reserve();
    *array = reference::Make(os_malloc(size), 0);
    Read(reference::Resolve(*array), size, stream);
}

// Reads the lead entries.  Their count stays 0 until their references are cleared: when the file is
// cut off, the references in it must not be released.
void ReadLeads(CaseTableRecord *record, FILE *stream)
{
    const int32_t count = CheckedCount(record->NumLeads);
    record->NumLeads = 0;
    ReadBlock(&record->pLeads, ArraySize<LeadEntry>(count), stream);
    auto *const leads = reference::Resolve<LeadEntry>(record->pLeads);
    for (int32_t i = 0; i < count; ++i)
        leads[i].pTrails = 0;
    record->NumLeads = count;
}

void ReadCaseTableArrays(FILE *stream, CaseTableRecord *record)
{
    frame::Protect(
        kSource, frame::Propagate(),
        [&] {
            record->NumExpansions = CheckedCount(record->NumExpansions);
            ReadBlock(&record->pByteMap, kByteMapSize, stream);
            ReadBlock(&record->pExpansions, ArraySize<PairRule>(record->NumExpansions), stream);
            ReadLeads(record, stream);
            auto *const leads = reference::Resolve<LeadEntry>(record->pLeads);
            for (int32_t i = 0; i < record->NumLeads; ++i) {
                leads[i].NumTrails = CheckedCount(leads[i].NumTrails);
                ReadBlock(&leads[i].pTrails, ArraySize<PairRule>(leads[i].NumTrails), stream);
            }
        },
        [&] { str_FreeCTEntry(record); });
}

bool Load(const char *compiledName, CaseTableRecord *record)
{
    FILE *stream = nullptr;
    return frame::Protect(
        kSource, frame::Accept(ER_CLASS_LIBRARY),
        [&] {
            stream = os_fopen(compiledName, "r");
            ReadCaseTableHeader(stream);
            *record = ReadRecord(stream);
            ReadCaseTableArrays(stream, record);
            mdc_fclose(stream);
            stream = nullptr;
        },
        [&] {
            str_FreeCTEntry(record); // filled when the close escapes
            if (stream != nullptr)
                Abandon(stream);
            er_LogInfo(1, compiledName, 0);
        });
}

} // namespace

int str_LoadCaseTable(const char *compiledName, CaseTableRecord *record)
{
    frame::TraceEntry();
    bool loaded = false;
    exclusive::Run(kSource, [&] { loaded = Load(compiledName, record); });
    frame::TraceExit();
    return loaded ? 1 : 0;
}
