// SPDX-License-Identifier: Apache-2.0
//
// The service account: whoever owns the service home.
#include <platform/ext.h>

#include "services/home.h"
#include "services/services.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace libstr;

extern "C" {

gid_t ext_GetVornithGid(void)
{
    struct stat dir;
    return stat(os_GetHome(), &dir) == 0 ? dir.st_gid : static_cast<gid_t>(-1);
}

int ext_ChownToVornith(const char *path)
{
    char room[PATH_MAX];
    const char *const resolved = home::Resolve(path, room);
    struct stat dir, file;
    if (resolved == nullptr || stat(os_GetHome(), &dir) != 0)
        return -1;
    if (chown(resolved, dir.st_uid, dir.st_gid) == 0)
        return 0;
    const bool isGiven =
        errno == EPERM && (chown(resolved, static_cast<uid_t>(-1), dir.st_gid) == 0 ||
                           (stat(resolved, &file) == 0 && file.st_gid == dir.st_gid));
    return isGiven ? 0 : -1;
}

} // extern "C"
