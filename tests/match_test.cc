// SPDX-License-Identifier: Apache-2.0
//
// Pattern matching of real text beside a slow matcher: what a text says decides, not the escape
// sequences that say it.
#include "tests/support/meaning.h"
#include "tests/support/test.h"

#include <glib.h>

namespace
{

const CSDescriptor kMail = DescriptorOf("ISO-2022-JP");

bool AreEquivalent(uint16_t a, uint16_t b) { return a == b && a != CS_SEG_RAW; }

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
    AddEveryCut(&strings, Texts("abc", 4));
    AddEveryCut(&strings, Texts("ab", 5));
    AddEveryCut(&patterns, Texts(WithUs("ab_"), 4));
    for (const Meaning &pattern : patterns)
        for (const Meaning &string : strings) {
            const char *const s = string.text.c_str(), *const p = pattern.text.c_str();
            const bool matches = string.Matches(pattern, AreEquivalent);
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

// Text of few bytes, so that pieces are often there in part; in two sets, and of none.
TEST(Match, OfLongTextIsThatOfASlowOne)
{
    const char *const pieces[] = {"a", "a", "b", "aab", "\x1B$B", "\x1B(B", "\x1B(B", "\xFF"};
    std::mt19937 random(TestSeed());
    const auto text = [&](size_t most, size_t choice) {
        std::string bytes;
        for (auto left = 1 + random() % most; left > 0; --left)
            bytes += random() % 6 == 0 && most < 10 ? "\x1F" : pieces[random() % choice];
        return bytes;
    };
    int matching = 0;
    for (int round = 0; round < 30'000; ++round) {
        const size_t choice = 1 + random() % std::size(pieces);
        const std::string string = text(90, choice), more = text(9, choice);
        const size_t at = random() % string.size(), size = random() % 20;
        const std::string part = string.substr(at, size);
        const std::string pattern = round % 3 == 0   ? more
                                    : round % 3 == 1 ? "\x1F" + part + "\x1F" + more
                                                     : string.substr(0, at) + "\x1F" + part;
        const Guarded s(string), p(pattern);
        const bool matches = Meaning(string, kMail).Matches(Meaning(pattern, kMail), AreEquivalent);
        ASSERT_EQ(str_USPatternMatch(s.c_str(), p.c_str(), &kMail), matches)
            << testing::PrintToString(string) << testing::PrintToString(pattern);
        matching += matches;
    }
    EXPECT_GT(matching, 3'000);
}

// No byte of a string is looked at for every byte of a piece, so these end soon.
TEST(Match, NearMissesEnd)
{
    const std::string text(1 << 18, 'a'), part(1 << 17, 'a');
    std::string segments;
    for (int i = 0; i < 1 << 18; ++i)
        segments += "a\x1B(B";
    for (const std::string &us : {"_" + part + "b_", "_b" + part + "_", "_a_" + part + "b"}) {
        const std::string pattern = WithUs(us);
        EXPECT_EQ(str_USPatternMatch(text.c_str(), pattern.c_str(), &kMail), 0);
        EXPECT_EQ(str_utf8USPatternMatch(text.c_str(), pattern.c_str()), 0);
        EXPECT_EQ(str_USPatternMatch(segments.c_str(), pattern.c_str(), &kMail), 0);
    }
}

// ---- The steps -----------------------------------------------------------------------------

// A text in segments of ASCII, which / divides, and the position that is after ^.
struct Place {
    std::string text;
    std::vector<CSSegment> list = {};
    const CSSegment *record = nullptr;
    unsigned int offset = 0;

    explicit Place(const std::string &written) : text(WithUs(written))
    {
        const size_t caret = text.find('^');
        text.erase(caret, 1);
        for (size_t at = 0, end; at <= text.size(); at = end + 1) {
            end = std::min(text.find('/', at), text.size());
            list.push_back({text.data() + at, 6, 0, static_cast<uint32_t>(end - at)});
        }
        list.push_back({text.data() + text.size(), CS_SEG_END, 0, 0});
        record = list.data();
        const char *const at = text.data() + caret;
        while (record->text + record->length < at + (record->length != 0))
            ++record;
        offset = static_cast<unsigned int>(std::max<ptrdiff_t>(at - record->text, 0));
    }

    std::string Written() const
    {
        const unsigned int within = record->kind == CS_SEG_END ? 0 : offset;
        std::string written = text;
        std::replace(written.begin(), written.end(), '\x1F', '_');
        return written.insert(static_cast<size_t>(record->text - text.data()) + within, "^");
    }
};

TEST(Match, StepsMoveWhenTheySucceed)
{
    // clang-format off
    const struct {
        char step; // Prefix, Whole, Middle, End, Skip
        const char *string, *pattern;
        int answer;
        const char *stringAfter, *patternAfter;
    } rows[] = {
        {'P', "^abcd", "^ab", 1, "ab^cd", "ab^"},
        {'W', "^abcd", "^ab", 0, "^abcd", "^ab"},
        {'W', "x^abcd", "x^abcd", 1, "xabcd^", "xabcd^"},
        {'P', "a^b/cd", "xx^b/c_d", 1, "ab/c^d", "xxb/c^_d"},
        {'W', "a^b/cd", "xx^b/c_d", 0, "a^b/cd", "xx^b/c_d"},
        {'P', "^a//bc", "^//ab_", 1, "a//b^c", "//ab^_"},
        {'P', "^ab/cd", "^abc/_", 1, "ab/c^d", "abc/^_"},
        {'P', "^abc", "^_d", 1, "^abc", "^_d"},
        {'P', "abc^", "^_d", 0, "abc^", "^_d"},
        {'W', "abc^", "d^", 1, "abc^", "d^"},
        {'M', "^xaxb/c", "^_b_c", 1, "xaxb/^c", "_b_^c"},
        {'M', "^xab/cab", "^_bc/a_b/_d", 1, "xab/cab^", "_bc/a_b/_^d"},
        {'M', "^xab/cab", "^_bc/a_a_d", 0, "^xab/cab", "^_bc/a_a_d"},
        {'M', "^xa//ab", "^_a//b/_", 1, "xa//ab^", "_a//b/_^"},
        {'M', "a^bc", "a^_c", 0, "a^bc", "a_^c"}, // no middle piece, but the US is passed
        {'E', "^ab/c", "ab^_bc", 1, "^ab/c", "ab_bc^"}, // the overlap is the caller's to look at
        {'E', "^ab/c", "ab^_bd", 0, "^ab/c", "ab^_bd"},
        {'E', "^ab/c", "ab^_/xabc", 0, "^ab/c", "ab^_/xabc"},
        {'S', "^_/_b", "^", 0, "_/^_b", "^"},
        {'S', "_/_^b", "^", 0, "_/_^b", "^"},
    };
    // clang-format on
    for (const auto &row : rows) {
        Place s(row.string), p(row.pattern);
        const int count = static_cast<int>(s.list.size());
        const int answer =
            row.step == 'S'   ? (str_SkipUS(&s.record, &s.offset), 0)
            : row.step == 'E' ? str_EndMatch(s.record, p.record, &p.offset, count)
            : row.step == 'M'
                ? str_RepeatMatch(&s.record, &p.record, &s.offset, &p.offset)
                : str_Match(&s.record, &p.record, &s.offset, &p.offset, row.step == 'P');
        EXPECT_EQ(answer, row.answer) << row.string << " " << row.pattern;
        EXPECT_EQ(s.Written(), row.stringAfter);
        EXPECT_TRUE(p.Written() == row.patternAfter || (row.step == 'E' && answer == 1));
    }
}

} // namespace
