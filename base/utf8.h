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

// What `function` (g_utf8_strup, g_utf8_casefold) makes of the `length` bytes of well-formed text at
// `text`; the caller releases it with g_free.  Such a function looks beyond a length for marks, so it
// gets a copy that ends with a NUL.
inline gchar *ChangeCase(gchar *(*function)(const gchar *, gssize), const char *text, size_t length)
{
    char room[256];
    char *const copy = length < sizeof room ? room : static_cast<char *>(g_malloc(length + 1));
    std::memcpy(copy, text, length);
    copy[length] = '\0';
    gchar *const changed = function(copy, -1);
    if (copy != room)
        g_free(copy);
    return changed;
}

} // namespace libstr::utf8

#endif
