// SPDX-License-Identifier: Apache-2.0
//
// O/R names as the default service parses them.
#include "tests/support/guarded.h"

#include <gtest/gtest.h>
#include <platform/ccs.h>
#include <platform/nm.h>

#include <string>

namespace
{

// The fields of a name, by number, "t" before the T.61 forms; "!" behind them when it is malformed.
std::string FieldsOf(const std::string &name)
{
    const Guarded text(name);
    nm_ORName parsed;
    int status = 4711;
    nm_ParseORN(text.c_str(), &parsed, &status);
    std::string fields;
    for (int field = -2; field < NM_FIELD_COUNT + 2; ++field) {
        int length = 4711;
        const char *value = nm_GetFieldMemPtr(text.c_str(), &parsed, field, &length);
        if (value == nullptr) {
            EXPECT_EQ(length, 0);
            continue;
        }
        const bool t61 = field >= NM_T61_FORM;
        fields += (t61 ? "t" + std::to_string(field - NM_T61_FORM) : std::to_string(field)) + "=" +
                  std::string(value, static_cast<size_t>(length)) + "|";
    }
    return fields + (status != 0 ? "!" : "");
}

// clang-format off
struct Row { const char *name, *fields, *why; };
const Row kNames[] = {
    {"/C=GB/ADMD=GOLD 400/PRMD=X Y/O=Co/S=Example/", "0=Co|5=Example|9=GB|10=GOLD 400|11=X Y|", "slashes"},
    {"C=GB; A=GOLD 400; S=Example; G=Given", "5=Example|6=Given|9=GB|10=GOLD 400|", "semicolons"},
    {"/C=GB/S=A;B", "5=A;B|9=GB|", "the other separator is text"},
    {"C=GB; S=A/B;", "5=A/B|9=GB|", "the other separator is text"},
    {" c = gb ;\r\n s\t=\ta  b\t", "5=a  b|9=gb|", "white space and small letters"},
    {"o=0;ou1=1;ou2=2;ou3=3;ou4=4;s=5;g=6;i=7;q=8;c=9;a=10;p=11;x.121=12;t-id=13;n-id=14;"
     "ddt1=15;ddv1=16;ddt2=17;ddv2=18;ddt3=19;ddv3=20;ddt4=21;ddv4=22",
     "0=0|1=1|2=2|3=3|4=4|5=5|6=6|7=7|8=8|9=9|10=10|11=11|12=12|13=13|14=14|"
     "15=15|16=16|17=17|18=18|19=19|20=20|21=21|22=22|", "every attribute"},
    {"/GQ=Jr/X121=1/UA-ID=2", "8=Jr|12=1|14=2|", "the other names"},
    {"S=\"A;B \"; G= \" C\" ;O=d\"e\"", "0=d\"e\"|5=A;B |6= C|", "quotes"},
    {"O=a=b", "0=a=b|", "an equals sign in a value"},
    {"OU=a; OU=b; OU4=d; OU=c", "1=a|2=b|3=c|4=d|", "the next unit"},
    {"OU=a; OU=b\xE9; OU1=\xE9", "1=a|t1=\xE9|t2=b\xE9|", "units that have either form"},
    {"dda:RFC-822=a(a)b; /=", "15=RFC-822|16=a(a)b|!", "a pair"},
    {"/DD.x=1/DDV2=v/DDA: y =3", "15=x|16=1|18=v|19=y|20=3|", "the next pair"},
    {"S=Mueller; S=M\xC8uller", "5=Mueller|t5=M\xC8uller|", "both forms"},
    {"/S=\x1B$B\x24\x22\x3B\x2F\x3D\x1B(B/G=\x0E/\x0F/O=\x1Bn//\x0F", "t0=\x1Bn//\x0F|t5=\x1B$B\x24\x22\x3B\x2F\x3D\x1B(B|t6=\x0E/\x0F|",
     "separators in other sets"},
    {"S=\"\x1B$(B\"\"\x1B(J;\"; G=\x1B(I;\x1B(u; C=a", "9=a|t5=\x1B$(B\"\"\x1B(J;|t6=\x1B(I;\x1B(u|", "quotes in other sets"},
    {"DDA:t\xE9=v\xE9", "t15=t\xE9|t16=v\xE9|", "a pair in T.61"},
    {"/ADMD= /S=/G=\"\"", "5=|6=|10=|", "empty values"},
    {"", "", "no attributes"}, {" / ", "", "no attributes"},
    {"C=GB; C=DE; S=x", "9=GB|!", "given twice"},
    {"A=x; ADMD=y", "10=x|!", "given twice, by two names"},
    {"S=\xE9; S=\xE8", "t5=\xE9|!", "given twice in T.61"},
    {"C=GB; CN=x; S=y", "9=GB|!", "unknown"}, {"C=GB;; S=y", "9=GB|!", "empty"}, {"=x", "!", "empty"},
    {"C=GB; S", "9=GB|!", "no value"}, {"/C/S=y", "!", "no value"},
    {"S=\"a; G=b", "!", "a quote that does not end"}, {"S=\"a\"b; G=c", "!", "text behind a quote"},
    {"C=\xE9", "!", "no such form"}, {"A=\x1B(B", "!", "no such form"},
    {"OU=1;OU=2;OU=3;OU=4;OU=5", "1=1|2=2|3=3|4=4|!", "a fifth unit"},
    {"DDA:a=1;DDA:b=2;DDA:c=3;DDA:d=4;DDA:e=5", "15=a|16=1|17=b|18=2|19=c|20=3|21=d|22=4|!", "a fifth pair"},
    {"DDA:=v", "!", "a pair without type"},
    {"S=\x1B", "t5=\x1B|", "ends in an escape"}, {"S=\x1B$B;G=x", "t5=\x1B$B;G=x|", "does not switch back"},
};
// clang-format on

TEST(ORNames, AreParsed)
{
    for (const Row &row : kNames)
        EXPECT_EQ(FieldsOf(row.name), row.fields) << row.why;
    for (const size_t size : {0U, 255U, 256U, 70'000U}) {
        const std::string value(size, 'x');
        EXPECT_EQ(FieldsOf("/S=" + value + "/C=GB/"), "5=" + value + "|9=GB|") << size;
    }
}

struct Identifier {
    const char *text;
    int length, field;
};
const Identifier kIdentifiers[] = {
    {"S", -1, 5},    {"admd,x", 4, 10}, {" Ou ", -1, 1}, {"ddv4", -1, 22}, {"OU2", 2, 1},
    {"OU5", -1, -1}, {"", -1, -1},      {"S", 0, -1},    {"DDA:", -1, -1}, {"S=", -1, -1}};

TEST(ORNames, AttributesAreFoundByName)
{
    for (const Identifier &row : kIdentifiers)
        EXPECT_EQ(da_AttIdToORNIndex(row.text, row.length), row.field) << row.text;
}

// clang-format off
const struct { std::string value; const char *set; } kValues[] = {
    {"", ""}, {"plain", ""}, {"M\xC8uller", "T.61"}, {"\xE1\xE9", "T.61"}, {"\x1B(B", "T.61"}, {"\x0E\x0F", "T.61"},
    {"M\xC3\xBCller", "UTF8"}, {"\x1B(BM\xC3\xBCller", "T.61"}, {"\xC3", "T.61"},
};
// clang-format on

TEST(ORNames, ValuesTellTheirSet)
{
    for (const auto &row : kValues) {
        EXPECT_STREQ(t61_ParseO61Str(row.value.data(), static_cast<int>(row.value.size())),
                     row.set);
        CSDescriptor cs;
        EXPECT_EQ(ccs_GetCSDescriptor(row.set, &cs), *row.set != '\0');
    }
}

} // namespace
