/* SPDX-License-Identifier: Apache-2.0 */
/*
 * nm_, da_, t61_: O/R names, the addresses of X.400, as far as comparison needs them.
 *
 * An O/R name is a NUL-terminated text; the service decides its syntax.  Attributes have field
 * numbers: the plain form of an attribute has a number from 0 to 63.  Its T.61 form, whose set
 * depends on its bytes, has that number plus NM_T61_FORM.  A name may have both forms of an
 * attribute.
 *
 * A host replaces the functions, together, by linking its own definitions.
 *
 * Threads: any; nothing is kept between calls.  In the default service no function here allocates
 * or raises an escape.
 *
 * The default service reads the attributes of the 1984 standard, and calls them
 *
 *     0        O               organization
 *     1 to 4   OU1 to OU4      organizational units
 *     5        S               surname
 *     6        G               given name
 *     7        I               initials
 *     8        Q, GQ           generation qualifier
 *     9        C               country
 *     10       A, ADMD         administration domain
 *     11       P, PRMD         private domain
 *     12       X.121, X121     network address
 *     13       T-ID            terminal identifier
 *     14       N-ID, UA-ID     numeric user identifier
 *     15, 17, 19, 21   DDT1 to DDT4   types of domain-defined attributes
 *     16, 18, 20, 22   DDV1 to DDV4   their values
 *
 * in capitals or small letters.  It reads both forms in which names are commonly written,
 *
 *     /C=GB/ADMD=GOLD 400/O=Example/S=Smith/
 *     C=GB; A=GOLD 400; O=Example; S=Smith
 *
 * the first if the name begins with a slash.  The last separator may be left out.  Names, but not
 * lists of attributes, may also have these:
 *
 *     OU=value          the next unit: the first of which the name has neither form yet
 *     DDA:type=value    the next domain-defined pair, found in the same way; the type must not be
 *     DD.type=value     empty or in quotes
 *
 * White space around a keyword or value is not part of it.  A value that contains the separator, or
 * begins or ends with white space, is put in double quotes: O="A; B".  It cannot contain a double
 * quote; a value that does not begin with one can.  There is no other notation: values are compared
 * as they are written.  An empty value is a field of no bytes; it compares like a missing field.
 *
 * A value is a T.61 form if it contains a byte from 0x80 on, or ESC, SO or SI, which switch sets;
 * otherwise it is a plain form.  Where escape sequences or shifts have switched away from ASCII,
 * separators, quotes and equals signs are characters of the other set.
 *
 * These are malformed: a keyword that is unknown, empty or without an equals sign; a form given
 * twice; a fifth unit or pair; a T.61 form of an attribute that cannot have one; a quoted value
 * without a closing quote, or with text after it; a name of more than INT32_MAX bytes.
 */
#ifndef PLATFORM_NM_H
#define PLATFORM_NM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

#define NM_FIELD_COUNT 128
#define NM_T61_FORM 64

/* Whether an attribute, by its plain field number, can have a T.61 form. */
#define NM_HAS_T61_FORM(field) (((field) >= 0 && (field) <= 8) || ((field) >= 15 && (field) <= 22))

/* A parsed O/R name: the place of each field in its text, by field number.  The record is the
 * caller's, holds nothing to release, and is of use only with the text that it was made from. */
typedef struct nm_ORName {
    struct {
        int32_t offset; /* of the value's first byte in the text; -1: no such field */
        int32_t length; /* bytes; 0 where there is no such field */
    } field[NM_FIELD_COUNT];
} nm_ORName;

/* Parses `orName` and writes all of `parsed`.  `status` receives 0, or non-zero when the text is
 * malformed; `parsed` then holds the fields before the fault. */
void nm_ParseORN(const char *orName, nm_ORName *parsed, int *status);

/* Returns the value of the field number `field` of `orName`, from which `parsed` was made; `length`
 * receives its bytes.  The value lies inside `orName`, so no NUL follows it.  Null and length 0
 * when the name does not have the field, or the number is not a field's. */
const char *nm_GetFieldMemPtr(const char *orName, const nm_ORName *parsed, int field, int *length);

/* Returns the field number of the plain form of the attribute with the name at `identifier`, of
 * `length` bytes, or up to the NUL for -1.  Returns -1 when there is no such attribute.  The
 * default service takes the names above, also with white space around them; OU is the first
 * unit. */
int da_AttIdToORNIndex(const char *identifier, int length);

/* Returns the name of the set of a T.61 form, the `length` bytes at `value`, for
 * ccs_GetCSDescriptor.  The name is constant and NUL-terminated; never null, but empty when the set
 * is unknown.
 *
 * In the default service the name is empty for a plain form, and "UTF8" for a T.61 form that is
 * well-formed UTF-8 and does not switch sets: text in T.61, where marks come before ASCII letters,
 * is hardly ever well-formed UTF-8.  Every other form is "T.61". */
const char *t61_ParseO61Str(const char *value, int length);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
