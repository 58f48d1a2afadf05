/* SPDX-License-Identifier: Apache-2.0 */
/*
 * lkf_: lock files, which keep processes apart.
 *
 * The library holds the case table lock in mode LKF_EXCLUSIVE while it compiles a case table and in
 * mode LKF_SHARED while it loads one, so that no process loads a file that another is writing.
 *
 * A host replaces both functions, together, by linking its own definitions.
 *
 * Threads: any.  A lock is the handle's, not the thread's: in the default service two handles of
 * one process exclude each other as those of two processes do.  In a replacement they need not.
 */
#ifndef PLATFORM_LKF_H
#define PLATFORM_LKF_H

#include <str/codes.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

#define LKF_SHARED 1    /* excludes holders of LKF_EXCLUSIVE */
#define LKF_EXCLUSIVE 2 /* excludes every other holder */

/* Waits until the lock of the file `path` is granted in mode `mode` and returns a handle for
 * lkf_UnLockFile.  "~/" is the home directory of the service (platform/os.h).  Whoever comes to share
 * the lock waits while another waits to hold it alone.
 *
 * The file is made where there is none, for everybody to open whatever the file creation mask, and
 * never removed; its contents mean nothing.  It is a regular file and no symbolic link.  For
 * LKF_SHARED the right to read it is enough.  A process that could write nothing in ~/toupper gets the
 * lock of a file in the home without holding it, where that file cannot be opened or locked.  The
 * end of the process releases the lock, however it ends; a process that it has made does not hold
 * the lock, and the handle is void there.
 *
 * Raises an escape of class ER_CLASS_LIBRARY and then holds nothing: LKF_ESC_TIMEOUT when the lock
 * is not granted in time (30 seconds where a host says nothing else), OS_ESC_FILE when the file
 * cannot be opened or locked, when `mode` is neither of the two, and when the process holds more
 * locks than the service keeps count of (64).  The reason is logged, once until there is another. */
int lkf_LockFile(int mode, const char *path);

/* Releases the lock; the handle is void afterwards.  Does nothing for a void handle, nor to a
 * descriptor that took the place of the lock's own.  Raises nothing: it runs in handlers. */
void lkf_UnLockFile(int handle);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
