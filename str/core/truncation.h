// SPDX-License-Identifier: Apache-2.0
//
// How much of a text fits a budget of bytes.
#ifndef STR_CORE_TRUNCATION_H
#define STR_CORE_TRUNCATION_H

#include "str/core/segments.h"

namespace libstr
{

// The bytes of whole characters at the start of a text segment that fit in `room` bytes.  The text
// has at least so many.
unsigned int SegmentTruncation(const char *seg, unsigned int room, const CSDescriptor *segCs);

// The bytes of a text to keep for a budget of `n`, by the segment walk.
unsigned int WalkedTruncation(const char *src, unsigned int n, const CSDescriptor *cs);

// The longest start of a text that fits a budget together with the escapes that bring it back to
// the initial state of its set.
struct ClosedTruncation {
    unsigned int kept;
    int escapes; // bytes of `closing`
    char closing[kMostEscapes + 1];
};
void TruncateClosed(const char *src, unsigned int n, const CSDescriptor *cs, ClosedTruncation *out);

} // namespace libstr

#endif
