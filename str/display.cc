// SPDX-License-Identifier: Apache-2.0
//
// Display width: one column per displayed character.  UTF-8 is counted by characters, plain
// single-byte text by bytes, and other text segment by segment.
#include <str/display.h>

#include "str/core/frame.h"
#include "str/core/segments.h"
#include "str/core/sets.h"
#include "str/core/sizes.h"
#include "str/core/units.h"
#include "str/core/utf8.h"

#include <algorithm>
#include <cstring>
#include <iterator>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_split"; // escapes carry this name in all that measures or cuts

// Shorter segments are counted unit by unit: blocks of bytes would not pay.
constexpr unsigned int kShort = 8;

unsigned int SegmentWidth(const UnitRule &rule, const char *seg, unsigned int segLen)
{
    UnitScan scan;
    if (segLen >= kShort)
        scan = ScanUnits(rule, seg, segLen);
    unsigned int columns = 0;
    for (unsigned int offset = 0; offset < segLen;) {
        if (segLen >= kShort) {
            const unsigned int plain = PlainBytes(&scan, offset);
            columns += plain >> scan.shift;
            offset += plain;
            if (offset >= segLen)
                break;
        }
        // The service gets the whole segment's length, since a NUL ends a unit in any case.
        const int length = UnitLength(rule, seg + offset, segLen);
        columns += IsDisplayed(rule, seg[offset]);
        if (length < 1 || static_cast<unsigned int>(length) >= segLen - offset)
            break;
        offset += static_cast<unsigned int>(length);
    }
    return columns;
}

// The rules of the sets met last.  Most texts take turns between a few sets.
struct RuleCache {
    struct Entry {
        CSDescriptor cs;
        UnitRule rule;
    };
    Entry entries[4];
};

const UnitRule &RuleFor(RuleCache *cache, uint16_t kind, const CSDescriptor *cs)
{
    RuleCache::Entry &entry = cache->entries[kind % std::size(cache->entries)];
    if (entry.cs.csNum != kind) { // 0 at first, and no text has kind 0
        entry.cs = SegmentDescriptor(kind, cs);
        entry.rule = UnitRuleOf(&entry.cs);
    }
    return entry.rule;
}

uint64_t WalkedWidth(const char *str, const CSDescriptor *cs)
{
    if (CSWalk own; BeginOwnWalk(&own, str, cs)) {
        CSMeasure whole;
        ccs_MeasureText(&own, SIZE_MAX, SIZE_MAX, &whole);
        return whole.columns;
    }
    RuleCache cache = {};
    uint64_t columns = 0;
    SegmentWalk walk;
    WalkSegments(&walk, str, cs);
    while (NextSegment(&walk)) {
        if (IsIgnored(walk.kind))
            continue;
        if (walk.kind == CS_SEG_RAW)
            columns += walk.size;
        else
            columns += SegmentWidth(RuleFor(&cache, walk.kind, cs), walk.at, walk.size);
    }
    return columns;
}

// Not inlined, since escapes are rarely left out.
[[gnu::noinline]] int64_t CountEscapes(const char *str)
{
    return std::count(str, str + std::strlen(str), '\x1B');
}

} // namespace

unsigned int str_dispstrlen(const char *str, const CSDescriptor *cs)
{
    frame::TraceEntry();
    unsigned int columns;
    if (IsUtf8(cs))
        columns = static_cast<unsigned int>(str_utf8DispStrLen(str, -1, 1));
    else if (IsPlainByteSet(cs) && cs->escMode == 0)
        return Fit<unsigned int>(kSource, std::strlen(str)); // the common case: no exit trace
    else
        columns = Fit<unsigned int>(kSource, WalkedWidth(str, cs));
    frame::TraceExit();
    return columns;
}

int str_GetDispLen(const char *seg, unsigned int segLen, const CSDescriptor *segCs)
{
    return Fit<int>(kSource, SegmentWidth(UnitRuleOf(segCs), seg, BeforeNul(seg, segLen)));
}

int str_utf8DispStrLen(const char *str, int maxLen, int countEsc)
{
    frame::TraceEntry();
    auto columns = static_cast<int64_t>(CountUtf8(str, maxLen));
    if (countEsc == 0)
        columns -= CountEscapes(str);
    const int result = Fit<int>(kSource, columns);
    frame::TraceExit();
    return result;
}
