/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Pattern matching.
 *
 * In a pattern the byte US (0x1F) stands for any run of bytes, including none.  Every other byte
 * stands for itself; case counts.  A pattern cannot ask for a US.  The whole text has to match.
 *
 * A piece of a pattern is what is between two US.  The head is what comes before the first US, the
 * tail what comes after the last.  The text must begin with the head and end with the tail.  Each
 * piece is matched at the leftmost place after the one before it.  No byte of the text is used
 * twice.
 *
 * Bytes are compared, not characters.  In a set of two-byte characters a piece can match the second
 * byte of one character and the first byte of the next.  If that must not be, compare by characters
 * where these functions return 1.  UTF-8 has no such places.
 *
 * Nothing that is passed is kept.  Time grows with the bytes of text and pattern.  There is one
 * exception: a piece that holds several sets, two of which are each equivalent to ASCII but not to
 * each other.  Time may then grow with the bytes of the text times those of the piece.
 */
#ifndef STR_MATCH_H
#define STR_MATCH_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Returns 1 when `string` matches `pattern`, else 0.  Both are NUL-terminated and in the set of
 * `cs`.  Escape sequences are not compared; they say which set the bytes after them are in.  Two
 * bytes match only if their sets are equivalent (see str_EquivTypes).  Raw bytes in a pattern match
 * nothing.
 *
 * - Two identical texts match, raw bytes included.
 * - No other pattern matches the empty string, not even a lone US.
 * - If string and pattern are one segment each, of equivalent sets, the service os_USPatternMatch
 *   decides.
 * - Otherwise, of two US in a row the second needs a byte of an equivalent set at or after its
 *   place: "a", US, US does not match "a".
 *
 * Returns 0 also when a text cannot be divided into segments, and when there is no memory for the
 * lists of their segments: that escape, of class ER_CLASS_LIBRARY, ends here.  Every other escape
 * of a service goes on to the caller's environment.
 *
 * Long lists are in two arrays of the thread, which grow to the longest list so far. */
int str_USPatternMatch(const char *string, const char *pattern, const CSDescriptor *cs);

/* Returns 1 when `string` matches `pattern`, else 0.  Both are NUL-terminated UTF-8.  Several US in
 * a row count as one.  A lone US matches every string, even an empty or malformed one.  For any
 * other pattern the result is 0 when the string or the pattern is malformed.  Raises no escape,
 * calls no service except the trace, and keeps no state. */
int str_utf8USPatternMatch(const char *string, const char *pattern);

/* ---- The steps of str_USPatternMatch ---------------------------------------------------------
 *
 * They work on lists of segments as ccs_GetRealStrs returns them, which end with a record of kind
 * CS_SEG_END.  The caller owns the lists; they are only read.  A position is a record and the
 * offset of a byte in it; at the end of a list the offset means nothing.  A step moves a position
 * only when it succeeds, unless said otherwise.  The steps allocate nothing, keep no state, and
 * raise no escape of their own. */

/* Compares one piece: the pattern from its position to the next US, or to its end.  Returns 1 when
 * the string has the piece at its position, else 0.  With `mode` 0 the string must also end there.
 * Then moves the string's position to the byte after the piece, and the pattern's to the US or the
 * end. */
int str_Match(const CSSegment **stringRecord, const CSSegment **patternRecord,
              unsigned int *stringOffset, unsigned int *patternOffset, int mode);

/* Finds the pieces between two US.  Steps over a US at the pattern's position.  Then matches each
 * piece that a US follows at the leftmost place from the string's position on.  Returns 1 when all
 * are found, and moves the pattern's position to the tail; else 0.  If there is no such piece,
 * returns 0, but has still stepped over the US. */
int str_RepeatMatch(const CSSegment **stringRecord, const CSSegment **patternRecord,
                    unsigned int *stringOffset, unsigned int *patternOffset);

/* Returns 1 when the string ends with the rest of the pattern, else 0.  The rest begins at
 * `patternRecord` and `*patternOffset`, or after a US there.  `stringRecords` is the whole list of
 * the string; `stringCount` is the number of its records, with the one at the end.  Earlier pieces
 * are not considered: the tail may be found in bytes that one of them has matched. */
int str_EndMatch(const CSSegment *stringRecords, const CSSegment *patternRecord,
                 unsigned int *patternOffset, int stringCount);

/* Steps over a US at the position, and from the end of a record to the next record.  Does nothing
 * where there is no US. */
void str_SkipUS(const CSSegment **record, unsigned int *offset);

/* Returns 1 when bytes in segments of the two kinds may be compared, else 0.  They may be when both
 * are the same set, when both are ASCII (CS_FLAG_ASCII), and when one is ASCII and the other has
 * both CS_FLAG_ASCII_SUPERSET and CS_FLAG_UNIFORM.  CS_SEG_RAW is equivalent to nothing, not even
 * to itself.  A kind is passed as a signed 16-bit number. */
int str_EquivTypes(int kind1, int kind2);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
