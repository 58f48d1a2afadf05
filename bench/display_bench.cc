// SPDX-License-Identifier: Apache-2.0
//
// Display width, beside the way through wide characters.  A terminal's wcswidth gives kanji two
// cells and the library gives every character one column, so the ways are held to the number of
// characters.
#include "bench/support.h"

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

// Mail subjects, letters and directory lines, in pieces small enough for the shortest texts.
const std::vector<std::string> kSubjects = {
    "Re: ", "会議",   "資料の", "送付に",     "ついて",   " (7/15 10:00) ", "[",       "重要",
    "] ",   "サーバ", "移行の", "お知らせと", "ご確認の", "お願い",         " No.204 "};
const std::vector<std::string> kJapaneseLetter = {
    "佐藤様、", "第3",    "四半期の", "売上",   "報告書を",     "お送り",   "します。",
    "ご確認の", "ほど、", "よろしく", "お願い", "いたします。", "札幌支店", " TEL 011-123-4567 "};
const std::vector<std::string> kDirectory = {"佐藤 ", "健一, ", "札幌, ", "ﾀﾅｶ ",
                                             "ｹｲｺ, ", "東京, ", "内線 ",  "204; "};
const std::vector<std::string> kLetter = {
    "Sehr ",          "geehrter ",  "Herr ",  "Müller, ", "das ",     "Büro ", "in ",
    "Zürich ",        "bestätigt ", "den ",   "Termin. ", "Réunion ", "du ",   "comité: ",
    "procès-verbal ", "et ",        "ordre ", "du ",      "jour. "};

struct Row {
    Sort sort;
    const std::vector<std::string> &pieces;
    const std::vector<Way> &ways;
};
const Row kRows[] = {
    {{"ISO-2022-JP, subjects", "ISO-2022-JP", "ISO-2022-JP"}, kSubjects, kWaysOfSets},
    {{"ISO-2022-JP, letter", "ISO-2022-JP", "ISO-2022-JP"}, kJapaneseLetter, kWaysOfSets},
    {{"EUC-JP, letter", "EUC-JP", "EUC-JP"}, kJapaneseLetter, kWaysOfSets},
    {{"EUC-JP, directory", "EUC-JP", "EUC-JP"}, kDirectory, kWaysOfSets},
    {{"T.61, letter", "T.61", "T.61-8BIT"}, kLetter, kWaysOfSets},
    {{"ISO-8859-1, letter", "ISO-8859-1", "ISO-8859-1"}, kLetter, kWaysOfSets},
    {{"UTF-8, letter", "UTF8", "UTF-8"}, kLetter, kWaysOfUtf8},
    {{"UTF-8, Japanese letter", "UTF8", "UTF-8"}, kJapaneseLetter, kWaysOfUtf8},
};

const bool theRegistration = [] {
    for (const Row &row : kRows)
        for (const size_t size : kSizes)
            bench::Compare("display width", bench::MakeText(row.sort, row.pieces, size), row.ways);
    return true;
}();

} // namespace
