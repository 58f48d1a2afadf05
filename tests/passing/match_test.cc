// SPDX-License-Identifier: Apache-2.0
//
// Pattern matching beside a slow matcher: what a text says decides, not the escape sequences in it.

#include "tests/passing/services.h"
#include "tests/support/meaning.h"

#include <set>
#include <tuple>

namespace
{

constexpr CSDescriptor kMail = {1001, 1}; // ISO-2022-JP

// Every text of up to `most` letters, after each of which there is one of the cuts or the end.
std::vector<std::string> Texts(const std::string &letters, int most, std::set<std::string> cuts)
{
    std::vector<std::string> texts = {""};
    for (size_t at = 0; most > 0; --most)
        for (const size_t end = texts.size(); at < end; ++at)
            for (const char letter : letters)
                for (const std::string &cut : at == 0 ? std::set{""s} : cuts)
                    texts.push_back(texts[at] + cut + letter);
    return texts;
}

TEST(Match, OfEveryShortTextIsThatOfASlowOneInEveryCut)
{
    const struct {
        CSDescriptor cs;
        const char *letters;
        std::set<std::string> cuts = {""};
        bool ownWalks = false;
    } rows[] = {
        {kMail, "ab", {"", "\x1B(B"}}, // a sequence that changes nothing
        {kMail, "ab", {"", "\x1B(B"}, true},
        {{6, 0}, "a\xE9"},   // IA5 and raw bytes
        {{6, 1}, "a\x0E"},   // the same with a shift
        {{100, 0}, "a\xE9"}, // one set
        {{102, 0}, "a#"},    // two sets
    };
    for (const auto &row : rows) {
        passing::ownWalks = row.ownWalks;
        std::vector<Meaning> patterns;
        for (const std::string &text : Texts(WithUs(row.letters + "_"s), 4, row.cuts))
            patterns.emplace_back(text, row.cs);
        std::vector<Meaning> strings = patterns; // US is a byte like any other
        for (const std::string &text : Texts(row.letters, 5, row.cuts))
            strings.emplace_back(text, row.cs);
        for (const Meaning &pattern : patterns)
            for (const Meaning &string : strings) {
                const char *const s = string.text.c_str(), *const p = pattern.text.c_str();
                const bool matches = string.Matches(pattern);
                ASSERT_EQ(str_USPatternMatch(s, p, &row.cs), matches)
                    << row.cs.csNum << testing::PrintToString(s) << testing::PrintToString(p);
            }
    }
}

// Text of few bytes, so that pieces are often there in part; in sets that are equivalent or not.
TEST(Match, OfLongTextIsThatOfASlowOne)
{
    const char *const pieces[] = {"a",   "a",      "\x1B-A", "\x1B-F", "\x1B)B", "b",
                                  "aab", "\x1B$B", "\x1B(B", "\x1B(B", "\xFF"};
    const CSDescriptor cs = {100, 1};
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 60'000; ++round) {
        const uint32_t flags[] = {CS_FLAG_UNIFORM, CS_FLAG_ASCII, 0};
        passing::moreFlags = flags[round % 3];
        passing::ownWalks = round % 8 < 4;
        const size_t choice = random() % 3 == 0 ? 5 : 1 + random() % std::size(pieces);
        std::string string, more;
        for (auto left = 1 + random() % 300; left > 0; --left)
            string += pieces[random() % choice];
        for (auto left = 1 + random() % 9; left > 0; --left)
            more += random() % 6 == 0 ? "\x1F" : pieces[random() % choice];
        const std::string part = string.substr(random() % string.size(), random() % 20),
                          end = random() % 2 == 0 ? more : "";
        const Guarded s(string), p(random() % 4 == 0 ? more : "\x1F" + part + "\x1F" + end);
        const bool matches = Meaning(string, cs).Matches(Meaning(p.c_str(), cs));
        ASSERT_EQ(str_USPatternMatch(s.c_str(), p.c_str(), &cs), matches)
            << testing::PrintToString(string) << testing::PrintToString(p.c_str());
    }
}

// No byte of a string is looked at for every byte of a piece, so these end soon.
TEST(Match, NearMissesEnd)
{
    const std::string text(1 << 18, 'a'), part(1 << 17, 'a');
    std::string segments;
    for (int i = 0; i < 1 << 18; ++i)
        segments += "a\x1B(B";
    for (const std::string &us : {"_" + part + "b_", "_b" + part + "_", "_a_" + part + "b"})
        for (const std::string &string : {text, segments}) {
            const std::string pattern = WithUs(us);
            EXPECT_EQ(str_USPatternMatch(string.c_str(), pattern.c_str(), &kMail), 0);
            EXPECT_EQ(str_utf8USPatternMatch(string.c_str(), pattern.c_str()), 0);
        }
}

// A text in one segment of ASCII, and a position.
struct Place {
    std::string text;
    unsigned int offset;
    CSSegment list[2] = {{text.data(), 6, 0, static_cast<uint32_t>(text.size())},
                         {text.data() + text.size(), CS_SEG_END, 0, 0}};
    const CSSegment *record = list;

    ptrdiff_t At() const { return record->text + offset - text.data(); }
};

TEST(Match, StepsMoveWhenTheySucceed)
{
    const struct {
        char step; // Prefix, Whole, Middle, End, Skip
        const char *string, *pattern;
        unsigned int stringAt, patternAt;
        int answer, stringAfter, patternAfter;
    } rows[] = {
        // clang-format off
        {'P', "abcd", "xxbc_d", 1, 2, 1, 3, 4},
        {'W', "abcd", "xxbc_d", 1, 2, 0, 1, 2},
        {'M', "xabcab", "_bca_b_d", 0, 0, 1, 6, 7},
        {'M', "xabcab", "_bca_a_d", 0, 0, 0, 0, 0},
        {'M', "abc", "a_c", 1, 1, 0, 1, 2}, // no middle piece, but the US is passed
        {'E', "abc", "ab_bc", 3, 2, 1, 3, 0}, // the overlap is the caller's to look at
        {'E', "abc", "ab_xabc", 0, 2, 0, 0, 2},
        {'S', "__b", "", 0, 0, 0, 1, 0},
        // clang-format on
    };
    for (const auto &row : rows) {
        Place s = {WithUs(row.string), row.stringAt}, p = {WithUs(row.pattern), row.patternAt};
        const int answer =
            row.step == 'S'   ? (str_SkipUS(&s.record, &s.offset), 0)
            : row.step == 'E' ? str_EndMatch(s.list, p.record, &p.offset, 2)
            : row.step == 'M'
                ? str_RepeatMatch(&s.record, &p.record, &s.offset, &p.offset)
                : str_Match(&s.record, &p.record, &s.offset, &p.offset, row.step == 'P');
        EXPECT_EQ(std::tuple(answer, s.At(), p.At()),
                  std::tuple(row.answer, row.stringAfter, row.patternAfter))
            << row.step << row.string << " " << row.pattern;
    }
}

} // namespace
