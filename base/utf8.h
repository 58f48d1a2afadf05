// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 by way of GLib, for what GLib's functions do not offer: steps over malformed text, and
// changes of case that read nothing after the text.
#ifndef BASE_UTF8_H
#define BASE_UTF8_H

#include <glib.h>

#include <cstddef>
#include <cstring>

namespace libstr::utf8
{

inline constexpr gunichar kMalformed = 0x80000000;

// A character, or a malformed byte.
struct Char {
    gunichar code; // of a malformed byte: kMalformed | byte, which no character has
    unsigned int length;
};

inline bool IsMalformed(const Char &c) { return (c.code & kMalformed) != 0; }

// The character at `at` in a text that ends with a NUL.  A byte that begins no well-formed
// character counts as one of its own.
inline Char CharAt(const char *at)
{
    const auto byte = static_cast<guchar>(*at);
    if (byte < 0x80)
        return {byte, 1};
    const gunichar code = g_utf8_get_char_validated(at, -1);
    if ((code & kMalformed) != 0)
        return {kMalformed | byte, 1};
    return {code, static_cast<unsigned int>(g_utf8_skip[byte])};
}

// Whether the `length` bytes at `at`, one or more, begin a well-formed character but do not end it.
// GLib alone accepts E0 80 too, which begins no character.  After the second byte any continuation
// byte may follow.  Nothing is read after a NUL.
inline bool IsCutOff(const char *at, size_t length)
{
    const auto lead = static_cast<guchar>(*at);
    const auto whole = static_cast<size_t>(static_cast<guchar>(g_utf8_skip[lead]));
    if (lead < 0xC2 || lead > 0xF4 || length >= whole)
        return false;
    char completed[] = "\x80\x80\x80\x80";
    std::strncpy(completed, at, length);
    return length == 1 || g_utf8_validate(completed, static_cast<gssize>(whole), nullptr) != FALSE;
}

// Applies `function` (g_utf8_strup, g_utf8_casefold) to `length` bytes of well-formed text.  The
// caller releases the result with g_free.  These functions look for marks after the given length,
// so they get a copy that ends with a NUL.
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
