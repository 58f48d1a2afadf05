/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Concatenation and search.
 *
 * Where a text ends in a set other than ASCII and the next begins with ASCII, the escape sequences
 * that switch back are put between the two: a plain strcat would make the second be read in the set
 * of the first.  What counts is the last character: an escape sequence that stands behind it at the
 * very end, with nothing to switch for, stays in force.  A byte is found only where it is a
 * character of its own.
 *
 * Destinations are the caller's, NUL-terminated, and have room for the result: what they hold, the
 * escape sequences (at most 81 bytes), the text and its NUL.  Nothing is allocated or kept between
 * calls; no escape is raised but by a service, and then passes through.
 */
#ifndef STR_CONCAT_H
#define STR_CONCAT_H

#include <str/charset.h>

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* The escape sequences to put between `dst` and `src` when `src` is appended to it; null when none
 * are needed.  They are NUL-terminated, belong to the character set service, and last until the
 * next call in the same thread.  `*escLen` receives their bytes, 0 for none; in a set without
 * CS_FLAG_ESCAPES it is not written. */
const char *str_GetEscapes(const char *dst, const char *src, const CSDescriptor *cs, int *escLen);

/* Appends `src` to `dst`, after the escape sequences that are needed.  Returns `dst`. */
char *str_strcat(char *dst, const char *src, const CSDescriptor *cs);

/* The same with at most `n` bytes of `src`, which may cut a character, and a NUL.  The escape
 * sequences are appended whole and are not counted. */
char *str_strncat(char *dst, const char *src, size_t n, const CSDescriptor *cs);

/* The first byte `ch` of `str` that is a character of its own; null for none.
 *
 * With escMode 0 this is strchr: the NUL can be found, and every byte.  Otherwise segments in ASCII
 * sets are searched (in a string of a plain single-byte set, all text segments), the NUL is never
 * found, and bytes from 0x80 on are found by their value as a signed char. */
char *str_strchr(const char *str, int ch, const CSDescriptor *cs);

/* The first of the `len` bytes at `seg` whose value as a signed char is `ch`; null for none. */
char *str_dostrchr(const char *seg, int ch, unsigned int len);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
