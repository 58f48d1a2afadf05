// SPDX-License-Identifier: Apache-2.0
//
// What is passed over many bytes at a time is what is passed over byte by byte.
#include "base/plain_text.h"
#include "base/switches.h"
#include "tests/support/test.h"

#include <tuple>

using namespace libstr::plain;

namespace
{

std::mt19937 theRandom;

size_t Below(size_t limit) { return theRandom() % limit; }

// So many bytes, most of them from one of these groups of pieces.  Some texts cut a piece where the
// first window ends.
std::string PlainText(size_t size)
{
    const std::vector<std::string> groups[] = {
        {"\x1B(B", "\x1B$B", "\x1B$@", "\x1B(J", "\x1B(I", "0!", "abcdefghij", "%6%5%3", "a b"},
        {"\xB0\xB1", "\xA4\xA2\xA4\xA4\xA4\xA6", "\x8E\xB6", "abcdefghij", "a"},
        {"\xC1"
         "a",
         "\xC8u", "\xE1", "#", "a~b", "abcdefghij", " "},
        {"\x0E", "\x1B", "\x9B", "\x8F", "\xA0", "\xFF", "\xC1\xC2", "\xE4", "\x7F", "\n", "a",
         "\x85"}};
    const auto &group = groups[Below(3)];
    const size_t between = Below(2) == 0 ? 20 : 500;
    const size_t cut = Below(2) == 0 ? 63 + Below(3) : SIZE_MAX;
    std::string text;
    while (text.size() < size) {
        const auto &from = Below(between) == 0 ? groups[3] : group;
        const bool isBefore = text.size() < cut;
        text += from[Below(from.size())];
        if (isBefore && text.size() > cut)
            text.resize(cut);
    }
    return text.substr(0, size);
}

auto Fields(const Passage &p) { return std::tuple(p.bytes, p.columns, p.shown, p.lines); }

auto Fields(const SevenBit &s) { return std::tuple(s.pairs, s.designation); }

TEST(PlainText, IsPassedInWindowsAsByteByByte)
{
    theRandom.seed(TestSeed());
    for (int round = 0; round < 200 && !HasFailure(); ++round)
        for (size_t size = 0; size <= 200; ++size) {
            const std::string bytes = PlainText(size);
            SCOPED_TRACE(testing::PrintToString(bytes));
            const Guarded room(size + 1);
            std::memcpy(room.data() + 1, bytes.data(), size);
            const char *const text = room.data() + 1;
            const bool limited = Below(2) == 0;
            const size_t passed = Below(3) == 0 ? Below(size + 1) : 0;
            const size_t most = limited ? passed + Below(size - passed + 2) : SIZE_MAX,
                         columns = Below(2) == 0 ? Below(size + 2) : SIZE_MAX;
            const Passage begin = {text, size, most, columns, passed, 0, 0, 0};
            Passage windows = begin, slow = begin;
            const SevenBit start = {Below(2) == 0, Below(8) != 0, nullptr};
            SevenBit state = start, slowState = start;
            PassSevenBit(&windows, &state);
            PassSevenBitByByte(&slow, &slowState);
            ASSERT_EQ(Fields(windows), Fields(slow));
            ASSERT_EQ(Fields(state), Fields(slowState));
            state = slowState = start;
            const Switches switches = FindSwitches(text, size, &state),
                           slowSwitches = FindSwitchesByByte(text, size, &slowState);
            ASSERT_EQ(switches.bytes, slowSwitches.bytes);
            ASSERT_EQ(switches.places, slowSwitches.places);
            ASSERT_EQ(Fields(state), Fields(slowState));
            for (const Right right :
                 {Right::single94, Right::single96, Right::marked, Right::pairs, Right::shifted}) {
                windows = slow = begin;
                PassEightBit(&windows, right);
                PassEightBitByByte(&slow, right);
                ASSERT_EQ(Fields(windows), Fields(slow));
            }
            constexpr Others others = OthersOf("#$~");
            const Parts parts = FindParts(text, size, others),
                        slowParts = FindPartsByByte(text, size, others);
            ASSERT_EQ(std::tuple(parts.bytes, parts.right, parts.other),
                      std::tuple(slowParts.bytes, slowParts.right, slowParts.other));
        }
}

TEST(Switches, AreFoundWhereverTheyAre)
{
    for (size_t size = 0; size <= 300; ++size)
        for (const char *const other : {"a", "\n\x0D\x10\x1A\x1C\x8E\x9B\xFF"}) {
            const Guarded text(size); // nothing after it may be read
            for (size_t i = 0; i < size; ++i)
                text.data()[i] = other[i % strlen(other)];
            EXPECT_FALSE(libstr::HasSwitches(text.data(), size)) << size;
            for (size_t i = 0; i < size; ++i) {
                const char before = std::exchange(text.data()[i], "\x0E\x0F\x1B"[i % 3]);
                EXPECT_TRUE(libstr::HasSwitches(text.data(), size)) << size << " " << i;
                text.data()[i] = before;
            }
        }
}

} // namespace
