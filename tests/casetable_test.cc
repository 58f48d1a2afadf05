// SPDX-License-Identifier: Apache-2.0
//
// Case tables from their sources to the registry and to the image: the compiler's language, its
// files byte for byte, the registry with the service's registrations, and publishing.
#include "services/services.h"
#include "tests/support/casetable.h"
#include "tests/support/escape.h"
#include "tests/support/guarded.h"

#include <platform/ccs.h>
#include <platform/os.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr CSDescriptor kLatin = {100, 0}, kGreek = {126, 0};

class CaseTables : public CaseTableTest
{
  protected:
    CaseTables() { csTable = ccs_GetCSTable(&companion); }
    ~CaseTables() override
    {
        for (const CSDescriptor &cs : {kLatin, kGreek})
            ccs_PutToUpperByCSNum(cs.csNum, 0, companion, csTable);
    }

    // What the source compiles to, in words; or the code of what is wrong with it and the line.
    std::string Compile(std::string_view source)
    {
        home.Write("toupper/12.s", source);
        logged.clear();
        CaseTableRecord record = {};
        if (str_CompileCaseTable("~/toupper/12.s", "~/toupper/12.b", &record) == 0) {
            EXPECT_TRUE(IsClear(record));
            const std::string line = logged.substr(std::min(logged.rfind(' '), logged.size()));
            EXPECT_EQ(logged,
                      "case table source ~/toupper/12.s could not be compiled: line" + line);
            return std::to_string(er_GetLastCode()) + line.substr(0, line.find('\n'));
        }
        const std::string file = FileOf(record);
        EXPECT_EQ(file, WithoutReferences(home.Read("toupper/12.b")));
        EXPECT_EQ(logged, "");
        str_FreeCTEntry(&record);
        EXPECT_TRUE(IsClear(record));
        return RulesOf(file);
    }

    // The slot of a set's table once it has been used; -1 when there is no table.
    static ptrdiff_t Use(const CSDescriptor &cs)
    {
        const CaseTableRecord *const record = str_InitCaseTables(&cs);
        return record == nullptr ? -1 : record - pCaseTabs;
    }

    int32_t companion;
    void *csTable;
};

// ---- The registry ---------------------------------------------------------------------------

TEST_F(CaseTables, TheRegistryBeginsEmptyAndGrowsByFirstUse)
{
    CaseTableRecord stray = {};
    if (InitTabsDone == 0) { // no test of this process has used it
        pCaseTabs = &stray;
        NumCaseTabs = 7;
    }
    EXPECT_EQ(Use(kLatin), -1) << "no table";
    EXPECT_EQ(pCaseTabs, nullptr) << "the first slot is given back";
    EXPECT_NE(InitTabsDone, 0);
    EXPECT_EQ(logged, "case table source ~/toupper/100.s could not be compiled: line 0\n");
    EXPECT_EQ(traced, "17+str_InitCaseTables 17-str_InitCaseTables ") << "at level 0";
    home.Write("toupper/100.s", "T C latin\na=A \\xDF=SS");
    EXPECT_EQ(Use(kLatin), 0) << "tried again";
    EXPECT_EQ(ccs_GetToUpperTable(&kLatin), 1);
    EXPECT_EQ(Use(kGreek), -1);
    EXPECT_EQ(NumCaseTabs, 1) << "a slot is given back";
    home.Write("toupper/126.s", "T C greek\n\\xE1=\\xC1");
    EXPECT_EQ(Use(kGreek), 1);
    EXPECT_EQ(ccs_GetToUpperTable(&kGreek), 2);
    home.Write("toupper/126.s", "no longer a source");
    EXPECT_EQ(Use(kGreek), 2) << "loaded, not compiled";
    EXPECT_EQ(ccs_GetToUpperTable(&kGreek), 3) << "the last registration holds";
    EXPECT_EQ(ccs_GetToUpperTable(&kLatin), 1);
    std::string otherVersion = home.Read("toupper/126.b");
    otherVersion[4] = 10;
    home.Write("toupper/126.b", otherVersion);
    EXPECT_EQ(Use(kGreek), -1);
    EXPECT_EQ(er_GetLastCode(), 23802);
    EXPECT_EQ(home.Read("toupper/126.b"), otherVersion) << "never made anew";
    ASSERT_EQ(NumCaseTabs, 3);
    EXPECT_EQ(RulesOf(FileOf(pCaseTabs[0])), "LATIN 61>41 DF>00 DF:5353");
    EXPECT_EQ(RulesOf(FileOf(pCaseTabs[1])), "GREEK E1>C1");
    EXPECT_EQ(FileOf(pCaseTabs[2]), FileOf(pCaseTabs[1]));
}

