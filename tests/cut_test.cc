// SPDX-License-Identifier: Apache-2.0
//
// Joining; what is cut of UTF-8 and of segments.

#include "tests/support/samples.h"

#include <glib.h>

namespace
{

constexpr uint16_t kAscii = 6;

TEST(Cut, BeginsTheOldestSetsWithThreeBytes)
{
    const CSDescriptor cs = DescriptorOf("ISO-2022-JP");
    for (const std::string text : {"\x1B$@F|F|", "\x1B$AF|F|", "\x1B$BF|F|"}) {
        char *second = nullptr;
        unsigned int firstLen, secondLen;
        str_SplitByDispLen(text.c_str(), 1, &second, &firstLen, &secondLen, &cs);
        EXPECT_EQ(second, text.substr(0, 5));
    }
}

void CheckJoin(const CSDescriptor &cs, const std::string &first, const std::string &second)
{
    const Kinds back = KindsOf(cs, second);
    Kinds both = KindsOf(cs, first);
    const uint16_t last = both.empty() ? uint16_t{CS_SEG_RAW} : both.back().first;
    const bool switches = (ccs_GetCSFlags(&cs) & CS_FLAG_ESCAPES) != 0;
    int length = 4711;
    const char *const escapes = str_GetEscapes(first.c_str(), second.c_str(), &cs, &length);
    ASSERT_EQ(escapes != nullptr, switches && last < CS_SEG_IGNORE && last != kAscii &&
                                      !back.empty() && back.front().first == kAscii);
    const std::string between = escapes == nullptr ? "" : escapes;
    ASSERT_EQ(length, switches ? static_cast<int>(between.size()) : 4711);
    const std::string segments = SegmentsOf(cs, first.c_str());
    const bool endsEscape = segments[segments.rfind(' ') + 1] == '-';
    const bool isNoticed = last != CS_SEG_RAW && (!endsEscape || last != kAscii);
    both.insert(both.end(), back.begin(), back.end());
    ASSERT_TRUE(!isNoticed || KindsOf(cs, first + between + second) == both);
}

TEST(Concat, ReadsAsItsParts)
{
    for (const Sample &front : kSamples)
        for (const Sample &back : kSamples)
            for (unsigned int n = 0; n <= front.bytes.size(); ++n) {
                const CSDescriptor cs = DescriptorOf(front.set);
                const unsigned int kept = str_truncstrlen(front.bytes.data(), n, &cs);
                const std::string first(front.bytes.substr(0, kept)), second(back.bytes);
                SCOPED_TRACE(front.set + testing::PrintToString(first + "|" + second));
                CheckJoin(cs, first + "\xFF", second); // of no set, in most
                if (cs.csNum == DescriptorOf(back.set).csNum)
                    CheckJoin(cs, first, second);
            }
}

bool BeginsCharacter(const std::string &bytes)
{
    const auto ends = {"\x80", "\xBF", "\x80\x80", "\xBF\x80", "\x80\x80\x80", "\xBF\x80\x80"};
    return std::any_of(ends.begin(), ends.end(), [&](const std::string &end) {
        const std::string all = bytes + end;
        return g_utf8_validate(all.c_str(), -1, nullptr) && g_utf8_strlen(all.c_str(), -1) == 1;
    });
}

// How many characters are in the bytes, of which the last may go on after them, and their bytes.
std::pair<int, size_t> Characters(const std::string &bytes, bool mayGoOn)
{
    int count = 0;
    size_t at = 0;
    for (; at < bytes.size() && !(mayGoOn && BeginsCharacter(bytes.substr(at))); ++count) {
        const gunichar c = g_utf8_get_char_validated(bytes.c_str() + at, -1);
        at += c < 0x80000000 ? static_cast<size_t>(g_unichar_to_utf8(c, nullptr)) : 1;
    }
    return {count, at};
}

TEST(Utf8, IsCutAndCountedByCharacters)
{
    const CSDescriptor cs = DescriptorOf("UTF8");
    const auto pieces =
        "0123456789a\n\x7F\x1B\u00E9\u65E5\U0010FFFF\x80\x8F\x90\x9F\xA0\xBF\xC1\xC2"
        "\xE0\xED\xEF\xF0\xF4\xF5\xF8"s;
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 1500 && !HasFailure(); ++round) {
        std::string text;
        for (auto left = random() % 12; left > 0; --left)
            text += pieces.substr(random() % pieces.size(), 1 + random() % 4);
        SCOPED_TRACE(testing::PrintToString(text));
        const Guarded whole(text);
        const auto escapes = static_cast<int>(std::count(text.begin(), text.end(), '\x1B'));
        const int all = Characters(text, false).first;
        EXPECT_EQ(str_dispstrlen(whole.c_str(), &cs), all);
        EXPECT_EQ(str_utf8DispStrLen(whole.c_str(), -1, 0), all - escapes);
        for (unsigned int n = 0; n <= text.size() + 3; ++n) {
            const size_t read = std::min<size_t>(n, text.size() + 1);
            const Guarded front(read), copy(n);
            std::memcpy(front.data(), whole.c_str(), read);
            const auto [count, bytes] = Characters(text.substr(0, n), n <= text.size());
            std::string kept = text.substr(0, bytes);
            kept.resize(n);
            str_strncpy(copy.data(), front.data(), n, &cs);
            EXPECT_EQ(std::string(copy.data(), n), kept) << n;
            const int limit = static_cast<int>(n);
            EXPECT_EQ(str_utf8DispStrLen(front.data(), limit, 1), count) << n;
            EXPECT_EQ(str_utf8DispStrLen(whole.c_str(), limit, 0), count - escapes) << n;
        }
    }
}

TEST(Segments, EndAtTheNul)
{
    const CSDescriptor cs = {87, 1};
    for (const std::string bytes : {"\x46\x7C\x46\x7C", "\x46\x7C\x46", ""})
        for (const unsigned int beyond : {0U, 1U, UINT_MAX / 2}) {
            const Guarded guarded(bytes);
            const char *const text = guarded.c_str();
            const auto size = static_cast<unsigned int>(bytes.size()), most = size + beyond;
            const int characters = static_cast<int>(size + 1) / 2;
            int used, usedBytes;
            str_CountSSDispChars(text, most, 99, &used, &cs);
            str_CountSSDispBytes(text, most, 99, &usedBytes, &cs);
            EXPECT_EQ(str_FindTruncPt(text, most, &cs), size / 2 * 2);
            EXPECT_EQ(str_GetDispLen(text, most, &cs), characters);
            EXPECT_TRUE(used == characters && usedBytes == 2 * characters);
            EXPECT_EQ(str_dostrchr(text, 0, most), beyond == 0 ? nullptr : text + size);
        }
    char room[] = "abc";
    EXPECT_STREQ(str_strlcpy(room, nullptr, 0, nullptr), "abc");
    EXPECT_STREQ(str_strlcpy(room, nullptr, 3, nullptr), "");
}

} // namespace
