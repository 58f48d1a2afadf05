// SPDX-License-Identifier: Apache-2.0
//
// The order of O/R names, and long texts.

#include "tests/support/casetable.h"

#include <str/compare.h>

namespace
{

// Case tables with every sort of rule; other sets have none.
const std::map<uint16_t, std::string> kRules = {
    {6, "a=A b=B c=C s=S x=X g=G l=L"},
    {100, R"(a=A b=B \xE9=\xC9 z=\xC2S Z=\xC2A \xC2a=\xC2A \xC8u=u \xC6\xFC=\xC6\xFB)"},
    {103, R"(\xC8u=\xC8U \xC8U=\xC8U \xF3=\xE3 \xF1=\xC8U)"},
    {87, R"(\x46\x7C=Zz \xC6\xFC=\xC6\xFB)"},
};

struct Comparison : CaseTableTest {
    Comparison()
    {
        for (const auto &[kind, rules] : kRules) {
            home.Write("toupper/" + std::to_string(kind) + ".s", "T C test\n" + rules);
            const CSDescriptor cs = {kind, 0};
            EXPECT_NE(str_InitCaseTables(&cs), nullptr) << logged;
        }
    }
};

int Sign(int order) { return (order > 0) - (order < 0); }

const std::string k254(254, 'x'), kLong(60'000, 'x');
const struct {
    std::string name1, name2;
    const char *charset, *attributes;
    int any, order;
} kNames[] = {
    // clang-format off
    {"C=GB; G=b", "C=GB; S=x", "T.61", "C,C, ,S,G,", 0, -1}, // named again, and not there
    {"C=GB; S=\"\"", "C=DE", "T.61", "S,CN,XYZ", 0, 0}, // empty, not there, and unknown
    {"S=MUELLER; S=M\xC8ULLER", "S=M\xC8uLLER", "T.61", "S", 0, 0}, // the T.61 form
    {"S=\xF1" "b", "S=\xC8u" "B", "T.61", "S", 0, 0}, // a letter as two bytes
    {"DDA:x=\xF3", "DDA:X=\xE3", nullptr, "DDT1,DDV1", 1, 0},
    {"S=" + k254 + "a", "S=" + k254 + "b", "T.61", "S", 0, -1}, // byte 255 counts
    {"S=x" + k254 + "a", "S=" + kLong, "T.61", "S", 0, 0}, // byte 256 does not
    // clang-format on
};

TEST_F(Comparison, OrdersORNamesByTheirAttributes)
{
    for (const auto &[first, second, charset, attributes, any, expected] : kNames)
        for (const int sign : {1, -1}) {
            const Guarded a(sign > 0 ? first : second), b(sign > 0 ? second : first);
            const int order = str_cmpORName(a.c_str(), b.c_str(), charset, any, attributes);
            EXPECT_EQ(Sign(order), sign * expected) << first << " " << second;
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
