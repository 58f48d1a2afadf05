// SPDX-License-Identifier: Apache-2.0
#include "tests/support/casetable.h"

#include "services/services.h"
#include "str/core/reference.h"

#include <platform/er.h>
#include <platform/os.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

using namespace libstr;

namespace
{

constexpr size_t kRecord = sizeof(CaseTableHeader);
constexpr size_t kNumExpansions = kRecord + offsetof(CaseTableRecord, NumExpansions);
constexpr size_t kNumLeads = kRecord + offsetof(CaseTableRecord, NumLeads);
constexpr size_t kMap = kRecord + sizeof(CaseTableRecord);
constexpr size_t kExpansions = kMap + 256;

// The count at an offset; a negative one is none.
size_t CountAt(std::string_view file, size_t at)
{
    int32_t count = 0;
    file.copy(reinterpret_cast<char *>(&count), sizeof count, at);
    return static_cast<size_t>(std::max(count, 0));
}

size_t LeadsOf(std::string_view file) { return kExpansions + 3 * CountAt(file, kNumExpansions); }

std::string Hex(std::string_view bytes)
{
    std::string digits;
    for (const char byte : bytes)
        for (const int shift : {4, 0})
            digits += "0123456789ABCDEF"[(byte >> shift) & 0xF];
    return digits;
}

std::string Pairs(std::string_view pairs)
{
    std::string text;
    for (; pairs.size() >= 3; pairs.remove_prefix(3))
        text += " " + Hex(pairs.substr(0, 1)) + ":" + Hex(pairs.substr(1, 2));
    return text;
}

} // namespace

std::string WithoutReferences(std::string file)
{
    const auto clear = [&](size_t at) { file.replace(at, 4, 4, '\0'); };
    const auto clearNegative = [&](size_t at) {
        if (CountAt(file, at) == 0)
            clear(at);
    };
    for (const size_t reference : {84U, 88U, 100U})
        clear(kRecord + reference);
    clearNegative(kNumExpansions);
    clearNegative(kNumLeads);
    size_t lead = LeadsOf(file);
    for (size_t count = CountAt(file, kNumLeads); count > 0; --count, lead += sizeof(LeadEntry)) {
        clear(lead + offsetof(LeadEntry, pTrails));
        clearNegative(lead + offsetof(LeadEntry, NumTrails));
    }
    return file;
}

std::string FileOf(const CaseTableRecord &record)
{
    const CaseTableHeader header = {CASE_TABLE_MAGIC, CASE_TABLE_VERSION, 0, {}};
    std::string file(reinterpret_cast<const char *>(&header), sizeof header);
    file.append(reinterpret_cast<const char *>(&record), sizeof record);
    const auto add = [&](CaseTableRef array, size_t size) {
        if (size != 0)
            file.append(reference::ResolveForReading<char>(array), size);
    };
    const size_t leadCount = CountAt(file, kNumLeads);
    add(record.pByteMap, 256);
    add(record.pExpansions, 3 * CountAt(file, kNumExpansions));
    add(record.pLeads, sizeof(LeadEntry) * leadCount);
    const auto *const leads = reference::ResolveForReading<LeadEntry>(record.pLeads);
    for (size_t i = 0; i < leadCount; ++i)
        add(leads[i].pTrails, 3 * static_cast<size_t>(leads[i].NumTrails));
    return WithoutReferences(file);
}

std::string RulesOf(std::string_view file)
{
    std::string text(file.data() + kRecord);
    for (size_t byte = 0; byte < 256; ++byte)
        if (const char b = static_cast<char>(byte); file[kMap + byte] != b)
            text += " " + Hex({&b, 1}) + ">" + Hex(file.substr(kMap + byte, 1));
    const size_t leads = LeadsOf(file);
    text += Pairs(file.substr(kExpansions, leads - kExpansions));
    size_t trails = leads + sizeof(LeadEntry) * CountAt(file, kNumLeads);
    for (size_t at = leads, first = trails; at != first; at += sizeof(LeadEntry)) {
        const size_t size = 3 * CountAt(file, at + offsetof(LeadEntry, NumTrails));
        const std::string pairs = Pairs(file.substr(trails, size));
        text += " " + Hex(file.substr(at, 1)) + "[" + pairs.substr(1) + "]";
        trails += size;
    }
    return text + (trails == file.size() ? "" : " and more");
}

bool IsClear(const CaseTableRecord &record)
{
    const CaseTableRecord clear = {};
    return std::memcmp(&record, &clear, sizeof clear) == 0;
}

std::string CaseTableTest::logged, CaseTableTest::traced;

CaseTableTest::CaseTableTest()
{
    logged.clear();
    traced.clear();
    er_SetLogSink([](int, const char *text) { logged += std::string(text) + "\n"; });
    er_SetTraceSink([](int traceClass, const char *text, int marker) {
        if (marker >= 0)
            traced += std::to_string(traceClass) + (marker == 1 ? "+" : "-") + text + " ";
    });
}

CaseTableTest::~CaseTableTest()
{
    ReleaseTables();
    er_SetLogSink(nullptr);
    er_SetTraceSink(nullptr);
    er_SubSystemLoggingLevel = 0;
}

void CaseTableTest::ReleaseTables()
{
    if (str_ba == nullptr) {
        std::for_each(pCaseTabs, pCaseTabs + NumCaseTabs,
                      [](auto &record) { str_FreeCTEntry(&record); });
        os_free(pCaseTabs);
    }
    str_ba = nullptr;
    pCaseTabs = nullptr;
    NumCaseTabs = 0;
    str_FreeWkArea();
}
