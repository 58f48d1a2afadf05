// SPDX-License-Identifier: Apache-2.0
#include "str/core/utf8.h"

#include "base/utf8.h"

#include <glib.h>

#include <climits>
#include <cstring>

namespace libstr
{

namespace
{

constexpr unsigned int kLongest = 4; // bytes of a character

// The characters of well-formed text of at most INT_MAX bytes: in each, only the first byte is not
// a continuation byte.  The compiler counts many bytes at a time; GLib steps from character to
// character.
unsigned int CountWellFormed(const char *str, const char *end)
{
    unsigned int count = 0; // the narrower the type, the more bytes are counted at a time
    for (; str < end; ++str)
        count += static_cast<signed char>(*str) >= static_cast<signed char>(0xC0);
    return count;
}

[[gnu::noinline]] size_t CountLong(const char *str, const char *end)
{
    size_t count = 0;
    for (; end - str > INT_MAX; str += INT_MAX)
        count += CountWellFormed(str, str + INT_MAX);
    return count + CountWellFormed(str, end);
}

} // namespace

size_t CountUtf8(const char *str, int maxLen)
{
    size_t count = 0;
    gssize left = maxLen < 0 ? -1 : maxLen;
    for (const char *bad = str;; str = bad + 1, ++count) {
        const bool valid = g_utf8_validate(str, left, &bad);
        count += bad - str <= INT_MAX ? CountWellFormed(str, bad) : CountLong(str, bad);
        if (valid || *bad == '\0')
            break;
        if (left < 0)
            continue;
        left -= bad - str;
        if (utf8::IsCutOff(bad, static_cast<size_t>(left)))
            break;
        --left;
    }
    return count;
}

// The first byte of a character occurs nowhere else in a character, so the last bytes decide: does
// a character begin there that goes on after them?
unsigned int Utf8Truncation(const char *str, unsigned int n)
{
    const auto length = static_cast<unsigned int>(strnlen(str, n));
    if (length < n)
        return length;
    for (unsigned int back = 1; back < kLongest && back <= n; ++back)
        if (utf8::IsCutOff(str + n - back, back))
            return n - back;
    return n;
}

} // namespace libstr
