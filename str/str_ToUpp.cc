// SPDX-License-Identifier: Apache-2.0
//
// Upper case by case tables: of a character, of a run in one set, of a whole text.
#include "str/frame.h"
#include "str/segments.h"
#include "str/upshift.h"
#include "str/utf8.h"

#include "base/blocks.h"

#include <platform/os.h>

#include <glib.h>

#include <algorithm>
#include <bit>

namespace
{

constexpr char kSource[] = "str/str_ToUpp";

// The shared upper-case buffer: it grows to the longest result and is never released.
unsigned char *theBuffer;
unsigned int theCapacity;

// The last result in UTF-8, GLib's to release.
char *theUtf8Result;

constexpr unsigned int kStep = 128; // the buffer grows by at least so many bytes
constexpr unsigned int kRoom = 3;   // for a character in two bytes and the NUL

unsigned char *GrowUpperBuffer(unsigned int need, unsigned int *capacity)
{
    if (theCapacity == 0) {
        const unsigned int size = std::max(need, kStep);
        theBuffer = static_cast<unsigned char *>(os_malloc(size_t{size} + 1));
        theCapacity = size + 1;
    } else if (theCapacity < need) {
        const unsigned int size = need - theCapacity < kStep ? theCapacity + kStep : need;
        theBuffer = static_cast<unsigned char *>(os_realloc(theBuffer, size_t{size} + 1));
        theCapacity = size + 1;
    }
    *capacity = theCapacity;
    return theBuffer;
}

// ---- The lists -----------------------------------------------------------------------------

// One bit in three: where rules begin in three blocks of their bytes.
constexpr uint64_t kRuleStarts = [] {
    uint64_t starts = 0;
    for (unsigned int bit = 0; bit < 3 * blocks::kSize; bit += sizeof(PairRule))
        starts |= uint64_t{1} << bit;
    return starts;
}();

// The first rule for a byte; null for none.  Looks at as many rules at a time as a block has bytes.
const PairRule *FindRule(const PairRule *rules, int32_t count, uint8_t byte)
{
    constexpr int32_t kStride = blocks::kSize;
    for (; count >= kStride; count -= kStride, rules += kStride) {
        const char *const bytes = reinterpret_cast<const char *>(rules);
        uint64_t matches = 0;
        for (unsigned int i = 0; i < 3; ++i) {
            const auto block = blocks::Load(bytes + i * blocks::kSize, blocks::kSize);
            const uint64_t mask = blocks::Mask(blocks::Equal(block, static_cast<char>(byte)));
            matches |= mask << i * blocks::kSize;
        }
        matches &= kRuleStarts;
        if (matches != 0)
            return rules + std::countr_zero(matches) / 3;
    }
    for (; count > 0; --count, ++rules)
        if (rules->byte == byte)
            return rules;
    return nullptr;
}

// The first entry of a lead byte; null for none.
const LeadEntry *FindLead(UpShiftTable *table, uint8_t byte, int avail)
{
    constexpr int kLongRun = 16; // bytes, for which an index is worth while
    if (!table->leadsAreIndexed && avail >= kLongRun) {
        std::memset(table->leadIndex, 0, sizeof table->leadIndex);
        for (int32_t i = table->numLeads; i > 0; --i)
            table->leadIndex[table->leads[i - 1].LeadByte] = static_cast<uint16_t>(i);
        table->leadsAreIndexed = true;
    }
    if (table->leadsAreIndexed) {
        const uint16_t place = table->leadIndex[byte];
        return place == 0 ? nullptr : &table->leads[place - 1];
    }
    for (int32_t i = 0; i < table->numLeads; ++i)
        if (table->leads[i].LeadByte == byte)
            return &table->leads[i];
    return nullptr;
}

// The bytes written, 0 when no expansion is for this byte.
int FindExpansion(const uint8_t *in, uint8_t *out, const UpShiftTable &table)
{
    const PairRule *const rule = FindRule(table.expansions, table.numExpansions, in[0]);
    if (rule == nullptr)
        return 0;
    std::memcpy(out, rule->upper, 2);
    return 2;
}

// The bytes written, 0 when there is no rule for this pair of bytes.
int FindPairUpShift(const uint8_t *in, int avail, uint8_t *out, UpShiftTable *table)
{
    const LeadEntry *const lead = FindLead(table, in[0], avail);
    if (lead == nullptr)
        return 0;
    const auto *const trails = reference::ResolveForReading<PairRule>(lead->pTrails);
    const PairRule *const rule = FindRule(trails, trails == nullptr ? 0 : lead->NumTrails, in[1]);
    if (rule == nullptr)
        return 0;
    std::memcpy(out, rule->upper, 2);
    return rule->upper[1] == 0 ? 1 : 2;
}

// ---- Runs of a text ------------------------------------------------------------------------

// The result of a text as far as it goes.
struct Result {
    unsigned char *buffer;
    unsigned int used;
    unsigned int capacity;
};

void AppendUnchanged(const char *bytes, unsigned int length, Result *result)
{
    const unsigned int need = result->used + length + 1;
    if (need > result->capacity)
        result->buffer = GrowUpperBuffer(need, &result->capacity);
    std::memcpy(result->buffer + result->used, bytes, length);
    result->used += length;
}

// Appends a run in upper case, or as it is without a table.
void Append(const char *bytes, unsigned int length, const CaseTableRecord *table, Result *result)
{
    if (table == nullptr)
        AppendUnchanged(bytes, length, result);
    else
        result->buffer =
            str_UpShift(reinterpret_cast<const unsigned char *>(bytes), static_cast<int>(length),
                        table, result->buffer, &result->used, &result->capacity);
}

const CaseTableRecord *TableOf(const CSDescriptor *cs)
{
    CaseTableRecord *table = nullptr;
    str_GetTouTable(cs, &table);
    return table;
}

// The upper case of `length` bytes that are not UTF-8.
void UpperCase(const char *str, unsigned int length, const CSDescriptor *cs, Result *result)
{
    result->buffer = GrowUpperBuffer(length + length / 4, &result->capacity);
    const CaseTableRecord *const own = TableOf(cs);
    if (cs->escMode == 0) {
        Append(str, length, own, result);
        return;
    }
    constexpr uint32_t kOwnForAll = CS_FLAG_CASE | CS_FLAG_UNIFORM;
    const bool ownForAll = own != nullptr && (ccs_GetCSFlags(cs) & kOwnForAll) == kOwnForAll;
    SegmentWalk walk = WalkSegments(str, cs, static_cast<int>(length));
    while (NextSegment(&walk)) {
        const CaseTableRecord *table = nullptr;
        if (IsText(walk.kind)) {
            const CSDescriptor segCs = SegmentDescriptor(walk.kind, cs);
            table = ownForAll ? own : TableOf(&segCs);
        }
        Append(walk.at, walk.size, table, result);
    }
}

// A length that reaches beyond the text means the text.
size_t LengthOf(const char *str, int length)
{
    return length < 0 ? std::strlen(str) : strnlen(str, static_cast<size_t>(length));
}

char *UpperCaseUtf8(const char *str, int length, int *outLen)
{
    const size_t bytes = LengthOf(str, length);
    if (g_utf8_validate(str, static_cast<gssize>(bytes), nullptr) == FALSE)
        return nullptr;
    theUtf8Result = g_utf8_strup(str, static_cast<gssize>(bytes));
    if (theUtf8Result != nullptr)
        *outLen = static_cast<int>(std::strlen(theUtf8Result));
    return theUtf8Result;
}

char *UpperCaseByTables(const char *str, int length, int *outLen, const CSDescriptor *cs)
{
    const size_t bytes = LengthOf(str, length);
    Result result = {nullptr, 0, 0};
    const bool done = frame::Protect(
        kSource, frame::Accept(5),
        [&] {
            UpperCase(str, static_cast<unsigned int>(bytes), cs, &result);
            result.buffer[result.used] = '\0';
        },
        [] { er_LogMsg(3, 3, 23816, 0); });
    if (!done)
        return nullptr;
    *outLen = static_cast<int>(result.used);
    return reinterpret_cast<char *>(result.buffer);
}

} // namespace

