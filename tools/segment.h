// SPDX-License-Identifier: Apache-2.0
//
// What a record of the segment list means.
#ifndef TOOLS_SEGMENT_H
#define TOOLS_SEGMENT_H

#include <platform/ccs.h>

#include <string_view>

namespace strtool
{

inline bool IsEscape(const CSSegment &segment)
{
    return segment.kind == CS_SEG_IGNORE || segment.kind == CS_SEG_NONE;
}

inline bool IsRaw(const CSSegment &segment) { return segment.kind == CS_SEG_RAW; }

inline std::string_view BytesOf(const CSSegment &segment) { return {segment.text, segment.length}; }

inline const char *KindName(const CSSegment &segment)
{
    if (IsEscape(segment))
        return "escape";
    const CSDescriptor cs = {segment.kind, 0};
    return IsRaw(segment) ? "raw" : ccs_GetCSName(&cs);
}

} // namespace strtool

#endif
