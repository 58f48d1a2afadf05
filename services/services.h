/* SPDX-License-Identifier: Apache-2.0 */
/*
 * What the default services offer beyond the contracts in platform/: the knobs that a host may
 * turn and the tables that a tool may show.  The library itself never includes this header.
 */
#ifndef SERVICES_SERVICES_H
#define SERVICES_SERVICES_H

#include <platform/er.h>

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- er_: where traces and logs go ------------------------------------------------------- */

/* Receives one trace line: its class, its text and its marker (1 on entry, 0 on exit, -1 for the
 * points where an escape is raised or passed on). */
typedef void (*er_TraceSink)(int traceClass, const char *text, int marker);

/* Receives one log line: the code (0 for an informational line) and the finished text. */
typedef void (*er_LogSink)(int code, const char *text);

/* Sends traces (logs) to `sink`; with null to standard error, which is the default.  A sink gets
 * every line.  Standard error gets traces only when er_SubSystemLoggingLevel is above 9.  It gets
 * the reason why a set has no case table once, although each use of the set tries again.  One sink
 * serves the whole process; set it before other threads start.  A sink must not raise an escape. */
void er_SetTraceSink(er_TraceSink sink);
void er_SetLogSink(er_LogSink sink);

/* Returns the catalogue's text for `code`, with %s and %d in place of its arguments; a general text
 * for a code that the catalogue does not have.  Never null; the text is constant. */
const char *er_GetCodeText(int32_t code);

/* Returns the code of this thread's live escape, or of the last one accepted or cleared; 0 before
 * the first. */
int32_t er_GetLastCode(void);

/* ---- os_: the service home --------------------------------------------------------------- */

/* Makes `dir` the service home of the process: the directory that "~/" means at the beginning
 * of a path.  The text is copied; null or an empty text goes back to the default, which is the
 * first of these that there is:
 *
 * - the environment variable STR_HOME, where it is not empty;
 * - the directory that lies from the file of these services (the shared library, or the program
 *   that they are linked into) as the installed home lies from the libraries (or the programs),
 *   where it exists: so an installed tree may be moved;
 * - what the services were built with (STR_DEFAULT_HOME).
 *
 * A program that runs with the rights of another user takes the last.  Set the home before other
 * threads start.
 *
 * Returns 0, or -1 for a text of PATH_MAX bytes or more, which changes nothing. */
int os_SetHome(const char *dir);

/* Returns the service home; never null.  The text lasts until the next os_SetHome or change of the
 * environment. */
const char *os_GetHome(void);

/* ---- lkf_: how long to wait -------------------------------------------------------------- */

/* Sets how long lkf_LockFile waits for a lock, in milliseconds: 0 for not at all, negative for as
 * long as it takes.  The default is 30,000; one value serves the whole process. */
void lkf_SetPatience(int milliseconds);

/* ---- ccs_: the table of character sets --------------------------------------------------- */

/* One row of the table.  All texts are constant and live as long as the process. */
typedef struct ccs_SetInfo {
    uint16_t number;         /* csNum of a descriptor, kind of a segment */
    uint16_t escMode;        /* what ccs_GetCSDescriptor stores for this set */
    uint32_t flags;          /* CS_FLAG_... */
    int32_t bytes;           /* bytes per character; for sets of mixed lengths, of the shortest */
    const char *name;        /* what ccs_GetCSDescriptor looks up and ccs_GetCSName returns */
    const char *iconvName;   /* iconv's name for the same code, or null if it does not know it */
    const char *designation; /* escape sequence that designates the set, or null */
    const char *aliases;     /* further names, IANA's, with spaces between them; may be empty */
} ccs_SetInfo;

/* ccs_GetSetCount returns the number of sets.  ccs_GetSetInfo stores the set at `index`, which
 * counts from 0, in `out` and returns 1; it returns 0 if there is no such index. */
int ccs_GetSetCount(void);
int ccs_GetSetInfo(int index, ccs_SetInfo *out);

/* A table of ccs_GetSetCount() record numbers (uint16_t, in the order of ccs_GetSetInfo, 0 for
 * none) registers which case table serves which set.  Every process has one of its own and may use
 * another: a server that publishes case tables in a shared segment puts a table of zeros, aligned
 * for uint16_t, into the segment and hands it to str_ReadStrToWkArea.  Every process that attaches
 * the case tables attaches that table too, with ccs_SetCSTable.
 *
 * `csTable` is the address of a table and `companion` its length, the two values of ccs_GetCSTable.
 * Null, or the length of services that know other sets, means the process's own table, here and in
 * ccs_PutToUpperByCSNum. */

/* Makes `csTable` the table of registrations of the process; it stays the caller's and must last.
 * Null brings the process's own table back.  So does a wrong length, but that also empties the
 * process's own table, whose registrations are for other case tables than those that come with
 * `csTable`.  Other threads may go on: until str_AttachSMem has attached the case tables that come
 * with it, a set may have none for them, or another's. */
void ccs_SetCSTable(int32_t companion, void *csTable);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
