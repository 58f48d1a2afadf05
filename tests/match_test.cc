// SPDX-License-Identifier: Apache-2.0
//
// Pattern matching of real text: what a text says decides, not the escape sequences that say it.
#include "tests/support/guarded.h"
#include "tests/support/samples.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <platform/os.h>
#include <str/str.h>

namespace
{

int Match(const char *set, std::string_view string, std::string_view pattern)
{
    const CSDescriptor cs = DescriptorOf(set);
    const Guarded text(string), wanted(pattern);
    return str_USPatternMatch(text.c_str(), wanted.c_str(), &cs);
}

TEST(Match, ReadsTextsInTheirSets)
{
    // clang-format off
    const struct {
        const char *set, *string, *pattern;
        int answer;
        const char *why;
    } rows[] = {
        {"ISO-2022-JP", "A\x1B$B$\"$$\x1B(BB", "A_B", 1, "between two escapes"},
        {"ISO-2022-JP", "A\x1B$B$\"$$\x1B(BB", "_\x1B$B$$\x1B(BB", 1, "a tail in two sets"},
        {"ISO-2022-JP", "A\x1B$B$\"$$\x1B(BB", "_\x1B$B$\"_\x1B(BB", 1, "a US in the other set"},
        {"ISO-2022-JP", "A\x1B$B$\"$$\x1B(BB", "_$$_", 0, "the same bytes in ASCII"},
        {"ISO-2022-JP", "A\x1B$B$\"$$\x1B(BB", "A\x1B$B$\"\x1B(B\x1B$B$$\x1B(BB", 1, "more escapes"},
        {"ISO-2022-JP", "A\x1B$B$\"\x1B(B", "A\x1B$@$\"\x1B(B", 0, "an earlier edition of the set"},
        {"ISO-2022-JP", "\x1B(J\\1", "\\_", 0, "a yen sign is no backslash"},
        {"EUC-JP", "a\xC6\xFC\x8E\xB6.", "_\xB6.", 0, "half a shifted character"},
        {"EUC-JP", "a\xC6\xFC\xC6", "a_\xC6", 0, "a raw tail"},
        {"EUC-JP", "a\xC6\xFC\xC6", "a_", 1, "... under a US"},
        {"T.61", "e\xC2" "e\x1B$B\x46\x7C", "e_\x1B$B\x46\x7C", 1, "escapes in T.61"},
        {"T.61", "e\xC2" "e\x1B$B\x46\x7C", "_\x46\x7C", 0, "... that the pattern lacks"},
        {"ISO-8859-1", "na\xEFve", "na\xEF_", 1, "one segment"},
        {"ISO-8859-1", "na\xEFve", "NA_", 0, "case"},
    };
    // clang-format on
    for (const auto &row : rows)
        EXPECT_EQ(Match(row.set, row.string, WithUs(row.pattern)), row.answer)
            << row.set << ": " << row.why;
    // Every sample matches itself with a US at either end, though its segments are not the same.
    for (const Sample &sample : kSamples) {
        const std::string bytes(sample.bytes);
        EXPECT_EQ(Match(sample.set, bytes, WithUs("_") + bytes), 1) << bytes;
        EXPECT_EQ(Match(sample.set, bytes, bytes + WithUs("_")), 1) << bytes;
        EXPECT_EQ(Match(sample.set, bytes + "x", WithUs("_") + bytes), 0) << bytes;
    }
}

TEST(Match, Utf8IsMatchedWhereItIsWellFormed)
{
    // clang-format off
    const struct {
        std::string_view string, pattern;
        int answer;
        const char *why;
    } rows[] = {
        {"caf\xC3\xA9 \xE6\x97\xA5", "caf\xC3\xA9_", 1, "a head"},
        {"caf\xC3\xA9 \xE6\x97\xA5", "_\xE6\x97\xA5", 1, "a tail"},
        {"abc\xC3\xA9\xC3", "abc_", 0, "invalid behind the head"},
        {"abc\xC3\xA9", "abc_\xA9", 0, "half a character in the pattern"},
        {"\xE6\x97", "\xE6\x97", 0, "cut off by the NUL, though the same"},
        {"\xED\xA0\x80", "__", 0, "a surrogate under two US"},
        {"\xFF", "_", 1, "a lone US asks nothing"},
        {"", "_", 1, "... not even for a byte"},
        {"\xFF", "a", 0, "different first bytes"},
        {"\xC3\x1F", "\xC3_", 0, "a lead byte before US"},
    };
    // clang-format on
    for (const auto &row : rows) {
        const Guarded text(row.string), pattern(WithUs(std::string(row.pattern)));
        EXPECT_EQ(str_utf8USPatternMatch(text.c_str(), pattern.c_str()), row.answer) << row.why;
    }
}

// No byte of a string is looked at for every byte of a piece, so these end soon.
TEST(Match, NearMissesEnd)
{
    const std::string text(1 << 18, 'a'), part(1 << 17, 'a');
    std::string segments;
    for (int i = 0; i < 1 << 18; ++i)
        segments += "a\x1B(B";
    for (const std::string &pattern : {"_" + part + "b_", "_b" + part + "_", "_a_" + part + "b"}) {
        EXPECT_EQ(Match("IA5", text, WithUs(pattern)), 0);
        EXPECT_EQ(str_utf8USPatternMatch(text.c_str(), WithUs(pattern).c_str()), 0);
        EXPECT_EQ(Match("ISO-2022-JP", segments, WithUs(pattern)), 0);
    }
    EXPECT_EQ(Match("IA5", text, WithUs("_" + part + part + "_")), 1);
}

} // namespace
