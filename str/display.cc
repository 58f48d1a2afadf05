// SPDX-License-Identifier: Apache-2.0
//
// Display width: one column per displayed character.  UTF-8 is measured by GLib, plain single-byte
// text by strlen, and all other text segment by segment.
#include <str/display.h>

#include "str/frame.h"
#include "str/segments.h"
#include "str/units.h"
#include "str/utf8.h"

#include <algorithm>
#include <bit>
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

// Counts a block of bytes at a time.  Where the next block begins is to follow from branches, which
// the processor foresees, and not from the counts, which it would wait for.
int str_GetDispLen(const char *seg, unsigned int segLen, const CSDescriptor *segCs)
{
    const UnitRule rule = UnitRuleOf(segCs);
    const PlainRule plain = PlainRuleOf(rule);
    unsigned int columns = 0;
    for (unsigned int offset = 0; offset < segLen;) {
        const unsigned int base = offset;
        const unsigned int end = base + std::min(segLen - base, blocks::kSize);
        const uint32_t looks = Looks(plain, seg + base, end - base);
        if (looks == 0) {
            columns += blocks::kSize >> plain.shift;
            offset = end;
        }
        while (offset < end) {
            const unsigned int free = std::min(blocks::Free(looks, offset - base), end - offset);
            const unsigned int characters = free >> plain.shift;
            const bool isWhole = plain.shift == 0 || (free & 1) == 0;
            columns += characters;
            if (free == end - offset && isWhole) {
                offset = end;
                break;
            }
            offset += characters << plain.shift;
            // Half a character at the end of a block is whole in the next.
            if (!isWhole && offset + 1 == end && offset != base)
                break;
            const char byte = seg[offset];
            columns += !IsControl(byte) && byte != kDelete;
            // The service is given the whole segment's length: a NUL ends a unit before that does.
            const int length = UnitLength(rule, seg + offset, segLen);
            if (length < 1)
                return static_cast<int>(columns);
            offset += static_cast<unsigned int>(length);
        }
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
