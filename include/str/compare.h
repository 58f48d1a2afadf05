/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Comparison: whether two texts are equal, and which comes first.
 *
 * Twelve functions return 0 when two texts are equal, another value when they differ:
 *
 *                    to the end        first `chars`        first bytes:
 *                                      characters           `bytes1`, `bytes2`
 *     case counts
 *       one set      str_strcmp        str_strncmp          str_strncmp2
 *       two sets     str_strcmp3       str_strnccmp3        str_strnbcmp3
 *     case does not count
 *       one set      str_strucasecmp   str_strucasencmp     str_strucasencmp2
 *       two sets     str_strucasecmp3  str_strucasenccmp3   str_strucasenbcmp3
 *
 * "One set": the descriptor `cs` is that of both texts.  "Two sets": `cs1` is that of `s1`, `cs2`
 * that of `s2`.  From examples/compare.c:
 *
 *     if (str_strcmp3(entry, file, &t61, &cyrillic) != 0)
 *         puts("not the same");
 *     if (str_strucasecmp3(entry, file, &t61, &cyrillic) == 0)
 *         puts("the same except for case");
 *
 * str_cmpTextStr puts texts in order, str_cmpORName puts X.400 addresses in order.
 *
 * Texts are NUL-terminated.  Escape and control sequences are not compared, so equal texts may be
 * divided into segments differently.  Two segments can be compared when
 *
 *   - they are in the same set, or
 *   - one is in an ASCII set (CS_FLAG_ASCII) and the other in a set that holds ASCII
 *     (CS_FLAG_ASCII_SUPERSET); the case table of the second set is then used, or
 *   - both are raw bytes.
 *
 * Their bytes are compared.  A set in the left half (ISO-2022-JP) has other bytes than the same set
 * in the right half (EUC-JP), so these texts are not equal even if they say the same.
 *
 * Where case does not count, characters are compared in upper case if their set has a case table
 * (str/case.h).  The table may be compiled or loaded for that.
 *
 * The library raises no escape here; an escape of a service passes through.  GLib folds the case of
 * UTF-8, and ends the process when it has no memory for that.  Nothing is kept for the caller.
 *
 * Any number of threads may compare at once.  Where a host replaces what texts are read with
 * (CSReaders in platform/ccs.h), its functions say how many may.
 */
#ifndef STR_COMPARE_H
#define STR_COMPARE_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- Equality ------------------------------------------------------------------------------ */

/* The table at the top says what each does.  The sign of the result means something in two cases:
 *
 *   - case counts, and both texts are in the same set, which has CS_FLAG_BYTE: the result is that
 *     of strcmp or strncmp.  A limit in bytes is then `bytes1` for both texts.
 *   - case counts, and both texts are UTF-8, to the end: the result is that of strcmp. */
int str_strcmp(const char *s1, const char *s2, const CSDescriptor *cs);
int str_strcmp3(const char *s1, const char *s2, const CSDescriptor *cs1, const CSDescriptor *cs2);
int str_strncmp(const char *s1, const char *s2, unsigned int chars, const CSDescriptor *cs);
int str_strnccmp3(const char *s1, const char *s2, unsigned int chars, const CSDescriptor *cs1,
                  const CSDescriptor *cs2);
int str_strncmp2(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                 const CSDescriptor *cs);
int str_strnbcmp3(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                  const CSDescriptor *cs1, const CSDescriptor *cs2);
int str_strucasecmp(const char *s1, const char *s2, const CSDescriptor *cs);
int str_strucasecmp3(const char *s1, const char *s2, const CSDescriptor *cs1,
                     const CSDescriptor *cs2);
int str_strucasencmp(const char *s1, const char *s2, unsigned int chars, const CSDescriptor *cs);
int str_strucasenccmp3(const char *s1, const char *s2, unsigned int chars, const CSDescriptor *cs1,
                       const CSDescriptor *cs2);
int str_strucasencmp2(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                      const CSDescriptor *cs);
int str_strucasenbcmp3(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                       const CSDescriptor *cs1, const CSDescriptor *cs2);

/* The engines of these functions.  They return 0 when the texts are equal as far as they are
 * compared, 1 when they differ.  Case does not count when `caseless` is not 0.
 *
 * str_DoCompareToEnd finds UTF-8 equal only to UTF-8, or an empty text to an empty text.  Without
 * regard to case it compares what g_utf8_casefold makes of it; a byte that is not part of a
 * well-formed character equals only itself.  The engines with a limit have no case table for UTF-8,
 * so there its case counts. */
int str_DoCompareToEnd(const char *s1, const char *s2, int caseless, const CSDescriptor *cs1,
                       const CSDescriptor *cs2);

/* Compares the first `bytes1` bytes of `s1` with the first `bytes2` of `s2`.  A text that ends
 * before its limit is unequal to every text, except that two empty texts are equal.  A limit of 0
 * equals only another limit of 0.  A limit of 2^31 or more means the whole text. */
int str_DoCompareByByteLen(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                           int caseless, const CSDescriptor *cs1, const CSDescriptor *cs2);

/* Compares the first `chars` characters.  Texts that end before that are unequal, even to
 * themselves, unless both are empty.  With 0 all texts are equal.  2^31 or more means the whole
 * texts. */
int str_DoCompareByCharLen(const char *s1, const char *s2, unsigned int chars, int caseless,
                           const CSDescriptor *cs1, const CSDescriptor *cs2);

/* ---- Order --------------------------------------------------------------------------------- */

/* Puts two texts in order, each in its own set.  Returns a negative value when `s1` comes first, 0
 * when they are equal, a positive value when `s2` comes first.  A text comes before every longer
 * text that begins with it, so the empty text comes first.
 *
 * Text is ordered by its bytes, as unsigned numbers.  With `caseless` not 0, characters of a set
 * that has a case table are ordered by the bytes of their upper case, as signed numbers: 0x80 to
 * 0xFF come first.  UTF-8 has no case table, so its case counts.  Of an ASCII set and a set that
 * holds ASCII, the second set's case table is used; if each set is both, that of `s2`.
 *
 * Where two segments cannot be compared, their sets decide.  A set with CS_FLAG_BYTE comes before
 * one without; then the last byte of the designation decides, then the number of the set.
 *
 * This is a total order for texts of one set without escape sequences.  For texts that hold several
 * sets it may not be: ASCII is compared with the sets that hold it by bytes, but two of those sets
 * are compared by number.  So a may come before b, b before c, and c before a. */
int str_cmpTextStr(const char *s1, const char *s2, int caseless, const CSDescriptor *cs1,
                   const CSDescriptor *cs2);

/* Puts two O/R names (X.400 addresses; platform/nm.h says how they are written) in order.
 * `attributes` names attributes, separated by commas.  They are compared one after the other, and
 * the first that differs decides.  Returns a negative value when `orName1` comes first, 0 when no
 * attribute differs or none is named, a positive value when `orName2` comes first.
 *
 * Values are compared as str_cmpTextStr does without regard to case, the first 255 bytes of each.
 * The value is the T.61 form of the attribute, if the name has one whose set is called
 * `charsetName`, or has any and `anyCharset` is not 0 (`charsetName` is then not read).  Otherwise
 * it is the plain form, which is in IA5.  An attribute that a name does not have, or that is
 * unknown, compares as an empty value.
 *
 * A malformed name has the attributes that come before the fault.  Nothing is allocated. */
int str_cmpORName(const char *orName1, const char *orName2, const char *charsetName, int anyCharset,
                  const char *attributes);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
