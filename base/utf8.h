// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 by way of GLib, where GLib by itself looks too far or not closely enough.
#ifndef BASE_UTF8_H
#define BASE_UTF8_H

#include <glib.h>

#include <cstddef>
#include <cstring>

namespace libstr::utf8
{

// Whether the `length` bytes at `at`, one or more, are a well-formed character whose end is missing.
// GLib alone says so of E0 80 too, which begins none.  After the second byte any continuation byte
// may follow.
inline bool IsCutOff(const char *at, size_t length)
{
    const auto lead = static_cast<guchar>(*at);
    const auto whole = static_cast<size_t>(static_cast<guchar>(g_utf8_skip[lead]));
    if (lead < 0xC2 || lead > 0xF4 || length >= whole)
        return false;
    char completed[] = "\x80\x80\x80\x80";
    std::memcpy(completed, at, length);
    return length == 1 || g_utf8_validate(completed, static_cast<gssize>(whole), nullptr) != FALSE;
}

} // namespace libstr::utf8

#endif
