// SPDX-License-Identifier: Apache-2.0
//
// Joining, what is cut of segments, and long texts.

#include "tests/support/casetable.h"
#include "tests/support/samples.h"

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

using LongTexts = CaseTableTest;

TEST_F(LongTexts, AreReadToTheirEnds2GiBAway)
{
    if (sizeof(size_t) == 4)
        GTEST_SKIP() << "no room for them";
    const LongText text(size_t{INT32_MAX} + 100);
    home.Write("toupper/100.s", "T C x\na=A");
    const CSDescriptor latin1 = DescriptorOf("ISO-8859-1");
    EXPECT_EQ(str_strucasecmp(text.c_str(), text.c_str() + 1, &latin1), 1);
    int length = 4711;
    EXPECT_EQ(Escaped([&] { str_ToUpper(text.c_str(), -1, &length, &latin1); }), OS_ESC_MEMORY);
    EXPECT_EQ(length, 4711);
}

} // namespace
