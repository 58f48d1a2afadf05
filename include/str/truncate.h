/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Truncation to a budget of bytes, and the bounded copies built on it.
 *
 * What is kept of a text is the longest front part that fits in the budget and ends between two
 * characters: never inside a character, a base unit with its marks, or an escape sequence, which is
 * kept whole or not at all.  A raw run may be cut after any byte.
 *
 * Budgets are in bytes.  Destinations are the caller's and do not overlap the source.  Nothing is
 * allocated or kept between calls; no escape is raised but by a service, and then passes through
 * with the destination untouched.
 */
#ifndef STR_TRUNCATE_H
#define STR_TRUNCATE_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* The bytes kept of `src` for a budget of `n`.  For a plain single-byte set that is `n` itself,
 * whatever the length of `src`. */
unsigned int str_truncstrlen(const char *src, unsigned int n, const CSDescriptor *cs);

/* The bytes of whole characters at the front of a text segment that fit in `room` bytes; `seg` must
 * have that many.  csNum of `segCs` is the segment's kind. */
unsigned int str_FindTruncPt(const char *seg, unsigned int room, const CSDescriptor *segCs);

/* Copies what is kept of `src` for a budget of `n` to `dst` and fills `dst` with NULs up to `n`
 * bytes: exactly `n` bytes are written.  As with strncpy no NUL stands behind what fills the budget.
 * `*outLen` receives the bytes kept; for a plain single-byte set that is `n`.  Returns `dst`. */
char *str_truncate(char *dst, const char *src, unsigned int n, const CSDescriptor *cs,
                   unsigned int *outLen);

/* As str_truncate, without telling the bytes kept.  UTF-8 is cut between its characters too, without
 * a look beyond the budget: what may be the beginning of a longer character at its end is left out,
 * and any other byte that belongs to no well-formed character is a unit of its own. */
char *str_strncpy(char *dst, const char *src, unsigned int n, const CSDescriptor *cs);

/* As str_strncpy into a buffer of `size` bytes, of which the last is always a NUL.  With `size` 0
 * nothing is written; with a null `src`, a single NUL.  Returns `dst`, not a length. */
char *str_strlcpy(char *dst, const char *src, unsigned int size, const CSDescriptor *cs);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
