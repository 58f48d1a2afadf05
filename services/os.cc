// SPDX-License-Identifier: Apache-2.0
//
// The operating-system wrappers: a failure that callers do not check is an escape.
#include <platform/er.h>
#include <platform/mdc.h>
#include <platform/os.h>

#include "services/home.h"
#include "services/services.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <iterator>
#include <pthread.h>
#include <stdio_ext.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace libstr;

namespace
{

constexpr char kSource[] = "services/os";

// What os_SetHome was given; empty for the default.
char theHome[PATH_MAX];

// The stream for which this thread has raised an escape: its next os_fclose raises no other.
thread_local FILE *theLostStream;

void *OrEscape(void *block, int line = __builtin_LINE())
{
    if (block == nullptr)
        er_TracedEscape(ER_CLASS_LIBRARY, OS_ESC_MEMORY, kSource, line);
    return block;
}

[[noreturn]] void EscapeFile(int line = __builtin_LINE())
{
    er_TracedEscape(ER_CLASS_LIBRARY, OS_ESC_FILE, kSource, line);
}

// A block of size 0 is not null either.
size_t AtLeastOne(size_t size) { return size == 0 ? 1 : size; }

// ---- The installed home --------------------------------------------------------------------

// Empty where there is none.
char theInstalledHome[PATH_MAX];
pthread_once_t theSearch = PTHREAD_ONCE_INIT;

// The file that this code was loaded from, a shared library or a program, as an absolute path.
// Returns false when it is unknown.
bool FindOwnFile(char (&path)[PATH_MAX])
{
    FILE *const maps = std::fopen("/proc/self/maps", "re");
    if (maps == nullptr)
        return false;
    const auto here = reinterpret_cast<uintptr_t>(&FindOwnFile);
    unsigned long begin = 0, end = 0;
    char line[PATH_MAX + 128];
    while (std::fgets(line, sizeof line, maps) != nullptr)
        if (std::sscanf(line, "%lx-%lx", &begin, &end) == 2 && begin <= here && here < end)
            break;
    std::fclose(maps);
    const char *const name = std::strchr(line, '/');
    if (here < begin || here >= end || name == nullptr)
        return false;
    mdc_strlcpy(path, name, sizeof path);
    path[std::strcspn(path, "\n")] = '\0';
    return true;
}

bool IsThisProgram(const char *path)
{
    char program[PATH_MAX] = "";
    return readlink("/proc/self/exe", program, sizeof program - 1) > 0 &&
           std::strcmp(path, program) == 0;
}

// Finds the home by the relative path that installed libraries or programs have to it.  Not in a
// program with the rights of another user: its caller may have linked it into a directory of his
// own.
void FindInstalledHome()
{
    char path[PATH_MAX], home[2 * PATH_MAX];
    if (getauxval(AT_SECURE) != 0 || !FindOwnFile(path))
        return;
    const char *const way = IsThisProgram(path) ? STR_HOME_FROM_PROGRAMS : STR_HOME_FROM_LIBRARIES;
    *std::strrchr(path, '/') = '\0';
    std::snprintf(home, sizeof home, "%s/%s", path, way);
    if (realpath(home, theInstalledHome) == nullptr)
        theInstalledHome[0] = '\0';
}

// ---- Opening --------------------------------------------------------------------------------

constexpr int kMostTries = 100; // to create a file that others create too

// Creates a new file in place of whatever has its name.
int Replace(const char *resolved, int flags, mode_t mode)
{
    for (int tries = 0; tries < kMostTries; ++tries) {
        const int fd = home::Open(resolved, (flags & ~O_TRUNC) | O_EXCL, mode);
        if (fd >= 0 || errno != EEXIST || (unlink(resolved) != 0 && errno != ENOENT))
            return fd;
    }
    return -1;
}

// Others work in the home too.  Writing follows no link of theirs; reading opens only regular
// files.
int OpenInHome(const char *resolved, int flags, mode_t mode)
{
    if ((flags & (O_CREAT | O_TRUNC | O_EXCL)) == (O_CREAT | O_TRUNC))
        return Replace(resolved, flags, mode);
    const int follow = (flags & O_ACCMODE) == O_RDONLY ? 0 : O_NOFOLLOW;
    return home::Regular(home::Open(resolved, flags | follow | O_NONBLOCK | O_NOCTTY, mode));
}

// The flags of open for a mode of fopen.
int FlagsOf(const char *mode)
{
    const bool both = std::strchr(mode, '+') != nullptr;
    const int exclusive = std::strchr(mode, 'x') != nullptr ? O_EXCL : 0;
    switch (mode[0]) {
    case 'w':
        return (both ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC | exclusive;
    case 'a':
        return (both ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND | exclusive;
    default:
        return both ? O_RDWR : O_RDONLY;
    }
}

// ---- Streams -------------------------------------------------------------------------------

// A new stream may have the address of one that was lost.
FILE *Opened(FILE *stream)
{
    if (theLostStream == stream)
        theLostStream = nullptr;
    return stream;
}

// The next byte; EOF only at the end.
int NextByte(FILE *stream)
{
    for (;;) {
        const int byte = getc(stream);
        if (byte != EOF || ferror(stream) == 0)
            return byte;
        if (errno != EINTR)
            EscapeFile();
        clearerr(stream);
    }
}

// Pipes, devices and read-only file systems cannot be synchronised.
bool HasNoDisk(int error) { return error == EINVAL || error == ENOTSUP || error == EROFS; }

bool Sync(int fd)
{
    int result;
    do
        result = fsync(fd);
    while (result != 0 && errno == EINTR);
    return result == 0 || HasNoDisk(errno);
}

// Whether everything written to the stream is on the disk.
bool IsStored(FILE *stream)
{
    if (__fwritable(stream) == 0)
        return true;
    const bool hasFailed = __fwriting(stream) != 0 && ferror(stream) != 0;
    return !hasFailed && std::fflush(stream) == 0 && Sync(fileno(stream));
}

// Drops what the stream still holds, so that it can be closed.
[[noreturn]] void EscapeLost(FILE *stream, int line = __builtin_LINE())
{
    __fpurge(stream);
    theLostStream = stream;
    EscapeFile(line);
}

// ---- Directories ---------------------------------------------------------------------------

struct Directory {
    DIR *stream;
    os_dirent entry;
};

DIR *OpenDirectory(const char *path)
{
    char room[PATH_MAX];
    const char *const resolved = home::Resolve(path, room);
    DIR *stream = nullptr;
    if (resolved != nullptr)
        do
            stream = opendir(resolved);
        while (stream == nullptr && errno == EINTR);
    return stream;
}

} // namespace

extern "C" {

int os_SetHome(const char *dir)
{
    if (dir == nullptr)
        dir = "";
    if (std::strlen(dir) >= sizeof theHome)
        return -1;
    std::strcpy(theHome, dir);
    return 0;
}

const char *os_GetHome(void)
{
    if (theHome[0] != '\0')
        return theHome;
    const char *const named = secure_getenv("STR_HOME");
    if (named != nullptr && named[0] != '\0')
        return named;
    pthread_once(&theSearch, FindInstalledHome);
    return theInstalledHome[0] != '\0' ? theInstalledHome : STR_DEFAULT_HOME;
}

void *os_malloc(size_t size) { return OrEscape(std::malloc(AtLeastOne(size))); }

void *os_realloc(void *block, size_t size)
{
    return OrEscape(std::realloc(block, AtLeastOne(size)));
}

void os_free(void *block) { std::free(block); }

FILE *os_fopen(const char *path, const char *mode)
{
    return os_fdopen(os_open(path, FlagsOf(mode), 0666), mode);
}

char *os_fgets(char *buffer, int size, FILE *stream)
{
    int length = 0;
    for (int byte = '\0'; length < size - 1 && byte != '\n'; ++length) {
        byte = NextByte(stream);
        if (byte == EOF)
            break;
        buffer[length] = static_cast<char>(byte);
    }
    if (size <= 0 || (length == 0 && size > 1))
        return nullptr;
    buffer[length] = '\0';
    return buffer;
}

int os_fclose(FILE *stream)
{
    if (stream == theLostStream)
        theLostStream = nullptr;
    else if (!IsStored(stream))
        EscapeLost(stream);
    return std::fclose(stream);
}

size_t os_fread(void *buffer, size_t size, size_t count, FILE *stream)
{
    char *const bytes = static_cast<char *>(buffer);
    const size_t wanted = size * count;
    size_t read = 0;
    while (read < wanted) {
        read += std::fread(bytes + read, 1, wanted - read, stream);
        if (read == wanted || ferror(stream) == 0 || errno != EINTR)
            break;
        clearerr(stream);
    }
    return size == 0 ? 0 : read / size;
}

size_t os_fwrite(const void *data, size_t size, size_t count, FILE *stream)
{
    if (size != 0 && std::fwrite(data, size, count, stream) < count)
        EscapeLost(stream);
    return count;
}

int os_open(const char *path, int flags, mode_t mode)
{
    char room[PATH_MAX];
    const char *const resolved = home::Resolve(path, room);
    int fd = -1;
    if (resolved != nullptr)
        fd =
            home::Has(path) ? OpenInHome(resolved, flags, mode) : home::Open(resolved, flags, mode);
    if (fd < 0)
        EscapeFile();
    return fd;
}

FILE *os_fdopen(int fd, const char *mode)
{
    FILE *const stream = fdopen(fd, mode);
    if (stream == nullptr) {
        close(fd);
        EscapeFile();
    }
    return Opened(stream);
}

mode_t os_umask(mode_t mask) { return umask(mask); }

int os_rename(const char *oldPath, const char *newPath)
{
    char oldRoom[PATH_MAX], newRoom[PATH_MAX];
    const char *const from = home::Resolve(oldPath, oldRoom);
    const char *const to = home::Resolve(newPath, newRoom);
    return from == nullptr || to == nullptr ? -1 : std::rename(from, to);
}

int os_fexists(const char *path)
{
    char room[PATH_MAX];
    const char *const resolved = home::Resolve(path, room);
    struct stat file;
    return resolved != nullptr && stat(resolved, &file) == 0 ? 1 : 0;
}

void *os_opendir(const char *path)
{
    auto *const directory = static_cast<Directory *>(os_malloc(sizeof(Directory)));
    *directory = {OpenDirectory(path), {}};
    if (directory->stream == nullptr) {
        os_free(directory);
        EscapeFile();
    }
    return directory;
}

os_dirent *os_readdir(void *dir)
{
    auto *const directory = static_cast<Directory *>(dir);
    const dirent *next;
    do
        next = (errno = 0, readdir(directory->stream));
    while (next == nullptr && errno == EINTR);
    if (next == nullptr && errno != 0)
        EscapeFile();
    if (next == nullptr)
        return nullptr;
    mdc_strlcpy(directory->entry.name, next->d_name, sizeof directory->entry.name);
    return &directory->entry;
}

int os_closedir(void *dir)
{
    auto *const directory = static_cast<Directory *>(dir);
    const int result = closedir(directory->stream);
    os_free(directory);
    return result;
}

void os_ul2str(unsigned long value, int base, int minDigits, char *buffer, int *length)
{
    *length = 0;
    buffer[0] = '\0';
    if (base < 2 || base > 36)
        return;
    char digits[sizeof value * CHAR_BIT];
    const char *const end = std::to_chars(digits, std::end(digits), value, base).ptr;
    const int used = static_cast<int>(end - digits);
    const int zeros = std::max(minDigits - used, 0);
    std::memset(buffer, '0', static_cast<size_t>(zeros));
    std::memcpy(buffer + zeros, digits, static_cast<size_t>(used));
    *length = zeros + used;
    buffer[*length] = '\0';
}

} // extern "C"
