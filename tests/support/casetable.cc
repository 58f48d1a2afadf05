// SPDX-License-Identifier: Apache-2.0
#include "tests/support/casetable.h"

#include "services/services.h"
#include "str/reference.h"

#include <platform/er.h>
#include <platform/os.h>

#include <cstring>

namespace
{

constexpr size_t kMap = sizeof(CaseTableHeader) + sizeof(CaseTableRecord);
constexpr size_t kLists = kMap + 256;

template <class T>
T Part(std::string_view file, size_t offset)
{
    T part;
    std::memcpy(&part, file.substr(offset, sizeof part).data(), sizeof part);
    return part;
}

template <class T>
std::string_view BytesOf(const T &part)
{
    return {reinterpret_cast<const char *>(&part), sizeof part};
}

CaseTableRecord RecordOf(std::string_view file)
{
    return Part<CaseTableRecord>(file, sizeof(CaseTableHeader));
}

size_t SizeOf(int32_t count, size_t elementSize)
{
    return count > 0 ? static_cast<size_t>(count) * elementSize : 0;
}

std::string Hex(std::string_view bytes)
{
    std::string digits;
    for (const char byte : bytes)
        for (const int shift : {4, 0})
            digits += "0123456789ABCDEF"[(byte >> shift) & 0xF];
    return digits;
}

std::string Pairs(std::string_view pairs, const char *between)
{
    std::string text;
    for (size_t i = 0; i < pairs.size(); i += 3)
        text +=
            (i == 0 ? "" : between) + Hex(pairs.substr(i, 1)) + ":" + Hex(pairs.substr(i + 1, 2));
    return text;
}

} // namespace

std::string FileOf(const CaseTableRecord &record)
{
    std::string arrays, trails;
    const auto add = [](std::string *to, CaseTableRef array, size_t size) {
        if (size != 0)
            to->append(reference::ResolveForReading<char>(array), size);
    };
    add(&arrays, record.pByteMap, 256);
    add(&arrays, record.pExpansions, SizeOf(record.NumExpansions, 3));
    add(&arrays, record.pLeads, SizeOf(record.NumLeads, sizeof(LeadEntry)));
    const auto *const leads = reference::ResolveForReading<LeadEntry>(record.pLeads);
    for (int32_t i = 0; i < record.NumLeads; ++i)
        add(&trails, leads[i].pTrails, SizeOf(leads[i].NumTrails, 3));
    const CaseTableHeader header = {CASE_TABLE_MAGIC, CASE_TABLE_VERSION, 0, {}};
    return WithoutReferences(std::string(BytesOf(header)).append(BytesOf(record)) + arrays +
                             trails);
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
    for (int32_t i = 0; str_ba == nullptr && i < NumCaseTabs; ++i)
        str_FreeCTEntry(&pCaseTabs[i]);
    if (str_ba == nullptr)
        os_free(pCaseTabs);
    str_ba = nullptr;
    pCaseTabs = nullptr;
    NumCaseTabs = 0;
    str_FreeWkArea();
}

std::string WithoutReferences(std::string file)
{
    const CaseTableRecord record = RecordOf(file);
    const auto clear = [&](size_t at) { file.replace(at, 4, 4, '\0'); };
    const auto clearNegative = [&](size_t at) {
        if (Part<int32_t>(file, at) < 0)
            clear(at);
    };
    for (const size_t field : {84U, 88U, 100U})
        clear(sizeof(CaseTableHeader) + field);
    for (const size_t field : {96U, 108U})
        clearNegative(sizeof(CaseTableHeader) + field);
    size_t lead = kLists + SizeOf(record.NumExpansions, 3);
    for (int32_t i = 0; i < record.NumLeads; ++i, lead += sizeof(LeadEntry)) {
        clear(lead + 4);
        clearNegative(lead + 12);
    }
    return file;
}

std::string RulesOf(std::string_view file)
{
    const CaseTableRecord record = RecordOf(file);
    std::string text = record.CharSetName;
    for (size_t byte = 0; byte < 256; ++byte)
        if (const char b = static_cast<char>(byte); file[kMap + byte] != b)
            text += " " + Hex({&b, 1}) + ">" + Hex(file.substr(kMap + byte, 1));
    const size_t leads = kLists + SizeOf(record.NumExpansions, 3);
    if (leads != kLists)
        text += " " + Pairs(file.substr(kLists, leads - kLists), " ");
    size_t trails = leads + SizeOf(record.NumLeads, sizeof(LeadEntry));
    for (size_t at = leads, first = trails; at != first; at += sizeof(LeadEntry)) {
        const size_t size = SizeOf(Part<LeadEntry>(file, at).NumTrails, 3);
        text += " " + Hex(file.substr(at, 1)) + "[" + Pairs(file.substr(trails, size), " ") + "]";
        trails += size;
    }
    return text + (trails == file.size() ? "" : " and more");
}

bool IsClear(const CaseTableRecord &record)
{
    return BytesOf(record) == std::string(sizeof record, '\0');
}
