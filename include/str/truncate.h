/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Truncation to a budget of bytes, and the bounded copies built on it.
 *
 * What is kept of a text is the longest front part that fits in the budget and does not end inside
 * a character, a base unit with its marks, or an escape sequence.  A raw run may be cut after any
 * byte, and text of a plain single-byte set (CS_FLAG_BYTE without CS_FLAG_T61) is, whatever its
 * escMode.
 *
 * What is kept may end in an escape sequence whose character did not fit, and nothing is added that
 * switches back: what is appended to it by plain means is read in the set that is in force there.
 *
 * Budgets are in bytes, and texts may be longer than a budget can say.  Sources are NUL-terminated,
 * and unless it is said otherwise they are read up to the NUL, not only up to the budget.
 * Destinations are the caller's and do not overlap the source.  Nothing is allocated or kept
 * between calls.  The library raises no escape here; one that a service raises passes through, and
 * the destination is then untouched.
 */
#ifndef STR_TRUNCATE_H
#define STR_TRUNCATE_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Returns the bytes kept of `src` for a budget of `n`.  For a plain single-byte set that is `n`
 * itself, whatever the length of `src`, which is not read.  UTF-8 is cut between its characters
 * here too. */
unsigned int str_truncstrlen(const char *src, unsigned int n, const CSDescriptor *cs);

/* Returns the bytes of whole characters at the front of a text segment that fit in `room` bytes.  A
 * NUL ends the segment; nothing after it, and nothing beyond `room`, is read.  csNum of `segCs` is
 * the segment's kind. */
unsigned int str_FindTruncPt(const char *seg, unsigned int room, const CSDescriptor *segCs);

/* Copies what is kept of `src` for a budget of `n` to `dst` and fills `dst` with NULs up to `n`
 * bytes: exactly `n` bytes are written.  As with strncpy, no NUL follows what fills the budget.
 * `*outLen` receives the bytes kept; for a plain single-byte set that is `n`, even when `src` is
 * shorter, and no more than `n` bytes of `src` are read.  Returns `dst`. */
char *str_truncate(char *dst, const char *src, unsigned int n, const CSDescriptor *cs,
                   unsigned int *outLen);

/* As str_truncate, without telling the bytes kept.  Of UTF-8 no more than `n` bytes are read: what
 * may be the beginning of a longer character at their end is left out, and any other byte that
 * belongs to no well-formed character is a unit of its own. */
char *str_strncpy(char *dst, const char *src, unsigned int n, const CSDescriptor *cs);

/* As str_strncpy into a buffer of `size` bytes, of which the last is always a NUL.  With `size` 0
 * nothing is written; with a null `src`, a single NUL.  Returns `dst`, not a length. */
char *str_strlcpy(char *dst, const char *src, unsigned int size, const CSDescriptor *cs);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
