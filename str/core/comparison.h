// SPDX-License-Identifier: Apache-2.0
//
// What equality and order of texts share: the walk over both, which sets can be compared, and the
// comparison of a run in upper case.
#ifndef STR_CORE_COMPARISON_H
#define STR_CORE_COMPARISON_H

#include <str/compare.h>

#include "str/core/prepared.h"
#include "str/core/segments.h"
#include "str/core/sets.h"

#include <algorithm>

namespace libstr
{

// Whether segments of these kinds can be compared; `common` receives the kind whose rules apply.
bool EquivalentSegmentSets(uint16_t kind1, uint16_t kind2, uint16_t *common);

inline constexpr size_t kNoByteLimit = SIZE_MAX;
inline constexpr int kNoLimit = -1; // of characters

// Bytes to compare.
struct Run {
    const char *at;
    size_t size;

    const uint8_t *Bytes() const { return reinterpret_cast<const uint8_t *>(at); }
};

// One string of a comparison, and its current segment: text, raw bytes or the end.
struct Side {
    const char *str;
    size_t limit; // bytes of the string that count
    void (*next)(
        Side *side); // finds the next segment: moves `offset` there, sets `size` and `kind`

    size_t offset; // of the segment in the string
    size_t size;
    uint16_t kind;
    Run run; // what is left of the segment, up to the limit

    SegmentWalk walk;      // of a side that is walked
    const CSSegment *list; // of a side that is listed
    int count;
    int index;
};

// Begins both strings at their first segments.  Without walks of our own, the service keeps one
// walk state and one list, so the first string is listed and the second walked.  A limit other than
// kNoByteLimit fits an int.
void BeginSides(Side *side1, const char *s1, const CSDescriptor *cs1, size_t limit1, Side *side2,
                const char *s2, const CSDescriptor *cs2, size_t limit2);

// Begins a string that is one segment of its set.
void BeginOneSegment(Side *side, const char *str, const CSDescriptor *cs, size_t limit);

// Moves on to the next segment.
void FetchSegment(Side *side);

// How two runs compare.  Where they are equal, what was compared: the bytes of each side and, under
// a limit of characters, the characters.
struct RunResult {
    int order; // 0 for equal
    size_t bytes1;
    size_t bytes2;
    int chars;
};

inline void Advance(Side *side, size_t bytes)
{
    side->run.at += bytes;
    side->run.size -= bytes;
}

// Moves both sides past a run of equal characters, and on to the next segment where one is over.
inline void PassRun(Side *side1, Side *side2, const RunResult &passed)
{
    Advance(side1, passed.bytes1);
    Advance(side2, passed.bytes2);
    if (side1->run.size == 0)
        FetchSegment(side1);
    if (side2->run.size == 0)
        FetchSegment(side2);
}

// Compares two runs in upper case, character by character, up to the end of either and through
// `charLimit` characters at most.  `judge` orders two characters: 0 for equal.
template <class Judge>
RunResult CompareRunInUpperCase(const Run &run1, const Run &run2, int charLimit,
                                const CaseTableRecord *record, Judge judge)
{
    const bool limited = charLimit >= 0;
    // Equal bytes need no case table.
    if (!limited && run1.size == run2.size && std::memcmp(run1.at, run2.at, run1.size) == 0)
        return {0, run1.size, run2.size, 0};
    UpShiftTable own;
    const UpShiftTable &table = prepared::TableOf(record, std::min(run1.size, run2.size), &own);
    const auto *const begin1 = reinterpret_cast<const uint8_t *>(run1.at);
    const auto *const begin2 = reinterpret_cast<const uint8_t *>(run2.at);
    const uint8_t *at1 = begin1, *const end1 = begin1 + run1.size;
    const uint8_t *at2 = begin2, *const end2 = begin2 + run2.size;
    ptrdiff_t left = limited ? charLimit : PTRDIFF_MAX; // more than there are bytes
    while (at1 < end1 && at2 < end2 && left > 0) {
        const auto most = static_cast<size_t>(std::min({end1 - at1, end2 - at2, left}));
        const size_t pairs = PairsAlike(table, at1, at2, most / 2);
        const size_t bytes =
            MappedAlike(table.map, at1 + 2 * pairs, at2 + 2 * pairs, most - 2 * pairs);
        at1 += 2 * pairs + bytes;
        at2 += 2 * pairs + bytes;
        left -= static_cast<ptrdiff_t>(pairs + bytes);
        if (pairs + bytes != 0)
            continue;
        const UpShifted upper1 = UpShiftOne(table, at1, end1 - at1);
        const UpShifted upper2 = UpShiftOne(table, at2, end2 - at2);
        if (const int order = judge(upper1, upper2); order != 0)
            return {order, 0, 0, 0};
        at1 += upper1.consumed;
        at2 += upper2.consumed;
        --left;
    }
    return {0, static_cast<size_t>(at1 - begin1), static_cast<size_t>(at2 - begin2),
            limited ? charLimit - static_cast<int>(left) : 0};
}

// The same for equality: the order is 0 or 1.
RunResult CompareUpShiftedRun(const Run &run1, const Run &run2, int charLimit,
                              const CaseTableRecord *table);

} // namespace libstr

#endif
