// SPDX-License-Identifier: Apache-2.0
#ifndef FUZZ_CASE_TABLE_H
#define FUZZ_CASE_TABLE_H

#include "services/services.h"
#include "tests/support/home.h"
#include "tests/support/rules.h"

// The program's own home, in which it makes no noise.
inline const TempHome kHome = (er_SetLogSink([](int, const char *) {}), TempHome());

inline void Demand(bool holds, int line = __builtin_LINE())
{
    if (!holds && std::fprintf(stderr, "the demand in line %d does not hold\n", line) > 0)
        std::abort();
}

#endif
