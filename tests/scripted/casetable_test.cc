// SPDX-License-Identifier: Apache-2.0
//
// Case tables over services that fail: files damaged in every way, and an account of what is held.
#include "services/services.h"
#include "tests/scripted/files.h"
#include "tests/support/casetable.h"
#include "tests/support/escape.h"

#include <platform/os.h>

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

namespace
{

using namespace std::string_literals;
using scripted::files;
using scripted::held;

// clang-format off
constexpr char kRules[] = "T C latin1\na=A b=BB \xDF=SS\n\xC2" "a=\xC2" "A \xC2" "b=B\n\xC8" "a=A";
// clang-format on
constexpr char kMeaning[] =
    "LATIN1 61>41 62>00 C2>00 C8>00 DF>00 62:4242 DF:5353 C2[61:C241 62:4200] C8[61:4100]";

CaseTableRecord theRecord; // what is compiled or loaded into

int Compile() { return str_CompileCaseTable("~/toupper/100.s", "~/toupper/100.b", &theRecord); }
int Load() { return str_LoadCaseTable("~/toupper/100.b", &theRecord); }
int ReadAll() { return str_ReadStrToWkArea(0, nullptr); }
int FirstUse()
{
    const CSDescriptor cs = {100, 0};
    return str_InitCaseTables(&cs) == nullptr ? 0 : 1;
}

class ScriptedCaseTables : public CaseTableTest
{
  protected:
    // Two sources and their compiled files; what stays in memory is the table of references.
    ScriptedCaseTables() : mask(umask(0027))
    {
        files = {};
        home.Write("toupper/100.s", kRules);
        home.Write("toupper/126.s", kRules);
        EXPECT_EQ(ReadAll(), 1);
        ReleaseTables();
        files = {};
        blocks = held.blocks.size();
    }
    ~ScriptedCaseTables() override
    {
        files = {};
        str_FreeCTEntry(&theRecord);
        ReleaseTables();
        ExpectNothingHeld();
        umask(mask);
    }

    static bool IsCompiled() { return os_fexists("~/toupper/100.b") != 0; }
    std::string Compiled() const { return home.Read("toupper/100.b"); }
    void RemoveCompiled() const { std::remove(home.PathOf("toupper/100.b").c_str()); }

    void ExpectNothingHeld() const
    {
        EXPECT_EQ(held.blocks.size(), blocks);
        EXPECT_TRUE(held.open.empty());
        const auto locks = std::count_if(files.locks.begin(), files.locks.end(), isdigit);
        EXPECT_EQ(locks, std::count(files.locks.begin(), files.locks.end(), '-')) << files.locks;
        EXPECT_EQ(umask(0027), 0027U);
    }

    // A source that could not be closed stays open.
    static void CloseSource()
    {
        ASSERT_EQ(held.open.size(), 1U);
        std::fclose(static_cast<FILE *>(*held.open.begin()));
        held.open.clear();
    }

