// SPDX-License-Identifier: Apache-2.0
//
// Upper case of the universal set, beside GLib and beside the way through wide characters.
#include "bench/support.h"
#include "bench/texts.h"

#include <glib.h>
#include <iconv.h>
#include <str/case.h>

#include <cwctype>

namespace
{

using bench::Text;

constexpr size_t kSizes[] = {16, 256, 4096};

// The upper case that a way made; the way returns its bytes.
const char *theUpper;
gchar *theAllocated;

size_t Take(gchar *upper, gsize length)
{
    g_free(theAllocated);
    theUpper = theAllocated = upper;
    return length;
}

std::string UpperCase(const Text &, size_t answer) { return {theUpper, answer}; }

template <int variant>
size_t Ours(const Text &text)
{
    int length = 0;
    theUpper =
        str_ToUpperUni(text.bytes.data(), static_cast<int>(text.bytes.size()), &length, variant);
    return static_cast<size_t>(length);
}

size_t CheckAndStrup(const Text &text)
{
    if (g_utf8_validate(text.bytes.c_str(), -1, nullptr) == FALSE)
        return 0;
    gchar *const upper = g_utf8_strup(text.bytes.c_str(), -1);
    return Take(upper, std::char_traits<char>::length(upper));
}

size_t ConvertTwice(const Text &text)
{
    gsize length = 0;
    gchar *const utf8 = g_convert(text.bytes.data(), static_cast<gssize>(text.bytes.size()),
                                  "UTF-8", text.sort.iconv, nullptr, &length, nullptr);
    gchar *const upper = g_utf8_strup(utf8, -1);
    Take(g_convert(upper, -1, text.sort.iconv, "UTF-8", nullptr, &length, nullptr), 0);
    g_free(utf8);
    g_free(upper);
    return length;
}

// With both converters kept open, and into buffers that are there.
size_t ThroughWideCharacters(const Text &text)
{
    static wchar_t wide[4096];
    static char upper[4096 * 2];
    char *in = const_cast<char *>(text.bytes.data()), *out = reinterpret_cast<char *>(wide);
    size_t inLeft = text.bytes.size(), outLeft = sizeof wide;
    iconv(text.converter, &in, &inLeft, &out, &outLeft);
    const size_t characters = (sizeof wide - outLeft) / sizeof(wchar_t);
    for (size_t i = 0; i < characters; ++i)
        wide[i] = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(wide[i])));
    in = reinterpret_cast<char *>(wide), out = upper;
    inLeft = characters * sizeof(wchar_t), outLeft = sizeof upper;
    iconv(text.encoder, &in, &inLeft, &out, &outLeft);
    theUpper = upper;
    return sizeof upper - outLeft;
}

const bool theRegistration = [] {
    for (const size_t size : kSizes) {
        bench::Compare("upper case",
                       bench::MakeText({"UCS2, letter", "UTF8", "UTF-16BE"}, bench::kLetter, size),
                       {{"libstr", Ours<0>},
                        {"g_convert, twice", ConvertTwice},
                        {"iconv, towupper", ThroughWideCharacters}},
                       UpperCase);
        bench::Compare("upper case",
                       bench::MakeText({"UCS2,8, letter", "UTF8", "UTF-8"}, bench::kLetter, size),
                       {{"libstr", Ours<4>},
                        {"g_utf8_strup", CheckAndStrup},
                        {"iconv, towupper", ThroughWideCharacters}},
                       UpperCase);
    }
    return true;
}();

} // namespace
