// SPDX-License-Identifier: Apache-2.0
#include "str/core/in_step.h"

#include "base/blocks.h"
#include "str/core/comparison.h"

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

// The place of the first difference from `at` on; the end of the texts without one.  Letters that
// differ only in case are alike if `fold` says so.
template <bool fold>
size_t FindDifference(const Pair &pair, size_t at)
{
    for (; at < pair.size; at += blocks::kSize) {
        blocks::Block block1 = blocks::Load(pair.text1 + at, pair.size - at);
        blocks::Block block2 = blocks::Load(pair.text2 + at, pair.size - at);
        if constexpr (fold) {
            block1 = blocks::Lower(block1);
            block2 = blocks::Lower(block2);
        }
        if (const uint32_t differ = blocks::Mask(blocks::Differ(block1, block2)); differ != 0)
            return at + blocks::Free(differ, 0);
    }
    return pair.size;
}

constexpr auto *FindUnequal = FindDifference<false>;
constexpr auto *FindUnlike = FindDifference<true>;

// What is known of the segments' kinds.
struct Kinds {
    CaseTables tables;
    uint16_t folding; // a kind whose table makes all letters alike, whatever is around them
};

// Compares a segment of text in which letters differ.
InStep CompareSegment(const Run &run1, const Run &run2, uint16_t kind, Kinds *kinds)
{
    if (kind == kinds->folding)
        return InStep::equal;
    const CaseTableRecord *const record = TableOfKind(&kinds->tables, kind);
    if (record == nullptr)
        return InStep::different;
    if (const UpShiftTable *const table = prepared::Find(record); table != nullptr) {
        if (table->map.foldsLetters) {
            kinds->folding = kind;
            return InStep::equal;
        }
        const size_t pairs = run1.size / 2;
        if (run1.size % 2 == 0 && PairsAlike(*table, run1.Bytes(), run2.Bytes(), pairs) == pairs)
            return InStep::equal;
    }
    const RunResult result = CompareUpShiftedRun(run1, run2, kNoLimit, record);
    if (result.order != 0)
        return InStep::different;
    const bool whole = result.bytes1 == run1.size && result.bytes2 == run2.size;
    return whole ? InStep::equal : InStep::unknown;
}

InStep CompareSegments(const Pair &pair, size_t unequal, const CSDescriptor *cs)
{
    SegmentWalk walk;
    WalkSegments(&walk, pair.text1, cs);
    if (!walk.own)
        return InStep::unknown;
    const bool escapes = std::memchr(pair.text1, kEsc, pair.size) != nullptr;
    Kinds kinds = {};
    while (unequal < pair.size) {
        if (!NextSegment(&walk))
            return InStep::unknown;
        const auto begin = static_cast<size_t>(walk.at - pair.text1), end = begin + walk.size;
        if (end <= unequal)
            continue;
        if (!IsText(walk.kind) || (escapes && std::memchr(walk.at, kEsc, walk.size) != nullptr))
            return InStep::unknown;
        const Run run1 = {walk.at, walk.size}, run2 = {pair.text2 + begin, walk.size};
        const InStep result = CompareSegment(run1, run2, walk.kind, &kinds);
        if (result != InStep::equal)
            return result;
        unequal = end; // the next difference is often near
        if (end < pair.size && pair.text1[end] == pair.text2[end])
            unequal = FindUnequal(pair, end + 1);
    }
    return InStep::equal;
}

} // namespace

InStep CompareInStep(const char *s1, const char *s2, bool caseless, const CSDescriptor *cs)
{
    const Pair pair = {s1, s2, std::strlen(s1)};
    if (std::strlen(s2) != pair.size)
        return InStep::unknown;
    const size_t unequal = FindUnequal(pair, 0);
    if (unequal == pair.size)
        return InStep::equal;
    if (!caseless || FindUnlike(pair, unequal) != pair.size)
        return InStep::unknown;
    return CompareSegments(pair, unequal, cs);
}

} // namespace libstr
