// SPDX-License-Identifier: Apache-2.0
//
// Printing over services that answer by script: what follows a string, how the buffer grows, and
// escapes out of every call.
#include "services/services.h"
#include "tests/scripted/ccs.h"
#include "tests/scripted/files.h"
#include "tests/support/escape.h"

#include <gtest/gtest.h>
#include <platform/er.h>
#include <str/str.h>

#include <algorithm>
#include <cstring>

namespace
{

using scripted::script;
using scripted::Script;

constexpr uint16_t kAsciiSet = 5, kPairSet = 2, kCode = 9;
constexpr CSDescriptor kCs = {kCode, 0xFFFE};

class ScriptedPrint : public testing::Test
{
  protected:
    ScriptedPrint()
    {
        script = {};
        script.flags = {{kAsciiSet, CS_FLAG_ASCII_SUPERSET}, {kCode, CS_FLAG_ESCAPES}};
        script.codePage = kAsciiSet;
        script.asciiEscapes = "<A>";
        std::fill_n(ints, STR_PARAMETERS, 7);
    }
    ~ScriptedPrint() override
    {
        scripted::files.escapeClass = 0;
        er_SetTraceSink(nullptr);
        er_SubSystemLoggingLevel = 0;
        er_Clear();
    }

    std::string string = "arg";
    int ints[STR_PARAMETERS];
    void *strings[STR_PARAMETERS];
    ParameterRecord table[STR_PARAMETERS];
    unsigned int length = 4711;

