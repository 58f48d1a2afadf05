// SPDX-License-Identifier: Apache-2.0
//
// Display width, beside the way through wide characters.  A terminal's wcswidth gives kanji two
// cells and the library gives every character one column, so the ways are held to the number of
// characters.
#include "bench/support.h"
#include "bench/texts.h"

#include <benchmark/benchmark.h>
#include <glib.h>
#include <iconv.h>
#include <str/display.h>

#include <cstdlib>
#include <cwchar>

namespace
{

using bench::Sort;
using bench::Text;
using bench::Way;

constexpr size_t kSizes[] = {16, 64, 256, 4096};

wchar_t theBuffer[4096 + 1];

size_t Ours(const Text &text) { return str_dispstrlen(text.bytes.c_str(), &text.cs); }

size_t Measured(size_t characters)
{
    benchmark::DoNotOptimize(wcswidth(theBuffer, characters));
    return characters;
}

// Converts the text from the converter's initial state and measures it.
size_t ConvertAndMeasure(iconv_t converter, const Text &text)
{
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char *in = const_cast<char *>(text.bytes.data());
    char *out = reinterpret_cast<char *>(theBuffer);
    size_t inLeft = text.bytes.size(), outLeft = sizeof theBuffer;
    if (iconv(converter, &in, &inLeft, &out, &outLeft) != 0)
        return 0;
    return Measured((sizeof theBuffer - outLeft) / sizeof(wchar_t));
}

size_t OpenedForTheText(const Text &text)
{
    const iconv_t converter = iconv_open("WCHAR_T", text.sort.iconv);
    const size_t characters = ConvertAndMeasure(converter, text);
    iconv_close(converter);
    return characters;
}

size_t KeptOpen(const Text &text) { return ConvertAndMeasure(text.converter, text); }

size_t Mbstowcs(const Text &text)
{
    return Measured(std::mbstowcs(theBuffer, text.bytes.c_str(), std::size(theBuffer)));
}

size_t CountedByGLib(const Text &text)
{
    return static_cast<size_t>(g_utf8_strlen(text.bytes.c_str(), -1));
}

const std::vector<Way> kWaysOfSets = {
    {"libstr", Ours}, {"iconv, opened anew", OpenedForTheText}, {"iconv, kept open", KeptOpen}};
const std::vector<Way> kWaysOfUtf8 = {
    {"libstr", Ours}, {"mbstowcs, wcswidth", Mbstowcs}, {"g_utf8_strlen", CountedByGLib}};

struct Row {
    Sort sort;
    const std::vector<std::string> &pieces;
    const std::vector<Way> &ways;
};
const Row kRows[] = {
    {{"ISO-2022-JP, subjects", "ISO-2022-JP", "ISO-2022-JP"}, bench::kSubjects, kWaysOfSets},
    {{"ISO-2022-JP, letter", "ISO-2022-JP", "ISO-2022-JP"}, bench::kJapaneseLetter, kWaysOfSets},
    {{"EUC-JP, letter", "EUC-JP", "EUC-JP"}, bench::kJapaneseLetter, kWaysOfSets},
    {{"EUC-JP, directory", "EUC-JP", "EUC-JP"}, bench::kDirectory, kWaysOfSets},
    {{"T.61, letter", "T.61", "T.61-8BIT"}, bench::kLetter, kWaysOfSets},
    {{"ISO-8859-1, letter", "ISO-8859-1", "ISO-8859-1"}, bench::kLetter, kWaysOfSets},
    {{"UTF-8, letter", "UTF8", "UTF-8"}, bench::kLetter, kWaysOfUtf8},
    {{"UTF-8, Japanese letter", "UTF8", "UTF-8"}, bench::kJapaneseLetter, kWaysOfUtf8},
};

const bool theRegistration = [] {
    for (const Row &row : kRows)
        for (const size_t size : kSizes)
            bench::Compare("display width", bench::MakeText(row.sort, row.pieces, size), row.ways);
    return true;
}();

} // namespace
