// SPDX-License-Identifier: Apache-2.0
#include "str/core/in_step.h"

#include "base/blocks.h"
#include "str/core/comparison.h"

#include <bit>

namespace libstr
{

namespace
{

constexpr char kEsc = '\x1B';

// Two texts of so many bytes.
struct Pair {
    const char *text1;
    const char *text2;
    size_t size;
};

// The place of the first difference from `at` on; the end of the texts without one.
size_t FindUnequal(const Pair &pair, size_t at)
{
    constexpr size_t kWord = sizeof(uint64_t);
    for (; pair.size - at >= kWord; at += kWord) {
        const uint64_t differ =
            blocks::LoadWord(pair.text1 + at, kWord) ^ blocks::LoadWord(pair.text2 + at, kWord);
        if (differ != 0)
            return at + static_cast<size_t>(std::countr_zero(differ)) / 8;
    }
    while (at < pair.size && pair.text1[at] == pair.text2[at])
        ++at;
    return at;
}

// Whether a difference comes right after an ESC, where it may divide the texts differently.
bool DifferAfterEsc(const Pair &pair)
{
    const void *const first = std::memchr(pair.text1, kEsc, pair.size);
    if (first == nullptr)
        return false;
    auto at = static_cast<size_t>(static_cast<const char *>(first) - pair.text1);
    const size_t last = pair.size - 1; // nothing comes after it
    const auto load = [](const char *text) { return blocks::Load(text, blocks::kSize); };
    if (last >= blocks::kSize)
        for (;; at += blocks::kSize) { // the last block may overlap the one before
            at = std::min(at, last - blocks::kSize);
            const blocks::Block differ =
                blocks::Differ(load(pair.text1 + at + 1), load(pair.text2 + at + 1));
            const blocks::Block isEsc = blocks::Equal(load(pair.text1 + at), kEsc);
            if ((blocks::Mask(differ) & blocks::Mask(isEsc)) != 0)
                return true;
            if (at + blocks::kSize == last)
                return false;
        }
    while (at < last && (pair.text1[at] != kEsc || pair.text1[at + 1] == pair.text2[at + 1]))
        ++at;
    return at < last;
}

// What is known of the segments' kinds.
struct Kinds {
    prepared::Kinds tables;
    // A kind whose table makes all letters alike, whatever is around them.
    uint16_t folding = CS_SEG_END;
};

// Whether all that the segments hold is pairs that are alike without a look at the lists.
bool ArePairsAlike(const UpShiftTable *table, const Run &run1, const Run &run2)
{
    if (table == nullptr || table->pairs == nullptr || run1.size % 2 != 0)
        return false;
    size_t at = 0;
    while (at < run1.size && IsPairAlike(*table, run1.Bytes() + at, run2.Bytes() + at))
        at += 2;
    return at == run1.size;
}

InStep CompareByRecord(const Run &run1, const Run &run2, uint16_t kind)
{
    const CSDescriptor cs = {kind, 0};
    const CaseTableRecord *const record = CaseTableOf(&cs);
    if (record == nullptr)
        return InStep::different;
    const RunResult result = CompareUpShiftedRun(run1, run2, kNoLimit, record);
    if (result.order != 0)
        return InStep::different;
    const bool whole = result.bytes1 == run1.size && result.bytes2 == run2.size;
    return whole ? InStep::equal : InStep::unknown;
}

// Compares a segment of text in which letters differ.
InStep CompareSegment(const Run &run1, const Run &run2, uint16_t kind, Kinds *kinds)
{
    const UpShiftTable *table = kinds->tables.TableOf(kind);
    if (table == nullptr)
        table = kinds->tables.Keep(kind, prepared::FindOfKind(kind));
    if (table != nullptr && table->map.foldsLetters) {
        kinds->folding = kind;
        return InStep::equal;
    }
    return ArePairsAlike(table, run1, run2) ? InStep::equal : CompareByRecord(run1, run2, kind);
}

// Compares texts that differ in the case of letters only, and not right after ESC.
InStep CompareSegments(const Pair &pair, const CSDescriptor *cs)
{
    SegmentWalk walk;
    WalkSegments(&walk, pair.text1, cs);
    if (!walk.own)
        return InStep::unknown;
    Kinds kinds;
    // Before `unequal`, all is the same or has been compared.  A pair is compared at once: most
    // texts of pairs and letters have a difference near each.
    size_t end = 0, unequal = 0;
    while (unequal < pair.size && NextSegment(&walk)) {
        const size_t begin = end;
        end += walk.size;
        if (walk.kind == kinds.folding || end <= unequal)
            continue;
        const Run run1 = {walk.at, walk.size}, run2 = {pair.text2 + begin, walk.size};
        if (const UpShiftTable *const table = kinds.tables.TableOf(walk.kind);
            walk.size == 2 && table != nullptr && table->pairs != nullptr &&
            IsPairAlike(*table, run1.Bytes(), run2.Bytes()))
            continue;
        if (unequal <= begin)
            unequal = FindUnequal(pair, begin);
        if (end <= unequal)
            continue;
        if (!IsText(walk.kind))
            return InStep::unknown;
        const InStep result = CompareSegment(run1, run2, walk.kind, &kinds);
        if (result != InStep::equal)
            return result;
        unequal = end;
    }
    return InStep::equal;
}

} // namespace

InStep CompareInStep(const char *s1, const char *s2, bool caseless, const CSDescriptor *cs)
{
    const Pair pair = {s1, s2, std::strlen(s1)};
    if (std::strlen(s2) != pair.size)
        return InStep::unknown;
    if (std::memcmp(s1, s2, pair.size) == 0)
        return InStep::equal;
    if (!caseless || LettersAlike(s1, s2, pair.size) != pair.size || DifferAfterEsc(pair))
        return InStep::unknown;
    return CompareSegments(pair, cs);
}

} // namespace libstr
