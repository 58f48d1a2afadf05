// SPDX-License-Identifier: Apache-2.0
//
// Case tables.  Loading and compiling are compared with the least that one can do with the same
// file, publishing and attaching with themselves while more and more processes are attached.
#include "bench/support.h"
#include "services/services.h"
#include "tests/support/home.h"

#include <platform/ccs.h>
#include <str/casetable.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <list>
#include <stdexcept>

namespace
{

using bench::Text;
using bench::Way;

constexpr size_t kMost = 1024 * 1024; // bytes of a file, and of a segment

void Demand(bool holds, const char *what)
{
    if (!holds)
        throw std::runtime_error(what);
}

// The shipped sources; the service home only while they are read, so that no compile writes a file.
const TempHome &Home()
{
    static const TempHome home;
    return home;
}

void ReadAllTables()
{
    Home();
    for (const auto &file : std::filesystem::directory_iterator(STR_DATA_DIR "/toupper"))
        if (file.path().extension() == ".s")
            std::filesystem::copy(file.path(), Home().PathOf("toupper"));
    er_SetTraceSink([](int, const char *, int) {});
    int32_t companion;
    ccs_GetCSTable(&companion);
    std::vector<uint16_t> registrations(static_cast<size_t>(companion)); // not those in force
    Demand(str_ReadStrToWkArea(companion, registrations.data()) == 1, "no case tables");
    os_SetHome("/dev/null/none");
}

// ---- Files: a text is a file here, and its set the path ------------------------------------

char theBytes[kMost];

size_t Load(const Text &file)
{
    CaseTableRecord record = {};
    const bool loaded = str_LoadCaseTable(file.sort.set, &record) == 1;
    str_FreeCTEntry(&record);
    return loaded ? file.bytes.size() : 0;
}

size_t Compile(const Text &file)
{
    CaseTableRecord record = {};
    const bool compiled = str_CompileCaseTable(file.sort.set, "/dev/null/none", &record) == 1;
    str_FreeCTEntry(&record);
    return compiled ? file.bytes.size() : 0;
}

size_t ReadWhole(const Text &file)
{
    FILE *const stream = std::fopen(file.sort.set, "r");
    const size_t size = std::fread(theBytes, 1, sizeof theBytes, stream);
    std::fclose(stream);
    return size;
}

size_t ReadLines(const Text &file)
{
    FILE *const stream = std::fopen(file.sort.set, "r");
    size_t size = 0;
    for (char line[81]; std::fgets(line, sizeof line, stream) != nullptr;)
        size += std::strlen(line);
    std::fclose(stream);
    return size;
}

// Reads a byte of each page.
size_t Touch(const char *at, size_t size)
{
    size_t sum = 0;
    for (size_t offset = 0; offset < size; offset += 4096)
        sum += static_cast<unsigned char>(static_cast<const volatile char *>(at)[offset]);
    return sum;
}

size_t MapWhole(const Text &file)
{
    const int descriptor = open(file.sort.set, O_RDONLY);
    struct stat status;
    fstat(descriptor, &status);
    const auto size = static_cast<size_t>(status.st_size);
    void *const at = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    close(descriptor);
    Touch(static_cast<char *>(at), size);
    munmap(at, size);
    return size;
}

// ---- Images --------------------------------------------------------------------------------

// A segment that `attached` processes use: this one and, for as long as it lives, others.
class Segment
{
  public:
    explicit Segment(int attached) : descriptor(memfd_create("str_bench", MFD_CLOEXEC))
    {
        Demand(ftruncate(descriptor, kMost) == 0, "no segment");
        start = Map(PROT_READ | PROT_WRITE);
        Publish();
        for (int other = 1; other < attached; ++other)
            Fork();
    }

    size_t Publish()
    {
        *reinterpret_cast<uint32_t *>(start) = sizeof(uint32_t);
        Demand(str_CopyWorkAreaToSMem(Allocate, start, &records, &count) == 1, "a full segment");
        return static_cast<size_t>(count);
    }

