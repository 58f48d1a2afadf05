// SPDX-License-Identifier: Apache-2.0
#include "tests/scripted/ccs.h"

#include <platform/ccs.h>
#include <platform/er.h>

namespace scripted
{
Script script;
} // namespace scripted

using scripted::script;

namespace
{

void Called()
{
    if (script.escapeClass != 0 && script.callsLeft-- == 0)
        er_TracedEscape(script.escapeClass, 4712, "tests", 1);
}

// One list for all, so that the next overwrites it.
CSSegment *ListOf(const char *text, const std::vector<scripted::Segment> &segments, int *count)
{
    static std::vector<CSSegment> list;
    list.clear();
    for (const scripted::Segment &segment : segments) {
        list.push_back({text, segment.kind, 0xEEEE, segment.length});
        text += segment.length;
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

uint16_t ccs_GetNextStr(const CSDescriptor *, const char *, int, unsigned int *size)
{
    Called();
    if (script.next >= script.segments.size()) {
        *size = 0;
        return CS_SEG_END;
    }
    const scripted::Segment &segment = script.segments[script.next++];
    *size = segment.length;
    return segment.kind;
}

CSSegment *ccs_GetAllStrs(const CSDescriptor *, const char *text, int, int *count)
{
    Called();
    return ListOf(text, script.segments, count);
}

CSSegment *ccs_GetRealStrs(const CSDescriptor *, const char *text, int, int *count)
{
    const auto &segments = script.realLists[script.nextList++ % 2];
    return segments ? ListOf(text, *segments, count) : nullptr;
}

uint32_t ccs_GetCSFlags(const CSDescriptor *cs) { return (Called(), script.flags[cs->csNum]); }

uint16_t ccs_GetCP(int, uint32_t *) { return (Called(), script.codePage); }

const char *ccs_GetCSName(const CSDescriptor *) { return script.name.c_str(); }

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
