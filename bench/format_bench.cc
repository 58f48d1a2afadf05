// SPDX-License-Identifier: Apache-2.0
//
// Formatting, beside snprintf and fmt.  They know no sets: the formats here hold no '%' and no brace
// inside a character, and no string ends in another set than ASCII.
#include "bench/format_ways.h"
#include "bench/texts.h"

#include <platform/ccs.h>

#include <fmt/format.h>

namespace
{

using namespace bench::format;
using bench::Sort;
using bench::Text;
using bench::Way;

constexpr size_t kSizes[] = {16, 64, 256, 4096}; // of strings

// ---- The library's builder and fmt ---------------------------------------------------------

struct Values {
    int ints[STR_PARAMETERS];
    double doubles[STR_PARAMETERS];
    void *pointers[STR_PARAMETERS];

    void Set(int number, int value) { ints[number] = value; }
    void Set(int number, double value) { doubles[number] = value; }
    void Set(int number, const char *value) { pointers[number] = const_cast<char *>(value); }
};

// What the print function does, for sets that it would hand to vsprintf.
constexpr auto kBuild = [](const Text &text, const char *format, auto... arguments) -> size_t {
    int count;
    const CSSegment *segments = ccs_GetAllStrs(&text.cs, format, -1, &count);
    ParameterRecord table[STR_PARAMETERS];
    const int maxParam = str_GetParams(&text.cs, format, segments, count, table);
    Values values;
    int number = 0;
    (values.Set(++number, arguments), ...);
    unsigned int length;
    const char *built =
        str_buildpfstring(&text.cs, &length, format, table, maxParam, nullptr, values.ints, nullptr,
                          nullptr, values.doubles, nullptr, values.pointers);
    std::memcpy(thePrint, built, length + 1);
    return length;
};

// The format in the notation of fmt, made once for all calls in a row.
const std::string &Translated(const char *format)
{
    static std::string source, translated;
    if (source == format)
        return translated;
    source = format;
    translated.clear();
    for (const char *at = format; *at != '\0'; ++at) {
        if (*at != '%') {
            translated += *at;
            continue;
        }
        const std::string directive(at + 1, std::strcspn(at, "dsxfc"));
        const bool plain = directive.size() == 1 && directive != "x";
        translated += plain ? "{}" : "{:" + directive + "}";
        at += directive.size();
    }
    return translated;
}

constexpr auto kFmt = [](const Text &, const char *format, auto... arguments) {
    const auto end = fmt::format_to_n(thePrint, sizeof thePrint - 1,
                                      fmt::runtime(Translated(format)), arguments...);
    *end.out = '\0';
    return end.size;
};

// Ten directives in a format, which is the text.
template <const auto &print>
size_t Message(const Text &text)
{
    return print(text, text.bytes.c_str(), theNumber, "ab", 12, 0x2A, 204, "cd", 2.5, 'z', "ef",
                 10);
}
const std::vector<std::string> kMessage = {
    "Büro %d: %s, %d / %x, Gerät %d (%s) %.1f %c, Straße %s %d"};
const std::vector<std::string> kJapaneseMessage = {
    "会議 %d: %s, %d / %x, 資料 %d (%s) %.1f %c, 東京 %s %d"};

// ---- The comparisons -----------------------------------------------------------------------

template <const auto &print>
void CompareSet(const Sort &sort, const std::vector<std::string> &letter,
                const std::vector<std::string> &message)
{
    const std::vector<Way> shorts = {
        {"libstr", Short<print>}, {"snprintf", Short<kSnprintf>}, {"fmt", Short<kFmt>}};
    const std::vector<Way> messages = {
        {"libstr", Message<print>}, {"snprintf", Message<kSnprintf>}, {"fmt", Message<kFmt>}};
    for (const size_t size : kSizes)
        bench::Compare("x=%d y=%s, a string", bench::MakeText(sort, letter, size), shorts, Printed);
    bench::Compare("a message of ten directives", bench::MakeText(sort, message, 90), messages,
                   Printed);
}

const bool theRegistration = [] {
    CompareSet<kBuild>({"ISO-8859-1", "ISO-8859-1", "ISO-8859-1"}, bench::kLetter, kMessage);
    CompareSet<kPrint>({"ISO-2022-JP", "ISO-2022-JP", "ISO-2022-JP"}, bench::kJapaneseLetter,
                       kJapaneseMessage);
    CompareSet<kPrint>({"UTF-8", "UTF8", "UTF-8"}, bench::kLetter, kMessage);
    return true;
}();

} // namespace
