// SPDX-License-Identifier: Apache-2.0
//
// Formatting: what printf prints, in every set; malformed formats.
#include "tests/support/test.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <tuple>

#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace
{

const char *const kWalkedSets[] = {"ISO-2022-JP", "UTF8", "EUC-KR"};

// What is printed; "!" follows where PrintfError says that a directive was cut off or misnumbered.
template <class... Arguments>
std::string Printed(const char *set, const std::string &format, Arguments... arguments)
{
    const CSDescriptor cs = DescriptorOf(set);
    std::vector<char> room(1 << 16, '?');
    const Guarded guarded(format);
    PrintfError = 0;
    const int length = str_simplesprintf(&cs, room.data(), guarded.c_str(), arguments...);
    if (length == -1)
        return room[0] == '?' ? "nothing" : "written";
    EXPECT_EQ(strlen(room.data()), static_cast<size_t>(length));
    return room.data() + std::string(PrintfError != 0 ? "!" : "");
}

// ---- Beside snprintf -------------------------------------------------------------------------

std::mt19937 theRandom(TestSeed());

unsigned int Below(unsigned int most) { return static_cast<unsigned int>(theRandom() % most); }

std::string OneOf(const std::string &letters)
{
    return letters.substr(Below(static_cast<unsigned int>(letters.size())), 1);
}

std::string RandomText()
{
    std::string text;
    for (auto i = Below(8) == 0 ? Below(200) : Below(5); i > 0; --i)
        text += static_cast<char>(' ' + Below(94));
    std::replace(text.begin(), text.end(), '%', '$');
    return text;
}

// For the arguments: int, long, double, string, width, short, long double, precision, string.
std::string RandomFormat()
{
    const bool positions = Below(2) == 0;
    const auto numbered = [=](const char *sign, int number) {
        return sign + (positions ? std::to_string(number) + "$" : "");
    };
    const std::tuple<int, std::string, std::string> rows[] = {
        {1, "", "diuoxXcc"},
        {2, "l", "diuoxX"},
        {3, "", "eEfgG"},
        {4, "", "s"},
        {6, Below(2) == 0 ? "h" : "hh", "diuoxX"},
        {7, "L", "eEfgG"},
        {9, "", "s"}};
    std::vector<std::string> directives;
    for (const auto &[number, size, conversions] : rows) {
        std::string text = numbered("%", number);
        for (const char flag : "-0+ #"s)
            text.append(Below(4) == 0, flag);
        const std::string width = std::to_string(1 + Below(40)),
                          precision = Below(4) == 0 ? "" : std::to_string(Below(30));
        text += number == 6 ? numbered("*", 5) : Below(3) == 0 ? width : "";
        text += number == 9 ? "." + numbered("*", 8) : Below(3) == 0 ? "." + precision : "";
        directives.push_back(text + size + OneOf(conversions));
    }
    if (positions)
        std::shuffle(directives.begin(), directives.end(), theRandom);
    std::string format;
    for (const std::string &directive : directives)
        format += RandomText() + directive;
    return format + RandomText();
}

// Now and then the texts are far longer than all before, so the buffer grows.  What is printed may
// be where the text is written.
TEST(Print, EqualsSnprintf)
{
    std::vector<char> expected(1 << 25), room(1 << 25);
    for (int round = 0; round < 100000; ++round) {
        const int growth = std::has_single_bit(static_cast<unsigned int>(round)) ? round : 1;
        std::string texts[] = {RandomFormat(), "", RandomText()}; // the format and two strings
        for (int i = 0; i < growth; ++i)
            texts[1] += RandomText();
        char *place = room.data() + Below(100);
        const char *at[3];
        for (size_t i = 0; i < 3; place += texts[i++].size() + 1 + Below(100))
            at[i] = round % 2 == 0 ? texts[i].c_str() : std::strcpy(place, texts[i].c_str());
        const CSDescriptor cs = DescriptorOf(kWalkedSets[Below(std::size(kWalkedSets))]);
        const int byte = static_cast<int>(theRandom() | 1), half = static_cast<int>(theRandom());
        const int width = byte % 50 * growth, precision = static_cast<int>(Below(60)) - 20;
        const auto number = static_cast<long>(theRandom() * uint64_t{theRandom()});
        const double real = std::ldexp(Below(1000000), static_cast<int>(Below(60)) - 40);
        const long double longReal = round < 64 ? 1e4000L : static_cast<long double>(real) / 3;
        const auto print = [&](auto function, auto... destination) {
            return function(destination..., at[0], byte, number, real, at[1], width, half, longReal,
                            precision, at[2]);
        };
        const int length = print(std::snprintf, expected.data(), expected.size());
        ASSERT_EQ(print(str_simplesprintf, &cs, room.data()), length) << texts[0];
        ASSERT_STREQ(room.data(), expected.data()) << texts[0];
    }
}

TEST(Print, TakesWhatItIsPassedAsPrintfDoes)
{
    char address[64];
    void *const at = address, *const none = nullptr;
    std::snprintf(address, sizeof address, "%p|%20p|%-20p|%p", at, at, at, none);
    int untouched = 4711, *const n = &untouched;
    const struct {
        std::string printed;
        const char *expected;
    } rows[] = {
        // clang-format off
        {Printed("UTF8", "%1$d %3$d", 1, 2, 3), "1 2"}, // a number left out has no argument
        {Printed("UTF8", "%3$d%d%1$d", 1, 2, 3), "231"}, // a position sets the number
        {Printed("UTF8", "100%% %d%%%d", 1, 2), "100%% 1%%2"},
        {Printed("UTF8", "%d$ %s$%%$%d", 5, "x", 6), "5$ x$%%$6"}, // a '$' that is text
        {Printed("UTF8", "%1$*1$d %2$*1$d", 3, 7), "  3   7"}, // one int, by two directives
        {Printed("UTF8", "%.*s|%*s|", INT_MAX, "a", INT_MIN + INT_MAX - 2, "b"), "a|b  |"},
        {Printed("UTF8", "%s|%.5s|%8s|%.6s", none, none, none, none), "(null)||  (null)|(null)"},
        {Printed("UTF8", "a%cb%3cc%-3cd", 0, 0, 0), "ab  cd"}, // up to the NUL
        {Printed("UTF8", "%P|%20P|%-20P|%P", at, at, at, none), address},
        {Printed("UTF8", "ab%ncd%hhn%*n%d", n, n, 9, n, 5), "abcd5"},
        {Printed("UTF8", ""), "nothing"},
        {Printed("ISO-8859-1", "%d%%", 5), "5%"}, // vsprintf
        {Printed("ISO-8859-1", ""), ""}, // with its results
        {Printed("ISO-2022-JP", "\x1B$B%7%d\x1B(B %d", 5), "\x1B$B%7%d\x1B(B 5"}, // no directives
        {Printed("EUC-JP", "%d\x1B(I%d", 5), "5\x1B(I%d"}, // what switches sets
        {Printed("EUC-JP", "%d\x0E%d", 5), "5\x0E%d"},
        {Printed("EUC-JP", "%\x0F" "d", 5), "%\x0F" "d!"},
        {Printed("T.61", "%x%#x", 10, 11), "a%#x!"}, // what varies is not ASCII
        {Printed("ISO-2022-JP", "%x%#x", 10, 11), "a0xb"},
        {Printed("ISO-2022-JP", "[%-5s]", "\x1B$BF|F|"), "[\x1B$BF|F|\x1B(B]"},
        {Printed("UTF8", "%.4s|%.3s|%-4.2s|", "\xC3\xA9\xE6\x97\xA5", "\xE6\x97\xA5", "\u65E5"),
         "\xC3\xA9|\xE6\x97\xA5|    |"}, // no character is cut
        // Malformed.
        {Printed("UTF8", "%5-d|%.5.1d|%**d", 1, 2, 3, 4), "1    |2|  4"},
        {Printed("UTF8", "%5*d|%*5d", 5, 6, 7, 8), "    6|      8"},
        {Printed("UTF8", "%10$d|%-5$+d|%zd|%lld|%hhhd|%,d", 1, 2, 3, 4L, 5, 6), "1|+2|3|4|5|6"},
        {Printed("UTF8", "%lc%ls%hs%Ld", 'a', "b", "c", 4), "abc4"}, // no wide characters
        {Printed("UTF8", "%1$d %1$s", "x"), "%1$d x"}, // the number is taken again
        {Printed("UTF8", "%2$*1$d %1$s", "x", 2), "%2$*1$d x"}, // no int for the width
        {Printed("UTF8", "%1$s %2$*1$d", 3, 2), "%1$s   2"}, // the string is the width
        {Printed("UTF8", "%0$d%b$d%*/$d%.*b$d", 1, 2, 3), "%0$d%b$d%*/$d%.*b$d!"}, // misnumbered
        {Printed("UTF8", "%a$d%A$d%:$d", 1, 2, 3), "321"}, // 49, 17, 10
        {Printed("UTF8", "%d%-5", 1), "1%-5!"}, // cut off
        {Printed("ISO-2022-JP", "%hl.\x1B$B$\"\x1B(Bd%d", 1), "%hl.\x1B$B$\"\x1B(Bd1!"},
        {Printed("UTF8", "%p %d%a %z", 1, 2), "%p %d%a %z"}, // p and a are not known
        {Printed("UTF8", "ab%.*d", INT_MAX, 5), "ab"}, // too long
        {Printed("UTF8", "ab%.*f", INT_MAX, 2.5), "ab"},
        {Printed("UTF8", "ab%99999999999s", none), "ab"},
        // clang-format on
    };
    for (const auto &row : rows)
        EXPECT_EQ(row.printed, row.expected);
    EXPECT_EQ(untouched, 4711);
}

TEST(Print, WritesToStreams)
{
    const CSDescriptor walked = DescriptorOf("ISO-2022-JP"), bytes = DescriptorOf("ISO-8859-1");
    testing::internal::CaptureStdout();
    EXPECT_EQ(str_simplefprintf(&walked, stdout, "%d%%,", 1), 4);
    EXPECT_EQ(str_simplefprintf(&bytes, stdout, "%d%%,", 2), 3) << "vfprintf";
    EXPECT_EQ(str_simpleprintf(&bytes, "%d%%,", 3), 4) << "always built here";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "1%%,2%,3%%,");
    FILE *full = std::fopen("/dev/full", "w");
    std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_EQ(str_simplefprintf(&walked, full, "%d", 1), -1);
    std::fclose(full);
}

