// SPDX-License-Identifier: Apache-2.0
//
// O/R names as the default service parses them, and their order.

#include "tests/support/casetable.h"

#include <platform/nm.h>
#include <str/compare.h>

namespace
{

// The fields of a name, by number, "t" before the T.61 forms; "!" after them when it is malformed.
std::string FieldsOf(const std::string &name)
{
    const Guarded text(name);
    nm_ORName parsed;
    int status = 4711;
    nm_ParseORN(text.c_str(), &parsed, &status);
    std::string fields;
    for (int field = -2; field < NM_FIELD_COUNT + 2; ++field) {
        int length = 4711;
        const char *const value = nm_GetFieldMemPtr(text.c_str(), &parsed, field, &length);
        EXPECT_TRUE(value != nullptr || length == 0);
        if (value != nullptr)
            fields += (field < NM_T61_FORM ? "" : "t") + std::to_string(field % NM_T61_FORM) + "=" +
                      std::string(value, static_cast<size_t>(length)) + "|";
    }
    return fields + (status != 0 ? "!" : "");
}

// clang-format off
const struct { const char *name, *fields; } kNames[] = {
    {"/C=GB/ADMD=G 4/PRMD=X Y/GQ=Jr/X121=1/UA-ID=2/", "8=Jr|9=GB|10=G 4|11=X Y|12=1|14=2|"},
    {" c = gb ;\r\n s\t=\ta/ b\t;", "5=a/ b|9=gb|"},
    {"o=0;ou1=1;ou2=2;ou3=3;ou4=4;s=5;g=6;i=7;q=8;c=9;a=10;p=11;x.121=12;t-id=13;n-id=14",
     "0=0|1=1|2=2|3=3|4=4|5=5|6=6|7=7|8=8|9=9|10=10|11=11|12=12|13=13|14=14|"},
    {"S=\"A;B \"; G= \" C\" ;O=d\"e=\"", "0=d\"e=\"|5=A;B |6= C|"},
    {"OU=a; OU=b\xE9; OU1=\xE9; OU4=d; OU=c", "1=a|3=c|4=d|t1=\xE9|t2=b\xE9|"}, // the next unit
    {"dda:RF-8=a(a)b; DD.x=1; DDV3=v; DDA: y =3", "15=RF-8|16=a(a)b|17=x|18=1|20=v|21=y|22=3|"},
    {"/S=\x1B$B$/\x1B(B/G=\x0E/\x0F/O=\x1Bn//\x0F",
     "t0=\x1Bn//\x0F|t5=\x1B$B$/\x1B(B|t6=\x0E/\x0F|"},
    {"S=\"\x1B$(B\"\"\x1B(J;\"; C=a", "9=a|t5=\x1B$(B\"\"\x1B(J;|"},
    {"/S=\x1B /F/G=x", "6=x|t5=\x1B /F|"},
    {"/ADMD= /S=/G=\"\"", "5=|6=|10=|"},
    {"S=\x1B$B;G=x", "t5=\x1B$B;G=x|"},
    {"S=\x1B", "t5=\x1B|"},
    {"S=\xE9; S=\xE8", "t5=\xE9|!"},
    {"S=\"a; G=b", "!"},
    {"S=\"a\"b; G=c", "!"},
    {"DDA:=v", "!"},
    {"C=a; X=x; S=y", "9=a|!"},
    {"C=GB;; S=y", "9=GB|!"},
    {"C=\xE9", "!"},
    {"DDT2=a;DDT3=b;DDT4=c;DD.d=1;DD.e=2", "15=d|16=1|17=a|19=b|21=c|!"},
};
// clang-format on

TEST(ORNames, AreParsed)
{
    for (const auto &row : kNames)
        EXPECT_EQ(FieldsOf(row.name), row.fields) << row.name;
    EXPECT_EQ(da_AttIdToORNIndex("admd,x", 4), 10);
    EXPECT_EQ(da_AttIdToORNIndex(" Ou ", -1), 1);
    EXPECT_EQ(da_AttIdToORNIndex("OU5", -1), -1);
    EXPECT_EQ(da_AttIdToORNIndex("S", 0), -1);
    EXPECT_STREQ(t61_ParseO61Str("plain", 5), "");
    EXPECT_STREQ(t61_ParseO61Str("M\xC3\xBCller", 7), "UTF8");
    EXPECT_STREQ(t61_ParseO61Str("\x1B(BM\xC3\xBCller", 10), "T.61");
    EXPECT_STREQ(t61_ParseO61Str("\xC3", 1), "T.61");
}

// ---- Their order ---------------------------------------------------------------------------

struct ORNameTables : CaseTableTest {
    ORNameTables()
    {
        home.Write("toupper/6.s", "T C x\na=A b=B c=C s=S x=X g=G l=L");
        home.Write("toupper/103.s", "T C x\n\\xC8u=\\xC8U \\xC8U=\\xC8U \\xF3=\\xE3 \\xF1=\\xC8U");
    }
};

int Sign(int order) { return (order > 0) - (order < 0); }

const std::string k254(254, 'x'), kLong(60'000, 'x');
const struct {
    std::string name1, name2;
    const char *charset, *attributes;
    int any, order;
} kOrders[] = {
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

TEST_F(ORNameTables, OrderNamesByTheirAttributes)
{
    for (const auto &[first, second, charset, attributes, any, expected] : kOrders)
        for (const int sign : {1, -1}) {
            const Guarded a(sign > 0 ? first : second), b(sign > 0 ? second : first);
            const int order = str_cmpORName(a.c_str(), b.c_str(), charset, any, attributes);
            EXPECT_EQ(Sign(order), sign * expected) << first << " " << second;
        }
}

} // namespace
