// SPDX-License-Identifier: Apache-2.0
//
// The error and trace service: escapes, environments, messages.
#include "tests/support/test.h"

#include <fstream>
#include <thread>

namespace
{

[[noreturn]] void Escape(void *) { er_TracedEscape(3, OS_ESC_FILE, "here", 12); }

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
    for (const int accepted : {3, 5}) {
        EXPECT_EQ(er_Protect(Escape, nullptr), 0);
        er_Accept(accepted);
        EXPECT_EQ(er_GetLive() == 0, accepted == 3);
        std::thread([] { EXPECT_TRUE(er_GetLastCode() == 0 && er_GetLive() == 0); }).join();
    }
    er_RestoreStatus(&before);
    EXPECT_EQ(er_GetLastCode(), OS_ESC_MEMORY);
    EXPECT_EQ(er_SetCurrEnv(nullptr), &outer);
}

TEST(ErService, TellsWhatTheLevelAsksFor)
{
    const Sinks sinks;
    er_SetLogSink(nullptr);
    testing::internal::CaptureStderr();
    for (const int level : {9, 10}) {
        er_SubSystemLoggingLevel = level;
        er_SetTraceSink([](int, const char *text, int) { Sinks::traced += text; });
        er_Protect(Escape, nullptr);
        er_LogInfo(1, "why", 0); // once, since every use finds the reason again
        er_Clear();
        er_TraceBeforeJump("there", 34);
        er_SetTraceSink(nullptr);
        er_RealLogProc(ER_TRACE_STARTUP, level == 9 ? "quiet" : "told", 1);
        er_LogInfo(1, "100%s", 0); // each time, as it is not why an escape was raised
    }
    EXPECT_EQ(Sinks::traced, "escape 24002 at here:12passing on 24002 at there:34");
    const std::string why = "libstr: why: "s + er_GetCodeText(OS_ESC_FILE) + " (~ is ";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              why + os_GetHome() +
                  ")\nlibstr: 100%s\nlibstr: trace 17: enter told\nlibstr: 100%s\n");
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
    EXPECT_EQ(Sinks::logged, "200 case table 12.s could not be read\n99999 unknown 1\n");
}

TEST(ErService, EveryCodeHasAMessage)
{
    std::ifstream header(STR_DATA_DIR "/../include/str/codes.h");
    int count = 0;
    for (std::string word, name, number; header >> word;)
        if (word == "#define" && header >> name >> number && name.find("_CLASS_") == name.npos) {
            const int code = std::atoi(number.c_str());
            count += code != 0;
            EXPECT_TRUE(code == 0 || er_GetCodeText(code) != er_GetCodeText(-1)) << name;
        }
    EXPECT_GE(count, 21);
}

TEST(ErServiceDeathTest, AnEscapeWithoutEnvironmentEndsTheProcess)
{
    EXPECT_DEATH(Escape(nullptr), "24002: .*here:12");
}

} // namespace
