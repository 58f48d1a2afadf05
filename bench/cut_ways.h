// SPDX-License-Identifier: Apache-2.0
//
// Ways to truncate and to split.  With iconv alone one converts the text to wide characters, cuts
// there and converts back.  To truncate, it is enough to convert as many bytes as the budget has and
// to look how far iconv came.
#ifndef BENCH_CUT_WAYS_H
#define BENCH_CUT_WAYS_H

#include "bench/support.h"

#include <glib.h>
#include <iconv.h>
#include <str/split.h>
#include <str/truncate.h>

#include <cstring>
#include <string_view>

namespace bench::cut
{

constexpr size_t kMost = 128 * 1024; // bytes of a text

// What the ways write to.
inline wchar_t theWide[kMost];
inline thread_local char theCopy[kMost];
inline thread_local char theHalves[2][kMost];
inline thread_local std::string_view theParts[2];

// A result is wiped out once it is read, so that it does not pass for that of the next way.
inline std::string Taken(std::string outcome)
{
    std::memset(theCopy, 0xFF, sizeof theCopy);
    std::memset(theHalves, 0xFF, sizeof theHalves);
    return outcome;
}

// ---- iconv ---------------------------------------------------------------------------------

// The wide characters of the first `size` bytes; of a character that this cuts, nothing.  `*taken`
// receives the bytes that they take.
inline size_t Decode(iconv_t converter, const Text &text, size_t size, size_t *taken)
{
    char *in = const_cast<char *>(text.bytes.data());
    char *out = reinterpret_cast<char *>(theWide);
    size_t inLeft = size, outLeft = sizeof theWide;
    iconv(converter, &in, &inLeft, &out, &outLeft);
    iconv(converter, nullptr, nullptr, nullptr, nullptr); // as it was
    *taken = size - inLeft;
    return (sizeof theWide - outLeft) / sizeof(wchar_t);
}

// The bytes of as many of the characters as fit in `room`.
inline size_t Encode(iconv_t encoder, wchar_t *characters, size_t count, char *out, size_t room)
{
    char *in = reinterpret_cast<char *>(characters);
    size_t inLeft = count * sizeof(wchar_t), outLeft = room;
    iconv(encoder, &in, &inLeft, &out, &outLeft);
    iconv(encoder, nullptr, nullptr, nullptr, nullptr); // as it was
    return room - outLeft;
}

using WithConverters = size_t (*)(const Text &text, iconv_t converter, iconv_t encoder);

template <WithConverters way>
inline size_t OpenedForTheText(const Text &text)
{
    const iconv_t converter = iconv_open("WCHAR_T", text.sort.iconv);
    const iconv_t encoder = iconv_open(text.sort.iconv, "WCHAR_T");
    const size_t answer = way(text, converter, encoder);
    iconv_close(encoder);
    iconv_close(converter);
    return answer;
}

template <WithConverters way>
inline size_t KeptOpen(const Text &text)
{
    return way(text, text.converter, text.encoder);
}

// ---- Truncation: to half the bytes, filled up with NULs ------------------------------------

inline size_t Budget(const Text &text) { return text.bytes.size() / 2; }

inline size_t FillUp(const Text &text, size_t kept)
{
    std::memset(theCopy + kept, 0, Budget(text) - kept);
    return kept;
}

inline size_t Truncate(const Text &text)
{
    unsigned int kept;
    str_truncate(theCopy, text.bytes.c_str(), static_cast<unsigned int>(Budget(text)), &text.cs,
                 &kept);
    return kept;
}

inline size_t ThereAndBack(const Text &text, iconv_t converter, iconv_t encoder)
{
    size_t taken;
    const size_t count = Decode(converter, text, text.bytes.size(), &taken);
    return FillUp(text, Encode(encoder, theWide, count, theCopy, Budget(text)));
}

inline size_t ThereOnly(const Text &text)
{
    size_t kept;
    Decode(text.converter, text, Budget(text), &kept);
    std::memcpy(theCopy, text.bytes.data(), kept);
    return FillUp(text, kept);
}

// With one converter, from the set to itself.
inline size_t ToItself(const Text &text)
{
    static std::string set;
    static iconv_t converter;
    if (set != text.sort.iconv) {
        set = text.sort.iconv;
        converter = iconv_open(text.sort.iconv, text.sort.iconv);
    }
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char *in = const_cast<char *>(text.bytes.data()), *out = theCopy;
    size_t inLeft = text.bytes.size(), outLeft = Budget(text);
    iconv(converter, &in, &inLeft, &out, &outLeft);
    return FillUp(text, Budget(text) - outLeft);
}

// The characters, since an escape sequence at the end is kept or not, and any bytes that are not
// filled up.
inline std::string Kept(const Text &text, size_t kept)
{
    std::string left(theCopy + kept, Budget(text) - kept);
    std::erase(left, '\0');
    return Taken(bench::Recode("UTF-8", text.sort.iconv, {theCopy, kept}) + left);
}

// ---- Splitting: at half the columns --------------------------------------------------------

inline size_t Split(const Text &text)
{
    char *second;
    unsigned int firstLen, secondLen;
    const char *first =
        str_SplitByDispLen(text.bytes.c_str(), static_cast<int>(text.characters / 2), &second,
                           &firstLen, &secondLen, &text.cs);
    theParts[0] = {first, firstLen};
    theParts[1] = {second, secondLen};
    return firstLen;
}

inline size_t ConvertBothHalves(const Text &text, iconv_t converter, iconv_t encoder)
{
    size_t taken;
    const size_t count = Decode(converter, text, text.bytes.size(), &taken);
    const size_t half = count / 2;
    theParts[0] = {theHalves[0], Encode(encoder, theWide, half, theHalves[0], kMost)};
    theParts[1] = {theHalves[1],
                   Encode(encoder, theWide + half, count - half, theHalves[1], kMost)};
    return theParts[0].size();
}

inline std::string Parts(const Text &text, size_t)
{
    std::string parts;
    for (const std::string_view &part : theParts)
        parts += bench::Recode("UTF-8", text.sort.iconv, std::string(part)) + '\n';
    return Taken(parts);
}

// Copies the whole characters among the first `n` bytes and fills up with NULs.
inline size_t CopyByGLib(const char *src, size_t n)
{
    size_t kept = strnlen(src, n + 1);
    if (kept > n)
        kept = static_cast<size_t>(g_utf8_find_prev_char(src, src + n + 1) - src);
    std::memcpy(theCopy, src, kept);
    std::memset(theCopy + kept, 0, n - kept);
    return kept;
}

inline size_t TruncateByGLib(const Text &text)
{
    return CopyByGLib(text.bytes.c_str(), Budget(text));
}

// ---- Truncation that ends in ASCII ---------------------------------------------------------

inline size_t TruncateClosed(const Text &text)
{
    return str_truncateclosed(theCopy, text.bytes.c_str(), static_cast<unsigned int>(Budget(text)),
                              &text.cs);
}

// What iconv has written to the copy, closed: three bytes were left for that.  If they are not used,
// or not all, more ASCII fits.
inline size_t Close(iconv_t encoder, const wchar_t *next, char *end, const Text &text)
{
    size_t room = static_cast<size_t>(theCopy + Budget(text) - end);
    iconv(encoder, nullptr, nullptr, &end, &room);
    for (; room > 0 && *next > 0 && *next < 0x80; --room)
        *end++ = static_cast<char>(*next++);
    return FillUp(text, static_cast<size_t>(end - theCopy));
}

// The whole text there, and back as much as fits.
inline size_t ThereAndBackClosed(const Text &text)
{
    constexpr size_t escape = 3;
    size_t taken;
    const size_t count = Decode(text.converter, text, text.bytes.size(), &taken);
    theWide[count] = L'\0';
    char *in = reinterpret_cast<char *>(theWide), *out = theCopy;
    size_t inLeft = count * sizeof(wchar_t), outLeft = Budget(text) - escape;
    iconv(text.encoder, &in, &inLeft, &out, &outLeft);
    return Close(text.encoder, reinterpret_cast<wchar_t *>(in), out, text);
}

} // namespace bench::cut

#endif
