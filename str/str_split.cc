// SPDX-License-Identifier: Apache-2.0
//
// Splitting at a budget of displayed characters or of their bytes.  Both parts of every split of a
// thread share one buffer, so only a text longer than all before it costs an allocation.
#include <str/split.h>

#include "str/core/buffer.h"
#include "str/core/frame.h"
#include "str/core/segments.h"
#include "str/core/sizes.h"
#include "str/core/units.h"

#include <algorithm>
#include <cstring>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_split";

// The split buffer: the first part, a NUL, the escapes of the second part, that part, a NUL.
thread_local ThreadBuffer<char> theBuffer;

constexpr int kByBytes = 1; // mode; all others count characters

struct Parts {
    unsigned int firstLen;
    char *second; // null when nothing is left for it
    unsigned int secondLen;
};

// Where a text is divided.
struct Cut {
    size_t place;
    enum { plain, own, service } state; // who knows the state of the text there
    CSWalk walk;                        // the one of our own
};

// Writes the escapes of the second part; returns their number of bytes.
unsigned int PutEscapes(const Cut &cut, char *out)
{
    if (cut.state == Cut::plain)
        return 0;
    if (cut.state == Cut::own)
        return static_cast<unsigned int>(ccs_GetWalkEscapes(&cut.walk, 0, out));
    int length = 0;
    const char *const escapes = ccs_GetModelEscapes(&length);
    const auto bytes = static_cast<unsigned int>(std::clamp(length, 0, kMostEscapes));
    std::memcpy(out, escapes, bytes);
    return bytes;
}

Parts FillBuffer(const char *str, const Cut &cut)
{
    const size_t splitPoint = cut.place;
    const char *const rest = str + splitPoint;
    const size_t restLen = std::strlen(rest);
    const auto firstLen = Fit<unsigned int>(kSource, splitPoint);
    const auto mostSecond = Fit<unsigned int>(kSource, uint64_t{restLen} + kMostEscapes);
    const auto need = Fit<size_t>(kSource, uint64_t{firstLen} + mostSecond + 2); // two NULs
    if (need > theBuffer.capacity)
        Grow(&theBuffer, need);
    std::memcpy(theBuffer.at, str, splitPoint);
    theBuffer.at[splitPoint] = '\0';
    if (restLen == 0)
        return {firstLen, nullptr, 0};

    char *const second = theBuffer.at + splitPoint + 1;
    const unsigned int escaped = PutEscapes(cut, second);
    std::memcpy(second + escaped, rest, restLen + 1);
    return {firstLen, second, escaped + static_cast<unsigned int>(restLen)};
}

// Every byte is a character, and there are no escape sequences.
bool IsPlain(const CSDescriptor *cs) { return IsPlainByteSet(cs) && cs->escMode == 0; }

size_t PlainSplitPoint(const char *str, int limit)
{
    return limit <= 0 ? 0 : strnlen(str, static_cast<size_t>(limit));
}

// Splits between the traces of the export that calls it.
char *Split(const char *str, int mode, int limit, char **second, unsigned int *firstLen,
            unsigned int *secondLen, const CSDescriptor *cs,
            const char *name = __builtin_FUNCTION())
{
    frame::TraceEntry(name);
    char *const first = str_DoSplit(str, mode, limit, second, firstLen, secondLen, cs);
    frame::TraceExit(name);
    return first;
}

// What a budget is measured in.
enum class Measure { characters, bytes };

// Counting inside a segment.
struct Count {
    UnitScan scan;
    unsigned int segLen;
    unsigned int offset;
    unsigned int control; // of the control function right before `offset`; `offset` without one
    int left;             // of the budget
    bool fits;            // false: the budget is too small for the next character
};

// Counts the plain characters that come next.
template <Measure measure>
void CountPlain(Count *count)
{
    const unsigned int shift = measure == Measure::bytes ? 0 : count->scan.shift;
    const auto left = static_cast<unsigned int>(count->left);
    const unsigned int rest = count->segLen - count->offset;
    SetLimit(&count->scan, left >= rest >> shift ? count->segLen : count->offset + (left << shift));
    const unsigned int plain = PlainBytes(&count->scan, count->offset);
    count->offset += plain;
    count->left -= static_cast<int>(plain >> shift);
    if (plain != 0)
        count->control = count->offset;
}

