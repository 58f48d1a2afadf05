// SPDX-License-Identifier: Apache-2.0
//
// Case tables from their sources to the registry and to the image: the language of the sources, the
// compiled files, sound and damaged, the locks, and publishing.
#include "services/services.h"
#include "tests/support/casetable.h"
#include "tests/support/escape.h"
#include "tests/support/guarded.h"

#include <platform/ccs.h>
#include <platform/lkf.h>
#include <platform/os.h>
#include <str/case.h>
#include <str/codes.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <thread>

extern int theChownError; // of the test of the services: what fchownat fails with

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr CSDescriptor kLatin = {100, 0}, kGreek = {126, 0};

class CaseTables : public CaseTableTest
{
  protected:
    CaseTables() { csTable = ccs_GetCSTable(&companion); }
    ~CaseTables() override { str_FreeCTEntry(&record); }

    int CompileFile() { return str_CompileCaseTable("~/toupper/12.s", "~/toupper/12.b", &record); }

    // What the source compiles to, in words; or the code of what is wrong with it and the line.
    std::string Compile(std::string_view source)
    {
        home.Write("toupper/12.s", source);
        logged.clear();
        if (CompileFile() == 0) {
            EXPECT_TRUE(IsClear(record));
            const std::string said = "23803 case table source ~/toupper/12.s could not be compiled";
            EXPECT_EQ(logged.substr(0, said.size()), said);
            return std::to_string(er_GetLastCode()) + logged.substr(said.size());
        }
        const std::string rules = RulesOf(record);
        EXPECT_EQ(rules, RulesOf(home.Read("toupper/12.b")));
        EXPECT_EQ(logged, "");
        str_FreeCTEntry(&record);
        EXPECT_TRUE(IsClear(record));
        return rules;
    }

    // The slot of a set's table once it has been used; -1 when there is no table.
    static ptrdiff_t Use(const CSDescriptor &cs)
    {
        const CaseTableRecord *const used = str_InitCaseTables(&cs);
        return used == nullptr ? -1 : used - pCaseTabs;
    }

