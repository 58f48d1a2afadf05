/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Pattern matching.
 *
 * In a pattern the byte US (0x1F) stands for any run of bytes, the empty run included; every other
 * byte stands for itself, in upper or lower case as it is.  There is no way to write a US that
 * stands for itself.  The whole text has to match.
 *
 * The bytes between two US are a piece; those before the first are the head, those behind the last
 * the tail.  The head begins the text, the tail ends it, and the pieces between are each taken at
 * the leftmost place behind the one before.  No byte of the text serves two of them.
 *
 * None of these functions keeps what it is passed.  Cost grows with the bytes of the text times
 * those of a piece at worst, and mostly with the bytes of the text.
 */
#ifndef STR_MATCH_H
#define STR_MATCH_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Whether `string` matches `pattern`, both in the set of `cs`: 1 or 0.  Escape sequences count for
 * the sets that they bring about and not for their bytes: a byte matches only where the two sets
 * are equivalent, as str_EquivTypes has it.  Raw bytes match none.
 *
 * - Two identical texts match, and an empty one matches only itself: no pattern, not even a lone US,
 *   matches the empty string.
 * - Where string and pattern are each one segment, of equivalent sets, the answer is that of the
 *   service os_USPatternMatch.
 * - Otherwise, of two US that follow each other the second needs a byte at or behind which it
 *   stands: "a", US, US does not match "a".
 *
 * Answers 0 too when a text cannot be divided into segments, or when memory for the string's list
 * cannot be had; that escape, of class 3, ends here, and one of another class goes on to the
 * caller's environment, as do all that the other services raise.  The list stands in an array of the
 * library, which grows to the longest one so far: one match at a time may run in a process. */
int str_USPatternMatch(const char *string, const char *pattern, const CSDescriptor *cs);

/* Whether `string` matches `pattern`, both UTF-8: 1 or 0.  US stands for any run of characters, and
 * US that follow each other are as one.  Text that is not well-formed is not matched, but by a lone
 * US, which matches every string, the empty one included.  Keeps no state and calls no service. */
int str_utf8USPatternMatch(const char *string, const char *pattern);

/* ---- The steps of str_USPatternMatch ---------------------------------------------------------
 *
 * They work on lists of segments as ccs_GetRealStrs answers them, ended by a record of kind
 * CS_SEG_END.  A position is a record and the offset of a byte in it; at the end of a list the
 * offset means nothing.  Positions are moved when a step succeeds, and only then.  No step raises
 * an escape of its own. */

/* Compares a piece: the pattern from its position up to the next US, or to its end.  1 when the
 * string has it at its position; with `mode` 0 the string must also end there.  The string's
 * position is then behind the piece, the pattern's at the US or the end. */
int str_Match(const CSSegment **stringRecord, const CSSegment **patternRecord,
              unsigned int *stringOffset, unsigned int *patternOffset, int mode);

/* Finds the middle pieces: the US at the pattern's position, if there is one, is stepped over, and
 * every piece that a US follows is taken at the leftmost place at or behind the string's position.
 * 1 when all are found; the pattern's position is then at the tail.  When there is no such piece,
 * answers 0 and still steps over the US. */
int str_RepeatMatch(const CSSegment **stringRecord, const CSSegment **patternRecord,
                    unsigned int *stringOffset, unsigned int *patternOffset);

/* Whether the string ends with the rest of the pattern, which begins behind the US at
 * `patternRecord` and `*patternOffset`, if there is one.  `stringRecords` is all of the string's
 * list and `stringCount` its records, the one at the end included; that an earlier piece may have
 * matched some of it is not looked at. */
int str_EndMatch(const CSSegment *stringRecords, const CSSegment *patternRecord,
                 unsigned int *patternOffset, int stringCount);

/* Steps over the US at the position, and from the end of a record to the next; does nothing where
 * there is no US. */
void str_SkipUS(const CSSegment **record, unsigned int *offset);

/* Whether bytes in segments of the two kinds may be compared: 1 when both are the same set, or both
 * are ASCII, or one is ASCII and the other holds ASCII at its codes and is uniform
 * (CS_FLAG_ASCII_SUPERSET and CS_FLAG_UNIFORM).  0 for CS_SEG_RAW, even with itself.  A kind is
 * passed as a 16-bit number with its sign. */
int str_EquivTypes(int kind1, int kind2);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
