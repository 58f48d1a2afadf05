/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Truncation: as much of a text as fits in a number of bytes, and bounded copies of it.  From
 * examples/truncate.c:
 *
 *     char field[11];
 *     str_strlcpy(field, name, sizeof field, &cs);
 *     printf("%s, %u bytes\n", field, str_truncstrlen(name, sizeof field - 1, &cs));
 *
 * The part that is kept is the longest beginning of the text that fits and does not end inside a
 * character, a base unit with its marks, or an escape sequence.  Raw bytes may be cut anywhere.  So
 * may text of a plain single-byte set (CS_FLAG_BYTE without CS_FLAG_T61), whatever its escMode.
 *
 * The part may end in an escape sequence whose character did not fit.  Nothing is added that
 * switches back, except by str_truncateclosed: bytes that are appended by plain means are read in
 * the set that is then in force.
 *
 * Limits are in bytes.  A text may be longer than a limit can express.  Sources are NUL-terminated,
 * and are read up to the NUL unless said otherwise.  Destinations are the caller's and must not
 * overlap the source.  Unless said otherwise, nothing is allocated and the library raises no escape;
 * an escape of a service passes through, and the destination is then unchanged.
 */
#ifndef STR_TRUNCATE_H
#define STR_TRUNCATE_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Returns the bytes of `src` that are kept for a limit of `n` bytes.  For a plain single-byte set
 * this is `n` itself: `src` is not read and may be shorter.  UTF-8 is cut between characters. */
unsigned int str_truncstrlen(const char *src, unsigned int n, const CSDescriptor *cs);

/* Returns the bytes of the whole characters at the start of the text segment `seg` that fit in
 * `room` bytes.  The csNum of `segCs` is the segment's kind.  Nothing after `room`, and nothing
 * after a NUL, is read. */
unsigned int str_FindTruncPt(const char *seg, unsigned int room, const CSDescriptor *segCs);

/* Copies the part of `src` that is kept for a limit of `n` bytes to `dst`, then fills `dst` with
 * NULs: exactly `n` bytes are written.  As with strncpy, no NUL follows a part of `n` bytes.
 * `*outLen` receives the bytes kept.  For a plain single-byte set that is `n`, even when `src` is
 * shorter, and at most `n` bytes of `src` are read.  Returns `dst`. */
char *str_truncate(char *dst, const char *src, unsigned int n, const CSDescriptor *cs,
                   unsigned int *outLen);

/* Copies the longest part of `src` that fits in `n` bytes together with the escape sequences that
 * lead back to the state in which strings of the set begin, and these sequences after it.  Then
 * fills `dst` with NULs: exactly `n` bytes are written.
 *
 * ASCII that is appended by plain means is read as at the beginning of a string, so this is the
 * call for a mail line or a field of a directory.  Hence the part does not end, even where `src`
 * does, in bytes that a letter after them would continue: an unfinished sequence, a single shift or
 * a mark without its character, or half a character.  Nor does it end where no sequences lead back:
 * after SI in a string that begins with nothing in the left half, for example.  Text of a plain
 * single-byte set with escMode 0 may be cut anywhere.
 *
 * Returns the bytes of the part and of the sequences.  Where a host reads texts by functions of its
 * own, may raise OS_ESC_MEMORY: `dst` is then unchanged. */
unsigned int str_truncateclosed(char *dst, const char *src, unsigned int n, const CSDescriptor *cs);

/* As str_truncate, without the number of bytes kept.  At most `n` bytes of UTF-8 are read: bytes at
 * their end that may begin a longer character are left out, and any other byte that is not part of
 * a well-formed character is a unit by itself. */
char *str_strncpy(char *dst, const char *src, unsigned int n, const CSDescriptor *cs);

/* As str_strncpy with a limit of `size` - 1 bytes, and a NUL after them: `dst` has `size` bytes.
 * With `size` 0 nothing is written; with a null `src`, a single NUL is.  Returns `dst`, not a
 * length. */
char *str_strlcpy(char *dst, const char *src, unsigned int size, const CSDescriptor *cs);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
