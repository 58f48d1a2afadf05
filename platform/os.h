/* SPDX-License-Identifier: Apache-2.0 */
/*
 * os_: memory, files, directories, numbers, and the matcher of single-set text.
 *
 * These functions are named after functions of the C library and POSIX.  They differ in this:
 *
 * - Where callers do not check a result, a failure is an escape of class ER_CLASS_LIBRARY, with a
 *   code named below: when allocating, opening, reading a line, writing, and closing what was
 *   written.  After an escape everything is as before the call: nothing new is open, what should be
 *   closed is still open, the block that should grow is unchanged.  Only os_fwrite may have done
 *   part of its work.  In the default service, functions for which no code is named raise no
 *   escape; in a replacement any function may.
 * - A path that begins with "~/" lies in the home directory of the service.  Any other path is
 *   taken as it is.
 * - In the home, where others work too, only regular files are opened, and files are not written
 *   through a symbolic link.  Where a file would be created or truncated (O_CREAT with O_TRUNC,
 *   mode "w"), a new file replaces whatever has its name.
 * - A call that a signal interrupts does not fail, except while it writes.
 * - Descriptors and streams opened here are closed in a program that the process executes.
 *
 * A host replaces any function by linking its own definition; functions that handle the same
 * objects (blocks, streams, directories) are replaced together.
 *
 * Threads: as safe as the functions after which they are named; the creation mask belongs to the
 * process.
 */
#ifndef PLATFORM_OS_H
#define PLATFORM_OS_H

#include <str/codes.h>

#include <stddef.h>
#include <stdio.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- Memory ------------------------------------------------------------------------------- */

/* Returns a block of `size` bytes, aligned for any type; never null, not even for size 0.  The
 * caller owns it and releases it with os_free.  Raises OS_ESC_MEMORY. */
void *os_malloc(size_t size);

/* Changes the size of `block` (null: a new one) to `size` bytes and keeps what fits; never null.
 * The old address is invalid afterwards.  Raises OS_ESC_MEMORY; the old block is then unchanged and
 * still the caller's. */
void *os_realloc(void *block, size_t size);

/* Releases `block`; null is allowed. */
void os_free(void *block);

/* ---- Files -------------------------------------------------------------------------------- */

/* Opens a stream, as fopen; the caller closes it with os_fclose or mdc_fclose.  Raises
 * OS_ESC_FILE. */
FILE *os_fopen(const char *path, const char *mode);

/* Reads a line of at most `size` - 1 bytes, its newline included, and adds a NUL.  Returns
 * `buffer`; null when nothing is left to read.  Raises OS_ESC_FILE on an error (such as an opened
 * directory), so that half a file is never taken for the whole; the contents of `buffer` are then
 * undefined. */
char *os_fgets(char *buffer, int size, FILE *stream);

/* Closes the stream, which is invalid afterwards, and returns what fclose does.  If the file is on
 * a disk, everything written is on the disk by then: a file that is renamed afterwards is complete
 * even after a crash.
 *
 * Raises OS_ESC_FILE when something written is lost.  The stream is then still open, without what
 * could not be written, and a second call closes it whatever happens: a handler calls this again,
 * as after an escape of os_fwrite. */
int os_fclose(FILE *stream);

/* Reads up to `count` items of `size` bytes each.  Returns the number of whole items read, which is
 * less than `count` at the end of the file and on an error. */
size_t os_fread(void *buffer, size_t size, size_t count, FILE *stream);

/* Writes `count` items of `size` bytes each and returns their number.  Raises OS_ESC_FILE when they
 * cannot all be written: a part of them, or of what was written before, may be in the file.  The
 * stream can then only be given to os_fclose, which raises no other escape. */
size_t os_fwrite(const void *data, size_t size, size_t count, FILE *stream);

/* Opens a file descriptor, as open does with `flags` (O_...); a file that it creates has the
 * permissions `mode`.  Raises OS_ESC_FILE. */
int os_open(const char *path, int flags, mode_t mode);

/* Makes a stream of the descriptor `fd`.  The stream owns it then; if the call fails, it is closed.
 * Raises OS_ESC_FILE. */
FILE *os_fdopen(int fd, const char *mode);

/* Sets the file creation mask of the process; returns the earlier one. */
mode_t os_umask(mode_t mask);

/* Renames a file in one step, replacing a file that has the new name.  Returns 0, or -1 on
 * failure. */
int os_rename(const char *oldPath, const char *newPath);

/* Returns non-zero when the process can see a file or directory of that name. */
int os_fexists(const char *path);

/* ---- Directories -------------------------------------------------------------------------- */

/* One entry of a directory: 10 bytes for the service, then the file's name. */
typedef struct os_dirent {
    char head[10];
    char name[256]; /* NUL-terminated, without the directory */
} os_dirent;

/* Opens a directory; the caller closes it with os_closedir.  Never null.  Raises OS_ESC_FILE, or
 * OS_ESC_MEMORY. */
void *os_opendir(const char *path);

/* Returns the next entry, in any order; null at the end.  The entry belongs to the open directory
 * and lasts until the next call for it.  Raises OS_ESC_FILE on an error, so that an unreadable
 * directory is never taken for an empty one. */
os_dirent *os_readdir(void *dir);

/* Closes the directory.  Returns 0, or -1 on failure. */
int os_closedir(void *dir);

/* ---- Numbers and matching ----------------------------------------------------------------- */

/* Writes `value` in base `base` (2 to 36, letters in lower case) into `buffer`, with leading zeros
 * up to `minDigits` digits, and adds a NUL; 0 has one digit.  `length` receives the number of
 * digits.  For any other base it is 0, and the text is empty.  The caller makes sure that `buffer`
 * is large enough: in base 10, 21 bytes hold every value. */
void os_ul2str(unsigned long value, int base, int minDigits, char *buffer, int *length);

/* Returns 1 if the whole of `string` matches `pattern`, else 0.  Both are NUL-terminated texts of
 * one single-segment set.  US (0x1F) in the pattern matches any run of bytes, even an empty one;
 * every other byte matches only itself. */
int os_USPatternMatch(const char *string, const char *pattern);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
