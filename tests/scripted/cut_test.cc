// SPDX-License-Identifier: Apache-2.0
//
// Cutting and joining over services that answer by script: every kind of segment, every length a
// service may answer, memory that runs out, and escapes on their way through.
#include "services/services.h"
#include "tests/scripted/ccs.h"
#include "tests/scripted/files.h"
#include "tests/support/escape.h"
#include "tests/support/guarded.h"

#include <gtest/gtest.h>
#include <platform/er.h>
#include <platform/os.h>
#include <str/str.h>

namespace
{

using scripted::script;
using scripted::Script;

constexpr uint16_t kByteSet = 1, kPairSet = 2, kUnitSet = 3, kAsciiSet = 5, kCode = 9;
constexpr CSDescriptor kCs = {kCode, 2};

Script Sets(std::vector<scripted::Segment> segments)
{
    Script sets;
    sets.flags = {{kUnitSet, CS_FLAG_T61}, {kAsciiSet, CS_FLAG_ASCII}};
    sets.bytes = {{kByteSet, 1}, {kPairSet, 2}, {kAsciiSet, 1}};
    sets.segments = std::move(segments);
    return sets;
}

unsigned int KeptOf(std::string_view bytes, unsigned int n)
{
    const Guarded text(bytes);
    return str_truncstrlen(text.c_str(), n, &kCs);
}

TEST(ScriptedTruncation, GoesByTheKindsOfSegments)
{
    script = Sets({{kByteSet, 2}, {CS_SEG_IGNORE, 3}, {kPairSet, 6}, {CS_SEG_RAW, 4}});
    const unsigned int kept[] = {0, 1, 2, 2, 2, 5, 5, 7, 7, 9, 9, 11, 12, 13, 14, 15, 15};
    for (unsigned int n = 0; n < std::size(kept); ++n)
        EXPECT_EQ(KeptOf("ab\x1B$BAaBbCc????", n), kept[n]) << n;
    script.flags[kCode] = CS_FLAG_BYTE;
    EXPECT_EQ(KeptOf("ab", 100), 100U) << "the quick path looks at nothing";
}

TEST(ScriptedTruncation, EndsWhereNoLengthCanBeTold)
{
    for (const int length : {0, -1, -32768}) {
        script = Sets({{kByteSet, 5}});
        script.control = [length](auto, auto) { return length; };
        EXPECT_EQ(KeptOf("ab\ncd", 4), 2U);
        script.segments = {{kUnitSet, 3}};
        script.baseUnit = [length](auto, auto) { return length; };
        EXPECT_EQ(KeptOf("xyz", 2), 0U);
        script.segments = {{kPairSet, 4}};
        script.bytes[kPairSet] = static_cast<int16_t>(length);
        EXPECT_EQ(KeptOf("abcd", 3), 0U);
    }
    script = Sets({{kUnitSet, 9}});
    script.baseUnit = [](auto, auto) { return 4; };
    EXPECT_EQ(KeptOf("abcdefghi", 7), 4U) << "a unit that does not fit";
    EXPECT_EQ(script.asked, "unit of 3/2 in 7\nunit of 3/2 in 3\n");
}

TEST(ScriptedSplit, FindsItsPointByTheKindsOfSegments)
{
    const scripted::Segment escape = {CS_SEG_IGNORE, 3};
    const struct {
        std::vector<scripted::Segment> segments;
        std::string_view bytes;
        int mode, limit, splitPoint;
        const char *why;
        // clang-format off
    } rows[] = {
        {{{kByteSet, 4}}, "a\nbc", 0, 2, 2, "a line feed counts here"},
        {{{kByteSet, 4}}, "ab\x01\x7F", 0, 2, 2, "what counts nothing goes to the second part"},
        {{{kByteSet, 4}}, "\x01" "a\x7F" "b", 0, 2, 4, "... and between is passed over"},
        {{escape, {kPairSet, 4}}, "\x1B$Babcd", 0, 1, 5, "a character is one"},
        {{{kPairSet, 4}}, "abcd", 1, 3, 2, "a character that does not fit"},
        {{{kPairSet, 4}}, "abcd", 1, 1, 0, "... not even the first"},
        {{{kPairSet, 3}}, "\nab", 1, 2, 1, "... behind a line feed, of which nobody asks"},
        {{{kPairSet, 6}}, "ab  cd", 0, 3, 4, "spaces between longer characters"},
        {{{kPairSet, 6}}, "ab  cd", 1, 4, 4, "... one byte each"},
        {{{CS_SEG_RAW, 10}}, "0123456789", 0, 4, 4, "a raw byte counts one"},
        {{{CS_SEG_RAW, 10}}, "0123456789", 1, 4, 4, "... in either mode"},
        {{{CS_SEG_RAW, 2}, {kByteSet, 2}}, "01ab", 0, 2, 2, "the budget ends with a raw run"},
        {{escape, {CS_SEG_NONE, 2}}, "\x1B$B??", 0, 5, 0, "nothing displayed"},
        {{{kByteSet, 3}}, "abc", 0, 3, 3, "all of it fits"},
        {{{kByteSet, 3}, escape}, "abc\x1B(B", 0, 4, 6, "... and what follows"},
        {{{kByteSet, 3}}, "abc", 0, 2147483647, 3, "the greatest limit"},
        {{{kPairSet, 4}, {CS_SEG_RAW, 1}}, "abcd?", 1, 2147483647, 5, "... of bytes"},
        {{{kByteSet, 3}}, "abc", 0, 0, 0, "a limit of nothing"},
        {{{kByteSet, 3}}, "abc", 1, -5, 0, "a negative limit"},
        {{{kPairSet, 3}}, "abc", 0, 2, 3, "a segment that ends in half a character"},
        {{{kPairSet, 3}}, "abc", 1, 3, 2, "... which does not fit as bytes"},
        {{{kByteSet, 3}}, "abc", 7, 2, 2, "any other mode counts characters"},
        {{{kByteSet, 40}}, "0123456789012345678901234567890123456789", 0, 33, 33, "over blocks"},
    };
    // clang-format on
    for (const auto &row : rows) {
        script = Sets(row.segments);
        script.control = [](const char *at, auto) { return *at == '\n' ? 0 : 1; };
        const Guarded text(row.bytes);
        EXPECT_EQ(str_FindSplitPoint(text.c_str(), row.mode, row.limit, &kCs), row.splitPoint)
            << row.why;
    }
}

TEST(ScriptedSplit, CountingStopsWhereNoLengthCanBeTold)
{
    using Count = decltype(&str_CountSSDispChars);
    for (const int length : {0, -3})
        for (const Count count : {str_CountSSDispChars, str_CountSSDispBytes}) {
            script = Sets({});
            script.control = [length](auto, auto) { return length; };
            const CSDescriptor segCs = {kByteSet, 2};
            int used = 4711;
            EXPECT_EQ(count("ab\x01zz", 5, 4, &used, &segCs), nullptr);
            EXPECT_EQ(used, 2);
        }
}

// What came out of a split that an escape may have ended.
struct Outcome {
    int escape = 0; // its code
    const char *first = nullptr;
    char *second = nullptr;
    unsigned int firstLen = 4711, secondLen = 4711;
};

Outcome TrySplit(const char *text, int limit, CSDescriptor cs = kCs)
{
    Outcome outcome;
    outcome.escape = Escaped([&] {
        sigjmp_buf *const ours = er_GetCurrEnv();
        outcome.first = str_SplitByDispLen(text, limit, &outcome.second, &outcome.firstLen,
                                           &outcome.secondLen, &cs);
        EXPECT_EQ(er_GetCurrEnv(), ours);
    });
    return outcome;
}

std::string logged, traced;

class ScriptedEscapes : public testing::Test
{
  protected:
    ScriptedEscapes()
    {
        logged.clear();
        traced.clear();
        er_SetLogSink([](int code, const char *) { logged += std::to_string(code) + " "; });
        er_SetTraceSink([](int, const char *text, int marker) {
            if (marker >= 0)
                traced += (marker == 1 ? "+" : "-") + std::string(text) + " ";
        });
        script = Sets({{kByteSet, 4}});
    }
    ~ScriptedEscapes() override
    {
        er_SetLogSink(nullptr);
        er_SetTraceSink(nullptr);
        er_SubSystemLoggingLevel = 0;
        scripted::files.escapeClass = 0;
        er_Clear();
    }
};

// The first test of the process that splits: the buffer is not there yet.
TEST_F(ScriptedEscapes, MemoryThatRunsOutLeavesTheSplitUsable)
{
    scripted::files.escapeClass = 3;
    scripted::files.callsLeft = 0;
    Outcome outcome = TrySplit("abcd", 2);
    EXPECT_EQ(outcome.escape, 0);
    EXPECT_EQ(outcome.first, nullptr) << "there is no buffer yet";
    EXPECT_EQ(outcome.firstLen, 4711U) << "nothing is written through the pointers";
    EXPECT_EQ(logged, "23816 ");
    EXPECT_EQ(er_GetLive(), 0);

    scripted::files.callsLeft = 1; // the first allocation succeeds, the growth does not
    outcome = TrySplit("abcd", 2);
    EXPECT_STREQ(outcome.first, "ab");
    EXPECT_STREQ(outcome.second, "cd");
    const char *buffer = outcome.first;
    const std::string longer(1000, 'x');
    script.segments = {{kByteSet, 1000}};
    outcome = TrySplit(longer.c_str(), 2);
    EXPECT_EQ(outcome.first, buffer) << "as it was";
    EXPECT_STREQ(outcome.first, "ab");
    EXPECT_EQ(outcome.firstLen, 4711U);
    EXPECT_EQ(logged, "23816 23816 ");

    scripted::files.escapeClass = 0;
    outcome = TrySplit(longer.c_str(), 2);
    EXPECT_EQ(outcome.secondLen, 998U);
    scripted::files.escapeClass = 3;
    scripted::files.callsLeft = 0;
    script.segments = {{kByteSet, 4}};
    EXPECT_STREQ(TrySplit("efgh", 3).second, "h") << "a shorter text needs no memory";
}

TEST_F(ScriptedEscapes, TextsOf4GiBAreRefusedWhereTheyCannotBeAnswered)
{
    if (sizeof(size_t) == 4)
        GTEST_SKIP() << "no room for them";
    const LongText text(size_t{UINT32_MAX} + 100);
    TrySplit("abcd", 2);
    script.flags[kCode] = CS_FLAG_BYTE;
    const Outcome outcome = TrySplit(text.c_str(), 10, {kCode, 0});
    EXPECT_STREQ(outcome.first, "ab") << "as it was";
    EXPECT_EQ(outcome.firstLen, 4711U);
    EXPECT_EQ(logged, "23816 ") << "the rest has more bytes than can be said";
    scripted::files.escapeClass = 3;
    scripted::files.callsLeft = 0;
    TrySplit(text.c_str() + 182, 100, {kCode, 0});
    EXPECT_EQ(scripted::held.asked, size_t{UINT32_MAX} + 1) << "more than 32 bits can say";
    scripted::files.escapeClass = 0;

    script = Sets({{CS_SEG_IGNORE, 1U << 31}, {kByteSet, 5}});
    EXPECT_EQ(Escaped([&] { str_FindSplitPoint(text.c_str(), 0, 2, &kCs); }), OS_ESC_MEMORY);
    script = Sets({{CS_SEG_RAW, UINT32_MAX}, {CS_SEG_RAW, 1}});
    EXPECT_EQ(Escaped([&] { str_dispstrlen(text.c_str(), &kCs); }), OS_ESC_MEMORY);
}

TEST_F(ScriptedEscapes, ASplitSwallowsItsClassAndPassesOthersOn)
{
    for (const int escapeClass : {3, 5}) {
        logged.clear();
        script.raiseAfterWalk = escapeClass;
        const Outcome outcome = TrySplit("abcd", 2);
        EXPECT_EQ(outcome.escape, escapeClass == 3 ? 0 : 4711);
        EXPECT_EQ(logged, "23816 ") << "once";
        EXPECT_EQ(outcome.firstLen, 4711U);
        EXPECT_EQ(er_GetLive(), 0);
    }
}

TEST_F(ScriptedEscapes, SplitsTraceTheirWay)
{
    er_SubSystemLoggingLevel = 10;
    TrySplit("abcd", 2);
    EXPECT_EQ(traced,
              "+str_SplitByDispLen +str_DoSplit +str_FindSplitPoint +str_CountSSDispChars "
              "-str_CountSSDispChars -str_FindSplitPoint -str_DoSplit -str_SplitByDispLen ");
    traced.clear();
    TrySplit("abcd", 0);
    EXPECT_EQ(traced, "+str_SplitByDispLen +str_DoSplit +str_FindSplitPoint -str_FindSplitPoint "
                      "-str_SplitByDispLen ")
        << "no split, no exit";
    traced.clear();
    char room[8] = "";
    unsigned int kept;
    str_truncate(room, "abcd", 3, &kCs, &kept);
    str_strncpy(room, "abcd", 3, &kCs);
    EXPECT_EQ(traced, "+str_truncate +str_truncstrlen -str_truncstrlen -str_truncate "
                      "+str_strncpy +str_truncstrlen -str_truncstrlen -str_strncpy ");
    traced.clear();
    script.flags[kCode] = CS_FLAG_BYTE;
    str_truncstrlen("abcd", 3, &kCs);
    const CSDescriptor plain = {kCode, 0};
    str_strchr("abcd", 'c', &plain);
    str_strchr("abcd", 'c', &kCs);
    str_strlcpy(room, "abcd", 3, &plain);
    EXPECT_EQ(traced, "+str_truncstrlen +str_strchr -str_strchr +str_strncpy -str_strncpy ");
}

TEST_F(ScriptedEscapes, TheSecondPartBeginsWithTheModelEscapes)
{
    script.modelEscapes = "<model>";
    const Outcome walked = TrySplit("abcd", 3);
    EXPECT_STREQ(walked.second, "<model>d");
    EXPECT_EQ(walked.secondLen, 8U);
    EXPECT_EQ(TrySplit("abcd", 4).second, nullptr) << "no rest, no escapes";
    script.flags[kCode] = CS_FLAG_BYTE;
    const Outcome plain = TrySplit("abcd", 3, {kCode, 0});
    EXPECT_STREQ(plain.second, "d") << "plain text has no state";
    EXPECT_STREQ(TrySplit("abcd", 2147483647, {kCode, 0}).first, "abcd");
    script = Sets({{kByteSet, 4}});
    script.modelEscapes = std::string(500, 'e');
    EXPECT_EQ(TrySplit("abcd", 3).secondLen, 82U) << "never more than there is room for";
}

TEST(ScriptedConcat, InsertsEscapesBetweenOtherSetsAndAscii)
{
    // Both texts are divided alike, so the first segment and the last say what each is.
    const struct {
        std::vector<scripted::Segment> segments;
        bool escapes;
        const char *why;
        // clang-format off
    } rows[] = {
        {{{kAsciiSet, 1}, {kPairSet, 2}}, true, "begins with ASCII, ends without"},
        {{{CS_SEG_IGNORE, 1}, {kAsciiSet, 1}, {kPairSet, 1}, {CS_SEG_NONE, 1}}, true, "ignored"},
        {{{kPairSet, 2}, {kAsciiSet, 1}}, false, "begins without ASCII"},
        {{{kAsciiSet, 3}}, false, "ends with ASCII"},
        {{{kAsciiSet, 1}, {kPairSet, 1}, {CS_SEG_RAW, 1}}, false, "ends raw"},
        {{{CS_SEG_RAW, 1}, {kAsciiSet, 1}, {kPairSet, 2}}, false, "begins raw"},
        {{}, false, "empty"},
    };
    // clang-format on
    for (const auto &row : rows) {
        script = Sets(row.segments);
        script.asciiEscapes = "<A>";
        int escLen = 4711;
        EXPECT_EQ(str_GetEscapes("abc", "abc", &kCs, &escLen), nullptr) << "a set without escapes";
        EXPECT_EQ(escLen, 4711) << "nothing is written then";
        script.flags[kCode] = CS_FLAG_ESCAPES;
        EXPECT_EQ(str_GetEscapes("abc", "abc", &kCs, &escLen) != nullptr, row.escapes) << row.why;
        EXPECT_EQ(escLen, row.escapes ? 3 : 0) << row.why;
        char all[32] = "abc", some[32] = "abc", none[32] = "abc";
        const std::string front = row.escapes ? "abc<A>" : "abc";
        EXPECT_EQ(str_strcat(all, "xyz", &kCs), front + "xyz") << row.why;
        EXPECT_EQ(str_strncat(some, "xyz", 2, &kCs), front + "xy");
        EXPECT_EQ(str_strncat(none, "xyz", 0, &kCs), front);
    }
    script = Sets({{kAsciiSet, 1}, {kPairSet, 2}});
    script.flags[kCode] = CS_FLAG_ESCAPES;
    const CSDescriptor negative = {kCode, 0xFFFE};
    int escLen;
    str_GetEscapes("abc", "abc", &negative, &escLen);
    EXPECT_EQ(script.asked, "ASCII of 9/-2\n") << "escMode is handed on as a signed number";
}

} // namespace
