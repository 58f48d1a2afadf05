// SPDX-License-Identifier: Apache-2.0
//
// The table of character sets: data alone.  To add a set, add a row; how, and what else there is to
// do, stands in docs/adding-a-character-set.md.
//
// Graphic sets carry their ISO-IR registration number.  A right half is registered apart from the
// ASCII that it is used with; here its number stands for the pair, since that is what a text in
// ISO 8859-1, say, is made of.  The same right half used in seven bits has 1000 more: its bytes
// are others, so it is another kind.  Text that means what it does in ASCII is IA5 wherever a left
// half stands by itself, T.61's too.  Codes, which are ways to use several sets, begin at 1001.
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

// clang-format off
inline constexpr SetRow kSets[] = {
    // Left halves.
    {.number = 6, .name = "IA5", .iconv = "ASCII", .flags = kLatin | CS_FLAG_ASCII,
     .graphic = k94, .final = 'B', .left = 6, .start = {{6}}},
    {.number = 14, .name = "JIS X 0201 ROMAN", .iconv = "ISO646-JP", .flags = kByteCase,
     .graphic = k94, .final = 'J', .left = 14, .start = {{14}}},
    {.number = 102, .name = "T.61 PRIMARY", .iconv = nullptr, .reading = {"T.61-8BIT"}, .flags = kByteCase,
     .graphic = k94, .final = 'u', .left = 6, .differs = "#$\\^`{}~", .start = {{102}}},

    // Right halves with their partners.
    {.number = 100, .name = "ISO-8859-1", .iconv = "ISO-8859-1", .flags = kLatin,
     .graphic = k96, .final = 'A', .left = 1100, .right = 100, .partner = 6, .start = {{6, 100}, 0, 1}},
    {.number = 101, .name = "ISO-8859-2", .iconv = "ISO-8859-2", .flags = kLatin,
     .graphic = k96, .final = 'B', .left = 1101, .right = 101, .partner = 6, .start = {{6, 101}, 0, 1}},
    {.number = 144, .name = "ISO-8859-5", .iconv = "ISO-8859-5", .flags = kLatin,
     .graphic = k96, .final = 'L', .left = 1144, .right = 144, .partner = 6, .start = {{6, 144}, 0, 1}},
    {.number = 126, .name = "ISO-8859-7", .iconv = "ISO-8859-7", .flags = kLatin,
     .graphic = k96, .final = 'F', .left = 1126, .right = 126, .partner = 6, .start = {{6, 126}, 0, 1}},
    {.number = 148, .name = "ISO-8859-9", .iconv = "ISO-8859-9", .flags = kLatin,
     .graphic = k96, .final = 'M', .left = 1148, .right = 148, .partner = 6, .start = {{6, 148}, 0, 1}},
    {.number = 203, .name = "ISO-8859-15", .iconv = "ISO-8859-15", .flags = kLatin,
     .graphic = k96, .final = 'b', .left = 1203, .right = 203, .partner = 6, .start = {{6, 203}, 0, 1}},
    {.number = 13, .name = "JIS X 0201", .iconv = nullptr, .reading = {"SHIFT_JIS"}, .flags = kByteCase,
     .graphic = k94, .final = 'I', .left = 1013, .right = 13, .partner = 14, .start = {{14, 13}, 0, 1}},
    {.number = kT61, .name = "T.61", .iconv = "T.61-8BIT",
     .flags = CS_FLAG_T61 | CS_FLAG_CASE | CS_FLAG_ESCAPES, .escMode = 1, .units = Units::marked,
     .graphic = k94, .final = 'v', .right = kT61, .partner = 102, .partner2 = 6, .start = {{102, 0, kT61}, 0, 2}},

    // The same right halves, in seven bits.
    {.number = 1100, .name = "ISO-8859-1 RIGHT HALF", .iconv = nullptr, .reading = {"ISO-8859-1", "", 0x80}, .flags = kByteCase, .left = 1100, .start = {{1100}}},
    {.number = 1101, .name = "ISO-8859-2 RIGHT HALF", .iconv = nullptr, .reading = {"ISO-8859-2", "", 0x80}, .flags = kByteCase, .left = 1101, .start = {{1101}}},
    {.number = 1144, .name = "ISO-8859-5 RIGHT HALF", .iconv = nullptr, .reading = {"ISO-8859-5", "", 0x80}, .flags = kByteCase, .left = 1144, .start = {{1144}}},
    {.number = 1126, .name = "ISO-8859-7 RIGHT HALF", .iconv = nullptr, .reading = {"ISO-8859-7", "", 0x80}, .flags = kByteCase, .left = 1126, .start = {{1126}}},
    {.number = 1148, .name = "ISO-8859-9 RIGHT HALF", .iconv = nullptr, .reading = {"ISO-8859-9", "", 0x80}, .flags = kByteCase, .left = 1148, .start = {{1148}}},
    {.number = 1203, .name = "ISO-8859-15 RIGHT HALF", .iconv = nullptr, .reading = {"ISO-8859-15", "", 0x80}, .flags = kByteCase, .left = 1203, .start = {{1203}}},
    {.number = 1013, .name = "JIS X 0201 KATAKANA", .iconv = nullptr, .reading = {"SHIFT_JIS", "", 0x80}, .flags = CS_FLAG_BYTE, .left = 1013, .start = {{1013}}},

    // Sets of two-byte characters, the same kind in either half.
    {.number = 42, .name = "JIS C 6226-1978", .iconv = nullptr, .reading = {"EUC-JP", "", 0x80}, .flags = CS_FLAG_CASE, .bytes = 2,
     .graphic = k94n, .final = '@', .left = 42, .right = 42, .start = {{42, 42}, 0, 1}},
    {.number = 87, .name = "JIS X 0208", .iconv = nullptr, .reading = {"EUC-JP", "", 0x80}, .flags = CS_FLAG_CASE, .bytes = 2,
     .graphic = k94n, .final = 'B', .left = 87, .right = 87, .start = {{87, 87}, 0, 1}},
    {.number = 159, .name = "JIS X 0212", .iconv = nullptr, .reading = {"EUC-JP", "\x8F", 0x80}, .flags = CS_FLAG_CASE, .bytes = 2,
     .graphic = k94n, .final = 'D', .left = 159, .right = 159, .start = {{159, 159}, 0, 1}},
    {.number = 149, .name = "KS X 1001", .iconv = nullptr, .reading = {"EUC-KR", "", 0x80}, .flags = CS_FLAG_CASE, .bytes = 2,
     .graphic = k94n, .final = 'C', .left = 149, .right = 149, .start = {{149, 149}, 0, 1}},
    {.number = 58, .name = "GB 2312", .iconv = nullptr, .reading = {"EUC-CN", "", 0x80}, .flags = CS_FLAG_CASE, .bytes = 2,
     .graphic = k94n, .final = 'A', .left = 58, .right = 58, .start = {{58, 58}, 0, 1}},

    // Codes.
    {.number = 1001, .name = "ISO-2022-JP", .iconv = "ISO-2022-JP", .flags = CS_FLAG_ESCAPES, .escMode = 1,
     .start = {{6}}},
    {.number = 1002, .name = "ISO-2022-KR", .iconv = "ISO-2022-KR", .flags = CS_FLAG_ESCAPES, .escMode = 1,
     .start = {{6}}},
    {.number = 1003, .name = "EUC-JP", .iconv = "EUC-JP", .flags = CS_FLAG_ASCII_SUPERSET, .escMode = 1,
     .start = {{6, 87, 13, 159}, 0, 1}},
    {.number = 1004, .name = "EUC-KR", .iconv = "EUC-KR", .flags = CS_FLAG_ASCII_SUPERSET, .escMode = 1,
     .start = {{6, 149}, 0, 1}},
    {.number = 1005, .name = "EUC-CN", .iconv = "EUC-CN", .flags = CS_FLAG_ASCII_SUPERSET, .escMode = 1,
     .start = {{6, 58}, 0, 1}},
    {.number = kUtf8, .name = "UTF8", .iconv = "UTF-8", .flags = CS_FLAG_T61 | CS_FLAG_ASCII_SUPERSET,
     .units = Units::utf8, .start = {{6}}},
};
// clang-format on

} // namespace libstr::ccs

#endif
