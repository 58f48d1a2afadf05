// SPDX-License-Identifier: Apache-2.0
#include "tests/process/digest.h"

#include "str/core/case_record.h"

using namespace libstr;

namespace
{

template <class T>
std::string Hex(const T *elements, int32_t count)
{
    std::string hex;
    for (size_t i = 0; i < ArraySize<T>(count); ++i) {
        const unsigned byte = reinterpret_cast<const unsigned char *>(elements)[i];
        hex += {"0123456789ABCDEF"[byte / 16], "0123456789ABCDEF"[byte % 16]};
    }
    return hex;
}

template <class T>
std::string Array(CaseTableRef ref, int32_t count)
{
    return Hex(reference::ResolveForReading<T>(ref), count);
}

} // namespace

std::string Digest(const CaseTableRecord &record)
{
    CaseTableRecord head = record;
    head.pByteMap = head.pExpansions = head.pLeads = 0;
    std::string lists = Hex(&head, 1) + Array<uint8_t>(record.pByteMap, 256) +
                        Array<PairRule>(record.pExpansions, record.NumExpansions);
    std::string trails;
    for (int32_t i = 0; i < record.NumLeads; ++i) {
        LeadEntry lead = reference::ResolveForReading<LeadEntry>(record.pLeads)[i];
        trails += Array<PairRule>(lead.pTrails, lead.NumTrails);
        lead.pTrails = 0;
        lists += Hex(&lead, 1);
    }
    return lists + trails;
}