    CaseTableRecord record = {};
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
    EXPECT_EQ(Use(kLatin), -1);
    EXPECT_EQ(pCaseTabs, nullptr) << "the first slot is given back";
    EXPECT_NE(InitTabsDone, 0);
    EXPECT_EQ(logged, "23803 case table source ~/toupper/100.s could not be compiled: line 0\n");
    home.Write("toupper/100.s", "T C latin\na=A \\xDF=SS");
    EXPECT_EQ(Use(kLatin), 0) << "tried again";
    CaseTableRecord *table = nullptr;
    EXPECT_EQ(str_GetTouTable(&kGreek, &table), 0);
    EXPECT_EQ(table, nullptr);
    EXPECT_EQ(NumCaseTabs, 1) << "a slot is given back";
    home.Write("toupper/126.s", "T C greek\n\\xE1=\\xC1");
    EXPECT_EQ(str_GetTouTable(&kGreek, &table), 1);
    EXPECT_EQ(table, pCaseTabs + 1) << "made";
    EXPECT_EQ(ccs_GetToUpperTable(&kGreek), 2);
    home.Write("toupper/126.s", "no longer a source");
    EXPECT_EQ(Use(kGreek), 2) << "loaded, not compiled";
    EXPECT_EQ(str_GetTouTable(&kGreek, &table), 1);
    EXPECT_EQ(table, pCaseTabs + 2) << "the last registration holds";
    NumCaseTabs = 0;
    EXPECT_EQ(str_GetTouTable(&kLatin, &table), 1);
    EXPECT_EQ(table, pCaseTabs) << "the service says which there are";
    NumCaseTabs = 3;
    ccs_PutToUpperByCSNum(1013, 1, companion, csTable);
    const CSDescriptor katakana = {1013, 0};
    EXPECT_EQ(str_GetTouTable(&katakana, &table), 0) << "without case, whatever its number";
    std::string otherVersion = home.Read("toupper/126.b");
    otherVersion[4] = 10;
    home.Write("toupper/126.b", otherVersion);
    EXPECT_EQ(Use(kGreek), -1);
    EXPECT_EQ(er_GetLastCode(), STR_ESC_NOT_A_CASE_TABLE);
    EXPECT_EQ(home.Read("toupper/126.b"), otherVersion) << "never made anew";
    ASSERT_EQ(NumCaseTabs, 3);
    EXPECT_EQ(RulesOf(pCaseTabs[0]), "LATIN 61>41 DF>00 DF:5353");
    EXPECT_EQ(RulesOf(pCaseTabs[1]), "GREEK E1>C1");
    EXPECT_EQ(RulesOf(pCaseTabs[2]), "GREEK E1>C1");
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

TEST_F(CaseTables, CompilingLocksOutEverybodyAndLoadingThoseWhoCompile)
{
    home.Write("toupper/100.s", "T C x\na=A");
    home.Write("toupper/126.s", "T C x\na=A");
    EXPECT_EQ(Use(kLatin), 0);
    lkf_SetPatience(0);
    const int shared = lkf_LockFile(LKF_SHARED, "~/sys/toupper.lk");
    EXPECT_EQ(Use(kLatin), 1);
    EXPECT_EQ(Use(kGreek), -1);
    lkf_UnLockFile(shared);
    const int exclusive = lkf_LockFile(LKF_EXCLUSIVE, "~/sys/toupper.lk");
    EXPECT_EQ(Use(kLatin), -1);
    lkf_SetPatience(-1);
    std::thread waiting([] { EXPECT_EQ(Use(kGreek), 2); });
    usleep(50000);
    home.Write("toupper/126.b", home.Read("toupper/100.b"));
    home.Write("toupper/126.s", "");
    lkf_UnLockFile(exclusive);
    waiting.join();
    EXPECT_EQ(RulesOf(pCaseTabs[2]), "X 61>41") << "made by another while this one waited";
    lkf_SetPatience(30000);
}

// ---- The source's language ------------------------------------------------------------------

// clang-format off
constexpr std::pair<std::string_view, std::string_view> kCompiled[] = { // the source, its rules
    {"T CHAR latin1 anything", "LATIN1"}, // keywords may be shortened
    {"TOUPPER CHARSET X\n", "X"},
    {"\n \t\f\v\r\n# note\n   # note\r\nT C x a=A\n", "X"},
    {"T C x\r\n  # note\r\n\r\na=A\r\nb=B", "X 61>41 62>42"},
    {"T C \xE9-\x01", "\xE9-\x01"}, // a name holds what it likes
    {"T C a23456789b123456789c123456789d123456789", "A23456789B123456789C123456789D123456789"},
    {"T C x\0y\0\na=A\0 b=B\n\0c=C\nd=D"sv, "X 61>41 64>44"}, // a NUL ends a line
    {"T C x\na=A\nb = B\nc -> C d <> D\te=>E f <=- F", "X 61>41 62>42 63>43 64>44 65>45 66>46"},
    {"T C x\ng= G h =H a >b a = #", "X 61>23 67>47 68>48"},
    {"T C x\na>=A\n>A = B", "X 3E>00 61>00 61[3E:4100] 3E[41:4200]"}, // > may begin a left side
    {"T C x\na=A> b=-=B", "X 61>00 62>42 61:413E"},
    {"T C x\na = =A", "X 61>00 61:3D41"}, // a word of its own may begin with an operator
    {"T C x\n\\x3D=\\075\\x3d \\\\=\\x00", "X 3D>00 5C>00 3D:3D3D"},
    {"T C x\na=AB a=C", "X 61>43 61:4142"}, // the last rule of one byte holds
    {"T C x\na=C a=AB a=BA", "X 61>00 61:4142 61:4241"},
    {"T C x\nbc=BC bb=B ac=A bc=XY b=B", "X 61>00 62>42 62[63:4243 62:4200 63:5859] 61[63:4100]"},
};
const struct { int code, line; std::vector<std::string_view> sources; } kRefused[] = {
    {STR_ESC_NAME_TOO_LONG, 1, {"T C a23456789b123456789c123456789d1234567890"}},
    {STR_ESC_NOT_TOUPPER, 1, {"TOUPPERS C x", "toupper C x", "\xEF\xBB\xBFTOUPPER C x"}},
    {STR_ESC_NOT_CHARSET, 1, {"TOUPPER charset x", "T CHARSETS x"}},
    {STR_ESC_WORD_MISSING, 1, {"T", "T\nC x"}},
    {STR_ESC_WORD_MISSING, 2, {"\nTOUPPER C\nx", "T C x\na>A\n=b", "T C x\na\n=A", "T C x\na="}},
    {STR_ESC_NO_HEADER, 0, {""}},
    {STR_ESC_NO_HEADER, 1, {"\0T C x"sv}},
    {STR_ESC_NO_HEADER, 4, {"# note\n\n \n#"}},
    {STR_ESC_NO_OPERATOR, 2, {"T C x\na=A # note", "T C x\na b"}},
    {STR_ESC_NO_LEFT_SIDE, 2, {"T C x\n=A", "T C x\n<A"}},
    {STR_ESC_NO_LEFT_SIDE, 4, {"T C x\n\n\n -A"}},
    {STR_ESC_LEFT_TOO_LONG, 2, {"T C x\nabc=A", "T C x\nabcdefghijklmnopqrst=A"}},
    {STR_ESC_RIGHT_TOO_LONG, 2, {"T C x\na=ABC", "T C x\na=A=B", "T C x\na=ABCDEFGHIJKLMNOPQRST"}},
    {ENC_ESC_MALFORMED, 2, {"T C x\na=\\x4", "T C x\na=A\\", "T C x\n\xDF=SS"}},
    {ENC_ESC_MALFORMED, 3, {"T C x\n\n\\400=A"}},
};
// clang-format on

std::string Repeat(std::string_view text, size_t times)
{
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

std::string Refused(int code, int line)
{
    return std::to_string(code) + ": line " + std::to_string(line) + "\n";
}

TEST_F(CaseTables, SourcesAreReadByTheirGrammar)
{
    for (const auto &[source, rules] : kCompiled)
        EXPECT_EQ(Compile(source), rules) << source;
    for (const auto &[code, line, sources] : kRefused)
        for (const std::string_view source : sources)
            EXPECT_EQ(Compile(source), Refused(code, line)) << source;
    for (const char *unreadable : {"~/toupper/13.s", "~/toupper"}) {
        EXPECT_EQ(str_CompileCaseTable(unreadable, "~/toupper/13.b", &record), 0);
        EXPECT_EQ(er_GetLastCode(), OS_ESC_FILE);
    }
}

TEST_F(CaseTables, LongLinesAreReadInPiecesAndListsEndAtTheGreatestIndex)
{
    constexpr size_t kMebibyte = 1 << 20;
    const struct {
        std::string line;
        int code, codeLine; // with a wrong line after it
    } rows[] = {
        {"a=A" + Repeat(" ", 76), STR_ESC_NO_LEFT_SIDE, 3},
        {"a=A" + Repeat(" ", 77), STR_ESC_NO_LEFT_SIDE, 4},
        {Repeat(" ", 78) + "a=A", STR_ESC_WORD_MISSING, 2},
        {Repeat("#", 80) + "a=A", STR_ESC_NO_LEFT_SIDE, 4},
        {Repeat("#", 80) + "a:A", STR_ESC_WORD_MISSING, 3},
        {Repeat("\0"sv, kMebibyte), STR_ESC_NO_LEFT_SIDE, 13110},
        {Repeat("a=A ", kMebibyte / 4), STR_ESC_NO_LEFT_SIDE, 13110},
        {Repeat("x", kMebibyte), STR_ESC_LEFT_TOO_LONG, 2},
        {Repeat("a=AB\n", 40000), OS_ESC_MEMORY, 32769},
        {Repeat("ab=A\n", 40000), OS_ESC_MEMORY, 32769},
    };
    for (const auto &[line, code, codeLine] : rows)
        EXPECT_EQ(Compile("T C x\n" + line + "\n="), Refused(code, codeLine)) << line.substr(0, 90);
    EXPECT_EQ(Compile("T C " + Repeat("n", kMebibyte)), Refused(STR_ESC_NAME_TOO_LONG, 1));
    EXPECT_EQ(Compile("T C x\n" + Repeat("a=AB\n", 32767)), "X 61>00" + Repeat(" 61:4142", 32767));
}

TEST(CaseTableArrays, GrowByTheirStepToTheGreatestIndex)
{
    static char *block;
    static int32_t capacity, used;
    static int16_t index;
    constexpr uint32_t kTooLarge = sizeof(void *) == 4 ? 65540 : UINT32_MAX; // 32767 of them
    for (const int32_t step : {1, 20, 32767}) {
        capacity = 0;
        used = 4711; // means nothing with no capacity
        for (int32_t i = 0; i < 32767; ++i) {
            block = static_cast<char *>(str_AllocEntry(block, &capacity, &used, 3, step, &index));
            ASSERT_EQ(index, i);
            ASSERT_EQ(used, i + 1);
            ASSERT_EQ(capacity, (i / step + 1) * step);
            std::memset(block + 3 * i, i, 3);
            if (used < capacity || used % 99 != 0)
                continue;
            const auto tooMuch = [] {
                str_AllocEntry(block, &capacity, &used, kTooLarge, 32767, &index);
            };
            ASSERT_EQ(Escaped(tooMuch), OS_ESC_MEMORY);
            ASSERT_TRUE(used == i + 1 && capacity == used) << "as they were";
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

// ---- The compiled file ----------------------------------------------------------------------

constexpr char kRich[] = "T C rich\na=A \\xDF=SS \\xC2\\x61=\\xC2\\x41 \\xC2\\x62=B";
constexpr char kRichRules[] = "RICH 61>41 C2>00 DF>00 DF:5353 C2[61:C241 62:4200]";

TEST_F(CaseTables, TheCompiledFileIsLaidOutByteForByte)
{
    std::string map;
    for (int byte = 0; byte < 256; ++byte)
        map += static_cast<char>(byte);
    EXPECT_EQ(Compile("T C x"), "X");
    EXPECT_EQ(home.Read("toupper/12.b").substr(132),
              "\0\0\0\0\xA4\0\0\0"s + Repeat("\0"sv, 24) + map);

    map['a'] = 'A';
    map[0xDF] = map[0xC2] = 0;
    const std::string one = "\1\0\0\0"s, two = "\2\0\0\0"s, twenty = "\x14\0\0\0"s;
    EXPECT_EQ(Compile(kRich), kRichRules);
    EXPECT_EQ(home.Read("toupper/12.b"),
              "\x4E\x61\xBC\0\x0B\0\0\0"s + Repeat("\0"sv, 44) + "RICH" + Repeat("\0"sv, 80) +
                  "\xA4\0\0\0\xA4\1\0\0"s + twenty + one + "\xA7\1\0\0"s + twenty + one + map +
                  "\xDFSS" + "\xC2\0\0\0\xB7\1\0\0"s + twenty + two + "a\xC2\x41" + "bB\0"s)
        << "an array is named by its offset";
}

TEST_F(CaseTables, TheCompiledFileGetsItsNameWholeAndIsTheAccounts)
{
    const mode_t mask = umask(0137);
    home.Write("toupper/12.b", "an earlier one");
    home.Write("toupper/12.old", "a colleague's");
    ASSERT_EQ(symlink("12.old", home.PathOf("toupper/casetemp").c_str()), 0);
    EXPECT_EQ(Compile("T C x\na=A"), "X 61>41");
    EXPECT_EQ(home.List("toupper"), (std::set{"12.b"s, "12.old"s, "12.s"s}));
    EXPECT_EQ(home.Read("toupper/12.old"), "a colleague's");
    home.Remove("toupper/12.b");
    EXPECT_EQ(Compile("T C x\na=A"), "X 61>41");
    EXPECT_EQ(umask(mask), 0137U) << "the caller's mask";
    struct stat status = {};
    ASSERT_EQ(stat(home.PathOf("toupper/12.b").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0664U) << "whatever the mask";
    home.Remove("toupper/12.b");
    const auto compilesInVain = [&] {
        EXPECT_EQ(CompileFile(), 1);
        EXPECT_EQ(RulesOf(record), "X 61>41") << "good for this process";
        str_FreeCTEntry(&record);
        EXPECT_EQ(umask(mask), mask);
        return !home.Remove("toupper/12.b");
    };
    theChownError = EIO;
    EXPECT_TRUE(compilesInVain());
    theChownError = 0;
    EXPECT_EQ(er_GetLastCode(), STR_ESC_NOT_GIVEN);
    EXPECT_TRUE(home.Remove("toupper/casetemp"));
    ASSERT_EQ(mkdir(home.PathOf("toupper/12.b").c_str(), 0777), 0);
    compilesInVain();
    EXPECT_TRUE(home.Remove("toupper/casetemp")) << "what cannot be renamed";
    EXPECT_EQ(logged, "");
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give the home to another group";
    ASSERT_EQ(chown(home.path().c_str(), 0, getegid() + 1), 0);
    EXPECT_TRUE(compilesInVain());
    EXPECT_FALSE(home.Remove("toupper/casetemp")) << "others than the account's group write none";
}

// The code with which a file is refused; 0 when it is loaded, to exactly what it says.
int Refusal(const TempHome &home, const std::string &file)
{
    home.Remove("toupper/12.b"); // to write a file anew may wait for the disk
    home.Write("toupper/12.b", file);
    Sinks::logged.clear();
    static CaseTableRecord loaded;
    const bool isLoaded = str_LoadCaseTable("~/toupper/12.b", &loaded) == 1;
    if (isLoaded) {
        EXPECT_EQ(RulesOf(loaded), RulesOf(file));
        EXPECT_EQ(loaded.pExpansions != 0, loaded.NumExpansions != 0);
        EXPECT_EQ(loaded.pLeads != 0, loaded.NumLeads != 0);
        str_FreeCTEntry(&loaded);
    }
    EXPECT_TRUE(IsClear(loaded));
    EXPECT_EQ(Sinks::logged, isLoaded ? "" : "0 ~/toupper/12.b\n");
    EXPECT_EQ(home.Read("toupper/12.b"), file);
    return isLoaded ? 0 : er_GetLastCode();
}

TEST_F(CaseTables, DamagedFilesAreRefusedOrLoadedAsFarAsTheyGo)
{
    constexpr int kShort = STR_ESC_ENDS_TOO_EARLY, kOther = STR_ESC_NOT_A_CASE_TABLE;
    constexpr size_t kExpansions = 52 + 96, kLeads = 420 + 3;
    const std::set<size_t> counts = {kExpansions, 52 + 108, kLeads + 12, kLeads + 28};
    Compile(kRich + " \\xC8\\x61=A"s);
    const std::string good = home.Read("toupper/12.b");
    ASSERT_EQ(good.size(), kLeads + 2 * 16 + 3 * 3);
    EXPECT_EQ(Refusal(home, good), 0);
    EXPECT_EQ(Refusal(home, good + "more"), 0) << "nobody looks there";
    for (size_t size = 0; size < good.size(); ++size)
        ASSERT_EQ(Refusal(home, good.substr(0, size)), kShort) << size;
    for (size_t bit = 0; bit < 8 * good.size(); ++bit) {
        std::string file = good;
        file[bit / 8] = static_cast<char>(file[bit / 8] ^ 1 << bit % 8);
        const int code = Refusal(home, file);
        const auto count = counts.upper_bound(bit / 8);
        const bool isCount = count != counts.begin() && bit / 8 < *std::prev(count) + 4;
        ASSERT_TRUE(isCount ? code == 0 || code == kShort || code == kOther
                            : code == (bit < 96 ? kOther : 0))
            << bit << " " << code;
        ASSERT_FALSE(HasFailure()) << bit;
    }
    for (const size_t count : counts)
        for (const auto &[word, code] : {std::pair{32767U, kShort},
                                         {32768U, kOther},
                                         {0x80000000U, count == kExpansions ? kOther : 0}}) {
            std::string file = good;
            file.replace(count, 4, reinterpret_cast<const char *>(&word), 4);
            EXPECT_EQ(Refusal(home, file), code) << count << " " << word;
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

TEST_F(CaseTables, AnImageOfEverySetThatHasASourceServesWhereverItIsAttached)
{
    for (const char *other : {"0.s", "13.s.bak", "casetemp", "s", ".s", "15.S", "16", "17.b"})
        home.Write("toupper/"s + other, "T C x\na=A");
    EXPECT_EQ(str_ReadStrToWkArea(companion, csTable), 1);
    EXPECT_EQ(str_TotalWorkArea(), 0U);
    EXPECT_EQ(Publish(nullptr), 1);
    EXPECT_TRUE(requests == std::vector<uint32_t>{0} && recordCount == 0);
    home.Write("toupper/100.s", kRich);
    for (const char *made : {"compiled", "loaded"}) {
        ccs_PutToUpperByCSNum(100, 0, companion, csTable);
        EXPECT_EQ(str_ReadStrToWkArea(companion, csTable), 1) << made;
        EXPECT_EQ(ccs_GetToUpperTable(&kLatin), 1) << made;
        EXPECT_EQ(str_TotalWorkArea(), 420U) << made;
        const GuardedRoom segment(4 + 420);
        for (size_t refuse = 6; refuse > 0; --refuse) {
            EXPECT_EQ(Publish(segment.data(), refuse), refuse == 6 ? 1 : 0) << refuse;
            EXPECT_EQ(requests.size(), std::min<size_t>(refuse, 5));
        }
        str_FreeWkArea();
        EXPECT_EQ(str_TotalWorkArea(), 0U);
    }
    EXPECT_EQ(logged, "") << "nothing else was taken for a source";
    home.Write("toupper/13.s", "wrong");
    home.Write("toupper/126.s", "T C x\na=A");
    for (const uint32_t size : {368U + 420U, 2 * (368U + 420U)}) {
        EXPECT_EQ(str_ReadStrToWkArea(companion, csTable), 1);
        EXPECT_EQ(str_TotalWorkArea(), size) << "adds to what is there";
    }
    EXPECT_EQ(logged,
              Repeat("23803 case table source ~/toupper/13.s could not be compiled: line 1\n"
                     "200 case table 13.s could not be read\n",
                     2));
    const uint32_t size = 4 + str_TotalWorkArea();
    const GuardedRoom segment(size), elsewhere(size);
    ASSERT_EQ(Publish(segment.data()), 1);
    str_FreeWkArea();
    std::memcpy(elsewhere.data(), segment.data(), size);
    std::memset(segment.data(), 0xEE, size);

    str_AttachSMem(records, recordCount, elsewhere.data());
    ASSERT_EQ(NumCaseTabs, 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(RulesOf(pCaseTabs[i]), pCaseTabs[i].NumLeads == 1 ? kRichRules : "X 61>41");
    EXPECT_EQ(str_IsDataStale(), 0);
    home.Remove("toupper/126.b");
    EXPECT_EQ(Use(kGreek), -1) << "none is added";
    EXPECT_EQ(NumCaseTabs, 4);
    EXPECT_FALSE(home.Remove("toupper/126.b")) << "nor is a file made";
    os_SetHome(home.PathOf("nowhere").c_str());
    EXPECT_EQ(str_ReadStrToWkArea(0, nullptr), 0) << "no directory";
    EXPECT_EQ(er_GetLastCode(), OS_ESC_FILE);
}

} // namespace
