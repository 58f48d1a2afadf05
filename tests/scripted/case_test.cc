// SPDX-License-Identifier: Apache-2.0
//
// Upper case over services that answer by script and fail where a test wants it: the buffer, the
// escapes, and which table serves which segment.
#include "tests/scripted/ccs.h"
#include "tests/scripted/files.h"
#include "tests/support/casetable.h"
#include "tests/support/escape.h"
#include "tests/support/guarded.h"

#include <platform/os.h>
#include <str/case.h>

namespace
{

using scripted::files;
using scripted::script;

constexpr CSDescriptor kPlain = {9, 0}, kLatin = {100, 0}, kSwitching = {126, 1};

class ScriptedCase : public CaseTableTest
{
  protected:
    // Sets 100 and 126 with a table of their own each, 13 whose table cannot be had.
    ScriptedCase()
    {
        files = {};
        script = {};
        script.flags = {{100, CS_FLAG_CASE}, {126, CS_FLAG_CASE}, {13, CS_FLAG_CASE}};
        home.Write("toupper/100.s", "T C x\na=A s=SS");
        home.Write("toupper/126.s", "T C x\na=2 s=22");
        for (const CSDescriptor &cs : {kLatin, kSwitching}) {
            str_InitCaseTables(&cs);
            script.upperTables[cs.csNum] = static_cast<uint16_t>(NumCaseTabs);
        }
        traced.clear();
    }
    ~ScriptedCase() override
    {
        files = {};
        script = {};
    }
};

// The upper case, "null" where there is none; what it does not tell is -1.
std::string Upper(const std::string &text, const CSDescriptor &cs)
{
    int length = -1;
    const Guarded input(text);
    const char *const upper =
        str_ToUpper(input.c_str(), static_cast<int>(text.size()), &length, &cs);
    EXPECT_EQ(upper == nullptr, length == -1);
    return upper == nullptr ? "null" : std::string(upper, static_cast<size_t>(length));
}

// ---- The buffer ----------------------------------------------------------------------------

unsigned int Capacity()
{
    unsigned int used = 0, capacity = 0;
    const unsigned char none = 'x';
    unsigned char *const buffer = str_UpShift(&none, 1, pCaseTabs, nullptr, &used, &capacity);
    EXPECT_EQ(scripted::held.blocks.at(buffer), capacity);
    return capacity;
}

// The capacity after a text that asks for so many bytes, at 5 for 4 of its own.
unsigned int CapacityFor(size_t need)
{
    Upper(std::string(need * 4 / 5, 'x'), kPlain);
    return Capacity();
}

// The first test of the process that upper-cases by tables.
TEST_F(ScriptedCase, TheBufferGrowsByMoreThanIsNeeded)
{
    files.failing = "os_malloc";
    files.escapeClass = 5;
    EXPECT_EQ(Upper("abc", kPlain), "null") << "no buffer";
    EXPECT_EQ(CapacityFor(10), 129U);
    EXPECT_EXIT(_exit(CapacityFor(300) == 301U ? 0 : 1), testing::ExitedWithCode(0), "");
    EXPECT_EQ(CapacityFor(200), 258U);
    EXPECT_EQ(CapacityFor(255), 258U);
    // The last expansion and the NUL just fit, and then no longer do.
    const std::string fitting = std::string(127, 's') + "as";
    EXPECT_EQ(Upper(fitting, kLatin), std::string(254, 'S') + "ASS");
    EXPECT_EQ(Capacity(), 258U);
    EXPECT_EQ(Upper("a" + fitting, kLatin), "A" + std::string(254, 'S') + "ASS");
    EXPECT_EQ(Capacity(), 258U + 128 + 1);
    // So do bytes that stay as they are, behind others that grow.
    script.segments = {{100, 150}, {CS_SEG_RAW, 100}};
    for (const size_t raw : {86U, 87U}) {
        EXPECT_EQ(Upper(std::string(150 + raw, 's'), kSwitching),
                  std::string(300, 'S') + std::string(raw, 's'));
        EXPECT_EQ(Capacity(), raw == 86 ? 387U : 516U);
    }
}

// ---- Escapes -------------------------------------------------------------------------------

TEST_F(ScriptedCase, AnEscapeIsLoggedAndThoseOfClass5EndHere)
{
    static int length;
    static const char *upper;
    er_SubSystemLoggingLevel = 10;
    for (const int escapeClass : {3, 5, 4}) {
        const unsigned int capacity = Capacity();
        static std::string text;
        text.assign(capacity, 'a');
        logged.clear();
        traced.clear();
        files.failing = "os_realloc";
        files.escapeClass = escapeClass;
        files.callsLeft = 0;
        length = 4711;
        upper = "unset";
        const int code = Escaped([] { upper = str_ToUpper(text.c_str(), -1, &length, &kLatin); });
        EXPECT_EQ(logged, "an operation on a text was given up\n");
        EXPECT_EQ(length, 4711);
        EXPECT_EQ(code, escapeClass == 5 ? 0 : OS_ESC_FILE) << escapeClass;
        EXPECT_STREQ(upper, escapeClass == 5 ? nullptr : "unset");
        EXPECT_EQ(traced, escapeClass == 5 ? "19+str_ToUpper 19-str_ToUpper " : "19+str_ToUpper ");
        EXPECT_EQ(Capacity(), capacity) << "the old buffer is still there";
        files.escapeClass = 0;
        EXPECT_EQ(Upper(text, kLatin), std::string(capacity, 'A'));
    }
}

// ---- Tables --------------------------------------------------------------------------------

TEST_F(ScriptedCase, EachSegmentGoesByItsTable)
{
    constexpr uint32_t kUniform = CS_FLAG_UNIFORM;
    const struct {
        uint16_t set;
        uint32_t flags;
        std::string upper;
    } rows[] = {
        // clang-format off
        {126, CS_FLAG_CASE, "2AaaaaSS"}, {126, CS_FLAG_CASE | kUniform, "22a22a22"},
        {126, kUniform, "aAaaaaSS"}, {13, CS_FLAG_CASE | kUniform, "2AaaaaSS"}, {9, 0, "2AaaaaSS"},
        // clang-format on
    };
    script.segments = {{126, 1},        {100, 1},         {CS_SEG_IGNORE, 1}, {13, 1}, {9, 1},
                       {CS_SEG_RAW, 1}, {CS_SEG_NONE, 0}, {100, 1},           {126, 9}};
    for (const auto &row : rows) {
        script.flags[126] = CS_FLAG_CASE;
        script.flags[row.set] = row.flags;
        EXPECT_EQ(Upper("aaaaaas", {row.set, 1}), row.upper) << row.set << " " << row.flags;
    }
    EXPECT_EQ(Upper("as", {126, 0}), "222") << "all of it is in its set";
    EXPECT_EQ(Upper("as", {9, 0}), "as");
}

TEST_F(ScriptedCase, ATableIsFoundByItsNumberOrMade)
{
    CaseTableRecord *table = nullptr;
    const CaseTableRecord *const none = table;
    EXPECT_EQ(NumCaseTabs, 2);
    EXPECT_EQ(str_GetTouTable(&kSwitching, &table), 1);
    EXPECT_EQ(table, pCaseTabs + 1);
    NumCaseTabs = 1;
    EXPECT_EQ(str_GetTouTable(&kSwitching, &table), 1) << "the service says which there are";
    NumCaseTabs = 2;
    EXPECT_EQ(traced, "");
    script.upperTables[100] = 0;
    EXPECT_EQ(str_GetTouTable(&kLatin, &table), 1);
    EXPECT_EQ(table, pCaseTabs + 2);
    EXPECT_EQ(traced, "17+str_InitCaseTables 17-str_InitCaseTables ");
    table = nullptr;
    constexpr CSDescriptor tableless = {13, 0};
    EXPECT_EQ(str_GetTouTable(&tableless, &table), 0);
    script.flags[126] = CS_FLAG_UNIFORM;
    EXPECT_EQ(str_GetTouTable(&kSwitching, &table), 0) << "without case, whatever its number";
    EXPECT_EQ(table, none);
}

} // namespace
