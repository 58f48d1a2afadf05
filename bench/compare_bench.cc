// SPDX-License-Identifier: Apache-2.0
//
// Comparison of equal texts, which takes longest: without regard to case with a text in capital
// letters, and with regard to case with a copy.
#include "bench/support.h"
#include "bench/texts.h"
#include "services/services.h"
#include "tests/support/home.h"

#include <glib.h>
#include <platform/ccs.h>
#include <str/compare.h>
#include <unicode/ucasemap.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <strings.h>

namespace
{

using bench::Text;
using bench::Way;

constexpr size_t kSizes[] = {16, 64, 256, 4096, 65536};
constexpr size_t kMost = 4 * 65536; // of anything

const std::vector<std::string> kGreekLetter = {"Αγαπητέ ", "κύριε ",    "Παπαδόπουλε, ", "σας ",
                                               "στέλνω ",  "την ",      "πρόταση ",      "για ",
                                               "το ",      "συμβόλαιο "};

// What a text is compared with: itself in capital letters, and a copy.
const Text *theText;
std::string theCapitals, theCopy;

void Prepare(const Text &text)
{
    gchar *const capitals =
        g_utf8_strup(bench::Recode("UTF-8", text.sort.iconv, text.bytes).c_str(), -1);
    theCapitals = bench::Recode(text.sort.iconv, "UTF-8", capitals);
    g_free(capitals);
    theCopy = text.bytes;
    theText = &text;
}

const std::string &Capitals(const Text &text)
{
    if (theText != &text)
        Prepare(text);
    return theCapitals;
}

const std::string &Copy(const Text &text)
{
    Capitals(text);
    return theCopy;
}

// Every way returns whether the two are equal.
size_t Ours(const Text &text)
{
    return str_strucasecmp(text.bytes.c_str(), Capitals(text).c_str(), &text.cs) == 0;
}

size_t OursInCase(const Text &text)
{
    return str_strcmp(text.bytes.c_str(), Copy(text).c_str(), &text.cs) == 0;
}

size_t ByStrcmp(const Text &text)
{
    return std::strcmp(text.bytes.c_str(), Copy(text).c_str()) == 0;
}

// ---- What knows one set --------------------------------------------------------------------

locale_t theLatin1; // null if there is none

// A system may not have this locale, so it is made for the run.
void MakeLatin1(const TempHome &home)
{
    const std::string command =
        "localedef -i en_US -f ISO-8859-1 " + home.PathOf("en_US.ISO-8859-1") + " >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0)
        return;
    setenv("LOCPATH", home.path().c_str(), 1);
    theLatin1 = newlocale(LC_CTYPE_MASK, "en_US.ISO-8859-1", nullptr);
    unsetenv("LOCPATH");
}

size_t ByStrcasecmp(const Text &text)
{
    return strcasecmp(text.bytes.c_str(), Capitals(text).c_str()) == 0;
}

size_t InLatin1(const Text &text)
{
    return strcasecmp_l(text.bytes.c_str(), Capitals(text).c_str(), theLatin1) == 0;
}

// ---- By way of Unicode ---------------------------------------------------------------------

// With the converter kept open.
size_t ByIcu(const Text &text)
{
    static UChar characters[2][kMost];
    static const char *name;
    static UConverter *converter;
    UErrorCode error = U_ZERO_ERROR;
    if (name != text.sort.iconv) {
        ucnv_close(converter);
        converter = ucnv_open(name = text.sort.iconv, &error);
    }
    int32_t counts[2];
    for (const int i : {0, 1}) {
        const std::string &bytes = i == 0 ? text.bytes : Capitals(text);
        counts[i] = ucnv_toUChars(converter, characters[i], kMost, bytes.data(),
                                  static_cast<int32_t>(bytes.size()), &error);
    }
    const int32_t order = u_strCaseCompare(characters[0], counts[0], characters[1], counts[1],
                                           U_FOLD_CASE_DEFAULT, &error);
    return U_SUCCESS(error) && order == 0;
}

size_t ByIcuInUtf8(const Text &text)
{
    static char folded[2][kMost];
    UErrorCode error = U_ZERO_ERROR;
    static UCaseMap *const map = ucasemap_open("", 0, &error);
    int32_t counts[2];
    for (const int i : {0, 1}) {
        const std::string &bytes = i == 0 ? text.bytes : Capitals(text);
        counts[i] = ucasemap_utf8FoldCase(map, folded[i], kMost, bytes.data(),
                                          static_cast<int32_t>(bytes.size()), &error);
    }
    return U_SUCCESS(error) && counts[0] == counts[1] &&
           std::memcmp(folded[0], folded[1], static_cast<size_t>(counts[0])) == 0;
}

gchar *Folded(const std::string &bytes, const Text &text)
{
    if (text.sort.set == std::string("UTF8"))
        return g_utf8_casefold(bytes.c_str(), -1);
    gchar *const utf8 = g_convert(bytes.data(), static_cast<gssize>(bytes.size()), "UTF-8",
                                  text.sort.iconv, nullptr, nullptr, nullptr);
    gchar *const folded = g_utf8_casefold(utf8, -1);
    g_free(utf8);
    return folded;
}

size_t ByGLib(const Text &text)
{
    gchar *const folded = Folded(text.bytes, text), *const other = Folded(Capitals(text), text);
    const bool equal = std::strcmp(folded, other) == 0;
    g_free(folded);
    g_free(other);
    return equal;
}

// With the converter kept open, and into buffers that are there.
size_t ByIconv(const Text &text)
{
    static wchar_t wide[2][kMost];
    for (const int i : {0, 1}) {
        const std::string &bytes = i == 0 ? text.bytes : Capitals(text);
        char *in = const_cast<char *>(bytes.data()), *out = reinterpret_cast<char *>(wide[i]);
        size_t inLeft = bytes.size(), outLeft = sizeof wide[i] - sizeof(wchar_t);
        iconv(text.converter, &in, &inLeft, &out, &outLeft);
        wide[i][(sizeof wide[i] - outLeft) / sizeof(wchar_t) - 1] = L'\0';
    }
    return wcscasecmp(wide[0], wide[1]) == 0;
}

// ---- The comparisons -----------------------------------------------------------------------

constexpr char kLatin1[] = "ISO-8859-1", kJapanese[] = "ISO-2022-JP";

struct Row {
    bench::Sort sort;
    std::vector<std::string> pieces;
    std::vector<Way> peers;
};

void CompareAll(const char *family, const Way &ours, const Row &row)
{
    for (const size_t size : kSizes) {
        std::vector<Way> ways = {ours};
        ways.insert(ways.end(), row.peers.begin(), row.peers.end());
        bench::Compare(family, bench::MakeText(row.sort, row.pieces, size), ways);
    }
}

const bool theRegistration = [] {
    const Way icu = {"ICU, kept open", ByIcu}, glib = {"GLib", ByGLib};
    const Way iconv = {"iconv, wcscasecmp", ByIconv}, icu8 = {"ucasemap", ByIcuInUtf8};
    std::vector<Row> rows = {
        {{"ISO-8859-1, letter", kLatin1, kLatin1}, bench::kLetter, {icu, glib}},
        {{"T.61, letter", "T.61", "T.61-8BIT"}, bench::kLetter, {iconv, glib}},
        {{"ISO-2022-JP, subjects", kJapanese, kJapanese}, bench::kSubjects, {iconv, icu, glib}},
        {{"UTF-8, letter", "UTF8", "UTF-8"}, bench::kLetter, {icu8, icu, glib}},
        {{"UTF-8, Greek", "UTF8", "UTF-8"}, kGreekLetter, {icu8, icu, glib}},
        {{"ASCII", "IA5", "US-ASCII"},
         {"Dear ", "Sir ", "or ", "Madam, ", "your ", "Order ", "No. 204 ", "is ", "on ", "its ",
          "way. "},
         {{"strcasecmp", ByStrcasecmp}, icu, glib}},
    };
    er_SetTraceSink([](int, const char *, int) {});
    const TempHome home;
    std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper"));
    for (const Row &row : rows) { // the case tables stay in the registry
        Ours(bench::MakeText(row.sort, row.pieces, 256));
        theText = nullptr;
    }
    MakeLatin1(home);
    if (theLatin1 != nullptr)
        rows[0].peers.push_back({"strcasecmp_l", InLatin1});
    for (const Row &row : rows)
        CompareAll("str_strucasecmp", {"libstr", Ours}, row);
    for (const size_t i : {0U, 2U})
        CompareAll("str_strcmp", {"libstr", OursInCase},
                   {rows[i].sort, rows[i].pieces, {{"strcmp", ByStrcmp}}});
    return true;
}();

} // namespace
