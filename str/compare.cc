// SPDX-License-Identifier: Apache-2.0
//
// The equality engines: do two texts, each in a set of its own, hold the same characters?
#include "str/core/comparison.h"
#include "str/core/fold.h"
#include "str/core/in_step.h"

using namespace libstr;

namespace
{

// How far a comparison goes: to the end, through a number of bytes of each string, or through a
// number of characters.
struct Extent {
    enum { toEnd, bytes, characters } unit;
    unsigned int bytes1;
    unsigned int bytes2;
    unsigned int chars;
};

// A limit of 2^31 and more means no limit.
bool IsLimit(unsigned int limit) { return limit <= INT32_MAX; }

size_t ByteLimit(unsigned int limit) { return IsLimit(limit) ? limit : kNoByteLimit; }

bool HasEnded(const Side &side) { return side.kind == CS_SEG_END || side.offset >= side.limit; }

// All bytes that count have been compared.
bool IsComplete(const Side &side)
{
    return side.limit == kNoByteLimit ? side.kind == CS_SEG_END : side.offset >= side.limit;
}

// Both strings are in the same set and switch to no other.
bool AreInOneSet(const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    return cs1->csNum == cs2->csNum && (cs1->escMode | cs2->escMode) == 0;
}

// That set is a single-byte set, so each string is one segment.
bool AreOnePlainSet(const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    return AreInOneSet(cs1, cs2) && IsPlainByteSet(cs1);
}

RunResult CompareCharRun(const char *p1, const char *p2, size_t bytes, int charLimit,
                         const CSDescriptor *cs)
{
    size_t done = 0;
    int left = charLimit;
    while (done < bytes && left > 0) {
        int length = 0;
        const int avail = static_cast<int>(std::min<size_t>(bytes - done, INT32_MAX));
        const bool counts = ccs_GetNextCharLen(p1 + done, avail, &length, cs) != 0;
        const auto unit = static_cast<size_t>(std::clamp(length, 1, avail));
        if (std::memcmp(p1 + done, p2 + done, unit) != 0)
            return {1, 0, 0, 0};
        done += unit;
        left -= counts ? 1 : 0;
    }
    return {0, done, done, charLimit - left};
}

// Compares two runs up to the end of the shorter.
RunResult CompareRun(const Run &run1, const Run &run2, const CaseTableRecord *table,
                     uint16_t common, bool byChars, int charLimit)
{
    if (table != nullptr)
        return CompareUpShiftedRun(run1, run2, charLimit, table);
    const size_t bytes = std::min(run1.size, run2.size);
    if (byChars) {
        const CSDescriptor cs = {common, 0};
        return CompareCharRun(run1.at, run2.at, bytes, charLimit < 0 ? INT32_MAX : charLimit, &cs);
    }
    return {std::strncmp(run1.at, run2.at, bytes) != 0 ? 1 : 0, bytes, bytes, 0};
}

// As Compare to the end, for two strings of one plain set, which is the most frequent case.
int ComparePlain(const char *s1, const char *s2) { return std::strcmp(s1, s2) != 0 ? 1 : 0; }

// The same without regard to case, by any table.
[[gnu::noinline]] int CompareUpShifted(const char *s1, const char *s2, const CSDescriptor *cs,
                                       uint16_t number)
{
    const CaseTableRecord *const record = TableOfCased(cs, number);
    if (record == nullptr)
        return ComparePlain(s1, s2);
    const Run run1 = {s1, std::strlen(s1)}, run2 = {s2, std::strlen(s2)};
    const RunResult result = CompareUpShiftedRun(run1, run2, kNoLimit, record);
    const bool whole = result.bytes1 == run1.size && result.bytes2 == run2.size;
    return result.order == 0 && whole ? 0 : 1;
}

// The same by a table that changes single bytes only, so equal texts have as many.
int CompareFolded(const char *s1, const char *s2, const ByteMap &map)
{
    const size_t length = std::strlen(s1);
    if (length != std::strlen(s2))
        return 1;
    const auto *const bytes1 = reinterpret_cast<const uint8_t *>(s1);
    const auto *const bytes2 = reinterpret_cast<const uint8_t *>(s2);
    return MappedAlike(map, bytes1, bytes2, length) != length ? 1 : 0;
}

int ComparePlainCaseless(const char *s1, const char *s2, const CSDescriptor *cs)
{
    const uint16_t number = ccs_GetToUpperTable(cs);
    const UpShiftTable *const table = number == 0 ? nullptr : prepared::FindAt(number - 1U);
    return table != nullptr && table->map.isTotal ? CompareFolded(s1, s2, table->map)
                                                  : CompareUpShifted(s1, s2, cs, number);
}

// 0 when the texts are equal through the extent, else 1.
int Compare(const char *s1, const char *s2, bool caseless, const CSDescriptor *cs1,
            const CSDescriptor *cs2, const Extent &extent)
{
    const bool plain = AreOnePlainSet(cs1, cs2);
    const size_t limit1 = ByteLimit(extent.bytes1), limit2 = ByteLimit(extent.bytes2);
    Side side1, side2;
    if (plain) {
        BeginOneSegment(&side1, s1, cs1, limit1);
        BeginOneSegment(&side2, s2, cs2, limit2);
    } else {
        BeginSides(&side1, s1, cs1, limit1, &side2, s2, cs2, limit2);
    }
    const bool byChars = extent.unit == Extent::characters;
    const bool counted = byChars && IsLimit(extent.chars);
    unsigned int chars = 0;
    CaseTables tables = {};
    while (!HasEnded(side1) && !HasEnded(side2) && !(counted && chars >= extent.chars)) {
        uint16_t common = CS_SEG_NONE;
        if (!EquivalentSegmentSets(side1.kind, side2.kind, &common))
            return 1;
        const int charLimit = counted ? static_cast<int>(extent.chars - chars) : kNoLimit;
        const RunResult run =
            CompareRun(side1.run, side2.run, caseless ? TableOfKind(&tables, common) : nullptr,
                       common, byChars, charLimit);
        if (run.order != 0)
            return 1;
        chars += static_cast<unsigned int>(run.chars);
        PassRun(&side1, &side2, run);
    }
    const bool complete = counted ? chars >= extent.chars : IsComplete(side1) && IsComplete(side2);
    return complete ? 0 : 1;
}

bool IsEmpty(const char *str) { return *str == '\0'; }

int CompareUtf8(const char *s1, const char *s2, bool caseless, const CSDescriptor *cs1,
                const CSDescriptor *cs2)
{
    if (cs1->csNum != cs2->csNum)
        return 1;
    const bool equal = caseless ? AreAlikeFolded(s1, s2) : std::strcmp(s1, s2) == 0;
    return equal ? 0 : 1;
}

// As str_DoCompareToEnd, for texts of all sorts.
[[gnu::noinline]] int CompareToEnd(const char *s1, const char *s2, bool caseless,
                                   const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    if (IsUtf8(cs1) || IsUtf8(cs2))
        return CompareUtf8(s1, s2, caseless, cs1, cs2);
    if (cs1->csNum == cs2->csNum && cs1->escMode == cs2->escMode && cs1->escMode != 0)
        if (const InStep result = CompareInStep(s1, s2, caseless, cs1); result != InStep::unknown)
            return result == InStep::equal ? 0 : 1;
    return Compare(s1, s2, caseless, cs1, cs2, {Extent::toEnd, UINT32_MAX, UINT32_MAX, 0});
}

} // namespace

