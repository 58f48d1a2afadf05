// SPDX-License-Identifier: Apache-2.0
//
// What each export traces: its entry and its exit, around those of the exports that it calls.
#include "tests/support/calls.h"
#include "tests/support/casetable.h"

#include <sstream>

namespace
{

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
    static CaseTableRecord record;
    const std::pair<void (*)(Own &), const char *> others[] = {
        // of class 17 "name[]"
        // clang-format off
        {CALL(str_CompileCaseTable("~/none", "~/none.b", &record)), "CompileCaseTable()"},
        {CALL(str_LoadCaseTable("~/none.b", &record)), "LoadCaseTable()"},
        {CALL(str_InitCaseTables(&kMail) == nullptr), "InitCaseTables[CompileCaseTable()]"},
        {CALL(str_ReadStrToWkArea(0, nullptr)), "ReadStrToWkArea[]"},
        // clang-format on
    };
    Own own;
    const auto check = [&](auto call, const std::string &traces) {
        call(own); // for the case tables
        const Sinks sinks;
        er_SubSystemLoggingLevel = 10;
        call(own);
        EXPECT_EQ(Shown(), traces);
        Sinks::traced.clear();
        er_SubSystemLoggingLevel = 9;
        call(own);
        EXPECT_EQ(Shown().find('('), std::string::npos);
    };
    for (const auto &[call, traces] : others)
        check(call, traces);
    std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper"));
    for (const auto &[call, traces] : kCalls)
        check(call, traces);
}

} // namespace
