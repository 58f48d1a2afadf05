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

const std::string kComplaint = "24070 str_TransformUTF8InputStr(), Invalid UTF8 in input string: ";

struct Row {
    const char *why;
    std::string_view input;
    std::optional<std::string_view> output; // nothing: there is none
    int maxLen = -1, prefixMode = 0;
    char escChar = '\\';
    const char *bad = nullptr; // what is logged
    const char *dropChars = "~\xE2\x82\xAC";
};

// clang-format off
const Row kRows[] = {
    {"replacements", "a<b>c\xC3\xA9!d\xF0\x9F\x98\x80", "a[lt]bce'd\xF0\x9F\x98\x80"},
    {"escapes, of three digits at most", "\\0655\\6<\\65z\\x\\\\y", "A5\x1B" "F[lt]Azx\\y"},
    {"the limits of controls", "\\0\\31\\32\\127", "\x1B@\x1B_ \x7F"},
    {"the low eight bits", "\\300\\999\\256a\\512", "\x2C\xE7\0a\0"sv},
    {"digits of other scripts", "\\\xD9\xA1\xEF\xBC\x92\xE0\xA5\xA9x\xC2\xB2", "\x7Bx\xC2\xB2"},
    {"taken literally", "\\<\\~\\\xC3\xA9\\=", "<~\xC3\xA9="},
    {"an escape character at the end", "a\\", "a\0"sv},
    {"deletion of two, and at the end", "a~bc~<d~~a\xE2\x82\xAC\xE6\x97\xA5" "b~", "acdab"},
    {"a group before the sign", "<(a=<\\1~)y<=(<)", "[lt](a=<\\1~)y[lt]=([lt])", -1, 1},
    {"groups do not nest", "(((<))<", "(((<)" ")[lt]", -1, 1},
    {"four groups", "(<)(<)(<)(<)(<)=(<)", "(<)(<)(<)(<)([lt])=([lt])", -1, 1},
    {"a group that is not closed", "(<\\1", "(<\\1", -1, 1},
    {"a parenthesis that is deleted", "~(<)", "[lt])", -1, 1},
    {"... or escaped", "\\((<)\\=<(<)", "((<)=[lt](<)", -1, 1},
    {"no prefix asked for", "(a<b)=<", "(a[lt]b)=[lt]"},
    {"not ASCII, so no escape", "a\xC3\xA9\\1", "ae'\\1", -1, 0, '\xE9'},
    {"replaced before it escapes", "<1>1", "[lt]11", -1, 0, '<'},
    {"escapes before it deletes", "a1b~65", "a1bA", -1, 0, '~'},
    {"nothing to do", "", ""},
    {"nothing is left", "~x", {}},
    {"... of a limit of 0", "~x", "", 0},
    {"the limit is that of the validation", "<b", "[lt]b", 0},
    {"a NUL before the limit", "", {}, 5, 0, '\\', ""},
    {"malformed", "a\xFFz", {}, -1, 0, '\\', "\xFFz"},
    {"the limit cuts it off", "a\xC3\xA9", {}, 2, 0, '\\', "\xC3\xA9"},
    // After the limit nothing is validated: each malformed byte is a character, up to the NUL.
    {"malformed", "a<\xC3<\xE6\x97<\xF0", "a[lt]\xC3[lt]\xE6\x97[lt]\xF0", 1},
    {"deleted with one byte", "a~\xE6\x97~\xC3", "a\x97", 1},
    {"escaped", "a\\\xE6\x97\\\xF0", "a\xE6\x97\xF0", 1},
    {"half a character of the set", "a\xE2\x82", "a\xE2\x82", 1},
    {"half a set", "ab\xFF\x82\xE2z\xE2", "ab\xFFz", 1, 0, '\\', nullptr, "\x82\xE2"},
};
// clang-format on

TEST(Transform, AppliesTheFirstRuleThatFits)
{
    for (const Row &row : kRows) {
        SCOPED_TRACE(row.why);
        const Sinks sinks;
        const Guarded text(row.input);
        unsigned int length = 4711;
        const char *out =
            str_TransformUTF8InputStr(text.c_str(), row.maxLen, kSpecials, kReplacements,
                                      row.dropChars, row.escChar, row.prefixMode, &length);
        ASSERT_EQ(out != nullptr, row.output.has_value());
        EXPECT_EQ(std::string(out == nullptr ? "" : out, length + (out != nullptr)),
                  row.output ? std::string(*row.output) + '\0' : "");
        EXPECT_EQ(Sinks::logged, row.bad == nullptr ? "" : kComplaint + row.bad + "\n");
    }
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
