// SPDX-License-Identifier: Apache-2.0
//
// What every export shares: trace points and the protected region.
//
// An escape is a siglongjmp to the current error environment, so no frame that it may cross holds
// an object with a non-trivial destructor.  Tracing an exit and restoring an environment are
// therefore plain calls.
#ifndef STR_CORE_FRAME_H
#define STR_CORE_FRAME_H

#include "base/protected.h"

#include <platform/er.h>

#include <type_traits>

// The only instance, defined in frame.cc.
extern template bool libstr::RunProtected<er_SetCurrEnv>(void (*body)(void *), void *context);

namespace libstr::frame
{

inline bool IsTraced() { return er_SubSystemLoggingLevel > 9; }

// An export traces its entry first and its exit last, under its own name.  Both read the level,
// since a host may change it while the export runs.
inline void TraceEntry(const char *name = __builtin_FUNCTION())
{
    if (IsTraced())
        er_RealLogProc(ER_TRACE_CALL, name, 1);
}

inline void TraceExit(const char *name = __builtin_FUNCTION())
{
    if (IsTraced())
        er_RealLogProc(ER_TRACE_CALL, name, 0);
}

// Raises an escape of the library.
[[noreturn]] inline void Raise(const char *source, int code, int line = __builtin_LINE())
{
    er_TracedEscape(ER_CLASS_LIBRARY, code, source, line);
}

// Passes a live escape on to the current environment.  Returns when there is no live escape.
void PassOn(const char *source, int line);

// Runs body() in an error environment of its own.  Returns true when body returned, false when an
// escape ended it.  In both cases the enclosing environment is current again.
template <class Body>
bool RunProtected(Body &body)
{
    const auto call = [](void *context) { (*static_cast<Body *>(context))(); };
    return libstr::RunProtected<er_SetCurrEnv>(call, &body);
}

// Runs body() and forgets an escape that ends it: the error status is restored.
template <class Body>
void Disregard(Body &&body)
{
    er_Status status;
    er_RecordStatus(&status);
    RunProtected(body);
    er_RestoreStatus(&status);
}

// What becomes of an escape that reaches a protected region.
struct Verdict {
    enum { propagate, accept, clear } form;
    int escapeClass; // of the escapes that `accept` swallows
};
constexpr Verdict Propagate() { return {Verdict::propagate, 0}; }
constexpr Verdict Accept(int escapeClass) { return {Verdict::accept, escapeClass}; }
constexpr Verdict Clear() { return {Verdict::clear, 0}; }

inline void Judge(Verdict verdict)
{
    if (verdict.form == Verdict::accept)
        er_Accept(verdict.escapeClass);
    else if (verdict.form == Verdict::clear)
        er_Clear();
}

// The protected region.  Returns true when body() ran to its end.  When an escape ends it:
//
//   1. The enclosing environment becomes current, so an escape from the clean-up goes there.
//   2. release() gives back what the body still held, logs, and stores the results of a failure.
//   3. The verdict is carried out.
//   4. An escape that is still live is passed on.  When there is none, returns false.
//
// Body and release share variables of the caller's frame, captured by reference.  The optimiser
// cannot see from the frame that calls body into body, so all stores of body are in memory when the
// escape arrives.
template <class Body, class Release>
bool Protect(const char *source, Verdict verdict, Body &&body, Release &&release,
             int line = __builtin_LINE())
{
    static_assert(std::is_trivially_destructible_v<std::remove_reference_t<Body>>);
    if (RunProtected(body))
        return true;
    release();
    Judge(verdict);
    PassOn(source, line);
    return false;
}

} // namespace libstr::frame

#endif
