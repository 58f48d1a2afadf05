// SPDX-License-Identifier: Apache-2.0
//
// Matching of segmented text: bytes are equal only where their sets are equivalent.
#include <str/match.h>

#include "base/wildcard.h"
#include "str/core/frame.h"

#include <platform/ccs.h>
#include <platform/os.h>

#include <algorithm>
#include <cstring>

using namespace libstr;

namespace
{

using wildcard::kUs;

constexpr char kSource[] = "str/str_USPatM";

// The string segment array: the service keeps one list only, and the pattern's comes next.
CSSegment *theRecords;
int theCapacity; // in records

constexpr int kSpare = 20; // records beyond those needed now

bool MakeRoom(int capacity)
{
    return frame::Protect(
        kSource, frame::Accept(ER_CLASS_LIBRARY),
        [capacity] {
            const size_t size = static_cast<size_t>(capacity) * sizeof *theRecords;
            theRecords = static_cast<CSSegment *>(theCapacity == 0 ? os_malloc(size)
                                                                   : os_realloc(theRecords, size));
            theCapacity = capacity;
        },
        [] {});
}

// ---- Positions -----------------------------------------------------------------------------

struct Position {
    const CSSegment *record;
    unsigned int offset; // of a byte in the record
};

bool IsEnd(const Position &at) { return at.record->kind == CS_SEG_END; }

bool IsUs(const Position &at)
{
    return !IsEnd(at) && at.offset < at.record->length && at.record->text[at.offset] == kUs;
}

// A position in the pattern where a piece is over.
bool EndsPiece(const Position &at) { return IsEnd(at) || IsUs(at); }

bool IsBefore(const Position &a, const Position &b)
{
    return a.record < b.record || (a.record == b.record && a.offset < b.offset);
}

// Moves on inside the record, and from its end to the next one that is not empty.
void Advance(Position *at, unsigned int count)
{
    at->offset += count;
    while (!IsEnd(*at) && at->offset == at->record->length)
        *at = {at->record + 1, 0};
}

void SkipUs(Position *at)
{
    if (IsUs(*at))
        Advance(at, 1);
}

void Store(const Position &at, const CSSegment **record, unsigned int *offset)
{
    *record = at.record;
    *offset = at.offset;
}

// ---- Equivalence ---------------------------------------------------------------------------

uint32_t FlagsOf(uint16_t kind)
{
    const CSDescriptor cs = {kind, 0};
    return ccs_GetCSFlags(&cs);
}

bool IsAscii(uint32_t flags) { return (flags & CS_FLAG_ASCII) != 0; }

bool IsUniformSuperset(uint32_t flags)
{
    constexpr uint32_t both = CS_FLAG_ASCII_SUPERSET | CS_FLAG_UNIFORM;
    return (flags & both) == both;
}

bool AreEquivalent(const Position &a, const Position &b)
{
    return str_EquivTypes(static_cast<int16_t>(a.record->kind),
                          static_cast<int16_t>(b.record->kind)) != 0;
}

// ---- One piece -----------------------------------------------------------------------------

struct Bytes {
    const char *at;
    size_t count;
};

// The bytes of the record from the position on.
Bytes RestOf(const Position &at)
{
    return {at.record->text + at.offset, at.record->length - at.offset};
}

// The bytes of the piece that stand in the pattern's record.
Bytes PartOf(const Position &pattern)
{
    const Bytes rest = RestOf(pattern);
    const void *us = std::memchr(rest.at, kUs, rest.count);
    return us == nullptr
               ? rest
               : Bytes{rest.at, static_cast<size_t>(static_cast<const char *>(us) - rest.at)};
}

enum class Mode { whole, prefix }; // must the string end with the piece

// Moves both positions behind the piece, or none when it does not stand there.
bool MatchPiece(Position *string, Position *pattern, Mode mode)
{
    Position s = *string, p = *pattern;
    bool stringOver = IsEnd(s), pieceOver = IsEnd(p);
    if (stringOver != pieceOver)
        return false;
    while (!stringOver && !pieceOver) {
        if (!AreEquivalent(s, p))
            return false;
        const Bytes text = RestOf(s), part = PartOf(p);
        const size_t count = std::min(text.count, part.count);
        if (std::memcmp(text.at, part.at, count) != 0)
            return false;
        Advance(&s, static_cast<unsigned int>(count));
        Advance(&p, static_cast<unsigned int>(count));
        stringOver = IsEnd(s);
        pieceOver = EndsPiece(p);
        if (stringOver != pieceOver && (stringOver || mode == Mode::whole))
            return false;
    }
    *string = s;
    *pattern = p;
    return true;
}

// ---- The search for a piece ----------------------------------------------------------------

// What goes by the sets is asked late, since most places fail by their bytes; but before a second
// place is compared, or a text that nearly has the piece everywhere would be compared everywhere.

// Takes the piece when it stands at `place`: moves both positions behind it.
bool TakePiece(Position place, Position *string, Position *pattern)
{
    if (!MatchPiece(&place, pattern, Mode::prefix))
        return false;
    *string = place;
    return true;
}

// The piece goes on in a segment of its own, with which the string's record cannot be compared: it
// can stand only where its part ends with the record.
bool LeavesRecord(const Position &string, Position pattern, Bytes part)
{
    Advance(&pattern, static_cast<unsigned int>(part.count));
    return !EndsPiece(pattern) && !AreEquivalent(string, pattern);
}

// Takes the piece at the first place in the record, from the position on, where all of the part
// stands.  When there is none, moves the string to where no such place is left.
bool FindInside(Position *string, Position *pattern, Bytes part)
{
    const uint32_t length = string->record->length;
    while (string->offset < length) {
        const Bytes rest = RestOf(*string);
        const char *found = wildcard::Find(rest.at, rest.count, part.at, part.count);
        if (found == nullptr)
            return false;
        string->offset += static_cast<unsigned int>(found - rest.at);
        if (TakePiece(*string, string, pattern))
            return true;
        ++string->offset;
        if (length > part.count && LeavesRecord(*string, *pattern, part))
            string->offset =
                std::max(string->offset, length - static_cast<unsigned int>(part.count));
    }
    return false;
}

// The same where the record ends with some first bytes of the part and the next one goes on.
bool FindAcross(Position *string, Position *pattern, Bytes part)
{
    const Bytes rest = RestOf(*string);
    Position next = *string;
    Advance(&next, static_cast<unsigned int>(rest.count));
    size_t left = std::min(rest.count, part.count - std::min<size_t>(part.count, 1));
    while (left > 0) {
        const char *const end = rest.at + rest.count;
        const void *first = std::memchr(end - left, *part.at, left);
        if (first == nullptr)
            return false;
        left = static_cast<size_t>(end - static_cast<const char *>(first));
        if (std::memcmp(first, part.at, left) == 0) {
            if (IsEnd(next) || !AreEquivalent(next, *pattern))
                return false;
            const auto offset = string->record->length - static_cast<unsigned int>(left);
            if (TakePiece({string->record, offset}, string, pattern))
                return true;
        }
        --left;
    }
    return false;
}

// Takes the piece at the leftmost place at or behind the string's position.
bool FindPiece(Position *string, Position *pattern)
{
    const Bytes part = PartOf(*pattern);
    for (Position s = *string; !IsEnd(s); s = {s.record + 1, 0})
        if (AreEquivalent(s, *pattern) &&
            (FindInside(&s, pattern, part) || FindAcross(&s, pattern, part))) {
            *string = s;
            return true;
        }
    return false;
}

// ---- The pattern ---------------------------------------------------------------------------

// The bytes of the records from the position on.
size_t CountRest(const Position &at)
{
    size_t count = 0;
    for (const CSSegment *record = at.record; record->kind != CS_SEG_END; ++record)
        count += record->length;
    return IsEnd(at) ? 0 : count - at.offset;
}

// Where the last `count` bytes of the string begin; its first byte when it has fewer.
Position FromEnd(const CSSegment *records, int recordCount, size_t count)
{
    int index = recordCount - 1;
    while (index > 0 && count > 0) {
        const uint32_t length = records[--index].length;
        if (length >= count)
            return {records + index, static_cast<unsigned int>(length - count)};
        count -= length;
    }
    return {records + index, 0};
}

// A string or pattern divided into segments.
struct List {
    const CSSegment *records;
    int count; // the one at the end included
};

// The head piece is matched already; each of the middle ones is taken where it stands first.
bool MatchMiddle(Position *string, Position *pattern)
{
    Position s = *string, p = *pattern;
    bool found = false;
    SkipUs(&p);
    while (!IsEnd(p) && std::strchr(RestOf(p).at, kUs) != nullptr) {
        found = FindPiece(&s, &p);
        if (!found)
            return false;
        SkipUs(&p);
    }
    *string = s;
    *pattern = p;
    return found;
}

// The tail, behind the US at `pattern` if there is one, against the end of the string; it must not
// begin before `free`.
bool MatchTail(const List &string, const Position &free, Position *pattern)
{
    Position p = *pattern;
    SkipUs(&p);
    Position s = FromEnd(string.records, string.count, CountRest(p));
    if (IsBefore(s, free) || !MatchPiece(&s, &p, Mode::whole))
        return false;
    *pattern = p;
    return true;
}

// How a pattern is made up.
struct Shape {
    size_t usCount;
    bool startsUs, endsUs;
};

Shape ShapeOf(const List &pattern)
{
    Shape shape = {0, IsUs({pattern.records, 0}), false};
    for (const CSSegment *record = pattern.records; record->kind != CS_SEG_END; ++record)
        if (record->length != 0) {
            const char *const end = record->text + record->length;
            shape.usCount += static_cast<size_t>(std::count(record->text, end, kUs));
            shape.endsUs = end[-1] == kUs;
        }
    return shape;
}

// No US, or one at an end: the string is compared at one place.
bool IsSimple(const Shape &shape)
{
    return shape.usCount == 0 || (shape.usCount == 1 && (shape.startsUs || shape.endsUs));
}

bool MatchShape(const List &string, const Shape &shape, Position *s, Position *p)
{
    if (shape.usCount == 0)
        return MatchPiece(s, p, Mode::whole);
    return (shape.startsUs || MatchPiece(s, p, Mode::prefix)) &&
           (shape.usCount == 1 || MatchMiddle(s, p)) && (shape.endsUs || MatchTail(string, *s, p));
}

// ---- Lists ---------------------------------------------------------------------------------

List Segments(const CSDescriptor *cs, const char *text)
{
    List list = {nullptr, 0};
    list.records = ccs_GetRealStrs(cs, text, -1, &list.count);
    return list;
}

bool IsUsable(const List &list) { return list.records != nullptr && list.count >= 2; }

// The string's segments, in the array; not usable when there are none or no memory.
List KeptSegments(const CSDescriptor *cs, const char *string)
{
    const List list = Segments(cs, string);
    if (!IsUsable(list) || (list.count > theCapacity && !MakeRoom(list.count + kSpare)))
        return {nullptr, 0};
    std::memcpy(theRecords, list.records, static_cast<size_t>(list.count) * sizeof *theRecords);
    return {theRecords, list.count};
}

// One segment that is all of the text.
bool IsOneSegment(const List &list, const char *text)
{
    return list.count == 2 && list.records->length == std::strlen(text);
}

} // namespace

