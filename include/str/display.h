/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Display width: the columns that a text takes on a character terminal.
 *
 * A character is one column, whatever number of bytes it has, and also where a terminal draws it
 * two cells wide.  A base unit with its diacritical marks is one column, a space is one, a byte of
 * a raw run is one.  Escape sequences, control functions and DEL take none.  UTF-8, and plain
 * single-byte sets without escapes, are counted more simply: see str_dispstrlen.
 *
 * None of these functions allocates or keeps anything between calls.  A number that the result
 * cannot say raises OS_ESC_MEMORY, of class 3; an escape that a service raises passes through.
 */
#ifndef STR_DISPLAY_H
#define STR_DISPLAY_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Returns the columns of the NUL-terminated `str`.
 *
 * UTF-8 text counts every character, controls and ESC included.  Text of a plain single-byte set
 * (CS_FLAG_BYTE without CS_FLAG_T61) without escapes (escMode 0) counts every byte, controls
 * included.  All other text is walked segment by segment. */
unsigned int str_dispstrlen(const char *str, const CSDescriptor *cs);

/* Returns the columns of one text segment: the `segLen` bytes at `seg`, in the set of `segCs`,
 * whose csNum is the segment's kind.  Reads nothing beyond the segment, and nothing after a NUL in
 * it.  Where a service cannot tell the length of a unit the count ends, and that unit has been
 * counted if it is a character. */
int str_GetDispLen(const char *seg, unsigned int segLen, const CSDescriptor *segCs);

/* Returns the UTF-8 characters in the first `maxLen` bytes of `str`, or up to its NUL when `maxLen`
 * is negative; the NUL ends the text in either case.  A character that the limit cuts is not
 * counted; every byte that belongs to no well-formed character counts as one.
 *
 * With `countEsc` 0, the ESC bytes (0x1B) of the whole string are subtracted, those after the limit
 * too: the string is then read up to its NUL, and the result may be negative.  Otherwise no more
 * than `maxLen` bytes are read. */
int str_utf8DispStrLen(const char *str, int maxLen, int countEsc);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
