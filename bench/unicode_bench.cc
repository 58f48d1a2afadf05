// SPDX-License-Identifier: Apache-2.0
//
// Upper case of the universal set, beside GLib and beside the way through wide characters.
#include "bench/texts.h"
#include "bench/upper_ways.h"

#include <glib.h>
#include <str/case.h>

namespace
{

using namespace bench::upper;
using bench::Text;

constexpr size_t kSizes[] = {16, 256, 4096};

template <int variant>
size_t OurUni(const Text &text)
{
    int length = 0;
    theUpper =
        str_ToUpperUni(text.bytes.data(), static_cast<int>(text.bytes.size()), &length, variant);
    return static_cast<size_t>(length);
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

const bool theRegistration = [] {
    for (const size_t size : kSizes) {
        bench::Compare("upper case",
                       bench::MakeText({"UCS2, letter", "UTF8", "UTF-16BE"}, bench::kLetter, size),
                       {{"libstr", OurUni<0>},
                        {"g_convert, twice", ConvertTwice},
                        {"iconv, towupper", ByIconv}},
                       UpperCase);
        bench::Compare(
            "upper case",
            bench::MakeText({"UCS2,8, letter", "UTF8", "UTF-8"}, bench::kLetter, size),
            {{"libstr", OurUni<4>}, {"g_utf8_strup", ByGLibInUtf8}, {"iconv, towupper", ByIconv}},
            UpperCase);
    }
    return true;
}();

} // namespace
