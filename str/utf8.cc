// SPDX-License-Identifier: Apache-2.0
#include "str/utf8.h"

#include <glib.h>

namespace
{

// The character at `at` is well-formed as far as the `left` bytes reach, and longer than they are.
bool IsCutByLimit(const char *at, gssize left)
{
    constexpr auto incomplete = static_cast<gunichar>(-2);
    const int length = g_utf8_skip[static_cast<guchar>(*at)];
    return left >= 0 && left < length && length <= 4 &&
           g_utf8_get_char_validated(at, left) == incomplete;
}

} // namespace

int CountUtf8(const char *str, int maxLen)
{
    glong count = 0;
    gssize left = maxLen < 0 ? -1 : maxLen;
    for (const char *bad = str;; str = bad + 1, ++count) {
        const bool valid = g_utf8_validate(str, left, &bad);
        count += g_utf8_strlen(str, bad - str);
        if (valid || *bad == '\0')
            break;
        if (left >= 0)
            left -= bad - str;
        if (IsCutByLimit(bad, left))
            break;
        if (left > 0)
            --left;
    }
    return static_cast<int>(count);
}
