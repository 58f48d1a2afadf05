// SPDX-License-Identifier: Apache-2.0
//
// A source of any bytes: what compiles loads again and is the same; what does not leaves no file.
#include "fuzz/case_table.h"

#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const char *bytes, size_t size)
{
    const std::string source = fuzz::PathOf("toupper/6.s"), compiled = fuzz::PathOf("toupper/6.b");
    unlink(compiled.c_str());
    fuzz::Home().Write("toupper/6.s", {bytes, size});
    CaseTableRecord record = {};
    const int done = str_CompileCaseTable(source.c_str(), compiled.c_str(), &record);
    const std::string table = fuzz::Taken(done, &record);
    fuzz::Demand(table == fuzz::Load("toupper/6.b"));
    return 0;
}