TEST_F(CaseTables, WhyThereIsNoneIsSaidOnce)
{
    er_SetLogSink(nullptr);
    testing::internal::CaptureStderr();
    for (int use = 0; use < 2; ++use)
        EXPECT_EQ(Use(kLatin), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "libstr: 23803: case table source ~/toupper/100.s could not be compiled: line 0: "s +
                  er_GetCodeText(OS_ESC_FILE) + " (~ is " + home.path() + ")\n");
}

// ---- The source's language ------------------------------------------------------------------

struct SourceRow {
    std::string_view source, compiled;
};

// clang-format off
constexpr SourceRow kHeaderRows[] = {
    {"T CHAR latin1 anything", "LATIN1"}, {"TOUPPER CHARSET X\n", "X"},
    {"\n \t\f\v\r\n# note\n   # note\r\nT C x a=A\n", "X"},
    {"T C x\r\n  # note\r\n\r\na=A\r\nb=B", "X 61>41 62>42"}, {"T C \xE9-\x01", "\xE9-\x01"},
    {"T C x\0y\0\na=A\0 b=B\n\0c=C\nd=D"sv, "X 61>41 64>44"},
    {"TOUPPERS CHARSET x", "23805 1"}, {"toupper CHARSET x", "23805 1"},
    {"\xEF\xBB\xBFTOUPPER CHARSET x", "23805 1"},
    {"TOUPPER charset x", "23806 1"}, {"T CHARSETS x", "23806 1"},
    {"T", "23807 1"}, {"\nTOUPPER CHARSET\nx", "23807 2"}, {"T\nC x", "23807 1"},
    {"", "23812 0"}, {"# note\n\n \n#", "23812 4"}, {"\0T C x"sv, "23812 1"},
    {"T C a23456789b123456789c123456789d123456789", "A23456789B123456789C123456789D123456789"},
    {"T C a23456789b123456789c123456789d1234567890", "3084 1"},
};

// The lines behind the first, which names the set X.
constexpr SourceRow kRuleRows[] = {
    {"a=A\nb = B\nc -> C d <> D\te=>E f <=- F g= G h =H", "X 61>41 62>42 63>43 64>44 65>45 66>46 67>47 68>48"},
    {"a=A # note", "23814 2"}, {"a b", "23814 2"}, {"a >b", "X 61>62"},
    {"a>A\n=b", "23807 2"}, {"a\n=A", "23807 2"}, {"a =\nA", "23807 2"}, {"a=", "23807 2"},
    {"=A", "23808 2"}, {"\n\n -A", "23808 4"}, {"<A", "23808 2"},
    {"a>=A", "X 61>00 61[3E:4100]"}, {">A = B", "X 3E>00 3E[41:4200]"},
    {"a=A> b=-=B", "X 61>00 62>42 61:413E"}, {"a = =A", "X 61>00 61:3D41"}, {"a = #", "X 61>23"},
    {"\\x3D=\\075\\x3d \\\\=\\x00", "X 3D>00 5C>00 3D:3D3D"},
    {"a=AB a=C", "X 61>43 61:4142"}, {"a=C a=AB a=BA", "X 61>00 61:4142 61:4241"},
    {"bc=BC bb=B ac=A bc=XY b=B", "X 61>00 62>42 62[63:4243 62:4200 63:5859] 61[63:4100]"},
    {"abc=A", "23810 2"}, {"abcdefghijklmnopqrst=A", "23810 2"},
    {"a=ABC", "23811 2"}, {"a=A=B", "23811 2"}, {"a=ABCDEFGHIJKLMNOPQRST", "23811 2"},
    {"a=\\x4", "24003 2"}, {"\n\\400=A", "24003 3"}, {"a=A\\", "24003 2"}, {"\xDF=SS", "24003 2"},
};
// clang-format on

