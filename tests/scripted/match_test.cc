// SPDX-License-Identifier: Apache-2.0
//
// Pattern matching over lists of segments that a test makes up: every way to cut texts, sets that
// are equivalent and sets that are not, lists that are not to be had, and memory that runs out.
#include "services/services.h"
#include "tests/scripted/ccs.h"
#include "tests/scripted/files.h"
#include "tests/support/escape.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <platform/er.h>
#include <platform/os.h>
#include <str/str.h>

#include <random>

namespace
{

using scripted::script;
using scripted::Script;
using scripted::Segment;

constexpr char kUs = 0x1F;
constexpr uint16_t kAscii = 1, kOtherAscii = 2, kUniform = 3, kOtherUniform = 4, kForeign = 5;
constexpr CSDescriptor kCs = {9, 1};

Script Sets()
{
    Script sets;
    sets.flags = {{kAscii, CS_FLAG_ASCII},
                  {kOtherAscii, CS_FLAG_ASCII | CS_FLAG_ASCII_SUPERSET},
                  {kUniform, CS_FLAG_ASCII_SUPERSET | CS_FLAG_UNIFORM},
                  {kOtherUniform, CS_FLAG_ASCII_SUPERSET | CS_FLAG_UNIFORM},
                  {kForeign, CS_FLAG_ASCII_SUPERSET}};
    return sets;
}

int Match(const std::vector<Segment> &stringList, const std::string &string,
          const std::vector<Segment> &patternList, const std::string &pattern)
{
    script.realLists[0] = stringList;
    script.realLists[1] = patternList;
    script.nextList = 0;
    return str_USPatternMatch(string.c_str(), pattern.c_str(), &kCs);
}

class ScriptedMatch : public testing::Test
{
  protected:
    ScriptedMatch() { script = Sets(); }
    ~ScriptedMatch() override
    {
        scripted::files.escapeClass = 0;
        er_SetTraceSink(nullptr);
        er_SubSystemLoggingLevel = 0;
        er_Clear();
    }
};

// ---- Memory and lists ----------------------------------------------------------------------

// The first test of the process that matches: the array is not there yet.
TEST_F(ScriptedMatch, MemoryThatRunsOutLeavesMatchingUsable)
{
    for (const size_t count : {size_t{2}, size_t{100}}) { // the first allocation, a growth
        const std::string string(count, 'a');
        script.realLists[0] = std::vector<Segment>(count, {kAscii, 1});
        script.realLists[1] = {{kAscii, 2}};
        int answer = -1;
        const auto match = [&] {
            script.nextList = 0;
            answer = str_USPatternMatch(string.c_str(), "a\x1F", &kCs);
        };
        for (const int escapeClass : {3, 5}) {
            scripted::files.escapeClass = escapeClass;
            scripted::files.callsLeft = 0;
            EXPECT_EQ(Escaped(match) != 0, escapeClass != 3) << "class 3 ends here";
            EXPECT_EQ(answer, escapeClass == 3 ? 0 : -1);
            answer = -1;
        }
        scripted::files.escapeClass = 0;
        match();
        EXPECT_EQ(answer, 1) << "the next call works";
    }
    scripted::files.escapeClass = 3;
    scripted::files.callsLeft = 0;
    const std::vector<Segment> spare(120, {kAscii, 1});
    EXPECT_EQ(Match(spare, std::string(120, 'a'), {{kAscii, 2}}, "a\x1F"), 1) << "20 to spare";
}

TEST_F(ScriptedMatch, TextsWithoutSegmentsMatchNothing)
{
    EXPECT_EQ(str_USPatternMatch("a", "a", &kCs), 1) << "the same text: no list needed";
    EXPECT_EQ(str_USPatternMatch("", "", &kCs), 1);
    EXPECT_EQ(str_USPatternMatch("a", "", &kCs), 0);
    EXPECT_EQ(str_USPatternMatch("", "\x1F", &kCs), 0);
    EXPECT_EQ(script.nextList, 0U);
    EXPECT_EQ(str_USPatternMatch("a", "\x1F", &kCs), 0) << "no list for the string";
    EXPECT_EQ(script.nextList, 1U) << "the pattern is not asked for";
    script = Sets();
    script.realLists[0] = {{kAscii, 1}};
    EXPECT_EQ(str_USPatternMatch("a", "\x1F", &kCs), 0) << "no list for the pattern";
    EXPECT_EQ(Match({}, "\x1B", {{kAscii, 1}}, "\x1F"), 0) << "nothing but the end";
    EXPECT_EQ(Match({{kAscii, 1}}, "a", {}, "\x1F"), 0);
}

TEST_F(ScriptedMatch, TracesItsExitWhereAPieceStandsBesideUs)
{
    static std::string traced;
    er_SetTraceSink([](int, const char *text, int marker) {
        traced += (marker == 1 ? "+" : "-") + std::string(text) + " ";
    });
    er_SubSystemLoggingLevel = 10;
    const auto traceOf = [](const std::string &pattern) {
        traced.clear();
        const auto size = static_cast<unsigned int>(pattern.size());
        Match({{kAscii, 1}, {kAscii, 1}}, "ab", {{kAscii, size}}, WithUs(pattern));
        return traced;
    };
    for (const char *pattern : {"ab", "xy", "_", "a_", "_b", ""})
        EXPECT_EQ(traceOf(pattern), "+str_USPatternMatch ") << pattern;
    for (const char *pattern : {"a_b", "x_b", "_a_", "__", "a__"})
        EXPECT_EQ(traceOf(pattern), "+str_USPatternMatch -str_USPatternMatch ") << pattern;
    traced.clear();
    str_utf8USPatternMatch("a", "b");
    EXPECT_EQ(traced, "+str_utf8USPatternMatch -str_utf8USPatternMatch ");
}

// ---- Every cut -----------------------------------------------------------------------------

struct Symbol {
    char byte;
    uint16_t kind;
};

bool AreEquivalent(const Symbol &a, const Symbol &b)
{
    return str_EquivTypes(static_cast<int16_t>(a.kind), static_cast<int16_t>(b.kind)) != 0;
}

// What a pattern means, said without pieces; both end with a NUL of kind CS_SEG_END.  `strict`: of
// two US the second needs a byte that its set can be compared with.
bool Means(const std::vector<Symbol> &s, const std::vector<Symbol> &p, bool strict)
{
    const size_t end = s.size() - 1;
    std::vector<char> rest(s.size(), 0), row(s.size(), 0); // from which bytes on they match
    rest[end] = 1;
    for (size_t j = p.size() - 1; j-- > 0; rest = row)
        for (size_t i = s.size(); i-- > 0;)
            if (p[j].byte == kUs)
                row[i] = (rest[i] &&
                          (!strict || p[j + 1].byte != kUs || AreEquivalent(s[i], p[j + 1]))) ||
                         (i < end && row[i + 1]);
            else
                row[i] =
                    i < end && rest[i + 1] && s[i].byte == p[j].byte && AreEquivalent(s[i], p[j]);
    return rest[0] != 0;
}

std::vector<Symbol> SymbolsOf(const std::string &text, const std::vector<Segment> &list)
{
    std::vector<Symbol> symbols;
    for (const Segment &segment : list)
        for (unsigned int i = 0; i < segment.length; ++i)
            symbols.push_back({text[symbols.size()], segment.kind});
    symbols.push_back({'\0', CS_SEG_END});
    return symbols;
}

// Every text of up to `most` letters.
std::vector<std::string> Texts(const std::string &letters, size_t most)
{
    std::vector<std::string> all = {""};
    for (size_t i = 0; i < all.size(); ++i)
        if (all[i].size() < most)
            for (const char letter : letters)
                all.push_back(all[i] + letter);
    return all;
}

// Every way to cut so many bytes into segments of one set.
const std::vector<std::vector<Segment>> &Cuts(size_t length)
{
    static std::map<size_t, std::vector<std::vector<Segment>>> known;
    std::vector<std::vector<Segment>> &all = known[length];
    if (!all.empty())
        return all;
    for (unsigned int cuts = 0; cuts < 1U << (length - 1); ++cuts) {
        all.push_back({{kAscii, 1}});
        for (size_t i = 1; i < length; ++i)
            if ((cuts >> (i - 1) & 1) != 0)
                all.back().push_back({kAscii, 1});
            else
                ++all.back().back().length;
    }
    return all;
}

void CheckEveryCut(const std::string &string, const std::string &pattern)
{
    const auto s = SymbolsOf(string, {{kAscii, static_cast<unsigned int>(string.size())}});
    const auto p = SymbolsOf(pattern, {{kAscii, static_cast<unsigned int>(pattern.size())}});
    const bool matches = Means(s, p, false);
    const std::string where = testing::PrintToString(string) + testing::PrintToString(pattern);
    ASSERT_EQ(os_USPatternMatch(string.c_str(), pattern.c_str()), matches) << where;
    ASSERT_EQ(str_utf8USPatternMatch(string.c_str(), pattern.c_str()), matches) << where;
    // The empty string matches only itself, whatever its segments.
    if (string.empty() || pattern.empty()) {
        ASSERT_EQ(Match({}, string, {}, pattern), string == pattern) << where;
        return;
    }
    // Of segments, the second of two US needs a byte; all else is the same.
    const bool strictly = Means(s, p, true) || string == pattern;
    if (pattern.find(WithUs("__")) == std::string::npos) {
        ASSERT_EQ(strictly, matches) << where;
    }
    for (const auto &stringCut : Cuts(string.size()))
        for (const auto &patternCut : Cuts(pattern.size()))
            ASSERT_EQ(Match(stringCut, string, patternCut, pattern),
                      stringCut.size() == 1 && patternCut.size() == 1 ? matches : strictly)
                << where << " in " << stringCut.size() << " and " << patternCut.size();
}

TEST_F(ScriptedMatch, AllMatchersMeanTheSameInEveryCut)
{
    std::vector<std::string> strings = Texts("abc", 5);
    for (const std::string &string : Texts(WithUs("ab_"), 4)) // US is a byte like any other
        if (string.find(kUs) != std::string::npos)
            strings.push_back(string);
    for (const std::string &pattern : Texts(WithUs("abc_"), 4))
        for (const std::string &string : strings)
            ASSERT_NO_FATAL_FAILURE(CheckEveryCut(string, pattern));
}

std::string RandomText(std::mt19937 &random, const std::string &letters, size_t most)
{
    std::string text(1 + random() % most, 'a');
    for (char &byte : text)
        byte = letters[random() % letters.size()];
    return text;
}

// Long segments or short ones, of few kinds or many.
std::vector<Segment> RandomList(std::mt19937 &random, size_t length)
{
    constexpr uint16_t kinds[] = {kAscii,        kAscii,   kAscii,     kOtherAscii, kUniform,
                                  kOtherUniform, kForeign, CS_SEG_RAW, CS_SEG_RAW};
    std::vector<Segment> list;
    const size_t longest = 1 + random() % length, choice = 1 + random() % std::size(kinds);
    for (size_t part; length > 0; length -= part) {
        part = 1 + random() % std::min(length, longest);
        list.push_back({kinds[random() % choice], static_cast<unsigned int>(part)});
    }
    return list;
}

TEST_F(ScriptedMatch, ComparesWhereSetsAreEquivalent)
{
    std::mt19937 random(64);
    size_t matching = 0;
    for (int round = 0; round < 200000; ++round) {
        std::string string = RandomText(random, "aab", 50);
        std::string pattern = RandomText(random, "aab\x1F", 9);
        if (round % 2 == 0) // what is found late
            pattern = kUs + string.substr(random() % string.size(), random() % 20) + kUs + pattern;
        const auto stringList = RandomList(random, string.size());
        const auto patternList = RandomList(random, pattern.size());
        const auto s = SymbolsOf(string, stringList), p = SymbolsOf(pattern, patternList);
        const bool quick = stringList.size() == 1 && patternList.size() == 1 &&
                           AreEquivalent(s.front(), p.front());
        const bool matches = Means(s, p, !quick) || string == pattern;
        ASSERT_EQ(Match(stringList, string, patternList, pattern), matches)
            << testing::PrintToString(string) << testing::PrintToString(pattern);
        matching += matches;
    }
    EXPECT_GT(matching, 10000U);
}

// ---- Rows ----------------------------------------------------------------------------------

TEST_F(ScriptedMatch, TakesListsThatAreOdd)
{
    const Segment a1 = {kAscii, 1}, a2 = {kAscii, 2}, none = {kAscii, 0};
    // clang-format off
    const struct {
        std::vector<Segment> stringList;
        const char *string;
        std::vector<Segment> patternList;
        const char *pattern;
        int answer;
        const char *why;
    } rows[] = {
        {{a1}, "ab", {{kAscii, 3}}, "ab_", 0, "not all of the string is in its segment"},
        {{a2, a2}, "abab", {a2, none}, "a_", 1, "an empty last segment: the byte before decides"},
        {{a2, a2}, "abab", {a2, none}, "_a", 0, "... likewise"},
        {{a2, a2}, "abab", {a1, none}, "_", 1, "... of a lone US"},
        {{a2, a2}, "abab", {a2, none}, "_b", 1, "... behind a tail"},
        {{a2, a2}, "abab", {none, a2}, "_b", 1, "an empty first segment"},
        {{a1, none, a1, none}, "ab", {{kAscii, 3}}, "ab_", 1, "empty segments of the string"},
        {{a1, none, a1, none}, "ab", {{kAscii, 3}}, "_ab", 1, "... and a tail"},
        {{a1, none, a1, none}, "ab", {{kAscii, 4}}, "_ab_", 1, "... and a middle piece"},
        {{a1, {kForeign, 0}, a1}, "ab", {{kAscii, 4}}, "_ab_", 1, "... of another set"},
    };
    // clang-format on
    for (const auto &row : rows)
        EXPECT_EQ(Match(row.stringList, row.string, row.patternList, WithUs(row.pattern)),
                  row.answer)
            << row.why;
}

TEST_F(ScriptedMatch, TakesAThousandSegmentsAndTenThousandPieces)
{
    std::string string, pattern = "x";
    for (int i = 0; i < 10000; ++i) {
        string += "xy";
        pattern += WithUs("_y");
    }
    std::vector<Segment> list(1000, {kAscii, 20}), patternList(1000, {kOtherAscii, 20});
    patternList.push_back({kAscii, 1});
    EXPECT_EQ(Match(list, string, patternList, pattern), 1);
    string.back() = 'x';
    EXPECT_EQ(Match(list, string, patternList, pattern), 0);
    string.back() = 'y';
    list[500].kind = CS_SEG_RAW;
    EXPECT_EQ(Match(list, string, patternList, pattern), 0) << "10 pieces too few";
}

// ---- The steps, called directly ------------------------------------------------------------

// ASCII segments, which / divides.
struct Records {
    std::string text;
    std::vector<CSSegment> list;

