// SPDX-License-Identifier: Apache-2.0
//
// The segment walk: how every function of the library moves over a text.
//
//     SegmentWalk walk = WalkSegments(text, cs);
//     while (NextSegment(&walk)) { ... walk.kind, walk.at, walk.size ... }
//
// The service keeps one walk state, so two walks are never interleaved.
#ifndef STR_CORE_SEGMENTS_H
#define STR_CORE_SEGMENTS_H

#include <platform/ccs.h>

#include <algorithm>

namespace libstr
{

struct SegmentWalk {
    const CSDescriptor *cs; // of the whole string
    const char *at;         // the segment's first byte
    int length;             // bytes to consider from there on; negative: up to the NUL
    unsigned int size;      // the segment's bytes
    uint16_t kind;
    bool begun;
};

inline SegmentWalk WalkSegments(const char *text, const CSDescriptor *cs, int length = -1)
{
    return {cs, text, length, 0, CS_SEG_NONE, false};
}

// Moves to the next segment; false at the end of the text.
inline bool NextSegment(SegmentWalk *walk)
{
    walk->at += walk->size;
    if (walk->length >= 0) // never becomes negative, whatever size the service returned
        walk->length -=
            static_cast<int>(std::min(walk->size, static_cast<unsigned int>(walk->length)));
    auto *next = walk->begun ? ccs_GetNextStr : ccs_Get1stStr;
    walk->begun = true;
    walk->kind = next(walk->cs, walk->at, walk->length, &walk->size);
    return walk->kind != CS_SEG_END;
}

// A segment of characters of a set.
inline bool IsText(uint16_t kind) { return static_cast<int16_t>(kind) > 0; }

// A segment without characters: an escape or control sequence.
inline bool IsIgnored(uint16_t kind) { return kind == CS_SEG_IGNORE || kind == CS_SEG_NONE; }

// The descriptor of one segment: the set is the segment's, escMode the string's.
inline CSDescriptor SegmentDescriptor(uint16_t kind, const CSDescriptor *cs)
{
    return {kind, cs->escMode};
}

} // namespace libstr

#endif
