// SPDX-License-Identifier: Apache-2.0
//
// Matching of segmented text: bytes are equal only where their sets are equivalent.
#include <str/match.h>

#include "base/two_way.h"
#include "base/wildcard.h"
#include "str/core/buffer.h"
#include "str/core/frame.h"
#include "str/core/segments.h"
#include "str/core/sets.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>

using namespace libstr;

namespace
{

using wildcard::kUs;

constexpr char kSource[] = "str/str_USPatM";

// The segments of texts that have many.
using Records = ThreadBuffer<CSSegment>;
thread_local Records thePatternRecords;
thread_local Records theStringRecords;

constexpr size_t kSpare = 20; // records more than needed

bool MakeRoom(Records *buffer, size_t capacity)
{
    if (capacity <= buffer->capacity)
        return true;
    return frame::Protect(
        kSource, frame::Accept(ER_CLASS_LIBRARY), [=] { Grow(buffer, capacity + kSpare); }, [] {});
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

// A piece of the pattern ends at this position.
bool EndsPiece(const Position &at) { return IsEnd(at) || IsUs(at); }

bool IsBefore(const Position &a, const Position &b)
{
    return a.record < b.record || (a.record == b.record && a.offset < b.offset);
}

// Moves on inside the record, and from its end to the next record that is not empty.
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

bool IsUniformSuperset(SetFlags set) { return HoldsAscii(set) && IsUniform(set); }

bool AreEquivalent(uint16_t a, uint16_t b)
{
    return str_EquivTypes(static_cast<int16_t>(a), static_cast<int16_t>(b)) != 0;
}

bool AreEquivalent(const Position &a, const Position &b)
{
    return AreEquivalent(a.record->kind, b.record->kind);
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

// How many of the next `most` bytes in the pattern's record belong to the piece.
size_t PieceBytes(const Bytes &pattern, size_t most)
{
    const size_t count = std::min(pattern.count, most);
    const void *us = std::memchr(pattern.at, kUs, count);
    return us == nullptr ? count : static_cast<size_t>(static_cast<const char *>(us) - pattern.at);
}

enum class Mode { whole, prefix }; // `whole`: the string must end where the piece ends

// Moves both positions to the end of the piece.  When the string does not have it there, returns
// false and moves neither.
bool MatchPiece(Position *string, Position *pattern, Mode mode)
{
    Position s = *string, p = *pattern;
    bool stringOver = IsEnd(s), pieceOver = IsEnd(p);
    if (stringOver != pieceOver)
        return false;
    while (!stringOver && !pieceOver) {
        if (!AreEquivalent(s, p))
            return false;
        const Bytes text = RestOf(s), wanted = RestOf(p);
        const size_t count = PieceBytes(wanted, text.count);
        if (std::memcmp(text.at, wanted.at, count) != 0)
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

// The kind of the whole piece: CS_SEG_END when it has several, CS_SEG_RAW when it contains raw
// bytes, which match nothing.
uint16_t SoleKind(Position pattern)
{
    uint16_t kind = pattern.record->kind;
    while (!EndsPiece(pattern)) {
        if (pattern.record->kind == CS_SEG_RAW)
            return CS_SEG_RAW;
        if (pattern.record->kind != kind)
            kind = CS_SEG_END;
        const Bytes rest = RestOf(pattern);
        Advance(&pattern, static_cast<unsigned int>(PieceBytes(rest, rest.count)));
    }
    return kind;
}

// A number for the kind, the same for equivalent kinds.  Equivalence is not transitive: two sets
// may both be equivalent to ASCII, but not to each other.  When the piece is of one kind, only the
// kinds equivalent to it share its number.  Otherwise two such sets have the same number, so a
// place found by the numbers must be checked by the kinds.
uint32_t FamilyOf(uint16_t kind, uint16_t soleKind)
{
    constexpr uint32_t ascii = CS_SEG_END;
    if (soleKind != CS_SEG_END)
        return AreEquivalent(kind, soleKind) ? ascii : kind;
    const SetFlags set = FlagsOf(kind);
    return IsAscii(set) || IsUniformSuperset(set) ? ascii : kind;
}

// Reads a list as symbols for twoway::Find: each byte with the family of its kind.
class Reader
{
  public:
    Reader(const Position &start, uint16_t pieceKind) : at(start), soleKind(pieceKind) { Enter(); }

    const Position &At() const { return at; }
    bool IsEnd() const { return ::IsEnd(at); }
    uint32_t Symbol() const
    {
        return family | static_cast<unsigned char>(at.record->text[at.offset]);
    }

    void Skip(size_t count)
    {
        while (!IsEnd() && count >= RestOf(at).count) {
            count -= RestOf(at).count;
            NextRecord();
        }
        at.offset += static_cast<unsigned int>(count);
    }

    size_t Seek(uint32_t symbol)
    {
        size_t passed = 0;
        for (; !IsEnd(); NextRecord()) {
            const Bytes rest = RestOf(at);
            if (family == (symbol & ~0xFFU))
                if (const void *found =
                        std::memchr(rest.at, static_cast<int>(symbol & 0xFF), rest.count)) {
                    const auto count =
                        static_cast<size_t>(static_cast<const char *>(found) - rest.at);
                    at.offset += static_cast<unsigned int>(count);
                    return passed + count;
                }
            passed += rest.count;
        }
        return passed;
    }

    void NextRecord()
    {
        at = {at.record + 1, 0};
        Enter();
    }

  private:
    void Enter()
    {
        Advance(&at, 0);
        if (!IsEnd())
            family = FamilyOf(at.record->kind, soleKind) << 8;
    }

    Position at;
    uint16_t soleKind;
    uint32_t family = 0; // above the bits of a byte
};

struct PieceReader : Reader {
    using Reader::Reader;
    bool IsEnd() const { return EndsPiece(At()); }
};

// When the piece is at `place`, moves both positions to its end.
bool TakePiece(const Reader &place, Position *string, Position *pattern)
{
    Position s = place.At();
    if (!MatchPiece(&s, pattern, Mode::prefix))
        return false;
    *string = s;
    return true;
}

// Takes the piece at its leftmost place from the string's position on.  An empty piece needs a byte
// of an equivalent set there.  Most searches end at one of the first places where the piece may
// begin, so these are tried one by one, before the piece is divided for the search.
bool FindPiece(Position *string, Position *pattern)
{
    constexpr int firstPlaces = 16;
    Position start = *pattern;
    Advance(&start, 0);
    const PieceReader piece(start, start.record->kind);
    Reader place(*string, start.record->kind);
    const auto take = [=](const Reader &at) { return TakePiece(at, string, pattern); };
    if (piece.IsEnd()) {
        while (!place.IsEnd() && !take(place))
            place.NextRecord();
        return !place.IsEnd();
    }
    for (int tried = 0; tried < firstPlaces; ++tried, place.Skip(1)) {
        place.Seek(piece.Symbol());
        if (place.IsEnd() || take(place))
            return !place.IsEnd();
    }
    const uint16_t soleKind = SoleKind(start);
    return soleKind != CS_SEG_RAW &&
           twoway::Find(Reader(place.At(), soleKind), PieceReader(start, soleKind), take);
}

// ---- The pattern ---------------------------------------------------------------------------

// The bytes from the position to the end of the list.
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
    int count; // with the record at the end
};

// Matches the middle pieces, each at its leftmost place.  The head has been matched.
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

// Compares the tail, after the US at `pattern` if there is one, with the end of the string.  The
// tail must not begin before `free`.
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

// The number and places of the US in a pattern.
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

// No US, or one at an end: the string is compared at one place only.
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

bool IsUsable(const List &list) { return list.records != nullptr && list.count >= 2; }

// Room for segments, with the records that the walk finds while they are few.
struct Room {
    Records *buffer;
    CSSegment few[32];
};

// The segments of the text that the walk has begun, without those that have no characters; not
// usable without memory.
List OwnSegments(CSWalk *walk, Room *room)
{
    constexpr size_t least = 8; // fewer are slow to find
    CSSegment *at = room->few;
    size_t count = 0, capacity = std::size(room->few);
    for (;;) {
        const int found =
            ccs_NextSegments(walk, at + count, static_cast<int>(capacity - count - 1));
        if (found == 0)
            break;
        count = static_cast<size_t>(
            std::remove_if(at + count, at + count + found,
                           [](const CSSegment &segment) { return IsIgnored(segment.kind); }) -
            at);
        if (capacity - count > least)
            continue;
        if (capacity > INT_MAX / 2 || !MakeRoom(room->buffer, 2 * capacity))
            return {nullptr, 0};
        if (at == room->few)
            std::memcpy(room->buffer->at, at, count * sizeof *at);
        at = room->buffer->at;
        capacity = room->buffer->capacity;
    }
    at[count] = {walk->at, CS_SEG_END, 0, 0};
    return {at, static_cast<int>(count) + 1};
}

// The same, copied from the service's list.
List ServiceSegments(const CSDescriptor *cs, const char *text, Records *buffer)
{
    int count = 0;
    const CSSegment *const records = ccs_GetRealStrs(cs, text, -1, &count);
    if (!IsUsable({records, count}) || !MakeRoom(buffer, static_cast<size_t>(count)))
        return {nullptr, 0};
    std::memcpy(buffer->at, records, static_cast<size_t>(count) * sizeof *records);
    return {buffer->at, count};
}

List Segments(const CSDescriptor *cs, const char *text, Room *room)
{
    CSWalk walk;
    return BeginOwnWalk(&walk, text, cs) ? OwnSegments(&walk, room)
                                         : ServiceSegments(cs, text, room->buffer);
}

// Whether matching by bytes gives the same answer as matching by segments.  In a single-byte set
// that holds ASCII, only bytes of 0x80 and above may be raw.  So the pattern is one segment, and
// raw bytes of the string match only a US.  But what is traced depends on the segments.
bool MatchesByBytes(const char *pattern, const CSDescriptor *cs)
{
    const SetFlags set = cs;
    return cs->escMode == 0 && IsPlainByteSet(set) && HoldsAscii(set) && !frame::IsTraced() &&
           wildcard::IsPlain(pattern);
}

// The whole text is one segment.
bool IsOneSegment(const List &list, const char *text)
{
    return list.count == 2 && list.records->length == std::strlen(text);
}

} // namespace

int str_USPatternMatch(const char *string, const char *pattern, const CSDescriptor *cs)
{
    frame::TraceEntry();
    if (MatchesByBytes(pattern, cs))
        return *string == '\0' ? *pattern == '\0' : os_USPatternMatch(string, pattern);
    if (std::strcmp(string, pattern) == 0)
        return 1;
    if (*pattern == '\0' || *string == '\0')
        return 0;
    Room stringRoom, patternRoom;
    stringRoom.buffer = &theStringRecords;
    patternRoom.buffer = &thePatternRecords;
    const List text = Segments(cs, string, &stringRoom);
    if (!IsUsable(text))
        return 0;
    const List wanted = Segments(cs, pattern, &patternRoom);
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
        frame::TraceExit(); // every other return is without an exit trace
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
    const SetFlags setA = FlagsOf(a), setB = FlagsOf(b);
    const bool equivalent = (IsAscii(setA) && (IsAscii(setB) || IsUniformSuperset(setB))) ||
                            (IsAscii(setB) && IsUniformSuperset(setA));
    return equivalent ? 1 : 0;
}
