// SPDX-License-Identifier: Apache-2.0
//
// How much of a text is kept for a budget of bytes, by the segment walk.
#ifndef STR_CORE_TRUNCATION_H
#define STR_CORE_TRUNCATION_H

#include <platform/ccs.h>

namespace libstr
{

// The bytes of whole characters at the front of a text segment that fit in `room` bytes, all of
// which belong to the text.
unsigned int SegmentTruncation(const char *seg, unsigned int room, const CSDescriptor *segCs);

// The bytes kept of a text for a budget of `n`.
unsigned int WalkedTruncation(const char *src, unsigned int n, const CSDescriptor *cs);

} // namespace libstr

#endif
