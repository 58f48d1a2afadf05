// SPDX-License-Identifier: Apache-2.0
//
// Splitting at a budget of displayed characters or of their bytes.  Both parts of every split stand
// in one buffer, so that splitting many texts allocates only when a longer one than ever arrives.
#include <str/split.h>

#include "str/core/frame.h"
#include "str/core/segments.h"
#include "str/core/sizes.h"
#include "str/core/units.h"

#include <platform/os.h>

#include <algorithm>
#include <cstring>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_split";

// The shared split buffer: the first part, a NUL, the escapes of the second part, that part, a NUL.
char *theBuffer;
size_t theCapacity;

constexpr int kMostEscapes = 81; // that the service may ask for

constexpr int kByBytes = 1; // mode; all others count characters

void MakeRoom(size_t need)
{
    if (theCapacity == 0)
        theBuffer = static_cast<char *>(os_malloc(need));
    else if (need > theCapacity)
        theBuffer = static_cast<char *>(os_realloc(theBuffer, need));
    theCapacity = std::max(theCapacity, need);
}

struct Parts {
    unsigned int firstLen;
    char *second; // null for none
    unsigned int secondLen;
};

Parts FillBuffer(const char *str, size_t splitPoint, bool plain)
{
    const char *const rest = str + splitPoint;
    const size_t restLen = std::strlen(rest);
    const auto firstLen = Fit<unsigned int>(kSource, splitPoint);
    const auto mostSecond = Fit<unsigned int>(kSource, uint64_t{restLen} + kMostEscapes);
    MakeRoom(Fit<size_t>(kSource, uint64_t{firstLen} + mostSecond + 2)); // two NULs
    std::memcpy(theBuffer, str, splitPoint);
    theBuffer[splitPoint] = '\0';
    if (restLen == 0)
        return {firstLen, nullptr, 0};

    char *const second = theBuffer + splitPoint + 1;
    int escLen = 0;
    const char *escapes = plain ? "" : ccs_GetModelEscapes(&escLen);
    const auto escaped = static_cast<unsigned int>(std::clamp(escLen, 0, kMostEscapes));
    std::memcpy(second, escapes, escaped);
    std::memcpy(second + escaped, rest, restLen + 1);
    return {firstLen, second, escaped + static_cast<unsigned int>(restLen)};
}

size_t PlainSplitPoint(const char *str, int limit)
{
    return limit <= 0 ? 0 : strnlen(str, static_cast<size_t>(limit));
}

char *Split(const char *name, const char *str, int mode, int limit, char **second,
            unsigned int *firstLen, unsigned int *secondLen, const CSDescriptor *cs)
{
    frame::TraceEntry(name);
    char *const first = str_DoSplit(str, mode, limit, second, firstLen, secondLen, cs);
    frame::TraceExit(name);
    return first;
}

// A displayed unit inside a segment: what it counts and what it takes.  A line feed is displayed
// here, where text is laid out in lines.
struct Displayed {
    bool counts;
    int length;
};

Displayed UnitAt(const UnitRule &rule, const char *at, unsigned int avail)
{
    if (*at == '\n')
        return {true, 1};
    return {IsDisplayed(*at), UnitLength(rule, at, avail)};
}

// Whether the control function at `control`, if there is one, may be the last before `offset`.  A
// single shift may not: the service can tell its length only together with its character.
bool EndsAt(const UnitRule &rule, const char *seg, unsigned int control, unsigned int offset)
{
    return control == offset || ccs_GetCtrlLen(seg + control, offset - control, rule.cs) >= 1;
}

// Moves over a unit.  False at the end of the segment, where a unit that reaches beyond it ends too.
bool Pass(unsigned int *offset, int length, unsigned int segLen)
{
    if (static_cast<unsigned int>(length) >= segLen - *offset) {
        *offset = segLen;
        return false;
    }
    *offset += static_cast<unsigned int>(length);
    return true;
}

const char *CountChars(const char *seg, unsigned int segLen, int budget, int *used,
                       const CSDescriptor *segCs)
{
    frame::TraceEntry("str_CountSSDispChars");
    UnitScan scan = ScanUnits(UnitRuleOf(segCs), seg, segLen);
    unsigned int offset = 0;
    int count = 0;
    while (offset < segLen && count < budget) {
        const auto left = static_cast<unsigned int>(budget - count);
        const bool beyond = left >= (segLen - offset) >> scan.shift;
        SetLimit(&scan, beyond ? segLen : offset + (left << scan.shift));
        const unsigned int plain = PlainBytes(&scan, offset);
        offset += plain;
        count += static_cast<int>(plain >> scan.shift);
        if (offset >= segLen || count >= budget)
            break;
        const Displayed unit = UnitAt(scan.rule, seg + offset, segLen - offset);
        count += unit.counts;
        if (unit.length < 1 || !Pass(&offset, unit.length, segLen))
            break;
    }
    *used = count;
    frame::TraceExit("str_CountSSDispChars");
    return count >= budget ? seg + offset : nullptr;
}

