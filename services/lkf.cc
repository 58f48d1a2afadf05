// SPDX-License-Identifier: Apache-2.0
//
// Lock files.  The locks belong to open file descriptions.  Older locks belong to the process,
// where any close of the file would release them.
//
// A lock is a lock of the file's first byte.  The second byte is the turnstile: whoever waits to
// hold the lock alone holds it, and whoever comes to share the lock waits until nobody does.
//
// A child process inherits the descriptors, and with them the locks; it closes its copies at once.
#include <platform/er.h>
#include <platform/lkf.h>
#include <platform/os.h>

#include "services/home.h"
#include "services/services.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace libstr;

namespace
{

constexpr mode_t kEverybody = 0666;
constexpr int64_t kMillisecond = 1000000; // times are in nanoseconds
constexpr int64_t kLongestPause = 8 * kMillisecond;
constexpr int kMostTries = 100; // to open a file that others make and remove
constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY; // to open one that is there

enum : off_t { kLock, kTurnstile }; // bytes of the file

struct Lock {
    int handle; // 0: not held
    int fd;
    dev_t dev; // the file that `fd` was opened for
    ino_t ino;
};

constexpr int kNoLock = INT_MAX; // the handle of a process that needs no lock

int thePatience = 30000; // milliseconds
int theLastReason;       // why a lock was refused: an escape's code or errno

// The locks held and waited for.  Handles are not reused, so that an invalid one finds nothing.
pthread_mutex_t theMutex = PTHREAD_MUTEX_INITIALIZER;
Lock theLocks[64];
int theLastHandle;
bool theForksAreWatched;

[[noreturn]] void Escape(int code, int line = __builtin_LINE())
{
    er_TracedEscape(ER_CLASS_LIBRARY, code, "services/lkf", line);
}

// ---- Time ----------------------------------------------------------------------------------

int64_t Now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000 * kMillisecond + now.tv_nsec;
}

// Less than a second.
void Sleep(int64_t nanoseconds)
{
    timespec pause{};
    pause.tv_nsec = static_cast<long>(nanoseconds);
    nanosleep(&pause, nullptr);
}

int64_t Deadline() { return thePatience < 0 ? INT64_MAX : Now() + thePatience * kMillisecond; }

// ---- The table -----------------------------------------------------------------------------

void Enter() { pthread_mutex_lock(&theMutex); }

void Leave() { pthread_mutex_unlock(&theMutex); }

bool IsFileOf(const Lock &lock, const struct stat &file)
{
    return file.st_dev == lock.dev && file.st_ino == lock.ino;
}

// Whether the descriptor is still the lock's: other code may have closed it and opened it for
// another file.  If that cannot be found out, it is the lock's; otherwise it would never be closed.
bool OwnsDescriptor(const Lock &lock)
{
    struct stat file;
    return fstat(lock.fd, &file) == 0 ? IsFileOf(lock, file) : errno != EBADF;
}

// The entry of a handle, or for 0 a free one; null when there is none.
Lock *Find(int handle)
{
    for (Lock &lock : theLocks)
        if (lock.handle == handle)
            return &lock;
    return nullptr;
}

// Drops the entry of a descriptor that has just been opened: other code must have closed it before.
void Forget(int fd)
{
    for (Lock &lock : theLocks)
        if (lock.handle != 0 && lock.fd == fd)
            lock = {};
}

void AbandonAll()
{
    for (Lock &lock : theLocks) {
        if (lock.handle != 0 && OwnsDescriptor(lock))
            close(lock.fd);
        lock = {};
    }
    Leave();
}

bool WatchForks()
{
    if (!theForksAreWatched)
        theForksAreWatched = pthread_atfork(Enter, Leave, AbandonAll) == 0;
    return theForksAreWatched;
}

// ---- One lock ------------------------------------------------------------------------------

// Creates the file.  Everybody may open it from the first moment, whatever the creation mask: its
// creator may be killed in the next.
int Create(const char *path)
{
    const mode_t mask = umask(0);
    const int fd = home::Open(path, O_RDWR | O_CREAT | O_EXCL, kEverybody);
    const int error = errno;
    umask(mask);
    errno = error;
    return fd;
}

