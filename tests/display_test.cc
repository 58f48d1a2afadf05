// SPDX-License-Identifier: Apache-2.0
//
// Display width on real sets.
#include "tests/support/guarded.h"
#include "tests/support/text.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <str/str.h>

#include <random>

namespace
{

TEST(DispStrLen, CountsColumns)
{
    const struct {
        const char *set;
        std::string_view bytes;
        unsigned int columns;
        const char *why;
    } rows[] = {
        {"ISO-2022-JP", "", 0, "an empty text"},
        {"ISO-8859-1", "", 0, "... on the quick path"},
        {"UTF8", "", 0, "... of UTF-8"},
        {"ISO-8859-1", "a\tb\x7F", 4, "on the quick path every byte counts"},
        {"T.61", "a\nb", 2, "walked, a line feed has no width"},
        {"T.61", "a\x7F b", 3, "nor has DEL, but a space has"},
        {"T.61", "\x1B[1mbold\x1B[m", 4, "control sequences have none"},
        {"T.61", "\xC8u\xC2", 2, "a raw byte has one, whatever it is"},
        {"EUC-JP", "\xB0\xA1\x8E\xB1\x8F\xB0\xA1", 3, "a character is one, of any length"},
        {"ISO-2022-JP", "\x1B$B$\"\n$\"", 2, "a control between two characters"},
        {"UTF8", "\xC3\xA9\x1B", 2, "UTF-8 counts controls and ESC"},
    };
    for (const auto &row : rows) {
        const Guarded text(row.bytes);
        const CSDescriptor cs = DescriptorOf(row.set);
        EXPECT_EQ(str_dispstrlen(text.c_str(), &cs), row.columns) << row.why;
    }
}

TEST(Utf8DispStrLen, CountsCharacters)
{
    const struct {
        std::string_view bytes;
        int maxLen, countEsc, characters;
        const char *why;
    } rows[] = {
        {"\x1B[1mx\x1B[m", -1, 0, 6, "without its ESC bytes"},
        {"\x1B[1mx\x1B[m", 2, 0, 0, "all of them, beyond the limit too"},
        {"a\xC3", -1, 1, 2, "cut off by the NUL: a unit"},
        {"a\xE6\x97", -1, 1, 3, "... each of its bytes"},
        {"\xE6\x97z", -1, 1, 3, "broken by ASCII"},
        {"\xED\xA0\x80\xC0\x80\xFE", -1, 1, 6, "never part of a character"},
        {"z\xF8\x88", 2, 1, 2, "no character begins so, whatever the limit cuts"},
        {"\xE0\x80", 2, 1, 2, "... nor so: overlong"},
        {"\xED\xA0", 2, 1, 2, "... a surrogate"},
        {"\xF0\x80\x80", 3, 1, 3, "... overlong"},
        {"\xF4\x90", 2, 1, 2, "... beyond U+10FFFF"},
        {"\xED\x9F\xBF", 2, 1, 0, "but so: cut off"},
        {"\x97\xE6\x97\xA5", 4, 1, 2, "malformed, then well-formed"},
    };
    for (const auto &row : rows) {
        const Guarded text(row.bytes);
        EXPECT_EQ(str_utf8DispStrLen(text.c_str(), row.maxLen, row.countEsc), row.characters)
            << row.why;
    }
}

// On text that is well-formed the answer is GLib's, at every limit.
TEST(Utf8DispStrLen, IsGLibsOnWellFormedText)
{
    std::mt19937 random(8);
    const char32_t limits[] = {0x7F, 0x7FF, 0xD7FF, 0x10FFFF};
    for (int round = 0; round < 2000; ++round) {
        std::string bytes;
        for (auto i = random() % 12; i > 0; --i) {
            const auto c = static_cast<gunichar>(1 + random() % limits[random() % 4]);
            char buffer[6];
            const int length = g_unichar_to_utf8(g_unichar_validate(c) ? c : 'x', buffer);
            bytes.append(buffer, static_cast<size_t>(length));
        }
        const Guarded text(bytes);
        for (int maxLen = -1; maxLen <= static_cast<int>(bytes.size()) + 1; ++maxLen)
            ASSERT_EQ(str_utf8DispStrLen(text.c_str(), maxLen, 1),
                      g_utf8_strlen(text.c_str(), maxLen))
                << testing::PrintToString(bytes) << " " << maxLen;
    }
}

} // namespace
