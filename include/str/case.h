/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Case conversion.
 *
 * Each character set with case has a case table (str/casetable.h), which is found, and compiled or
 * loaded, on the set's first use.  Text without a table has no case and stays as it is.
 */
#ifndef STR_CASE_H
#define STR_CASE_H

#include <str/casetable.h>
#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- Texts --------------------------------------------------------------------------------- */

/* The upper case of the `len` bytes at `str`, or up to its NUL when `len` is negative; a NUL before
 * `len` ends the text too.  `*outLen` receives the bytes of the result, without the NUL behind it.
 *
 * In a text that switches sets each segment takes the table of its own set, unless the text's set
 * has CS_FLAG_UNIFORM and CS_FLAG_CASE: then the text's own serves all.  Escape sequences and raw
 * bytes stay as they are.  The result may be longer than the text.  UTF-8 is GLib's to upper-case
 * (g_utf8_strup, in the locale of the process), and nothing beyond `len` bears on it.
 *
 * The result belongs to the library until the next call of str_ToUpper or str_UpShift; the caller
 * does not release it, and `str` must not lie in it.  One call at a time may run in a process.
 *
 * Returns null, and leaves `*outLen` as it is, for malformed UTF-8, and when an escape of class 5
 * ended the work on other text.  Other escapes go on to the caller's environment; those of class 3,
 * such as OS_ESC_MEMORY, are among them.  Each escape that ends the work is logged (23816).  For
 * UTF-8 there is none when memory runs out: GLib then ends the process. */
char *str_ToUpper(const char *str, int len, int *outLen, const CSDescriptor *cs);

/* ---- One set ------------------------------------------------------------------------------- */

/* Stores the case table of the set in `*table`, good until another set's is added, and returns 1;
 * returns 0 and stores nothing when the set has none.  On the first use of a set the table is
 * compiled or loaded: see str_InitCaseTables. */
int str_GetTouTable(const CSDescriptor *cs, CaseTableRecord **table);

/* The upper case of the one character at `in`, where `avail` bytes of the same run begin.  Writes
 * its one or two bytes to `out`, and their number to `*outLen`; returns the bytes it was made from,
 * 1 or 2.  A byte without a rule is a character of its own and stays as it is. */
int str_UpShiftChar(const unsigned char *in, int avail, const CaseTableRecord *table,
                    unsigned char *out, int *outLen);

/* Appends the upper case of the `len` bytes at `in`, of one run, to the library's upper-case buffer:
 * `buf`, of `*capacity` bytes, the first `*used` of them in use.  Begin with all three null and 0.
 * Returns the buffer, which may have moved, and updates both counts; no NUL is written.  The buffer
 * is that of str_ToUpper, so each overwrites what the other left there. */
unsigned char *str_UpShift(const unsigned char *in, int len, const CaseTableRecord *table,
                           unsigned char *buf, unsigned int *used, unsigned int *capacity);

/* ---- The universal set ---------------------------------------------------------------------
 *
 * Text of the two-byte universal set needs no descriptor and no case table: the conversion service
 * (platform/cvc.h) upper-cases it.  `variant` says in which form it is:
 *
 *     3       UTF-7
 *     4       UTF-8
 *     others  two bytes a character, the more significant first
 *
 * An escape is raised by a service alone, and passes through.
 */

/* The upper case of the `inLength` bytes at `in`, or up to its NUL (in the two-byte form, a pair of
 * zero bytes) when that is -1.  `*outLen` receives its bytes.
 *
 * Returns null when the service gives no text.  The default one gives none, and stores 0, when `in`
 * is malformed or null, or the result would be longer than INT_MAX bytes.  The text belongs to the
 * service, which need not put a NUL behind it, and lasts until the next conversion. */
char *str_ToUpperUni(const char *in, int inLen, int *outLen, int variant);

/* Compares the upper case of two NUL-terminated texts byte by byte, as strcmp does: negative, 0 or
 * positive.  A text that cannot be upper-cased, or is empty, is compared as it stands; null is less
 * than any text.
 *
 * strcmp sees two-byte text only as far as its first zero byte, which may be half a character, so
 * the forms to compare are UTF-7 and UTF-8.
 *
 * The upper case of `s1` is copied to a buffer of the library, which grows to the longest one and
 * is never released.  One comparison at a time may run in a process. */
int str_strcasecmpUni(const char *s1, const char *s2, int variant);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
