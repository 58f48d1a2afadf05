/* SPDX-License-Identifier: Apache-2.0 */
/*
 * nm_, da_, t61_: O/R names, the addresses of X.400, as far as comparing them needs.
 *
 * An O/R name is a NUL-terminated text; its syntax is the service's own.  Its attributes have
 * field numbers: the plain form of an attribute has a number from 0 to 63, and the T.61 form, in a
 * set that is told by its bytes, that number plus NM_T61_FORM.  A name may have both forms of an
 * attribute.
 *
 * A host replaces the functions, together, by linking its own definitions.
 *
 * Threads: any; nothing is kept between calls.  No function here allocates or raises an escape in
 * the default service.
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
 * in capitals or small letters.  It takes both forms in which names are commonly written,
 *
 *     /C=GB/ADMD=GOLD 400/O=Example/S=Smith/
 *     C=GB; A=GOLD 400; O=Example; S=Smith
 *
 * the first when the name begins with a slash; the last separator may be left out.  Names, though
 * not lists of attributes, have these besides:
 *
 *     OU=value          the next unit: the first that the name has nothing of so far
 *     DDA:type=value    the next domain-defined pair, likewise; the type may be neither empty nor
 *     DD.type=value     in quotes
 *
 * White space around keywords and values is no part of them.  A value that holds the separator, or
 * begins or ends with white space, stands in double quotes: O="A; B".  It then has none inside; a
 * value that does not begin with a quote may have them.  There is no other notation, so that what is
 * compared is the text as written.  An empty value is a field of no bytes, and compares like none.
 *
 * A value is a T.61 form when it holds a byte from 0x80 on, or ESC, SO or SI, which switch sets;
 * otherwise it is a plain form.  Where escape sequences or shifts have switched away from ASCII,
 * separators, quotes and equals signs are characters of the other set.
 *
 * Malformed are: a keyword that is unknown, empty or without an equals sign; a form that is given
 * twice; a fifth unit or pair; a T.61 form of an attribute that can have none; a quoted value that
 * does not end, or goes on after its quotes; a name of more than INT32_MAX bytes.
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

/* A parsed O/R name: where in its text each field stands, by field number.  The record is the
 * caller's, holds nothing to release, and means nothing without the text that it was made from. */
typedef struct nm_ORName {
    struct {
        int32_t offset; /* of the value's first byte in the text; -1: no such field */
        int32_t length; /* bytes; 0 where there is no such field */
    } field[NM_FIELD_COUNT];
} nm_ORName;

/* Parses `orName` into `parsed`, all of which is written.  `status` receives 0, or non-zero when
 * the text is malformed; `parsed` then holds the fields found before the fault. */
void nm_ParseORN(const char *orName, nm_ORName *parsed, int *status);

/* The value of the field number `field` of `orName`, which `parsed` was made from, and its length
 * in bytes.  It lies inside `orName`, so no NUL stands behind it.  Null and length 0 when the name
 * has no such field or there is no such number. */
const char *nm_GetFieldMemPtr(const char *orName, const nm_ORName *parsed, int field, int *length);

/* The field number of the plain form of the attribute that the `length` bytes at `identifier`
 * name, up to the NUL for -1; -1 when there is no such attribute.  The default service takes the
 * names above, with white space around them; OU is the first unit. */
int da_AttIdToORNIndex(const char *identifier, int length);

/* The name of the set in which a T.61 form, the `length` bytes at `value`, is written, as
 * ccs_GetCSDescriptor takes it.  The name is constant and NUL-terminated; never null, empty when
 * the set cannot be told.
 *
 * In the default service that is when the bytes are a plain form.  A T.61 form is "UTF8" when it is
 * well-formed UTF-8 and does not switch sets: text in T.61, where marks stand before letters of
 * ASCII, hardly ever looks like that.  All else is "T.61". */
const char *t61_ParseO61Str(const char *value, int length);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
