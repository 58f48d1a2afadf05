/* SPDX-License-Identifier: Apache-2.0 */
/*
 * lkf_: lock files, which keep processes apart.
 *
 * The library holds the case table lock in mode LKF_EXCLUSIVE while it compiles a case table and in
 * mode LKF_SHARED while it loads one, so that no process loads a file that another is writing.
 *
 * A host replaces both functions, together, by linking its own definitions.
 *
 * Threads: any.  A lock belongs to its handle, not to a thread: in the default service two handles
 * of one process exclude each other as handles of two processes do.  In a replacement they need
 * not.
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
 * lkf_UnLockFile.  "~/" is the home directory of the service (platform/os.h).  A request for
 * LKF_SHARED waits while another request for LKF_EXCLUSIVE is waiting.
 *
 * If the file does not exist, it is created so that every user may open it, whatever the file
 * creation mask.  It is never removed, and its contents have no meaning.  It must be a regular
 * file, not a symbolic link.  LKF_SHARED only needs the right to read it.  If a file in the home
 * cannot be opened or locked, and the process cannot write to ~/toupper either, the call succeeds
 * without a lock.  When the process ends, in whatever way, the lock is released.  A child process
 * does not hold the lock, and the handle is invalid there.
 *
 * Raises an escape of class ER_CLASS_LIBRARY and then holds nothing.  The code is LKF_ESC_TIMEOUT
 * when the lock is not granted in time (30 seconds unless a host sets another time).  It is
 * OS_ESC_FILE when the file cannot be opened or locked, when `mode` is neither of the two, and when
 * the process holds more locks than the service can count (64).  The reason is logged, but not
 * twice in a row. */
int lkf_LockFile(int mode, const char *path);

/* Releases the lock; the handle is invalid afterwards.  Does nothing for an invalid handle, nor to
 * a descriptor that has replaced the lock's own.  Raises no escape, since handlers call it. */
void lkf_UnLockFile(int handle);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
