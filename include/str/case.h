/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Case conversion.
 *
 * Each character set with case has a case table (str/casetable.h).  On the first use of a set the
 * library finds its table, and compiles or loads it.  Text of a set without a table has no case and
 * stays as it is.
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

/* Returns the upper case of the `len` bytes at `str`.  A NUL ends the text too; a negative `len`
 * means up to the NUL.  `*outLen` receives the bytes of the result without the NUL that follows it.
 *
 * In a text that switches sets, each segment is converted by the table of its own set.  If the
 * text's set has CS_FLAG_UNIFORM and CS_FLAG_CASE, its own table serves all segments.  Escape
 * sequences and raw bytes stay as they are.  The result may be longer than the text.  GLib converts
 * UTF-8 (g_utf8_strup, in the locale of the process); bytes after `len` have no influence.
 *
 * The result belongs to the library and is valid until the same thread calls str_ToUpper or
 * str_UpShift again, or ends.  The caller does not release it, and `str` must not be in it.
 *
 * Returns null, and leaves `*outLen` as it is, for malformed UTF-8, and when an escape of class
 * ER_CLASS_CONVERSION ends the conversion of other text.  Every other escape, such as
 * OS_ESC_MEMORY, goes on to the caller's environment.  Each of these escapes logs STR_LOG_GIVEN_UP.
 * When there is no memory for UTF-8, GLib ends the process without an escape. */
char *str_ToUpper(const char *str, int len, int *outLen, const CSDescriptor *cs);

/* ---- One set ------------------------------------------------------------------------------- */

/* Stores the case table of the set in `*table` and returns 1.  The table is valid until the table
 * of another set is added.  Returns 0 and stores nothing when the set has none.  On the first use
 * of a set the table is compiled or loaded: see str_InitCaseTables. */
int str_GetTouTable(const CSDescriptor *cs, CaseTableRecord **table);

/* Writes the upper case of the character at `in`, one or two bytes, to `out`, and its number of
 * bytes to `*outLen`.  `avail` bytes of the same run begin at `in`.  Returns the bytes that the
 * character takes, 1 or 2.  A byte without a rule is a character by itself and stays as it is. */
int str_UpShiftChar(const unsigned char *in, int avail, const CaseTableRecord *table,
                    unsigned char *out, int *outLen);

/* Appends the upper case of the `len` bytes at `in`, which are one run, to the thread's upper-case
 * buffer: `buf`, of `*capacity` bytes, of which `*used` are in use.  Begin with null, 0 and 0.
 * Returns the buffer, which may have moved, and updates both counts.  No NUL is written.
 * str_ToUpper uses the same buffer, so each overwrites the result of the other.  Raises
 * OS_ESC_MEMORY. */
unsigned char *str_UpShift(const unsigned char *in, int len, const CaseTableRecord *table,
                           unsigned char *buf, unsigned int *used, unsigned int *capacity);

/* ---- The universal set ---------------------------------------------------------------------
 *
 * Text of the two-byte universal set needs no descriptor and no case table: the conversion service
 * (platform/cvc.h) converts it.  `variant` is the form of the text:
 *
 *     3                UTF-7
 *     4                UTF-8
 *     any other value  two bytes a character, the more significant one first
 *
 * The library raises no escape here; an escape of a service passes through.
 */

/* Returns the upper case of the `inLen` bytes at `in`; with -1, up to the NUL, which is a pair of
 * zero bytes in the two-byte form.  `*outLen` receives the bytes of the result.
 *
 * Returns null when the service gives no text.  The default service gives none, and stores 0, when
 * `in` is malformed or null, or the result would be longer than INT_MAX bytes.  The result belongs
 * to the service, may have no NUL after it, and is valid until the next conversion. */
char *str_ToUpperUni(const char *in, int inLen, int *outLen, int variant);

/* Compares the upper case of two NUL-terminated texts byte by byte, as strcmp does: returns a
 * negative value, 0 or a positive value.  A text that is empty or cannot be converted is compared
 * as it is.  Null is less than any text.
 *
 * Use it for UTF-7 and UTF-8.  Two-byte text is compared only up to its first zero byte, which may
 * be half a character.
 *
 * The upper case of `s1` is copied to a buffer of the thread, which grows to the longest one. */
int str_strcasecmpUni(const char *s1, const char *s2, int variant);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