void SetUpShiftTable(UpShiftTable *table, const CaseTableRecord *record)
{
    SetByteMap(&table->map, reference::ResolveForReading<uint8_t>(record->pByteMap));
    table->expansions = reference::ResolveForReading<PairRule>(record->pExpansions);
    table->numExpansions = table->expansions == nullptr ? 0 : std::max(record->NumExpansions, 0);
    table->leads = reference::ResolveForReading<LeadEntry>(record->pLeads);
    table->numLeads = table->leads == nullptr ? 0 : std::max(record->NumLeads, 0);
    table->leadsAreIndexed = false;
}

UpShifted UpShiftByLists(UpShiftTable *table, const uint8_t *in, int avail)
{
    UpShifted result = {{in[0], 0}, 1, 1};
    if (const int expanded = FindExpansion(in, result.bytes, *table); expanded != 0) {
        result.written = expanded;
    } else if (avail > 1) {
        const int paired = FindPairUpShift(in, avail, result.bytes, table);
        if (paired != 0) {
            result.written = paired;
            result.consumed = 2;
        }
    }
    return result;
}

int str_GetTouTable(const CSDescriptor *cs, CaseTableRecord **table)
{
    if ((ccs_GetCSFlags(cs) & CS_FLAG_CASE) == 0)
        return 0;
    const uint16_t number = ccs_GetToUpperTable(cs);
    CaseTableRecord *const found = number != 0 ? pCaseTabs + (number - 1) : str_InitCaseTables(cs);
    if (found == nullptr)
        return 0;
    *table = found;
    return 1;
}

