/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Concatenation and search.
 *
 * A plain strcat would let the second text be read in the set that the first one ends in.  In a set
 * with CS_FLAG_ESCAPES these functions therefore put escape sequences between the two texts, which
 * switch back to ASCII.  They do so when the last segment of characters in the first text is not in
 * an ASCII set, and the first one in the second text is.
 *
 * Two cases are left to the caller:
 *
 *   - The first text ends in a bare escape sequence, for example because str_strlcpy has cut it.
 *     The sequence stays in force, and the second text may be read in the wrong set.
 *   - The first text ends in raw bytes, or the second begins in raw bytes or in a set other than
 *     ASCII.  Nothing is put between them.
 *
 * Texts are NUL-terminated.  A destination is the caller's.  It needs room for what it holds, the
 * escape sequences (at most 81 bytes with the default services), the new text and a NUL.  Nothing
 * is allocated, and nothing is kept between calls.  The library raises no escape here; an escape of
 * a service passes through.
 */
#ifndef STR_CONCAT_H
#define STR_CONCAT_H

#include <str/charset.h>

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Returns the escape sequences to put between `dst` and `src` when `src` is appended to it, or null
 * when none are needed.  They are NUL-terminated, belong to the character set service, and last
 * until the next call in the same thread.  `*escLen` receives their bytes, 0 for none; it is not
 * written in a set without CS_FLAG_ESCAPES. */
const char *str_GetEscapes(const char *dst, const char *src, const CSDescriptor *cs, int *escLen);

/* Appends the escape sequences that are needed, and `src`, to `dst`.  Returns `dst`. */
char *str_strcat(char *dst, const char *src, const CSDescriptor *cs);

/* As str_strcat, but appends at most `n` bytes of `src`, and a NUL.  This may cut a character or an
 * escape sequence.  The escape sequences between the texts are appended whole and do not count.
 *
 * In a set without CS_FLAG_ESCAPES this is strncat, which reads `n` bytes of `src` at most.
 * Otherwise `src` is read up to its NUL. */
char *str_strncat(char *dst, const char *src, size_t n, const CSDescriptor *cs);

/* Returns a pointer to the first byte `ch` in `str`, null when there is none.
 *
 * With escMode 0 this is strchr: every byte is searched, and the NUL can be found.
 *
 * Otherwise only segments in ASCII sets (CS_FLAG_ASCII) are searched; when the string's own set has
 * CS_FLAG_BYTE, all segments of characters.  Escape sequences and raw bytes are never searched.
 * The NUL is not found.  `ch` is the byte as a signed char, -128 to 127. */
char *str_strchr(const char *str, int ch, const CSDescriptor *cs);

/* Returns a pointer to the first byte `ch`, a signed char, among the `len` bytes at `seg`; null
 * when there is none.  A NUL ends the search, and can be found itself. */
char *str_dostrchr(const char *seg, int ch, unsigned int len);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
