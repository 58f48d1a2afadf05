// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_ESCAPE_H
#define TESTS_SUPPORT_ESCAPE_H

#include "services/services.h"

#include <platform/er.h>

#include <functional>

// The code of the escape that ends `body`, which is cleared; 0 when none does.  Escapes are jumps:
// nothing that `body` makes may have a destructor.
inline int Escaped(std::function<void()> body)
{
    const auto call = [](void *function) { (*static_cast<std::function<void()> *>(function))(); };
    if (er_Protect(call, &body) != 0)
        return 0;
    er_Clear();
    return er_GetLastCode();
}

#endif
