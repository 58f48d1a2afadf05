/* SPDX-License-Identifier: Apache-2.0 */
/*
 * mdc_: functions of the C library behind a name of their own, so that a host can put its checks
 * there.  It replaces any of them by linking its own definition.
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

/* Copies the NUL-terminated `source`, but at most `size` - 1 bytes of it, to `dest` and puts a NUL
 * behind it; with `size` 0 writes nothing.  Answers the length of `source` in bytes: `size` or
 * more says that it was cut.  The two must not overlap. */
size_t mdc_strlcpy(char *dest, const char *source, size_t size);

/* The first byte `ch` (taken as a char) of the NUL-terminated `text`, its NUL included; null when
 * there is none. */
char *mdc_strchr(const char *text, int ch);

/* Writes up to `count` items of `size` bytes each; answers the number of whole items written, less
 * than `count` on an error. */
size_t mdc_fwrite(const void *data, size_t size, size_t count, FILE *stream);

/* Closes a stream that os_fopen opened to read; it is void afterwards whatever happens.  0, or EOF
 * on an error.  What was written wants os_fclose, which tells of what is lost. */
int mdc_fclose(FILE *stream);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
