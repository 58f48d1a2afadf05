// SPDX-License-Identifier: Apache-2.0
//
// Ways to upper case: those that know one set (toupper_l, a table of 256 bytes), and those through
// Unicode and back (ICU, GLib, iconv).
#ifndef BENCH_UPPER_WAYS_H
#define BENCH_UPPER_WAYS_H

#include "bench/support.h"
#include "bench/tables.h"

#include <glib.h>
#include <iconv.h>
#include <str/case.h>
#include <unicode/ucasemap.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <cctype>
#include <cstdlib>
#include <cwctype>
#include <stdexcept>

namespace bench::upper
{

constexpr size_t kMost = 8 * 65536; // of anything

inline wchar_t theWide[kMost];

// The upper case that a way made; the way returns its bytes.
inline thread_local const char *theUpper;
inline gchar *theAllocated;
inline char theResult[kMost];

inline std::string UpperCase(const Text &, size_t answer) { return {theUpper, answer}; }

inline size_t Result(size_t length)
{
    theUpper = theResult;
    return length;
}

// GLib releases it.
inline size_t Take(gchar *upper, gsize length)
{
    g_free(theAllocated);
    theUpper = theAllocated = upper;
    return length;
}

inline size_t Ours(const Text &text)
{
    int length = 0;
    theUpper =
        str_ToUpper(text.bytes.data(), static_cast<int>(text.bytes.size()), &length, &text.cs);
    return static_cast<size_t>(length);
}

// ---- What knows ISO 8859-1 alone -----------------------------------------------------------

inline unsigned char theTable[256];

inline void MakeTable()
{
    for (unsigned byte = 0; byte < 256; ++byte) {
        const bool isSmall =
            (byte >= 'a' && byte <= 'z') || (byte >= 0xE0 && byte <= 0xFE && byte != 0xF7);
        theTable[byte] = static_cast<unsigned char>(isSmall ? byte - 0x20 : byte);
    }
}

inline size_t ByToupper(const Text &text)
{
    for (size_t i = 0; i < text.bytes.size(); ++i)
        theResult[i] =
            static_cast<char>(toupper_l(static_cast<unsigned char>(text.bytes[i]), theLatin1));
    return Result(text.bytes.size());
}

inline size_t ByTable(const Text &text)
{
    for (size_t i = 0; i < text.bytes.size(); ++i)
        theResult[i] = static_cast<char>(theTable[static_cast<unsigned char>(text.bytes[i])]);
    return Result(text.bytes.size());
}

// ---- By way of Unicode ---------------------------------------------------------------------

inline void Demand(UErrorCode error)
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

inline size_t ByIcuInUtf8(const Text &text)
{
    UErrorCode error = U_ZERO_ERROR;
    static UCaseMap *const map = ucasemap_open("", 0, &error);
    const int32_t length = ucasemap_utf8ToUpper(map, theResult, kMost, text.bytes.data(),
                                                static_cast<int32_t>(text.bytes.size()), &error);
    Demand(error);
    return Result(static_cast<size_t>(length));
}

inline size_t ByGLib(const Text &text)
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

inline size_t ByGLibInUtf8(const Text &text)
{
    if (g_utf8_validate(text.bytes.c_str(), -1, nullptr) == FALSE)
        return 0;
    gchar *const upper = g_utf8_strup(text.bytes.c_str(), -1);
    return Take(upper, std::char_traits<char>::length(upper));
}

inline void RaiseWide(size_t characters)
{
    for (size_t i = 0; i < characters; ++i)
        theWide[i] = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(theWide[i])));
}

// With both converters kept open, and into buffers that are there.
inline size_t ByIconv(const Text &text)
{
    char *in = const_cast<char *>(text.bytes.data()), *out = reinterpret_cast<char *>(theWide);
    size_t inLeft = text.bytes.size(), outLeft = sizeof theWide;
    iconv(text.converter, &in, &inLeft, &out, &outLeft);
    const size_t characters = (sizeof theWide - outLeft) / sizeof(wchar_t);
    RaiseWide(characters);
    in = reinterpret_cast<char *>(theWide), out = theResult;
    inLeft = characters * sizeof(wchar_t), outLeft = sizeof theResult;
    iconv(text.encoder, &in, &inLeft, &out, &outLeft);
    iconv(text.encoder, nullptr, nullptr, &out, &outLeft);
    return Result(sizeof theResult - outLeft);
}

inline size_t ByMbstowcs(const Text &text)
{
    RaiseWide(std::mbstowcs(theWide, text.bytes.c_str(), kMost));
    return Result(std::wcstombs(theResult, theWide, sizeof theResult));
}

} // namespace bench::upper

#endif
