// SPDX-License-Identifier: Apache-2.0
#include "str/core/segments.h"

#include <iterator>

namespace libstr
{

const CSReaders kReaders = {
    ccs_Get1stStr,  ccs_GetNextStr,      ccs_GetAllStrs,        ccs_GetRealStrs,
    ccs_GetCtrlLen, ccs_GetNumBytes,     ccs_GetT61BaseUnitLen, ccs_GetNextCharLen,
    ccs_GetCSFlags, ccs_GetModelEscapes, ccs_GetConfAsciiEscs,
};

bool NextSegmentOfService(SegmentWalk *walk)
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

uint16_t WalkToEnd(const char *text, const CSDescriptor *cs, int length)
{
    SegmentWalk walk;
    WalkSegments(&walk, text, cs, length);
    uint16_t last = walk.kind;
    while (NextSegmentOfService(&walk))
        last = walk.kind;
    return last;
}

bool FindSegments(SegmentWalk *walk)
{
    walk->index = 0;
    walk->count =
        ccs_NextSegments(&walk->walk, walk->ahead, static_cast<int>(std::size(walk->ahead)));
    if (walk->count > 0)
        return true;
    walk->at += walk->size;
    walk->size = 0;
    walk->kind = CS_SEG_END;
    return false;
}

} // namespace libstr
