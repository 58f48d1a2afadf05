// SPDX-License-Identifier: Apache-2.0
//
// Pattern matching over lists that a test makes up, of sets that are equivalent where no shipped
// set is, beside the same slow matcher.
#include "tests/scripted/ccs.h"
#include "tests/support/meaning.h"
#include "tests/support/test.h"

namespace
{

using scripted::script;
using scripted::Segment;

// Two ASCII sets, two that hold ASCII, one that does not; and which bytes are compared.
const std::map<uint16_t, uint32_t> kFlags = {{1, CS_FLAG_ASCII},
                                             {2, CS_FLAG_ASCII | CS_FLAG_ASCII_SUPERSET},
                                             {3, CS_FLAG_ASCII_SUPERSET | CS_FLAG_UNIFORM},
                                             {4, CS_FLAG_ASCII_SUPERSET | CS_FLAG_UNIFORM},
                                             {5, CS_FLAG_ASCII_SUPERSET}};
const char *const kEquivalent[] = {"", ".11110", ".11110", ".11100", ".11010", ".00001"};
constexpr uint16_t kKinds[] = {1, 1, 1, 2, 3, 4, 5, CS_SEG_RAW, CS_SEG_RAW};

bool AreEquivalent(uint16_t a, uint16_t b) { return a < 6 && b < 6 && kEquivalent[a][b] == '1'; }

// Long segments or short ones, of few kinds or many.
std::vector<Segment> RandomList(std::mt19937 &random, size_t length)
{
    std::vector<Segment> list;
    const size_t longest = 1 + random() % length, choice = 1 + random() % std::size(kKinds);
    for (size_t part; length > 0; length -= part) {
        part = 1 + random() % std::min(length, longest);
        list.push_back({kKinds[random() % choice], static_cast<unsigned int>(part)});
    }
    return list;
}

std::string RandomText(std::mt19937 &random, const std::string &letters, size_t most)
{
    std::string text(1 + random() % most, 'a');
    for (char &byte : text)
        byte = letters[random() % letters.size()];
    return text;
}

TEST(ScriptedMatch, ComparesWhereSetsAreEquivalent)
{
    script = {};
    script.flags = kFlags;
    for (const uint16_t a : kKinds)
        for (const uint16_t b : kKinds)
            EXPECT_EQ(str_EquivTypes(static_cast<int16_t>(a), static_cast<int16_t>(b)),
                      AreEquivalent(a, b));
    std::mt19937 random(TestSeed());
    size_t matching = 0;
    for (int round = 0; round < 100'000; ++round) {
        std::string string = RandomText(random, "aab", 50);
        std::string pattern = RandomText(random, "aab\x1F", 9);
        if (round % 2 == 0) // what is found late
            pattern =
                "\x1F" + string.substr(random() % string.size(), random() % 20) + "\x1F" + pattern;
        script.realLists[0] = RandomList(random, string.size());
        script.realLists[1] = RandomList(random, pattern.size());
        const Meaning s(string, {9, 1}), p(pattern, {9, 1});
        const bool matches = s.Matches(p, AreEquivalent);
        const CSDescriptor cs = {9, 1};
        ASSERT_EQ(str_USPatternMatch(string.c_str(), pattern.c_str(), &cs), matches)
            << testing::PrintToString(string) << testing::PrintToString(pattern);
        script.nextList = 0; // identical texts need no list
        matching += matches;
    }
    EXPECT_GT(matching, 5000U);
}

} // namespace
