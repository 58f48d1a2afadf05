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
// Answer the segment's first byte, its bytes, its kind, and in `offset` where it stands in the
// string.  The service keeps one walk, so one side of a comparison is listed and the other walked.
const char *NextSegmentFromList(const CSDescriptor *cs, const char *str, int len, bool first,
                                unsigned int *segLen, uint16_t *kind, unsigned int *offset);
const char *NextSegmentByWalk(const CSDescriptor *cs, const char *str, int len, bool first,
                              unsigned int *segLen, uint16_t *kind, unsigned int *offset);

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
    int length; // for the walker; of a string that is one segment, its bytes

    const char *at;
    unsigned int left;   // bytes of the segment from `at` on
    unsigned int offset; // of the segment in the string
    uint16_t kind;
};

inline void FetchSegment(Side *side, bool first)
{
    if (side->next != nullptr) {
        side->at = side->next(side->cs, side->str, side->length, first, &side->left, &side->kind,
                              &side->offset);
    } else {
        const auto size = static_cast<unsigned int>(side->length);
        side->at = first ? side->str : side->str + size;
        side->left = first ? size : 0;
        side->offset = first ? 0 : size;
        side->kind = first && size != 0 ? side->cs->csNum : uint16_t{CS_SEG_END};
    }
}

inline void Advance(Side *side, int step)
{
    side->at += step;
    side->left -= static_cast<unsigned int>(step);
}

// A number of bytes as the runs take it.
inline int Signed(unsigned int bytes)
{
    return static_cast<int>(std::min(bytes, static_cast<unsigned int>(INT32_MAX)));
}

// Compares two runs in upper case, character by character, up to the end of either or, with a
// `charLimit` that is not negative, so many characters.  `judge` says how two characters compare: 0
// for alike.  Answers 0 when all were alike, and then what each side has consumed and how many
// characters that was (`chars` only with a limit); else what the judge said.
template <class Judge>
int CompareRunInUpperCase(const char *p1, const char *p2, int avail1, int avail2, int charLimit,
                          const CaseTableRecord *record, int *step1, int *step2, int *chars,
                          Judge judge)
{
    const bool limited = charLimit >= 0;
    // Nothing is to be looked up in a run that both have in the same bytes.
    if (!limited && avail1 == avail2 &&
        std::memcmp(p1, p2, static_cast<size_t>(std::max(avail1, 0))) == 0) {
        *step1 = *step2 = avail1;
        return 0;
    }
    UpShiftTable table;
    SetUpShiftTable(&table, record);
    const auto *at1 = reinterpret_cast<const uint8_t *>(p1);
    const auto *at2 = reinterpret_cast<const uint8_t *>(p2);
    const uint8_t *const end1 = at1 + avail1;
    const uint8_t *const end2 = at2 + avail2;
    int left = limited ? charLimit : INT32_MAX;
    while (at1 < end1 && at2 < end2 && left > 0) {
        const auto most = std::min({end1 - at1, end2 - at2, static_cast<ptrdiff_t>(left)});
        const size_t alike = MappedAlike(&table.map, at1, at2, static_cast<size_t>(most));
        at1 += alike;
        at2 += alike;
        left -= limited ? static_cast<int>(alike) : 0;
        if (static_cast<ptrdiff_t>(alike) == most)
            continue;
        const UpShifted upper1 = UpShiftOne(&table, at1, static_cast<int>(end1 - at1));
        const UpShifted upper2 = UpShiftOne(&table, at2, static_cast<int>(end2 - at2));
        if (const int verdict = judge(upper1, upper2); verdict != 0)
            return verdict;
        at1 += upper1.consumed;
        at2 += upper2.consumed;
        left -= limited ? 1 : 0;
    }
    *step1 = static_cast<int>(at1 - reinterpret_cast<const uint8_t *>(p1));
    *step2 = static_cast<int>(at2 - reinterpret_cast<const uint8_t *>(p2));
    if (limited)
        *chars = charLimit - left;
    return 0;
}

} // namespace libstr

#endif
