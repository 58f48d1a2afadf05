// SPDX-License-Identifier: Apache-2.0
//
// Upper case by case tables: of a character, of a run in one set, and of a whole text.
#include "str/core/buffer.h"
#include "str/core/frame.h"
#include "str/core/prepared.h"
#include "str/core/segments.h"
#include "str/core/sets.h"
#include "str/core/sizes.h"
#include "str/core/upper_utf8.h"

#include <algorithm>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_ToUpp";

// The upper-case buffer.
Buffer<unsigned char> theBuffer;

constexpr unsigned int kStep = 128; // the buffer grows by at least so many bytes
constexpr unsigned int kRoom = 3;   // for a character in two bytes and the NUL

unsigned char *GrowUpperBuffer(uint64_t need, unsigned int *capacity)
{
    const uint64_t old = theBuffer.capacity;
    if (old == 0 || old < need) {
        const uint64_t size = need < old + kStep ? old + kStep : need;
        Grow(&theBuffer, Fit<unsigned int>(kSource, size + 1));
    }
    *capacity = static_cast<unsigned int>(theBuffer.capacity);
    return theBuffer.at;
}

// ---- Runs of a text ------------------------------------------------------------------------

// The result so far.
struct Result {
    unsigned char *buffer;
    unsigned int used;
    unsigned int capacity;
};

void AppendUnchanged(const char *bytes, unsigned int length, Result *result)
{
    const uint64_t need = uint64_t{result->used} + length + 1;
    if (need > result->capacity)
        result->buffer = GrowUpperBuffer(need, &result->capacity);
    std::memcpy(result->buffer + result->used, bytes, length);
    result->used += length;
}

// Appends a run in upper case; without a table, unchanged.
void Append(const char *bytes, unsigned int length, const CaseTableRecord *table, Result *result)
{
    if (table == nullptr)
        AppendUnchanged(bytes, length, result);
    else
        result->buffer =
            str_UpShift(reinterpret_cast<const unsigned char *>(bytes), static_cast<int>(length),
                        table, result->buffer, &result->used, &result->capacity);
}

// The upper case of `length` bytes that are not UTF-8.
void UpperCase(const char *str, unsigned int length, const CSDescriptor *cs, Result *result)
{
    result->buffer = GrowUpperBuffer(uint64_t{length} + length / 4, &result->capacity);
    const CaseTableRecord *const own = CaseTableOf(cs);
    if (cs->escMode == 0) {
        Append(str, length, own, result);
        return;
    }
    const bool ownForAll = own != nullptr && IsUniform(cs);
    SegmentWalk walk;
    WalkSegments(&walk, str, cs, static_cast<int>(length));
    CaseTables tables = {};
    while (NextSegment(&walk)) {
        const CaseTableRecord *table = nullptr;
        if (IsText(walk.kind))
            table = ownForAll ? own : TableOfKind(&tables, walk.kind);
        Append(walk.at, walk.size, table, result);
    }
}

// The text ends at the NUL, even before the length.
size_t LengthOf(const char *str, int length)
{
    return length < 0 ? std::strlen(str) : strnlen(str, static_cast<size_t>(length));
}

// The prepared table of a text's only set; null when there is none yet, or when it may change how
// many bytes there are.
const UpShiftTable *ByteTableOf(const CSDescriptor *cs)
{
    if (cs->escMode != 0 || !HasCase(cs))
        return nullptr;
    const uint16_t number = ccs_GetToUpperTable(cs);
    const UpShiftTable *const table = number == 0 ? nullptr : prepared::FindAt(number - 1U);
    return table != nullptr && table->map.isTotal ? table : nullptr;
}

// The upper case of so many bytes by such a table, in the buffer; null when that has to grow.
// Raises no escape.
char *UpperCaseByteByByte(const char *str, size_t bytes, const UpShiftTable &table)
{
    if (bytes > INT32_MAX || bytes + std::max<size_t>(bytes / 4, kRoom) > theBuffer.capacity)
        return nullptr;
    MapBytes(table.map, reinterpret_cast<const unsigned char *>(str), bytes, theBuffer.at);
    theBuffer.at[bytes] = '\0';
    return reinterpret_cast<char *>(theBuffer.at);
}

char *UpperCaseByTables(const char *str, int length, int *outLen, const CSDescriptor *cs)
{
    const size_t bytes = LengthOf(str, length);
    if (const UpShiftTable *const table = ByteTableOf(cs); table != nullptr)
        if (char *const upper = UpperCaseByteByByte(str, bytes, *table); upper != nullptr) {
            *outLen = static_cast<int>(bytes);
            return upper;
        }
    Result result = {nullptr, 0, 0};
    const bool done = frame::Protect(
        kSource, frame::Accept(ER_CLASS_CONVERSION),
        [&] {
            UpperCase(str, static_cast<unsigned int>(Fit<int>(kSource, bytes)), cs, &result);
            result.buffer[result.used] = '\0';
            length = Fit<int>(kSource, result.used);
        },
        [] { er_LogMsg(3, 3, STR_LOG_GIVEN_UP, 0); });
    if (!done)
        return nullptr;
    *outLen = length;
    return reinterpret_cast<char *>(result.buffer);
}

} // namespace

int str_GetTouTable(const CSDescriptor *cs, CaseTableRecord **table)
{
    if (!HasCase(cs))
        return 0;
    CaseTableRecord *const found = TableOfCased(cs, ccs_GetToUpperTable(cs));
    if (found == nullptr)
        return 0;
    *table = found;
    return 1;
}

int str_UpShiftChar(const unsigned char *in, int avail, const CaseTableRecord *table,
                    unsigned char *out, int *outLen)
{
    UpShiftTable own;
    const UpShifted upper = UpShiftOne(prepared::TableOf(table, 0, &own), in, avail);
    std::memcpy(out, upper.bytes, static_cast<size_t>(upper.written));
    *outLen = upper.written;
    return upper.consumed;
}

unsigned char *str_UpShift(const unsigned char *in, int len, const CaseTableRecord *table,
                           unsigned char *buf, unsigned int *used, unsigned int *capacity)
{
    const auto *const end = in + std::max(len, 0);
    UpShiftTable own;
    const UpShiftTable &lookup = prepared::TableOf(table, static_cast<size_t>(end - in), &own);
    uint64_t done = *used;
    while (in < end) {
        if (done + kRoom > *capacity)
            buf = GrowUpperBuffer(done + kRoom, capacity);
        // These bytes fit with room to spare, so the buffer need not grow between them.
        const auto room = static_cast<size_t>(*capacity - done - (kRoom - 1));
        const size_t fit = std::min(static_cast<size_t>(end - in), room);
        const size_t paired = 2 * MapPairs(lookup, in, fit / 2, buf + done);
        const size_t mapped =
            paired + MapBytes(lookup.map, in + paired, fit - paired, buf + done + paired);
        done += mapped;
        in += mapped;
        if (mapped != 0)
            continue;
        const UpShifted upper = UpShiftByLists(lookup, in, end - in);
        std::memcpy(buf + done, upper.bytes, static_cast<size_t>(upper.written));
        done += static_cast<size_t>(upper.written);
        in += upper.consumed;
    }
    *used = static_cast<unsigned int>(done);
    return buf;
}

char *str_ToUpper(const char *str, int len, int *outLen, const CSDescriptor *cs)
{
    frame::TraceEntry();
    char *const result = IsUtf8(cs) ? UpperCaseUtf8(str, LengthOf(str, len), outLen)
                                    : UpperCaseByTables(str, len, outLen, cs);
    frame::TraceExit();
    return result;
}