    explicit Records(const std::string &written) : text(WithUs(written))
    {
        for (size_t at = 0, end; at <= text.size(); at = end + 1) {
            end = std::min(text.find('/', at), text.size());
            list.push_back({text.data() + at, kAscii, 0, static_cast<uint32_t>(end - at)});
        }
        list.push_back({text.data() + text.size(), CS_SEG_END, 0, 0});
    }
};

// "record.offset", "end".
std::string Place(const Records &records, const CSSegment *record, unsigned int offset)
{
    if (record->kind == CS_SEG_END)
        return "end";
    return std::to_string(record - records.list.data()) + "." + std::to_string(offset);
}

TEST_F(ScriptedMatch, StepsMoveTheirPositionsWhenTheySucceed)
{
    // clang-format off
    const struct {
        const char *string;
        unsigned int stringRecord, stringOffset;
        const char *pattern;
        unsigned int patternRecord, patternOffset;
        int mode, answer; // mode 2: the middle pieces
        const char *places;
    } steps[] = {
        {"abcd", 0, 0, "ab", 0, 0, 1, 1, "0.2 end"},
        {"abcd", 0, 0, "ab", 0, 0, 0, 0, "0.0 0.0"},
        {"xabcd", 0, 1, "xabcd", 0, 1, 0, 1, "end end"},
        {"ab/cd", 0, 1, "xxb/c_d", 0, 2, 1, 1, "1.1 1.1"},
        {"ab/cd", 0, 1, "xxb/c_d", 0, 2, 0, 0, "0.1 0.2"},
        {"ab/cd", 0, 0, "abc/_", 0, 0, 1, 1, "1.1 1.0"},
        {"abc", 0, 0, "abcd", 0, 0, 1, 0, "0.0 0.0"},
        {"abc", 0, 0, "_d", 0, 0, 1, 1, "0.0 0.0"},  // an empty piece
        {"abc", 1, 0, "_d", 0, 0, 1, 0, "end 0.0"},  // ... needs a byte
        {"abc", 1, 0, "d", 1, 0, 0, 1, "end end"},   // nothing ends with nothing
        {"xaxb/c", 0, 1, "_b_c", 0, 0, 2, 1, "1.0 0.3"},
        {"xab/ca", 0, 0, "_bca_", 0, 0, 2, 1, "end end"},
        {"xab/cab", 0, 0, "_bc/a_b/_d", 0, 0, 2, 1, "end 2.1"},
        {"xab/cab", 0, 0, "_bc/a_a_d", 0, 0, 2, 0, "0.0 0.0"},
        {"aab/c", 0, 0, "a__b", 0, 1, 2, 1, "0.0 0.3"},
        {"abc", 0, 1, "a_c", 0, 1, 2, 0, "0.1 0.2"}, // no middle piece, but the US is passed
    };
    // clang-format on
    for (const auto &step : steps) {
        const Records string(step.string), pattern(step.pattern);
        const CSSegment *s = &string.list[step.stringRecord];
        const CSSegment *p = &pattern.list[step.patternRecord];
        unsigned int sOffset = step.stringOffset, pOffset = step.patternOffset;
        const int answer = step.mode == 2 ? str_RepeatMatch(&s, &p, &sOffset, &pOffset)
                                          : str_Match(&s, &p, &sOffset, &pOffset, step.mode);
        EXPECT_EQ(answer, step.answer) << step.string << " " << step.pattern;
        EXPECT_EQ(Place(string, s, sOffset) + " " + Place(pattern, p, pOffset), step.places)
            << step.string << " " << step.pattern;
    }
}

TEST_F(ScriptedMatch, TheEndIsComparedFromTheEnd)
{
    // clang-format off
    const struct {
        const char *string, *pattern;
        unsigned int offset;
        int answer;
    } rows[] = {
        {"ab/c", "ab_bc", 2, 1}, // the overlap is the caller's to look at
        {"ab/c", "ab_bd", 2, 0}, {"ab/c", "ab_/abc", 2, 1}, {"ab/c", "ab_/xabc", 2, 0},
        {"a/b/c", "bc", 0, 1},   {"a/b/c", "c_", 1, 1},     {"a/b/c", "bc_", 0, 0},
    };
    // clang-format on
    for (const auto &row : rows) {
        const Records string(row.string), pattern(row.pattern);
        unsigned int offset = row.offset;
        EXPECT_EQ(str_EndMatch(string.list.data(), pattern.list.data(), &offset,
                               static_cast<int>(string.list.size())),
                  row.answer)
            << row.string << " " << row.pattern;
        if (row.answer == 0) {
            EXPECT_EQ(offset, row.offset);
        }
    }
}

TEST_F(ScriptedMatch, UsIsSkippedWhereItStands)
{
    for (const auto &[text, expected] :
         {std::pair{"__/_b", " 0.1 1.0 1.1 1.1"}, std::pair{"_", " end end end end"}}) {
        const Records records(text);
        const CSSegment *record = records.list.data();
        unsigned int offset = 0;
        std::string places;
        for (int step = 0; step < 4; ++step) {
            str_SkipUS(&record, &offset);
            places += " " + Place(records, record, offset);
        }
        EXPECT_EQ(places, expected);
    }
}

TEST_F(ScriptedMatch, EquivalenceIsThatOfTheFlags)
{
    const int kinds[] = {kAscii, kOtherAscii, kUniform, kOtherUniform, kForeign, -2};
    const char *const table[] = {"11110.", "11110.", "11100.", "11010.", "00001.", "......"};
    for (size_t i = 0; i < std::size(kinds); ++i)
        for (size_t j = 0; j < std::size(kinds); ++j)
            EXPECT_EQ(str_EquivTypes(kinds[i], kinds[j]), table[i][j] == '1' ? 1 : 0) << i << j;
}

} // namespace
