// SPDX-License-Identifier: Apache-2.0
#include "str/core/utf8.h"

#include "base/utf8.h"
#include "base/utf8_blocks.h"

#include <cstring>

namespace libstr
{

namespace
{

constexpr unsigned int kLongest = 4; // bytes of a character

// Not inlined, since nearly all text is well-formed.
[[gnu::noinline]] size_t CountOneByOne(const char *at, const char *end)
{
    size_t count = 0;
    for (; at < end; ++count)
        at += utf8::CharAt(at).length;
    return count;
}

} // namespace

size_t CountUtf8(const char *str, int maxLen)
{
    const size_t length =
        maxLen < 0 ? std::strlen(str) : Utf8Truncation(str, static_cast<unsigned int>(maxLen));
    const size_t count = utf8::CountValid(str, length);
    return count != utf8::kNotUtf8 ? count : CountOneByOne(str, str + length);
}

// The first byte of a character occurs nowhere else in a character, so the last bytes decide: does
// a character begin there that goes on after them?
unsigned int BeforeCutOff(const char *str, unsigned int end)
{
    for (unsigned int back = 1; back < kLongest && back <= end; ++back)
        if (!utf8::IsContinuation(str[end - back]))
            return utf8::IsCutOff(str + end - back, back) ? end - back : end;
    return end;
}

unsigned int WholeUtf8(const char *str, unsigned int n)
{
    const auto length = static_cast<unsigned int>(strnlen(str, n));
    if (length < n)
        return length;
    for (unsigned int back = 1; back < kLongest && back <= n; ++back)
        if (!utf8::IsContinuation(str[n - back]))
            return utf8::CharAt(str + n - back).length > back ? n - back : n;
    return n;
}

} // namespace libstr