    int Scan(const char *format)
    {
        const auto size = static_cast<uint32_t>(strlen(format));
        const CSSegment segments[] = {{format, kAsciiSet, 0, size},
                                      {format + size, CS_SEG_END, 0, 0}};
        return str_GetParams(&kCs, format, segments, 2, table);
    }
    // Scanned as a single segment of ASCII, then built over the segments of the script.
    const char *Build(const char *format)
    {
        const int maxParam = Scan(format);
        std::fill_n(strings, STR_PARAMETERS, string.data());
        return str_buildpfstring(&kCs, &length, format, table, maxParam, nullptr, ints, nullptr,
                                 nullptr, nullptr, nullptr, strings);
    }
};

// The first test of the process that prints: the buffer is not there yet.
TEST_F(ScriptedPrint, GrowsItsBufferByWhatIsMissing)
{
    scripted::files.escapeClass = 3;
    scripted::files.callsLeft = 0;
    EXPECT_EQ(Build("x=%d"), nullptr) << "no memory at all";
    EXPECT_EQ(length, 0U);
    scripted::files.callsLeft = 1; // 128 bytes
    EXPECT_STREQ(Build("x=%d"), "x=7");
    string.assign(125, 's');
    EXPECT_EQ(Build("%s.."), std::string(125, 's') + "..");
    string.assign(126, 's');
    EXPECT_EQ(Build("a%d%s"), std::string("a7")) << "no room for the NUL";
    EXPECT_EQ(length, 2U);
    scripted::files.callsLeft = 1; // 256
    string.assign(129, 's');
    EXPECT_EQ(Build("%s"), string);
    string.assign(255, 's');
    EXPECT_EQ(Build("%s"), string);
    scripted::files.callsLeft = 1; // 256 + 300
    string.assign(300, 's');
    EXPECT_EQ(Build("%s"), string);
    string.assign(555, 's');
    EXPECT_EQ(Build("%s"), string);
    EXPECT_EQ(Build(std::string(278, 'f').c_str()), std::string(278, 'f')) << "twice the format";
    EXPECT_EQ(Build(std::string(279, 'f').c_str()), nullptr);
}

TEST_F(ScriptedPrint, BringsItsOwnSetBackBehindAString)
{
    using Segments = std::vector<scripted::Segment>;
    const struct {
        Segments segments;
        uint16_t codePage;
        bool escapes;
        const char *why;
        // clang-format off
    } rows[] = {
        {{{kAsciiSet, 1}, {kPairSet, 2}}, 0, true, "ends in another set"},
        {{{kPairSet, 2}, {kAsciiSet, 1}}, 0, false, "ends in ASCII"},
        {{{kAsciiSet, 2}, {CS_SEG_RAW, 1}}, kAsciiSet, true, "ends raw"},
        {{{kPairSet, 2}, {CS_SEG_IGNORE, 1}}, kAsciiSet, false, "ends in an escape sequence"},
        {{{kAsciiSet, 2}, {CS_SEG_NONE, 1}}, kPairSet, true, "... where another set is in force"},
        {{}, kAsciiSet, false, "is empty"},
        {{}, kPairSet, true, "is empty where another set is in force"},
    };
    // clang-format on
    for (const auto &row : rows) {
        script.segments = row.segments;
        script.codePage = row.codePage;
        script.flags[kCode] = CS_FLAG_ESCAPES;
        script.asked.clear();
        EXPECT_STREQ(Build("[%-5s]"), row.escapes ? "[arg  <A>]" : "[arg  ]") << row.why;
        EXPECT_EQ(script.asked, row.escapes ? "ASCII of 9/-2\n" : "") << row.why;
        script.flags[kCode] = 0;
        EXPECT_STREQ(Build("[%s]"), "[arg]") << "a set without escapes";
    }
}

TEST_F(ScriptedPrint, EscapesOutOfEveryCallLeaveWhatWasBuilt)
{
    const char *const format = "%d, %s, %s.";
    script.segments = {{kAsciiSet, 1}, {CS_SEG_IGNORE, 2}};
    script.codePage = kPairSet; // so that every function is called
    const std::string whole = Build(format);
    EXPECT_EQ(whole, "7, arg<A>, arg<A>.");
    for (const int escapeClass : {3, 5}) {
        int calls = 0;
        for (bool over = false; !over; ++calls) {
            const char *text = nullptr;
            length = 4711;
            const int maxParam = Scan(format);
            script.escapeClass = escapeClass;
            script.callsLeft = calls;
            const bool escaped =
                Escaped([&] {
                    text = str_buildpfstring(&kCs, &length, format, table, maxParam, nullptr, ints,
                                             nullptr, nullptr, nullptr, nullptr, strings);
                }) != 0;
            over = script.callsLeft >= 0;
            script.escapeClass = 0;
            EXPECT_EQ(escaped, !over && escapeClass != 3) << calls;
            if (escaped) {
                EXPECT_EQ(length, 4711U);
            } else {
                EXPECT_EQ(text, over ? whole : calls < 7 ? "7, " : "7, arg<A>, ") << calls;
            }
        }
        EXPECT_EQ(calls, 15) << "seven calls for each string";
    }
}

TEST_F(ScriptedPrint, PrintFunctionsTraceAndPassEscapesOfTheirOwnOn)
{
    static std::string traced;
    traced.clear();
    er_SetTraceSink([](int, const char *text, int marker) {
        if (marker >= 0)
            traced += (marker == 1 ? "+" : "-") + std::string(text) + " ";
    });
    er_SubSystemLoggingLevel = 10;
    script.segments = {{kAsciiSet, 2}};
    char room[16] = "untouched";
    EXPECT_EQ(str_simplesprintf(&kCs, room, "%d", 5), 1);
    testing::internal::CaptureStdout();
    str_simpleprintf(&kCs, "%d", 5);
    str_simplefprintf(&kCs, stdout, "%d", 5);
    script.flags[kCode] = CS_FLAG_BYTE;
    str_simplefprintf(&kCs, stdout, "%d", 5);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "555");
    EXPECT_EQ(traced, "+str_simplesprintf -str_simplesprintf +str_simpleprintf -str_simpleprintf "
                      "+str_simplefprintf -str_simplefprintf +str_simplefprintf "
                      "-str_simplefprintf ");
    er_SubSystemLoggingLevel = 9;
    script.flags[kCode] = CS_FLAG_ESCAPES;
    for (int calls = 0; calls < 3; ++calls) { // what set it is, its segments, what they are
        script.escapeClass = 3;
        script.callsLeft = calls;
        EXPECT_NE(Escaped([&] { str_simplesprintf(&kCs, room, "%d", 6); }), 0) << calls;
    }
    script.callsLeft = 3;
    EXPECT_EQ(str_simplesprintf(&kCs, room, "%n", nullptr), -1);
    EXPECT_STREQ(room, "5");
}

// Records that are not the scanner's: what does not fit its directive is text.
TEST_F(ScriptedPrint, BuildsFromAnyTable)
{
    const char *const format = "a%db%fc%s";
    const float floats[] = {0, 0, 2.5F};
    const double doubles[] = {0, 3.5, 0};
    ParameterRecord records[4] = {};
    records[2] = {STR_ARG_FLOAT, 1, format + 4, 2, -1, -1};
    const auto build = [&] {
        std::fill_n(strings, STR_PARAMETERS, string.data());
        return str_buildpfstring(&kCs, &length, format, records, 3, nullptr, ints, nullptr, floats,
                                 doubles, nullptr, strings);
    };
    EXPECT_STREQ(build(), "a%db2.500000c%s");
    records[1] = {STR_ARG_DOUBLE, 1, format + 1, 2, -1, -1};
    records[3] = {STR_ARG_INT, 1, format + 7, 2, -1, -1};
    EXPECT_STREQ(build(), "a%db2.500000c%s") << "types that are not the conversion's";
    records[1] = {STR_ARG_INT, 1, "%d", 2, -1, -1};
    records[3] = {STR_ARG_STRING, 1, format + 7, 3, -1, -1};
    EXPECT_STREQ(build(), "a%db2.500000c%s") << "not in this format, or beyond its end";
}

} // namespace
