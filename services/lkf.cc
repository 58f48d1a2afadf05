// SPDX-License-Identifier: Apache-2.0
//
// Lock files.  The locks belong to open file descriptions, not to the process as older ones do,
// which any close of the file anywhere in the process would release.
//
// A child process inherits the descriptors, and with them the locks; it closes its copies at once.
#include <platform/er.h>
#include <platform/lkf.h>
#include <platform/os.h>

#include "services/home.h"
#include "services/services.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace libstr;

namespace
{

constexpr mode_t kEverybody = 0666;
constexpr int64_t kMillisecond = 1000000; // times are in nanoseconds
constexpr int64_t kLongestPause = 50 * kMillisecond;
constexpr int kMostTries = 100; // to open a file that others make and remove

struct Lock {
    int handle; // 0 where there is none
    int fd;
    dev_t dev; // the file that `fd` was opened for
    ino_t ino;
};

int thePatience = 30000; // milliseconds

// The locks held and waited for.  A handle is never given twice, so that a void one finds none.
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

// Whether the descriptor is still the lock's, and not closed by somebody and given away.
bool OwnsDescriptor(const Lock &lock)
{
    struct stat file;
    return fstat(lock.fd, &file) == 0 && IsFileOf(lock, file);
}

// The entry of a handle, or with 0 a free one; null when there is none.
Lock *Find(int handle)
{
    for (Lock &lock : theLocks)
        if (lock.handle == handle)
            return &lock;
    return nullptr;
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

// Makes the file.  Everybody may open it whatever the creation mask, from the first moment: whoever
// makes it may be killed in the next.
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
        int fd = home::Open(path, O_RDWR);
        if (fd < 0 && mode == LKF_SHARED && (errno == EACCES || errno == EPERM || errno == EROFS))
            fd = home::Open(path, O_RDONLY);
        if (fd < 0 && errno == ENOENT)
            fd = Create(path);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    return -1;
}

// Opens the file and enters it in the table, which no fork comes between.  An entry without a
// handle when it cannot.
Lock Begin(const char *path, int mode)
{
    Lock lock{};
    Enter();
    Lock *const place = WatchForks() ? Find(0) : nullptr;
    lock.fd = place == nullptr ? -1 : OpenOrCreate(path, mode);
    struct stat file;
    if (lock.fd >= 0 && fstat(lock.fd, &file) != 0) {
        close(lock.fd);
    } else if (lock.fd >= 0) {
        lock.handle = theLastHandle = theLastHandle % INT_MAX + 1;
        lock.dev = file.st_dev;
        lock.ino = file.st_ino;
        *place = lock;
    }
    Leave();
    return lock;
}

bool Set(int fd, int type)
{
    struct flock whole = {};
    whole.l_type = static_cast<short>(type);
    whole.l_whence = SEEK_SET;
    return fcntl(fd, F_OFD_SETLK, &whole) == 0;
}

void End(int handle)
{
    Enter();
    Lock *const lock = handle > 0 ? Find(handle) : nullptr;
    if (lock != nullptr) {
        if (OwnsDescriptor(*lock)) {
            Set(lock->fd, F_UNLCK); // a copy of the descriptor may live on elsewhere
            close(lock->fd);
        }
        *lock = {};
    }
    Leave();
}

// Waits for the lock; answers 0 or the code of the escape.
int Acquire(const Lock &lock, int mode, int64_t deadline)
{
    const int type = mode == LKF_SHARED ? F_RDLCK : F_WRLCK;
    for (int64_t pause = kMillisecond; !Set(lock.fd, type);
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

// Whether the path still leads to the file that was opened: a lock on another excludes nobody.
bool IsInPlace(const Lock &lock, const char *path)
{
    struct stat file;
    return stat(path, &file) == 0 && IsFileOf(lock, file);
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
    const int64_t deadline = Deadline();
    for (;;) {
        const Lock lock = Begin(resolved, mode);
        if (lock.handle == 0)
            Escape(OS_ESC_FILE);
        const int code = Acquire(lock, mode, deadline);
        if (code == 0 && IsInPlace(lock, resolved))
            return lock.handle;
        End(lock.handle);
        if (code != 0 || Now() >= deadline)
            Escape(code != 0 ? code : LKF_ESC_TIMEOUT);
    }
}

void lkf_UnLockFile(int handle) { End(handle); }

} // extern "C"
