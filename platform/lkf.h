/* SPDX-License-Identifier: Apache-2.0 */
/*
 * lkf_: lock files, which keep processes apart.
 *
 * The library holds the case table lock in mode LKF_EXCLUSIVE while it compiles a case table and in
 * mode LKF_SHARED while it loads one, so that no process loads a file that another is writing.
 *
 * A host replaces both functions, together, by linking its own definitions.
 *
 * Threads: locks are between processes; threads of one process need not exclude each other.
 */
#ifndef PLATFORM_LKF_H
#define PLATFORM_LKF_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

#define LKF_SHARED 1    /* excludes holders of LKF_EXCLUSIVE */
#define LKF_EXCLUSIVE 2 /* excludes every other holder */

/* Waits until the lock of the file `path` is granted in mode `mode` and answers a handle for
 * lkf_UnLockFile.  "~/" is the home directory of the service (platform/os.h).  The file is made
 * where there is none; its contents mean nothing.  The end of the process releases the lock.
 *
 * Raises an escape of class ER_CLASS_LIBRARY, code OS_ESC_FILE, when the file cannot be opened or
 * locked. */
int lkf_LockFile(int mode, const char *path);

/* Releases the lock; the handle is void afterwards.  Raises nothing: it runs in handlers. */
void lkf_UnLockFile(int handle);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
