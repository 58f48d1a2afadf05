// SPDX-License-Identifier: Apache-2.0
//
// Case tables over services of a host: references that cannot grow, a notation that is shorter than
// the default one, and sets whose own table serves all.
#include "tests/passing/services.h"
#include "tests/support/casetable.h"
#include "tests/support/test.h"

#include <set>

namespace
{

using passing::failure;
using passing::held;

class PassingTables : public CaseTableTest
{
  protected:
    ~PassingTables() override { passing::moreFlags = 0; }

    // 0, or the code of what is wrong.
    int Compile(const std::string &source)
    {
        home.Write("toupper/100.s", "T C x\n" + source);
        CaseTableRecord record = {};
        if (str_CompileCaseTable("~/toupper/100.s", "~/toupper/100.b", &record) == 0)
            return er_GetLastCode();
        str_FreeCTEntry(&record);
        return 0;
    }
};

TEST_F(PassingTables, ReferencesThatCannotGrowLeaveTheOthersAlone)
{
    Compile("a=A");
    const size_t blocks = held.blocks.size();
    constexpr int kMany = 1000;
    for (int round = 0; round < 9; ++round) {
        static std::vector<CaseTableRecord> records(200);
        std::set<int> callsLeft;
        for (size_t i = 0; i < records.size(); ++i) {
            int calls = round == 0 ? 0 : kMany;
            for (failure = {calls, 3, ""}; str_LoadCaseTable("~/toupper/100.b", &records[i]) == 0;
                 failure = {++calls, 3, ""})
                EXPECT_TRUE(IsClear(records[i]) && held.blocks.size() <= blocks + i + 1);
            callsLeft.insert(failure.callsLeft);
        }
        failure = {};
        EXPECT_EQ(callsLeft.size(), 1U) << "references given back are used again";
        for (CaseTableRecord &record : records) {
            unsigned char upper[2];
            int length = 0;
            const unsigned char a = 'a';
            EXPECT_TRUE(str_UpShiftChar(&a, 1, &record, upper, &length) == 1 && upper[0] == 'A');
            str_FreeCTEntry(&record);
        }
        EXPECT_LE(held.blocks.size(), blocks + 1);
    }
}

TEST_F(PassingTables, SidesHaveAtMostNineteenCharactersWhateverTheirNotation)
{
    passing::nonsense = 1; // bytes of a side
    const std::string longest(19, 'x');
    EXPECT_EQ(Compile(longest + "=" + longest), 0);
    EXPECT_EQ(Compile(longest + "x=x"), STR_ESC_LEFT_TOO_LONG);
    EXPECT_EQ(Compile("x=x" + longest), STR_ESC_RIGHT_TOO_LONG);
    passing::nonsense.reset();
}

TEST_F(PassingTables, AUniformSetsOwnTableServesAllSegments)
{
    int length;
    const CSDescriptor t61 = {103, 1}, mail = {1001, 1}, latin = {100, 0};
    for (const char *set : {"6", "103", "100"})
        home.Write(std::string("toupper/") + set + ".s", std::string("T C x\na=") + set[0]);
    for (const auto &[flags, upper] :
         {std::pair{0U, "\x1B(B6\x1B$Baa"}, {unsigned{CS_FLAG_UNIFORM}, "\x1B(B1\x1B$B11"}}) {
        passing::moreFlags = flags;
        EXPECT_EQ(str_ToUpper("\x1B(Ba\x1B$Baa", -1, &length, &t61), upper + std::string());
        EXPECT_STREQ(str_ToUpper("a", -1, &length, &mail), "6") << "it has none of its own";
        EXPECT_STREQ(str_ToUpper("a", -1, &length, &latin), "1") << "nor are there others";
    }
}

} // namespace
