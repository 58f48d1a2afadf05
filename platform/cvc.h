/* SPDX-License-Identifier: Apache-2.0 */
/*
 * cvc_: conversion from one character set to another, which the library uses to upper-case text of
 * the two-byte universal set.  A host replaces it by linking its own definition.
 *
 * The sets that a service must know, by name:
 *
 *     UCS2        two bytes a character, the more significant first
 *     UCS2,7      the same characters in UTF-7
 *     UCS2,8      the same characters in UTF-8
 *     UCS2UP, UCS2UP,7, UCS2UP,8   targets only: as above, in upper case
 *
 * Threads: any; the result is the calling thread's.
 */
#ifndef PLATFORM_CVC_H
#define PLATFORM_CVC_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* What the library passes as `request` and `options`. */
#define CVC_REQUEST_TEXT 12
#define CVC_OPTIONS_NONE 0

/* Converts the `inLength` bytes at `in` from the set named `from` to the set named `to`.  With
 * -1 for `inLength` the text ends at its NUL character: a byte of 0, in two-byte sets a pair.
 *
 * `*result` receives the text and `*resultLength` its bytes.  The text belongs to the service,
 * until the next conversion in the same thread; the caller may write to it, and to the one byte
 * behind it, to terminate it in place.  What is stored through the last three arguments is the
 * service's own; they point to an int each, and the library does not read them.
 *
 * Answers 0.  When there is no such conversion, or `in` is malformed, answers non-zero, with null
 * for the result and 0 for its length.  Raises OS_ESC_MEMORY of class ER_CLASS_LIBRARY. */
int cvc_ConvertString(int request, int options, const char *in, int inLength, const char *from,
                      const char *to, char **result, int *resultLength, int *detail1, int *detail2,
                      int *detail3);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
