// SPDX-License-Identifier: Apache-2.0
//
// Concatenation and search.
#include <str/concat.h>

#include "str/core/frame.h"
#include "str/core/segments.h"
#include "str/core/sets.h"

#include <climits>
#include <cstring>

using namespace libstr;

namespace
{

// The kind of the first segment that is not ignored; CS_SEG_END for none.
uint16_t FirstKind(const char *text, const CSDescriptor *cs)
{
    SegmentWalk walk;
    WalkSegments(&walk, text, cs);
    while (NextSegment(&walk))
        if (IsText(walk.kind) || walk.kind == CS_SEG_RAW)
            break;
    return walk.kind;
}

// The kind of the last such segment; CS_SEG_RAW for none.  `known` receives whether the service's
// walk has come to the end, so that it knows the state there.
uint16_t LastKind(const char *text, const CSDescriptor *cs, bool *known)
{
    uint16_t last = CS_SEG_RAW;
    SegmentWalk walk;
    WalkSegments(&walk, text, cs);
    while (NextSegment(&walk))
        if (IsText(walk.kind) || walk.kind == CS_SEG_RAW)
            last = walk.kind;
    *known = !walk.own;
    return last;
}

// Where escapes are needed, the service knows the state at the end of `dst`.
bool NeedsEscapes(const char *dst, const char *src, const CSDescriptor *cs)
{
    const uint16_t first = FirstKind(src, cs);
    if (!IsText(first) || !IsAscii(FlagsOf(first)))
        return false;
    bool known = false;
    const uint16_t last = LastKind(dst, cs, &known);
    if (!IsText(last) || IsAscii(FlagsOf(last)))
        return false;
    if (!known)
        WalkToEnd(dst, cs);
    return true;
}

void AppendEscapes(char *dst, const char *src, const CSDescriptor *cs)
{
    int length;
    if (const char *escapes = str_GetEscapes(dst, src, cs, &length); escapes != nullptr)
        std::strcat(dst, escapes);
}

// The first of `size` bytes whose value as a signed char is `ch`.
char *FindByte(const char *seg, int ch, size_t size)
{
    if (ch < SCHAR_MIN || ch > SCHAR_MAX)
        return nullptr;
    return static_cast<char *>(const_cast<void *>(std::memchr(seg, ch, size)));
}

} // namespace

const char *str_GetEscapes(const char *dst, const char *src, const CSDescriptor *cs, int *escLen)
{
    if (!SwitchesSets(cs))
        return nullptr;
    *escLen = 0;
    if (!NeedsEscapes(dst, src, cs))
        return nullptr;
    return ccs_GetConfAsciiEscs(cs, static_cast<int16_t>(cs->escMode), escLen);
}

char *str_strcat(char *dst, const char *src, const CSDescriptor *cs)
{
    frame::TraceEntry();
    AppendEscapes(dst, src, cs);
    std::strcat(dst, src);
    frame::TraceExit();
    return dst;
}

char *str_strncat(char *dst, const char *src, size_t n, const CSDescriptor *cs)
{
    frame::TraceEntry();
    AppendEscapes(dst, src, cs);
    std::strncat(dst, src, n);
    frame::TraceExit();
    return dst;
}

char *str_strchr(const char *str, int ch, const CSDescriptor *cs)
{
    if (cs->escMode == 0)
        return const_cast<char *>(std::strchr(str, ch)); // the common case: no trace
    frame::TraceEntry();
    const bool allText = HasByteCharacters(cs);
    char *found = nullptr;
    SegmentWalk walk;
    WalkSegments(&walk, str, cs);
    while (found == nullptr && NextSegment(&walk))
        if (IsText(walk.kind) && (allText || IsAscii(FlagsOf(walk.kind))))
            found = FindByte(walk.at, ch, walk.size);
    frame::TraceExit();
    return found;
}

char *str_dostrchr(const char *seg, int ch, unsigned int len)
{
    const size_t before = strnlen(seg, len);
    return FindByte(seg, ch, before < len ? before + 1 : before); // the NUL can be found
}