    // Maps the segment, attaches the image and reads a byte map; then all is as before.
    size_t Attach() const
    {
        CaseTableRecord *const tables = pCaseTabs;
        const int32_t tableCount = NumCaseTabs;
        char *const at = Map(PROT_READ);
        str_AttachSMem(records, count, at);
        const auto attached = static_cast<size_t>(NumCaseTabs);
        Touch(str_ba + pCaseTabs[0].pByteMap, 256);
        munmap(at, kMost);
        str_ba = nullptr;
        pCaseTabs = tables;
        NumCaseTabs = tableCount;
        return attached;
    }

  private:
    int descriptor;
    char *start; // its first word is the offset of what is not given out yet
    uint32_t records = 0;
    int32_t count = 0;

    static uint32_t Allocate(char *segment, uint32_t size)
    {
        auto *const next = reinterpret_cast<uint32_t *>(segment);
        const uint32_t given = *next;
        const uint32_t rounded = (size + 3) / 4 * 4;
        if (rounded > kMost - given)
            return 0;
        *next += rounded;
        return given;
    }

    char *Map(int protection) const
    {
        void *const at = mmap(nullptr, kMost, protection, MAP_SHARED, descriptor, 0);
        Demand(at != MAP_FAILED, "no mapping");
        return static_cast<char *>(at);
    }

    // Another process, which has attached the image when this returns.
    void Fork() const
    {
        int ready[2];
        Demand(pipe(ready) == 0, "no pipe");
        const pid_t child = fork();
        Demand(child >= 0, "no process");
        if (child == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            str_AttachSMem(records, count, Map(PROT_READ));
            Touch(str_ba, kMost);
            close(ready[1]);
            for (;;)
                pause();
        }
        close(ready[1]);
        char none;
        Demand(read(ready[0], &none, 1) == 0, "no other process");
        close(ready[0]);
    }
};

template <int attached>
Segment &SegmentOf()
{
    static Segment segment(attached);
    return segment;
}

template <int attached>
size_t Publish(const Text &)
{
    return SegmentOf<attached>().Publish();
}

template <int attached>
size_t Attach(const Text &)
{
    return SegmentOf<attached>().Attach();
}

// ---- The comparisons -----------------------------------------------------------------------

const std::vector<Way> kLoads = {
    {"libstr", Load}, {"fopen, fread, fclose", ReadWhole}, {"mmap", MapWhole}};
const std::vector<Way> kCompiles = {{"libstr", Compile}, {"fgets", ReadLines}};
const std::vector<Way> kPublications = {{"1", Publish<1>},
                                        {"2", Publish<2>},
                                        {"4", Publish<4>},
                                        {"8", Publish<8>},
                                        {"16", Publish<16>}};
const std::vector<Way> kAttachments = {
    {"1", Attach<1>}, {"2", Attach<2>}, {"4", Attach<4>}, {"8", Attach<8>}, {"16", Attach<16>}};

struct Row {
    const char *title, *source, *compiled;
};
const Row kRows[] = {{"ISO-8859-1", "toupper/100.s", "toupper/100.b"},
                     {"T.61", "toupper/103.s", "toupper/103.b"},
                     {"JIS X 0208", "toupper/87.s", "toupper/87.b"}};

// The text lasts as long as the program.
Text FileText(const char *title, const char *name)
{
    static std::list<std::string> paths;
    const char *const path = paths.emplace_back(Home().PathOf(name)).c_str();
    return {{title, path, ""}, {}, nullptr, nullptr, Home().Read(name), 0, {}};
}

const bool theRegistration = [] {
    ReadAllTables();
    for (const Row &row : kRows)
        bench::Compare("str_LoadCaseTable", FileText(row.title, row.compiled), kLoads);
    for (const Row &row : kRows)
        bench::Compare("str_CompileCaseTable", FileText(row.title, row.source), kCompiles);
    const Text image = {
        {"all", "", ""}, {}, nullptr, nullptr, std::string(str_TotalWorkArea(), '\0'), 0, {}};
    bench::Compare("publishing to one process attached", image, kPublications);
    bench::Compare("attaching as the only process", image, kAttachments);
    return true;
}();

} // namespace
