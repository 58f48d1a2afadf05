// SPDX-License-Identifier: Apache-2.0
//
// Whether an image can be read: every array that it refers to lies in the segment.
#include "str/core/case_record.h"

using namespace libstr;

namespace
{

constexpr uint32_t kAlignment = 4; // of records and lead entries

struct Image {
    const char *at;
    uint64_t size;
};

// Where `count` elements may be; a negative count means 0.
template <class T>
bool Holds(const Image &image, uint32_t offset, int32_t count)
{
    return count <= kMostEntries && offset <= image.size &&
           ArraySize<T>(count) <= image.size - offset;
}

template <class T>
T Element(const Image &image, uint32_t offset, int32_t index)
{
    T element;
    std::memcpy(&element, image.at + offset + ArraySize<T>(index), sizeof element);
    return element;
}

bool AreLeads(const Image &image, uint32_t offset, int32_t count)
{
    if (offset % kAlignment != 0 || !Holds<LeadEntry>(image, offset, count))
        return false;
    for (int32_t i = 0; i < count; ++i) {
        const auto lead = Element<LeadEntry>(image, offset, i);
        if (!Holds<PairRule>(image, lead.pTrails, lead.NumTrails))
            return false;
    }
    return true;
}

bool IsRecord(const Image &image, const CaseTableRecord &record)
{
    return record.pByteMap != 0 && Holds<char>(image, record.pByteMap, kByteMapSize) &&
           Holds<PairRule>(image, record.pExpansions, record.NumExpansions) &&
           AreLeads(image, record.pLeads, record.NumLeads);
}

bool AreRecords(const Image &image, uint32_t offset, int32_t count)
{
    if (offset % kAlignment != 0 || !Holds<CaseTableRecord>(image, offset, count))
        return false;
    for (int32_t i = 0; i < count; ++i)
        if (!IsRecord(image, Element<CaseTableRecord>(image, offset, i)))
            return false;
    return true;
}

} // namespace

int str_CheckSMem(uint32_t recordsOffset, int32_t recordCount, const char *segment, size_t size)
{
    const bool isAligned = reinterpret_cast<uintptr_t>(segment) % kAlignment == 0;
    return isAligned && AreRecords({segment, size}, recordsOffset, recordCount) ? 1 : 0;
}
