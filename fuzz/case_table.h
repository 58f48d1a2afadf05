// SPDX-License-Identifier: Apache-2.0
#ifndef FUZZ_CASE_TABLE_H
#define FUZZ_CASE_TABLE_H

#include "services/services.h"
#include "tests/support/home.h"
#include "tests/support/rules.h"

namespace fuzz
{

// The program's own home, in which it makes no noise.
inline const TempHome &Home()
{
    static const TempHome home;
    er_SetLogSink([](int, const char *) {});
    return home;
}

inline void Demand(bool holds)
{
    if (!holds)
        std::abort();
}

} // namespace fuzz

#endif
