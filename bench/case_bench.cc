// SPDX-License-Identifier: Apache-2.0
//
// Upper case of texts in their sets.  Beside it: ways that know one set (toupper_l, a table of 256
// bytes), and ways through Unicode and back (ICU, GLib, iconv).
#include "bench/support.h"
#include "bench/texts.h"
#include "services/services.h"
#include "tests/support/home.h"

#include <glib.h>
#include <iconv.h>
#include <platform/ccs.h>
#include <str/case.h>
#include <unicode/ucasemap.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cstdlib>
#include <cwctype>
#include <filesystem>
#include <iterator>
#include <stdexcept>

namespace
{

using bench::Text;
using bench::Way;

constexpr size_t kSizes[] = {16, 64, 256, 1024, 4096};
constexpr size_t kMost = 8 * 4096; // of anything

// The upper case that a way made; the way returns its bytes.
const char *theUpper;
gchar *theAllocated;
char theResult[kMost];

std::string UpperCase(const Text &, size_t answer) { return {theUpper, answer}; }

size_t Result(size_t length)
{
    theUpper = theResult;
    return length;
}

// GLib releases it.
size_t Take(gchar *upper, gsize length)
{
    g_free(theAllocated);
    theUpper = theAllocated = upper;
    return length;
}

size_t Ours(const Text &text)
{
    int length = 0;
    theUpper =
        str_ToUpper(text.bytes.data(), static_cast<int>(text.bytes.size()), &length, &text.cs);
    return static_cast<size_t>(length);
}

// ---- What knows ISO 8859-1 alone -----------------------------------------------------------

locale_t theLatin1; // null if there is none
unsigned char theTable[256];

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

void MakeTable()
{
    for (unsigned byte = 0; byte < 256; ++byte) {
        const bool isSmall =
            (byte >= 'a' && byte <= 'z') || (byte >= 0xE0 && byte <= 0xFE && byte != 0xF7);
        theTable[byte] = static_cast<unsigned char>(isSmall ? byte - 0x20 : byte);
    }
}

size_t ByToupper(const Text &text)
{
    for (size_t i = 0; i < text.bytes.size(); ++i)
        theResult[i] =
            static_cast<char>(toupper_l(static_cast<unsigned char>(text.bytes[i]), theLatin1));
    return Result(text.bytes.size());
}

size_t ByTable(const Text &text)
{
    for (size_t i = 0; i < text.bytes.size(); ++i)
        theResult[i] = static_cast<char>(theTable[static_cast<unsigned char>(text.bytes[i])]);
    return Result(text.bytes.size());
}

// ---- By way of Unicode ---------------------------------------------------------------------

void Demand(UErrorCode error)
{
    if (U_FAILURE(error))
        throw std::runtime_error(u_errorName(error));
}

constexpr char kLatin1[] = "ISO-8859-1", kJapanese[] = "ISO-2022-JP";

// With the converter kept open.
template <const char *name>
size_t ByIcu(const Text &text)
{
    static UChar characters[kMost], upper[kMost];
    UErrorCode error = U_ZERO_ERROR;
    static UConverter *const converter = ucnv_open(name, &error);
    const int32_t count = ucnv_toUChars(converter, characters, kMost, text.bytes.data(),
                                        static_cast<int32_t>(text.bytes.size()), &error);
    const int32_t upperCount = u_strToUpper(upper, kMost, characters, count, "", &error);
    const int32_t length = ucnv_fromUChars(converter, theResult, kMost, upper, upperCount, &error);
    Demand(error);
    return Result(static_cast<size_t>(length));
}

size_t ByIcuInUtf8(const Text &text)
{
    UErrorCode error = U_ZERO_ERROR;
    static UCaseMap *const map = ucasemap_open("", 0, &error);
    const int32_t length = ucasemap_utf8ToUpper(map, theResult, kMost, text.bytes.data(),
                                                static_cast<int32_t>(text.bytes.size()), &error);
    Demand(error);
    return Result(static_cast<size_t>(length));
}

size_t ByGLib(const Text &text)
{
    gsize length = 0;
    gchar *const utf8 = g_convert(text.bytes.data(), static_cast<gssize>(text.bytes.size()),
                                  "UTF-8", text.sort.iconv, nullptr, nullptr, nullptr);
    gchar *const upper = g_utf8_strup(utf8, -1);
    gchar *const result = g_convert(upper, -1, text.sort.iconv, "UTF-8", nullptr, &length, nullptr);
    g_free(utf8);
    g_free(upper);
    return Take(result, length);
}

size_t ByGLibInUtf8(const Text &text)
{
    if (g_utf8_validate(text.bytes.c_str(), -1, nullptr) == FALSE)
        return 0;
    gchar *const upper = g_utf8_strup(text.bytes.c_str(), -1);
    return Take(upper, std::char_traits<char>::length(upper));
}

// With both converters kept open, and into buffers that are there.
size_t ByIconv(const Text &text)
{
    static wchar_t wide[kMost];
    char *in = const_cast<char *>(text.bytes.data()), *out = reinterpret_cast<char *>(wide);
    size_t inLeft = text.bytes.size(), outLeft = sizeof wide;
    iconv(text.converter, &in, &inLeft, &out, &outLeft);
    const size_t characters = (sizeof wide - outLeft) / sizeof(wchar_t);
    for (size_t i = 0; i < characters; ++i)
        wide[i] = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(wide[i])));
    in = reinterpret_cast<char *>(wide), out = theResult;
    inLeft = characters * sizeof(wchar_t), outLeft = sizeof theResult;
    iconv(text.encoder, &in, &inLeft, &out, &outLeft);
    iconv(text.encoder, nullptr, nullptr, &out, &outLeft);
    return Result(sizeof theResult - outLeft);
}

