/* SPDX-License-Identifier: Apache-2.0 */
/*
 * er_: error environments, escapes, traces and logs.
 *
 * An escape is how a failure travels: er_TracedEscape records an error as the live escape and
 * jumps to the current environment, a sigjmp_buf in the frame of some enclosing function.  It stays
 * live until er_Accept, er_Clear or er_RestoreStatus ends it.  A function that protects itself has
 * its work in a function of its own, and what both need in a record:
 *
 *     static void Work(void *context) { struct Job *job = context; ... }
 *
 *     if (!er_Protect(Work, &job)) {
 *         ... release what the job still holds ...
 *         er_Accept(ER_CLASS_LIBRARY);       or er_Clear(), or nothing
 *         if (er_GetLive()) {
 *             er_TraceBeforeJump("source", __LINE__);
 *             siglongjmp(*er_GetCurrEnv(), 1);
 *         }
 *     }
 *
 * Whatever the work stored before the escape is there.  Do not call sigsetjmp in the function that
 * handles the escape instead: compilers that see how the work ends leave out what it stored.
 *
 * An escape is a jump.  It runs nothing on its way: no destructor of C++ (to jump over one that
 * does something is undefined), no catch, no unlock.  So what the work holds stands in the record,
 * and the handler releases it.
 *
 * A thread begins without an environment.  An escape that is raised or passed on there ends the
 * process, with its message on standard error and abort.  Call the library from inside er_Protect
 * wherever that will not do.
 *
 * A host replaces any function by linking its own definition; those that share the current
 * environment and the live escape (er_SetCurrEnv to er_RestoreStatus) go together.  er_Protect need
 * not go with them: the default one works over any er_SetCurrEnv, and the library does not call it.
 *
 * Threads: the current environment and the live escape belong to the calling thread; the trace
 * level is one for the process.
 *
 * Texts are NUL-terminated, stay the caller's, and are done with when the call returns.  Only
 * er_TracedEscape raises an escape.
 */
#ifndef PLATFORM_ER_H
#define PLATFORM_ER_H

#include <str/codes.h>

#include <setjmp.h>
#include <stdint.h>

/* Strict C (-std=c11) hides sigjmp_buf, though not the type behind it; saying it again is harmless
 * where it is visible.  sigsetjmp and siglongjmp are not needed to read this header: who calls
 * them in strict C defines _POSIX_C_SOURCE before the first include. */
typedef jmp_buf sigjmp_buf;

#ifdef __cplusplus
#define ER_NORETURN [[noreturn]]
extern "C" {
#else
#define ER_NORETURN _Noreturn
#endif
#pragma GCC visibility push(default)

/* Trace classes that the library uses. */
#define ER_TRACE_CALL 19    /* entry and exit of an export, when the level is above 9 */
#define ER_TRACE_STARTUP 17 /* entry and exit of the case table start-up, whatever the level */

/* The trace level.  The service owns it; the library reads it at every trace point and never
 * writes it. */
extern int32_t er_SubSystemLoggingLevel;

/* What er_RecordStatus saves: the live escape.  Its holder keeps it, on the stack for instance,
 * and does not look inside. */
typedef struct er_Status {
    int32_t escapeClass;
    int32_t code;
    int32_t live; /* 1: raised and neither accepted nor cleared */
} er_Status;

/* ---- Traces ------------------------------------------------------------------------------- */

/* Writes one trace line.  `text` is the function's name; `marker` is 1 on entry and 0 on exit;
 * lines that the service writes itself, where an escape is raised or passed on, have -1.  The level
 * is the caller's to test.  The default service hands each line to the sink that the host has set;
 * without one it writes the line to standard error, when the level is above 9. */
void er_RealLogProc(int traceClass, const char *text, int marker);

/* ---- Environments and escapes ------------------------------------------------------------- */

/* Makes `env` the current environment and answers the one that it replaces; null stands for none,
 * both ways.  The service keeps the pointer only: the buffer is the caller's and must stay until
 * the answered environment has been put back. */
sigjmp_buf *er_SetCurrEnv(sigjmp_buf *env);

/* The current environment, null for none. */
sigjmp_buf *er_GetCurrEnv(void);

/* Runs body(context) in an environment of its own.  Returns 1 when the body ran to its end, and 0
 * when an escape ended it.  That escape is then still live: er_RecordStatus tells its class and
 * code, er_Accept or er_Clear ends it.  Either way the environment of before is current again. */
int er_Protect(void (*body)(void *), void *context);

/* Raises an escape: records class and code as the live escape, in place of an earlier one, traces
 * the place, and jumps to the current environment, where sigsetjmp returns 1.  With no environment
 * installed, the default service writes the message to standard error and aborts. */
ER_NORETURN void er_TracedEscape(int escapeClass, int code, const char *sourceFile, int line);

/* Traces the place from which a handler passes the live escape on.  The caller then jumps to
 * er_GetCurrEnv() itself.  With no environment installed there is nowhere to jump to: the default
 * service does what er_TracedEscape does then.  If another one returns, the library says so on
 * standard error and aborts. */
void er_TraceBeforeJump(const char *sourceFile, int line);

/* Ends the live escape if it is of class `escapeClass`; one of another class stays live. */
void er_Accept(int escapeClass);

/* Non-zero while an escape is live. */
int er_GetLive(void);

/* Ends the live escape, whatever its class. */
void er_Clear(void);

/* Saves the live escape, or that there is none, in `status`; puts it back, so that whatever was
 * raised in between is forgotten.  The current environment is not part of the status. */
void er_RecordStatus(er_Status *status);
void er_RestoreStatus(const er_Status *status);

/* ---- Logs --------------------------------------------------------------------------------- */

/* Logs the message of `code` with the arguments that follow.  `origin` and `group` say where the
 * message comes from and how to file it, in numbers that mean something to a service only.  The
 * arguments, strings (const char *) or int, are as many and of the types that the text of `code`
 * asks for; an int 0 follows the last and is not to be fetched as a string. */
void er_LogMsg(int origin, int group, int code, ...);

/* The same, with the arguments' types in `types`: one "%s" or "%d" for each. */
void er_EnhLogMsg(int origin, int group, int code, const char *types, ...);

/* Logs an informational line: `text` as it stands, never taken as a format.  An int 0 follows it
 * and carries nothing. */
void er_LogInfo(int origin, const char *text, ...);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
