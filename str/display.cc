// SPDX-License-Identifier: Apache-2.0
//
// Display width: one column per displayed character.  UTF-8 is measured by GLib, plain single-byte
// text by strlen, and all other text segment by segment.
#include <str/display.h>

#include "str/frame.h"
#include "str/segments.h"
#include "str/units.h"
#include "str/utf8.h"

#include <cstring>

namespace
{

unsigned int WalkedWidth(const char *str, const CSDescriptor *cs)
{
    unsigned int columns = 0;
    SegmentWalk walk = WalkSegments(str, cs);
    while (NextSegment(&walk)) {
        if (IsIgnored(walk.kind))
            continue;
        if (walk.kind == CS_SEG_RAW) {
            columns += walk.size;
            continue;
        }
        const CSDescriptor segCs = SegmentDescriptor(walk.kind, cs);
        columns += static_cast<unsigned int>(str_GetDispLen(walk.at, walk.size, &segCs));
    }
    return columns;
}

int CountByte(const char *str, char byte)
{
    int count = 0;
    for (; *str != '\0'; ++str)
        count += *str == byte;
    return count;
}

} // namespace

unsigned int str_dispstrlen(const char *str, const CSDescriptor *cs)
{
    frame::TraceEntry("str_dispstrlen");
    unsigned int columns;
    if (IsUtf8(cs))
        columns = static_cast<unsigned int>(str_utf8DispStrLen(str, -1, 1));
    else if (IsPlainByteSet(cs) && cs->escMode == 0)
        return static_cast<unsigned int>(std::strlen(str)); // the common case: no exit trace
    else
        columns = WalkedWidth(str, cs);
    frame::TraceExit("str_dispstrlen");
    return columns;
}

int str_GetDispLen(const char *seg, unsigned int segLen, const CSDescriptor *segCs)
{
    UnitScan scan = ScanUnits(seg, segLen, segCs);
    unsigned int columns = 0;
    for (unsigned int offset = 0; offset < segLen;) {
        const unsigned int plain = PlainBytes(&scan, offset);
        columns += plain >> scan.shift;
        offset += plain;
        if (offset >= segLen)
            break;
        const char byte = seg[offset];
        columns += !IsControl(byte) && byte != kDelete;
        // The service is given the whole segment's length: a NUL ends a unit before that does.
        const int length = UnitLength(scan.rule, seg + offset, segLen);
        if (length < 1)
            break;
        offset += static_cast<unsigned int>(length);
    }
    return static_cast<int>(columns);
}

int str_utf8DispStrLen(const char *str, int maxLen, int countEsc)
{
    frame::TraceEntry("str_utf8DispStrLen");
    int columns = CountUtf8(str, maxLen);
    if (countEsc == 0)
        columns -= CountByte(str, '\x1B');
    frame::TraceExit("str_utf8DispStrLen");
    return columns;
}
