/* SPDX-License-Identifier: Apache-2.0 */
/*
 * nm_, da_, t61_: O/R names, the addresses of X.400, as far as comparing them needs.
 *
 * An O/R name is a NUL-terminated text; its syntax is the service's own.  Its attributes have
 * field numbers: the plain form of an attribute has a number from 0 to 63, and the T.61 form, in a
 * set that its value names, that number plus NM_T61_FORM.  Numbers 0 to 8 and 15 to 22 can have a
 * T.61 form.
 *
 * A host replaces the functions, together, by linking its own definitions.
 *
 * Threads: any; nothing is kept between calls.  No function here allocates or raises an escape in
 * the default service.
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
 * name, up to the NUL for -1; -1 when there is no such attribute. */
int da_AttIdToORNIndex(const char *identifier, int length);

/* The name of the set in which a T.61 form, the `length` bytes at `value`, is written, as
 * ccs_GetCSDescriptor takes it.  The name is constant and NUL-terminated; never null, empty when
 * the set cannot be told. */
const char *t61_ParseO61Str(const char *value, int length);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
