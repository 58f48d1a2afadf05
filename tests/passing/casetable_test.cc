// SPDX-License-Identifier: Apache-2.0
//
// Case tables over services of a host: references that cannot grow, a notation that is shorter than
// the default one, sets whose own table serves all, and an escape that ends in str_ToUpper.
#include "tests/passing/services.h"
#include "tests/support/casetable.h"
#include "tests/support/escape.h"

#include <str/case.h>

#include <vector>

namespace
{

using passing::failure;
using passing::held;

class PassingTables : public CaseTableTest
{
  protected:
    ~PassingTables() override { passing::moreFlags = 0; }

    int Compile(const std::string &source)
    {
        home.Write("toupper/100.s", "T C x\n" + source);
        const int done = str_CompileCaseTable("~/toupper/100.s", "~/toupper/100.b", &record);
        EXPECT_EQ(IsClear(record), done == 0);
        return done;
    }

    CaseTableRecord record = {};
};

TEST_F(PassingTables, ReferencesThatCannotGrowLeaveTheOthersAlone)
{
    EXPECT_EQ(Compile("a=A"), 1);
    str_FreeCTEntry(&record);
    std::vector<CaseTableRecord> records;
    const auto load = [&](int calls) {
        failure = {calls, 3, ""};
        const int done = str_LoadCaseTable("~/toupper/100.b", &record);
        EXPECT_EQ(IsClear(record), done == 0) << failure.failed;
        return done;
    };
    constexpr int kMany = 1000;
    int callsLeft = load(kMany) == 1 ? failure.callsLeft : 0;
    for (int round = 0; round < 300; ++round, callsLeft = failure.callsLeft) {
        str_FreeCTEntry(&record);
        EXPECT_EQ(load(kMany), 1);
        EXPECT_EQ(failure.callsLeft, callsLeft) << "those given back are used again";
    }
    str_FreeCTEntry(&record);
    const size_t blocks = held.blocks.size();
    for (int round = 0; round < 200; ++round) {
        for (int calls = 0; load(calls) == 0; ++calls)
            EXPECT_EQ(held.blocks.size(), blocks + records.size());
        records.push_back(record);
        record = {};
    }
    failure = {};
    for (CaseTableRecord &kept : records) {
        unsigned char upper[2];
        int length = 0;
        const unsigned char a = 'a';
        EXPECT_EQ(str_UpShiftChar(&a, 1, &kept, upper, &length), 1);
        EXPECT_EQ(upper[0], 'A');
        str_FreeCTEntry(&kept);
    }
    EXPECT_EQ(held.blocks.size(), blocks);
}

TEST_F(PassingTables, SidesHaveAtMostNineteenCharactersWhateverTheirNotation)
{
    passing::nonsense = 1;
    for (const size_t length : {19U, 20U})
        for (const bool isLeft : {true, false}) {
            const std::string side(length, 'x');
            EXPECT_EQ(Compile(isLeft ? side + "=A" : "a=" + side), length == 19 ? 1 : 0);
            str_FreeCTEntry(&record);
        }
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

TEST_F(PassingTables, AnEscapeThatEndsHereIsLogged)
{
    home.Write("toupper/100.s", "T C x\na=A");
    const CSDescriptor latin = {100, 0};
    int length = 0;
    EXPECT_STREQ(str_ToUpper("a", -1, &length, &latin), "A");
    static const char *upper = "";
    for (int calls = 0; upper != nullptr; ++calls) { // until one within the protected part fails
        failure = {calls, ER_CLASS_CONVERSION, ""};
        length = 4711;
        Escaped([&] { upper = str_ToUpper("a", -1, &length, &latin); });
        EXPECT_EQ(length, 4711);
    }
    failure = {};
    EXPECT_EQ(logged, "23816 an operation on a text was given up\n");
}

} // namespace
