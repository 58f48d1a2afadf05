/* SPDX-License-Identifier: Apache-2.0 */
/*
 * mdc_: functions of the C library under other names, so that a host can add its own checks.  A
 * host replaces any of them by linking its own definition.
 *
 * Threads: any.  None raises an escape in the default service; in a replacement any may.
 */
#ifndef PLATFORM_MDC_H
#define PLATFORM_MDC_H

#include <stddef.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Copies the NUL-terminated `source`, but at most `size` - 1 bytes of it, to `dest` and adds a NUL;
 * with `size` 0 writes nothing.  Returns the length of `source` in bytes: if that is `size` or
 * more, the copy was cut.  The two must not overlap. */
size_t mdc_strlcpy(char *dest, const char *source, size_t size);

/* Returns the first byte `ch` (converted to char) of the NUL-terminated `text`, which includes its
 * NUL; null when the byte does not occur. */
char *mdc_strchr(const char *text, int ch);

/* Writes up to `count` items of `size` bytes each.  Returns the number of whole items written,
 * which is less than `count` on an error. */
size_t mdc_fwrite(const void *data, size_t size, size_t count, FILE *stream);

/* Closes a stream that os_fopen opened for reading; it is invalid afterwards whatever happens.
 * Returns 0, or EOF on an error.  Use os_fclose after writing: it reports what is lost. */
int mdc_fclose(FILE *stream);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
