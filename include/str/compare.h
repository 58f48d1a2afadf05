/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Comparison: whether two texts are equal, and which comes first.
 *
 * Texts are NUL-terminated, each in a set of its own (`cs1`, `cs2`) or both in the same (`cs`).
 * They are compared by what they say: escape and control sequences take no part, and segments need
 * not end at the same places.  Segments can be compared when they are of one set, or of an ASCII set
 * (CS_FLAG_ASCII) and one that holds ASCII (CS_FLAG_ASCII_SUPERSET), by whose case table they then
 * go; raw bytes with raw bytes alone.  Without regard to case characters are compared in upper case
 * where their set has a case table (str/case.h), which may be compiled or loaded for it.
 *
 * Nothing is kept for the caller, and no escape is raised except by a service, and then passes
 * through.  GLib, which folds the case of UTF-8, ends the process when it cannot have memory for
 * that.  One comparison at a time may run in a process.
 */
#ifndef STR_COMPARE_H
#define STR_COMPARE_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- Equality ------------------------------------------------------------------------------ */

/* Whether two texts are equal: 0 when they are, else another value.
 *
 *     str_strcmp...       to the end
 *     str_strn...         the first `chars` characters
 *     str_strn...2, ...nb the first `bytes1` bytes of `s1` and the first `bytes2` of `s2`
 *     str_struca...       without regard to case
 *     ...3                with a descriptor for each text
 *
 * Of one set with CS_FLAG_BYTE, with regard to case, the value is that of strcmp or strncmp (which
 * takes `bytes1` for both limits); so is that of UTF-8 texts to the end. */
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

/* The engines behind them: 0 when the texts are equal as far as they are compared, 1 when they
 * differ.  `caseless` not 0 disregards case.
 *
 * To the end, UTF-8 is compared with UTF-8 alone, its case folded by GLib (g_utf8_casefold); a byte
 * of no well-formed character stands for itself.  With a limit the case of UTF-8 counts, as it has
 * no case table. */
int str_DoCompareToEnd(const char *s1, const char *s2, int caseless, const CSDescriptor *cs1,
                       const CSDescriptor *cs2);

/* The first `bytes1` bytes of `s1` and the first `bytes2` of `s2`: a text that ends before its limit
 * is unequal to all.  Limits of 0 are equal to each other alone; a limit of 2^31 and more is none. */
int str_DoCompareByByteLen(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                           int caseless, const CSDescriptor *cs1, const CSDescriptor *cs2);

/* The first `chars` characters: texts that end before are unequal, even to themselves, unless both
 * are empty.  With 0 all are equal; 2^31 and more is no limit. */
int str_DoCompareByCharLen(const char *s1, const char *s2, unsigned int chars, int caseless,
                           const CSDescriptor *cs1, const CSDescriptor *cs2);

/* ---- Order --------------------------------------------------------------------------------- */

/* Orders two NUL-terminated texts, each in a set of its own: negative when `s1` comes first, 0 when
 * they are equal, positive when `s2` comes first.  A text comes before those that it begins, the
 * empty text before all others.  Escape and control sequences are not compared.
 *
 * With `caseless` not 0, characters of sets that have a case table are compared in upper case, and
 * then order by their bytes as signed numbers, 0x80 to 0xFF first; all other text orders by
 * unsigned bytes.
 *
 * Where the texts are in sets that cannot be compared, the sets decide: one with CS_FLAG_BYTE comes
 * before one without, then the last byte of the designation counts, then the number of the set.
 *
 * Texts of one set without escape sequences are so put in order.  Where texts hold several sets, of
 * one code or of two, they need not be: ASCII and the sets that hold it are compared by their bytes,
 * but two of those with each other by their numbers, so that a may come before b, b before c, and c
 * before a.  Where both sets are ASCII and hold it, the case table is that of `s2`.  UTF-8 has no
 * case table, so its case counts here. */
int str_cmpTextStr(const char *s1, const char *s2, int caseless, const CSDescriptor *cs1,
                   const CSDescriptor *cs2);

/* Orders two O/R names (platform/nm.h says how they are written) by the attributes that
 * `attributes` names, separated by commas, in that order; the first attribute that differs decides.
 * 0 when none does, or none is named; otherwise negative when `orName1` comes first, positive when
 * `orName2` does.
 *
 * Values are compared as str_cmpTextStr does, without regard to case.  That of a name is the T.61
 * form of the attribute, if the name has one whose set is called `charsetName` or `anyCharset` is
 * not 0; `charsetName` is then not looked at.  Otherwise it is the plain form, in IA5.  Only the
 * first 255 bytes of a value count.  An attribute that a name does not have compares as an empty
 * value does: equal to another that is not there, and before all others; so does an attribute that
 * nobody knows.
 *
 * A malformed name is compared by the attributes that stand before the fault.  Nothing is
 * allocated. */
int str_cmpORName(const char *orName1, const char *orName2, const char *charsetName, int anyCharset,
                  const char *attributes);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