const char *CountBytes(const char *seg, unsigned int segLen, int budget, int *used,
                       const CSDescriptor *segCs)
{
    frame::TraceEntry("str_CountSSDispBytes");
    UnitScan scan = ScanUnits(UnitRuleOf(segCs), seg, segLen);
    unsigned int offset = 0;
    unsigned int control = 0; // the control function right before offset; offset itself for none
    int bytes = 0;
    bool fits = true;
    while (offset < segLen && bytes < budget) {
        SetLimit(&scan,
                 offset + std::min(static_cast<unsigned int>(budget - bytes), segLen - offset));
        const unsigned int plain = PlainBytes(&scan, offset);
        offset += plain;
        bytes += static_cast<int>(plain);
        if (plain != 0)
            control = offset;
        if (offset >= segLen || bytes >= budget)
            break;
        const Displayed unit = UnitAt(scan.rule, seg + offset, segLen - offset);
        fits = !unit.counts || unit.length <= budget - bytes;
        if (!fits && !EndsAt(scan.rule, seg, control, offset))
            offset = control;
        if (!fits || unit.length < 1)
            break;
        const bool isControl = IsControl(seg[offset]) && !unit.counts;
        control = offset;
        bytes += unit.counts ? unit.length : 0;
        if (!Pass(&offset, unit.length, segLen))
            break;
        control = isControl ? control : offset;
    }
    *used = bytes;
    frame::TraceExit("str_CountSSDispBytes");
    return !fits || bytes >= budget ? seg + offset : nullptr;
}

using CountSegment = decltype(CountChars);

// The place in the text where the budget is used up; null when it is not.  Takes what is counted
// off the budget.
const char *FindCut(const char *str, CountSegment *count, int *budget, const CSDescriptor *cs)
{
    SegmentWalk walk = WalkSegments(str, cs);
    while (*budget > 0 && NextSegment(&walk)) {
        if (IsIgnored(walk.kind))
            continue;
        if (walk.kind == CS_SEG_RAW) {
            const auto left = static_cast<unsigned int>(*budget);
            *budget -= static_cast<int>(std::min(left, walk.size));
            if (left <= walk.size)
                return walk.at + left;
            continue;
        }
        const CSDescriptor segCs = SegmentDescriptor(walk.kind, cs);
        int used = 0;
        const char *cut = count(walk.at, walk.size, *budget, &used, &segCs);
        *budget -= used;
        if (cut != nullptr)
            return cut;
    }
    return nullptr;
}

size_t WalkedSplitPoint(const char *str, int mode, int limit, const CSDescriptor *cs)
{
    frame::TraceEntry("str_FindSplitPoint");
    int budget = limit;
    const char *const cut = FindCut(str, mode == kByBytes ? CountBytes : CountChars, &budget, cs);
    size_t splitPoint = 0; // nowhere, unless something displayed comes before
    if (budget != limit)
        splitPoint = cut != nullptr ? static_cast<size_t>(cut - str) : std::strlen(str);
    frame::TraceExit("str_FindSplitPoint");
    return splitPoint;
}

} // namespace

char *str_SplitByDispLen(const char *str, int limit, char **second, unsigned int *firstLen,
                         unsigned int *secondLen, const CSDescriptor *cs)
{
    return Split("str_SplitByDispLen", str, 0, limit, second, firstLen, secondLen, cs);
}

char *str_SplitByDispBytes(const char *str, int limit, char **second, unsigned int *firstLen,
                           unsigned int *secondLen, const CSDescriptor *cs)
{
    return Split("str_SplitByDispBytes", str, kByBytes, limit, second, firstLen, secondLen, cs);
}

char *str_DoSplit(const char *str, int mode, int limit, char **second, unsigned int *firstLen,
                  unsigned int *secondLen, const CSDescriptor *cs)
{
    frame::TraceEntry("str_DoSplit");
    const bool plain = IsPlainByteSet(cs) && cs->escMode == 0;
    const size_t splitPoint =
        plain ? PlainSplitPoint(str, limit) : WalkedSplitPoint(str, mode, limit, cs);
    if (splitPoint == 0) {
        *firstLen = *secondLen = 0;
        *second = nullptr;
        return nullptr; // without an exit trace
    }
    frame::Protect(
        kSource, frame::Accept(ER_CLASS_LIBRARY),
        [&] {
            const Parts parts = FillBuffer(str, splitPoint, plain);
            *firstLen = parts.firstLen;
            *second = parts.second;
            *secondLen = parts.secondLen;
        },
        [] { er_LogMsg(3, 3, STR_LOG_GIVEN_UP, 0); });
    frame::TraceExit("str_DoSplit");
    return theBuffer;
}

int str_FindSplitPoint(const char *str, int mode, int limit, const CSDescriptor *cs)
{
    return Fit<int>(kSource, WalkedSplitPoint(str, mode, limit, cs));
}

const char *str_CountSSDispChars(const char *seg, unsigned int segLen, int budget, int *used,
                                 const CSDescriptor *segCs)
{
    return CountChars(seg, BeforeNul(seg, segLen), budget, used, segCs);
}

const char *str_CountSSDispBytes(const char *seg, unsigned int segLen, int budget, int *used,
                                 const CSDescriptor *segCs)
{
    return CountBytes(seg, BeforeNul(seg, segLen), budget, used, segCs);
}
