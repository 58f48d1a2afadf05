// SPDX-License-Identifier: Apache-2.0
//
// The table of character sets: data only.  To add a set, add a row; docs/adding-a-character-set.md
// says how, and what else to do.
//
// Graphic sets have their ISO-IR registration number.  A right half is registered without the ASCII
// that it is used with.  Here its number means the two together, since a text in ISO 8859-1, say,
// has both.  The same right half used in seven bits has other bytes, so it is another kind; its
// number is kInSevenBits more.  Text that means what it means in ASCII is IA5 wherever a left half
// is used by itself, in T.61 too.  Codes, which are ways to use several sets, begin at 1001.
#ifndef SERVICES_CCS_TABLE_H
#define SERVICES_CCS_TABLE_H

#include "services/ccs/row.h"

namespace libstr::ccs
{

inline constexpr uint32_t kByteCase = CS_FLAG_BYTE | CS_FLAG_CASE;
inline constexpr uint32_t kLatin = kByteCase | CS_FLAG_ASCII_SUPERSET;

inline constexpr Graphic k94 = Graphic::set94;
inline constexpr Graphic k96 = Graphic::set96;
inline constexpr Graphic k94n = Graphic::set94n;

inline constexpr uint16_t kInSevenBits = 1000;

// A part of ISO 8859: a 96-set to the right of ASCII.
constexpr SetRow Latin(uint16_t number, const char *name, char final)
{
    return {.number = number,
            .name = name,
            .iconv = name,
            .flags = kLatin,
            .graphic = k96,
            .final = final,
            .left = static_cast<uint16_t>(number + kInSevenBits),
            .right = number,
            .partner = kIa5,
            .start = {{kIa5, number}, 0, 1}};
}

// The right half `number` in seven bits.  iconv reads it in `code`, with the top bits set.
constexpr SetRow InSevenBits(uint16_t number, const char *name, const char *code,
                             uint32_t flags = kByteCase)
{
    const auto own = static_cast<uint16_t>(number + kInSevenBits);
    return {.number = own,
            .name = name,
            .iconv = nullptr,
            .reading = {code, "", 0x80},
            .flags = flags,
            .left = own,
            .start = {{own}}};
}

// A set of two-byte characters, the same kind in either half.
constexpr SetRow TwoBytes(uint16_t number, const char *name, char final, const char *code,
                          const char *before = "", uint32_t flags = CS_FLAG_CASE)
{
    return {.number = number,
            .name = name,
            .iconv = nullptr,
            .reading = {code, before, 0x80},
            .flags = flags,
            .bytes = 2,
            .graphic = k94n,
            .final = final,
            .left = number,
            .right = number,
            .start = {{number, number}, 0, 1}};
}

// clang-format off
inline constexpr SetRow kSets[] = {
    // Left halves.
    {.number = kIa5, .name = "IA5", .iconv = "ASCII", .flags = kLatin | CS_FLAG_ASCII,
     .graphic = k94, .final = 'B', .left = kIa5, .start = {{kIa5}}},
    {.number = 14, .name = "JIS X 0201 ROMAN", .iconv = "ISO646-JP", .flags = kByteCase,
     .graphic = k94, .final = 'J', .left = 14, .start = {{14}}},
    {.number = 102, .name = "T.61 PRIMARY", .iconv = nullptr, .reading = {"T.61-8BIT"},
     .flags = kByteCase, .graphic = k94, .final = 'u', .left = kIa5, .differs = "#$\\^`{}~",
     .start = {{102}}},

    // Right halves with their partners.
    Latin(100, "ISO-8859-1", 'A'),
    Latin(101, "ISO-8859-2", 'B'),
    Latin(144, "ISO-8859-5", 'L'),
    Latin(126, "ISO-8859-7", 'F'),
    Latin(148, "ISO-8859-9", 'M'),
    Latin(203, "ISO-8859-15", 'b'),
    {.number = 13, .name = "JIS X 0201", .iconv = nullptr, .reading = {"SHIFT_JIS"},
     .flags = kByteCase, .graphic = k94, .final = 'I', .left = 13 + kInSevenBits, .right = 13,
     .partner = 14, .start = {{14, 13}, 0, 1}},
    {.number = kT61, .name = "T.61", .iconv = "T.61-8BIT",
     .flags = CS_FLAG_T61 | CS_FLAG_CASE | CS_FLAG_ESCAPES, .escMode = 1, .units = Units::marked,
     .graphic = k94, .final = 'v', .right = kT61, .partner = 102, .partner2 = kIa5,
     .start = {{102, 0, kT61}, 0, 2}},

    // The same right halves, in seven bits.
    InSevenBits(100, "ISO-8859-1 RIGHT HALF", "ISO-8859-1"),
    InSevenBits(101, "ISO-8859-2 RIGHT HALF", "ISO-8859-2"),
    InSevenBits(144, "ISO-8859-5 RIGHT HALF", "ISO-8859-5"),
    InSevenBits(126, "ISO-8859-7 RIGHT HALF", "ISO-8859-7"),
    InSevenBits(148, "ISO-8859-9 RIGHT HALF", "ISO-8859-9"),
    InSevenBits(203, "ISO-8859-15 RIGHT HALF", "ISO-8859-15"),
    InSevenBits(13, "JIS X 0201 KATAKANA", "SHIFT_JIS", CS_FLAG_BYTE),

    // Sets of two-byte characters.
    TwoBytes(42, "JIS C 6226-1978", '@', "EUC-JP"),
    TwoBytes(87, "JIS X 0208", 'B', "EUC-JP"),
    TwoBytes(159, "JIS X 0212", 'D', "EUC-JP", "\x8F"),
    TwoBytes(149, "KS X 1001", 'C', "EUC-KR"),
    TwoBytes(58, "GB 2312", 'A', "EUC-CN"),

    // Codes.
    {.number = 1001, .name = "ISO-2022-JP", .iconv = "ISO-2022-JP", .flags = CS_FLAG_ESCAPES,
     .escMode = 1, .start = {{kIa5}}},
    {.number = 1002, .name = "ISO-2022-KR", .iconv = "ISO-2022-KR", .flags = CS_FLAG_ESCAPES,
     .escMode = 1, .start = {{kIa5}}},
    {.number = 1003, .name = "EUC-JP", .iconv = "EUC-JP", .flags = CS_FLAG_ASCII_SUPERSET,
     .escMode = 1, .start = {{kIa5, 87, 13, 159}, 0, 1}},
    {.number = 1004, .name = "EUC-KR", .iconv = "EUC-KR", .flags = CS_FLAG_ASCII_SUPERSET,
     .escMode = 1, .start = {{kIa5, 149}, 0, 1}},
    {.number = 1005, .name = "EUC-CN", .iconv = "EUC-CN", .flags = CS_FLAG_ASCII_SUPERSET,
     .escMode = 1, .start = {{kIa5, 58}, 0, 1}},
    {.number = kUtf8, .name = "UTF8", .iconv = "UTF-8",
     .flags = CS_FLAG_T61 | CS_FLAG_ASCII_SUPERSET, .units = Units::utf8, .start = {{kIa5}}},
};
// clang-format on

} // namespace libstr::ccs

#endif
