/* SPDX-License-Identifier: Apache-2.0 */
/*
 * What the default services offer beyond the contracts in platform/: the knobs that a host may
 * turn and the tables that a tool may show.  The library itself never includes this header.
 */
#ifndef SERVICES_SERVICES_H
#define SERVICES_SERVICES_H

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

/* Sends traces (logs) to `sink`, or with a null pointer back to standard error, where they go
 * until a host says otherwise.  One sink serves the whole process; set it before other threads
 * start.  A sink must not raise an escape. */
void er_SetTraceSink(er_TraceSink sink);
void er_SetLogSink(er_LogSink sink);

/* The catalogue's text for `code`, with %s and %d where its arguments go; a general text for a
 * code that the catalogue does not hold.  Never null; the text is constant. */
const char *er_GetCodeText(int32_t code);

/* The code of the live escape or of the last one accepted or cleared in this thread; 0 before the
 * first. */
int32_t er_GetLastCode(void);

/* ---- ccs_: the table of character sets --------------------------------------------------- */

/* One row of the table.  All texts are constant and live as long as the process. */
typedef struct ccs_SetInfo {
    uint16_t number;         /* csNum of a descriptor, kind of a segment */
    uint16_t escMode;        /* what ccs_GetCSDescriptor stores for this set */
    uint32_t flags;          /* CS_FLAG_... */
    int32_t bytes;           /* bytes per character; for sets of mixed lengths, of the shortest */
    const char *name;        /* what ccs_GetCSDescriptor looks up and ccs_GetCSName answers */
    const char *iconvName;   /* how iconv calls the same code, or null where it knows none */
    const char *designation; /* escape sequence that designates the set, or null */
} ccs_SetInfo;

/* The number of sets; and the set at `index` (0 up to that number less one) stored in `out`, for
 * which it answers 1, or 0 outside. */
int ccs_GetSetCount(void);
int ccs_GetSetInfo(int index, ccs_SetInfo *out);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
