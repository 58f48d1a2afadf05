// SPDX-License-Identifier: Apache-2.0
//
// The coded character set service: the contracts of platform/ccs.h over the ISO 2022 engine and
// its table of sets.
#include <platform/ccs.h>
#include <platform/er.h>
#include <platform/os.h>

#include "base/thread_memory.h"
#include "services/ccs/divide.h"
#include "services/ccs/measure.h"
#include "services/names.h"
#include "services/services.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <iterator>

using namespace libstr;

namespace
{

constexpr char kSource[] = "services/ccs";

// The walk of ccs_Get1stStr and ccs_GetNextStr, the end of its text, which is looked for once, and
// the escapes returned last.
thread_local ccs::Walk theWalk;
thread_local const char *theEnd;
thread_local char theModelEscapes[ccs::kMostEscapes + 1];
thread_local char theAsciiEscapes[ccs::kMostEscapes + 1];

// The segment list that this thread got last.  It grows to the longest, until the thread ends.
struct SegmentList : KeptByThread {
    CSSegment *at;
    size_t capacity;
};
thread_local SegmentList theList;

// The record numbers of the case tables, by row: the process's own table and the one in use.
uint16_t theOwnRecords[std::size(ccs::kSets)];
std::atomic<uint16_t *> theRecords = theOwnRecords;

// Where the text ends: at its NUL or after `length` bytes.
const char *EndOf(const char *text, int length)
{
    return text + (length < 0 ? std::strlen(text) : strnlen(text, static_cast<size_t>(length)));
}

const ccs::SetRow *SetOf(const CSDescriptor *cs) { return ccs::FindSet(cs->csNum); }

// A number that the records and counts of the contracts cannot hold is treated as a lack of memory.
void EscapeUnless(bool fits, int line = __builtin_LINE())
{
    if (!fits)
        er_TracedEscape(ER_CLASS_LIBRARY, OS_ESC_MEMORY, kSource, line);
}

uint32_t LengthOf(const ccs::Unit &segment)
{
    const auto length = static_cast<uint32_t>(segment.length);
    EscapeUnless(length == segment.length);
    return length;
}

void ReleaseList(KeptByThread *)
{
    os_free(theList.at);
    theList = {};
}

void Put(SegmentList *list, const CSSegment &segment, size_t index)
{
    constexpr size_t most = std::min<size_t>(INT_MAX, SIZE_MAX / 2 / sizeof segment);
    EscapeUnless(index < most);
    if (index == list->capacity) {
        EscapeUnless(KeepByThread(list, ReleaseList));
        const size_t capacity = index == 0 ? 32 : index * 2;
        list->at = static_cast<CSSegment *>(os_realloc(list->at, capacity * sizeof *list->at));
        list->capacity = capacity;
    }
    list->at[index] = segment;
}

// ---- Walks of the caller's -----------------------------------------------------------------

// What a CSWalk holds.
struct OwnWalk {
    ccs::Walk walk;
    const char *end; // of the text; null while it is not known
};
static_assert(sizeof(OwnWalk) <= sizeof(CSWalk::state));
static_assert(alignof(OwnWalk) <= alignof(CSWalk) &&
              offsetof(CSWalk, state) % alignof(OwnWalk) == 0);

OwnWalk *OwnOf(CSWalk *walk) { return static_cast<OwnWalk *>(static_cast<void *>(walk->state)); }

const OwnWalk *OwnOf(const CSWalk *walk)
{
    return static_cast<const OwnWalk *>(static_cast<const void *>(walk->state));
}

// The bytes that are left of the text.
size_t LeftOf(CSWalk *walk)
{
    OwnWalk *const own = OwnOf(walk);
    if (own->end == nullptr)
        own->end = walk->at + std::strlen(walk->at);
    return static_cast<size_t>(own->end - walk->at);
}

// As LeftOf, but may stop looking after `most` bytes.
size_t LeftWithin(CSWalk *walk, size_t most)
{
    OwnWalk *const own = OwnOf(walk);
    if (own->end != nullptr)
        return LeftOf(walk);
    const size_t left = strnlen(walk->at, most);
    if (left < most)
        own->end = walk->at + left;
    return left;
}

// Lists the segments of a text, on a separate walk so that the thread's walk stays as it is.
CSSegment *List(const CSDescriptor *cs, const char *text, int length, bool withIgnored, int *count)
{
    ccs::Walk walk;
    ccs::Begin(&walk, *cs);
    const char *const end = EndOf(text, length);
    SegmentList *const list = &theList;
    size_t used = 0;
    for (uint16_t kind = CS_SEG_NONE; kind != CS_SEG_END;) {
        const ccs::Unit segment = ccs::NextSegment(&walk, text, static_cast<size_t>(end - text));
        kind = segment.kind;
        if (withIgnored || kind != CS_SEG_IGNORE)
            Put(list, {text, kind, 0, LengthOf(segment)}, used++);
        text += segment.length;
    }
    *count = static_cast<int>(used);
    return list->at;
}

// Whether the two values are a table for the sets of this service.
bool IsTableOfRecords(int32_t companion, const void *csTable)
{
    return csTable != nullptr && companion == ccs_GetSetCount();
}

// Writes the escapes between two states and a NUL.
const char *Escapes(const ccs::State &from, const ccs::State &to, char *out, int *length)
{
    const size_t written = ccs::RestoringEscapes(from, to, out);
    out[written] = '\0';
    *length = static_cast<int>(written);
    return out;
}

} // namespace

