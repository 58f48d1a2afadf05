/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Splitting: a first part that fits, and the rest, which can be read by itself.  From
 * examples/split.c:
 *
 *     char *first, *rest;
 *     unsigned int firstLen, restLen;
 *     while ((first = str_SplitByDispLen(text, 5, &rest, &firstLen, &restLen, &cs)) != NULL) {
 *         printf("%u columns in %u bytes\n", str_dispstrlen(first, &cs), firstLen);
 *         strcpy(text, rest != NULL ? rest : "");
 *     }
 *
 * The limit counts what is displayed, in characters or in bytes: a character, a base unit with its
 * marks, a space, a raw byte, and a line feed.  Escape sequences, other control functions and DEL
 * do not count.  In a plain single-byte set (CS_FLAG_BYTE without CS_FLAG_T61) with escMode 0 every
 * byte counts.  A split never falls inside a character or an escape sequence.
 *
 * Both parts are in one buffer of the library.  The thread's next split overwrites it: copy what you
 * keep, and do not release it.  It grows to the longest text so far, until the thread ends.
 *
 * A part whose length with the escape sequences is more than UINT_MAX is refused as if there were
 * no memory for it.
 */
#ifndef STR_SPLIT_H
#define STR_SPLIT_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* str_SplitByDispLen splits the NUL-terminated `str` after at most `limit` displayed characters.
 * str_SplitByDispBytes splits it before the character that would make the displayed ones take more
 * than `limit` bytes.
 *
 * Returns the first part; `*firstLen` receives its bytes.  `*second` receives the rest,
 * `*secondLen` its bytes; null and 0 when all of the text fits.  Both parts are NUL-terminated.  In
 * a text that can switch sets the rest begins with escape sequences (at most 81 bytes, included in
 * `*secondLen`) that restore the state at the split, so that it reads the same from the initial
 * state.
 *
 * Returns null, and stores null and 0 through the pointers, when there is nowhere to split: the
 * limit is 0 or less, nothing is displayed, or a limit in bytes has no room for the first
 * character.
 *
 * When there is no memory for the parts, the escape ends here: STR_LOG_GIVEN_UP is logged, nothing
 * is stored through the pointers, and the result is the unchanged buffer, or null if there is none
 * yet.  An escape that is not of class ER_CLASS_LIBRARY, or that a service raises while the text is
 * walked, goes on to the caller's environment. */
char *str_SplitByDispLen(const char *str, int limit, char **second, unsigned int *firstLen,
                         unsigned int *secondLen, const CSDescriptor *cs);
char *str_SplitByDispBytes(const char *str, int limit, char **second, unsigned int *firstLen,
                           unsigned int *secondLen, const CSDescriptor *cs);

/* The same: with `mode` 1 the limit is in bytes, with any other value in characters. */
char *str_DoSplit(const char *str, int mode, int limit, char **second, unsigned int *firstLen,
                  unsigned int *secondLen, const CSDescriptor *cs);

/* Returns where str_DoSplit would split, in bytes from the start of `str`: 0 when there is nowhere
 * to split, the length of `str` when all of it fits.  Always walks the text.  A place beyond
 * INT_MAX raises OS_ESC_MEMORY, of class ER_CLASS_LIBRARY; str_DoSplit does split there. */
int str_FindSplitPoint(const char *str, int mode, int limit, const CSDescriptor *cs);

/* Counts the displayed characters, or their bytes, in one text segment of `segLen` bytes, up to
 * `budget`.  `*used` receives the count.  The csNum of `segCs` is the segment's kind.
 *
 * Returns where in the segment the budget is used up, or the character that no longer fits begins
 * (its single shift, if it has one).  Returns null when the segment ends before that, or a service
 * cannot tell the length of a unit.  A NUL ends the segment; nothing after it is read. */
const char *str_CountSSDispChars(const char *seg, unsigned int segLen, int budget, int *used,
                                 const CSDescriptor *segCs);
const char *str_CountSSDispBytes(const char *seg, unsigned int segLen, int budget, int *used,
                                 const CSDescriptor *segCs);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
