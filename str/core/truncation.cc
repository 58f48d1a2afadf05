// SPDX-License-Identifier: Apache-2.0
#include "str/core/truncation.h"

#include "str/core/buffer.h"
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

// Begins a cut that keeps nothing.
void Clear(ClosedTruncation *cut)
{
    cut->kept = 0;
    cut->escapes = 0;
}

// A text may not end where the escapes are less than none.
bool Fits(const ClosedTruncation &cut, unsigned int n)
{
    return cut.escapes >= 0 && uint64_t{cut.kept} + static_cast<unsigned int>(cut.escapes) <= n;
}

// ---- By a walk of our own ------------------------------------------------------------------

// Moves on by what fits in so many bytes; false if nothing does.
bool Pass(CSWalk *walk, unsigned int bytes, ClosedTruncation *cut)
{
    CSMeasure passed;
    ccs_MeasureText(walk, bytes, SIZE_MAX, &passed);
    if (passed.bytes == 0)
        return false;
    cut->kept += static_cast<unsigned int>(passed.bytes);
    cut->escapes = ccs_CloseWalk(walk, cut->closing);
    return true;
}

// Whether the state changes in these bytes, so that later escapes may be shorter.
bool MaySwitch(const char *at, size_t bytes)
{
    return std::any_of(at, at + bytes, [](char byte) {
        return byte == '\x1B' || byte == '\x0E' || byte == '\x0F';
    });
}

// The bytes of the next unit or sequence, which has more than `less`; `most` if it has more than
// that.  A long one is found in few steps.
unsigned int LongLength(const CSWalk &walk, unsigned int less, unsigned int most)
{
    const auto ends = [&walk](unsigned int bytes) {
        CSWalk ahead = walk;
        CSMeasure passed;
        ccs_MeasureText(&ahead, bytes, SIZE_MAX, &passed);
        return passed.bytes != 0;
    };
    const auto twice = [most](unsigned int bytes) { return bytes > most / 2 ? most : 2 * bytes; };
    unsigned int length = twice(less);
    for (; length < most && !ends(length); length = twice(length))
        less = length;
    while (length - less > 1) {
        const unsigned int middle = less + (length - less) / 2;
        (ends(middle) ? length : less) = middle;
    }
    return length;
}

// Moves on by one unit or sequence; false if it does not fit in so many bytes.
bool PassOne(CSWalk *walk, unsigned int most, ClosedTruncation *cut)
{
    constexpr unsigned int few = 4;
    for (unsigned int bytes = 1; bytes <= std::min(most, few); ++bytes)
        if (Pass(walk, bytes, cut))
            return true;
    return most > few && Pass(walk, LongLength(*walk, few, most), cut);
}

// Goes on from a cut to the last one that fits, if there is one.  Most often that is the last of
// all.
[[gnu::cold]] void PassMore(CSWalk *walk, unsigned int n, ClosedTruncation *cut)
{
    CSWalk far = *walk;
    ClosedTruncation next = *cut;
    Pass(&far, n - next.kept, &next);
    if (Fits(next, n)) {
        *cut = next;
        return;
    }
    next = *cut;
    while (PassOne(walk, n - next.kept, &next))
        if (Fits(next, n))
            *cut = next;
}

// ---- By the readers of the service ---------------------------------------------------------

// A copy of what is kept, with a letter after it.
thread_local ThreadBuffer<char> theTrial;
constexpr char kLetter[] = "N"; // which ends every sequence, and with ESC before it is a shift

// Sets the escapes that belong after what is kept, as ccs_CloseWalk does.
void Close(const char *src, const CSDescriptor *cs, ClosedTruncation *cut)
{
    WalkToEnd(src, cs, static_cast<int>(std::min<unsigned int>(cut->kept, INT_MAX)));
    const char *const escapes =
        ccs_GetConfAsciiEscs(cs, static_cast<int16_t>(cs->escMode), &cut->escapes);
    cut->escapes = escapes == nullptr ? 0 : std::clamp(cut->escapes, 0, kMostEscapes);
    const auto size = static_cast<size_t>(cut->escapes);
    std::copy_n(escapes, size, cut->closing);

    Grow(&theTrial, size_t{cut->kept} + size + sizeof kLetter);
    std::memcpy(theTrial.at, src, cut->kept);
    std::strcpy(theTrial.at + cut->kept, kLetter);
    const bool isWhole = WalkedTruncation(theTrial.at, cut->kept, cs) == cut->kept;
    std::memcpy(theTrial.at + cut->kept, cut->closing, size);
    std::strcpy(theTrial.at + cut->kept + size, kLetter);
    if (!isWhole || WalkToEnd(theTrial.at, cs) != WalkToEnd(kLetter, cs))
        cut->escapes = -1;
}

// The same by the walk of the service, from the longest start downward.
[[gnu::cold]] void TruncateClosedByService(const char *src, unsigned int n, const CSDescriptor *cs,
                                           ClosedTruncation *out)
{
    out->kept = WalkedTruncation(src, n, cs);
    for (; out->kept > 0; out->kept = WalkedTruncation(src, out->kept - 1, cs)) {
        Close(src, cs, out);
        if (Fits(*out, n))
            return;
    }
    Clear(out);
}

} // namespace

void TruncateClosed(const char *src, unsigned int n, const CSDescriptor *cs, ClosedTruncation *out)
{
    // Looks for the last place in the last bytes, and in more of them each time.
    unsigned int last = std::min(n, 3U); // bytes of the most frequent escapes
    for (bool isFirst = true;; isFirst = false) {
        CSWalk walk;
        if (ccs_CloseWalk == nullptr || !BeginOwnWalk(&walk, src, cs))
            return TruncateClosedByService(src, n, cs, out);
        Clear(out);
        Pass(&walk, n - last, out);
        const size_t left = strnlen(walk.at, n - out->kept);
        if (isFirst && Fits(*out, n) && !MaySwitch(walk.at, left))
            Pass(&walk, n - out->kept - static_cast<unsigned int>(out->escapes), out);
        else
            PassMore(&walk, n, out);
        if (Fits(*out, n))
            return;
        const auto escapes = static_cast<unsigned int>(std::max(out->escapes, 0));
        last = last > n / 4 ? n : std::min(n, std::max(4 * last, escapes));
    }
}

} // namespace libstr
