// SPDX-License-Identifier: Apache-2.0
//
// The universal set in upper case, through the default conversion service.
#include "tests/support/test.h"

#include <platform/cvc.h>

#include <thread>

namespace
{

struct Conversion {
    const char *from, *to;
    std::string in;
    std::optional<std::string> out; // nothing: there is none
    const char *why;
};

// clang-format off
const Conversion kConversions[] = {
    {"UCS2", "UCS2UP", "\0a\0\xE9"s, "\0A\0\xC9"s, "the more significant byte first"},
    {"UCS2", "UCS2UP", "\x03\x45\x03\x01"s, "\x03\x01\x03\x99"s, "a mark that goes before"},
    {"UCS2", "UCS2UP", "\x03\x45"s, "\x03\x99"s, "... but not that of the text before"},
    {"UCS2", "UCS2,8", "\xD8\x3D\xDE\x00"s, "\xF0\x9F\x98\x80", "a pair is one character"},
    {"UCS2", "UCS2UP,7", "\0a\0\xE9"s, "A+AMk-", "from form to form"},
    {"UCS2,7", "UCS2UP,7", "caf+AOk- +AGE- a+-b", "CAF+AMk A A+-B", "one spelling"},
    {"UCS2,8", "UCS2UP,8", "stra\xC3\x9F" "e \xEA\xAD\xB0", "STRASSE \xE1\x8E\xA0", "as GLib does"},
    {"UCS2,8", "EUC-JP", "\xE6\x97\xA5", "\xC6\xFC", "a set of the table"},
    {"UCS2,8", "ISO-8859-1", "\xE6\x97\xA5", {}, "not in the target"},
    {"UCS2,8", "UCS2,8", "\xED\xA0\x80", {}, "a surrogate"},
    {"UCS2", "UCS2,8", "\0a\xD8\x01"s, {}, "half a pair at the end"},
    {"UCS2,7", "UCS2,8", "abc+!", {}, "nothing after the plus"},
    {"UCS2,7", "UCS2,8", "+AGEAYg++!", "ab\u0FBE!", "plus signs that are coded text"},
    {"UCS2,7", "UCS2,8", "+AG", {}, "half a character"},
    {"UCS2,7", "UCS2,8", "+2AA", {}, "half a pair"},
    {"UCS2,7", "UCS2,8", "+AAA-a", {}, "a NUL that is written down"},
    {"UCS2UP", "UCS2", "\0A"s, {}, "upper case is a target only"},
    {"UCS2,8", "JIS X 0201", "a", {}, "no name for iconv"},
    {"UCS2,9", "UCS2,8", "a", {}, "no such set"},
};
// clang-format on

std::optional<std::string> Convert(const char *in, int length, const char *from, const char *to)
{
    char *result = nullptr;
    int bytes = -1, details[3];
    const int answer = cvc_ConvertString(CVC_REQUEST_TEXT, CVC_OPTIONS_NONE, in, length, from, to,
                                         &result, &bytes, &details[0], &details[1], &details[2]);
    EXPECT_EQ(answer == 0, result != nullptr);
    EXPECT_TRUE(result != nullptr || bytes == 0);
    return result == nullptr ? std::optional<std::string>() : std::string(result, result + bytes);
}

TEST(Conversion, GoesByTheForms)
{
    for (const Conversion &row : kConversions) {
        // Two NULs end a text of any form.
        const Guarded text(row.in + '\0');
        const auto length = static_cast<int>(row.in.size());
        EXPECT_EQ(Convert(text.c_str(), -1, row.from, row.to), row.out) << row.why;
        EXPECT_EQ(Convert(text.c_str(), length, row.from, row.to), row.out) << row.why;
        EXPECT_EQ(Convert(text.c_str(), INT_MAX, row.from, row.to), row.out) << row.why;
    }
    EXPECT_EQ(Convert("\0a\0b", 3, "UCS2", "UCS2,8"), std::nullopt) << "half a character";
    EXPECT_EQ(Convert("abc", 2, "UCS2,8", "UCS2"), "\0a\0b"s) << "a limit";
    EXPECT_EQ(Convert("abc", 0, "UCS2,8", "UCS2"), "");
    EXPECT_EQ(Convert("\u0345\u0301", 2, "UCS2,8", "UCS2UP,8"), "\u0399") << "for marks too";
    EXPECT_EQ(Convert(nullptr, -1, "UCS2,8", "UCS2"), std::nullopt);
}

TEST(Conversion, ResultsAreTheThreadsAndMayBeTerminated)
{
    int length = 0;
    char *mine = str_ToUpperUni("ab", -1, &length, 4);
    std::thread([] { EXPECT_EQ(Convert("cd", -1, "UCS2,8", "UCS2UP,8"), "CD"); }).join();
    EXPECT_STREQ(mine, "AB");
    mine[length] = 'x'; // one byte is the caller's
    const std::string big(100'000, 'a');
    EXPECT_EQ(std::string(str_ToUpperUni(big.c_str(), -1, &length, 4)), std::string(100'000, 'A'));
}

TEST(UnicodeComparison, IsCaseBlind)
{
    EXPECT_EQ(str_strcasecmpUni("stra\xC3\x9F\x65", "STRASSE", 4), 0);
    EXPECT_LT(str_strcasecmpUni(nullptr, "a", 4), 0);
    EXPECT_GT(str_strcasecmpUni("a", nullptr, 4), 0);
    EXPECT_GT(str_strcasecmpUni("\xE9", "\xC9", 4), 0) << "malformed, so byte by byte";
    EXPECT_LT(str_strcasecmpUni("\x04\x30\0\0", "\x04\x31\0\0", 7), 0);
}

} // namespace
