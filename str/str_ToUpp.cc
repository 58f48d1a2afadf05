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
thread_local ThreadBuffer<unsigned char> theBuffer;

constexpr unsigned int kStep = 128; // the buffer grows by at least so many bytes
constexpr unsigned int kRoom = 3;   // for a character in two bytes and the NUL

[[gnu::noinline]] unsigned char *GrowUpperBuffer(uint64_t need, unsigned int *capacity)
{
    ThreadBuffer<unsigned char> *const buffer = &theBuffer;
    const uint64_t old = buffer->capacity;
    if (old == 0 || old < need) {
        const uint64_t size = need < old + kStep ? old + kStep : need;
        Grow(buffer, Fit<unsigned int>(kSource, size + 1));
    }
    *capacity = static_cast<unsigned int>(buffer->capacity);
    return buffer->at;
}

// ---- Runs of a text ------------------------------------------------------------------------

// The result so far.
struct Result {
    unsigned char *buffer;
    unsigned int used;
    unsigned int capacity;
};

// As str_UpShift, by a table that has been resolved.
unsigned char *UpShift(const UpShiftTable &table, const unsigned char *in, const unsigned char *end,
                       unsigned char *buf, unsigned int *used, unsigned int *capacity)
{
    uint64_t done = *used;
    while (in < end) {
        if (done + kRoom > *capacity)
            buf = GrowUpperBuffer(done + kRoom, capacity);
        // These bytes fit with room to spare, so the buffer need not grow between them.
        const auto room = static_cast<size_t>(*capacity - done - (kRoom - 1));
        const size_t fit = std::min(static_cast<size_t>(end - in), room);
        const size_t paired = 2 * MapPairs(table, in, fit / 2, buf + done);
        const size_t mapped =
            paired + MapBytes(table.map, in + paired, fit - paired, buf + done + paired);
        done += mapped;
        in += mapped;
        if (mapped != 0)
            continue;
        const UpShifted upper = UpShiftByLists(table, in, end - in);
        std::memcpy(buf + done, upper.bytes, static_cast<size_t>(upper.written));
        done += static_cast<size_t>(upper.written);
        in += upper.consumed;
    }
    *used = static_cast<unsigned int>(done);
    return buf;
}

void AppendUnchanged(const char *bytes, unsigned int length, Result *result)
{
    const uint64_t need = uint64_t{result->used} + length + 1;
    if (need > result->capacity)
        result->buffer = GrowUpperBuffer(need, &result->capacity);
    unsigned char *const out = result->buffer + result->used;
    if (length >= 2 && length <= 4) { // an escape sequence: two parts that overlap
        const uint16_t first = LoadPair(bytes), last = LoadPair(bytes + length - 2);
        std::memcpy(out, &first, sizeof first);
        std::memcpy(out + length - 2, &last, sizeof last);
    } else {
        std::memcpy(out, bytes, length);
    }
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

// A text that switches sets.
struct Text {
    const char *str;
    unsigned int length;
    uint16_t only; // the kind whose table serves all segments, or CS_SEG_NONE
    prepared::Kinds tables;
    // A kind by whose table all that follows has been mapped to its place in the result: as long as
    // no length changes, its segments are done.  Most texts have many of one kind.
    uint16_t mapped = CS_SEG_END;
};

// Whether the result so far has as many bytes as the text so far.
bool IsInStep(const Text &text, const char *at, const Result &result)
{
    return at - text.str == static_cast<ptrdiff_t>(result.used);
}

// Maps the rest of the text to its place in the result by a table that keeps lengths, if there is
// room.
void MapRest(Text *text, uint16_t kind, const ByteMap &map, const Result &result)
{
    if (text->length >= result.capacity)
        return;
    MapBytes(map, reinterpret_cast<const uint8_t *>(text->str) + result.used,
             text->length - result.used, result.buffer + result.used);
    text->mapped = kind;
}

// Appends a pair by its row, if that says all.
bool AppendPair(const UpShiftTable &table, const uint8_t *pair, Result *result)
{
    if (table.pairs == nullptr || uint64_t{result->used} + kRoom > result->capacity)
        return false;
    const uint16_t change = PairChange(table, pair);
    if (change == PairRow::kSeeLists)
        return false;
    const auto upper = static_cast<uint16_t>(LoadPair(pair) ^ change);
    std::memcpy(result->buffer + result->used, &upper, sizeof upper);
    result->used += sizeof upper;
    return true;
}

// Appends a segment of text in upper case.
void AppendSegment(Text *text, const SegmentWalk &walk, Result *result)
{
    const uint16_t kind = text->only != CS_SEG_NONE ? text->only : walk.kind;
    const UpShiftTable *table = text->tables.TableOf(kind);
    if (table == nullptr)
        table = text->tables.Keep(kind, prepared::FindOfKind(kind));
    if (table == nullptr) {
        const CSDescriptor cs = {kind, 0};
        Append(walk.at, walk.size, CaseTableOf(&cs), result);
        return;
    }
    const auto *const bytes = reinterpret_cast<const uint8_t *>(walk.at);
    if (walk.size == 2 && AppendPair(*table, bytes, result))
        return;
    if (table->map.isTotal && text->mapped == CS_SEG_END && IsInStep(*text, walk.at, *result))
        MapRest(text, walk.kind, table->map, *result);
    if (walk.kind == text->mapped && IsInStep(*text, walk.at, *result))
        result->used += walk.size;
    else
        result->buffer = UpShift(*table, bytes, bytes + walk.size, result->buffer, &result->used,
                                 &result->capacity);
}

void UpperCaseBySegments(Text *text, const CSDescriptor *cs, Result *result)
{
    SegmentWalk walk;
    WalkSegments(&walk, text->str, cs, static_cast<int>(text->length));
    while (NextSegment(&walk)) {
        if (walk.kind == text->mapped && IsInStep(*text, walk.at, *result))
            result->used += walk.size;
        else if (IsText(walk.kind))
            AppendSegment(text, walk, result);
        else
            AppendUnchanged(walk.at, walk.size, result);
    }
}

// The upper case of `length` bytes that are not UTF-8.
void UpperCase(const char *str, unsigned int length, const CSDescriptor *cs, Result *result)
{
    result->buffer = GrowUpperBuffer(uint64_t{length} + length / 4, &result->capacity);
    const SetFlags set = cs;
    const CaseTableRecord *const own =
        HasCase(set) ? TableOfCased(cs, ccs_GetToUpperTable(cs)) : nullptr;
    if (cs->escMode == 0) {
        Append(str, length, own, result);
        return;
    }
    Text text;
    text.str = str;
    text.length = length;
    text.only = own != nullptr && IsUniform(set) ? cs->csNum : uint16_t{CS_SEG_NONE};
    UpperCaseBySegments(&text, cs, result);
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
    const ThreadBuffer<unsigned char> &buffer = theBuffer;
    if (bytes > INT32_MAX || bytes + std::max<size_t>(bytes / 4, kRoom) > buffer.capacity)
        return nullptr;
    MapBytes(table.map, reinterpret_cast<const unsigned char *>(str), bytes, buffer.at);
    buffer.at[bytes] = '\0';
    return reinterpret_cast<char *>(buffer.at);
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
    return UpShift(lookup, in, end, buf, used, capacity);
}

char *str_ToUpper(const char *str, int len, int *outLen, const CSDescriptor *cs)
{
    frame::TraceEntry();
    char *const result = IsUtf8(cs) ? UpperCaseUtf8(str, LengthOf(str, len), outLen)
                                    : UpperCaseByTables(str, len, outLen, cs);
    frame::TraceExit();
    return result;
}
