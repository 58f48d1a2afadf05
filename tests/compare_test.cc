// SPDX-License-Identifier: Apache-2.0
//
// Comparison in the sets of the default services, by the shipped case tables; UTF-8 beside GLib; and
// whether the order of texts is one.
#include "services/services.h"
#include "tests/support/casetable.h"
#include "tests/support/escape.h"
#include "tests/support/guarded.h"
#include "tests/support/random_text.h"
#include "tests/support/text.h"

#include <glib.h>
#include <platform/os.h>
#include <str/case.h>
#include <str/compare.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <utility>
#include <vector>

namespace
{

namespace fs = std::filesystem;

class Comparison : public CaseTableTest
{
  protected:
    Comparison()
    {
        for (const fs::directory_entry &entry : fs::directory_iterator(STR_DATA_DIR "/toupper"))
            if (entry.path().extension() == ".s")
                fs::create_symlink(entry.path(), home.PathOf("toupper") / entry.path().filename());
        ForgetTables();
    }
    ~Comparison() override { ForgetTables(); }

  private:
    static void ForgetTables()
    {
        ReleaseTables();
        char noTable;
        ccs_SetCSTable(-1, &noTable);
    }
};

int Sign(int order) { return (order > 0) - (order < 0); }

// ---- Equality ------------------------------------------------------------------------------

// Which characters or bytes count: all, the first so many characters, so many bytes of each.
struct Extent {
    char unit;
    unsigned int limit1, limit2;
};
constexpr Extent kAll = {'*', 0, 0};

struct Row {
    const char *set1, *s1, *set2, *s2;
    Extent extent;
    bool equalInCase, equal;
    const char *why;
};
// clang-format off
const char kJp[] = "ISO-2022-JP", kL1[] = "ISO-8859-1";
const Row kRows[] = {
    {"IA5", "Hello", "IA5", "hELLO", kAll, false, true, "case"},
    {"IA5", "", "T.61", "", kAll, true, true, "nothing"}, {"IA5", "", "T.61", "\x1B(B", kAll, false, false, "nothing, and what says nothing"},
    {kJp, "A\x1B$B\x23\x61\x1B(BB", kJp, "\x1B(Ba\x1B$B\x1B$B\x23\x41\x1B(J\x1B(Bb", kAll, false, true, "other escapes, full-width letters"},
    {kJp, "\x1B$B\x46\x7C\x4B\x5C\x1B(B", kJp, "\x1B$B\x46\x7C\x1B(B\x1B$B\x4B\x5C", kAll, true, true, "cut elsewhere"},
    {kJp, "\x1B$B$\"$$\x1B(B", "EUC-JP", "\xA4\xA2\xA4\xA4", kAll, false, false, "the bytes of the other half"},
    {kJp, "\x1B$@\x46\x7C\x1B(B", kJp, "\x1B$B\x46\x7C\x1B(B", kAll, false, false, "sets of other numbers"},
    {"IA5", "abc", kL1, "ABC", kAll, false, true, "a set that holds ASCII"}, {"IA5", "abc", "JIS X 0201", "abc", kAll, false, false, "one that does not"},
    {kL1, "\xE9", "ISO-8859-9", "\xE9", kAll, false, false, "two that do"}, {"T.61", "\xF8", "T.61", "\xE8", kAll, false, true, "T.61"},
    {"T.61", "Ren\xC2" "e", "T.61", "REN\xC2" "E", kAll, false, true, "marks"}, {"T.61", "Oslo", kL1, "OSLO", kAll, false, true, "T.61's ASCII"},
    {"IA5", "i", "T.61", "\xF5", kAll, false, false, "a dotless i"}, {"T.61", "\xF5", "IA5", "i", kAll, false, false, "which comes first"},
    {kJp, "\xE9", "EUC-JP", "\xA4", kAll, false, false, "raw bytes"}, {kJp, "\xA4", "EUC-JP", "\xA4", kAll, true, true, "raw bytes"},
    {"T.61", "\xE9", kJp, "\xE9", kAll, false, false, "raw, and a character"},
    {"UTF8", "a", "IA5", "a", kAll, false, false, "UTF-8 with UTF-8 alone"}, {"IA5", "a", "UTF8", "a", kAll, false, false, "UTF-8 with UTF-8 alone"},
    {"UTF8", "a", "IA5", "a", {'b', 1, 1}, true, true, "but for limits"},
    {"UTF8", "\xC3\xA9x", "UTF8", "\xC3\x89", {'c', 1, 1}, false, false, "which know no case of UTF-8"},
    {kJp, "ab", kJp, "xy", {'c', 0, 0}, true, true, "no characters"}, {kJp, "ab", kJp, "ab", {'c', 2, 2}, true, true, "all characters"},
    {kJp, "ab", kJp, "ab", {'c', 3, 3}, false, false, "more than there are"}, {kJp, "", kJp, "", {'c', 3, 3}, true, true, "but for empty ones"},
    {kJp, "", kJp, "a", {'c', 3, 3}, false, false, "an empty one"}, {kJp, "ab", kJp, "ab", {'c', INT_MAX, 0}, false, false, "the greatest limit"},
    {kJp, "ab", kJp, "AB", {'c', INT_MAX + 1U, 0}, false, true, "none"}, {kJp, "ab", kJp, "abc", {'c', UINT_MAX, 0}, false, false, "none"},
    {kJp, "\x1B$B\x23\x61\x46\x7C", kJp, "\x1B$B\x23\x41\x46\x7B", {'c', 1, 1}, false, true, "characters of two bytes"},
    {kJp, "ab", kJp, "xy", {'b', 0, 0}, true, true, "no bytes"}, {kJp, "ab", kJp, "ab", {'b', 0, 1}, false, false, "no bytes of one"},
    {kJp, "", kJp, "a", {'b', 1, 1}, false, false, "an empty one"}, {kJp, "", kJp, "", {'b', 1, 2}, true, true, "two"},
    {kJp, "aX", kJp, "\x1B(Bay", {'b', 1, 4}, true, true, "escapes count as bytes"}, {kJp, "a", kJp, "a\x1B(Bx", {'b', 1, 4}, true, true, "at the end, too"},
    {kJp, "ab", kJp, "ab", {'b', 3, 3}, false, false, "more than there are"}, {kJp, "ab", kJp, "ab", {'b', 2, INT_MAX + 1U}, true, true, "a limit and none"},
    {kJp, "ab", kJp, "ab", {'b', 2, INT_MAX}, false, false, "a limit and the greatest"}, {kJp, "ab", kJp, "AB", {'b', UINT_MAX, UINT_MAX}, false, true, "none"},
    {kJp, "\x1B$B\x46\x7C", kJp, "\x1B$B\x46\x21", {'b', 4, 4}, true, true, "half a character is raw"},
    {kJp, "\x1B$B\x46\x7C", kJp, "\x1B$B\x46\x7C", {'b', 4, 5}, false, false, "half and a whole"},
    {kL1, "ab\xE9", kL1, "AB\xC9x", {'b', 3, 3}, false, true, "plain"}, {kL1, "ab", kL1, "ab", {'b', 2, 3}, false, false, "plain, too short"},
};
// clang-format on

int Compare(const Row &row, int caseless)
{
    const Guarded s1(row.s1), s2(row.s2);
    const CSDescriptor cs1 = DescriptorOf(row.set1), cs2 = DescriptorOf(row.set2);
    const Extent &extent = row.extent;
    if (extent.unit == 'c')
        return str_DoCompareByCharLen(s1.c_str(), s2.c_str(), extent.limit1, caseless, &cs1, &cs2);
    return extent.unit == 'b' ? str_DoCompareByByteLen(s1.c_str(), s2.c_str(), extent.limit1,
                                                       extent.limit2, caseless, &cs1, &cs2)
                              : str_DoCompareToEnd(s1.c_str(), s2.c_str(), caseless, &cs1, &cs2);
}

TEST_F(Comparison, IsOfWhatTextsSay)
{
    for (const Row &row : kRows) {
        EXPECT_EQ(Compare(row, 0), row.equalInCase ? 0 : 1) << row.why;
        EXPECT_EQ(Compare(row, 1), row.equal ? 0 : 1) << row.why;
    }
}

// ---- UTF-8 ---------------------------------------------------------------------------------

std::string Folded(const char *bytes, gssize length)
{
    gchar *const folded = g_utf8_casefold(bytes, length);
    std::string text = folded;
    g_free(folded);
    return text;
}

// Character by character; a byte of none stays.
std::string SlowlyFolded(const std::string &text)
{
    std::string folded;
    for (size_t at = 0, length; at < text.size(); at += length) {
        const auto left = static_cast<gssize>(text.size() - at);
        const gunichar c = g_utf8_get_char_validated(text.data() + at, left);
        const bool isCharacter = static_cast<gint32>(c) >= 0;
        length = isCharacter ? static_cast<size_t>(g_unichar_to_utf8(c, nullptr)) : 1;
        folded += isCharacter ? Folded(text.data() + at, static_cast<gssize>(length))
                              : text.substr(at, 1);
    }
    return folded;
}

// clang-format off
const std::string kPieces[] = {
    "a", "A", "k", "K", "\u212A", "ss", "\u00DF", "\u1E9E", "\u00E9", "\u00C9", "\u0131", "I", "\u0390", "\u03B9\u0308\u0301", "\u1FD3",
    "\u01C5", "\u13A0", "\uAB70", "\u65E5", "\U00010400", "\U00010428", "@", "`", "[", "{", "0123456789abcdefg", "0123456789ABCDEFG",
    "\xC3", "\xA9", "\xE6\x97", "\xF0\x90\x90", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xC0\xAF", "\x80\x80\x80\x80", "\xFF",
};
// clang-format on
constexpr size_t kValidPieces = std::size(kPieces) - 9;

TEST_F(Comparison, FoldsUtf8AsGLibDoes)
{
    std::mt19937 random(4);
    const CSDescriptor utf8 = DescriptorOf("UTF8");
    int equal = 0;
    for (int round = 0; round < 20'000 && !HasFailure(); ++round) {
        const size_t pieces = round % 2 == 0 ? kValidPieces : std::size(kPieces);
        std::string text1, text2;
        for (size_t left = random() % 9; left > 0; --left) {
            text1 += kPieces[random() % pieces];
            const std::string before = text2;
            for (int tries = 0; tries < 40; ++tries) // as often as not, one that makes them alike
                if (SlowlyFolded(text2 = before + kPieces[random() % pieces]) ==
                    SlowlyFolded(text1))
                    break;
        }
        const Guarded guarded1(text1), guarded2(text2);
        const char *const s1 = guarded1.c_str(), *const s2 = guarded2.c_str();
        const bool alike = SlowlyFolded(text1) == SlowlyFolded(text2);
        const std::string why = testing::PrintToString(text1) + " " + testing::PrintToString(text2);
        EXPECT_EQ(str_DoCompareToEnd(s1, s2, 1, &utf8, &utf8) == 0, alike) << why;
        EXPECT_EQ(str_DoCompareToEnd(s2, s1, 1, &utf8, &utf8) == 0, alike) << why;
        EXPECT_EQ(str_DoCompareToEnd(s1, s2, 0, &utf8, &utf8) == 0, text1 == text2) << why;
        if (pieces == kValidPieces) {
            EXPECT_EQ(alike, Folded(s1, -1) == Folded(s2, -1)) << why;
        }
        equal += alike ? 1 : 0;
    }
    EXPECT_GT(equal, 4'000);
    EXPECT_LT(equal, 16'000);
}

TEST_F(Comparison, FoldsEveryCharacter)
{
    const CSDescriptor utf8 = DescriptorOf("UTF8");
    for (gunichar c = 1; c < 0x110000; ++c) {
        char text[7] = {}, upper[7] = {};
        g_unichar_to_utf8(c, text);
        g_unichar_to_utf8(g_unichar_toupper(c), upper);
        if (!g_unichar_validate(c) || std::string(text) == upper)
            continue;
        const std::string folded = Folded(text, -1);
        for (const std::string &other : {std::string(upper), folded, folded + "x"})
            ASSERT_EQ(str_strucasecmp(text, other.c_str(), &utf8) == 0,
                      folded == Folded(other.c_str(), -1))
                << c << other;
    }
}

// Every pair of characters whose low bits are the same, as a cache of them would go by those.
TEST_F(Comparison, TellsFoldedCharactersApart)
{
    const CSDescriptor utf8 = DescriptorOf("UTF8");
    std::vector<std::pair<std::string, std::string>> sample; // characters and their folded forms
    for (gunichar c = 'A'; c < 0x30000; c += 512) {
        char text[7] = {};
        g_unichar_to_utf8(c, text);
        if (g_unichar_validate(c))
            sample.emplace_back(text, Folded(text, -1));
    }
    for (const auto &[text1, folded1] : sample)
        for (const auto &[text2, folded2] : sample)
            ASSERT_EQ(str_strucasecmp(text1.c_str(), text2.c_str(), &utf8) == 0, folded1 == folded2)
                << text1 << text2;
}

// ---- Order ---------------------------------------------------------------------------------

struct Order {
    const char *set1, *s1, *set2, *s2;
    int caseless, order;
    const char *why;
};
// clang-format off
const Order kOrders[] = {
    {"IA5", "", "IA5", "", 0, 0, "nothing"}, {"IA5", "", "IA5", "a", 0, -1, "nothing first"}, {"IA5", "ab", "IA5", "abc", 1, -1, "a beginning"},
    {kJp, "\x1B$B\x46\x7C\x1B(B", kJp, "\x1B$B\x46\x7C\x46\x7C", 0, -1, "a beginning"}, {kJp, "\x1B(B", kJp, "", 0, 1, "an escape is not nothing"},
    {kJp, "\x1B(Ba", kJp, "a\x1B(B", 0, 0, "escapes"}, {"IA5", "abc", "IA5", "ABC", 1, 0, "case"}, {"IA5", "a", "IA5", "B", 0, 1, "in case"}, {"IA5", "a", "IA5", "B", 1, -1, "in upper case"},
    {kL1, "\xC0", kL1, "A", 0, 1, "unsigned"}, {kL1, "\xC0", kL1, "A", 1, -1, "signed"}, {kL1, "\xE0", kL1, "\xC1", 1, -1, "signed"},
    {"EUC-JP", "\xA4\xA2", "EUC-JP", "z", 1, 1, "sets of bytes first"}, {kL1, "a", "ISO-8859-2", "A", 1, -1, "the final byte"},
    {"ISO-8859-2", "a", "ISO-8859-1", "b", 0, 1, "the final byte"}, {"ISO-8859-2 RIGHT HALF", "a", "ISO-8859-1 RIGHT HALF", "b", 0, 1, "the number"},
    {"EUC-JP", "\x8E\xB1", "EUC-JP", "\xA4\xA2", 1, -1, "sets of bytes first"}, {kJp, "\xFF", "KS X 1001", "\x21\x21", 1, -1, "raw bytes have no final byte"},
};
// clang-format on

TEST_F(Comparison, OrdersTexts)
{
    for (const Order &row : kOrders) {
        const Guarded s1(row.s1), s2(row.s2);
        const CSDescriptor cs1 = DescriptorOf(row.set1), cs2 = DescriptorOf(row.set2);
        const auto order = [&](auto a, auto b, auto csA, auto csB) {
            return Sign(str_cmpTextStr(a, b, row.caseless, csA, csB));
        };
        EXPECT_EQ(order(s1.c_str(), s2.c_str(), &cs1, &cs2), row.order) << row.why;
        EXPECT_EQ(order(s2.c_str(), s1.c_str(), &cs2, &cs1), -row.order) << row.why;
    }
}

std::vector<const char *> SetNames()
{
    std::vector<const char *> names;
    ccs_SetInfo set;
    for (int i = 0; ccs_GetSetInfo(i, &set) != 0; ++i)
        names.push_back(set.name);
    return names;
}

// Of one set, without escape sequences.
TEST_F(Comparison, PutsTextsInOrder)
{
    std::mt19937 random(6);
    for (const char *set : SetNames())
        for (const int caseless : {0, 1}) {
            const CSDescriptor cs = {DescriptorOf(set).csNum, 0};
            std::vector<std::string> texts(60);
            for (std::string &text : texts)
                text = RandomText(random, 5);
            const auto order = [&](const std::string &a, const std::string &b) {
                return str_cmpTextStr(a.c_str(), b.c_str(), caseless, &cs, &cs);
            };
            std::stable_sort(texts.begin(), texts.end(),
                             [&](const auto &a, const auto &b) { return order(a, b) < 0; });
            for (size_t i = 0; i < texts.size(); ++i)
                for (size_t j = 0; j < texts.size(); ++j)
                    ASSERT_TRUE(Sign(order(texts[i], texts[j])) ==
                                    -Sign(order(texts[j], texts[i])) &&
                                (i >= j || order(texts[i], texts[j]) <= 0))
                        << set << testing::PrintToString(texts[i])
                        << testing::PrintToString(texts[j]);
        }
}

// Of two sets, with all that they may hold.
TEST_F(Comparison, DoesNotGoByWhichTextIsFirst)
{
    std::mt19937 random(7);
    for (const char *set1 : SetNames())
        for (const char *set2 : SetNames()) {
            const CSDescriptor cs1 = DescriptorOf(set1), cs2 = DescriptorOf(set2);
            for (int round = 0; round < 20; ++round) {
                const std::string a = RandomText(random, 5), b = RandomText(random, 5);
                const std::string why =
                    set1 + testing::PrintToString(a) + set2 + testing::PrintToString(b);
                EXPECT_EQ(Sign(str_cmpTextStr(a.c_str(), b.c_str(), 0, &cs1, &cs2)),
                          -Sign(str_cmpTextStr(b.c_str(), a.c_str(), 0, &cs2, &cs1)))
                    << why;
                EXPECT_EQ(str_strcmp3(a.c_str(), b.c_str(), &cs1, &cs2) == 0,
                          str_strcmp3(b.c_str(), a.c_str(), &cs2, &cs1) == 0)
                    << why;
                if (set1 != set2 && a != "" && b != "" && cs1.csNum != 196 && cs2.csNum != 196) {
                    EXPECT_EQ(str_cmpTextStr(a.c_str(), b.c_str(), 1, &cs1, &cs2) == 0,
                              str_strucasecmp3(a.c_str(), b.c_str(), &cs1, &cs2) == 0)
                        << why;
                }
            }
        }
}

// ---- O/R names -----------------------------------------------------------------------------

const std::string kLong(70'000, 'x');
const std::string k254 = kLong.substr(0, 254);
constexpr char kBoth[] = "C=GB; S=Mueller; S=M\xC8uller; O=x";

struct Names {
    std::string name1, name2;
    const char *charset;
    int any;
    const char *attributes;
    int order;
    const char *why;
};
// clang-format off
const Names kNames[] = {
    {"S=a", "S=b", "T.61", 0, "", 0, "no attributes"}, {"S=a; C=gb", "/C=GB/S=A/", "T.61", 0, "C,S", 0, "form and case"},
    {"C=GB; S=b; G=c", "C=GB; S=a; G=d", "T.61", 0, "C,S,G", 1, "the first difference"}, {"C=GB", "C=DE", "T.61", 0, "S,c,", 1, "a comma at the end"},
    {"S=a; G=b", "S=a; G=c", "T.61", 0, "S,S, ,S,G", -1, "attributes named again, and none"},
    {"C=GB", "C=GB; S=x", "T.61", 0, "G,S,C", -1, "not there"}, {"C=GB; S=\"\"", "C=GB", "T.61", 0, "S", 0, "empty and not there"},
    {"C=GB", "C=DE", "T.61", 0, "CN,XYZ", 0, "unknown attributes"}, {"C=GB", "C=DE", "T.61", 0, "CN,XYZ,C", 1, "unknown attributes, and one"},
    {kBoth, "S=M\xC8ULLER", "T.61", 0, "S", 0, "the T.61 form"}, {kBoth, "S=MUELLER; S=M\xC8iller", "IA5", 0, "S", 0, "not in that set"},
    {kBoth, "S=M\xC3\xBCller", "UTF8", 0, "S", -1, "of one name only"}, {"S=M\xC3\xBCller", "S=M\xC3\xBCller", "UTF8", 0, "S", 0, "UTF-8"},
    {"S=\xE9", "S=M\xC3\xBCller", "IA5", 0, "S", 0, "no plain form"}, {"S=\xE9", "S=\xC3\xA9", nullptr, 1, "S", 1, "any set"}, {"S=\xE9", "S=\xE9", nullptr, 1, "S", 0, "any set"},
    {"DDA:x=\xE9", "DDA:X=\xE8", nullptr, 1, "DDT1", 0, "pairs"}, {"DDA:x=\xF3", "DDA:x=\xE2", nullptr, 1, "DDT1,DDV1", 0, "pairs in T.61"},
    {"S=a; C=DE; ???; G=x", "S=a; G=y", "T.61", 0, "S,C", 1, "before the fault"}, {"S=a; C=DE; ???; G=x", "S=a; C=DE; G=y", "T.61", 0, "S,G", -1, "behind it"},
    {"S=\"a; G=b", "S=a; G=b", "T.61", 0, "S", -1, "a quote that does not end"}, {"/S=a", "S=A", "T.61", 0, "S", 0, "no slash at the end"},
    {"S=\x1B", "S=\x1B$B", nullptr, 1, "S", 0, "escapes cut off"},
    {"S=" + k254 + "a", "S=" + k254 + "b", "T.61", 0, "S", -1, "byte 255 counts"}, {"S=x" + k254 + "a", "S=x" + k254 + "b", "T.61", 0, "S", 0, "byte 256 does not"},
    {"S=x" + k254, "S=" + kLong, "T.61", 0, "S", 0, "nor does what comes then"}, {"S=" + kLong, "S=" + k254, "T.61", 0, "S", 1, "long and short"},
};
// clang-format on

TEST_F(Comparison, OrdersORNamesByTheirAttributes)
{
    for (const Names &row : kNames) {
        const Guarded name1(row.name1), name2(row.name2), attributes(row.attributes);
        const auto order = [&](const Guarded &a, const Guarded &b) {
            return Sign(
                str_cmpORName(a.c_str(), b.c_str(), row.charset, row.any, attributes.c_str()));
        };
        EXPECT_EQ(order(name1, name2), row.order) << row.why;
        EXPECT_EQ(order(name2, name1), -row.order) << row.why;
    }
}

TEST_F(Comparison, CountsTextsOf2GiBToTheirEnds)
{
    if (sizeof(size_t) == 4)
        GTEST_SKIP() << "no room for them";
    const LongText text(size_t{INT32_MAX} + 100);
    const CSDescriptor latin1 = DescriptorOf("ISO-8859-1");
    EXPECT_EQ(str_strucasecmp(text.c_str(), text.c_str() + 1, &latin1), 1);
    int length = 4711;
    EXPECT_EQ(Escaped([&] { str_ToUpper(text.c_str(), -1, &length, &latin1); }), OS_ESC_MEMORY);
    EXPECT_EQ(length, 4711);
}

} // namespace