int OpenOrCreate(const char *path, int mode)
{
    for (int tries = 0; tries < kMostTries; ++tries) {
        int fd = home::Regular(home::Open(path, O_RDWR | kFlags));
        if (fd < 0 && mode == LKF_SHARED && (errno == EACCES || errno == EPERM || errno == EROFS))
            fd = home::Regular(home::Open(path, O_RDONLY | kFlags));
        if (fd < 0 && errno == ENOENT)
            fd = Create(path);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    return -1;
}

// Opens the file and enters it in the table, with no fork in between.  Returns a lock without a
// handle when that fails.
Lock Begin(const char *path, int mode)
{
    Lock lock{};
    Enter();
    Lock *const place = WatchForks() ? Find(0) : nullptr;
    errno = ENOLCK;
    lock.fd = place == nullptr ? -1 : OpenOrCreate(path, mode);
    struct stat file;
    if (lock.fd >= 0 && fstat(lock.fd, &file) != 0) {
        close(lock.fd);
    } else if (lock.fd >= 0) {
        Forget(lock.fd);
        lock.handle = theLastHandle = theLastHandle % (kNoLock - 1) + 1;
        lock.dev = file.st_dev;
        lock.ino = file.st_ino;
        *place = lock;
    }
    Leave();
    return lock;
}

struct flock Range(int type, off_t byte)
{
    struct flock range = {};
    range.l_type = static_cast<short>(type);
    range.l_whence = SEEK_SET;
    range.l_start = byte;
    range.l_len = 1;
    return range;
}

bool Set(int fd, int type, off_t byte)
{
    const struct flock range = Range(type, byte);
    return fcntl(fd, F_OFD_SETLK, &range) == 0;
}

// Whether nobody waits to hold the lock alone.
bool IsTurnstileFree(int fd)
{
    struct flock range = Range(F_RDLCK, kTurnstile);
    if (fcntl(fd, F_OFD_GETLK, &range) != 0)
        return false;
    errno = EAGAIN;
    return range.l_type == F_UNLCK;
}

// One try; false, and errno, when it fails.  It may keep the turnstile for the next try.
bool Try(int fd, int mode)
{
    if (mode == LKF_SHARED)
        return IsTurnstileFree(fd) && Set(fd, F_RDLCK, kLock);
    return Set(fd, F_WRLCK, kTurnstile) && Set(fd, F_WRLCK, kLock) && Set(fd, F_UNLCK, kTurnstile);
}

void End(int handle)
{
    Enter();
    Lock *const lock = handle > 0 ? Find(handle) : nullptr;
    if (lock != nullptr) {
        if (OwnsDescriptor(*lock)) {
            Set(lock->fd, F_UNLCK, kLock); // a child process may still have the descriptor
            Set(lock->fd, F_UNLCK, kTurnstile);
            close(lock->fd);
        }
        *lock = {};
    }
    Leave();
}

// Waits for the lock; returns 0 or the code of the escape.
int Acquire(const Lock &lock, int mode, int64_t deadline)
{
    for (int64_t pause = kMillisecond; !Try(lock.fd, mode);
         pause = std::min(2 * pause, kLongestPause)) {
        if (errno != EAGAIN && errno != EACCES && errno != EINTR)
            return OS_ESC_FILE;
        const int64_t left = deadline - Now();
        if (left <= 0)
            return LKF_ESC_TIMEOUT;
        Sleep(std::min(pause, left));
    }
    return 0;
}

// Whether the path still leads to the file that was opened: a lock on any other excludes nobody.
bool IsInPlace(const Lock &lock, const char *path)
{
    struct stat file;
    return lstat(path, &file) == 0 ? IsFileOf(lock, file) : errno != ENOENT;
}

// Waits for the lock.  If that fails, returns a lock without a handle, and the code of the escape
// in `code`.
Lock BeginAndAcquire(const char *path, int mode, int *code)
{
    const int64_t deadline = Deadline();
    for (;;) {
        const Lock lock = Begin(path, mode);
        *code = lock.handle == 0 ? OS_ESC_FILE : Acquire(lock, mode, deadline);
        if (*code == 0 && IsInPlace(lock, path))
            return lock;
        const int error = errno;
        End(lock.handle);
        errno = error;
        if (*code == 0 && Now() >= deadline)
            *code = LKF_ESC_TIMEOUT;
        if (*code != 0)
            return {};
    }
}

// ---- No lock -------------------------------------------------------------------------------

// Whether this process can write none of the files that a lock in the home protects.
bool CanOnlyRead(const char *path)
{
    char room[PATH_MAX];
    const char *const tables = home::Resolve("~/toupper", room);
    return home::Has(path) &&
           (tables == nullptr || faccessat(AT_FDCWD, tables, W_OK | X_OK, AT_EACCESS) != 0);
}

// A lock is tried for again at each use, so a reason is logged only when it differs from the last.
void LogReason(const char *path, int code, int error)
{
    const int reason = code == OS_ESC_FILE ? error : code;
    Enter();
    const bool isNew = reason != theLastReason;
    theLastReason = reason;
    Leave();
    char text[PATH_MAX + 128];
    std::snprintf(text, sizeof text, "%s cannot be locked: %s", path,
                  code == OS_ESC_FILE ? std::strerror(error) : er_GetCodeText(code));
    if (isNew)
        er_LogInfo(1, text, 0);
}

} // namespace

extern "C" {

void lkf_SetPatience(int milliseconds) { thePatience = milliseconds; }

int lkf_LockFile(int mode, const char *path)
{
    char room[PATH_MAX];
    const char *const resolved = home::Resolve(path, room);
    if (resolved == nullptr || (mode != LKF_SHARED && mode != LKF_EXCLUSIVE))
        Escape(OS_ESC_FILE);
    int code = 0;
    const Lock lock = BeginAndAcquire(resolved, mode, &code);
    const int error = errno;
    if (lock.handle != 0)
        return lock.handle;
    if (code == OS_ESC_FILE && CanOnlyRead(path))
        return kNoLock;
    LogReason(resolved, code, error);
    Escape(code);
}

void lkf_UnLockFile(int handle) { End(handle); }

} // extern "C"
