// SPDX-License-Identifier: Apache-2.0
//
// Truncation to a budget of bytes, and the bounded copies built on it.  Text of a plain single-byte
// set may end before the budget: strncpy stops at the NUL, and fills up.
#include <str/truncate.h>

#include "str/core/frame.h"
#include "str/core/sets.h"
#include "str/core/truncation.h"
#include "str/core/units.h"
#include "str/core/utf8.h"

#include <cstring>

using namespace libstr;

namespace
{

// Copies the `kept` bytes of the source that are kept, and fills up with NULs.
void CopyAndPad(char *dst, const char *src, unsigned int kept, unsigned int n)
{
    std::memcpy(dst, src, kept);
    if (kept < n)
        std::memset(dst + kept, 0, n - kept);
}

// What is kept of text that is not plain.
unsigned int KeptBytes(const char *src, unsigned int n, const CSDescriptor *cs)
{
    const bool isOneSet = cs->escMode == 0 && IsUtf8(cs);
    return isOneSet ? WholeUtf8(src, n) : WalkedTruncation(src, n, cs);
}

// Both exports below have this code, rather than one call more.
inline void CopyKept(char *dst, const char *src, unsigned int n, const CSDescriptor *cs)
{
    frame::TraceEntry("str_strncpy");
    if (IsUtf8(cs))
        CopyAndPad(dst, src, Utf8Truncation(src, n), n);
    else if (IsPlainByteSet(cs))
        std::strncpy(dst, src, n);
    else
        CopyAndPad(dst, src, str_truncstrlen(src, n, cs), n);
    frame::TraceExit("str_strncpy");
}

} // namespace

unsigned int str_truncstrlen(const char *src, unsigned int n, const CSDescriptor *cs)
{
    frame::TraceEntry();
    if (IsPlainByteSet(cs))
        return n; // the common case: no exit trace
    const unsigned int kept = KeptBytes(src, n, cs);
    frame::TraceExit();
    return kept;
}

unsigned int str_FindTruncPt(const char *seg, unsigned int room, const CSDescriptor *segCs)
{
    return SegmentTruncation(seg, BeforeNul(seg, room), segCs);
}

char *str_truncate(char *dst, const char *src, unsigned int n, const CSDescriptor *cs,
                   unsigned int *outLen)
{
    frame::TraceEntry();
    if (IsPlainByteSet(cs)) {
        std::strncpy(dst, src, n);
        *outLen = n;
    } else {
        // The same without a second question, where nothing is traced.
        const bool traced = frame::IsTraced();
        const unsigned int kept = traced ? str_truncstrlen(src, n, cs) : KeptBytes(src, n, cs);
        CopyAndPad(dst, src, kept, n);
        *outLen = kept;
    }
    frame::TraceExit();
    return dst;
}

unsigned int str_truncateclosed(char *dst, const char *src, unsigned int n, const CSDescriptor *cs)
{
    frame::TraceEntry();
    ClosedTruncation cut;
    cut.escapes = 0;
    if (cs->escMode == 0 && IsPlainByteSet(cs))
        cut.kept = static_cast<unsigned int>(strnlen(src, n));
    else if (cs->escMode == 0 && IsUtf8(cs))
        cut.kept = WholeUtf8(src, n);
    else
        TruncateClosed(src, n, cs, &cut);
    const auto escapes = static_cast<unsigned int>(cut.escapes);
    std::memcpy(dst, src, cut.kept);
    std::memcpy(dst + cut.kept, cut.closing, escapes);
    std::memset(dst + cut.kept + escapes, 0, n - cut.kept - escapes);
    frame::TraceExit();
    return cut.kept + escapes;
}

char *str_strncpy(char *dst, const char *src, unsigned int n, const CSDescriptor *cs)
{
    CopyKept(dst, src, n, cs);
    return dst;
}

char *str_strlcpy(char *dst, const char *src, unsigned int size, const CSDescriptor *cs)
{
    if (size == 0)
        return dst;
    if (src != nullptr)
        CopyKept(dst, src, size - 1, cs);
    dst[src != nullptr ? size - 1 : 0] = '\0';
    return dst;
}
