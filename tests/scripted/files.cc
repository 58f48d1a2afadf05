// SPDX-License-Identifier: Apache-2.0
#include "tests/scripted/files.h"

#include "services/services.h"

#include <dirent.h>
#include <fcntl.h>
#include <platform/enc.h>
#include <platform/er.h>
#include <platform/ext.h>
#include <platform/lkf.h>
#include <platform/mdc.h>
#include <platform/os.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace scripted
{
Files files;
Held held;
} // namespace scripted

using scripted::files;
using scripted::held;

namespace
{

[[noreturn]] void Raise(int escapeClass)
{
    er_TracedEscape(escapeClass, OS_ESC_FILE, "tests/scripted/files", 1);
}

// Fails the call whose turn it is; a descriptor given to it is the service's and goes first.
void MayFail(const char *call, int fd = -1)
{
    if (files.escapeClass == 0 || (!files.failing.empty() && files.failing != call) ||
        files.callsLeft-- != 0)
        return;
    files.failed = call;
    close(fd);
    Raise(files.escapeClass);
}

std::string Resolved(const char *path)
{
    return path[0] == '~' ? std::string(os_GetHome()) + (path + 1) : path;
}

// What could not be had is an escape; the rest is held until it is closed.
template <class T>
T *Hold(T *thing)
{
    if (thing == nullptr)
        Raise(ER_CLASS_LIBRARY);
    held.open.insert(thing);
    return thing;
}

int Close(const char *call, FILE *stream)
{
    MayFail(call);
    held.open.erase(stream);
    return std::fclose(stream);
}

// ---- Memory: every block is new, full of 0xEE, with more of it behind, and goes as such ------

#ifdef __SANITIZE_ADDRESS__
constexpr size_t kBehind = 0; // the sanitizer looks there itself
#else
constexpr size_t kBehind = 8;
#endif

void *NewBlock(void *old, size_t size)
{
    char *const block = static_cast<char *>(std::malloc(size + kBehind));
    std::memset(block, 0xEE, size + kBehind);
    if (old != nullptr)
        std::memcpy(block, old, std::min(size, held.blocks.at(old)));
    held.blocks[block] = size;
    return block;
}

} // namespace

extern "C" {

void *os_malloc(size_t size)
{
    held.asked = size;
    MayFail(__func__);
    return NewBlock(nullptr, size);
}

void *os_realloc(void *block, size_t size)
{
    held.asked = size;
    MayFail(__func__);
    void *const moved = NewBlock(block, size);
    os_free(block);
    return moved;
}

void os_free(void *block)
{
    if (block == nullptr)
        return;
    const size_t size = held.blocks.at(block);
    if (std::string(kBehind, '\xEE') !=
        std::string_view(static_cast<char *>(block) + size, kBehind))
        std::abort(); // somebody wrote behind it
    std::memset(block, 0xEE, size);
    held.blocks.erase(block);
    std::free(block);
}

FILE *os_fopen(const char *path, const char *mode)
{
    MayFail(__func__);
    FILE *const stream = std::fopen(Resolved(path).c_str(), mode);
    return Hold(stream);
}

char *os_fgets(char *buffer, int size, FILE *stream)
{
    return (MayFail(__func__), std::fgets(buffer, size, stream));
}

int os_fclose(FILE *stream) { return Close(__func__, stream); }

int mdc_fclose(FILE *stream) { return Close(__func__, stream); }

size_t os_fread(void *buffer, size_t size, size_t count, FILE *stream)
{
    return (MayFail(__func__), std::fread(buffer, size, count, stream));
}

size_t os_fwrite(const void *data, size_t size, size_t count, FILE *stream)
{
    return (MayFail(__func__), std::fwrite(data, size, count, stream));
}

int os_open(const char *path, int flags, mode_t mode)
{
    MayFail(__func__);
    ++files.opened;
    return open(Resolved(path).c_str(), flags, mode);
}

FILE *os_fdopen(int fd, const char *mode)
{
    return (MayFail(__func__, fd), Hold(fdopen(fd, mode)));
}

int os_rename(const char *oldPath, const char *newPath)
{
    return (MayFail(__func__), std::rename(Resolved(oldPath).c_str(), Resolved(newPath).c_str()));
}

void *os_opendir(const char *path)
{
    MayFail(__func__);
    DIR *const directory = opendir(Resolved(path).c_str());
    return Hold(directory);
}

os_dirent *os_readdir(void *dir)
{
    MayFail(__func__);
    static os_dirent entry;
    const dirent *const next = readdir(static_cast<DIR *>(dir));
    if (next != nullptr)
        mdc_strlcpy(entry.name, next->d_name, sizeof entry.name);
    return next == nullptr ? nullptr : &entry;
}

int os_closedir(void *dir)
{
    held.open.erase(dir);
    return closedir(static_cast<DIR *>(dir));
}

int lkf_LockFile(int mode, const char *)
{
    MayFail(__func__);
    files.locks += std::to_string(mode);
    files.granted();
    return 4711;
}

void lkf_UnLockFile(int handle) { files.locks += handle == 4711 ? '-' : '?'; }

gid_t ext_GetVornithGid(void) { return files.group; }

int ext_ChownToVornith(const char *) { return (MayFail(__func__), files.chownResult); }

const unsigned char *enc_ConvertLongEncodedStr(const char *text, int, int *length)
{
    MayFail(__func__);
    static std::string bytes;
    bytes = files.decode(text);
    *length = static_cast<int>(bytes.size());
    return reinterpret_cast<const unsigned char *>(bytes.c_str());
}
}
