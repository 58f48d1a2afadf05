// SPDX-License-Identifier: Apache-2.0
//
// One process of those that share case tables.  casetable_word_size.sh runs it in two word sizes.
//
//     casetable_peer digest HOME SET...    prints each set's table, compiled or loaded
//     casetable_peer publish HOME FILE     publishes all tables in FILE, as a shared segment
//     casetable_peer attach FILE SET...    prints each set's table out of it
#include "services/services.h"
#include "tests/process/digest.h"

#include <fcntl.h>
#include <platform/ccs.h>
#include <platform/enc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

constexpr uint32_t kMostBytes = 1 << 20;

// What stands first in the segment: how much of it is given out, and what those who attach need.
struct Segment {
    uint64_t writer; // where the publishing process has mapped it
    uint32_t used, limit;
    uint32_t csTable; // offset of the registrations
    uint32_t records;
    int32_t recordCount, setCount;
};
static_assert(sizeof(Segment) == 32);

void Demand(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "casetable_peer: not so: %s\n", what);
    std::exit(1);
}

uint32_t Allocate(char *start, uint32_t size)
{
    auto *const segment = reinterpret_cast<Segment *>(start);
    const uint32_t rounded = (size + 3) / 4 * 4;
    if (rounded > segment->limit - segment->used)
        return 0;
    segment->used += rounded;
    return segment->used - rounded;
}

Segment *Map(const char *file, int flags, int protection, uintptr_t hint)
{
    const int descriptor = open(file, flags, 0600);
    Demand(descriptor >= 0, "the segment's file can be opened");
    Demand((flags & O_CREAT) == 0 || ftruncate(descriptor, kMostBytes) == 0, "it can grow");
    void *const at =
        mmap(reinterpret_cast<void *>(hint), kMostBytes, protection, MAP_SHARED, descriptor, 0);
    Demand(at != MAP_FAILED, "it can be mapped");
    return static_cast<Segment *>(at);
}

void Publish(const char *file)
{
    auto *const segment = Map(file, O_RDWR | O_CREAT | O_TRUNC, PROT_READ | PROT_WRITE, 0);
    char *const start = reinterpret_cast<char *>(segment);
    *segment = {reinterpret_cast<uintptr_t>(start), sizeof *segment, kMostBytes, 0, 0, 0, 0};
    segment->setCount = ccs_GetSetCount();
    segment->csTable = Allocate(start, static_cast<uint32_t>(segment->setCount) * 2);
    Demand(str_ReadStrToWkArea(segment->setCount, start + segment->csTable) == 1,
           "tables are read");
    segment->limit = segment->used + str_TotalWorkArea();
    Demand(str_CopyWorkAreaToSMem(Allocate, start, &segment->records, &segment->recordCount) == 1,
           "the image has room in its budget");
    str_FreeWkArea();
}

void Attach(const char *file)
{
    const Segment *header = Map(file, O_RDONLY, PROT_READ, 0);
    const auto elsewhere = static_cast<uintptr_t>(header->writer) + 64 * kMostBytes;
    Segment *const segment = Map(file, O_RDONLY, PROT_READ, elsewhere);
    char *const start = reinterpret_cast<char *>(segment);
    Demand(reinterpret_cast<uintptr_t>(start) != segment->writer,
           "we are not where the writer was");
    ccs_SetCSTable(segment->setCount, start + segment->csTable);
    str_AttachSMem(segment->records, segment->recordCount, start);
}

// The table of a set, found as upper-casing finds it.
const CaseTableRecord *TableOf(const CSDescriptor &cs)
{
    if (const uint16_t number = ccs_GetToUpperTable(&cs); number != 0)
        return pCaseTabs + number - 1;
    return str_InitCaseTables(&cs);
}

void Print(const char *set)
{
    const CSDescriptor cs = {static_cast<uint16_t>(std::atoi(set)), 0};
    const CaseTableRecord *const table = TableOf(cs);
    Demand(table != nullptr, "every set has its table");
    std::printf("%s %s\n", set, Digest(*table).c_str());
}

} // namespace

// A notation of our own, two hexadecimal digits a byte: the default one needs GLib.
const unsigned char *enc_ConvertLongEncodedStr(const char *text, int, int *length)
{
    static unsigned char bytes[16];
    for (*length = 0; std::sscanf(text + 2 * *length, "%2hhx", bytes + *length) == 1;)
        ++*length;
    return bytes;
}

int main(int argc, char **argv)
{
    Demand(argc > 3, "there are three arguments or more");
    er_SetTraceSink([](int, const char *, int) {});
    const bool attach = std::strcmp(argv[1], "attach") == 0;
    if (attach)
        Attach(argv[2]);
    else
        Demand(os_SetHome(argv[2]) == 0, "there is a home");
    if (std::strcmp(argv[1], "publish") == 0)
        return Publish(argv[3]), 0;
    for (int i = 3; i < argc; ++i)
        Print(argv[i]);
}
