// SPDX-License-Identifier: Apache-2.0
//
// What each export traces: its entry and its exit, around those of the exports that it calls.
#include "tests/support/casetable.h"
#include "tests/support/sinks.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <platform/ccs.h>
#include <str/str.h>

#include <cstring>
#include <regex>

namespace
{

const CSDescriptor kMail = DescriptorOf("ISO-2022-JP"), kLatin = DescriptorOf("ISO-8859-1"),
                   kUtf8 = DescriptorOf("UTF8");
constexpr char kText[] = "a \x1B$B\x46\x7C\x4B\x5C\x1B(B bc";
char theRoom[99];
char *theRest;
unsigned int theLength;
int theOutLength;
CaseTableRecord theRecord;

char *Room() { return std::strcpy(theRoom, "a"); }

const struct {
    void (*call)();
    const char *traced; // + for an entry, - for an exit, without str_; of class 19 if none is there
} kCalls[] = {
    // clang-format off
    {[] { str_strcmp(kText, kText, &kMail); }, "+strcmp3 -strcmp3"},
    {[] { str_strncmp(kText, kText, 2, &kMail); }, "+strnccmp3 -strnccmp3"},
    {[] { str_strncmp2(kText, kText, 2, 2, &kMail); }, "+strnbcmp3 -strnbcmp3"},
    {[] { str_strucasecmp("a", "A", &kUtf8); }, "+strucasecmp3 -strucasecmp3"},
    {[] { str_strucasencmp("a", "A", 1, &kUtf8); }, "+strucasenccmp3 -strucasenccmp3"},
    {[] { str_strucasencmp2("a", "A", 1, 1, &kUtf8); }, "+strucasenbcmp3 -strucasenbcmp3"},
    {[] { str_dispstrlen(kText, &kMail); }, "+dispstrlen -dispstrlen"},
    {[] { str_utf8DispStrLen("a", -1, 0); }, "+utf8DispStrLen -utf8DispStrLen"},
    {[] { str_truncstrlen(kText, 4, &kMail); }, "+truncstrlen -truncstrlen"},
    {[] { str_truncate(theRoom, kText, 4, &kMail, &theLength); },
     "+truncate +truncstrlen -truncstrlen -truncate"},
    {[] { str_strncpy(theRoom, kText, 4, &kMail); }, "+strncpy +truncstrlen -truncstrlen -strncpy"},
    {[] { str_strcat(Room(), "b", &kMail); }, "+strcat -strcat"},
    {[] { str_strncat(Room(), "b", 1, &kMail); }, "+strncat -strncat"},
    {[] { str_strchr(kText, 'b', &kMail); }, "+strchr -strchr"},
    {[] { str_SplitByDispLen(kText, 1, &theRest, &theLength, &theLength, &kMail); },
     "+SplitByDispLen +DoSplit +FindSplitPoint +CountSSDispChars -CountSSDispChars "
     "-FindSplitPoint -DoSplit -SplitByDispLen"},
    {[] { str_SplitByDispBytes(kText, 1, &theRest, &theLength, &theLength, &kMail); },
     "+SplitByDispBytes +DoSplit +FindSplitPoint +CountSSDispBytes -CountSSDispBytes "
     "-FindSplitPoint -DoSplit -SplitByDispBytes"},
    {[] { str_FindSplitPoint("", 0, 3, &kMail); }, "+FindSplitPoint -FindSplitPoint"},
    {[] { str_CountSSDispChars("ab", 2, 1, &theOutLength, &kLatin); },
     "+CountSSDispChars -CountSSDispChars"},
    {[] { str_CountSSDispBytes("ab", 2, 1, &theOutLength, &kLatin); },
     "+CountSSDispBytes -CountSSDispBytes"},
    {[] { str_ToUpper(kText, -1, &theOutLength, &kUtf8); }, "+ToUpper -ToUpper"},
    {[] { str_ToUpperUni("a", 1, &theOutLength, 4); }, "+ToUpperUni -ToUpperUni"},
    {[] { str_strcasecmpUni("a", "A", 4); },
     "+strcasecmpUni +ToUpperUni -ToUpperUni +ToUpperUni -ToUpperUni -strcasecmpUni"},
    {[] { str_USPatternMatch("a", "b", &kMail); }, "+USPatternMatch"},
    {[] { str_USPatternMatch(kText, "\x1F\x62", &kMail); }, "+USPatternMatch"},
    {[] { str_USPatternMatch(kText, "a\x1F\x62", &kMail); }, "+USPatternMatch -USPatternMatch"},
    {[] { str_utf8USPatternMatch("a", "b"); }, "+utf8USPatternMatch -utf8USPatternMatch"},
    {[] { str_TransformUTF8InputStr("a", -1, "", nullptr, "", '\\', 0, &theLength); },
     "+TransformUTF8InputStr -TransformUTF8InputStr"},
    {[] { str_simplesprintf(&kMail, theRoom, "%d", 1); }, "+simplesprintf -simplesprintf"},
    {[] { str_simpleprintf(&kMail, "%n", nullptr); }, "+simpleprintf -simpleprintf"},
    {[] { str_simplefprintf(&kMail, stdout, "%n", nullptr); }, "+simplefprintf -simplefprintf"},
    {[] { str_simplefprintf(&kLatin, stdout, "%s", ""); }, "+simplefprintf -simplefprintf"},
    {[] { str_CompileCaseTable("~/none", "~/none.b", &theRecord); },
     "+CompileCaseTable -CompileCaseTable"},
    {[] { str_LoadCaseTable("~/none.b", &theRecord); }, "+LoadCaseTable -LoadCaseTable"},
    {[] { str_InitCaseTables(&kMail); },
     "17+InitCaseTables +CompileCaseTable -CompileCaseTable 17-InitCaseTables"},
    {[] { str_ReadStrToWkArea(0, nullptr); }, "17+ReadStrToWkArea 17-ReadStrToWkArea"},
    // clang-format on
};

class Traces : public CaseTableTest
{
};

TEST_F(Traces, TellEveryEntryAndExit)
{
    const std::regex unsaid("19(?=[+-])|str_| $"), ofClass19("(^| )[+-]\\w+");
    for (const auto &[call, traces] : kCalls)
        for (const int level : {9, 10}) {
            Sinks sinks;
            er_SubSystemLoggingLevel = level;
            call();
            EXPECT_EQ(std::regex_replace(Sinks::traced, unsaid, ""),
                      level == 10 ? traces : std::regex_replace(traces, ofClass19, ""));
        }
}

} // namespace