// ---- The comparisons -----------------------------------------------------------------------

struct Row {
    bench::Sort sort;
    const std::vector<std::string> &pieces;
    std::vector<Way> peers;
};

// The tables of these sets, and of those that their texts switch to, stay in the registry.
void LoadTables(const std::vector<Row> &rows)
{
    er_SetTraceSink([](int, const char *, int) {});
    const TempHome home;
    std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper"));
    for (const Row &row : rows)
        Ours(bench::MakeText(row.sort, row.pieces, 256));
    MakeLatin1(home);
}

const bool theRegistration = [] {
    MakeTable();
    std::vector<Row> rows = {
        {{"ISO-8859-1, letter", kLatin1, kLatin1},
         bench::kLetter,
         {{"256-byte table", ByTable}, {"ICU, kept open", ByIcu<kLatin1>}, {"GLib", ByGLib}}},
        {{"T.61, letter", "T.61", "T.61-8BIT"},
         bench::kLetter,
         {{"iconv, kept open", ByIconv}, {"GLib", ByGLib}}},
        {{"ISO-2022-JP, subjects", kJapanese, kJapanese},
         bench::kSubjects,
         {{"iconv, kept open", ByIconv}, {"ICU, kept open", ByIcu<kJapanese>}, {"GLib", ByGLib}}},
        {{"UTF-8, letter", "UTF8", "UTF-8"},
         bench::kLetter,
         {{"ucasemap_utf8ToUpper", ByIcuInUtf8}, {"g_utf8_strup", ByGLibInUtf8}}},
    };
    LoadTables(rows);
    if (theLatin1 != nullptr)
        rows[0].peers.push_back({"toupper_l", ByToupper});
    for (const Row &row : rows)
        for (const size_t size : kSizes) {
            std::vector<Way> ways = {{"libstr", Ours}};
            std::copy(row.peers.begin(), row.peers.end(), std::back_inserter(ways));
            bench::Compare("str_ToUpper", bench::MakeText(row.sort, row.pieces, size), ways,
                           UpperCase);
        }
    return true;
}();

} // namespace
