// SPDX-License-Identifier: Apache-2.0
#include "tests/scripted/ccs.h"

#include <platform/ccs.h>
#include <platform/er.h>

#include <algorithm>

namespace scripted
{
Script script;
} // namespace scripted

using scripted::script;

namespace
{

size_t Considered(int length) { return length < 0 ? SIZE_MAX : static_cast<size_t>(length); }

// One list for all, so that the next overwrites it.
CSSegment *ListOf(const char *text, const std::vector<scripted::Segment> &segments, int length,
                  int *count)
{
    static std::vector<CSSegment> list;
    list.clear();
    size_t left = Considered(length);
    for (const scripted::Segment &segment : segments) {
        if (left == 0)
            break;
        const auto size = static_cast<uint32_t>(std::min<size_t>(segment.length, left));
        list.push_back({text, segment.kind, 0xEEEE, size});
        text += size;
        left -= size;
    }
    list.push_back({text, CS_SEG_END, 0xEEEE, 0});
    *count = static_cast<int>(list.size());
    return list.data();
}

} // namespace

extern "C" {

uint16_t ccs_Get1stStr(const CSDescriptor *cs, const char *text, int length, unsigned int *size)
{
    script.next = 0;
    return ccs_GetNextStr(cs, text, length, size);
}

uint16_t ccs_GetNextStr(const CSDescriptor *, const char *, int length, unsigned int *size)
{
    *size = 0;
    const size_t left = Considered(length);
    if (script.next >= script.segments.size() || left == 0)
        return CS_SEG_END;
    const scripted::Segment &segment = script.segments[script.next++];
    *size = static_cast<unsigned int>(std::min<size_t>(segment.length, left));
    return segment.kind;
}

CSSegment *ccs_GetAllStrs(const CSDescriptor *, const char *text, int length, int *count)
{
    return ListOf(text, script.segments, length, count);
}

CSSegment *ccs_GetRealStrs(const CSDescriptor *, const char *text, int length, int *count)
{
    return ListOf(text, script.realLists[script.nextList++ % 2], length, count);
}

uint32_t ccs_GetCSFlags(const CSDescriptor *cs) { return script.flags[cs->csNum]; }

uint16_t ccs_GetCP(int, uint32_t *) { return 0; }

const char *ccs_GetCSName(const CSDescriptor *) { return "scripted"; }

const char *ccs_GetDesignation(const CSDescriptor *, int) { return nullptr; }

uint16_t ccs_GetToUpperTable(const CSDescriptor *cs) { return script.upperTables[cs->csNum]; }

int ccs_GetNextCharLen(const char *, int, int *length, const CSDescriptor *)
{
    *length = 1;
    return 1;
}

int16_t ccs_GetNumBytes(const CSDescriptor *cs) { return script.bytes[cs->csNum]; }

int ccs_GetCtrlLen(const char *, unsigned int, const CSDescriptor *) { return 1; }

int ccs_GetT61BaseUnitLen(const char *, unsigned int, const CSDescriptor *) { return 1; }

const char *ccs_GetModelEscapes(int *length)
{
    *length = static_cast<int>(script.modelEscapes.size());
    return script.modelEscapes.c_str();
}

const char *ccs_GetConfAsciiEscs(const CSDescriptor *cs, int escMode, int *length)
{
    script.asked += "ASCII of " + std::to_string(cs->csNum) + "/" + std::to_string(escMode) + "\n";
    *length = static_cast<int>(script.asciiEscapes.size());
    return script.asciiEscapes.c_str();
}
}
