// SPDX-License-Identifier: Apache-2.0
//
// Length and truncation of UTF-8 text, which may be malformed.
#ifndef STR_CORE_UTF8_H
#define STR_CORE_UTF8_H

#include <cstddef>
#include <cstring>

namespace libstr
{

// The characters in the first `maxLen` bytes of `str`, or up to its NUL when `maxLen` is negative.
// A character cut by the limit is not counted; a malformed byte counts as one.
size_t CountUtf8(const char *str, int maxLen);

// `end` bytes of text without those of the character that is cut there.
unsigned int BeforeCutOff(const char *str, unsigned int end);

// The bytes of the longest start of `str`, of at most `n`, that does not end inside a character.
inline unsigned int Utf8Truncation(const char *str, unsigned int n)
{
    const auto length = static_cast<unsigned int>(strnlen(str, n));
    const bool endsInAscii = length == 0 || static_cast<signed char>(str[length - 1]) >= 0;
    return length < n || endsInAscii ? length : BeforeCutOff(str, n);
}

// The same, as segments tell: only a character that is whole in `str` can be cut off.  Reads it.
unsigned int WholeUtf8(const char *str, unsigned int n);

} // namespace libstr

#endif
