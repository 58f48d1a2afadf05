// SPDX-License-Identifier: Apache-2.0
//
// Cutting, width and joining where the shipped sets do not lead: characters of three bytes, escape
// sequences of any length, and texts of 4 GiB.
#include "tests/scripted/ccs.h"
#include "tests/scripted/files.h"
#include "tests/support/test.h"

namespace
{

using scripted::script;

constexpr CSDescriptor kCs = {9, 0xFFFE}, kPlain = {9, 0};

class ScriptedCut : public testing::Test
{
  protected:
    ScriptedCut() { script = {}; }
    ~ScriptedCut() override
    {
        script = {};
        scripted::memoryIsOut = false;
    }

    const char *Split(const char *text, int limit, const CSDescriptor &cs)
    {
        firstLen = secondLen = 4711;
        return str_SplitByDispLen(text, limit, &second, &firstLen, &secondLen, &cs);
    }

    char *second = nullptr;
    unsigned int firstLen = 0, secondLen = 0;
};

TEST_F(ScriptedCut, TakesCharactersOfThreeBytes)
{
    script.segments = {{1, 12}, {CS_SEG_NONE, 2}};
    script.bytes[1] = 3;
    EXPECT_EQ(str_dispstrlen("aaabbb\x7F cccd", &kCs), 5U);
    EXPECT_EQ(str_truncstrlen("aaabbb\x7F cccd??", 10, &kCs), 8U);
    EXPECT_EQ(str_FindSplitPoint("aaabbb\x7F cccd??", 1, 8, &kCs), 8);
}

TEST_F(ScriptedCut, TakesEscapeSequencesFromTheServices)
{
    script.segments = {{1, 2}, {2, 1}};
    script.bytes = {{1, 1}, {2, 1}};
    script.modelEscapes = std::string(500, 'e');
    EXPECT_STREQ(Split("abc", 2, kCs), "ab");
    EXPECT_EQ(second, std::string(81, 'e') + "c") << "never more than there is room for";
    script.flags = {{9, CS_FLAG_ESCAPES}, {1, CS_FLAG_ASCII}};
    script.asciiEscapes = "<A>";
    char room[16] = "abc";
    EXPECT_STREQ(str_strcat(room, "abc", &kCs), "abc<A>abc");
    EXPECT_EQ(script.asked, "ASCII of 9/-2\n") << "escMode is a signed number there";
}

TEST_F(ScriptedCut, RefusesTextsOf4GiBWhereTheyCannotBeAnswered)
{
    if (sizeof(size_t) == 4)
        GTEST_SKIP() << "no room for them";
    const Sinks sinks;
    const LongText text(size_t{UINT32_MAX} + 100);
    script.flags[9] = CS_FLAG_BYTE;
    Split("abcd", 2, kPlain);
    EXPECT_STREQ(Split(text.c_str(), 10, kPlain), "ab") << "as it was";
    EXPECT_EQ(firstLen, 4711U);
    EXPECT_EQ(sinks.logged.substr(0, 5), "23816") << "the rest has more bytes than can be said";
    scripted::memoryIsOut = true;
    Split(text.c_str() + 182, 100, kPlain);
    EXPECT_EQ(scripted::asked, size_t{UINT32_MAX} + 1) << "more than 32 bits can say";
    script.segments = {{CS_SEG_IGNORE, 1U << 31}, {1, 5}};
    script.bytes[1] = 1;
    EXPECT_EQ(Escaped([&] { str_FindSplitPoint(text.c_str(), 0, 2, &kCs); }), OS_ESC_MEMORY);
    script.segments = {{CS_SEG_RAW, UINT32_MAX}, {CS_SEG_RAW, 1}};
    EXPECT_EQ(Escaped([&] { str_dispstrlen(text.c_str(), &kCs); }), OS_ESC_MEMORY);
}

} // namespace
