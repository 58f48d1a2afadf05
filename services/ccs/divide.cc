// SPDX-License-Identifier: Apache-2.0
#include "services/ccs/divide.h"

#include "base/plain_text.h"

#include <algorithm>
#include <bit>
#include <string_view>

namespace libstr::ccs
{
namespace
{

constexpr size_t kSequence = 3; // bytes of a sequence that FindSwitches knows

// The kinds of text after these sequences, by the low bits of the final byte.
constexpr auto kKinds = [] {
    std::array<std::array<uint16_t, 16>, 2> kinds{};
    for (const char final : {'B', 'I', 'J'})
        kinds[0][final & 15] = kSets[FindGraphicRow(Graphic::set94, '\0', final)].left;
    for (const char final : {'@', 'B'})
        kinds[1][final & 15] = kSets[FindGraphicRow(Graphic::set94n, '\0', final)].left;
    return kinds;
}();

uint16_t KindAfter(const char *sequence) { return kKinds[sequence[1] == '$'][sequence[2] & 15]; }

// A text that is being divided.
struct Rest {
    const char *at;
    size_t size;
    bool isOpen; // the last segment may go on here
};

void Add(Found *found, Rest *rest, uint16_t kind, size_t length)
{
    CSSegment *segment = &found->segments[found->count];
    uint64_t total = length;
    if (rest->isOpen && segment[-1].kind == kind) {
        --segment;
        total += segment->length;
        segment->length = static_cast<uint32_t>(total);
    } else {
        *segment = {rest->at, kind, 0, static_cast<uint32_t>(length)};
        ++found->count;
    }
    if (total > UINT32_MAX)
        found->fits = false;
    rest->isOpen = kind != CS_SEG_IGNORE;
    rest->at += length;
    rest->size -= length;
}

// Seven-bit text whose left half has one kind only.
bool IsSevenBit(const Walk &walk)
{
    const View &view = walk.Current().view;
    return walk.Current().plain == Plain::sevenBit && walk.state.left == 0 &&
           walk.next == Walk::Next::any && !kSets[view.left.row].differs;
}

// Adds text up to `end`, if there is any.
void AddText(Found *found, Rest *rest, uint16_t kind, const char *end)
{
    if (rest->at != end)
        Add(found, rest, kind, static_cast<size_t>(end - rest->at));
}

CSSegment SegmentOf(const char *at, uint16_t kind, const char *end)
{
    return {at, kind, 0, static_cast<uint32_t>(end - at)};
}

// The segments before `out` have been written, up to `at`.
void MoveTo(Found *found, const CSSegment *out, Rest *rest, const char *at)
{
    found->count = static_cast<int>(out - found->segments);
    rest->size -= static_cast<size_t>(at - rest->at);
    rest->isOpen = found->count != 0 && out[-1].kind != CS_SEG_IGNORE;
    rest->at = at;
}

// Adds the sequences at `places` after `begin` as far as there is room, and the text between them.
// Returns the places that are left.
uint64_t AddSwitches(Found *found, Rest *rest, const char *begin, uint64_t places, uint16_t *kind)
{
    constexpr int kRoom = 4; // text, a sequence, text, and the rest of the text
    CSSegment *out = found->segments + found->count;
    const CSSegment *const last = found->segments + found->most - kRoom;
    const char *at = rest->at;
    for (; places != 0 && out <= last; places &= places - 1) {
        const char *const sequence = begin + std::countr_zero(places);
        if (sequence != at)
            *out++ = SegmentOf(at, *kind, sequence);
        at = sequence + kSequence;
        *out++ = SegmentOf(sequence, CS_SEG_IGNORE, at);
        *kind = KindAfter(sequence);
    }
    MoveTo(found, out, rest, at);
    return places;
}

// Finds segments as long as FindSwitches knows the text.  Leaves room for a segment after an open
// one.
void DivideSevenBit(Walk *walk, Rest *rest, Found *found)
{
    plain::SevenBit state = {walk->Current().view.left.bytes == 2, true, nullptr};
    uint16_t kind = walk->Current().left.kind;
    const char *last = nullptr; // sequence that has been added
    uint64_t left = 0;
    while (left == 0 && rest->size != 0 && found->fits) {
        const plain::Switches switches = plain::FindSwitches(rest->at, rest->size, &state);
        const char *const begin = rest->at, *const end = begin + switches.bytes;
        const uint64_t places = switches.places;
        if (switches.bytes == 0)
            break;
        AddText(found, rest, kind, places == 0 ? end : begin + std::countr_zero(places));
        if (places == 0)
            continue;
        left = AddSwitches(found, rest, begin, places, &kind);
        if (left != places)
            last = found->segments[found->count - 1].text;
        if (left == 0)
            AddText(found, rest, kind, end);
    }
    if (last != nullptr)
        Follow(walk, last, kSequence);
}

// Eight-bit text of a marked set with its partner.
bool IsMarkedText(const Walk &walk)
{
    const Runs &runs = walk.Current();
    return runs.plain == Plain::eightBit && runs.rightHalf == plain::Right::marked &&
           walk.next == Walk::Next::any;
}

constexpr plain::Others kOthers = plain::OthersOf(kRows[FindRow(102)].differs);

// Adds the parts of a window as far as there is room; false when there is none for the rest.
// `kinds` are those of neither, of the right half, and of others.
bool AddParts(Found *found, Rest *rest, const plain::Parts &parts, const uint16_t (&kinds)[3])
{
    const char *const begin = rest->at;
    const size_t size = parts.bytes;
    const auto kindAt = [&](size_t at) {
        return kinds[(parts.right >> at & 1) | (parts.other >> at & 1) << 1];
    };
    uint64_t ends = (parts.right ^ parts.right << 1) | (parts.other ^ parts.other << 1);
    if (size < 64)
        ends |= uint64_t{1} << size;
    ends &= ~uint64_t{1};
    size_t at = static_cast<size_t>(std::countr_zero(ends)); // 64 where there is none
    Add(found, rest, kindAt(0), at);
    CSSegment *out = found->segments + found->count;
    const CSSegment *const last = found->segments + found->most - 2;
    while (at != size && out <= last) {
        ends &= ends - 1;
        const auto end = static_cast<size_t>(std::countr_zero(ends));
        *out++ = SegmentOf(begin + at, kindAt(at), begin + end);
        at = end;
    }
    MoveTo(found, out, rest, begin + at);
    return at == size;
}

// Finds segments as long as FindParts knows the text, likewise.
void DivideMarkedText(const Walk &walk, Rest *rest, Found *found)
{
    const View &view = walk.Current().view;
    const SetRow &left = kSets[view.left.row];
    const uint16_t kinds[] = {view.left.kind, view.right.kind, left.number};
    const plain::Others others = left.differs ? kOthers : plain::Others{};
    while (rest->size != 0 && found->most - found->count >= 2 && found->fits) {
        const plain::Parts parts = plain::FindParts(rest->at, rest->size, others);
        if (parts.bytes == 0 || !AddParts(found, rest, parts, kinds))
            return;
    }
}

} // namespace

void Divide(Walk *walk, const char *at, size_t avail, Found *found)
{
    Rest rest = {at, avail, false};
    while (rest.size != 0 && found->count < found->most && found->fits) {
        if (found->most - found->count > 4 && IsSevenBit(*walk))
            DivideSevenBit(walk, &rest, found);
        else if (found->most - found->count > 4 && IsMarkedText(*walk))
            DivideMarkedText(*walk, &rest, found);
        if (rest.size == 0 || !found->fits)
            break;
        const Unit segment = NextSegment(walk, rest.at, rest.size);
        Add(found, &rest, segment.kind, segment.length);
        rest.isOpen = false;
    }
}

} // namespace libstr::ccs
