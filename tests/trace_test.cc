// SPDX-License-Identifier: Apache-2.0
//
// What each export traces: its entry and its exit, around those of the exports that it calls.
#include "tests/support/casetable.h"

#include <sstream>

namespace
{

const CSDescriptor jp = DescriptorOf("ISO-2022-JP"), latin = DescriptorOf("ISO-8859-1"),
                   utf8 = DescriptorOf("UTF8"), ia5 = DescriptorOf("IA5");
constexpr char text[] = "a \x1B$B\x46\x7C\x4B\x5C\x1B(B bc";
char room[99];
char *rest;
unsigned int size;
int length;
CaseTableRecord record;

char *Room() { return std::strcpy(room, "a"); }

const struct {
    void (*call)();
    const char *traced; // "name(name())", without str_; of class 17 "name[]"
} kCalls[] = {
    // clang-format off
    {[] { str_strcmp(text, text, &jp); }, "strcmp3()"},
    {[] { str_strncmp(text, text, 2, &jp); }, "strnccmp3()"},
    {[] { str_strncmp2(text, text, 2, 2, &jp); }, "strnbcmp3()"},
    {[] { str_strucasecmp("a", "A", &utf8); }, "strucasecmp3()"},
    {[] { str_strucasencmp("a", "A", 1, &utf8); }, "strucasenccmp3()"},
    {[] { str_strucasencmp2("a", "A", 1, 1, &utf8); }, "strucasenbcmp3()"},
    {[] { str_dispstrlen(text, &jp); }, "dispstrlen()"},
    {[] { str_utf8DispStrLen("a", -1, 0); }, "utf8DispStrLen()"},
    {[] { str_truncstrlen(text, 4, &jp); }, "truncstrlen()"},
    {[] { str_truncate(room, text, 4, &jp, &size); }, "truncate(truncstrlen())"},
    {[] { str_truncateclosed(room, text, 4, &jp); }, "truncateclosed()"},
    {[] { str_strncpy(room, text, 4, &jp); }, "strncpy(truncstrlen())"},
    {[] { str_strcat(Room(), "b", &jp); }, "strcat()"},
    {[] { str_strncat(Room(), "b", 1, &jp); }, "strncat()"},
    {[] { str_strchr(text, 'b', &jp); }, "strchr()"},
    {[] { str_SplitByDispLen(text, 1, &rest, &size, &size, &jp); },
     "SplitByDispLen(DoSplit(FindSplitPoint(CountSSDispChars())))"},
    {[] { str_SplitByDispBytes(text, 1, &rest, &size, &size, &jp); },
     "SplitByDispBytes(DoSplit(FindSplitPoint(CountSSDispBytes())))"},
    {[] { str_FindSplitPoint("", 0, 3, &jp); }, "FindSplitPoint()"},
    {[] { str_CountSSDispChars("ab", 2, 1, &length, &latin); }, "CountSSDispChars()"},
    {[] { str_CountSSDispBytes("ab", 2, 1, &length, &latin); }, "CountSSDispBytes()"},
    {[] { str_ToUpper(text, -1, &length, &utf8); }, "ToUpper()"},
    {[] { str_ToUpperUni("a", 1, &length, 4); }, "ToUpperUni()"},
    {[] { str_strcasecmpUni("a", "A", 4); }, "strcasecmpUni(ToUpperUni()ToUpperUni())"},
    {[] { str_USPatternMatch("a", "b", &jp); }, "USPatternMatch("},
    {[] { str_USPatternMatch(text, "\x1F\x62", &jp); }, "USPatternMatch("},
    {[] { str_USPatternMatch(text, "a\x1F\x62", &jp); }, "USPatternMatch()"},
    {[] { str_USPatternMatch("ab", "a\x1F\x62", &ia5); }, "USPatternMatch("}, // one segment
    {[] { str_USPatternMatch("a\xE9", "a\x1F\x62", &ia5); }, "USPatternMatch()"},
    {[] { str_utf8USPatternMatch("a", "b"); }, "utf8USPatternMatch()"},
    {[] { str_TransformUTF8InputStr("a", -1, "", nullptr, "", '\\', 0, &size); },
     "TransformUTF8InputStr()"},
    {[] { str_simplesprintf(&jp, room, "%d", 1); }, "simplesprintf()"},
    {[] { str_simpleprintf(&jp, "%n", nullptr); }, "simpleprintf()"},
    {[] { str_simplefprintf(&jp, stdout, "%n", nullptr); }, "simplefprintf()"},
    {[] { str_CompileCaseTable("~/none", "~/none.b", &record); }, "CompileCaseTable()"},
    {[] { str_LoadCaseTable("~/none.b", &record); }, "LoadCaseTable()"},
    {[] { str_InitCaseTables(&jp); }, "InitCaseTables[CompileCaseTable()]"},
    {[] { str_ReadStrToWkArea(0, nullptr); }, "ReadStrToWkArea[]"},
    // clang-format on
};

std::string Shown()
{
    std::istringstream lines(Sinks::traced);
    std::string shown;
    for (std::string line; lines >> line;) {
        const bool enters = line[2] == '+';
        shown += (enters ? line.substr(7) : "") + (line[1] == '9' ? ")(" : "][")[enters];
    }
    return shown;
}

using Traces = CaseTableTest;

TEST_F(Traces, TellEveryEntryAndExit)
{
    for (const auto &[call, traces] : kCalls) {
        const Sinks sinks;
        er_SubSystemLoggingLevel = 10;
        call();
        EXPECT_EQ(Shown(), traces);
        Sinks::traced.clear();
        er_SubSystemLoggingLevel = 9;
        call();
        EXPECT_EQ(Shown().find('('), std::string::npos);
    }
}

} // namespace
