// SPDX-License-Identifier: Apache-2.0
//
// The lock of the case tables: one thread at a time changes the registry, the work area, what is
// prepared and the references of this process.  Whoever only reads takes no lock.
//
// A thread that has the lock may take it again.  No thread has it in a child process, except the
// one that called fork.
#ifndef STR_CORE_EXCLUSIVE_H
#define STR_CORE_EXCLUSIVE_H

#include "str/core/frame.h"

namespace libstr::exclusive
{

void Enter();
void Leave();

// Runs body() with the lock, and passes an escape on without it.
template <class Body>
void Run(const char *source, Body &&body, int line = __builtin_LINE())
{
    Enter();
    frame::Protect(source, frame::Propagate(), body, Leave, line);
    Leave();
}

} // namespace libstr::exclusive

#endif
