/* SPDX-License-Identifier: Apache-2.0 */
/*
 * os_: memory, files, directories, numbers, and the matcher of single-set text.
 *
 * Named after the functions of the C library and POSIX, and like them but for these things:
 *
 * - What callers do not test never fails quietly.  To allocate, to open, to read a line, to write
 *   and to close what was written raise an escape of class ER_CLASS_LIBRARY instead, with one of
 *   the codes below.  An escape means that nothing was done: nothing is open that was not, what was
 *   to be closed is still open, the block that was to grow is as it was; os_fwrite alone may have
 *   done a part.  The functions where no code is named raise nothing in the default service; in a
 *   replacement any function may.
 * - A path that begins with "~/" lies in the home directory of the service.  Any other path is
 *   taken as it is.
 * - In the home, where others work too, only regular files are opened, and none that is written by
 *   way of a symbolic link.  Where a file would be made or else cut to nothing (O_CREAT with O_TRUNC,
 *   mode "w"), a new one takes the place of whatever has its name.
 * - A signal that interrupts a call is no failure, except while it writes.
 * - Descriptors and streams opened here are closed in a program that the process executes.
 *
 * A host replaces any function by linking its own definition; what is handed from one to another
 * (blocks, streams, directories) goes together.
 *
 * Threads: as safe as the functions that they are named after; the creation mask is one for the
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

/* A block of `size` bytes, aligned for any type; never null, not even for size 0.  The caller owns
 * it and releases it with os_free.  Raises OS_ESC_MEMORY. */
void *os_malloc(size_t size);

/* Gives `block` (null: a new one) a size of `size` bytes and keeps what fits; never null.  The old
 * address is void afterwards.  Raises OS_ESC_MEMORY; the old block is then untouched and still the
 * caller's. */
void *os_realloc(void *block, size_t size);

/* Releases `block`; null is allowed. */
void os_free(void *block);

/* ---- Files -------------------------------------------------------------------------------- */

/* Opens a stream, as fopen; the caller closes it with os_fclose or mdc_fclose.  Raises
 * OS_ESC_FILE. */
FILE *os_fopen(const char *path, const char *mode);

/* Reads a line of at most `size` - 1 bytes, its newline included, and puts a NUL behind it.
 * Answers `buffer`; null at the end of the file, where there is nothing left to read.  Raises
 * OS_ESC_FILE on an error (an opened directory is one), so that half a file never passes for the
 * whole; `buffer` then holds nothing of use. */
char *os_fgets(char *buffer, int size, FILE *stream);

/* Closes the stream, which is void afterwards, and answers what fclose does.  What was written is
 * on the disk by then, where the file is on one, so that a file renamed after that is whole even
 * after a crash.
 *
 * Raises OS_ESC_FILE where something written is lost.  The stream is then still open, without what
 * could not be written, and a second call closes it whatever happens: a handler calls this once
 * more, as after an escape of os_fwrite. */
int os_fclose(FILE *stream);

/* Reads up to `count` items of `size` bytes each; answers the number of whole items read, which is
 * less than `count` at the end of the file and on an error. */
size_t os_fread(void *buffer, size_t size, size_t count, FILE *stream);

/* Writes `count` items of `size` bytes each and answers their number.  Raises OS_ESC_FILE where
 * they cannot all be written: some of them, or of what was written before, may be in the file.  The
 * stream is then good for os_fclose alone, which raises nothing more. */
size_t os_fwrite(const void *data, size_t size, size_t count, FILE *stream);

/* Opens a file descriptor, as open with `flags` (O_...) and the permissions of a file that it
 * creates.  Raises OS_ESC_FILE. */
int os_open(const char *path, int flags, mode_t mode);

/* Makes a stream of the descriptor `fd`, which is the service's from the call on: the stream's, or
 * closed where there is none.  Raises OS_ESC_FILE. */
FILE *os_fdopen(int fd, const char *mode);

/* Sets the file creation mask of the process; answers the one that it replaces. */
mode_t os_umask(mode_t mask);

/* Renames a file in one step, replacing one of the new name.  0, or -1 on failure. */
int os_rename(const char *oldPath, const char *newPath);

/* Non-zero when a file or directory of that name exists, as far as the process can see. */
int os_fexists(const char *path);

/* ---- Directories -------------------------------------------------------------------------- */

/* One entry of a directory: 10 bytes that are the service's own, then the file's name. */
typedef struct os_dirent {
    char head[10];
    char name[256]; /* NUL-terminated, without the directory */
} os_dirent;

/* Opens a directory; the caller closes it with os_closedir.  Never null.  Raises OS_ESC_FILE, or
 * OS_ESC_MEMORY. */
void *os_opendir(const char *path);

/* The next entry, in no given order; null at the end.  It belongs to the open directory and lasts
 * until the next call for it.  Raises OS_ESC_FILE on an error, so that a directory that cannot be read
 * never passes for an empty one. */
os_dirent *os_readdir(void *dir);

/* Closes the directory.  0, or -1 on failure. */
int os_closedir(void *dir);

/* ---- Numbers and matching ----------------------------------------------------------------- */

/* Writes `value` in base `base` (2 to 36, letters in lower case) into `buffer`, with leading zeros
 * to at least `minDigits` digits, and puts a NUL behind it; 0 has one digit.  `length` receives the
 * number of digits.  In any other base there are none.  The caller provides the room: in base 10,
 * 21 bytes hold every value. */
void os_ul2str(unsigned long value, int base, int minDigits, char *buffer, int *length);

/* Whether the whole of `string` matches `pattern`: 1 or 0.  Both are NUL-terminated texts of one
 * single-segment set.  US (0x1F) in the pattern stands for any run of bytes, the empty run
 * included; every other byte for itself alone. */
int os_USPatternMatch(const char *string, const char *pattern);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
