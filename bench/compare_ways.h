// SPDX-License-Identifier: Apache-2.0
//
// Ways to say whether a text is equal to its other one: without regard to case to the same in
// capital letters, and with regard to case to a copy.  Each returns 1 if it is.
#ifndef BENCH_COMPARE_WAYS_H
#define BENCH_COMPARE_WAYS_H

#include "bench/support.h"
#include "bench/tables.h"

#include <glib.h>
#include <str/compare.h>
#include <unicode/ucasemap.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <strings.h>
#include <utility>

namespace bench::comparison
{

constexpr size_t kMost = 4 * 65536; // of anything

inline Text WithCapitals(Text text)
{
    gchar *const capitals = g_utf8_strup(Recode("UTF-8", text.sort.iconv, text.bytes).c_str(), -1);
    text.other = Recode(text.sort.iconv, "UTF-8", capitals);
    g_free(capitals);
    return text;
}

inline Text WithCopy(Text text)
{
    text.other = text.bytes;
    return text;
}

inline size_t Ours(const Text &text)
{
    return str_strucasecmp(text.bytes.c_str(), text.other.c_str(), &text.cs) == 0;
}

inline size_t OursInCase(const Text &text)
{
    return str_strcmp(text.bytes.c_str(), text.other.c_str(), &text.cs) == 0;
}

inline size_t ByStrcmp(const Text &text)
{
    return std::strcmp(text.bytes.c_str(), text.other.c_str()) == 0;
}

// ---- What knows one set --------------------------------------------------------------------

inline size_t ByStrcasecmp(const Text &text)
{
    return strcasecmp(text.bytes.c_str(), text.other.c_str()) == 0;
}

inline size_t InLatin1(const Text &text)
{
    return strcasecmp_l(text.bytes.c_str(), text.other.c_str(), theLatin1) == 0;
}

// ---- By way of Unicode ---------------------------------------------------------------------

// With the converter kept open.
inline size_t ByIcu(const Text &text)
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
        const std::string &bytes = i == 0 ? text.bytes : text.other;
        counts[i] = ucnv_toUChars(converter, characters[i], kMost, bytes.data(),
                                  static_cast<int32_t>(bytes.size()), &error);
    }
    const int32_t order = u_strCaseCompare(characters[0], counts[0], characters[1], counts[1],
                                           U_FOLD_CASE_DEFAULT, &error);
    return U_SUCCESS(error) && order == 0;
}

inline size_t ByIcuInUtf8(const Text &text)
{
    static char folded[2][kMost];
    UErrorCode error = U_ZERO_ERROR;
    static UCaseMap *const map = ucasemap_open("", 0, &error);
    int32_t counts[2];
    for (const int i : {0, 1}) {
        const std::string &bytes = i == 0 ? text.bytes : text.other;
        counts[i] = ucasemap_utf8FoldCase(map, folded[i], kMost, bytes.data(),
                                          static_cast<int32_t>(bytes.size()), &error);
    }
    return U_SUCCESS(error) && counts[0] == counts[1] &&
           std::memcmp(folded[0], folded[1], static_cast<size_t>(counts[0])) == 0;
}

inline gchar *Folded(const std::string &bytes, const Text &text)
{
    if (text.sort.set == std::string("UTF8"))
        return g_utf8_casefold(bytes.c_str(), -1);
    gchar *const utf8 = g_convert(bytes.data(), static_cast<gssize>(bytes.size()), "UTF-8",
                                  text.sort.iconv, nullptr, nullptr, nullptr);
    gchar *const folded = g_utf8_casefold(utf8, -1);
    g_free(utf8);
    return folded;
}

inline size_t ByGLib(const Text &text)
{
    gchar *const folded = Folded(text.bytes, text), *const other = Folded(text.other, text);
    const bool equal = std::strcmp(folded, other) == 0;
    g_free(folded);
    g_free(other);
    return equal;
}

// With the converter kept open, and into buffers that are there.
inline size_t ByIconv(const Text &text)
{
    static wchar_t wide[2][kMost];
    for (const int i : {0, 1}) {
        const std::string &bytes = i == 0 ? text.bytes : text.other;
        char *in = const_cast<char *>(bytes.data()), *out = reinterpret_cast<char *>(wide[i]);
        size_t inLeft = bytes.size(), outLeft = sizeof wide[i] - sizeof(wchar_t);
        iconv(text.converter, &in, &inLeft, &out, &outLeft);
        wide[i][(sizeof wide[i] - outLeft) / sizeof(wchar_t) - 1] = L'\0';
    }
    return wcscasecmp(wide[0], wide[1]) == 0;
}

inline size_t ByMbstowcs(const Text &text)
{
    static wchar_t wide[2][kMost];
    std::mbstowcs(wide[0], text.bytes.c_str(), kMost);
    std::mbstowcs(wide[1], text.other.c_str(), kMost);
    return wcscasecmp(wide[0], wide[1]) == 0;
}

} // namespace bench::comparison

#endif
