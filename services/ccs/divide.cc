// SPDX-License-Identifier: Apache-2.0
#include "services/ccs/divide.h"

#include "base/plain_text.h"

#include <bit>

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
    found->fits = total <= UINT32_MAX;
    rest->isOpen = kind != CS_SEG_IGNORE;
    rest->at += length;
    rest->size -= length;
}

// Seven-bit text whose left half has one kind only.
bool IsSevenBit(const Walk &walk)
{
    const View &view = walk.Current().view;
    return walk.Current().plain == Plain::sevenBit && walk.state.left == 0 &&
           walk.next == Walk::Next::any && *kSets[view.left.row].differs == '\0';
}

// Finds segments as long as FindSwitches knows the text.  Leaves room for a segment after an open
// one.
void DivideSevenBit(Walk *walk, Rest *rest, Found *found)
{
    constexpr int kRoom = 4; // text, a sequence, text, and the rest of the text
    plain::SevenBit state = {walk->Current().view.left.bytes == 2, true, nullptr};
    uint16_t kind = walk->Current().left.kind;
    const char *last = nullptr; // sequence that has been added
    bool goesOn = true;
    while (goesOn && rest->size != 0 && found->fits) {
        const plain::Switches switches = plain::FindSwitches(rest->at, rest->size, &state);
        const char *const end = rest->at + switches.bytes;
        const char *const begin = rest->at;
        goesOn = switches.bytes != 0;
        for (uint64_t places = switches.places; places != 0; places &= places - 1) {
            if (found->most - found->count < kRoom) {
                goesOn = false;
                break;
            }
            const char *const sequence = begin + std::countr_zero(places);
            if (sequence != rest->at)
                Add(found, rest, kind, static_cast<size_t>(sequence - rest->at));
            Add(found, rest, CS_SEG_IGNORE, kSequence);
            kind = KindAfter(sequence);
            last = sequence;
        }
        if (goesOn && rest->at != end)
            Add(found, rest, kind, static_cast<size_t>(end - rest->at));
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

// Finds segments as long as FindParts knows the text, likewise.
void DivideMarkedText(const Walk &walk, Rest *rest, Found *found)
{
    const View &view = walk.Current().view;
    const SetRow &left = kSets[view.left.row];
    while (rest->size != 0) {
        const plain::Parts parts = plain::FindParts(rest->at, rest->size, left.differs);
        if (parts.bytes == 0)
            return;
        uint64_t ends = (parts.right ^ parts.right << 1) | (parts.other ^ parts.other << 1);
        for (size_t at = 0; at < parts.bytes;) {
            if (found->most - found->count < 2 || !found->fits)
                return;
            ends &= ~uint64_t{1} << at;
            const size_t end = std::min(parts.bytes, static_cast<size_t>(std::countr_zero(ends)));
            const bool isRight = (parts.right >> at & 1) != 0;
            const bool isOther = (parts.other >> at & 1) != 0;
            Add(found, rest,
                isRight   ? view.right.kind
                : isOther ? left.number
                          : view.left.kind,
                end - at);
            at = end;
        }
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
