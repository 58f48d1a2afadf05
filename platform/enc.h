/* SPDX-License-Identifier: Apache-2.0 */
/*
 * enc_: how bytes are written down in a case table source.
 *
 * The default notation: a printable ASCII character other than the backslash means itself; \xHH
 * (two hexadecimal digits) and \ooo (three octal digits, up to \377) mean the byte of that value;
 * \\ means a backslash.  Everything else is malformed: other escapes, escapes that are cut off,
 * control characters, and bytes from 0x7F on, which mean something different in every set.  A host
 * that has another notation replaces the function by linking its own definition.
 *
 * Threads: any; the result is the calling thread's.
 */
#ifndef PLATFORM_ENC_H
#define PLATFORM_ENC_H

#include <str/codes.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* `which` for a case table source: plain bytes of the table's own set. */
#define ENC_BYTES 0xFFFF

/* Returns the bytes that the NUL-terminated `text` writes down; `length` receives their number.
 * They may include NUL, and no NUL follows them.  They belong to the service and last until the
 * next call in the same thread.
 *
 * Never null.  Raises an escape of class ER_CLASS_LIBRARY: ENC_ESC_MALFORMED, which leaves `length`
 * as it is, or OS_ESC_MEMORY. */
const unsigned char *enc_ConvertLongEncodedStr(const char *text, int which, int *length);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
