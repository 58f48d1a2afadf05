// SPDX-License-Identifier: Apache-2.0
//
// The segment walk: how every function of the library moves over a text.
//
//     SegmentWalk walk;
//     WalkSegments(&walk, text, cs);
//     while (NextSegment(&walk)) { ... walk.kind, walk.at, walk.size ... }
//
// Where the service offers walks that belong to the caller, this is one.  Else the service keeps
// one walk state, so two walks are never interleaved.
#ifndef STR_CORE_SEGMENTS_H
#define STR_CORE_SEGMENTS_H

#include <platform/ccs.h>

#include <algorithm>

// A host need not have these.
extern "C" {
extern decltype(ccs_BeginWalk) ccs_BeginWalk __attribute__((weak));
extern decltype(ccs_NextSegments) ccs_NextSegments __attribute__((weak));
extern decltype(ccs_MeasureText) ccs_MeasureText __attribute__((weak));
extern decltype(ccs_GetWalkEscapes) ccs_GetWalkEscapes __attribute__((weak));
extern decltype(ccs_CloseWalk) ccs_CloseWalk __attribute__((weak));
}

namespace libstr
{

inline constexpr int kMostEscapes = 81; // bytes of the escapes that a service gives

// The readers of texts that the library is linked with.
extern const CSReaders kReaders;

// Begins a walk that belongs to the caller; false where the service does not offer it.
inline bool BeginOwnWalk(CSWalk *walk, const char *text, const CSDescriptor *cs, int length = -1)
{
    return ccs_BeginWalk != nullptr && ccs_BeginWalk(walk, cs, text, length, &kReaders) != 0;
}

struct SegmentWalk {
    const CSDescriptor *cs; // of the whole string
    const char *at;         // the segment's first byte
    unsigned int size;      // the segment's bytes
    uint16_t kind;

    // A walk of our own, and the segments that it has found ahead.
    bool own;
    int index;
    int count;
    CSWalk walk;
    CSSegment ahead[32];

    // A walk of the service's.
    bool begun;
    int length; // bytes to consider from `at` on; negative: up to the NUL
};

inline void WalkSegments(SegmentWalk *walk, const char *text, const CSDescriptor *cs,
                         int length = -1)
{
    walk->cs = cs;
    walk->at = text;
    walk->size = 0;
    walk->kind = CS_SEG_NONE;
    walk->own = BeginOwnWalk(&walk->walk, text, cs, length);
    walk->index = walk->count = 0;
    walk->begun = false;
    walk->length = length;
}

// As NextSegment, by the service's walk.
bool NextSegmentOfService(SegmentWalk *walk);

// Finds the next segments; false at the end of the text.
bool FindSegments(SegmentWalk *walk);

// Leads the service's walk to the end of the text, for the escapes that belong there.  Returns the
// last segment's kind.
uint16_t WalkToEnd(const char *text, const CSDescriptor *cs, int length = -1);

// Moves to the next segment; false at the end of the text.
inline bool NextSegment(SegmentWalk *walk)
{
    if (!walk->own)
        return NextSegmentOfService(walk);
    if (walk->index == walk->count && !FindSegments(walk))
        return false;
    const CSSegment &segment = walk->ahead[walk->index++];
    walk->at = segment.text;
    walk->size = segment.length;
    walk->kind = segment.kind;
    return true;
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
