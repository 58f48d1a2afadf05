// SPDX-License-Identifier: Apache-2.0
//
// How much of a text fits a budget of bytes.
#ifndef STR_CORE_TRUNCATION_H
#define STR_CORE_TRUNCATION_H

#include <platform/ccs.h>

namespace libstr
{

// The bytes of whole characters at the start of a text segment that fit in `room` bytes.  The text
// has at least so many.
unsigned int SegmentTruncation(const char *seg, unsigned int room, const CSDescriptor *segCs);

// The bytes of a text to keep for a budget of `n`, by the segment walk.
unsigned int WalkedTruncation(const char *src, unsigned int n, const CSDescriptor *cs);

} // namespace libstr

#endif
