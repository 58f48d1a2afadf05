/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Splitting: a first part that fits a budget of displayed characters, or of their bytes, and the
 * rest, made to stand alone.
 *
 * The budget counts what is displayed: a character, a base unit with its marks, a space, a byte of
 * a raw run, and a line feed.  Escape sequences, other control functions and DEL count nothing.
 * No split falls inside a character or an escape sequence.
 *
 * The two parts are in one buffer of the library, which the next split by anyone overwrites and
 * which the caller must not release: copy what is to be kept.  It grows to the longest text split
 * so far.  One split at a time may run in a process.
 *
 * Sizes are counted without loss.  Where a part has more bytes than its length can say (UINT_MAX,
 * with the escape sequences), this is as if memory for it could not be had.
 */
#ifndef STR_SPLIT_H
#define STR_SPLIT_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Splits `str` after at most `limit` displayed characters; or before the character that would make
 * the displayed ones take more than `limit` bytes.
 *
 * Returns the first part, NUL-terminated, its bytes in `*firstLen`.  `*second` receives the rest,
 * NUL-terminated too, its bytes in `*secondLen`; null and 0 when all of the text fits.  In a text
 * that can switch sets the rest begins with the escape sequences that bring about the state in
 * which the split found it, so that it reads the same from the initial state; they are counted.
 *
 * Returns null, and null and 0 through the pointers, when there is nowhere to split: a limit of 0
 * or less, nothing displayed, or not even the first character within a limit of bytes.
 *
 * When memory for the parts cannot be had, logs 23816; that escape, of class 3, ends here, and the
 * function returns the buffer as it was (null when there is none yet) and writes nothing through
 * the pointers.  An escape of another class, or of the services that walk the text, goes on to the
 * caller's environment. */
char *str_SplitByDispLen(const char *str, int limit, char **second, unsigned int *firstLen,
                         unsigned int *secondLen, const CSDescriptor *cs);
char *str_SplitByDispBytes(const char *str, int limit, char **second, unsigned int *firstLen,
                           unsigned int *secondLen, const CSDescriptor *cs);

/* The same by `mode`: 1 counts bytes, any other value characters. */
char *str_DoSplit(const char *str, int mode, int limit, char **second, unsigned int *firstLen,
                  unsigned int *secondLen, const CSDescriptor *cs);

/* Returns where str_DoSplit would split, in bytes from the start of `str`; 0 for nowhere, the
 * length of `str` when all of it fits.  Always walks the text.  A place beyond INT_MAX raises
 * OS_ESC_MEMORY, of class 3; str_DoSplit itself splits there. */
int str_FindSplitPoint(const char *str, int mode, int limit, const CSDescriptor *cs);

/* Counts the displayed characters, or their bytes, of one text segment of `segLen` bytes up to
 * `budget`; `*used` receives the count.  Returns the place in the segment where the budget was used
 * up, or before the character that no longer fitted (and before its single shift, if it has one);
 * null when the segment ended before that, or where the length of a unit cannot be told.  A NUL
 * ends the segment; nothing after it is read. */
const char *str_CountSSDispChars(const char *seg, unsigned int segLen, int budget, int *used,
                                 const CSDescriptor *segCs);
const char *str_CountSSDispBytes(const char *seg, unsigned int segLen, int budget, int *used,
                                 const CSDescriptor *segCs);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