// Whether the text can be cut after the control function before the unit.  After a single shift it
// cannot: the service does not know the length of a shift without its character.
bool CanCutHere(const Count &count)
{
    return count.control == count.offset ||
           ccs_GetCtrlLen(count.scan.seg + count.control, count.offset - count.control,
                          count.scan.rule.cs) >= 1;
}

// Counts one unit.  A line feed counts too, since text is laid out in lines here.  False when
// counting ends with the unit or before it.  A unit that reaches beyond the segment ends there.
template <Measure measure>
bool CountUnit(Count *count)
{
    const char *const at = count->scan.seg + count->offset;
    const unsigned int rest = count->segLen - count->offset;
    const bool isNewline = *at == '\n';
    const int length = isNewline ? 1 : UnitLength(count->scan.rule, at, rest);
    int cost = isNewline || IsDisplayed(count->scan.rule, *at) ? 1 : 0;
    if (measure == Measure::bytes)
        cost *= std::max(length, 0);
    count->fits = cost <= count->left;
    if (!count->fits) {
        count->offset = CanCutHere(*count) ? count->offset : count->control;
        return false;
    }
    count->left -= cost;
    if (length < 1)
        return false;
    const unsigned int begin = count->offset;
    count->offset += std::min(static_cast<unsigned int>(length), rest);
    count->control = IsControl(count->scan.rule, *at) && !isNewline ? begin : count->offset;
    return true;
}

// Counts the units of a segment up to the budget.  Returns where the budget is used up; null when
// it is not.  `used` receives how much of it is.
template <Measure measure>
const char *CountUnits(const char *seg, unsigned int segLen, int budget, int *used,
                       const CSDescriptor *segCs)
{
    const char *const name =
        measure == Measure::bytes ? "str_CountSSDispBytes" : "str_CountSSDispChars";
    frame::TraceEntry(name);
    Count count = {ScanUnits(UnitRuleOf(segCs), seg, segLen), segLen, 0, 0, budget, true};
    bool goesOn = true;
    while (goesOn && count.offset < segLen && count.left > 0) {
        CountPlain<measure>(&count);
        if (count.offset < segLen && count.left > 0)
            goesOn = CountUnit<measure>(&count);
    }
    *used = budget - count.left;
    frame::TraceExit(name);
    return !count.fits || count.left <= 0 ? seg + count.offset : nullptr;
}

constexpr auto *kCountCharacters = CountUnits<Measure::characters>;
constexpr auto *kCountBytes = CountUnits<Measure::bytes>;

// Counts the segment of the kind up to the budget, as CountUnits does.
const char *CountSegment(const char *seg, unsigned int size, uint16_t kind,
                         decltype(kCountBytes) count, int *budget, const CSDescriptor *cs)
{
    if (IsIgnored(kind))
        return nullptr;
    if (kind == CS_SEG_RAW) {
        const auto left = static_cast<unsigned int>(*budget);
        *budget -= static_cast<int>(std::min(left, size));
        return left <= size ? seg + left : nullptr;
    }
    const CSDescriptor segCs = SegmentDescriptor(kind, cs);
    int used = 0;
    const char *const cut = count(seg, size, *budget, &used, &segCs);
    *budget -= used;
    return cut;
}

// Where in the text the budget is used up; null when it is not.  Takes what is counted off the
// budget.
const char *FindCut(const char *str, decltype(kCountBytes) count, int *budget,
                    const CSDescriptor *cs)
{
    SegmentWalk walk;
    WalkSegments(&walk, str, cs);
    const char *cut = nullptr;
    while (*budget > 0 && cut == nullptr && NextSegmentOfService(&walk))
        cut = CountSegment(walk.at, walk.size, walk.kind, count, budget, cs);
    return cut;
}

