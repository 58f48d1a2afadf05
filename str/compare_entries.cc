// SPDX-License-Identifier: Apache-2.0
//
// The str_strcmp family: the C library compares where its result is the same, else the engines.
#include <str/compare.h>

#include "str/core/frame.h"
#include "str/core/sets.h"

#include <cstring>

using namespace libstr;

namespace
{

bool AreOneSet(const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    return cs1->csNum == cs2->csNum;
}

// Runs the comparison of an export between the export's traces.  Traced leaves tracing to it, so
// that a call that traces nothing saves few registers.
template <auto compare, class... Arguments>
__attribute__((noinline, cold)) int TracedFromEntry(const char *name, Arguments... arguments)
{
    frame::TraceEntry(name);
    const int result = compare(arguments...);
    frame::TraceExit(name);
    return result;
}

template <auto compare, class... Arguments>
int Traced(const char *name, Arguments... arguments)
{
    if (frame::IsTraced())
        return TracedFromEntry<compare>(name, arguments...);
    const int result = compare(arguments...);
    frame::TraceExit(name);
    return result;
}

// Apart from CompareToEnd for the same reason.
[[gnu::noinline]] int CompareManyBytes(const char *s1, const char *s2, const CSDescriptor *cs1,
                                       const CSDescriptor *cs2)
{
    return AreOneSet(cs1, cs2) && IsUtf8(cs1) ? std::strcmp(s1, s2)
                                              : str_DoCompareToEnd(s1, s2, 0, cs1, cs2);
}

int CompareToEnd(const char *s1, const char *s2, const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    return AreOneSet(cs1, cs2) && HasByteCharacters(cs1) ? std::strcmp(s1, s2)
                                                         : CompareManyBytes(s1, s2, cs1, cs2);
}

int CompareByCharLen(const char *s1, const char *s2, unsigned int chars, const CSDescriptor *cs1,
                     const CSDescriptor *cs2)
{
    return AreOneSet(cs1, cs2) && HasByteCharacters(cs1)
               ? std::strncmp(s1, s2, chars)
               : str_DoCompareByCharLen(s1, s2, chars, 0, cs1, cs2);
}

int CompareByByteLen(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                     const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    return AreOneSet(cs1, cs2) && HasByteCharacters(cs1)
               ? std::strncmp(s1, s2, bytes1)
               : str_DoCompareByByteLen(s1, s2, bytes1, bytes2, 0, cs1, cs2);
}

} // namespace

int str_strcmp(const char *s1, const char *s2, const CSDescriptor *cs)
{
    return str_strcmp3(s1, s2, cs, cs);
}

int str_strcmp3(const char *s1, const char *s2, const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    return Traced<CompareToEnd>(__func__, s1, s2, cs1, cs2);
}

int str_strncmp(const char *s1, const char *s2, unsigned int chars, const CSDescriptor *cs)
{
    return str_strnccmp3(s1, s2, chars, cs, cs);
}

int str_strnccmp3(const char *s1, const char *s2, unsigned int chars, const CSDescriptor *cs1,
                  const CSDescriptor *cs2)
{
    return Traced<CompareByCharLen>(__func__, s1, s2, chars, cs1, cs2);
}

int str_strncmp2(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                 const CSDescriptor *cs)
{
    return str_strnbcmp3(s1, s2, bytes1, bytes2, cs, cs);
}

int str_strnbcmp3(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                  const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    return Traced<CompareByByteLen>(__func__, s1, s2, bytes1, bytes2, cs1, cs2);
}

int str_strucasecmp(const char *s1, const char *s2, const CSDescriptor *cs)
{
    return str_strucasecmp3(s1, s2, cs, cs);
}

int str_strucasecmp3(const char *s1, const char *s2, const CSDescriptor *cs1,
                     const CSDescriptor *cs2)
{
    return Traced<str_DoCompareToEnd>(__func__, s1, s2, 1, cs1, cs2);
}

int str_strucasencmp(const char *s1, const char *s2, unsigned int chars, const CSDescriptor *cs)
{
    return str_strucasenccmp3(s1, s2, chars, cs, cs);
}

int str_strucasenccmp3(const char *s1, const char *s2, unsigned int chars, const CSDescriptor *cs1,
                       const CSDescriptor *cs2)
{
    return Traced<str_DoCompareByCharLen>(__func__, s1, s2, chars, 1, cs1, cs2);
}

int str_strucasencmp2(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                      const CSDescriptor *cs)
{
    return str_strucasenbcmp3(s1, s2, bytes1, bytes2, cs, cs);
}

int str_strucasenbcmp3(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                       const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    return Traced<str_DoCompareByByteLen>(__func__, s1, s2, bytes1, bytes2, 1, cs1, cs2);
}
