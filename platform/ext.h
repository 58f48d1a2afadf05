/* SPDX-License-Identifier: Apache-2.0 */
/*
 * ext_: the service account, who owns the files that all processes of the service share.
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

/* The group of the service account, which in the default service is the owner of the service home;
 * (gid_t)-1, which no process has, where there is no home. */
gid_t ext_GetVornithGid(void);

/* Gives the file `path` to the service account, owner and group.  "~/" is the home directory of
 * the service (platform/os.h).  Fails for a symbolic link, and for a file of several names.
 *
 * Only a privileged process may give files away.  Members of the account's group work on its
 * behalf, though, and the files that they share are writable by that group: where the owner cannot
 * be changed the group alone is given.  0 when the file has the account's group afterwards, also
 * when it had it before; another value when it has not. */
int ext_ChownToVornith(const char *path);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