TEST_F(CaseTables, SourcesAreReadByTheirGrammar)
{
    for (const SourceRow &row : kHeaderRows)
        EXPECT_EQ(Compile(row.source), row.compiled) << row.source;
    for (const SourceRow &row : kRuleRows)
        EXPECT_EQ(Compile("T C x\n" + std::string(row.source)), row.compiled) << row.source;
    CaseTableRecord record = {};
    for (const char *unreadable : {"~/toupper/13.s", "~/toupper"}) {
        EXPECT_EQ(str_CompileCaseTable(unreadable, "~/toupper/13.b", &record), 0);
        EXPECT_EQ(er_GetLastCode(), OS_ESC_FILE);
    }
}

std::string Repeat(std::string_view text, size_t times)
{
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

TEST_F(CaseTables, LongLinesAreReadInPieces)
{
    constexpr size_t kMebibyte = 1 << 20;
    const struct {
        std::string line, compiled; // with a wrong line behind it
    } rows[] = {
        {"a=A" + Repeat(" ", 76), "23808 3"},           {"a=A" + Repeat(" ", 77), "23808 4"},
        {Repeat(" ", 78) + "a=A", "23807 2"},           {Repeat(" ", 79) + "ab=A", "23807 2"},
        {Repeat("#", 80) + "a=A", "23808 4"},           {Repeat("#", 80) + "a:A", "23807 3"},
        {Repeat("#", kMebibyte), "23808 13110"},        {Repeat("\0"sv, kMebibyte), "23808 13110"},
        {Repeat("a=A ", kMebibyte / 4), "23808 13110"}, {Repeat("x", kMebibyte), "23810 2"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Compile("T C x\n" + row.line + "\n="), row.compiled) << row.line.substr(0, 90);
    EXPECT_EQ(Compile("T C " + Repeat("n", kMebibyte)), "3084 1");
}

TEST_F(CaseTables, ListsEndAtTheGreatestIndex)
{
    EXPECT_EQ(Compile("T C x\n" + Repeat("a=A\n", 40000)), "X 61>41");
    EXPECT_EQ(Compile("T C x\n" + Repeat("a=AB\n", 40000)), "24001 32769");
    EXPECT_EQ(Compile("T C x\n" + Repeat("ab=A\n", 40000)), "24001 32769");
    EXPECT_EQ(Compile("T C x\n" + Repeat("a=AB\n", 32767)), "X 61>00" + Repeat(" 61:4142", 32767));
}

// ---- The compiled file ----------------------------------------------------------------------

TEST_F(CaseTables, TheCompiledFileIsLaidOutByteForByte)
{
    const std::string zero(1, '\0'), none = Repeat(zero, 4), twenty = "\x14" + Repeat(zero, 3);
    const std::string top =
        "\x4E\x61\xBC" + zero + "\x0B" + Repeat(zero, 3 + 4 + 40) + "X" + Repeat(zero, 39 + 44);
    const std::string mapAt = "\xA4" + Repeat(zero, 3); // an array is named by its offset
    std::string map;
    for (int byte = 0; byte < 256; ++byte)
        map += static_cast<char>(byte);
    EXPECT_EQ(Compile("T C x"), "X");
    EXPECT_EQ(home.Read("toupper/12.b"), top + mapAt + Repeat(none, 6) + map);

    EXPECT_EQ(Compile("T C x\n\\xDF=SS \\xC2\\x61=\\xC2\\x41 \\xC2\\x62=B"),
              "X C2>00 DF>00 DF:5353 C2[61:C241 62:4200]");
    map[0xDF] = map[0xC2] = 0;
    const std::string one = "\x01" + Repeat(zero, 3), two = "\x02" + Repeat(zero, 3);
    EXPECT_EQ(home.Read("toupper/12.b"),
              top + mapAt + "\xA4\x01" + zero + zero + twenty + one + "\xA7\x01" + zero + zero +
                  twenty + one + map + "\xDFSS" + "\xC2" + Repeat(zero, 3) + "\xB7\x01" + zero +
                  zero + twenty + two + "a\xC2\x41" + "bB" + zero);
}

TEST_F(CaseTables, TheCompiledFileGetsItsNameWhole)
{
    const mode_t mask = umask(0137);
    home.Write("toupper/12.b", "an earlier one");
    home.Write("toupper/12.old", "a colleague's");
    ASSERT_EQ(symlink("12.old", home.PathOf("toupper/casetemp").c_str()), 0);
    EXPECT_EQ(Compile("T C x\na=A"), "X 61>41");
    EXPECT_EQ(home.List("toupper"), (std::vector{"12.b"s, "12.old"s, "12.s"s}));
    EXPECT_EQ(home.Read("toupper/12.old"), "a colleague's");
    std::remove(home.PathOf("toupper/12.b").c_str());
    EXPECT_EQ(Compile("T C x\na=A"), "X 61>41");
    EXPECT_EQ(umask(mask), 0137U) << "the caller's mask";
    struct stat status = {};
    ASSERT_EQ(stat(home.PathOf("toupper/12.b").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0664U) << "whatever the mask";
    CaseTableRecord record = {};
    EXPECT_EQ(str_CompileCaseTable("~/toupper/12.s", "~/nowhere/12.b", &record), 1);
    EXPECT_EQ(RulesOf(FileOf(record)), "X 61>41") << "good for this process";
    str_FreeCTEntry(&record);
}

TEST_F(CaseTables, CompilingAndLoadingAreTraced)
{
    CaseTableRecord record = {};
    for (const int level : {9, 10}) {
        EXPECT_EQ(traced, "") << "nothing below level 10";
        er_SubSystemLoggingLevel = level;
        str_CompileCaseTable("~/toupper/12.s", "~/toupper/12.b", &record);
        str_LoadCaseTable("~/toupper/12.b", &record);
    }
    EXPECT_EQ(traced, "19+str_CompileCaseTable 19-str_CompileCaseTable "
                      "19+str_LoadCaseTable 19-str_LoadCaseTable ");
}

// ---- Arrays ---------------------------------------------------------------------------------

TEST(CaseTableArrays, GrowByTheirStepToTheGreatestIndex)
{
    for (const int32_t step : {1, 20, 32767}) {
        static char *block;
        static int32_t capacity, used;
        static int16_t index;
        capacity = 0;
        used = 4711; // means nothing with no capacity
        for (int32_t i = 0; i < 32767; ++i) {
            block = static_cast<char *>(str_AllocEntry(block, &capacity, &used, 3, step, &index));
            ASSERT_EQ(index, i);
            ASSERT_EQ(used, i + 1);
            ASSERT_EQ(capacity, (i / step + 1) * step);
            std::memset(block + 3 * i, i, 3);
        }
        EXPECT_EQ(Escaped([] { str_AllocEntry(block, &capacity, &used, 3, 20, &index); }),
                  OS_ESC_MEMORY);
        EXPECT_EQ(used, 32767);
        EXPECT_EQ(capacity, (32766 / step + 1) * step);
        for (int32_t i = 0; i < 32767; ++i)
            ASSERT_EQ(block[3 * i + 2], static_cast<char>(i)) << "nothing is lost on the way";
        os_free(block);
    }
}

// ---- Publishing -----------------------------------------------------------------------------

std::vector<uint32_t> requests;
size_t refused; // the request of that number; 0 for none
uint32_t firstFree, records;
int32_t recordCount;

uint32_t Allocate(char *, uint32_t size)
{
    requests.push_back(size);
    if (requests.size() == refused)
        return 0;
    const uint32_t offset = firstFree;
    firstFree += (size + 3) / 4 * 4;
    return offset;
}

int Publish(char *segment, size_t refuse = 0)
{
    requests.clear();
    refused = refuse;
    firstFree = 4;
    return str_CopyWorkAreaToSMem(Allocate, segment, &records, &recordCount);
}

constexpr char kPlain[] = "T C plain\na=A";
constexpr char kRich[] = "T C rich\na=A \\xDF=SS \\xC2\\x61=\\xC2\\x41 \\xC2\\x62=B";

TEST_F(CaseTables, TheWorkAreaHoldsEverySetThatHasASource)
{
    const struct {
        const char *source;
        uint32_t budget;
        std::vector<uint32_t> requests;
    } rows[] = {{kPlain, 368, {112, 256}}, {kRich, 420, {112, 256, 3, 16, 6}}};
    for (const char *other : {"0.s", "13.s.bak", "casetemp", "s", ".s", "15.S", "16", "17.b"})
        home.Write("toupper/"s + other, kPlain);
    EXPECT_EQ(str_ReadStrToWkArea(companion, csTable), 1);
    EXPECT_EQ(traced, "17+str_ReadStrToWkArea 17-str_ReadStrToWkArea ");
    EXPECT_EQ(str_TotalWorkArea(), 0U);
    EXPECT_EQ(Publish(nullptr), 1);
    EXPECT_EQ(requests, std::vector<uint32_t>{0});
    EXPECT_EQ(recordCount, 0);
    for (const auto &row : rows) {
        home.Write("toupper/100.s", row.source);
        std::remove(home.PathOf("toupper/100.b").c_str());
        for (const char *made : {"compiled", "loaded"}) {
            ccs_PutToUpperByCSNum(100, 0, companion, csTable);
            EXPECT_EQ(str_ReadStrToWkArea(companion, csTable), 1) << made;
            EXPECT_EQ(ccs_GetToUpperTable(&kLatin), 1) << made;
            EXPECT_EQ(str_TotalWorkArea(), row.budget) << made;
            const GuardedRoom segment(4 + row.budget);
            for (size_t refuse = row.requests.size(); refuse > 0; --refuse) {
                EXPECT_EQ(Publish(segment.data(), refuse), 0) << refuse;
                EXPECT_EQ(requests.size(), refuse);
            }
            EXPECT_EQ(Publish(segment.data()), 1);
            EXPECT_EQ(requests, row.requests) << made;
            EXPECT_EQ(recordCount, 1);
            str_FreeWkArea();
            EXPECT_EQ(str_TotalWorkArea(), 0U);
        }
    }
    EXPECT_EQ(logged, "") << "nothing else was taken for a source";
    home.Write("toupper/13.s", "wrong");
    EXPECT_EQ(str_ReadStrToWkArea(companion, csTable), 1);
    EXPECT_EQ(str_ReadStrToWkArea(companion, csTable), 1);
    EXPECT_EQ(str_TotalWorkArea(), 2 * 420U) << "adds to what is there";
    EXPECT_EQ(ccs_GetToUpperTable(&kLatin), 2);
    EXPECT_EQ(logged, Repeat("case table source ~/toupper/13.s could not be compiled: line 1\n"
                             "case table 13.s could not be read\n",
                             2));
    os_SetHome(home.PathOf("nowhere").c_str());
    EXPECT_EQ(str_ReadStrToWkArea(0, nullptr), 0) << "no directory";
    EXPECT_EQ(er_GetLastCode(), OS_ESC_FILE);
}

TEST_F(CaseTables, AnImageServesWhereverItIsAttached)
{
    home.Write("toupper/100.s", kRich);
    home.Write("toupper/126.s", kPlain);
    ASSERT_EQ(str_ReadStrToWkArea(0, nullptr), 1);
    const uint32_t size = 4 + str_TotalWorkArea();
    EXPECT_EQ(size, 4U + 368 + 420);
    const GuardedRoom segment(size), elsewhere(size);
    ASSERT_EQ(Publish(segment.data()), 1);
    str_FreeWkArea();
    std::memcpy(elsewhere.data(), segment.data(), size);
    std::memset(segment.data(), 0xEE, size);

    str_AttachSMem(records, recordCount, elsewhere.data());
    ASSERT_EQ(NumCaseTabs, 2);
    for (const CaseTableRecord *record = pCaseTabs; record != pCaseTabs + 2; ++record) {
        const char *file = record->CharSetName == "RICH"sv ? "toupper/100.b" : "toupper/126.b";
        EXPECT_EQ(FileOf(*record), WithoutReferences(home.Read(file)));
        EXPECT_EQ(elsewhere.data()[record->pByteMap + 'a'], 'A');
    }
    EXPECT_EQ(str_IsDataStale(), 0);

    std::remove(home.PathOf("toupper/126.b").c_str());
    std::remove(home.PathOf("sys/toupper.lk").c_str());
    traced.clear();
    EXPECT_EQ(Use(kGreek), -1) << "none is added";
    EXPECT_EQ(traced, "17+str_InitCaseTables 17-str_InitCaseTables ");
    EXPECT_EQ(NumCaseTabs, 2);
    EXPECT_EQ(home.List("sys").size() + home.List("toupper").size(), 3U) << "no file is made";
}

} // namespace
