// SPDX-License-Identifier: Apache-2.0
//
// A home, what was logged and traced, and no case tables afterwards.
#ifndef TESTS_SUPPORT_CASETABLE_H
#define TESTS_SUPPORT_CASETABLE_H

#include "tests/support/home.h"
#include "tests/support/rules.h"
#include "tests/support/test.h"

struct CaseTableTest : testing::Test, Sinks {
    ~CaseTableTest() override { ReleaseTables(); }

    // Nothing is registered, attached or in the work area then.
    static void ReleaseTables()
    {
        for (int32_t i = 0; str_ba == nullptr && i < NumCaseTabs; ++i)
            str_FreeCTEntry(&pCaseTabs[i]);
        os_free(str_ba == nullptr ? pCaseTabs : nullptr);
        str_ba = nullptr;
        pCaseTabs = nullptr;
        NumCaseTabs = 0;
        str_FreeWkArea();
        ccs_SetCSTable(-1, &str_ba);
    }

    const TempHome home;
};

#endif
