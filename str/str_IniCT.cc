// SPDX-License-Identifier: Apache-2.0
//
// The registry of case tables: each set's table is compiled or loaded on its first use.
#include "str/core/case_record.h"
#include "str/core/exclusive.h"
#include "str/core/frame.h"
#include "str/core/prepared.h"
#include "str/core/registry.h"

#include <platform/ccs.h>
#include <platform/lkf.h>
#include <platform/os.h>

#include <cstdio>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_IniCT";

bool FirstInit = true; // until the first call of str_InitCaseTables

constexpr char kLockFile[] = "~/sys/toupper.lk";
constexpr size_t kMostDigits = 20;
constexpr size_t kPathSize = sizeof "~/toupper/.s" + kMostDigits;

void BuildPath(char (&path)[kPathSize], const char *digits, char suffix)
{
    std::snprintf(path, kPathSize, "~/toupper/%s.%c", digits, suffix);
}

void BuildCaseTableNames(uint32_t setNumber, char (&source)[kPathSize], char (&compiled)[kPathSize])
{
    char digits[kMostDigits + 1];
    int unused = 0;
    os_ul2str(setNumber, 10, 1, digits, &unused);
    BuildPath(source, digits, 's');
    BuildPath(compiled, digits, 'b');
}

bool CompiledFileExists(const char *path) { return os_fexists(path) != 0; }

// The lock of the case tables, and whether this process holds it.
struct Lock {
    int handle;
    bool held;
};

void Take(Lock *lock, int mode)
{
    lock->handle = lkf_LockFile(mode, kLockFile);
    lock->held = true;
}

void GiveBack(Lock *lock)
{
    if (!lock->held)
        return;
    lkf_UnLockFile(lock->handle);
    lock->held = false;
}

// Locks the tables.  True when the lock is exclusive and the compiled file is still missing: this
// process must then compile it.
bool LockToCompile(Lock *lock, const char *compiled)
{
    if (!CompiledFileExists(compiled)) {
        Take(lock, LKF_EXCLUSIVE);
        if (!CompiledFileExists(compiled))
            return true;
        GiveBack(lock);
    }
    Take(lock, LKF_SHARED);
    return false;
}

// Takes back the slot added last.  When no other is left, the block is released, since an empty
// array begins with a new block.
void DropSlot(CaseTableRecord **tables, int32_t *count)
{
    if (--*count > 0)
        return;
    os_free(*tables);
    *tables = nullptr;
}

// Fills in a cleared slot; false when there is no readable table.
bool ReadInto(CaseTableRecord *slot, bool compile, const char *source, const char *compiled)
{
    return (compile ? str_CompileCaseTable(source, compiled, slot)
                    : str_LoadCaseTable(compiled, slot)) == 1;
}

// What is prepared is for the registry only.
void PrepareIfRegistered(CaseTableRecord *const *tables, int16_t index)
{
    if (tables == &pCaseTabs)
        prepared::Add(static_cast<size_t>(index), pCaseTabs[index]);
}

struct Request {
    uint32_t setNumber;
    CaseTableRecord **tables;
    int32_t *count;
};

CaseTableRecord *Read(const Request &request, int32_t companion, void *csTable)
{
    CaseTableRecord *table = nullptr, *unprepared = nullptr;
    Lock lock = {0, false};
    frame::Protect(
        kSource, frame::Accept(ER_CLASS_LIBRARY),
        [&] {
            char source[kPathSize];
            char compiled[kPathSize];
            BuildCaseTableNames(request.setNumber, source, compiled);
            const bool compile = LockToCompile(&lock, compiled);
            int16_t index = 0;
            CaseTableRecord *const slot =
                str_InitControlTable(&index, request.tables, request.count);
            if (ReadInto(slot, compile, source, compiled)) {
                unprepared = slot;
                PrepareIfRegistered(request.tables, index);
                unprepared = nullptr;
                ccs_PutToUpperByCSNum(static_cast<int>(request.setNumber),
                                      static_cast<uint16_t>(index + 1), companion, csTable);
                table = slot;
            } else {
                DropSlot(request.tables, request.count);
            }
            GiveBack(&lock);
        },
        [&] {
            table = nullptr;
            if (unprepared != nullptr) {
                str_FreeCTEntry(unprepared);
                DropSlot(request.tables, request.count);
            }
            GiveBack(&lock);
        });
    return table;
}

CaseTableRecord *Init(const CSDescriptor *cs)
{
    er_RealLogProc(ER_TRACE_STARTUP, "str_InitCaseTables", 1);
    if (FirstInit && str_ba == nullptr) {
        NumCaseTabs = 0;
        pCaseTabs = nullptr;
    }
    FirstInit = false;
    if (InitTabsDone == 0)
        ccs_DoInitTables();
    CaseTableRecord *table = nullptr;
    if (str_ba == nullptr) { // nothing is added to an image
        const int setNumber = ccs_GetCSNumber(cs);
        int32_t companion = 0;
        void *const csTable = ccs_GetCSTable(&companion);
        table = str_ReadCaseTable(static_cast<uint32_t>(setNumber), &pCaseTabs, &NumCaseTabs,
                                  companion, csTable);
    }
    er_RealLogProc(ER_TRACE_STARTUP, "str_InitCaseTables", 0);
    return table;
}

} // namespace

CaseTableRecord *libstr::FirstTable(const CSDescriptor *cs)
{
    CaseTableRecord *table = nullptr;
    exclusive::Run(kSource, [&] {
        const uint16_t number = ccs_GetToUpperTable(cs);
        table = number != 0 ? registry::RecordOf(number) : str_InitCaseTables(cs);
    });
    return table;
}

CaseTableRecord *str_InitControlTable(int16_t *index, CaseTableRecord **tables, int32_t *count)
{
    if (tables == &pCaseTabs) {
        exclusive::Run(kSource, [&] { *index = registry::Add(); });
    } else {
        int32_t used = *count;
        *tables = static_cast<CaseTableRecord *>(
            str_AllocEntry(*tables, count, &used, sizeof(CaseTableRecord), 1, index));
    }
    CaseTableRecord *const record = *tables + *index;
    std::memset(record, 0, sizeof *record);
    return record;
}

CaseTableRecord *str_ReadCaseTable(uint32_t setNumber, CaseTableRecord **tables, int32_t *count,
                                   int32_t companion, void *csTable)
{
    CaseTableRecord *table = nullptr;
    exclusive::Run(kSource, [&] { table = Read({setNumber, tables, count}, companion, csTable); });
    return table;
}

CaseTableRecord *str_InitCaseTables(const CSDescriptor *cs)
{
    CaseTableRecord *table = nullptr;
    exclusive::Run(kSource, [&] { table = Init(cs); });
    return table;
}
