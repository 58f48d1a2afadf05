// SPDX-License-Identifier: Apache-2.0
//
// Ways to measure display width.  A terminal's wcswidth gives kanji two cells and the library gives
// every character one column, so the ways are held to the number of characters.
#ifndef BENCH_WIDTH_WAYS_H
#define BENCH_WIDTH_WAYS_H

#include "bench/support.h"

#include <glib.h>
#include <iconv.h>
#include <str/display.h>

#include <cstdlib>
#include <cwchar>
#include <iterator>

namespace bench::width
{

inline wchar_t theBuffer[2 * 65536];

inline size_t Ours(const Text &text) { return str_dispstrlen(text.bytes.c_str(), &text.cs); }

inline size_t Measured(size_t characters)
{
    return wcswidth(theBuffer, characters) < 0 ? 0 : characters;
}

// Converts the text from the converter's initial state and measures it.
inline size_t ConvertAndMeasure(iconv_t converter, const Text &text)
{
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char *in = const_cast<char *>(text.bytes.data());
    char *out = reinterpret_cast<char *>(theBuffer);
    size_t inLeft = text.bytes.size(), outLeft = sizeof theBuffer;
    if (iconv(converter, &in, &inLeft, &out, &outLeft) != 0)
        return 0;
    return Measured((sizeof theBuffer - outLeft) / sizeof(wchar_t));
}

inline size_t OpenedForTheText(const Text &text)
{
    const iconv_t converter = iconv_open("WCHAR_T", text.sort.iconv);
    const size_t characters = ConvertAndMeasure(converter, text);
    iconv_close(converter);
    return characters;
}

inline size_t KeptOpen(const Text &text) { return ConvertAndMeasure(text.converter, text); }

inline size_t Mbstowcs(const Text &text)
{
    return Measured(std::mbstowcs(theBuffer, text.bytes.c_str(), std::size(theBuffer)));
}

inline size_t CountedByGLib(const Text &text)
{
    return static_cast<size_t>(g_utf8_strlen(text.bytes.c_str(), -1));
}

// What one would write for ISO-2022-JP alone, and for text that is known to be well-formed.
inline size_t CountedByHand(const Text &text)
{
    size_t characters = 0, bytes = 1;
    for (const char *at = text.bytes.c_str(); *at != '\0';)
        if (*at == '\x1B') {
            bytes = at[1] == '$' ? 2 : 1;
            at += 3;
        } else {
            at += bytes;
            ++characters;
        }
    return characters;
}

} // namespace bench::width

#endif
