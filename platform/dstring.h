/* SPDX-License-Identifier: Apache-2.0 */
/*
 * dstring_: a string of bytes that grows.
 *
 * The caller owns the record, initialises it once with dstring_init, and reads `text` and `length`;
 * only the functions write to it.  If `text` is not null, a NUL follows its `length` bytes, which
 * may include NULs themselves.  The text moves when the string grows, so a pointer to it is valid
 * until the next call that adds to the string.  Shrinking keeps the memory: steady use does not
 * allocate.
 *
 * A host replaces the functions, together, by linking its own definitions.
 *
 * Threads: one at a time for one string.
 *
 * A function that adds bytes raises an escape of class ER_CLASS_LIBRARY, code OS_ESC_MEMORY, when
 * memory runs out, and leaves the string as it was.  No other function raises an escape.
 */
#ifndef PLATFORM_DSTRING_H
#define PLATFORM_DSTRING_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

typedef struct dstring {
    char *text;            /* null until something is added or set, even the empty string */
    unsigned int length;   /* bytes, without the NUL after them */
    unsigned int capacity; /* bytes that `text` has room for */
} dstring;

/* Makes `string` empty, with null for its text; allocates nothing.  The earlier contents of the
 * record are neither read nor released. */
void dstring_init(dstring *string);

/* Cuts the string to its first `length` bytes; does nothing when it is not longer. */
void dstring_setLength(dstring *string, unsigned int length);

/* Appends the `count` bytes at `bytes`, which must not lie in the string itself, or one byte. */
void dstring_appendN(dstring *string, const char *bytes, unsigned int count);
void dstring_appendChar(dstring *string, char byte);

/* Makes the string the `length` bytes at `text`, up to its NUL when `length` is negative; `text`
 * must not lie in the string itself.  The string's text is not null afterwards. */
void dstring_set(dstring *string, const char *text, int length);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
