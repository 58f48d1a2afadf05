// SPDX-License-Identifier: Apache-2.0
//
// Truncation, splitting and concatenation of real text: what is cut and joined reads as before,
// for iconv too, at every budget.
#include "tests/support/guarded.h"
#include "tests/support/random_text.h"
#include "tests/support/samples.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <platform/ccs.h>
#include <str/str.h>

#include <algorithm>
#include <climits>
#include <vector>

namespace
{

using namespace std::string_view_literals;

// What a text says: its bytes by kind, however many segments and escapes they are spread over.
using Content = std::vector<std::pair<uint16_t, std::string>>;

void Add(Content &content, uint16_t kind, const std::string &bytes)
{
    if (!content.empty() && content.back().first == kind)
        content.back().second += bytes;
    else if (!bytes.empty())
        content.emplace_back(kind, bytes);
}

Content ContentOf(const CSDescriptor &cs, const std::string &text)
{
    Content content;
    int count = 0;
    const CSSegment *list = ccs_GetRealStrs(&cs, text.c_str(), -1, &count);
    for (int i = 0; i < count - 1; ++i)
        Add(content, list[i].kind, std::string(list[i].text, list[i].length));
    return content;
}

Content Joined(Content content, const Content &more)
{
    for (const auto &[kind, bytes] : more)
        Add(content, kind, bytes);
    return content;
}

// Bad text may read otherwise when it is cut behind a malformed sequence, of which only the first
// byte is ignored, in what would have been its rest.
bool IsGood(const CSDescriptor &cs, const std::string &text)
{
    int count = 0;
    const CSSegment *list = ccs_GetAllStrs(&cs, text.c_str(), -1, &count);
    return std::none_of(list, list + count - 1, [](const CSSegment &segment) {
        const char first = *segment.text;
        const bool lone = segment.length == 1 && (first == '\x1B' || first == '\x9B');
        return segment.kind == CS_SEG_IGNORE && lone;
    });
}

bool IsPlain(const CSDescriptor &cs)
{
    return (ccs_GetCSFlags(&cs) & (CS_FLAG_BYTE | CS_FLAG_T61)) == CS_FLAG_BYTE;
}

// The longest front part of at most n bytes that iconv reads as characters, none of them cut.
unsigned int LongestReadable(const char *iconvName, std::string_view bytes, unsigned int n)
{
    unsigned int kept = std::min(n, static_cast<unsigned int>(bytes.size()));
    while (!Decode(iconvName, bytes.substr(0, kept)).has_value())
        --kept;
    return kept;
}

TEST(Truncate, KeepsWholeCharactersOfEverySampleAtEveryBudget)
{
    for (const Sample &sample : kSamples) {
        const CSDescriptor cs = DescriptorOf(sample.set);
        const char *iconvName = IconvNameOf(sample);
        const std::string whole(sample.bytes);
        const Guarded text(whole);
        for (unsigned int n = 0; n <= whole.size() + 8; ++n) {
            const GuardedRoom room(n), copy(n);
            unsigned int kept = 4711;
            ASSERT_EQ(str_truncate(room.data(), text.c_str(), n, &cs, &kept), room.data());
            ASSERT_EQ(str_strncpy(copy.data(), text.c_str(), n, &cs), copy.data());
            const std::string written(room.data(), n);
            ASSERT_EQ(written, std::string(copy.data(), n)) << sample.set << n;
            ASSERT_EQ(str_truncstrlen(text.c_str(), n, &cs), kept);
            std::string expected = whole.substr(0, kept);
            expected.resize(n, '\0');
            ASSERT_EQ(written, expected) << sample.set << n;
            if (IsPlain(cs)) {
                ASSERT_EQ(kept, n);
            } else if (iconvName != nullptr) {
                ASSERT_EQ(kept, LongestReadable(iconvName, whole, n)) << sample.set << n;
            }
        }
        for (const unsigned int most : {UINT_MAX, unsigned{INT_MAX}})
            ASSERT_EQ(str_truncstrlen(text.c_str(), most, &cs), IsPlain(cs) ? most : whole.size());
    }
}

// Splits as a caller sees it; the parts copied, since the next split overwrites them.
struct Parts {
    bool split, hasSecond;
    std::string first, second;
};

Parts SplitAt(const CSDescriptor &cs, const char *text, int mode, int limit)
{
    char *second = nullptr;
    unsigned int firstLen = 4711, secondLen = 4711;
    const auto split = mode == 0 ? str_SplitByDispLen : str_SplitByDispBytes;
    const char *first = split(text, limit, &second, &firstLen, &secondLen, &cs);
    if (first == nullptr) {
        EXPECT_TRUE(second == nullptr && firstLen == 0 && secondLen == 0);
        return {false, false, "", ""};
    }
    Parts parts = {true, second != nullptr, first, second == nullptr ? "" : second};
    EXPECT_EQ(parts.first.size(), firstLen);
    EXPECT_EQ(parts.second.size(), secondLen);
    return parts;
}

// The bytes of the displayed characters at the front of the text, character by character.
std::vector<int> CharacterBytes(const CSDescriptor &cs, const char *text)
{
    std::vector<int> sizes;
    int count = 0;
    const CSSegment *list = ccs_GetRealStrs(&cs, text, -1, &count);
    for (int i = 0; i < count - 1; ++i) {
        const CSDescriptor segCs = {list[i].kind, cs.escMode};
        const char *at = list[i].text;
        if (list[i].kind == CS_SEG_RAW) {
            sizes.insert(sizes.end(), list[i].length, 1);
            continue;
        }
        for (int left = static_cast<int>(list[i].length), length = 0; left > 0; left -= length) {
            const bool counts = ccs_GetNextCharLen(at, left, &length, &segCs) != 0;
            const bool control = (*at & 0x60) == 0;
            if (counts && (!control || *at == '\n') && *at != 0x7F)
                sizes.push_back(length);
            at += length;
        }
    }
    return sizes;
}

// How many of the characters fit.
size_t Fitting(const std::vector<int> &sizes, int mode, int limit)
{
    size_t fitting = 0;
    for (int used = 0; fitting < sizes.size(); ++fitting) {
        used += mode == 0 ? 1 : sizes[fitting];
        if (used > limit)
            break;
    }
    return fitting;
}

void CheckSplit(const CSDescriptor &cs, const std::string &whole, const char *iconvName)
{
    const Guarded text(whole);
    const std::vector<int> sizes = CharacterBytes(cs, text.c_str());
    for (const int mode : {0, 1})
        for (int limit = -1; limit <= static_cast<int>(whole.size()) + 2; ++limit) {
            const Parts parts = SplitAt(cs, text.c_str(), mode, limit);
            const size_t fitting = Fitting(sizes, mode, limit);
            const std::string where = testing::PrintToString(whole) + " mode " +
                                      std::to_string(mode) + " limit " + std::to_string(limit);
            ASSERT_EQ(parts.split, fitting != 0) << where;
            if (!parts.split)
                continue;
            ASSERT_EQ(CharacterBytes(cs, parts.first.c_str()).size(), fitting) << where;
            ASSERT_EQ(Joined(ContentOf(cs, parts.first), ContentOf(cs, parts.second)),
                      ContentOf(cs, whole))
                << where;
            if (iconvName != nullptr) {
                ASSERT_EQ(Decode(iconvName, parts.first).value() +
                              Decode(iconvName, parts.second).value(),
                          Decode(iconvName, whole).value())
                    << where;
            }
            if (fitting == sizes.size() && !parts.hasSecond) {
                ASSERT_EQ(parts.first, whole) << where;
            }
        }
}

TEST(Split, BothPartsOfEverySampleReadAsTheWhole)
{
    for (const Sample &sample : kSamples) {
        if (std::string_view(sample.set) == "UTF8")
            continue; // has escMode 0 and no plain bytes, and is below
        CheckSplit(DescriptorOf(sample.set), std::string(sample.bytes), IconvNameOf(sample));
    }
    CheckSplit(DescriptorOf("UTF8"), "caf\xC3\xA9 \xE6\x97\xA5\xF0\x9F\x98\x80", "UTF-8");
}

TEST(Split, BothPartsOfRandomTextReadAsTheWhole)
{
    std::mt19937 random(64);
    for (int round = 0; round < 1500; ++round) {
        const char *set = kCodes[random() % std::size(kCodes)];
        const CSDescriptor cs = {DescriptorOf(set).csNum, 1};
        const std::string text = RandomText(random, 8).c_str(); // up to a NUL
        if (IsGood(cs, text))
            CheckSplit(cs, text, nullptr);
    }
}

bool EndsInAnEscapeBehindAscii(const CSDescriptor &cs, const std::string &text)
{
    const Content content = ContentOf(cs, text);
    const CSDescriptor last = {content.empty() ? uint16_t{6} : content.back().first, 0};
    const std::string segments = SegmentsOf(cs, text.c_str());
    const bool escape = segments[segments.rfind(' ') + 1] == '-';
    return escape && !text.empty() && (ccs_GetCSFlags(&last) & CS_FLAG_ASCII) != 0;
}

TEST(Concat, ReadsAsItsParts)
{
    for (const Sample &front : kSamples)
        for (const Sample &back : kSamples) {
            const CSDescriptor cs = DescriptorOf(front.set);
            if (DescriptorOf(back.set).csNum != cs.csNum)
                continue;
            for (unsigned int n = 0; n <= front.bytes.size(); ++n) {
                const unsigned int kept = str_truncstrlen(front.bytes.data(), n, &cs);
                const std::string first(front.bytes.substr(0, kept)), second(back.bytes);
                if (EndsInAnEscapeBehindAscii(cs, first))
                    continue; // which is not noticed
                GuardedRoom room(first.size() + 81 + second.size() + 1);
                std::copy_n(first.c_str(), first.size() + 1, room.data());
                ASSERT_EQ(str_strcat(room.data(), second.c_str(), &cs), room.data());
                const std::string joined = room.data();
                ASSERT_EQ(ContentOf(cs, joined),
                          Joined(ContentOf(cs, first), ContentOf(cs, second)))
                    << testing::PrintToString(joined);
                if (const char *iconvName = IconvNameOf(front); iconvName && IconvNameOf(back)) {
                    ASSERT_EQ(Decode(iconvName, joined).value(),
                              Decode(iconvName, first).value() + Decode(iconvName, second).value())
                        << testing::PrintToString(joined);
                }
            }
        }
}

TEST(Search, FindsCharactersAndNotTheirBytes)
{
    const struct {
        CSDescriptor cs;
        const char *text;
        int ch, at; // -1: nowhere
        const char *why;
        // clang-format off
    } rows[] = {
        {{100, 0}, "caf\xE9", 0xE9, 3, "without escapes as strchr"},
        {{100, 0}, "caf\xE9", 0, 4, "... the NUL too"},
        {{100, 1}, "caf\xE9", 0xE9, -1, "walked, by its value as a signed char alone"},
        {{100, 1}, "caf\xE9", 0xE9 - 256, 3, "... so"},
        {{100, 1}, "cafe", 0, -1, "walked, never the NUL"},
        {{1001, 1}, "\x1B$B$B\x1B(BaB", 'B', 9, "not in an escape, not in a character"},
        {{1001, 1}, "\x1B$B$B", '$', -1, "... nowhere then"},
        {{1001, 1}, "ab", 'a' + 256, -1, "no byte has this value"},
        {{103, 1}, "\xC8u, u", 'u', 4, "not under a mark"},
        {{1001, 1}, "\xE9" "a", 0xE9 - 256, -1, "not in a raw run"},
    };
    // clang-format on
    for (const auto &row : rows) {
        const Guarded text(row.text);
        const char *found = str_strchr(text.c_str(), row.ch, &row.cs);
        EXPECT_EQ(found == nullptr ? -1 : static_cast<int>(found - text.c_str()), row.at)
            << row.why;
    }
    EXPECT_EQ(str_dostrchr("ab", 'b', 1), nullptr) << "behind the length";
}

TEST(Segments, EndAtTheNul)
{
    for (const std::string_view bytes : {"\x46\x7C\x46\x7C"sv, "\x46\x7C\x46"sv, ""sv})
        for (const unsigned int beyond : {1U, 20U, UINT_MAX / 2}) {
            const Guarded text(bytes);
            const CSDescriptor cs = {87, 1};
            const auto size = static_cast<unsigned int>(bytes.size());
            const int characters = static_cast<int>(size + 1) / 2;
            int chars, used;
            EXPECT_EQ(str_FindTruncPt(text.c_str(), size + beyond, &cs), size / 2 * 2);
            EXPECT_EQ(str_GetDispLen(text.c_str(), size + beyond, &cs), characters);
            str_CountSSDispChars(text.c_str(), size + beyond, 99, &chars, &cs);
            EXPECT_EQ(chars, characters);
            str_CountSSDispBytes(text.c_str(), size + beyond, 99, &used, &cs);
            EXPECT_EQ(used, 2 * characters);
            EXPECT_EQ(str_dostrchr(text.c_str(), 'x', size + beyond), nullptr);
            EXPECT_EQ(str_dostrchr(text.c_str(), 0, size + beyond), text.c_str() + size);
        }
}

TEST(StrNCpy, CutsUtf8BetweenCharacters)
{
    const struct {
        std::string_view bytes;
        unsigned int n, kept;
    } rows[] = {
        {"\xC3\xA9\xC3\xA9", 3, 2},  {"\xC3\xA9\xC3\xA9", 1, 0}, {"a\xF0\x9F\x98\x80", 4, 1},
        {"a\xF0\x9F\x98\x80", 5, 5}, {"\xF0\x9F\x98\x80", 0, 0}, {"a\xE6\x97", 9, 3},
        {"a\xE6\x97", 3, 1},         {"\xE6\x97z", 2, 0},        {"\xE6\x97z", 3, 3},
        {"\x97\x97\x97\x97", 3, 3},  {"\xFF\xC0z", 2, 2},        {"a\xE0\x80", 3, 3},
    };
    const CSDescriptor cs = DescriptorOf("UTF8");
    for (const auto &row : rows) {
        const Guarded text(row.bytes);
        const GuardedRoom room(row.n);
        str_strncpy(room.data(), text.c_str(), row.n, &cs);
        std::string expected(row.bytes.substr(0, row.kept));
        expected.resize(row.n, '\0');
        EXPECT_EQ(std::string(room.data(), row.n), expected)
            << testing::PrintToString(row.bytes) << " " << row.n;
    }
}

TEST(StrLCpy, AlwaysTerminates)
{
    const CSDescriptor cs = DescriptorOf("EUC-JP");
    const struct {
        const char *src;
        unsigned int size;
        std::string_view written;
        // clang-format off
    } rows[] = {
        {"\xC6\xFC\xCB\xDC", 0, ""}, {"\xC6\xFC\xCB\xDC", 1, "\0"sv},
        {"\xC6\xFC\xCB\xDC", 4, "\xC6\xFC\0\0"sv}, {"\xC6\xFC\xCB\xDC", 5, "\xC6\xFC\xCB\xDC\0"sv},
        {"a", 4, "a\0\0\0"sv}, {nullptr, 3, "\0\xEE\xEE"sv}, {nullptr, 0, ""},
    };
    // clang-format on
    for (const auto &row : rows) {
        const GuardedRoom room(row.size);
        EXPECT_EQ(str_strlcpy(room.data(), row.src, row.size, &cs), room.data());
        EXPECT_EQ(std::string_view(room.data(), row.size), row.written) << row.size;
    }
}

} // namespace
