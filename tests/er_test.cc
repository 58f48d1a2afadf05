// SPDX-License-Identifier: Apache-2.0
//
// The error and trace service: escapes, environments, messages.
#include "services/services.h"
#include "tests/support/escape.h"
#include "tests/support/sinks.h"

#include <gtest/gtest.h>
#include <platform/os.h>
#include <str/codes.h>

#include <climits>
#include <fstream>
#include <regex>
#include <sstream>
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

TEST(ErService, EscapesEndByTheirClassOrAreCleared)
{
    er_Status before;
    er_RecordStatus(&before);
    EXPECT_EQ(LiveAfter(3, 3), 0);
    EXPECT_NE(LiveAfter(3, 5), 0);
    EXPECT_NE(LiveAfter(5, 3), 0);
    EXPECT_EQ(er_GetLive(), 0);
    EXPECT_EQ(er_GetLastCode(), OS_ESC_FILE);
    er_RestoreStatus(&before);
    EXPECT_EQ(er_GetLastCode(), before.code);
}

TEST(ErService, EscapesAreTracedWhereTheLevelAsksForThem)
{
    static std::string places;
    const Sinks sinks;
    er_SetTraceSink(
        [](int, const char *text, int marker) { places += std::to_string(marker) + text + " "; });
    for (const int level : {9, 10}) {
        er_SubSystemLoggingLevel = level;
        LiveAfter(3, 3);
        er_TraceBeforeJump("there", 34);
    }
    EXPECT_EQ(places, "-1escape 24002 at here:12 -1passing on 24002 at there:34 ");
    testing::internal::CaptureStderr();
    er_SetTraceSink(nullptr);
    er_SetLogSink(nullptr);
    for (const int level : {9, 10}) {
        er_LogInfo(1, "said", 0); // each time, as it is not why an escape was raised
        er_SubSystemLoggingLevel = level;
        er_RealLogProc(ER_TRACE_STARTUP, level == 9 ? "quiet" : "told", 1);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "libstr: said\nlibstr: said\nlibstr: trace 17: enter told\n");
}

TEST(ErService, EnvironmentsAreTheThreadsAndComeBack)
{
    static sigjmp_buf outer, *inside, *elsewhere = &outer;
    EXPECT_EQ(er_SetCurrEnv(&outer), nullptr);
    EXPECT_EQ(er_Protect([](void *) { inside = er_GetCurrEnv(); }, nullptr), 1);
    EXPECT_TRUE(inside != nullptr && inside != &outer);
    LiveAfter(3, 3);
    std::thread([] { elsewhere = er_GetCurrEnv(); }).join();
    EXPECT_EQ(elsewhere, nullptr);
    EXPECT_EQ(er_SetCurrEnv(nullptr), &outer);
}

TEST(ErService, MessagesTakeTheirArguments)
{
    const Sinks sinks;
    er_LogMsg(3, 3, STR_LOG_GIVEN_UP, 0);
    er_LogMsg(3, 117, STR_LOG_NO_TABLE, "12.s", 0);
    er_EnhLogMsg(3, 3, STR_LOG_NOT_COMPILED, "%s%d", "a.s", 7, 0);
    er_EnhLogMsg(3, 3, 99999, "%s %d", "unknown", 1, 0);
    er_LogMsg(3, 3, 99999, 0);
    er_LogInfo(1, "100%s sure", 0);
    EXPECT_EQ(Sinks::logged, "23816 an operation on a text was given up\n"
                             "200 case table 12.s could not be read\n"
                             "23803 case table source a.s could not be compiled: line 7\n"
                             "99999 unknown 1\n"
                             "99999 no message for this code\n"
                             "0 100%s sure\n");
    Sinks::logged.clear();
    er_EnhLogMsg(3, 3, STR_LOG_NOT_COMPILED, "%s%d", std::string(5000, 'x').c_str(), INT_MIN, 0);
    EXPECT_EQ(Sinks::logged.size(), std::string("23803 \n").size() + 1023) << "a long name is cut";
    EXPECT_TRUE(Sinks::logged.ends_with(": line -2147483648\n")) << Sinks::logged;
}

TEST(ErService, EveryCodeHasAMessage)
{
    std::ostringstream text;
    text << std::ifstream(STR_DATA_DIR "/../include/str/codes.h").rdbuf();
    const std::string header = text.str();
    const std::regex definition(R"(#define \w+_(ESC|LOG)_\w+[\s\\]+(\d+))");
    int codes = 0;
    for (std::sregex_iterator at(header.begin(), header.end(), definition), end; at != end; ++at)
        EXPECT_STRNE(er_GetCodeText((++codes, std::stoi(at->str(2)))), er_GetCodeText(-1))
            << at->str();
    EXPECT_GE(codes, 21);
}

TEST(ErServiceDeathTest, AnEscapeWithoutEnvironmentEndsTheProcess)
{
    EXPECT_DEATH(er_TracedEscape(3, OS_ESC_MEMORY, "here", 12), "24001: out of memory .*here:12");
    const auto passOn = [] {
        er_SetCurrEnv(nullptr);
        const er_Status live = {5, OS_ESC_FILE, 1};
        er_RestoreStatus(&live);
        er_TraceBeforeJump("there", 34);
    };
    EXPECT_DEATH(passOn(), "24002: .*no error environment, there:34");
}

} // namespace
