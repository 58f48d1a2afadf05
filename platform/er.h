/* SPDX-License-Identifier: Apache-2.0 */
/*
 * er_: error environments, escapes, traces and logs.
 *
 * A failure travels as an escape: er_TracedEscape records an error as the live escape and jumps to
 * the current environment, a sigjmp_buf in the frame of some enclosing function.  The escape stays
 * live until er_Accept, er_Clear or er_RestoreStatus ends it.  A function that handles escapes does
 * its work in a separate function and shares a record with it:
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
 * The handler sees everything that the work stored before the escape.  Do not call sigsetjmp in the
 * function that handles the escape instead: compilers that see how the work ends omit its stores.
 *
 * An escape is a jump.  It runs nothing on its way: no C++ destructor (to jump over one that does
 * something is undefined), no catch, no unlock.  So keep in the record what the work holds, and let
 * the handler release it.
 *
 * A thread begins without an environment.  An escape that is raised or passed on there writes its
 * message to standard error and aborts the process.  To avoid that, call the library from inside
 * er_Protect.
 *
 * A host replaces any function by linking its own definition; those that share the current
 * environment and the live escape (er_SetCurrEnv to er_RestoreStatus) are replaced together.
 * er_Protect may stay: the default one works over any er_SetCurrEnv, and the library does not call
 * it.
 *
 * Threads: the current environment and the live escape belong to the calling thread; the trace
 * level belongs to the process.
 *
 * Texts are NUL-terminated and stay the caller's; no pointer to them is kept.  Only er_TracedEscape
 * raises an escape.
 */
#ifndef PLATFORM_ER_H
#define PLATFORM_ER_H

#include <str/codes.h>

#include <setjmp.h>
#include <stdint.h>

/* Strict C (-std=c11) hides sigjmp_buf, but not the type that it names; to declare it again is
 * harmless where it is visible.  This header does not need sigsetjmp and siglongjmp: a strict C
 * program that calls them defines _POSIX_C_SOURCE before its first include. */
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

/* What er_RecordStatus saves: the live escape.  The library keeps such a record and passes it back,
 * but does not read it. */
typedef struct er_Status {
    int32_t escapeClass;
    int32_t code;
    int32_t live; /* 1: raised and neither accepted nor cleared */
} er_Status;

/* ---- Traces ------------------------------------------------------------------------------- */

/* Writes one trace line.  `text` is the function's name; `marker` is 1 on entry and 0 on exit, and
 * -1 where the service itself says that an escape is raised or passed on.  The caller checks the
 * level.  The default service hands each line to the sink that the host has set.  Without a sink it
 * writes the line to standard error if the level is above 9. */
void er_RealLogProc(int traceClass, const char *text, int marker);

/* ---- Environments and escapes ------------------------------------------------------------- */

/* Makes `env` the current environment and returns the one that it replaces; null means none, both
 * ways.  The service keeps only the pointer: the buffer is the caller's and must last until the
 * returned environment has been put back. */
sigjmp_buf *er_SetCurrEnv(sigjmp_buf *env);

/* Returns the current environment; null for none. */
sigjmp_buf *er_GetCurrEnv(void);

/* Runs body(context) in an environment of its own.  Returns 1 when the body ran to its end, and 0
 * when an escape ended it.  That escape is then still live: er_RecordStatus gives its class and
 * code, er_Accept or er_Clear ends it.  Either way the earlier environment is current again. */
int er_Protect(void (*body)(void *), void *context);

/* Raises an escape: records class and code as the live escape, in place of an earlier one, traces
 * the place, and jumps to the current environment, where sigsetjmp returns 1.  With no environment
 * installed, the default service writes the message to standard error and aborts. */
ER_NORETURN void er_TracedEscape(int escapeClass, int code, const char *sourceFile, int line);

/* Traces the place from which a handler passes the live escape on.  The caller then jumps to
 * er_GetCurrEnv() itself.  With no environment installed, the default service does what
 * er_TracedEscape does then.  If a replacement returns instead, the library says so on standard
 * error and aborts. */
void er_TraceBeforeJump(const char *sourceFile, int line);

/* Ends the live escape if it is of class `escapeClass`; one of another class stays live. */
void er_Accept(int escapeClass);

/* Non-zero while an escape is live. */
int er_GetLive(void);

/* Ends the live escape, whatever its class. */
void er_Clear(void);

/* er_RecordStatus saves the live escape, or that there is none, in `status`.  er_RestoreStatus puts
 * it back and forgets what was raised in between.  The current environment is not part of the
 * status. */
void er_RecordStatus(er_Status *status);
void er_RestoreStatus(const er_Status *status);

/* ---- Logs --------------------------------------------------------------------------------- */

/* Logs the message of `code` with the arguments that follow.  `origin` and `group` are numbers that
 * say where the message comes from and how to file it; only a service gives them a meaning.  The
 * text of `code` decides the number and types of the arguments, strings (const char *) or int.  An
 * int 0 follows the last; do not fetch it as a string. */
void er_LogMsg(int origin, int group, int code, ...);

/* The same, with the types of the arguments in `types`: one "%s" or "%d" for each. */
void er_EnhLogMsg(int origin, int group, int code, const char *types, ...);

/* Logs an informational line: `text` as it is, not a format.  An int 0 without a meaning
 * follows. */
void er_LogInfo(int origin, const char *text, ...);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
