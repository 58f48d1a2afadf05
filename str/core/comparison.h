// SPDX-License-Identifier: Apache-2.0
//
// What equality and order of texts share: the walk over both, which sets go together, and the run
// that disregards case.
#ifndef STR_CORE_COMPARISON_H
#define STR_CORE_COMPARISON_H

#include <str/compare.h>

#include "str/core/segments.h"
#include "str/core/upshift.h"

#include <algorithm>

namespace libstr
{

// The segment walkers: the next segment that takes part in a comparison, one of text, of raw bytes,
// or the end.  With `first` they begin with the string `str`, of `len` bytes or up to its NUL for
// -1; later they go on from where they were, whatever they are given.
//
// Return the segment's first byte; store its bytes, its kind, and in `offset` where it is in the
// string.  The service keeps one walk, so one side of a comparison is listed and the other walked.
const char *NextSegmentFromList(const CSDescriptor *cs, const char *str, int len, bool first,
                                size_t *segLen, uint16_t *kind, size_t *offset);
const char *NextSegmentByWalk(const CSDescriptor *cs, const char *str, int len, bool first,
                              size_t *segLen, uint16_t *kind, size_t *offset);

// Whether segments of these kinds may be compared; `common` receives the kind that governs how.
bool EquivalentSegmentSets(uint16_t kind1, uint16_t kind2, uint16_t *common);

// The upshift table of a kind's set, null when it has none.
const CaseTableRecord *GetSegmentUpShiftTable(uint16_t kind);

// A string that is compared, and the segment of it that is.
struct Side {
    // The walker; null for a string that is one segment of its set throughout.
    decltype(&NextSegmentFromList) next;
    const CSDescriptor *cs;
    const char *str;
    int length;  // for the walker
    size_t size; // of a string that is one segment

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
}

inline void Advance(Side *side, size_t step)
{
    side->at += step;
    side->left -= step;
}

// How two runs compare: 0 for alike, and then the bytes passed on each side, and the characters
// where these are counted.
struct RunResult {
    int order;
    size_t step1;
    size_t step2;
    int chars;
};

inline constexpr int kNoLimit = -1; // of characters

// Compares what is left of two segments in upper case, character by character, up to the end of
// either or, with a `charLimit`, so many characters.  `judge` says how two characters compare: 0 for
// alike.
template <class Judge>
RunResult CompareRunInUpperCase(const Side &side1, const Side &side2, int charLimit,
                                const CaseTableRecord *record, Judge judge)
{
    const bool limited = charLimit >= 0;
    // Nothing is to be looked up in a run that both have in the same bytes.
    if (!limited && side1.left == side2.left && std::memcmp(side1.at, side2.at, side1.left) == 0)
        return {0, side1.left, side2.left, 0};
    UpShiftTable table;
    SetUpShiftTable(&table, record);
    const auto *const begin1 = reinterpret_cast<const uint8_t *>(side1.at);
    const auto *const begin2 = reinterpret_cast<const uint8_t *>(side2.at);
    const uint8_t *at1 = begin1, *const end1 = begin1 + side1.left;
    const uint8_t *at2 = begin2, *const end2 = begin2 + side2.left;
    int left = limited ? charLimit : INT32_MAX;
    while (at1 < end1 && at2 < end2 && left > 0) {
        const ptrdiff_t both = std::min(end1 - at1, end2 - at2);
        const ptrdiff_t most = limited ? std::min<ptrdiff_t>(both, left) : both;
        const size_t alike = MappedAlike(&table.map, at1, at2, static_cast<size_t>(most));
        at1 += alike;
        at2 += alike;
        left -= limited ? static_cast<int>(alike) : 0;
        if (static_cast<ptrdiff_t>(alike) == most)
            continue;
        const UpShifted upper1 = UpShiftOne(&table, at1, end1 - at1);
        const UpShifted upper2 = UpShiftOne(&table, at2, end2 - at2);
        if (const int order = judge(upper1, upper2); order != 0)
            return {order, 0, 0, 0};
        at1 += upper1.consumed;
        at2 += upper2.consumed;
        left -= limited ? 1 : 0;
    }
    return {0, static_cast<size_t>(at1 - begin1), static_cast<size_t>(at2 - begin2),
            limited ? charLimit - left : 0};
}

} // namespace libstr

#endif
