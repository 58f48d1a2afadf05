// SPDX-License-Identifier: Apache-2.0
#include "tests/passing/services.h"

#include <platform/ccs.h>
#include <platform/cvc.h>
#include <platform/dstring.h>
#include <platform/enc.h>
#include <platform/er.h>
#include <platform/ext.h>
#include <platform/lkf.h>
#include <platform/mdc.h>
#include <platform/nm.h>
#include <platform/os.h>

#include <dlfcn.h>
#include <unistd.h>

namespace passing
{

Failure failure;
std::optional<int> nonsense;
std::string converted;
uint32_t moreFlags;
Held held;

namespace
{

// Raises the escape when it is this call's turn; a descriptor that was given to it goes first.
void Called(const char *name, int fd = -1)
{
    if (failure.escapeClass == 0 || failure.callsLeft-- != 0)
        return;
    failure.failed = name;
    close(fd);
    er_TracedEscape(failure.escapeClass, kCode, "tests/passing", 1);
}

template <class T>
T *Hold(std::set<const void *> *things, T *thing)
{
    if (thing != nullptr)
        things->insert(thing);
    return thing;
}

void Release(std::set<const void *> *things, const void *thing)
{
    if (thing != nullptr)
        things->erase(thing);
}

} // namespace
} // namespace passing

using namespace passing;

// The default service behind the one that is being defined.
#define REAL(name) reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))
#define NEXT(name) (Called(#name), REAL(name))
#define PASS(result, name, parameters, arguments)                                                  \
    result name parameters { return NEXT(name) arguments; }

// clang-format off
extern "C" {

PASS(const char *, ccs_GetCSName, (const CSDescriptor *cs), (cs))
PASS(CSSegment *, ccs_GetAllStrs, (const CSDescriptor *cs, const char *text, int length, int *count), (cs, text, length, count))
PASS(CSSegment *, ccs_GetRealStrs, (const CSDescriptor *cs, const char *text, int length, int *count), (cs, text, length, count))
PASS(const char *, ccs_GetModelEscapes, (int *length), (length))
PASS(const char *, ccs_GetConfAsciiEscs, (const CSDescriptor *cs, int escMode, int *length), (cs, escMode, length))
PASS(const char *, ccs_GetDesignation, (const CSDescriptor *cs, int which), (cs, which))
PASS(uint16_t, ccs_GetCP, (int which, uint32_t *out), (which, out))
PASS(uint16_t, ccs_GetToUpperTable, (const CSDescriptor *cs), (cs))
PASS(void *, ccs_GetCSTable, (int32_t *companion), (companion))
PASS(int, ccs_GetCSDescriptor, (const char *name, CSDescriptor *out), (name, out))
PASS(size_t, mdc_fwrite, (const void *data, size_t size, size_t count, FILE *stream), (data, size, count, stream))
PASS(char *, os_fgets, (char *buffer, int size, FILE *stream), (buffer, size, stream))
PASS(size_t, os_fread, (void *buffer, size_t size, size_t count, FILE *stream), (buffer, size, count, stream))
PASS(size_t, os_fwrite, (const void *data, size_t size, size_t count, FILE *stream), (data, size, count, stream))
PASS(int, os_open, (const char *path, int flags, mode_t mode), (path, flags, mode))
PASS(int, os_rename, (const char *from, const char *to), (from, to))
PASS(os_dirent *, os_readdir, (void *dir), (dir))
PASS(int, os_USPatternMatch, (const char *string, const char *pattern), (string, pattern))
PASS(int, ext_ChownToVornith, (const char *path), (path))
PASS(void, dstring_appendN, (dstring *string, const char *bytes, unsigned int count), (string, bytes, count))
PASS(void, dstring_appendChar, (dstring *string, char byte), (string, byte))
PASS(void, dstring_set, (dstring *string, const char *text, int length), (string, text, length))

uint32_t ccs_GetCSFlags(const CSDescriptor *cs) { return NEXT(ccs_GetCSFlags)(cs) | moreFlags; }
PASS(uint16_t, ccs_Get1stStr, (const CSDescriptor *cs, const char *text, int length, unsigned int *size), (cs, text, length, size))
PASS(uint16_t, ccs_GetNextStr, (const CSDescriptor *cs, const char *text, int length, unsigned int *size), (cs, text, length, size))
int16_t ccs_GetNumBytes(const CSDescriptor *cs) { return static_cast<int16_t>(nonsense.value_or(NEXT(ccs_GetNumBytes)(cs))); }
int ccs_GetCtrlLen(const char *at, unsigned int avail, const CSDescriptor *cs) { return nonsense.value_or(NEXT(ccs_GetCtrlLen)(at, avail, cs)); }
int ccs_GetT61BaseUnitLen(const char *at, unsigned int avail, const CSDescriptor *cs) { return nonsense.value_or(NEXT(ccs_GetT61BaseUnitLen)(at, avail, cs)); }
// clang-format on

int ccs_GetNextCharLen(const char *at, int avail, int *length, const CSDescriptor *cs)
{
    const int counts = NEXT(ccs_GetNextCharLen)(at, avail, length, cs);
    *length = nonsense.value_or(*length);
    return counts;
}

int cvc_ConvertString(int request, int options, const char *in, int inLength, const char *from,
                      const char *to, char **result, int *resultLength, int *a, int *b, int *c)
{
    converted = std::to_string(request) + " " + std::to_string(options) + " " + from + ">" + to;
    return NEXT(cvc_ConvertString)(request, options, in, inLength, from, to, result, resultLength,
                                   a, b, c);
}

const unsigned char *enc_ConvertLongEncodedStr(const char *text, int which, int *length)
{
    const unsigned char *const bytes = NEXT(enc_ConvertLongEncodedStr)(text, which, length);
    *length = nonsense.value_or(*length);
    return bytes;
}

void *os_malloc(size_t size) { return Hold(&held.blocks, NEXT(os_malloc)(size)); }

void *os_realloc(void *block, size_t size)
{
    void *const moved = NEXT(os_realloc)(block, size);
    Release(&held.blocks, block);
    return Hold(&held.blocks, moved);
}

void os_free(void *block)
{
    Release(&held.blocks, block);
    REAL(os_free)(block);
}

FILE *os_fopen(const char *path, const char *mode)
{
    return Hold(&held.open, NEXT(os_fopen)(path, mode));
}

FILE *os_fdopen(int fd, const char *mode)
{
    Called(__func__, fd);
    return Hold(&held.open, REAL(os_fdopen)(fd, mode));
}

int os_fclose(FILE *stream)
{
    const auto close = NEXT(os_fclose);
    Release(&held.open, stream);
    return close(stream);
}

int mdc_fclose(FILE *stream)
{
    const auto close = NEXT(mdc_fclose);
    Release(&held.open, stream);
    return close(stream);
}

void *os_opendir(const char *path) { return Hold(&held.open, NEXT(os_opendir)(path)); }

int os_closedir(void *dir)
{
    Release(&held.open, dir);
    return REAL(os_closedir)(dir);
}

int lkf_LockFile(int mode, const char *path)
{
    const int handle = NEXT(lkf_LockFile)(mode, path);
    ++held.locks;
    return handle;
}

void lkf_UnLockFile(int handle)
{
    --held.locks;
    REAL(lkf_UnLockFile)(handle);
}

} // extern "C"
