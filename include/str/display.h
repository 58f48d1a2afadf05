/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Display width: the columns that a text takes on a character terminal.
 *
 * A character is one column, whatever number of bytes it has; a base unit with its diacritical
 * marks is one column, a space is one, a byte of a raw run is one.  Escape sequences, control
 * functions and DEL take none.
 *
 * None of these functions allocates, keeps anything between calls or raises an escape of its own;
 * an escape raised by a service passes through to the caller.
 */
#ifndef STR_DISPLAY_H
#define STR_DISPLAY_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* The columns of the NUL-terminated `str`.
 *
 * UTF-8 text counts every character, controls and ESC included.  Text of a plain single-byte set
 * without escapes (escMode 0) counts every byte: that path costs two look-ups and a strlen.  All
 * other text is walked segment by segment. */
unsigned int str_dispstrlen(const char *str, const CSDescriptor *cs);

/* The columns of one text segment: the `segLen` bytes at `seg`, in the set of `segCs`, whose csNum
 * is the segment's kind.  Reads nothing beyond the segment but what the length services look at.
 * Where a service cannot tell the length of a unit the count ends there. */
int str_GetDispLen(const char *seg, unsigned int segLen, const CSDescriptor *segCs);

/* The UTF-8 characters in the first `maxLen` bytes of `str`, or up to its NUL when `maxLen` is
 * negative; the NUL ends the text in either case.  A character that the limit cuts is not counted;
 * every byte that belongs to no well-formed character counts as one.  With `countEsc` 0, the ESC
 * bytes (0x1B) of the whole string, up to its NUL, are subtracted. */
int str_utf8DispStrLen(const char *str, int maxLen, int countEsc);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
