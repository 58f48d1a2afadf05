// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 text.  GLib does the work; its walkers trust their input, so they are called only on what
// has been validated, and what is malformed is handled here: byte by byte, up to the NUL.
#ifndef STR_CORE_UTF8_H
#define STR_CORE_UTF8_H

#include <platform/ccs.h>

#include <cstddef>

namespace libstr
{

// The one set that the library knows by name.
inline bool IsUtf8(const CSDescriptor *cs)
{
    const char *n = ccs_GetCSName(cs); // most names differ at once: not worth a call
    return n[0] == 'U' && n[1] == 'T' && n[2] == 'F' && n[3] == '8' && n[4] == '\0';
}

// The characters in the first `maxLen` bytes of `str`, or up to its NUL when `maxLen` is negative.
// A character cut by the limit is not counted; a byte of no well-formed character counts as one.
size_t CountUtf8(const char *str, int maxLen);

// The longest front part of `str` of at most `n` bytes that does not end inside a character.
unsigned int Utf8Truncation(const char *str, unsigned int n);

} // namespace libstr

#endif