int str_USPatternMatch(const char *string, const char *pattern, const CSDescriptor *cs)
{
    frame::TraceEntry("str_USPatternMatch");
    if (theCapacity == 0 && !MakeRoom(kSpare))
        return 0;
    if (std::strcmp(string, pattern) == 0)
        return 1;
    if (*pattern == '\0' || *string == '\0')
        return 0;
    const List text = KeptSegments(cs, string);
    if (!IsUsable(text))
        return 0;
    const List wanted = Segments(cs, pattern);
    if (!IsUsable(wanted))
        return 0;
    Position s = {text.records, 0}, p = {wanted.records, 0};
    if (IsOneSegment(text, string) && IsOneSegment(wanted, pattern) && AreEquivalent(s, p))
        return os_USPatternMatch(string, pattern);
    if (IsEnd(s) || IsEnd(p))
        return IsEnd(s) ? 0 : 1;

    const Shape shape = ShapeOf(wanted);
    const bool matches = MatchShape(text, shape, &s, &p);
    if (!IsSimple(shape))
        frame::TraceExit("str_USPatternMatch"); // the only exit with a trace
    return matches ? 1 : 0;
}

int str_Match(const CSSegment **stringRecord, const CSSegment **patternRecord,
              unsigned int *stringOffset, unsigned int *patternOffset, int mode)
{
    Position s = {*stringRecord, *stringOffset}, p = {*patternRecord, *patternOffset};
    const bool matches = MatchPiece(&s, &p, mode == 0 ? Mode::whole : Mode::prefix);
    Store(s, stringRecord, stringOffset);
    Store(p, patternRecord, patternOffset);
    return matches ? 1 : 0;
}

