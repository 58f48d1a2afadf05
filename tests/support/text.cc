// SPDX-License-Identifier: Apache-2.0
#include "tests/support/test.h"

#include <glib.h>

#include <tuple>

CSDescriptor DescriptorOf(const char *setName)
{
    CSDescriptor cs;
    if (ccs_GetCSDescriptor(setName, &cs) == 0)
        throw std::invalid_argument(setName);
    return cs;
}

std::string Notation(uint16_t kind, unsigned int length)
{
    const std::string size = "x" + std::to_string(length);
    return kind == CS_SEG_IGNORE ? "-" + size
           : kind == CS_SEG_RAW  ? "?" + size
                                 : std::to_string(kind) + size;
}

namespace
{

using Segments = std::vector<std::tuple<const char *, uint16_t, uint32_t>>;

Segments Listed(decltype(ccs_GetAllStrs) list, const CSDescriptor &cs, const char *text, int length)
{
    Segments segments;
    int count = 0;
    for (const CSSegment *at = list(&cs, text, length, &count); count > 0; --count, ++at)
        segments.emplace_back(at->text, at->kind, at->length);
    return segments;
}

} // namespace

std::string SegmentsOf(const CSDescriptor &cs, const char *text, int length)
{
    const Segments listed = Listed(ccs_GetAllStrs, cs, text, length),
                   listedReal = Listed(ccs_GetRealStrs, cs, text, length);
    std::string segments;
    Segments all, real;
    unsigned int size = 0;
    uint16_t kind = ccs_Get1stStr(&cs, text, length, &size);
    for (;; kind = ccs_GetNextStr(&cs, text, length, &size)) {
        all.emplace_back(text, kind, size);
        if (kind != CS_SEG_IGNORE)
            real.push_back(all.back());
        if (size == 0)
            break;
        segments += (segments.empty() ? "" : " ") + Notation(kind, size);
        text += size;
        length -= length < 0 ? 0 : static_cast<int>(size);
    }
    EXPECT_TRUE(kind == CS_SEG_END && all == listed && real == listedReal) << segments;
    return segments;
}

Kinds KindsOf(const CSDescriptor &cs, const std::string &text, int length)
{
    Kinds kinds;
    for (const auto &[at, kind, size] : Listed(ccs_GetRealStrs, cs, text.c_str(), length))
        for (uint32_t i = 0; i < size; ++i)
            kinds.emplace_back(kind, at[i]);
    return kinds;
}

std::optional<std::u32string> Decode(const char *iconvName, std::string_view bytes)
{
    gsize size = 0;
    GError *error = nullptr;
    gchar *const decoded = g_convert(bytes.data(), static_cast<gssize>(bytes.size()), "UTF-32LE",
                                     iconvName, nullptr, &size, &error);
    if (g_error_matches(error, G_CONVERT_ERROR, G_CONVERT_ERROR_NO_CONVERSION))
        throw std::invalid_argument(iconvName);
    g_clear_error(&error);
    if (decoded == nullptr)
        return std::nullopt;
    std::u32string text(size / sizeof(char32_t), U'\0');
    std::memcpy(text.data(), decoded, size);
    g_free(decoded);
    return text;
}

std::string Folded(std::string_view text)
{
    std::string folded;
    for (int size = 1; !text.empty(); text.remove_prefix(static_cast<size_t>(size))) {
        const gunichar c = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        size = c < 0x80000000 ? g_unichar_to_utf8(c, nullptr) : 1;
        gchar *const form = c < 0x80000000 ? g_utf8_casefold(text.data(), size) : nullptr;
        folded += form == nullptr ? std::string(text.substr(0, 1)) : form;
        g_free(form);
    }
    return folded;
}

namespace
{

// Pieces that make random text come upon every rule: whole sequences, their parts, and characters.
const std::string_view kPieces[] = {
    // clang-format off
    "\x1B$B", "\x1B(B", "\x1B(J", "\x1B$@", "\x1B$)C", "\x1B$(D", "\x1B(I", "\x1B-A", "\x1B.F",
    "\x1B-D", "\x1B(K", "\x1B(!A",
    "\x1B$(!A", "\x1B*5", "\x1B*v", "\x1B)u", "\x1B(%", // unknown sets among them
    "\x1B%G", "\x1B%/G", "\x1B%@", // codings
    "\x0E", "\x0F", "\x1Bn", "\x1Bo", "\x1B~", "\x1B}", "\x1B|", // locking shifts
    "\x1BN", "\x1BO", "\x8E", "\x8F", // single shifts
    "\x1B", "\x1B[1m", "\x1B#3", "\x9B", "\x80", "\x7F", "\n", // other controls
    "a", "Zz", "abcdefg", "[~", " ", "0123456789012345678901234567890123456789",
    "\x46\x7C", "\x46\x7C\x46\x7C\x46\x7C", "\xC6", "\xC6\xFC",
    "K", "\u212A", "ss", "\u00DF", "\u0390", "\u1FD3", "\u01C5", "\U00010400", "\xF0\x90\x90",
    "\xC3\xA9", "\xE6\x97\xA5", "\xE6\x97", "\xED\xA0\x80", "\xE0\x9F", "\xF4\x90", "\xF5",
    "\xC2", "\xC2\xC3\xC8\xCF", "\xC8u", "\xE9", "\xA0", "\xFF", "\xB0\xB1\xB2\xB3\xB4\xB5\xB6\xB7",
    // clang-format on
};

} // namespace

unsigned int TestSeed()
{
    const char *const seed = std::getenv("STR_TEST_SEED");
    return seed == nullptr ? 7 : static_cast<unsigned int>(std::strtoul(seed, nullptr, 10));
}

std::string RandomText(std::mt19937 &random, size_t mostPieces)
{
    std::string bytes;
    for (size_t pieces = random() % mostPieces; pieces > 0; --pieces)
        bytes += kPieces[random() % std::size(kPieces)];
    if (random() % 4 == 0 && !bytes.empty())
        bytes[random() % bytes.size()] = static_cast<char>(random() % 256);
    return bytes;
}
