// SPDX-License-Identifier: Apache-2.0
//
// The core of a protected region: the one frame that owns a jump buffer.
//
// GCC's inter-procedural analysis leaves out stores that a body makes through a pointer before a
// call that does not return, when it can see from here into the body: the handler would then read
// stale values, and no warning says so.  So the function is closed to that analysis.
#ifndef BASE_PROTECTED_H
#define BASE_PROTECTED_H

#include <csetjmp>

#if defined(__clang__)
#define STR_OPAQUE __attribute__((noinline))
#else
#define STR_OPAQUE __attribute__((noipa))
#endif

namespace libstr
{

// Runs body(context) in an environment of its own.  SetCurrent makes an environment current and
// returns the one that it replaces.  True when the body returned, false when a jump ended it; the
// enclosing environment is current again in both cases.
template <sigjmp_buf *(*SetCurrent)(sigjmp_buf *)>
STR_OPAQUE bool RunProtected(void (*body)(void *), void *context)
{
    sigjmp_buf environment;
    sigjmp_buf *const enclosing = SetCurrent(&environment);
    const bool escaped = sigsetjmp(environment, 0) != 0;
    if (!escaped)
        body(context);
    SetCurrent(enclosing);
    return !escaped;
}

} // namespace libstr

#endif
