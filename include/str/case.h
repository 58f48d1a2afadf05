/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Case conversion.
 */
#ifndef STR_CASE_H
#define STR_CASE_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- The universal set ---------------------------------------------------------------------
 *
 * Text of the two-byte universal set needs no descriptor and no case table: the conversion service
 * (platform/cvc.h) upper-cases it.  `variant` says in which form it is:
 *
 *     3       UTF-7
 *     4       UTF-8
 *     others  two bytes a character, the more significant first
 *
 * An escape is raised by a service alone, and passes through.
 */

/* The upper case of the `inLength` bytes at `in`, or up to its NUL (in the two-byte form, a pair of
 * zero bytes) when that is -1.  `*outLen` receives its bytes.
 *
 * Returns null when `in` is malformed or null; the default service then stores 0.  The text belongs
 * to the service, which need not put a NUL behind it, and lasts until the next conversion. */
char *str_ToUpperUni(const char *in, int inLen, int *outLen, int variant);

/* Compares the upper case of two NUL-terminated texts byte by byte, as strcmp does: negative, 0 or
 * positive.  A text that cannot be upper-cased, or is empty, is compared as it stands; null is less
 * than any text.
 *
 * strcmp sees two-byte text only as far as its first zero byte, which may be half a character, so
 * the forms to compare are UTF-7 and UTF-8.
 *
 * The upper case of `s1` is copied to a buffer of the library, which grows to the longest one and
 * is never released.  One comparison at a time may run in a process. */
int str_strcasecmpUni(const char *s1, const char *s2, int variant);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
