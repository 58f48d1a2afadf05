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

#include <tuple>
#include <utility>

namespace passing
{

Failure failure;
std::optional<int> nonsense;
std::string converted;
bool ownWalks = false;
uint32_t moreFlags;
Held held;

namespace
{

// Raises the escape when it is this call's turn; a descriptor that was given to it goes first.
void Called(const char *name, int fd = -1)
{
    if (failure.escapeClass == 0 || failure.callsLeft-- > 0)
        return;
    failure.callsLeft = failure.again == kAlways ? 0 : std::exchange(failure.again, kNever);
    failure.failed += (failure.failed.empty() ? "" : " ") + std::string(name);
    close(fd);
    er_TracedEscape(failure.escapeClass, kCode, "tests/passing", 1);
}

// The same for a close; the second try closes what is open in any case.
void Closes(const char *name, const void *open)
{
    static const void *theLost;
    if (std::exchange(theLost, open) != open)
        Called(name);
    theLost = nullptr;
    held.open.erase(open);
}

const std::string kMany(32'767, 'e');

template <class T>
void SetLength(T &length)
{
    length = static_cast<T>(nonsense.value_or(length));
}

} // namespace
} // namespace passing

using namespace passing;

// The default service after the one that is being defined.
#define REAL(name) reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))
#define NEXT(name) (Called(#name), REAL(name))

// clang-format off

// A service of so many parameters, and what is done after it; its result is r.
#define PASS1(f, ...) P(0, f) f(P(1, f) a) DO(f, (a), __VA_ARGS__)
#define PASS2(f, ...) P(0, f) f(P(1, f) a, P(2, f) b) DO(f, (a, b), __VA_ARGS__)
#define PASS3(f, ...) P(0, f) f(P(1, f) a, P(2, f) b, P(3, f) c) DO(f, (a, b, c), __VA_ARGS__)
#define PASS4(f, ...) \
    P(0, f) f(P(1, f) a, P(2, f) b, P(3, f) c, P(4, f) d) DO(f, (a, b, c, d), __VA_ARGS__)
#define DO(f, args, ...) \
    { __VA_OPT__(auto r = NEXT(f) args; __VA_ARGS__; return r;) return NEXT(f) args; }
#define P(i, f) std::tuple_element_t<i, decltype(Parts(f))>
template <class R, class... A> std::tuple<R, A...> Parts(R (*)(A...));

extern "C" {

PASS1(ccs_GetCSName)
PASS4(ccs_GetAllStrs)
PASS4(ccs_GetRealStrs)
PASS2(ccs_GetDesignation)
PASS2(ccs_GetCP)
PASS1(ccs_GetToUpperTable)
PASS1(ccs_GetCSTable)
PASS2(ccs_GetCSDescriptor)
PASS4(ccs_Get1stStr)
PASS4(ccs_GetNextStr)
PASS1(ccs_GetCSFlags, r |= moreFlags)
PASS1(ccs_GetNumBytes, SetLength(r))
PASS3(ccs_GetCtrlLen, SetLength(r))
PASS3(ccs_GetT61BaseUnitLen, SetLength(r))
PASS4(mdc_fwrite)
PASS3(os_fgets)
PASS4(os_fread)
PASS4(os_fwrite)
PASS3(os_open)
PASS2(os_rename)
PASS1(os_readdir)
PASS2(os_USPatternMatch)
PASS1(ext_ChownToVornith)
PASS3(dstring_appendN)
PASS2(dstring_appendChar)
PASS3(dstring_set)
PASS3(enc_ConvertLongEncodedStr, SetLength(*c))
PASS4(ccs_GetNextCharLen, SetLength(*c))
PASS1(ccs_GetModelEscapes, SetLength(*a); r = nonsense ? kMany.c_str() : r)
PASS3(ccs_GetConfAsciiEscs, converted = std::to_string(b))
PASS1(os_malloc, held.blocks.insert(r))
PASS2(os_realloc, held.blocks.erase(a); held.blocks.insert(r))
PASS1(mdc_fclose, held.open.erase(a))
PASS2(os_fopen, held.open.insert(r))
PASS1(os_opendir, held.open.insert(r))
PASS2(lkf_LockFile, ++held.locks)
// clang-format on

int cvc_ConvertString(int request, int options, const char *in, int inLength, const char *from,
                      const char *to, char **result, int *resultLength, int *a, int *b, int *c)
{
    converted = std::to_string(request) + " " + std::to_string(options) + " " + from + ">" + to;
    return NEXT(cvc_ConvertString)(request, options, in, inLength, from, to, result, resultLength,
                                   a, b, c);
}

int ccs_BeginWalk(CSWalk *walk, const CSDescriptor *cs, const char *text, int length,
                  const CSReaders *)
{
    static const CSReaders readers = {
        REAL(ccs_Get1stStr),         REAL(ccs_GetNextStr),      REAL(ccs_GetAllStrs),
        REAL(ccs_GetRealStrs),       REAL(ccs_GetCtrlLen),      REAL(ccs_GetNumBytes),
        REAL(ccs_GetT61BaseUnitLen), REAL(ccs_GetNextCharLen),  REAL(ccs_GetCSFlags),
        REAL(ccs_GetModelEscapes),   REAL(ccs_GetConfAsciiEscs)};
    return ownWalks ? REAL(ccs_BeginWalk)(walk, cs, text, length, &readers) : 0;
}

void os_free(void *block)
{
    held.blocks.erase(block);
    REAL(os_free)(block);
}

int os_fclose(FILE *stream) { return (Closes(__func__, stream), REAL(os_fclose)(stream)); }
int os_closedir(void *directory)
{
    return (Closes(__func__, directory), REAL(os_closedir)(directory));
}

FILE *os_fdopen(int fd, const char *mode)
{
    Called(__func__, fd);
    FILE *const stream = REAL(os_fdopen)(fd, mode);
    held.open.insert(stream);
    return stream;
}

void lkf_UnLockFile(int handle)
{
    --held.locks;
    REAL(lkf_UnLockFile)(handle);
}

} // extern "C"
