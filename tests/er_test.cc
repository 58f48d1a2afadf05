// SPDX-License-Identifier: Apache-2.0
//
// The error and trace service, and what the exports trace through it.
#include "services/services.h"
#include "tests/support/escape.h"

#include <gtest/gtest.h>
#include <platform/ccs.h>
#include <platform/er.h>
#include <platform/os.h>
#include <str/str.h>

#include <climits>
#include <string>
#include <thread>

namespace
{

std::string traced;
std::string logged;

void TakeTrace(int traceClass, const char *text, int marker)
{
    traced += std::to_string(traceClass) + " " + text + " " + std::to_string(marker) + "\n";
}

void TakeLog(int code, const char *text) { logged += std::to_string(code) + ": " + text + "\n"; }

class ErService : public testing::Test
{
  protected:
    ErService()
    {
        traced.clear();
        logged.clear();
        er_SetTraceSink(TakeTrace);
        er_SetLogSink(TakeLog);
    }
    ~ErService() override
    {
        er_SetTraceSink(nullptr);
        er_SetLogSink(nullptr);
        er_SubSystemLoggingLevel = 0;
    }
};

std::string TraceOfWidth(int level, const char *text, CSDescriptor cs)
{
    traced.clear();
    er_SubSystemLoggingLevel = level;
    str_dispstrlen(text, &cs);
    return traced;
}

TEST_F(ErService, WidthTracesItsEntryAndExit)
{
    const CSDescriptor japanese = {1001, 1}, latin = {100, 0}, utf8 = {196, 0};
    EXPECT_EQ(TraceOfWidth(9, "a", japanese), "");
    EXPECT_EQ(TraceOfWidth(10, "a", japanese), "19 str_dispstrlen 1\n19 str_dispstrlen 0\n");
    EXPECT_EQ(TraceOfWidth(10, "a", latin), "19 str_dispstrlen 1\n") << "the quick return";
    EXPECT_EQ(TraceOfWidth(99, "a", utf8), "19 str_dispstrlen 1\n19 str_utf8DispStrLen 1\n"
                                           "19 str_utf8DispStrLen 0\n19 str_dispstrlen 0\n");
    EXPECT_EQ(TraceOfWidth(-1, "a", utf8), "");
    er_SubSystemLoggingLevel = 10;
    traced.clear();
    str_GetDispLen("a", 1, &latin);
    EXPECT_EQ(traced, "") << "a worker";
}

void RaiseClass(void *escapeClass)
{
    er_TracedEscape(*static_cast<int *>(escapeClass), 23801, "here", 12);
}

int ClassThatArrives(int raised, int accepted)
{
    EXPECT_EQ(er_Protect(RaiseClass, &raised), 0);
    er_Accept(accepted);
    const int live = er_GetLive();
    er_Clear();
    return live;
}

TEST_F(ErService, AcceptTakesItsOwnClassAlone)
{
    EXPECT_EQ(ClassThatArrives(3, 3), 0);
    EXPECT_NE(ClassThatArrives(3, 5), 0);
    EXPECT_NE(ClassThatArrives(5, 3), 0);
    EXPECT_EQ(er_GetLive(), 0) << "clear ends any class";
    EXPECT_EQ(er_GetLastCode(), 23801);
}

TEST_F(ErService, StatusIsPutBack)
{
    er_Status status;
    er_RecordStatus(&status);
    ClassThatArrives(3, 5);
    er_RestoreStatus(&status);
    EXPECT_EQ(er_GetLive(), 0);
}

TEST_F(ErService, EscapesAreTracedWhereTheyAreRaisedAndPassedOn)
{
    er_SubSystemLoggingLevel = 10;
    ClassThatArrives(3, 3);
    er_TraceBeforeJump("there", 34);
    EXPECT_EQ(traced, "19 escape 23801 at here:12 -1\n19 passing on 23801 at there:34 -1\n");
    traced.clear();
    er_SubSystemLoggingLevel = 9;
    ClassThatArrives(3, 3);
    EXPECT_EQ(traced, "");
}

TEST_F(ErService, ProtectionPutsTheEnvironmentBack)
{
    sigjmp_buf *inside = nullptr;
    const auto look = [](void *environment) {
        *static_cast<sigjmp_buf **>(environment) = er_GetCurrEnv();
    };
    EXPECT_EQ(er_Protect(look, &inside), 1);
    EXPECT_NE(inside, nullptr);
    ClassThatArrives(3, 3);
    EXPECT_EQ(er_GetCurrEnv(), nullptr);
}

TEST_F(ErService, EnvironmentsBelongToTheirThread)
{
    sigjmp_buf here;
    er_SetCurrEnv(&here);
    sigjmp_buf *elsewhere = &here;
    std::thread([&] { elsewhere = er_GetCurrEnv(); }).join();
    EXPECT_EQ(elsewhere, nullptr);
    EXPECT_EQ(er_GetCurrEnv(), &here);
    er_SetCurrEnv(nullptr);
}

TEST_F(ErService, MessagesTakeTheirArguments)
{
    er_LogMsg(3, 3, 23816, 0);
    er_LogMsg(3, 117, 200, "12.s", 0);
    er_EnhLogMsg(3, 3, 23803, "%s%d", "a.s", 7, 0);
    er_EnhLogMsg(3, 3, 99999, "%s %d", "unknown", 1, 0);
    er_LogMsg(3, 3, 99999, 0);
    er_LogInfo(1, "100%s sure", 0);
    EXPECT_EQ(logged, "23816: an operation on a text was given up\n"
                      "200: case table 12.s could not be read\n"
                      "23803: case table source a.s could not be compiled: line 7\n"
                      "99999: unknown 1\n"
                      "99999: no message for this code\n"
                      "0: 100%s sure\n");
    logged.clear();
    er_EnhLogMsg(3, 3, 23803, "%s%d", std::string(5000, 'x').c_str(), INT_MIN, 0);
    EXPECT_EQ(logged.size(), 1023 + std::string("23803: \n").size()) << "a long name is cut";
    EXPECT_TRUE(logged.ends_with(": line -2147483648\n")) << logged;
}

TEST_F(ErService, EveryCodeOfTheLibraryHasAMessage)
{
    for (const int code :
         {3084, 23801, 23802, 23803, 23805, 23806, 23807, 23808, 23809, 23810, 23811, 23812, 23813,
          23814, 23816, 200, 24070, OS_ESC_MEMORY, OS_ESC_FILE})
        EXPECT_STRNE(er_GetCodeText(code), er_GetCodeText(-1)) << code;
}

TEST(ErServiceDeathTest, AnEscapeWithoutEnvironmentEndsTheProcess)
{
    EXPECT_DEATH(er_TracedEscape(3, OS_ESC_MEMORY, "here", 12), "24001: out of memory .*here:12");
    const auto passOn = [] {
        int escapeClass = 5;
        er_Protect(RaiseClass, &escapeClass);
        er_TraceBeforeJump("there", 34);
    };
    EXPECT_DEATH(passOn(), "23801: .*no error environment, there:34");
}

TEST(ErServiceTraces, AreWrittenWhereTheLevelAsksForThem)
{
    testing::internal::CaptureStderr();
    for (const int level : {9, 10}) {
        er_SubSystemLoggingLevel = level;
        er_RealLogProc(ER_TRACE_STARTUP, level == 9 ? "quiet" : "told", 1);
    }
    er_SubSystemLoggingLevel = 0;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "libstr: trace 17: enter told\n");
}

// Memory that cannot be had is an escape; the block that was to grow is still there.
TEST(OsService, MemoryFailsAsAnEscape)
{
    void *block = os_malloc(0);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(Escaped([&] { block = os_realloc(block, SIZE_MAX / 2 + 1); }), OS_ESC_MEMORY);
    block = os_realloc(block, 100);
    os_free(block);
}

} // namespace
