/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Transformation of UTF-8 input, as typed or received, into the bytes to work with.
 */
#ifndef STR_TRANSFORM_H
#define STR_TRANSFORM_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Rewrites the NUL-terminated UTF-8 `input`, character by character, by the first rule that applies:
 *
 * - With `prefixMode` not 0, groups in parentheses are copied whole, up to the first '=' outside of
 *   them or the end of the fourth group.  They do not nest; one that is not closed goes on to the
 *   end.
 * - A character of `specials` is replaced by the NUL-terminated string replacements[i], where i is
 *   the byte at which it stands in `specials`: the slots of its other bytes are not looked at.  A
 *   null replacement is an empty one.
 * - `escChar`, which has to be ASCII, takes up to three decimal digits, of any script, for a number.
 *   0 to 31 becomes ESC and the byte 64 above it; more, the one byte of its low eight bits.  Without
 *   a digit the next character is copied, whatever it is; a NUL at the end of the input.
 * - A character of `dropChars` is deleted together with the one behind it.
 * - Any other is copied.
 *
 * `maxLen` is the number of bytes of `input` that have to be well-formed UTF-8 without a NUL in it,
 * negative for all up to the NUL.  It does not limit what is rewritten: bytes behind it that are
 * part of no well-formed character are characters by themselves.  So are such bytes in `specials`
 * and `dropChars`, which are NUL-terminated, and empty where there are none.
 *
 * Returns the result, `*outLen` bytes of which some may be NUL, and a NUL.  It stands in a buffer of
 * the library until the next call by anyone; the caller must not release it.  The buffer grows to
 * the longest result so far, and one call at a time may run in a process.
 *
 * Where nothing results, `*outLen` is 0, and the result is the empty string when `maxLen` is 0 or
 * when it is negative and the input is empty; otherwise null.  It is null too when the input is not
 * well-formed; this logs 24070 with the input from its first bad byte on.  Raises no escape of its
 * own; one of the string service, when memory cannot be had, goes on to the caller's environment. */
char *str_TransformUTF8InputStr(const char *input, int maxLen, const char *specials,
                                const char *const *replacements, const char *dropChars,
                                char escChar, int prefixMode, unsigned int *outLen);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
