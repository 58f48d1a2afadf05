/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Concatenation and search.
 *
 * In a set with CS_FLAG_ESCAPES, the escape sequences that switch back to ASCII are put between two
 * texts when the last segment of characters of the first is not in an ASCII set and the first such
 * segment of the second is.  A plain strcat would make the second be read in the set of the first.
 *
 * Only segments of characters decide.  A text that ends in a bare escape sequence, such as one that
 * str_strlcpy has cut, is joined without a way back: the sequence stays in force, and the second
 * text may be read in the wrong set.  Nothing is put between the texts when the first ends, or the
 * second begins, in raw bytes, or when the second begins in a set other than ASCII.
 *
 * Texts are NUL-terminated.  Destinations are the caller's and have room for the result: what they
 * hold, the escape sequences (at most 81 bytes with the default services), the text and its NUL.
 * Nothing is allocated or kept between calls.  The library raises no escape here; one that a
 * service raises passes through.
 */
#ifndef STR_CONCAT_H
#define STR_CONCAT_H

#include <str/charset.h>

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Returns the escape sequences to put between `dst` and `src` when `src` is appended to it; null
 * when none are.  They are NUL-terminated, belong to the character set service, and last until the
 * next call in the same thread.  `*escLen` receives their bytes, 0 for none; in a set without
 * CS_FLAG_ESCAPES it is not written. */
const char *str_GetEscapes(const char *dst, const char *src, const CSDescriptor *cs, int *escLen);

/* Appends `src` to `dst`, after the escape sequences that are needed.  Returns `dst`. */
char *str_strcat(char *dst, const char *src, const CSDescriptor *cs);

/* The same with at most `n` bytes of `src`, which may cut a character or an escape sequence, and a
 * NUL.  The escape sequences between the texts are appended whole and are not counted.  To see how
 * `src` begins, it is read beyond `n`, up to its NUL; in a set without CS_FLAG_ESCAPES it is not,
 * and this is strncat. */
char *str_strncat(char *dst, const char *src, size_t n, const CSDescriptor *cs);

/* Returns the place of the first byte `ch` in the segments of `str` that are searched; null for
 * none.
 *
 * With escMode 0 this is strchr: every byte is searched, and the NUL can be found.  Otherwise the
 * segments in ASCII sets (CS_FLAG_ASCII) are searched, or all segments of characters when the
 * string's own set has CS_FLAG_BYTE; never escape sequences, and never raw bytes.  The NUL is not
 * found then, and bytes from 0x80 on are found by their value as a signed char. */
char *str_strchr(const char *str, int ch, const CSDescriptor *cs);

/* Returns the place of the first of the `len` bytes at `seg` whose value as a signed char is `ch`;
 * null for none.  A NUL among them ends the search, and can be found itself. */
char *str_dostrchr(const char *seg, int ch, unsigned int len);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