extern "C" {

uint16_t ccs_Get1stStr(const CSDescriptor *cs, const char *text, int length,
                       unsigned int *segmentLength)
{
    ccs::Begin(&theWalk, *cs);
    theEnd = EndOf(text, length);
    return ccs_GetNextStr(cs, text, length, segmentLength);
}

uint16_t ccs_GetNextStr(const CSDescriptor *, const char *text, int length,
                        unsigned int *segmentLength)
{
    if (text > theEnd)
        theEnd = EndOf(text, length);
    const ccs::Unit segment = ccs::NextSegment(&theWalk, text, static_cast<size_t>(theEnd - text));
    *segmentLength = LengthOf(segment);
    return segment.kind;
}

CSSegment *ccs_GetAllStrs(const CSDescriptor *cs, const char *text, int length, int *count)
{
    return List(cs, text, length, true, count);
}

CSSegment *ccs_GetRealStrs(const CSDescriptor *cs, const char *text, int length, int *count)
{
    return List(cs, text, length, false, count);
}

int ccs_GetCtrlLen(const char *at, unsigned int avail, const CSDescriptor *cs)
{
    return static_cast<int>(ccs::ControlLength(SetOf(cs), cs->escMode != 0, at, avail));
}

int16_t ccs_GetNumBytes(const CSDescriptor *cs)
{
    const ccs::SetRow *set = SetOf(cs);
    return set == nullptr ? int16_t{1} : int16_t{set->bytes};
}

int ccs_GetT61BaseUnitLen(const char *at, unsigned int avail, const CSDescriptor *cs)
{
    return static_cast<int>(ccs::CharacterLength(SetOf(cs), at, avail));
}

int ccs_GetNextCharLen(const char *at, int avail, int *length, const CSDescriptor *cs)
{
    const ccs::AnyUnit unit =
        ccs::AnyUnitAt(SetOf(cs), cs->escMode != 0, at, avail < 0 ? 0 : static_cast<size_t>(avail));
    *length = static_cast<int>(unit.length);
    return unit.counts ? 1 : 0;
}

uint32_t ccs_GetCSFlags(const CSDescriptor *cs)
{
    const ccs::SetRow *set = SetOf(cs);
    return set == nullptr ? 0 : set->flags;
}

const char *ccs_GetCSName(const CSDescriptor *cs)
{
    const uint8_t row = ccs::FindRow(cs->csNum);
    return row == ccs::kNoRow ? "" : ccs::NameOf(row);
}

int ccs_GetCSDescriptor(const char *setName, CSDescriptor *out)
{
    *out = {0, 0};
    const uint8_t row = ccs::FindName(setName);
    if (row == ccs::kNoRow)
        return 0;
    *out = {ccs::kSets[row].number, ccs::kSets[row].escMode};
    return 1;
}

const char *ccs_GetDesignation(const CSDescriptor *cs, int)
{
    const ccs::SetRow *set = SetOf(cs);
    return set == nullptr ? nullptr : ccs::DesignationOf(*set);
}

uint16_t ccs_GetCP(int, uint32_t *out)
{
    *out = 0;
    return ccs::kIa5;
}

const char *ccs_GetModelEscapes(int *length)
{
    const ccs::State &start =
        theWalk.set == nullptr ? theWalk.state : ccs::BeginningOf(*theWalk.set);
    return Escapes(start, theWalk.state, theModelEscapes, length);
}

const char *ccs_GetConfAsciiEscs(const CSDescriptor *cs, int, int *length)
{
    const ccs::SetRow *set = SetOf(cs);
    const ccs::State &start = set == nullptr ? theWalk.state : ccs::BeginningOf(*set);
    return Escapes(theWalk.state, start, theAsciiEscapes, length);
}

// What this service reads texts with, under names that no host can take over.
#define OWN(function) __typeof__(function) function##_own __attribute__((alias(#function)))
static OWN(ccs_Get1stStr);
static OWN(ccs_GetNextStr);
static OWN(ccs_GetAllStrs);
static OWN(ccs_GetRealStrs);
static OWN(ccs_GetCtrlLen);
static OWN(ccs_GetNumBytes);
static OWN(ccs_GetT61BaseUnitLen);
static OWN(ccs_GetNextCharLen);
static OWN(ccs_GetCSFlags);
static OWN(ccs_GetModelEscapes);
static OWN(ccs_GetConfAsciiEscs);
#undef OWN

static const CSReaders kOwnReaders = {
    ccs_Get1stStr_own,  ccs_GetNextStr_own,      ccs_GetAllStrs_own,        ccs_GetRealStrs_own,
    ccs_GetCtrlLen_own, ccs_GetNumBytes_own,     ccs_GetT61BaseUnitLen_own, ccs_GetNextCharLen_own,
    ccs_GetCSFlags_own, ccs_GetModelEscapes_own, ccs_GetConfAsciiEscs_own};

// Faster than a call of memcmp.
static bool AreOwn(const CSReaders &readers)
{
    using Words = std::array<uintptr_t, sizeof(CSReaders) / sizeof(uintptr_t)>;
    const auto words = std::bit_cast<Words>(readers), own = std::bit_cast<Words>(kOwnReaders);
    uintptr_t differ = 0;
    for (size_t i = 0; i < words.size(); ++i)
        differ |= words[i] ^ own[i];
    return differ == 0;
}

int ccs_BeginWalk(CSWalk *walk, const CSDescriptor *cs, const char *text, int length,
                  const CSReaders *readers)
{
    if (!AreOwn(*readers))
        return 0;
    OwnWalk *const own = OwnOf(walk);
    ccs::Begin(&own->walk, *cs);
    own->end = length < 0 ? nullptr : EndOf(text, length);
    walk->at = text;
    return 1;
}

int ccs_NextSegments(CSWalk *walk, CSSegment *out, int max)
{
    ccs::Found found = {out, 0, max, true};
    ccs::Divide(&OwnOf(walk)->walk, walk->at, LeftOf(walk), &found);
    EscapeUnless(found.fits);
    if (found.count != 0)
        walk->at = out[found.count - 1].text + out[found.count - 1].length;
    return found.count;
}

void ccs_MeasureText(CSWalk *walk, size_t bytes, size_t columns, CSMeasure *out)
{
    libstr::plain::Passage passage = {walk->at, 0, bytes, columns, 0, 0, 0, 0};
    // A few bytes after a unit tell whether it is whole, except for a sequence.
    bool isCut = true;
    for (size_t beyond = 16; isCut; beyond *= 2) {
        passage.known = bytes < SIZE_MAX - beyond ? LeftWithin(walk, bytes + beyond) : LeftOf(walk);
        isCut = ccs::Measure(&OwnOf(walk)->walk, &passage) && OwnOf(walk)->end == nullptr;
    }
    walk->at += passage.bytes;
    *out = {passage.bytes, passage.columns, passage.shown, passage.lines};
}

int ccs_GetWalkEscapes(const CSWalk *walk, int closing, char *out)
{
    const ccs::Walk &own = OwnOf(walk)->walk;
    const ccs::State &start = ccs::GoalOf(own);
    return static_cast<int>(closing != 0 ? ccs::RestoringEscapes(own.state, start, out)
                                         : ccs::RestoringEscapes(start, own.state, out));
}

int ccs_CloseWalk(const CSWalk *walk, char *out)
{
    const ccs::Walk &own = OwnOf(walk)->walk;
    const size_t length = ccs::RestoringEscapes(own.state, ccs::GoalOf(own), out);
    return ccs::MayEnd(own, walk->at, length != 0) ? static_cast<int>(length) : -1;
}

int InitTabsDone = 0;

void ccs_DoInitTables(void) { InitTabsDone = 1; }

int ccs_GetCSNumber(const CSDescriptor *cs) { return cs->csNum; }

void *ccs_GetCSTable(int32_t *companion)
{
    *companion = ccs_GetSetCount();
    return theRecords;
}

void ccs_SetCSTable(int32_t companion, void *csTable)
{
    theRecords = theOwnRecords;
    if (IsTableOfRecords(companion, csTable))
        theRecords = static_cast<uint16_t *>(csTable);
    else if (csTable != nullptr)
        for (uint16_t &record : theOwnRecords)
            std::atomic_ref(record).store(0, std::memory_order_relaxed);
}

void ccs_PutToUpperByCSNum(int setNumber, uint16_t recordNumber, int32_t companion, void *csTable)
{
    if (setNumber < 0 || setNumber > UINT16_MAX)
        return;
    const uint8_t row = ccs::FindRow(static_cast<uint16_t>(setNumber));
    if (row == ccs::kNoRow)
        return;
    uint16_t *const records =
        IsTableOfRecords(companion, csTable) ? static_cast<uint16_t *>(csTable) : theOwnRecords;
    // Whoever reads the number reads what the caller stored before.
    std::atomic_ref(records[row]).store(recordNumber, std::memory_order_release);
}

uint16_t ccs_GetToUpperTable(const CSDescriptor *cs)
{
    const uint8_t row = ccs::FindRow(cs->csNum);
    return row == ccs::kNoRow ? uint16_t{0}
                              : std::atomic_ref(theRecords.load(std::memory_order_acquire)[row])
                                    .load(std::memory_order_acquire);
}

int ccs_GetSetCount(void) { return static_cast<int>(std::size(ccs::kSets)); }

int ccs_GetSetInfo(int index, ccs_SetInfo *out)
{
    if (index < 0 || index >= ccs_GetSetCount())
        return 0;
    const auto row = static_cast<size_t>(index);
    const ccs::SetRow &set = ccs::kSets[row];
    *out = {set.number,
            set.escMode,
            set.flags,
            set.bytes,
            ccs::NameOf(row),
            ccs::IconvNameOf(row),
            ccs::DesignationOf(set),
            ccs::AliasesOf(row)};
    return 1;
}

} // extern "C"
