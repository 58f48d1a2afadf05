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

const std::vector<scripted::Segment> &SegmentsOf(const char *text)
{
    const auto own = script.segmentsOf.find(text);
    return own == script.segmentsOf.end() ? script.segments : own->second;
}

size_t Considered(int length) { return length < 0 ? SIZE_MAX : static_cast<size_t>(length); }

void Called()
{
    if (script.escapeClass != 0 && script.callsLeft-- == 0)
        er_TracedEscape(script.escapeClass, 4712, "tests", 1);
}

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
    if (script.endsLists)
        list.push_back({text, CS_SEG_END, 0xEEEE, 0});
    *count = static_cast<int>(list.size());
    return list.data();
}

} // namespace

extern "C" {

uint16_t ccs_Get1stStr(const CSDescriptor *cs, const char *text, int length, unsigned int *size)
{
    script.next = 0;
    script.walked = &SegmentsOf(text);
    return ccs_GetNextStr(cs, text, length, size);
}

uint16_t ccs_GetNextStr(const CSDescriptor *, const char *, int length, unsigned int *size)
{
    Called();
    *size = 0;
    const size_t left = Considered(length);
    if (script.next >= script.walked->size() || left == 0)
        return CS_SEG_END;
    const scripted::Segment &segment = (*script.walked)[script.next++];
    *size = static_cast<unsigned int>(std::min<size_t>(segment.length, left));
    return segment.kind;
}

CSSegment *ccs_GetAllStrs(const CSDescriptor *, const char *text, int length, int *count)
{
    Called();
    return ListOf(text, SegmentsOf(text), length, count);
}

CSSegment *ccs_GetRealStrs(const CSDescriptor *, const char *text, int length, int *count)
{
    const auto &segments = script.realLists[script.nextList++ % 2];
    return segments ? ListOf(text, *segments, length, count) : nullptr;
}

uint32_t ccs_GetCSFlags(const CSDescriptor *cs) { return (Called(), script.flags[cs->csNum]); }

uint16_t ccs_GetCP(int, uint32_t *) { return (Called(), script.codePage); }

const char *ccs_GetCSName(const CSDescriptor *cs)
{
    const auto own = script.names.find(cs->csNum);
    return (own == script.names.end() ? script.name : own->second).c_str();
}

const char *ccs_GetDesignation(const CSDescriptor *cs, int)
{
    const auto own = script.designations.find(cs->csNum);
    return own == script.designations.end() ? nullptr : own->second.c_str();
}

uint16_t ccs_GetToUpperTable(const CSDescriptor *cs) { return script.upperTables[cs->csNum]; }

int ccs_GetNextCharLen(const char *at, int avail, int *length, const CSDescriptor *)
{
    return script.unit(at, avail, length) ? 1 : 0;
}

int16_t ccs_GetNumBytes(const CSDescriptor *cs) { return script.bytes[cs->csNum]; }

int ccs_GetCtrlLen(const char *at, unsigned int avail, const CSDescriptor *cs)
{
    script.asked += "control of " + std::to_string(cs->csNum) + "/" + std::to_string(cs->escMode) +
                    " in " + std::to_string(avail) + "\n";
    return script.control(at, avail);
}

int ccs_GetT61BaseUnitLen(const char *at, unsigned int avail, const CSDescriptor *cs)
{
    script.asked += "unit of " + std::to_string(cs->csNum) + "/" + std::to_string(cs->escMode) +
                    " in " + std::to_string(avail) + "\n";
    return script.baseUnit(at, avail);
}

const char *ccs_GetModelEscapes(int *length)
{
    if (script.raiseAfterWalk != 0)
        er_TracedEscape(script.raiseAfterWalk, 4711, "tests", 1);
    *length = static_cast<int>(script.modelEscapes.size());
    return script.modelEscapes.c_str();
}

const char *ccs_GetConfAsciiEscs(const CSDescriptor *cs, int escMode, int *length)
{
    Called();
    script.asked += "ASCII of " + std::to_string(cs->csNum) + "/" + std::to_string(escMode) + "\n";
    *length = static_cast<int>(script.asciiEscapes.size());
    return script.asciiEscapes.c_str();
}
}