// The same on a walk of our own, which is where the budget is used up afterwards.
const char *FindCutByMeasure(CSWalk *walk, int mode, int *budget, const CSDescriptor *cs)
{
    const bool bytes = mode == kByBytes;
    while (*budget > 0) {
        const auto left = static_cast<size_t>(*budget);
        CSMeasure passed;
        ccs_MeasureText(walk, bytes ? left : SIZE_MAX, bytes ? SIZE_MAX : left, &passed);
        if (passed.bytes == 0)
            break;
        *budget -= static_cast<int>((bytes ? passed.shown : passed.columns) + passed.lines);
    }
    if (*budget <= 0)
        return walk->at;
    // What comes next is longer than the budget, but may cost less.
    const char *cut = nullptr;
    CSSegment segment;
    while (*budget > 0 && cut == nullptr && ccs_NextSegments(walk, &segment, 1) != 0)
        cut = CountSegment(segment.text, segment.length, segment.kind, kCountBytes, budget, cs);
    return cut;
}

// Segments are counted under names of their own, so a call that is traced walks segment by segment.
// So does one of plain text, in which the service's lengths know shifts that its walk does not.
void FindWalkedCut(const char *str, int mode, int limit, const CSDescriptor *cs, Cut *cut)
{
    frame::TraceEntry("str_FindSplitPoint");
    const bool own = !IsPlain(cs) && !frame::IsTraced() && BeginOwnWalk(&cut->walk, str, cs);
    cut->state = own ? Cut::own : Cut::service;
    int budget = limit;
    const char *const at =
        own ? FindCutByMeasure(&cut->walk, mode, &budget, cs)
            : FindCut(str, mode == kByBytes ? kCountBytes : kCountCharacters, &budget, cs);
    cut->place = 0; // no split, unless something displayed comes before
    if (budget != limit)
        cut->place = at != nullptr ? static_cast<size_t>(at - str) : std::strlen(str);
    frame::TraceExit("str_FindSplitPoint");
}

} // namespace

char *str_SplitByDispLen(const char *str, int limit, char **second, unsigned int *firstLen,
                         unsigned int *secondLen, const CSDescriptor *cs)
{
    return Split(str, 0, limit, second, firstLen, secondLen, cs);
}

char *str_SplitByDispBytes(const char *str, int limit, char **second, unsigned int *firstLen,
                           unsigned int *secondLen, const CSDescriptor *cs)
{
    return Split(str, kByBytes, limit, second, firstLen, secondLen, cs);
}

char *str_DoSplit(const char *str, int mode, int limit, char **second, unsigned int *firstLen,
                  unsigned int *secondLen, const CSDescriptor *cs)
{
    frame::TraceEntry();
    Cut cut;
    if (IsPlain(cs)) {
        cut.place = PlainSplitPoint(str, limit);
        cut.state = Cut::plain;
    } else {
        FindWalkedCut(str, mode, limit, cs, &cut);
    }
    if (cut.place == 0) {
        *firstLen = *secondLen = 0;
        *second = nullptr;
        return nullptr; // without an exit trace
    }
    frame::Protect(
        kSource, frame::Accept(ER_CLASS_LIBRARY),
        [&] {
            const Parts parts = FillBuffer(str, cut);
            *firstLen = parts.firstLen;
            *second = parts.second;
            *secondLen = parts.secondLen;
        },
        [] { er_LogMsg(3, 3, STR_LOG_GIVEN_UP, 0); });
    frame::TraceExit();
    return theBuffer.at;
}

int str_FindSplitPoint(const char *str, int mode, int limit, const CSDescriptor *cs)
{
    Cut cut;
    FindWalkedCut(str, mode, limit, cs, &cut);
    return Fit<int>(kSource, cut.place);
}

const char *str_CountSSDispChars(const char *seg, unsigned int segLen, int budget, int *used,
                                 const CSDescriptor *segCs)
{
    return kCountCharacters(seg, BeforeNul(seg, segLen), budget, used, segCs);
}

const char *str_CountSSDispBytes(const char *seg, unsigned int segLen, int budget, int *used,
                                 const CSDescriptor *segCs)
{
    return kCountBytes(seg, BeforeNul(seg, segLen), budget, used, segCs);
}
