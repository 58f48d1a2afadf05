// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 many bytes at a time.
#ifndef BASE_UTF8_BLOCKS_H
#define BASE_UTF8_BLOCKS_H

#include <cstddef>
#include <cstdint>

namespace libstr::utf8
{

inline constexpr size_t kNotUtf8 = SIZE_MAX;

// The characters in `length` bytes without a NUL, or kNotUtf8 when the bytes are malformed.
size_t CountValid(const char *text, size_t length);

} // namespace libstr::utf8

#endif
