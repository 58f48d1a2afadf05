// SPDX-License-Identifier: Apache-2.0
#include "str/core/truncation.h"

#include "str/core/segments.h"
#include "str/core/units.h"

#include <algorithm>
#include <climits>
#include <cstring>

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

namespace
{

// Begins a cut that keeps nothing.  Its escapes are not set: there are none.
void Clear(ClosedTruncation *cut)
{
    cut->kept = 0;
    cut->escapes = 0;
}

bool Fits(const ClosedTruncation &cut, unsigned int n)
{
    return uint64_t{cut.kept} + static_cast<unsigned int>(cut.escapes) <= n;
}

// Moves on by what fits in so many bytes.
void Pass(CSWalk *walk, unsigned int bytes, ClosedTruncation *cut)
{
    CSMeasure passed;
    ccs_MeasureText(walk, bytes, SIZE_MAX, &passed);
    if (passed.bytes == 0)
        return;
    cut->kept += static_cast<unsigned int>(passed.bytes);
    cut->escapes = ccs_GetWalkEscapes(walk, 1, cut->closing);
}

// Whether the state changes in these bytes, so that later escapes may be shorter.
bool MaySwitch(const char *at, size_t bytes)
{
    return std::any_of(at, at + bytes, [](char byte) {
        return byte == '\x1B' || byte == '\x0E' || byte == '\x0F';
    });
}

// Goes on from the last cut within `n - reserve` bytes to the last one that fits.  The text goes on
// for `left` bytes.
void PassMore(CSWalk *walk, unsigned int n, unsigned int reserve, size_t left,
              ClosedTruncation *cut)
{
    if (!MaySwitch(walk->at, left)) {
        Pass(walk, n - cut->kept - static_cast<unsigned int>(cut->escapes), cut);
        return;
    }
    CSWalk far = *walk;
    ClosedTruncation next = *cut;
    Pass(&far, n - next.kept, &next);
    if (Fits(next, n)) {
        *cut = next;
        return;
    }
    next = *cut; // the last one is somewhere between the two
    for (unsigned int end = n - reserve + 1; end < n; ++end) {
        Pass(walk, end - next.kept, &next);
        if (Fits(next, n))
            *cut = next;
    }
}

// The same by the walk of the service, from the longest start downward.
void TruncateClosedByService(const char *src, unsigned int n, const CSDescriptor *cs,
                             ClosedTruncation *out)
{
    Clear(out);
    out->kept = WalkedTruncation(src, n, cs);
    for (; out->kept > 0; out->kept = WalkedTruncation(src, out->kept - 1, cs)) {
        WalkToEnd(src, cs, static_cast<int>(std::min<unsigned int>(out->kept, INT_MAX)));
        const char *const escapes =
            ccs_GetConfAsciiEscs(cs, static_cast<int16_t>(cs->escMode), &out->escapes);
        out->escapes = std::clamp(out->escapes, 0, kMostEscapes);
        std::memcpy(out->closing, escapes, static_cast<size_t>(out->escapes));
        if (Fits(*out, n))
            return;
    }
    out->escapes = 0;
}

} // namespace

void TruncateClosed(const char *src, unsigned int n, const CSDescriptor *cs, ClosedTruncation *out)
{
    unsigned int reserve = std::min(n, 3U); // bytes of the most frequent escapes
    for (;;) {
        CSWalk walk;
        if (!BeginOwnWalk(&walk, src, cs))
            return TruncateClosedByService(src, n, cs, out);
        Clear(out);
        Pass(&walk, n - reserve, out);
        if (Fits(*out, n)) {
            const size_t left = strnlen(walk.at, n - out->kept);
            return left == 0 ? void() : PassMore(&walk, n, reserve, left, out);
        }
        reserve = std::min(n, static_cast<unsigned int>(out->escapes));
    }
}

} // namespace libstr
