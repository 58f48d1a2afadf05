// SPDX-License-Identifier: Apache-2.0
//
// Cutting and width with characters of three bytes, many escape sequences, and texts of 4 GiB.

#include "tests/passing/services.h"
#include "tests/support/test.h"

namespace
{

constexpr CSDescriptor kKanji = {87, 1}, kMail = {1001, 0xFFFE}, kLatin = {100, 0},
                       kMixed = {100, 1};
char *theSecond;
unsigned int theFirstLen, theSecondLen;

const char *Split(const char *text, int limit, const CSDescriptor &cs)
{
    return str_SplitByDispLen(text, limit, &theSecond, &theFirstLen, &theSecondLen, &cs);
}

TEST(PassingCut, TakesWhatTheServicesSay)
{
    passing::nonsense = 3;
    EXPECT_EQ(str_dispstrlen("aaabbb\x7F cccd", &kKanji), 5U);
    EXPECT_EQ(str_truncstrlen("aaabbb\x7F cccd??", 10, &kKanji), 8U);
    EXPECT_EQ(str_FindSplitPoint("aaabbb\x7F cccd??", 1, 8, &kKanji), 8);
    passing::nonsense = 500;
    EXPECT_STREQ(Split("a\x1B$BF|", 1, kMail), "a");
    EXPECT_EQ(theSecond, std::string(81, 'e') + "\x1B$BF|") << "no more than there is room for";
    passing::nonsense.reset();
    char room[16] = "\x1B$BF|";
    str_strcat(room, "a", &kMail);
    EXPECT_EQ(passing::converted, "-2") << "escMode is a signed number there";
}

TEST(PassingCut, RefusesTextsOf4GiBWhereTheyCannotBeAnswered)
{
    if (sizeof(size_t) == 4)
        GTEST_SKIP() << "no room for them";
    const Sinks sinks;
    const LongText text(size_t{UINT32_MAX} + 100);
    int count;
    EXPECT_EQ(ccs_Get1stStr(&kLatin, text.c_str() + 100, -1, &theFirstLen), 100);
    EXPECT_EQ(theFirstLen, UINT32_MAX);
    const char *const more = text.c_str() + 99;
    EXPECT_EQ(Escaped([&] { ccs_Get1stStr(&kLatin, more, -1, &theFirstLen); }), OS_ESC_MEMORY);
    EXPECT_EQ(Escaped([&] { ccs_GetAllStrs(&kLatin, more, -1, &count); }), OS_ESC_MEMORY);
    Split("abcd", 2, kLatin);
    EXPECT_STREQ(Split(text.c_str(), 10, kLatin), "ab") << "as it was";
    EXPECT_EQ(theFirstLen, 2U);
    EXPECT_EQ(sinks.logged.substr(0, 5), "23816") << "the rest has more bytes than can be said";
    for (int calls = 0; calls < 9 && passing::failure.failed != "os_realloc"; ++calls) {
        passing::failure = {calls, 3, ""};
        Escaped([&] { Split(text.c_str() + 182, 100, kLatin); }); // and a byte more than 4 GiB
    }
    EXPECT_EQ(passing::failure.failed, "os_realloc");
    passing::failure = {};
    EXPECT_EQ(Escaped([&] { str_dispstrlen(text.c_str(), &kLatin); }), OS_ESC_MEMORY);
    const_cast<char *>(text.c_str())[INT32_MAX] = '\x0F'; // for two segments of 2 GiB
    EXPECT_EQ(Escaped([&] { str_dispstrlen(text.c_str(), &kMixed); }), OS_ESC_MEMORY);
    passing::nonsense = 2; // bytes of a character
    const char *const half = text.c_str() + INT32_MAX;
    EXPECT_EQ(Escaped([&] { str_FindSplitPoint(half, 0, 1 << 30, &kMixed); }), OS_ESC_MEMORY);
    passing::nonsense.reset();
}

} // namespace
