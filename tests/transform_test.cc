// SPDX-License-Identifier: Apache-2.0
//
// Transformation of UTF-8 input, and the string service that it writes to.
#include "tests/support/test.h"

#include <platform/dstring.h>

namespace
{

using std::string_view_literals::operator""sv;

// The slots of bytes inside a character are not to be looked at: reading them ends the test.
const char *const kUnused = reinterpret_cast<const char *>(1);
constexpr char kSpecials[] = "<>\xC3\xA9!";
const char *const kReplacements[] = {"[lt]", "", "e'", kUnused, nullptr};

// Nothing where there is no result.
std::optional<std::string> Transformed(std::string_view input, int maxLen = -1, int prefixMode = 0,
                                       char escChar = '\\', const char *dropChars = "~\xE2\x82\xAC")
{
    const Sinks sinks;
    const Guarded text(input);
    unsigned int outLen = 4711;
    const char *out = str_TransformUTF8InputStr(text.c_str(), maxLen, kSpecials, kReplacements,
                                                dropChars, escChar, prefixMode, &outLen);
    if (out == nullptr) {
        EXPECT_EQ(outLen, 0U);
        return std::nullopt;
    }
    EXPECT_EQ(Sinks::logged, "");
    EXPECT_EQ(out[outLen], '\0');
    return std::string(out, outLen);
}

struct Row {
    std::string_view input, output;
    const char *why;
};

TEST(Transform, AppliesTheFirstRuleThatFits)
{
    // clang-format off
    const Row rows[] = {
        {"a<b>c\xC3\xA9!d\xF0\x9F\x98\x80", "a[lt]bce'd\xF0\x9F\x98\x80", "replacements"},
        {"\\001x\\65z\\x\\\\y", "\x1B" "Ax" "Azx\\y", "escapes"},
        {"\\0\\31\\32\\127", "\x1B@\x1B_ \x7F", "the limits of controls"},
        {"\\300\\999\\256a\\512"sv, "\x2C\xE7\0a\0"sv, "the low eight bits"},
        {"\\0655\\6<", "A5\x1B" "F[lt]", "three digits at most, and what ends them"},
        {"\\\xD9\xA1\xEF\xBC\x92\xE0\xA5\xA9x\xC2\xB2", "\x7Bx\xC2\xB2", "digits of other scripts"},
        {"\\<\\~\\\xC3\xA9\\=", "<~\xC3\xA9=", "taken literally"},
        {"a\\"sv, "a\0"sv, "an escape character at the end"},
        {"a~bc~<d~~a\xE2\x82\xAC\xE6\x97\xA5" "b~", "acdab", "deletion of two, and at the end"},
    };
    const Row prefixed[] = {
        {"(a<b)(c)=x<y", "(a<b)(c)=x[lt]y", "up to the sign"},
        {"x<(<\\1~)y<z", "x[lt](<\\1~)y[lt]z", "between groups the rules apply"},
        {"(a=<)<=(<)", "(a=<)[lt]=([lt])", "a sign in a group is none"},
        {"(((<))<", "(((<)" ")[lt]", "groups do not nest"},
        {"(<)(<)(<)(<)(<)=(<)", "(<)(<)(<)(<)([lt])=([lt])", "four groups"},
        {"(<\\1", "(<\\1", "a group that is not closed"},
        {"~(<)", "[lt])", "a parenthesis that is deleted opens nothing"},
        {"\\((<)\\=<(<)", "((<)=[lt](<)", "... nor one that is escaped"},
    };
    // clang-format on
    for (const Row &row : rows)
        EXPECT_EQ(Transformed(row.input), std::string(row.output)) << row.why;
    for (const Row &row : prefixed)
        EXPECT_EQ(Transformed(row.input, -1, 1), std::string(row.output)) << row.why;
    EXPECT_EQ(Transformed("(a<b)=<"), "(a[lt]b)=[lt]") << "no prefix asked for";
    EXPECT_EQ(Transformed("a\xC3\xA9\\1", -1, 0, '\xE9'), "ae'\\1") << "no ASCII, no escape";
    EXPECT_EQ(Transformed("<1>1", -1, 0, '<'), "[lt]11") << "replaced before it escapes";
    EXPECT_EQ(Transformed("a1b~65", -1, 0, '~'), "a1bA") << "escapes before it deletes";
}

TEST(Transform, TellsEmptyFromNothing)
{
    EXPECT_EQ(Transformed("", -1), "");
    EXPECT_EQ(Transformed("~x", 0), "");
    EXPECT_EQ(Transformed("~x", -1), std::nullopt) << "an input of which nothing is left";
    EXPECT_EQ(Transformed("<b", 0), "[lt]b") << "the limit is that of the validation";
    EXPECT_EQ(Transformed("<b", -7), "[lt]b");
}

TEST(Transform, RefusesAndLogsInvalidInput)
{
    const struct {
        std::string_view input, bad;
        int maxLen;
    } rows[] = {
        {"", "", 5}, {"ab\xC3", "\xC3", -1}, {"a\xFFz", "\xFFz", -1}, {"a\xC3\xA9", "\xC3\xA9", 2}};
    for (const auto &row : rows) {
        EXPECT_EQ(Transformed(row.input, row.maxLen), std::nullopt);
        EXPECT_EQ(Sinks::logged,
                  "24070 str_TransformUTF8InputStr(), Invalid UTF8 in input string: " +
                      std::string(row.bad) + "\n");
    }
}

// After the limit nothing is validated: a byte of no character is one by itself, up to the NUL.
TEST(Transform, TakesBytesOfNoCharacterOneByOne)
{
    EXPECT_EQ(Transformed("a<\xC3<\xE6\x97<\xF0", 1), "a[lt]\xC3[lt]\xE6\x97[lt]\xF0");
    EXPECT_EQ(Transformed("a~\xE6\x97~\xC3", 1), "a\x97") << "deleted with one byte";
    EXPECT_EQ(Transformed("a\\\xE6\x97\\\xF0", 1), "a\xE6\x97\xF0");
    EXPECT_EQ(Transformed("a\xE2\x82", 1), "a\xE2\x82") << "half a character of the set";
    EXPECT_EQ(Transformed("ab\xFF\x82\xE2z\xE2", 1, 0, '\\', "\x82\xE2"), "ab\xFFz")
        << "half a set";
}

TEST(DString, KeepsWhatItHoldsAndItsRoom)
{
    dstring string;
    dstring_init(&string);
    std::string expected;
    for (int i = 0; i < 5000; ++i) {
        dstring_appendChar(&string, static_cast<char>(i));
        dstring_appendN(&string, "abc", 3);
        expected += static_cast<char>(i) + std::string("abc");
    }
    dstring_setLength(&string, 30000); // no more than it has
    EXPECT_EQ(std::string(string.text, string.length + 1), expected + '\0');
    const char *const room = string.text;
    dstring_setLength(&string, 5);
    EXPECT_EQ(std::string(string.text, 6), expected.substr(0, 5) + '\0');
    dstring_set(&string, "xyz", 2);
    EXPECT_STREQ(string.text, "xy");
    dstring_appendN(&string, expected.data(), 19000);
    EXPECT_EQ(string.text, room) << "kept when it shrinks";
    free(string.text);
}

} // namespace
