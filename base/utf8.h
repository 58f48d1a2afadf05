// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 for what GLib's functions do not offer: steps over malformed text, and changes of case that
// read nothing after the text.
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

inline bool IsContinuation(char byte) { return static_cast<signed char>(byte) < -0x40; }

inline bool IsLead(guchar byte) { return byte >= 0xC2 && byte <= 0xF4; }

// The bytes of a character by its first one, which is a lead byte.
inline unsigned int LengthByLead(guchar lead) { return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4; }

inline gunichar AppendBits(gunichar bits, char continuation)
{
    return bits << 6 | (static_cast<guchar>(continuation) & 0x3F);
}

// Whether a character may begin with the two bytes.  After them, any continuation bytes may follow.
inline bool MayFollow(guchar lead, char second)
{
    if (!IsContinuation(second))
        return false;
    if (lead < 0xE0)
        return true;
    if (lead >= 0xF0) // the planes 1 to 16
        return AppendBits(lead & 0x07, second) - 0x10 <= 0xFF;
    const gunichar bits = AppendBits(lead & 0x0F, second);
    return bits >= 0x800 >> 6 && bits >> 5 != 0xD800 >> 11; // not a surrogate
}

// The character at `at` in a text that ends with a NUL.  A byte that begins no well-formed
// character counts as one of its own.  Reads no byte after the first one that does not fit.
inline Char CharAt(const char *at)
{
    const auto lead = static_cast<guchar>(*at);
    if (lead < 0x80)
        return {lead, 1};
    const Char malformed = {kMalformed | lead, 1};
    if (!IsLead(lead) || !MayFollow(lead, at[1]))
        return malformed;
    if (lead < 0xE0)
        return {AppendBits(lead & 0x1F, at[1]), 2};
    if (!IsContinuation(at[2]))
        return malformed;
    const gunichar bits = AppendBits(AppendBits(lead & 0x0F, at[1]), at[2]);
    if (lead < 0xF0)
        return {bits, 3};
    return IsContinuation(at[3]) ? Char{AppendBits(bits, at[3]), 4} : malformed;
}

// Whether the `length` bytes at `at`, one or more, begin a well-formed character but do not end it.
// Nothing is read after a NUL.
inline bool IsCutOff(const char *at, size_t length)
{
    const auto lead = static_cast<guchar>(*at);
    return IsLead(lead) && length < LengthByLead(lead) && (length < 2 || MayFollow(lead, at[1])) &&
           (length < 3 || IsContinuation(at[2]));
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
