// SPDX-License-Identifier: Apache-2.0
//
// A compiled file of any bytes: it loads and can then be read in full, or leaves nothing behind.
#include "fuzz/case_table.h"

extern "C" int LLVMFuzzerTestOneInput(const char *bytes, size_t size)
{
    fuzz::Home().Write("toupper/6.b", {bytes, size});
    fuzz::Load("toupper/6.b");
    return 0;
}