int str_RepeatMatch(const CSSegment **stringRecord, const CSSegment **patternRecord,
                    unsigned int *stringOffset, unsigned int *patternOffset)
{
    Position s = {*stringRecord, *stringOffset}, p = {*patternRecord, *patternOffset};
    const bool matches = MatchMiddle(&s, &p);
    Store(s, stringRecord, stringOffset);
    Store(p, patternRecord, patternOffset);
    return matches ? 1 : 0;
}

int str_EndMatch(const CSSegment *stringRecords, const CSSegment *patternRecord,
                 unsigned int *patternOffset, int stringCount)
{
    Position p = {patternRecord, *patternOffset};
    const bool matches = MatchTail({stringRecords, stringCount}, {stringRecords, 0}, &p);
    *patternOffset = p.offset;
    return matches ? 1 : 0;
}

void str_SkipUS(const CSSegment **record, unsigned int *offset)
{
    Position at = {*record, *offset};
    SkipUs(&at);
    Store(at, record, offset);
}

int str_EquivTypes(int kind1, int kind2)
{
    const auto a = static_cast<uint16_t>(kind1), b = static_cast<uint16_t>(kind2);
    if (a == CS_SEG_RAW || b == CS_SEG_RAW)
        return 0;
    if (a == b)
        return 1;
    const uint32_t flagsOfA = FlagsOf(a), flagsOfB = FlagsOf(b);
    return (IsAscii(flagsOfA) && (IsAscii(flagsOfB) || IsUniformSuperset(flagsOfB))) ||
                   (IsAscii(flagsOfB) && IsUniformSuperset(flagsOfA))
               ? 1
               : 0;
}
