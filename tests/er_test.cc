// SPDX-License-Identifier: Apache-2.0
//
// The error and trace service: escapes, environments, messages.
#include "tests/support/test.h"

#include <fstream>
#include <regex>
#include <thread>

namespace
{

// What of an escape of class `raised` is live once class `accepted` is accepted.
int LiveAfter(int raised, int accepted)
{
    const auto raise = [](void *escapeClass) {
        er_TracedEscape(*static_cast<int *>(escapeClass), OS_ESC_FILE, "here", 12);
    };
    EXPECT_EQ(er_Protect(raise, &raised), 0);
    er_Accept(accepted);
    const int live = er_GetLive();
    er_Clear();
    return live;
}

TEST(ErService, EscapesAndEnvironmentsAreTheThreads)
{
    static sigjmp_buf outer, *inside;
    er_Status before = {5, OS_ESC_MEMORY, 0};
    er_RestoreStatus(&before);
    before = {};
    er_RecordStatus(&before);
    EXPECT_EQ(er_SetCurrEnv(&outer), nullptr);
    EXPECT_EQ(er_Protect([](void *) { inside = er_GetCurrEnv(); }, nullptr), 1);
    EXPECT_TRUE(inside != nullptr && inside != &outer);
    EXPECT_TRUE(LiveAfter(3, 3) == 0 && LiveAfter(3, 5) != 0 && LiveAfter(5, 3) != 0);
    EXPECT_EQ(er_GetLive(), 0) << "cleared";
    EXPECT_EQ(er_GetLastCode(), OS_ESC_FILE);
    std::thread([] { EXPECT_TRUE(er_GetCurrEnv() == nullptr && er_GetLastCode() == 0); }).join();
    er_RestoreStatus(&before);
    EXPECT_EQ(er_GetLastCode(), OS_ESC_MEMORY);
    EXPECT_EQ(er_SetCurrEnv(nullptr), &outer);
}

TEST(ErService, EscapesAreTracedWhereTheLevelAsksForThem)
{
    const Sinks sinks;
    const auto trace = [](int, const char *text, int) { Sinks::traced += text + std::string(" "); };
    testing::internal::CaptureStderr();
    for (const int level : {9, 10}) {
        er_SubSystemLoggingLevel = level;
        er_SetTraceSink(trace);
        LiveAfter(3, 3);
        er_TraceBeforeJump("there", 34);
        er_SetTraceSink(nullptr);
        er_SetLogSink(nullptr);
        er_RealLogProc(ER_TRACE_STARTUP, level == 9 ? "quiet" : "told", 1);
        er_LogInfo(1, "said", 0); // each time, as it is not why an escape was raised
    }
    EXPECT_EQ(Sinks::traced, "escape 24002 at here:12 passing on 24002 at there:34 ");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "libstr: said\nlibstr: trace 17: enter told\nlibstr: said\n");
}

TEST(ErService, MessagesTakeTheirArguments)
{
    const Sinks sinks;
    const std::string name(5000, 'x'), begin = "23803 case table source ",
                                       end = " could not be compiled: line -2147483648\n";
    er_EnhLogMsg(3, 3, STR_LOG_NOT_COMPILED, "%s%d", name.c_str(), INT_MIN, 0);
    EXPECT_EQ(Sinks::logged, begin + name.substr(5000 - 1030 + begin.size() + end.size()) + end);
    Sinks::logged.clear();
    er_LogMsg(3, 117, STR_LOG_NO_TABLE, "12.s", 0);
    er_EnhLogMsg(3, 3, 99999, "%s %d", "unknown", 1, 0);
    er_LogMsg(3, 3, 99999, 0);
    er_LogInfo(1, "100%s sure", 0);
    EXPECT_EQ(Sinks::logged, "200 case table 12.s could not be read\n99999 unknown 1\n"
                             "99999 no message for this code\n0 100%s sure\n");
}

TEST(ErService, EveryCodeHasAMessage)
{
    std::ifstream header(STR_DATA_DIR "/../include/str/codes.h");
    std::string text;
    std::getline(header, text, '\0');
    const std::regex definition(R"(#define \w+_(ESC|LOG)_\w+[\s\\]+(\d+))");
    std::sregex_iterator at(text.begin(), text.end(), definition), end;
    EXPECT_GE(std::distance(at, end), 21);
    for (; at != end; ++at)
        EXPECT_STRNE(er_GetCodeText(std::stoi(at->str(2))), er_GetCodeText(-1)) << at->str();
}

TEST(ErServiceDeathTest, AnEscapeWithoutEnvironmentEndsTheProcess)
{
    EXPECT_DEATH(er_TracedEscape(3, OS_ESC_MEMORY, "here", 12), "24001: out of memory .*here:12");
    const er_Status live = {5, OS_ESC_FILE, 1};
    EXPECT_DEATH((er_RestoreStatus(&live), er_TraceBeforeJump("there", 34)),
                 "24002: .*no error environment, there:34");
}

} // namespace
