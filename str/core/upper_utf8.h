// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 in upper case.
#ifndef STR_CORE_UPPER_UTF8_H
#define STR_CORE_UPPER_UTF8_H

#include <cstddef>

namespace libstr
{

// Returns what g_utf8_strup makes of `length` bytes without a NUL, and its length in `*outLen`.  It
// is valid until the next call.  Returns null when the text is malformed.  One thread at a time.
char *UpperCaseUtf8(const char *text, size_t length, int *outLen);

} // namespace libstr

#endif
