// SPDX-License-Identifier: Apache-2.0
//
// Formatting with the default services: what printf prints, in every set; what becomes of formats
// that are malformed; and that what stands behind an argument reads as written.
#include "tests/support/guarded.h"
#include "tests/support/samples.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <platform/ccs.h>
#include <str/str.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace
{

const char *const kWalkedSets[] = {"ISO-2022-JP", "UTF8", "EUC-KR"};

template <class... Arguments>
std::string Printed(const char *set, const std::string &format, Arguments... arguments)
{
    const CSDescriptor cs = DescriptorOf(set);
    std::vector<char> room(1 << 16, '?');
    const Guarded guarded(format);
    const int length = str_simplesprintf(&cs, room.data(), guarded.c_str(), arguments...);
    if (length == -1)
        return room[0] == '?' ? "nothing" : "written";
    EXPECT_EQ(strlen(room.data()), static_cast<size_t>(length));
    return room.data();
}

// ---- Beside snprintf -------------------------------------------------------------------------

class RandomFormat
{
  public:
    explicit RandomFormat(unsigned int seed) : random(seed) {}

    // For the arguments: int, long, double, string, width, short, long double, precision, string.
    std::string Make()
    {
        positions = random() % 2 == 0;
        std::vector<std::string> directives = {
            Directive(1, "", random() % 4 == 0 ? "c" : Integer()),
            Directive(2, "l", Integer()),
            Directive(3, "", Real()),
            Directive(4, "", "s"),
            Directive(6, random() % 2 == 0 ? "h" : "hh", Integer(), 5),
            Directive(7, "L", Real()),
            Directive(9, "", "s", 0, 8),
        };
        if (positions)
            std::shuffle(directives.begin(), directives.end(), random);
        std::string format;
        for (const std::string &directive : directives)
            format += Text() + directive;
        return format + Text();
    }
    unsigned int Number() { return static_cast<unsigned int>(random()); }
    std::string Text()
    {
        std::string text;
        for (auto i = random() % 8 == 0 ? random() % 200 : random() % 5; i > 0; --i)
            text += static_cast<char>(' ' + random() % 94);
        std::replace(text.begin(), text.end(), '%', '$');
        return text;
    }
    double Value() { return std::ldexp(random() % 1000000, static_cast<int>(random() % 60) - 40); }

  private:
    std::mt19937 random;
    bool positions = false;

    const char *One(std::initializer_list<const char *> choices)
    {
        return choices.begin()[random() % choices.size()];
    }
    const char *Integer() { return One({"d", "i", "u", "o", "x", "X"}); }
    const char *Real() { return One({"e", "E", "f", "g", "G"}); }

    std::string Measure(unsigned int most) { return std::to_string(random() % most); }
    std::string Star(int number)
    {
        return positions ? "*" + std::to_string(number) + "$" : std::string("*");
    }
    std::string Directive(int number, const char *size, const std::string &conversion,
                          int width = 0, int precision = 0)
    {
        std::string text = positions ? "%" + std::to_string(number) + "$" : std::string("%");
        const bool isText = conversion == "s" || conversion == "c";
        const bool isSigned = std::string("diceEfgGs").find(conversion) != std::string::npos;
        const bool takesSharp = std::string("oxXeEfgG").find(conversion) != std::string::npos;
        for (const char flag : {'-', '0', '+', ' ', '#'})
            if (random() % 4 == 0 && (flag == '-' || !isText) &&
                (isSigned || (flag != '+' && flag != ' ')) && (takesSharp || flag != '#'))
                text += flag;
        if (width != 0)
            text += Star(width);
        else if (random() % 3 == 0)
            text += std::to_string(1 + random() % 40);
        if (precision != 0)
            text += "." + Star(precision);
        else if (random() % 3 == 0 && conversion != "c")
            text += "." + (random() % 4 == 0 ? "" : Measure(30));
        return text + size + conversion;
    }
};

TEST(Print, EqualsSnprintf)
{
    RandomFormat random(7);
    std::vector<char> expected(1 << 16), room(1 << 16);
    for (int round = 0; round < 100000; ++round) {
        const std::string format = random.Make(), first = random.Text(), second = random.Text();
        const CSDescriptor cs = DescriptorOf(kWalkedSets[random.Number() % std::size(kWalkedSets)]);
        const int byte = static_cast<int>(random.Number() | 1), width = byte % 50,
                  precision = static_cast<int>(random.Number() % 60) - 20,
                  half = static_cast<int>(random.Number());
        const auto number = static_cast<long>(random.Number() * uint64_t{random.Number()});
        const double real = random.Value();
        const long double longReal = static_cast<long double>(random.Value()) / 3;
        const auto print = [&](auto function, auto... destination) {
            return function(destination..., format.c_str(), byte, number, real, first.c_str(),
                            width, half, longReal, precision, second.c_str());
        };
        const int length = print(std::snprintf, expected.data(), expected.size());
        ASSERT_EQ(print(str_simplesprintf, &cs, room.data()), length) << format;
        ASSERT_STREQ(room.data(), expected.data()) << format;
    }
}

TEST(Print, TakesWhatItIsPassedAsPrintfDoes)
{
    // clang-format off
    EXPECT_EQ(Printed("UTF8", "x=%d y=%s", 7, "abc"), "x=7 y=abc");
    EXPECT_EQ(Printed("UTF8", "%2$s %1$d", 7, "abc"), "abc 7");
    EXPECT_EQ(Printed("UTF8", "%1$d %3$d", 1, 2, 3), "1 2") << "a number left out has no argument";
    EXPECT_EQ(Printed("UTF8", "%3$d%d%1$d", 1, 2, 3), "231") << "a position sets the number";
    EXPECT_EQ(Printed("UTF8", "100%% %d%%%d", 1, 2), "100%% 1%%2");
    EXPECT_EQ(Printed("UTF8", "%d$ %s$%%$%d", 5, "x", 6), "5$ x$%%$6") << "a '$' that is text";
    EXPECT_EQ(Printed("UTF8", "%1$*1$d", 3), "  3") << "one int, used twice";
    EXPECT_EQ(Printed("UTF8", "%1$d %2$*1$d", 3, 7), "3   7") << "... by two directives";
    EXPECT_EQ(Printed("UTF8", "%:$d%2$d%3$d%4$d%5$d%6$d%7$d%8$d%9$d%1$d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10),
              "102345678" "91") << "':' is 10";
    EXPECT_EQ(Printed("UTF8", "%+.*d|%*d|%-*d|%0*d", -1, 5, -4, 6, 3, 7, 4, 8), "+5|6   |7  |0008");
    EXPECT_EQ(Printed("UTF8", "%*d|%.*s|%.*f", 0, 1, 0, "a", 0, 2.5), "1||2");
    EXPECT_EQ(Printed("UTF8", "%.*s|%*s|", INT_MAX, "a", INT_MIN + INT_MAX - 2, "b"), "a|b  |");
    EXPECT_EQ(Printed("UTF8", "%s|%.5s|%8s|%.6s", nullptr, nullptr, nullptr, nullptr),
              "(null)||  (null)|(null)");
    EXPECT_EQ(Printed("UTF8", "a%cb%3cc%-3cd", 0, 0, 0), "ab  cd") << "up to the NUL";
    EXPECT_EQ(Printed("UTF8", "%hd %hhd %ld %hx %lf", 65537, 257, 4L, -1, 2.5), "1 1 4 ffff 2.500000");
    char expected[64];
    void *const address = expected, *const none = nullptr;
    std::snprintf(expected, sizeof expected, "%p|%20p|%-20p|%p", address, address, address, none);
    EXPECT_EQ(Printed("UTF8", "%P|%20P|%-20P|%P", address, address, address, nullptr), expected);
    int untouched = 4711;
    EXPECT_EQ(Printed("UTF8", "ab%ncd%hhn%*n%d", &untouched, &untouched, 9, &untouched, 5), "abcd5");
    EXPECT_EQ(untouched, 4711);
    EXPECT_EQ(Printed("UTF8", ""), "nothing");
    EXPECT_EQ(Printed("UTF8", "%s%n", "", nullptr), "nothing");
    EXPECT_EQ(Printed("UTF8", "no directive"), "no directive");
    EXPECT_EQ(Printed("ISO-8859-1", "%d%%", 5), "5%") << "vsprintf";
    EXPECT_EQ(Printed("ISO-8859-1", ""), "") << "... with its results";
    // clang-format on
    const std::string mebibyte(1 << 20, 'x');
    std::vector<char> room(mebibyte.size() * 3);
    const CSDescriptor cs = DescriptorOf("ISO-2022-JP");
    const int length =
        str_simplesprintf(&cs, room.data(), "%s%*s", mebibyte.c_str(), -(1 << 20) - 7, "ab");
    EXPECT_EQ(length, (1 << 21) + 7);
    EXPECT_EQ(std::string(room.data()), mebibyte + "ab" + std::string(mebibyte.size() + 5, ' '));
}

TEST(Print, WritesToStreams)
{
    const CSDescriptor walked = DescriptorOf("ISO-2022-JP"), bytes = DescriptorOf("ISO-8859-1");
    testing::internal::CaptureStdout();
    EXPECT_EQ(str_simplefprintf(&walked, stdout, "%d%%,", 1), 4);
    EXPECT_EQ(str_simplefprintf(&bytes, stdout, "%d%%,", 2), 3) << "vfprintf";
    EXPECT_EQ(str_simpleprintf(&walked, "%s,", "\x1B$B$\""), 9);
    EXPECT_EQ(str_simpleprintf(&bytes, "%d%%,", 3), 4) << "always built here";
    EXPECT_EQ(str_simpleprintf(&bytes, ""), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "1%%,2%,\x1B$B$\"\x1B(B,3%%,");
    FILE *full = std::fopen("/dev/full", "w");
    std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_EQ(str_simplefprintf(&walked, full, "%d", 1), -1);
    std::fclose(full);
}

// ---- Arguments in other sets -----------------------------------------------------------------

TEST(Print, TextBehindAnArgumentReadsAsWritten)
{
    for (const Sample &sample : kSamples) {
        const CSDescriptor cs = DescriptorOf(sample.set);
        const char *iconvName = IconvNameOf(sample);
        if ((ccs_GetCSFlags(&cs) & CS_FLAG_ESCAPES) == 0 || iconvName == nullptr)
            continue;
        const std::string whole(sample.bytes);
        for (unsigned int n = 0; n <= whole.size(); ++n) {
            const std::string cut = whole.substr(0, str_truncstrlen(whole.c_str(), n, &cs));
            const std::u32string read = Decode(iconvName, cut).value();
            // An escape sequence that nothing follows is not noticed.
            const std::string segments = SegmentsOf(cs, cut.c_str());
            if (segments[segments.rfind(' ') + 1] == '-' &&
                Decode(iconvName, cut + "!!") != read + U"!!")
                continue;
            for (const std::string &printed :
                 {Printed(sample.set, "<%d %s> %s", 1, cut.c_str(), "end"),
                  Printed(sample.set, "<%d %.*s> %s", 1, n, whole.c_str(), "end")})
                ASSERT_EQ(Decode(iconvName, printed), U"<1 " + read + U"> end")
                    << testing::PrintToString(printed);
        }
    }
    const char katakana[] = "\x1B$B%7%d\x1B(B %d"; // 0x25 begins characters
    EXPECT_EQ(Printed("ISO-2022-JP", katakana, 5), "\x1B$B%7%d\x1B(B 5");
    EXPECT_EQ(Printed("UTF8", "%.4s|%.3s|%-4.2s|", "\xC3\xA9\xE6\x97\xA5", "\xE6\x97\xA5",
                      "\xE6\x97\xA5"),
              "\xC3\xA9|\xE6\x97\xA5|    |")
        << "no character is cut";
}

// ---- The table -------------------------------------------------------------------------------

struct Scanned {
    std::vector<ParameterRecord> table =
        std::vector<ParameterRecord>(STR_PARAMETERS, {77, 77, "stale", 77, 77, 77});
    int maxParam;
    bool error;
};

Scanned Scan(const CSDescriptor &cs, const char *format)
{
    Scanned scanned;
    int count;
    const CSSegment *segments = ccs_GetAllStrs(&cs, format, -1, &count);
    PrintfError = 0;
    scanned.maxParam = str_GetParams(&cs, format, segments, count, scanned.table.data());
    scanned.error = PrintfError != 0;
    return scanned;
}

// "1:2@3+4*0,-1": number, type, and of a directive its offset, length, and numbers of width and
// precision.
std::string TableOf(const CSDescriptor &cs, const char *format)
{
    const Scanned scanned = Scan(cs, format);
    std::string text;
    for (int k = 1; k <= scanned.maxParam; ++k) {
        const ParameterRecord &record = scanned.table[static_cast<size_t>(k)];
        if (record.type == STR_ARG_UNUSED)
            continue;
        text += (text.empty() ? "" : " ") + std::to_string(k) + ":" + std::to_string(record.type);
        if (record.isConversion == 0)
            continue;
        text += "@" + std::to_string(record.text - format) + "+" + std::to_string(record.textLen);
        if (record.widthParam != -1 || record.precParam != -1)
            text +=
                "*" + std::to_string(record.widthParam) + "," + std::to_string(record.precParam);
    }
    return text + (scanned.error ? " error" : "");
}

TEST(Scan, DescribesTheArguments)
{
    const struct {
        const char *format, *table;
        // clang-format off
    } rows[] = {
        {"x=%d y=%s", "1:2@2+2 2:9@7+2"},
        {"%*.*d", "1:2 2:2 3:2@0+5*0,0"},
        {"%2$s %1$hd", "1:1@5+5 2:9@0+4"},
        {"%1$*2$.*3$d", "1:2@0+11*2,3 2:2 3:2"},
        {"%d%%%d", "1:2@0+2 3:2@4+2"},
        {"%ld%hx%Lf%lf%Ld%hs%lc%LlG", "1:3@0+3 2:1@3+3 3:6@6+3 4:5@9+3 5:2@12+3 6:9@15+3 7:2@18+3 8:5@21+4"},
        {"%n%P%hn", "1:7@0+2 2:7@2+2 3:7@4+3"},
        {"%p %d", ""},
        {"%a %z", ""},
        {"%a%zd%jd%F%d", "2:2@5+3"}, // with %a% and %F% as %%
        {"%3$d%d", "3:2@0+4 4:2@4+2"},
        {"%3$*d", "3:2 4:2@0+5*0,-1"},
        {"%1$d%1$s", "1:9@4+4"},
        {"%10$d%%%d", "1:2@0+5 3:2@7+2"},
        {"%a$d%A$d%:$d", "10:2@8+4 17:2@4+4 49:2@0+4"},
        {"%d%%%d%d%d%d%d%d%d%d%%%d%%%d", "1:2@0+2 3:2@4+2 4:2@6+2 5:2@8+2 6:2@10+2 7:2@12+2 8:2@14+2 9:2@16+2 10:2@18+2 12:2@22+2 14:2@26+2"},
        {"%*%%d", "2:2@3+2"},
        // cut off
        {"%", " error"}, {"ab%-5", " error"}, {"%d%", "1:2@0+2 error"}, {"%1$", " error"}, {"%*", " error"},
        {"%hl.\x1B$B$\"\x1B(Bd%d", "1:2@13+2 error"}, // by a segment
        // numbers that there are not
        {"%0$d%d", "2:2@4+2 error"}, {"%b$d", " error"}, {"%/$d", " error"}, {"%-$d", " error"}, {"%\xFF$d", " error"},
        {"%*0$d%d", "3:2@5+2 error"}, {"%*/$d", " error"}, {"%.*b$d", " error"}, {"%.*a$d", "1:2@0+6*-1,49 49:2"},
        {"%a$*d", " error"},
        // not directives
        {"\x1B$B%d%d\x1B(B%d", "1:2@10+2"}, {"", ""},
    };
    // clang-format on
    for (const auto &row : rows) {
        const Guarded format(row.format);
        EXPECT_EQ(TableOf(DescriptorOf("ISO-2022-JP"), format.c_str()), row.table) << row.format;
    }
}

TEST(Scan, StopsAtTheEndOfTheTable)
{
    for (const int count : {49, 50, 1000, 70000}) {
        std::string format, expected;
        for (int i = 1; i <= count; ++i) {
            format += "%d,";
            expected += i < STR_PARAMETERS ? std::to_string(i) + "," : "%d,";
        }
        const CSDescriptor cs = DescriptorOf("UTF8");
        const Scanned scanned = Scan(cs, format.c_str());
        EXPECT_EQ(scanned.maxParam, 49);
        EXPECT_EQ(scanned.error, count > 49);
        int ints[STR_PARAMETERS];
        for (int k = 0; k < STR_PARAMETERS; ++k)
            ints[k] = k;
        unsigned int length;
        const char *text =
            str_buildpfstring(&cs, &length, format.c_str(), scanned.table.data(), scanned.maxParam,
                              nullptr, ints, nullptr, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(text, expected);
        EXPECT_EQ(length, expected.size());
    }
}

// ---- Malformed formats -------------------------------------------------------------------------

TEST(Print, FormatsThatAreMalformed)
{
    // clang-format off
    EXPECT_EQ(Printed("UTF8", "%5-d|%.5.1d|%**d|%5*d|%*5d", 1, 2, 3, 4, 5, 6, 7, 8), "1    |2|  4|    6|      8");
    EXPECT_EQ(Printed("UTF8", "%10$d|%-5$+d|%zd|%lld|%hhhd|%,d", 1, 2, 3, 4L, 5, 6), "1|+2|3|4|5|6");
    EXPECT_EQ(Printed("UTF8", "%lc%ls%hs%Ld", 'a', "b", "c", 4), "abc4") << "no wide characters";
    EXPECT_EQ(Printed("UTF8", "%1$d %1$s", "x"), "%1$d x") << "the number is taken again";
    EXPECT_EQ(Printed("UTF8", "%2$*1$d %1$s", "x", 2), "%2$*1$d x") << "no int for the width";
    EXPECT_EQ(Printed("UTF8", "%1$s %2$*1$d", 3, 2), "%1$s   2") << "the string is the width";
    EXPECT_EQ(Printed("UTF8", "%2$.*2$s", "x"), "%2$.*2$s");
    EXPECT_EQ(Printed("UTF8", "%0$d %b$d %-", 1), "%0$d %b$d %-");
    EXPECT_EQ(Printed("UTF8", "%d%", 1), "1%");
    EXPECT_EQ(Printed("UTF8", "%p %d"), "%p %d");
    // clang-format on
    for (const char *tooLong : {"ab%*d", "ab%-*s", "ab%+*f", "ab%0*x", "ab%*P", "ab%*c"})
        EXPECT_EQ(Printed("UTF8", tooLong, INT_MAX, nullptr, nullptr, nullptr), "ab") << tooLong;
    for (const char *tooLong : {"ab%.*f", "ab%.2147483647e", "ab%99999999999g"})
        EXPECT_EQ(Printed("UTF8", tooLong, INT_MAX, 2.5), "ab") << tooLong;
    EXPECT_EQ(Printed("UTF8", "ab%.*d", INT_MAX, 5), "ab");
}

// Every value that the table does not ask for is one that shows when it is looked at: an
// address that is none, a width beyond all others.
TEST(Print, LooksAtNoArgumentThatWasNotFetched)
{
    std::mt19937 random(50);
    const std::string_view bytes =
        "%%%%%%**..$$$$0123456789ab:/-+ #'hlLdiouxXceEfgGnPspjzF\x1B(B\xC3";
    for (int round = 0; round < 50000; ++round) {
        std::string format;
        int digits = 0;
        for (auto i = random() % 30; i > 0; --i) {
            const char byte = bytes[random() % bytes.size()];
            if (byte < '0' || byte > '9' || ++digits < 5) // widths that fit in memory
                format += byte;
        }
        const Guarded guarded(format);
        const CSDescriptor cs = DescriptorOf(kWalkedSets[random() % std::size(kWalkedSets)]);
        const Scanned scanned = Scan(cs, guarded.c_str());
        std::vector<short> shorts(STR_PARAMETERS, 7);
        std::vector<int> ints(STR_PARAMETERS, 150000);
        std::vector<long> longs(STR_PARAMETERS, 7);
        std::vector<double> doubles(STR_PARAMETERS, 7.5);
        std::vector<long double> longDoubles(STR_PARAMETERS, 7.5L);
        std::vector<void *> pointers(STR_PARAMETERS, reinterpret_cast<void *>(1));
        char string[] = "\x1B$B$\"";
        for (size_t k = 1; k <= static_cast<size_t>(scanned.maxParam); ++k) {
            if (scanned.table[k].type == STR_ARG_INT)
                ints[k] = static_cast<int>(random() % 100) - 50;
            if (scanned.table[k].type == STR_ARG_STRING)
                pointers[k] = string;
        }
        unsigned int length = 0;
        const char *text =
            str_buildpfstring(&cs, &length, guarded.c_str(), scanned.table.data(), scanned.maxParam,
                              shorts.data(), ints.data(), longs.data(), nullptr, doubles.data(),
                              longDoubles.data(), pointers.data());
        ASSERT_EQ(text == nullptr, length == 0) << format;
        const std::string built = text == nullptr ? "" : text;
        ASSERT_EQ(built.size(), length) << format;
        ASSERT_LT(length, 100000U) << format;
        if (scanned.maxParam == 0) {
            ASSERT_EQ(built, format);
        }
    }
}

} // namespace