int str_UpShiftChar(const unsigned char *in, int avail, const CaseTableRecord *table,
                    unsigned char *out, int *outLen)
{
    UpShiftTable lookup;
    SetUpShiftTable(&lookup, table);
    const UpShifted upper = UpShiftOne(&lookup, in, avail);
    std::memcpy(out, upper.bytes, static_cast<size_t>(upper.written));
    *outLen = upper.written;
    return upper.consumed;
}

unsigned char *str_UpShift(const unsigned char *in, int len, const CaseTableRecord *table,
                           unsigned char *buf, unsigned int *used, unsigned int *capacity)
{
    UpShiftTable lookup;
    SetUpShiftTable(&lookup, table);
    unsigned int end = *used;
    while (len > 0) {
        if (end + kRoom > *capacity)
            buf = GrowUpperBuffer(end + kRoom, capacity);
        // Before each of these bytes there is room, so none of them would have let the buffer grow.
        const size_t fit =
            std::min(static_cast<size_t>(len), size_t{*capacity} - end - (kRoom - 1));
        const size_t mapped = MapBytes(&lookup.map, in, fit, buf + end);
        end += static_cast<unsigned int>(mapped);
        in += mapped;
        len -= static_cast<int>(mapped);
        if (mapped == fit)
            continue;
        const UpShifted upper = UpShiftByLists(&lookup, in, len);
        std::memcpy(buf + end, upper.bytes, static_cast<size_t>(upper.written));
        end += static_cast<unsigned int>(upper.written);
        in += upper.consumed;
        len -= upper.consumed;
    }
    *used = end;
    return buf;
}

char *str_ToUpper(const char *str, int len, int *outLen, const CSDescriptor *cs)
{
    frame::TraceEntry("str_ToUpper");
    g_free(theUtf8Result);
    theUtf8Result = nullptr;
    char *const result =
        IsUtf8(cs) ? UpperCaseUtf8(str, len, outLen) : UpperCaseByTables(str, len, outLen, cs);
    frame::TraceExit("str_ToUpper");
    return result;
}
