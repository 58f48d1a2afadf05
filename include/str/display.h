/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Display width: the columns that a text takes on a character terminal.
 *
 * A character takes one column, whatever its number of bytes, and even if a terminal draws it two
 * cells wide.  A base unit with its marks, a space, and a raw byte take one each.  Escape
 * sequences, control functions and DEL take none.  str_dispstrlen counts UTF-8 and plain
 * single-byte sets more simply.
 *
 * These functions allocate nothing and keep nothing between calls.  They raise OS_ESC_MEMORY, of
 * class ER_CLASS_LIBRARY, when the result does not fit in the return type.  An escape of a service
 * passes through.
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
 *   - UTF-8: every character counts, including controls and ESC.
 *   - A plain single-byte set (CS_FLAG_BYTE without CS_FLAG_T61) with escMode 0: every byte counts,
 *     including controls.
 *   - All other text is counted segment by segment, as described above. */
unsigned int str_dispstrlen(const char *str, const CSDescriptor *cs);

/* Returns the columns of one text segment, the `segLen` bytes at `seg`.  The csNum of `segCs` is
 * the segment's kind.  Nothing after the segment, and nothing after a NUL in it, is read.  The
 * count ends at a unit whose length a service cannot tell; that unit counts if it is a
 * character. */
int str_GetDispLen(const char *seg, unsigned int segLen, const CSDescriptor *segCs);

/* Returns the number of UTF-8 characters in the first `maxLen` bytes of `str`, or up to its NUL
 * when `maxLen` is negative.  A NUL ends the text in either case.  A character that the limit cuts
 * does not count.  Each byte that is not part of a well-formed character counts as one.
 *
 * With `countEsc` 0, the number of ESC bytes (0x1B) in the whole string is subtracted.  The string
 * is then read up to its NUL, even after `maxLen`, and the result may be negative.  Otherwise at
 * most `maxLen` bytes are read. */
int str_utf8DispStrLen(const char *str, int maxLen, int countEsc);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
