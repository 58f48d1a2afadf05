/* SPDX-License-Identifier: Apache-2.0 */
/*
 * ext_: the service account, which owns the files that all processes of the service share.
 *
 * The library writes a compiled case table only when the process runs in the account's group, and
 * gives the file to the account before the file gets its final name.
 *
 * A host replaces either function by linking its own definition.
 *
 * Threads: any.  Neither function raises an escape.
 */
#ifndef PLATFORM_EXT_H
#define PLATFORM_EXT_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Returns the group of the service account.  In the default service, that is the group of the
 * service home, or (gid_t)-1, which no process has, if there is no home. */
gid_t ext_GetVornithGid(void);

/* Gives the file `path` to the service account, owner and group.  "~/" is the home directory of
 * the service (platform/os.h).  Fails for a symbolic link, and for a file with several names.
 *
 * Only a privileged process may give files away.  But members of the account's group work for it,
 * and that group may write the files that they share: where the owner cannot be changed, only the
 * group is.  Returns 0 when the file then has the account's group, even if it had it before;
 * another value when it does not. */
int ext_ChownToVornith(const char *path);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