int str_DoCompareToEnd(const char *s1, const char *s2, int caseless, const CSDescriptor *cs1,
                       const CSDescriptor *cs2)
{
    if (IsEmpty(s1) || IsEmpty(s2))
        return IsEmpty(s1) && IsEmpty(s2) ? 0 : 1;
    if (!AreInOneSet(cs1, cs2))
        return CompareToEnd(s1, s2, caseless != 0, cs1, cs2);
    const SetFlags set = cs1;
    if (!IsPlainByteSet(set))
        return CompareToEnd(s1, s2, caseless != 0, cs1, cs2);
    return caseless != 0 && HasCase(set) ? ComparePlainCaseless(s1, s2, cs1) : ComparePlain(s1, s2);
}

int str_DoCompareByByteLen(const char *s1, const char *s2, unsigned int bytes1, unsigned int bytes2,
                           int caseless, const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    if ((IsEmpty(s1) && IsEmpty(s2)) || (bytes1 == 0 && bytes2 == 0))
        return 0;
    if (IsEmpty(s1) || IsEmpty(s2) || bytes1 == 0 || bytes2 == 0)
        return 1;
    return Compare(s1, s2, caseless != 0, cs1, cs2, {Extent::bytes, bytes1, bytes2, 0});
}

int str_DoCompareByCharLen(const char *s1, const char *s2, unsigned int chars, int caseless,
                           const CSDescriptor *cs1, const CSDescriptor *cs2)
{
    if ((IsEmpty(s1) && IsEmpty(s2)) || chars == 0)
        return 0;
    if (IsEmpty(s1) || IsEmpty(s2))
        return 1;
    return Compare(s1, s2, caseless != 0, cs1, cs2,
                   {Extent::characters, UINT32_MAX, UINT32_MAX, chars});
}
