// SPDX-License-Identifier: Apache-2.0
#include "str/core/truncation.h"

#include "str/core/segments.h"
#include "str/core/units.h"

namespace libstr
{

unsigned int SegmentTruncation(const char *seg, unsigned int room, const CSDescriptor *segCs)
{
    UnitScan scan = ScanUnits(UnitRuleOf(segCs), seg, room);
    unsigned int taken = 0;
    while (taken < room) {
        taken += PlainBytes(&scan, taken);
        if (taken >= room)
            break;
        const unsigned int avail = room - taken;
        const int length = UnitLength(scan.rule, seg + taken, avail);
        if (length < 1 || static_cast<unsigned int>(length) > avail)
            break;
        taken += static_cast<unsigned int>(length);
    }
    return taken;
}

unsigned int WalkedTruncation(const char *src, unsigned int n, const CSDescriptor *cs)
{
    if (CSWalk own; BeginOwnWalk(&own, src, cs)) {
        CSMeasure front;
        ccs_MeasureText(&own, n, SIZE_MAX, &front);
        return static_cast<unsigned int>(front.bytes);
    }
    unsigned int kept = 0;
    SegmentWalk walk;
    WalkSegments(&walk, src, cs);
    while (NextSegment(&walk)) {
        const unsigned int room = n - kept;
        if (room >= walk.size) {
            kept += walk.size;
            continue;
        }
        if (IsIgnored(walk.kind))
            return kept;
        if (walk.kind == CS_SEG_RAW)
            return n;
        const CSDescriptor segCs = SegmentDescriptor(walk.kind, cs);
        return kept + SegmentTruncation(walk.at, room, &segCs);
    }
    return kept;
}

} // namespace libstr
