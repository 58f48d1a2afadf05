// SPDX-License-Identifier: Apache-2.0
//
// A source of any bytes: what compiles is in the file; what does not leaves none.
#include "fuzz/case_table.h"

extern "C" int LLVMFuzzerTestOneInput(const char *bytes, size_t size)
{
    kHome.Remove("toupper/6.b");
    kHome.Write("toupper/6.s", {bytes, size});
    CaseTableRecord record = {};
    const bool done = str_CompileCaseTable("~/toupper/6.s", "~/toupper/6.b", &record) == 1;
    const std::string rules = TakeRules(done, &record), file = kHome.Read("toupper/6.b");
    Demand(rules != "not clear" && (done ? rules == RulesOf(file) : file.empty()));
    return 0;
}
