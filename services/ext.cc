// SPDX-License-Identifier: Apache-2.0
//
// The service account: the owner of the service home.
#include <platform/ext.h>

#include "services/home.h"
#include "services/services.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace libstr;

namespace
{

// Gives the file of `fd` to the owner of `dir`, or to its group.  Not a file with several names: a
// user may have linked it here so that it is given to him.
bool Give(int fd, const struct stat &dir)
{
    constexpr uid_t kSame = static_cast<uid_t>(-1);
    struct stat file;
    if (fstat(fd, &file) != 0 || S_ISLNK(file.st_mode) ||
        (S_ISREG(file.st_mode) && file.st_nlink != 1))
        return false;
    if (fchownat(fd, "", dir.st_uid, dir.st_gid, AT_EMPTY_PATH) == 0)
        return true;
    return errno == EPERM &&
           (fchownat(fd, "", kSame, dir.st_gid, AT_EMPTY_PATH) == 0 || file.st_gid == dir.st_gid);
}

} // namespace

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
    struct stat dir;
    if (resolved == nullptr || stat(os_GetHome(), &dir) != 0)
        return -1;
    const int fd = home::Open(resolved, O_PATH | O_NOFOLLOW);
    const bool isGiven = fd >= 0 && Give(fd, dir);
    close(fd);
    return isGiven ? 0 : -1;
}

} // extern "C"