// ---- The table -------------------------------------------------------------------------------

// What is built by the table from zeros; each float is 2.5.
std::string Built(const char *format, const ParameterRecord *records, uint16_t most)
{
    const CSDescriptor cs = DescriptorOf("UTF8");
    unsigned int length = 0;
    const auto all = [](auto value) { return std::vector(STR_PARAMETERS, value); };
    const char *const text =
        str_buildpfstring(&cs, &length, format, records, most, all(short{}).data(), all(0).data(),
                          all(0L).data(), all(2.5F).data(), all(0.).data(), all(0.L).data(),
                          all(static_cast<void *>(nullptr)).data());
    EXPECT_EQ(text == nullptr ? 0 : strlen(text), length);
    return text == nullptr ? "" : text;
}

TEST(Print, StopsAtTheEndOfTheTable)
{
    std::string format, expected;
    for (int i = 1; i <= 1000; ++i) {
        format += "%d,";
        expected += i < STR_PARAMETERS ? "0," : "%d,";
    }
    const Guarded room(STR_PARAMETERS * sizeof(ParameterRecord));
    auto *const records = reinterpret_cast<ParameterRecord *>(room.data());
    const CSDescriptor cs = DescriptorOf("UTF8");
    int count = 0;
    const CSSegment *const segments = ccs_GetAllStrs(&cs, format.c_str(), -1, &count);
    PrintfError = 0;
    const uint16_t most = str_GetParams(&cs, format.c_str(), segments, count, records);
    EXPECT_EQ(PrintfError, 1);
    EXPECT_EQ(Built(format.c_str(), records, most), expected);
}

// Records that are not the scanner's: what does not fit its directive is text.
TEST(Print, TakesAnyTable)
{
    const char *const format = "a%db%fc%s";
    const ParameterRecord others[][2] = {
        {{}, {}},
        {{STR_ARG_DOUBLE, 1, format + 1, 2, -1, -1}, {STR_ARG_INT, 1, format + 7, 2, -1, -1}},
        {{STR_ARG_INT, 1, "%d", 2, -1, -1}, {STR_ARG_STRING, 1, format + 7, 3, -1, -1}},
    };
    for (const auto &other : others) {
        const ParameterRecord records[] = {
            {}, other[0], {STR_ARG_FLOAT, 1, format + 4, 2, -1, -1}, other[1]};
        EXPECT_EQ(Built(format, records, 3), "a%db2.500000c%s");
    }
}

} // namespace