    const mode_t mask;
    size_t blocks;
};

// ---- Calls that fail ------------------------------------------------------------------------

TEST_F(ScriptedCaseTables, AWrongSourceThatCannotBeClosedIsAnEscape)
{
    home.Write("toupper/100.s", "T C x\na=A b=BB =");
    files.failing = "os_fclose";
    files.escapeClass = 3;
    EXPECT_EQ(Escaped([] { Compile(); }), OS_ESC_FILE);
    EXPECT_TRUE(IsClear(theRecord));
    EXPECT_EQ(held.blocks.size(), blocks);
    CloseSource();
}

TEST_F(ScriptedCaseTables, ReferencesThatCannotGrowLeaveTheOthersAlone)
{
    if (sizeof(void *) == sizeof(CaseTableRef))
        GTEST_SKIP() << "a reference is an address";
    std::vector<CaseTableRecord> records;
    home.Write("toupper/100.s", "T C x\na=A");
    files.failing = "os_realloc";
    files.escapeClass = 3;
    for (int round = 0; round < 300; ++round) {
        ASSERT_EQ(Compile(), 1) << "those given back are used again";
        str_FreeCTEntry(&theRecord);
    }
    while (Compile() == 1) {
        records.push_back(theRecord);
        theRecord = {};
        ASSERT_LT(records.size(), 1000U);
    }
    EXPECT_TRUE(IsClear(theRecord));
    EXPECT_EQ(held.blocks.size(), blocks + records.size());
    EXPECT_EQ(Compile(), 1) << "as soon as there is memory";
    for (CaseTableRecord &record : records) {
        EXPECT_EQ(RulesOf(FileOf(record)), "X 61>41");
        str_FreeCTEntry(&record);
    }
}

TEST_F(ScriptedCaseTables, AnArrayThatCannotGrowStaysAsItWas)
{
    static void *block;
    static int32_t capacity, used;
    static int16_t index;
    const auto addOne = [] { block = str_AllocEntry(block, &capacity, &used, 3, 2, &index); };
    files.escapeClass = 3;
    for (const int32_t before : {0, 2}) {
        files.callsLeft = 0;
        EXPECT_EQ(Escaped(addOne), OS_ESC_FILE);
        EXPECT_EQ(capacity, before);
        EXPECT_EQ(used, before);
        EXPECT_EQ(held.blocks.size(), blocks + (before == 0 ? 0 : 1));
        addOne();
        addOne();
        EXPECT_EQ(used, before + 2);
    }
    os_free(block);
    std::string rules = "T C x\n";
    for (int rule = 0; rule < 21; ++rule)
        rules += "b=BB\n";
    home.Write("toupper/100.s", rules);
    files.failing = "os_realloc";
    files.callsLeft = 0;
    EXPECT_EQ(Compile(), 0);
    EXPECT_EQ(logged, "case table source ~/toupper/100.s could not be compiled: line 22\n");
}

// ---- The account, the locks, the notation ---------------------------------------------------

TEST_F(ScriptedCaseTables, OnlyTheAccountsGroupWritesTheFile)
{
    home.Write("toupper/100.b", "as it was");
    ++files.group;
    EXPECT_EQ(Compile(), 1);
    EXPECT_EQ(RulesOf(FileOf(theRecord)), kMeaning);
    EXPECT_EQ(files.opened, 0);
    str_FreeCTEntry(&theRecord);
    files = {};
    files.chownResult = 1;
    EXPECT_EQ(Compile(), 1) << "nor is a file written that cannot be given to it";
    EXPECT_EQ(er_GetLastCode(), 23813);
    EXPECT_EQ(Compiled(), "as it was");
    EXPECT_EQ(logged, "");
}

TEST_F(ScriptedCaseTables, CompilingLocksOutEverybodyAndLoadingThoseWhoCompile)
{
    EXPECT_EQ(FirstUse(), 1);
    EXPECT_EQ(files.locks, "1-");
    const std::string compiled = Compiled();
    RemoveCompiled();
    EXPECT_EQ(FirstUse(), 1);
    EXPECT_EQ(files.locks, "1-2-");
    RemoveCompiled();
    files = {};
    files.granted = [&] { home.Write("toupper/100.b", compiled); }; // somebody was faster
    EXPECT_EQ(FirstUse(), 1);
    EXPECT_EQ(files.locks, "2-1-");
    EXPECT_EQ(files.opened, 0) << "loaded";
}

TEST_F(ScriptedCaseTables, SidesHaveOneOrTwoBytesInNineteenCharacters)
{
    const std::string longest(19, 'x'), tooLong(20, 'x');
    const std::pair<std::string, int> rows[] = {
        {"a=0", 23809}, {"a=" + longest, 0}, {"a=" + tooLong, 23811},
        {"0=A", 23808}, {longest + "=A", 0}, {tooLong + "=A", 23810},
    };
    files.decode = [](const char *text) { return *text == '0' ? ""s : std::string(text, 1); };
    for (const auto &[rule, code] : rows) {
        home.Write("toupper/100.s", "T C x\n" + rule);
        EXPECT_EQ(Compile(), code == 0 ? 1 : 0) << rule;
        EXPECT_TRUE(code == 0 || er_GetLastCode() == code) << rule;
        str_FreeCTEntry(&theRecord);
    }
}

// ---- Damaged files --------------------------------------------------------------------------

class DamagedFiles : public ScriptedCaseTables
{
  protected:
    // The code with which the file is refused; 0 when it is loaded, to exactly what it says.
    int Refusal(const std::string &file)
    {
        RemoveCompiled(); // to write a file anew may wait for the disk
        home.Write("toupper/100.b", file);
        logged.clear();
        const bool loaded = Load() == 1;
        if (loaded) {
            const std::string said = FileOf(theRecord).substr(sizeof(CaseTableHeader));
            EXPECT_EQ(said, WithoutReferences(file).substr(sizeof(CaseTableHeader), said.size()));
            EXPECT_EQ(theRecord.pExpansions != 0, theRecord.NumExpansions != 0);
            EXPECT_EQ(theRecord.pLeads != 0, theRecord.NumLeads != 0);
            str_FreeCTEntry(&theRecord);
        }
        EXPECT_TRUE(IsClear(theRecord));
        EXPECT_EQ(logged, loaded ? "" : "~/toupper/100.b\n");
        EXPECT_EQ(Compiled(), file);
        ExpectNothingHeld();
        return loaded ? 0 : er_GetLastCode();
    }
};

std::string With(std::string file, size_t offset, uint32_t word)
{
    return file.replace(offset, sizeof word, reinterpret_cast<const char *>(&word), sizeof word);
}

constexpr size_t kNumExpansions = 52 + 96, kNumLeads = 52 + 108, kLeads = 420 + 2 * 3;

TEST_F(DamagedFiles, AreRefusedOrLoadedAsFarAsTheyGo)
{
    const std::string good = Compiled();
    ASSERT_EQ(good.size(), kLeads + 2 * 16 + 3 * 3);
    EXPECT_EQ(Refusal(good), 0);
    EXPECT_EQ(Refusal(good + "more"), 0) << "nobody looks there";
    for (size_t size = 0; size < good.size(); ++size)
        ASSERT_EQ(Refusal(good.substr(0, size)), 23801) << size;
    const std::set<int> codes = {0, 23801, 23802};
    for (size_t bit = 0; bit < 8 * good.size(); ++bit) {
        std::string file = good;
        file[bit / 8] = static_cast<char>(file[bit / 8] ^ 1 << bit % 8);
        const int code = Refusal(file);
        ASSERT_TRUE(bit < 96 ? code == 23802 : codes.count(code) == 1) << bit << " " << code;
        ASSERT_FALSE(HasFailure()) << bit;
    }
    for (size_t field = 0; field < kLeads + 2 * 16;
         field += field == kNumLeads ? kLeads - field : 4)
        for (const uint32_t word : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
            const int code = Refusal(With(good, field, word));
            ASSERT_EQ(codes.count(code), 1U) << field << " " << word << " " << code;
            ASSERT_FALSE(HasFailure()) << field << " " << word;
        }
}

TEST_F(DamagedFiles, AreRefusedForWhatIsWrong)
{
    const struct {
        size_t offset;
        uint32_t word;
        int code;
    } rows[] = {
        // clang-format off
        {0, 0x4E61BC00, 23802}, {4, 10, 23802}, {4, 12, 23802}, {8, 1, 23802}, {12, 4711, 0},
        {kNumExpansions, 32767, 23801}, {kNumExpansions, 32768, 23802},
        {kNumExpansions - 4, 4711, 0}, {kNumLeads, 0xFFFFFFFF, 0}, {kNumLeads, 0, 0},
        {kNumLeads, 32767, 23801}, {kNumLeads, 32768, 23802}, {kLeads + 12, 0x80000000, 0},
        {kLeads + 12, 32767, 23801}, {kLeads + 12, 32768, 23802},
        {kLeads + 28, 2, 23801}, {kLeads + 28, 0, 0},
        // clang-format on
    };
    const std::string good = Compiled();
    for (const auto &row : rows)
        EXPECT_EQ(Refusal(With(good, row.offset, row.word)), row.code)
            << row.offset << " " << row.word;
}

} // namespace
