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
#include <sys/stat.h>
#include <unistd.h>

namespace libstr::home
{

// Whether a path lies in the home.
inline bool Has(const char *path) { return path[0] == '~' && path[1] == '/'; }

// The path with the home in place of "~": `path` itself, or a text in `room`.  Null, and
// ENAMETOOLONG in errno, when it is too long.
inline const char *Resolve(const char *path, char (&room)[PATH_MAX])
{
    if (!Has(path))
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

// Returns `fd` if it is -1 or opened for a regular file.  Otherwise closes it and returns -1, and
// EINVAL in errno: a pipe would block, and using a device may do anything.
inline int Regular(int fd)
{
    struct stat file;
    if (fd < 0 || (fstat(fd, &file) == 0 && S_ISREG(file.st_mode)))
        return fd;
    close(fd);
    errno = EINVAL;
    return -1;
}

} // namespace libstr::home

#endif
