// SPDX-License-Identifier: Apache-2.0
//
// A compiled file of any bytes: it is loaded to what it says, or refused for its first fault.  The
// dump of strtool finds something odd in what is refused.
#include "fuzz/case_table.h"
#include "tools/casetable.h"

extern "C" int LLVMFuzzerTestOneInput(const char *bytes, size_t size)
{
    kHome.Write("toupper/6.b", {bytes, size});
    CaseTableRecord record = {};
    const bool done = str_LoadCaseTable("~/toupper/6.b", &record) == 1;
    Demand(TakeRules(done, &record) == RulesOf({bytes, size}));
    static const FILE *const none = stdout = std::fopen("/dev/null", "w");
    Demand(done || (none != nullptr && !strtool::DumpTable(kHome.PathOf("toupper/6.b"))));
    return 0;
}
