/* SPDX-License-Identifier: Apache-2.0 */
/*
 * cvc_: conversion from one character set to another, which the library uses to upper-case text of
 * the two-byte universal set.  A host replaces it by linking its own definition.
 *
 * A service must know these sets, by name:
 *
 *     UCS2        two bytes a character, the more significant first
 *     UCS2,7      the same characters in UTF-7
 *     UCS2,8      the same characters in UTF-8
 *     UCS2UP, UCS2UP,7, UCS2UP,8   targets only: as above, in upper case
 *
 * The default service:
 *
 * - also converts characters above U+FFFF: in the two-byte form and in UTF-7 they are a pair of
 *   surrogates, in UTF-8 four bytes.  So every set can hold every upper case.  Half a pair is
 *   malformed.
 * - upper-cases as g_utf8_strup does: the upper case may be longer (of U+00DF it is SS), and it is
 *   Turkish in a Turkish locale.
 * - writes UTF-7 in one spelling, whatever the spelling of the source.
 * - also knows the sets of ccs_GetSetInfo that have a name for iconv, as sources and as targets.  A
 *   character that the target does not have makes the conversion fail.
 * - keeps two open converters for each thread, and buffers that grow to its longest texts, until
 *   the thread ends.
 *
 * Threads: any; the result is the calling thread's.
 */
#ifndef PLATFORM_CVC_H
#define PLATFORM_CVC_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* What the library passes as `request` and `options`. */
#define CVC_REQUEST_TEXT 12
#define CVC_OPTIONS_NONE 0

/* Converts the `inLength` bytes at `in` from the set named `from` to the set named `to`.  A NUL
 * character (a zero byte, in the two-byte set two) ends the text earlier; with a negative
 * `inLength` only a NUL ends it.  The text must not lie in an earlier result.
 *
 * `*result` receives the text and `*resultLength` its length in bytes.  The text belongs to the
 * service and lasts until the next conversion in the same thread.  The caller may write to it, and
 * to the one byte after it, to terminate it in place.  The last three arguments each receive an int
 * of the service's own (0 in the default service), which the library does not read.
 *
 * Returns 0.  When there is no such conversion, `in` is null or malformed, or the result would be
 * longer than INT_MAX, returns non-zero, with null for the result and 0 for its length.  Raises
 * OS_ESC_MEMORY of class ER_CLASS_LIBRARY, with the same results.  GLib, which does the conversion,
 * ends the process when it cannot allocate memory of its own. */
int cvc_ConvertString(int request, int options, const char *in, int inLength, const char *from,
                      const char *to, char **result, int *resultLength, int *detail1, int *detail2,
                      int *detail3);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
