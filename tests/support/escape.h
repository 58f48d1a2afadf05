// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_ESCAPE_H
#define TESTS_SUPPORT_ESCAPE_H

#include "services/services.h"

#include <platform/er.h>

#include <csetjmp>
#include <functional>

// The code of the escape that ends `body`, which is cleared; 0 when none does.  Escapes are jumps:
// nothing that `body` makes may have a destructor.
inline int Escaped(const std::function<void()> &body)
{
    sigjmp_buf here;
    sigjmp_buf *const outer = er_SetCurrEnv(&here);
    if (sigsetjmp(here, 0) == 0) {
        body();
        er_SetCurrEnv(outer);
        return 0;
    }
    er_SetCurrEnv(outer);
    er_Clear();
    return er_GetLastCode();
}

#endif
