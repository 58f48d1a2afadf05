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

/* Rewrites the NUL-terminated UTF-8 `input`, character by character, by the first rule that
 * applies:
 *
 * - With `prefixMode` not 0, groups in parentheses are copied whole, up to the first '=' outside of
 *   a group or the end of the fourth group.  Groups do not nest.  One that is not closed goes on to
 *   the end.
 * - A character of `specials` is replaced by the NUL-terminated string replacements[i], where i is
 *   the offset in bytes of that character in `specials`.  Entries at other offsets are not read.  A
 *   null replacement is an empty one.
 * - `escChar`, which has to be ASCII, is followed by a number: up to three decimal digits of any
 *   script.  0 to 31 becomes ESC and the byte 64 higher; a greater number becomes one byte, its low
 *   eight bits.  If no digit follows, the next character is copied whatever it is, or a NUL at the
 *   end of the input.
 * - A character of `dropChars` is deleted, and so is the next one.
 * - Any other character is copied.
 *
 * The first `maxLen` bytes of `input` have to be well-formed UTF-8 without a NUL; if it is
 * negative, all bytes up to the NUL.  The whole input is rewritten in any case.  After `maxLen`, a
 * byte that is not part of a well-formed character is a character by itself.  So is such a byte in
 * `specials` and `dropChars`, which are NUL-terminated, and empty when not used.
 *
 * Returns the result: `*outLen` bytes, some of which may be NUL, and a NUL.  It is in a buffer of
 * the library, which the thread's next call overwrites, and which the caller must not release.  The
 * buffer grows to the longest result so far.  When the thread ends, another thread takes it over.
 *
 * An empty result has an `*outLen` of 0.  It is the empty string if `maxLen` is 0, or is negative
 * and the input is empty; otherwise null.  Malformed input returns null too, and logs
 * STR_LOG_INVALID_UTF8 with the input from its first bad byte on.  The library raises no escape
 * here; one of the string service, such as OS_ESC_MEMORY, goes on to the caller's environment. */
char *str_TransformUTF8InputStr(const char *input, int maxLen, const char *specials,
                                const char *const *replacements, const char *dropChars,
                                char escChar, int prefixMode, unsigned int *outLen);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
