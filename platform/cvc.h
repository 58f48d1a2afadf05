/* SPDX-License-Identifier: Apache-2.0 */
/*
 * cvc_: conversion from one character set to another, which the library uses to upper-case text of
 * the two-byte universal set.  A host replaces it by linking its own definition.
 *
 * The sets that a service must know, by name:
 *
 *     UCS2        two bytes a character, the more significant first
 *     UCS2,7      the same characters in UTF-7
 *     UCS2,8      the same characters in UTF-8
 *     UCS2UP, UCS2UP,7, UCS2UP,8   targets only: as above, in upper case
 *
 * The default service:
 *
 * - takes and gives characters beyond U+FFFF too: in the two-byte form and in UTF-7 as a pair of
 *   surrogates, in UTF-8 as four bytes.  So there is no upper case that a set cannot hold.  Half a
 *   pair is malformed.
 * - upper-cases as g_utf8_strup does, so that the upper case may be longer (of U+00DF it is SS) and
 *   is Turkish in a Turkish locale.
 * - gives UTF-7 in one spelling, whichever the source had.
 * - knows the sets of ccs_GetSetInfo that have a name for iconv, too, as sources and as targets.  A
 *   character that the target does not have makes the conversion fail.
 * - keeps two converters open for each thread, and buffers that grow to its longest texts, until
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
 * character ends the text before that, and alone where `inLength` is negative: a byte of 0, in the
 * two-byte set a pair.  The text must not lie in an earlier result.
 *
 * `*result` receives the text and `*resultLength` its bytes.  The text belongs to the service,
 * until the next conversion in the same thread; the caller may write to it, and to the one byte
 * behind it, to terminate it in place.  What is stored through the last three arguments is the
 * service's own (0 in the default service); they point to an int each, and the library does not
 * read them.
 *
 * Answers 0.  When there is no such conversion, `in` is null or malformed, or the result would be
 * longer than INT_MAX, answers non-zero, with null for the result and 0 for its length.  Raises
 * OS_ESC_MEMORY of class ER_CLASS_LIBRARY, with the same results; GLib, which does the conversion,
 * ends the process when it cannot have memory of its own. */
int cvc_ConvertString(int request, int options, const char *in, int inLength, const char *from,
                      const char *to, char **result, int *resultLength, int *detail1, int *detail2,
                      int *detail3);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
