// SPDX-License-Identifier: Apache-2.0
//
// Pattern matching of real text beside a slow matcher: what a text says decides, not the escape
// sequences that say it.

#include "tests/passing/services.h"
#include "tests/support/test.h"

#include <glib.h>

namespace
{

const CSDescriptor kMail = DescriptorOf("ISO-2022-JP");

bool AreEquivalent(uint16_t a, uint16_t b)
{
    const auto holdsAscii = [](uint16_t kind) { return kind == 6 || kind == 100 || kind == 126; };
    if (std::max(a, b) >= CS_SEG_IGNORE || a == b || passing::moreFlags == CS_FLAG_ASCII)
        return std::max(a, b) < CS_SEG_IGNORE;
    return passing::moreFlags == CS_FLAG_UNIFORM && std::min(a, b) == 6 && holdsAscii(a) &&
           holdsAscii(b);
}

// A text as it is matched: its bytes with their sets, and a NUL of kind CS_SEG_END.
struct Meaning {
    std::string text;
    std::vector<std::pair<char, uint16_t>> symbols = {};
    bool isOneSegment = false;

    Meaning(const std::string &bytes, const CSDescriptor &cs) : text(bytes)
    {
        int count = 0;
        const CSSegment *const list = ccs_GetRealStrs(&cs, text.c_str(), -1, &count);
        for (int i = 0; i < count; ++i)
            for (unsigned int at = 0; at < list[i].length; ++at)
                symbols.emplace_back(list[i].text[at], list[i].kind);
        isOneSegment = count == 2 && list->length == text.size();
        symbols.emplace_back('\0', CS_SEG_END);
    }

