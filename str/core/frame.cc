// SPDX-License-Identifier: Apache-2.0
//
// The core of the protected region: the one frame that owns a jump buffer.
//
// GCC's inter-procedural analysis leaves out stores that a body makes through a reference before a
// call that does not return, when it can see from here into the body: the handler would then read
// stale flags, and no warning says so.  So this source stands alone, its function is closed to
// that analysis, and the library is built with -fno-ipa-modref besides.
#include "str/core/frame.h"

#include <csetjmp>

#if defined(__clang__)
#define STR_OPAQUE __attribute__((noinline))
#else
#define STR_OPAQUE __attribute__((noipa))
#endif

namespace libstr::frame
{

STR_OPAQUE bool RunProtected(void (*body)(void *), void *context)
{
    sigjmp_buf environment;
    sigjmp_buf *const enclosing = er_SetCurrEnv(&environment);
    const bool escaped = sigsetjmp(environment, 0) != 0;
    if (!escaped)
        body(context);
    er_SetCurrEnv(enclosing);
    return !escaped;
}

void PassOn(const char *source, int line)
{
    if (er_GetLive() == 0)
        return;
    er_TraceBeforeJump(source, line);
    siglongjmp(*er_GetCurrEnv(), 1);
}

} // namespace libstr::frame
