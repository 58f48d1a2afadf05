// SPDX-License-Identifier: Apache-2.0
//
// Paths of the services: "~/" at the beginning is the service home.
#ifndef SERVICES_HOME_H
#define SERVICES_HOME_H

#include "services/services.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>

namespace libstr::home
{

// The path with the home in place of "~"; `room` holds it where it is not `path` itself.  Null, and
// ENAMETOOLONG in errno, when it is too long.
inline const char *Resolve(const char *path, char (&room)[PATH_MAX])
{
    if (path[0] != '~' || path[1] != '/')
        return path;
    const int length = std::snprintf(room, sizeof room, "%s%s", os_GetHome(), path + 1);
    if (length >= 0 && static_cast<size_t>(length) < sizeof room)
        return room;
    errno = ENAMETOOLONG;
    return nullptr;
}

// Opens a path that is resolved already; -1, and errno, when that fails.
inline int Open(const char *resolved, int flags, mode_t mode = 0)
{
    int fd;
    do
        fd = open(resolved, flags | O_CLOEXEC, mode);
    while (fd < 0 && errno == EINTR);
    return fd;
}

} // namespace libstr::home

#endif