    // Whether each byte of the pattern matches, from the last on.  Of two US in a row the second
    // needs a byte that its set can be compared with, unless both texts are one segment.
    bool Matches(const Meaning &pattern) const
    {
        const auto &s = symbols, &p = pattern.symbols;
        if (text.empty() || pattern.text.empty() || text == pattern.text)
            return text == pattern.text;
        const auto alike = [&](size_t i, size_t j) {
            return AreEquivalent(s[i].second, p[j].second);
        };
        const bool strict = !isOneSegment || !pattern.isOneSegment || !alike(0, 0);
        const size_t end = s.size() - 1;
        std::vector<char> rest(s.size(), 0), row(s.size(), 0); // from which bytes on they match
        rest[end] = 1;
        for (size_t j = p.size() - 1; j-- > 0; rest = row)
            for (size_t i = s.size(); i-- > 0;)
                if (p[j].first != '\x1F')
                    row[i] = i < end && rest[i + 1] && s[i].first == p[j].first && alike(i, j);
                else
                    row[i] = (i < end && row[i + 1]) ||
                             (rest[i] && (!strict || p[j + 1].first != '\x1F' || alike(i, j + 1)));
        return rest[0] != 0 && end > 0 && p.size() > 1;
    }
};

// Every text of up to `most` letters.
std::vector<std::string> Texts(const std::string &letters, size_t most)
{
    std::vector<std::string> texts = {""};
    for (size_t i = 0; i < texts.size(); ++i)
        for (const char letter : texts[i].size() < most ? letters : "")
            texts.push_back(texts[i] + letter);
    return texts;
}

// Divided at every place by a sequence that changes nothing.
void AddEveryCut(std::vector<Meaning> *cuts, const std::vector<std::string> &texts)
{
    for (const std::string &text : texts)
        for (unsigned int places = 0; places < 1U << text.size(); places += 2) {
            std::string cut;
            for (size_t at = 0; at < text.size(); ++at)
                cut += ((places >> at & 1) != 0 ? "\x1B(B" : "") + text.substr(at, 1);
            cuts->emplace_back(cut, kMail);
        }
}

TEST(Match, OfEveryShortTextIsThatOfASlowOneInEveryCut)
{
    std::vector<Meaning> strings, patterns;
    AddEveryCut(&strings, Texts(WithUs("ab_"), 4)); // US is a byte like any other
    AddEveryCut(&strings, Texts("ab", 5));
    AddEveryCut(&patterns, Texts(WithUs("ab_"), 4));
    for (const Meaning &pattern : patterns)
        for (const Meaning &string : strings) {
            const char *const s = string.text.c_str(), *const p = pattern.text.c_str();
            const bool matches = string.Matches(pattern);
            ASSERT_EQ(str_USPatternMatch(s, p, &kMail), matches) << testing::PrintToString(s) << p;
            if (string.isOneSegment && pattern.isOneSegment) {
                ASSERT_EQ(os_USPatternMatch(s, p), matches) << testing::PrintToString(s) << p;
            }
        }
}

TEST(Match, OfUtf8NeedsTextThatIsWellFormed)
{
    const std::vector<std::string> texts = Texts(WithUs("a\xC3\xA9_"), 4);
    const auto isValid = [](const auto &text) {
        return g_utf8_validate(text.c_str(), -1, nullptr);
    };
    for (const std::string &pattern : texts)
        for (const std::string &string : texts)
            ASSERT_EQ(str_utf8USPatternMatch(string.c_str(), pattern.c_str()),
                      pattern == "\x1F" || (os_USPatternMatch(string.c_str(), pattern.c_str()) &&
                                            isValid(string) && isValid(pattern)))
                << testing::PrintToString(string) << testing::PrintToString(pattern);
}

// Text of few bytes, so that pieces are often there in part; in sets that are equivalent or not.
TEST(Match, OfLongTextIsThatOfASlowOne)
{
    const char *const pieces[] = {"a",      "a",      "b",      "aab",    "\x1B)B", "\x1B-A",
                                  "\x1B-F", "\x1B$B", "\x1B(B", "\x1B(B", "\xFF"};
    const CSDescriptor cs = {100, 1};
    std::mt19937 random(TestSeed());
    const auto text = [&](size_t most, size_t choice) {
        std::string bytes;
        for (auto left = 1 + random() % most; left > 0; --left)
            bytes += random() % 6 == 0 && most < 10 ? "\x1F" : pieces[random() % choice];
        return bytes;
    };
    for (const uint32_t flags : {0U, unsigned{CS_FLAG_UNIFORM}, unsigned{CS_FLAG_ASCII}}) {
        passing::moreFlags = flags;
        int matching = 0;
        for (int round = 0; round < 20'000; ++round) {
            const size_t choice = 1 + random() % std::size(pieces);
            const std::string string = text(90, choice), more = text(9, choice);
            const size_t at = random() % string.size();
            const std::string part = string.substr(at, random() % 20);
            const std::string pattern = round % 3 == 0   ? more
                                        : round % 3 == 1 ? "\x1F" + part + "\x1F" + more
                                                         : string.substr(0, at) + "\x1F" + part;
            const Guarded s(string), p(pattern);
            const bool matches = Meaning(string, cs).Matches(Meaning(pattern, cs));
            ASSERT_EQ(str_USPatternMatch(s.c_str(), p.c_str(), &cs), matches)
                << testing::PrintToString(string) << testing::PrintToString(pattern);
            matching += matches;
        }
        EXPECT_GT(matching, 1'000);
    }
    passing::moreFlags = 0;
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

// ---- The steps -----------------------------------------------------------------------------

// A text in segments of ASCII, which / divides, and a position.
struct Place {
    std::string text;
    std::vector<CSSegment> list = {};
    const CSSegment *record = nullptr;
    unsigned int offset = 0;

    Place(const char *written, size_t at) : text(WithUs(written))
    {
        for (size_t begin = 0, end; begin <= text.size(); begin = end + 1) {
            end = std::min(text.find('/', begin), text.size());
            list.push_back({text.data() + begin, 6, 0, static_cast<uint32_t>(end - begin)});
        }
        list.push_back({text.data() + text.size(), CS_SEG_END, 0, 0});
        record = list.data();
        while (record[1].text <= text.data() + at && record->kind != CS_SEG_END)
            ++record;
        offset = static_cast<unsigned int>(text.data() + at - record->text);
    }

    size_t At() const { return static_cast<size_t>(record->text - text.data()) + offset; }
};

TEST(Match, StepsMoveWhenTheySucceed)
{
    // clang-format off
    const struct {
        char step; // Prefix, Whole, Middle, End, Skip
        const char *string, *pattern;
        size_t stringAt, patternAt;
        int answer;
        size_t stringAfter, patternAfter;
    } rows[] = {
        {'W', "abcd", "ab", 0, 0, 0, 0, 0},
        {'W', "xabcd", "xabcd", 1, 1, 1, 5, 5},
        {'P', "ab/cd", "xxb/c_d", 1, 2, 1, 4, 5},
        {'W', "ab/cd", "xxb/c_d", 1, 2, 0, 1, 2},
        {'P', "a//bc", "//ab_", 0, 0, 1, 4, 4},
        {'P', "ab/cd", "abc/_", 0, 0, 1, 4, 4},
        {'P', "abc", "_d", 3, 0, 0, 3, 0},
        {'W', "abc", "d", 3, 1, 1, 3, 1},
        {'M', "xaxb/c", "_b_c", 0, 0, 1, 5, 3},
        {'M', "xab/cab", "_bc/a_b/_d", 0, 0, 1, 7, 9},
        {'M', "xab/cab", "_bc/a_a_d", 0, 0, 0, 0, 0},
        {'M', "abc", "a_c", 1, 1, 0, 1, 2}, // no middle piece, but the US is passed
        {'E', "ab/c", "ab_bc", 4, 2, 1, 4, 0}, // the overlap is the caller's to look at
        {'E', "ab/c", "ab_bd", 0, 2, 0, 0, 2},
        {'E', "ab/c", "ab_/xabc", 0, 2, 0, 0, 2},
        {'S', "_/_b", "", 0, 0, 0, 2, 0},
        {'S', "_/_b", "", 3, 0, 0, 3, 0},
    };
    // clang-format on
    for (const auto &row : rows) {
        Place s(row.string, row.stringAt), p(row.pattern, row.patternAt);
        const int count = static_cast<int>(s.list.size());
        const int answer =
            row.step == 'S'   ? (str_SkipUS(&s.record, &s.offset), 0)
            : row.step == 'E' ? str_EndMatch(s.list.data(), p.record, &p.offset, count)
            : row.step == 'M'
                ? str_RepeatMatch(&s.record, &p.record, &s.offset, &p.offset)
                : str_Match(&s.record, &p.record, &s.offset, &p.offset, row.step == 'P');
        EXPECT_EQ(answer, row.answer) << row.string << " " << row.pattern;
        EXPECT_EQ(s.At(), row.stringAfter) << row.string << " " << row.pattern;
        EXPECT_EQ(p.At(), row.patternAfter) << row.string << " " << row.pattern;
    }
}

} // namespace
