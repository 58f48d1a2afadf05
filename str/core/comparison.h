// SPDX-License-Identifier: Apache-2.0
//
// What equality and order of texts share: the walk over both, which sets can be compared, and the
// comparison of a run in upper case.
#ifndef STR_CORE_COMPARISON_H
#define STR_CORE_COMPARISON_H

#include <str/compare.h>

#include "str/core/segments.h"
#include "str/core/sets.h"
#include "str/core/upshift.h"

#include <algorithm>

namespace libstr
{

// The segment walkers: each finds the next segment that takes part in a comparison, which is text,
// raw bytes or the end.  With `first` it begins the string `str`, of `len` bytes or up to its NUL
// for -1; without, it goes on from where it was and ignores both.
//
// Returns the segment's first byte, and stores its bytes, its kind and its offset in the string.
// The service keeps one walk state, so one side of a comparison is listed and the other walked.
const char *NextSegmentFromList(const CSDescriptor *cs, const char *str, int len, bool first,
                                size_t *segLen, uint16_t *kind, size_t *offset);
const char *NextSegmentByWalk(const CSDescriptor *cs, const char *str, int len, bool first,
                              size_t *segLen, uint16_t *kind, size_t *offset);

// Whether segments of these kinds can be compared; `common` receives the kind whose rules apply.
bool EquivalentSegmentSets(uint16_t kind1, uint16_t kind2, uint16_t *common);

// The case table of a kind's set; null for none.
const CaseTableRecord *GetSegmentUpShiftTable(uint16_t kind);

inline constexpr size_t kNoByteLimit = SIZE_MAX;
inline constexpr int kNoLimit = -1; // of characters

// One string of a comparison, and its current segment.
struct Side {
    // The walker; null for a string that is one segment of its set.
    decltype(&NextSegmentFromList) next;
    const CSDescriptor *cs;
    const char *str;
    int length;   // for the walker
    size_t size;  // of a string that is one segment
    size_t limit; // bytes of the string that count, or kNoByteLimit

    const char *at;
    size_t left;   // bytes of the segment from `at` on
    size_t offset; // of the segment in the string
    uint16_t kind;
};

inline void FetchSegment(Side *side, bool first)
{
    if (side->next != nullptr) {
        side->at = side->next(side->cs, side->str, side->length, first, &side->left, &side->kind,
                              &side->offset);
    } else {
        side->at = first ? side->str : side->str + side->size;
        side->left = first ? side->size : 0;
        side->offset = first ? 0 : side->size;
        side->kind = first && side->size != 0 ? side->cs->csNum : uint16_t{CS_SEG_END};
    }
    if (side->offset < side->limit)
        side->left = std::min(side->left, side->limit - side->offset);
}

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
    side->at += bytes;
    side->left -= bytes;
}

// Moves both sides past a run of equal characters, and on to the next segment where one is over.
inline void PassRun(Side *side1, Side *side2, const RunResult &run)
{
    Advance(side1, run.bytes1);
    Advance(side2, run.bytes2);
    if (side1->left == 0)
        FetchSegment(side1, false);
    if (side2->left == 0)
        FetchSegment(side2, false);
}

// Compares the rest of two segments in upper case, character by character, up to the end of either
// and through `charLimit` characters at most.  `judge` orders two characters: 0 for equal.
template <class Judge>
RunResult CompareRunInUpperCase(const Side &side1, const Side &side2, int charLimit,
                                const CaseTableRecord *record, Judge judge)
{
    const bool limited = charLimit >= 0;
    // Equal bytes need no case table.
    if (!limited && side1.left == side2.left && std::memcmp(side1.at, side2.at, side1.left) == 0)
        return {0, side1.left, side2.left, 0};
    UpShiftTable table;
    SetUpShiftTable(&table, record);
    const auto *const begin1 = reinterpret_cast<const uint8_t *>(side1.at);
    const auto *const begin2 = reinterpret_cast<const uint8_t *>(side2.at);
    const uint8_t *at1 = begin1, *const end1 = begin1 + side1.left;
    const uint8_t *at2 = begin2, *const end2 = begin2 + side2.left;
    ptrdiff_t left = limited ? charLimit : PTRDIFF_MAX; // more than there are bytes
    while (at1 < end1 && at2 < end2 && left > 0) {
        const ptrdiff_t most = std::min({end1 - at1, end2 - at2, left});
        const size_t equal = MappedAlike(&table.map, at1, at2, static_cast<size_t>(most));
        at1 += equal;
        at2 += equal;
        left -= static_cast<ptrdiff_t>(equal);
        if (static_cast<ptrdiff_t>(equal) == most)
            continue;
        const UpShifted upper1 = UpShiftOne(&table, at1, end1 - at1);
        const UpShifted upper2 = UpShiftOne(&table, at2, end2 - at2);
        if (const int order = judge(upper1, upper2); order != 0)
            return {order, 0, 0, 0};
        at1 += upper1.consumed;
        at2 += upper2.consumed;
        --left;
    }
    return {0, static_cast<size_t>(at1 - begin1), static_cast<size_t>(at2 - begin2),
            limited ? charLimit - static_cast<int>(left) : 0};
}

} // namespace libstr

#endif
