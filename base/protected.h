// SPDX-License-Identifier: Apache-2.0
//
// The core of a protected region: the one frame that owns a jump buffer.
//
// When GCC's inter-procedural analysis can see from here into the body, it drops stores that the
// body makes through a pointer before a call that does not return.  The handler would then read
// stale values, without a warning.  So the function is closed to that analysis.
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
// returns the one that it replaces.  Returns true when the body returned, false when a jump ended
// it.  In both cases the enclosing environment is current again.
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
