// SPDX-License-Identifier: Apache-2.0
//
// A compiled file of any bytes: it is loaded to what it says, or refused for its first fault.
#include "fuzz/case_table.h"

extern "C" int LLVMFuzzerTestOneInput(const char *bytes, size_t size)
{
    kHome.Write("toupper/6.b", {bytes, size});
    CaseTableRecord record = {};
    const bool done = str_LoadCaseTable("~/toupper/6.b", &record) == 1;
    Demand(TakeRules(done, &record) == RulesOf({bytes, size}));
    return 0;
}
