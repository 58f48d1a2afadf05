// SPDX-License-Identifier: Apache-2.0
//
// The table of character sets: data only.  To add a set, add a row; docs/adding-a-character-set.md
// says how, and what else to do.
//
// Graphic sets have their ISO-IR registration number.  A right half is registered without the ASCII
// that it is used with.  Here its number means the two together, since a text in ISO 8859-1, say,
// has both.  The same right half used in seven bits has other bytes, so it is another kind; its
// number is kInSevenBits more.  Text that means what it means in ASCII is IA5 wherever a left half
// is used by itself, in T.61 too.  A national variant of ISO 646 is a kind of its own.
//
// Codes, which are ways to use several sets, have the numbers from 1001 to 1012: 1013 is the first
// of a right half in seven bits, and registrations end far below 1000.  Sets of one byte a
// character that are not registered have the numbers from 2001 on.
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

// A part of ISO 8859, or another 96-set that is used to the right of ASCII.
constexpr Row Latin(uint16_t number, const char *name, const char *what, char final,
                    const char *aliases = "")
{
    return {.number = number,
            .name = name,
            .what = what,
            .iconv = name,
            .aliases = aliases,
            .flags = kLatin,
            .graphic = k96,
            .final = final,
            .left = static_cast<uint16_t>(number + kInSevenBits),
            .right = number,
            .partner = kIa5,
            .start = {{kIa5, number}, 0, 1}};
}

// The right half `number` in seven bits.  iconv reads it in `code`, with the top bits set.
constexpr Row InSevenBits(uint16_t number, const char *name, const char *code,
                          uint32_t flags = kByteCase, const char *aliases = "")
{
    const auto own = static_cast<uint16_t>(number + kInSevenBits);
    return {.number = own,
            .name = name,
            .what = "the right half by itself, in seven bits",
            .iconv = nullptr,
            .reading = {code, "", 0x80},
            .aliases = aliases,
            .flags = flags,
            .isHalf = true,
            .left = own,
            .start = {{own}}};
}

// A variant of ISO 646, or another set of seven bits that is not the right half of a code.
constexpr Row SevenBit(uint16_t number, const char *name, const char *what, const char *aliases)
{
    return {.number = number,
            .name = name,
            .what = what,
            .iconv = name,
            .aliases = aliases,
            .flags = kByteCase,
            .left = number,
            .start = {{number}}};
}

// The same with a designation.
constexpr Row Left94(uint16_t number, const char *name, const char *what, char final,
                     const char *aliases, uint32_t flags = kByteCase, char intermediate = '\0')
{
    Row row = SevenBit(number, name, what, aliases);
    row.flags = flags;
    row.graphic = k94;
    row.final = final;
    row.intermediate = intermediate;
    return row;
}

// ASCII and up to 128 further characters, for which there is no designation.
constexpr Row CodePage(uint16_t number, const char *name, const char *what, const char *iconv,
                       const char *aliases)
{
    return {.number = number,
            .name = name,
            .what = what,
            .iconv = iconv,
            .aliases = aliases,
            .flags = kLatin | CS_FLAG_NO_C1,
            .right = number,
            .partner = kIa5,
            .start = {{kIa5, number}, 0, 1}};
}

// A set of two-byte characters, the same kind in either half.
constexpr Row TwoBytes(uint16_t number, const char *name, const char *what, char final,
                       const char *code, const char *aliases = "", const char *before = "",
                       uint32_t flags = CS_FLAG_CASE)
{
    return {.number = number,
            .name = name,
            .what = what,
            .iconv = nullptr,
            .reading = {code, before, 0x80},
            .aliases = aliases,
            .flags = flags,
            .bytes = 2,
            .graphic = k94n,
            .final = final,
            .left = number,
            .right = number,
            .start = {{number, number}, 0, 1}};
}

// clang-format off
inline constexpr Row kRows[] = {
    // Left halves.
    {.number = kIa5, .name = "IA5", .what = "ASCII", .iconv = "ASCII",
     .aliases = "iso-ir-6 ANSI_X3.4-1968 ANSI_X3.4-1986 ISO_646.irv:1991 ISO646-US US-ASCII us "
                "IBM367 cp367 csASCII",
     .flags = kLatin | CS_FLAG_ASCII, .graphic = k94, .final = 'B', .left = kIa5,
     .start = {{kIa5}}},
    {.number = 14, .name = "JIS X 0201 ROMAN", .what = "ISO 646, Japanese", .iconv = "ISO646-JP",
     .aliases = "JIS_C6220-1969-ro iso-ir-14 jp csISO14JISC6220ro", .flags = kByteCase,
     .graphic = k94, .final = 'J', .left = 14, .start = {{14}}},
    {.number = 102, .name = "T.61 PRIMARY", .what = "the left half of T.61", .iconv = nullptr,
     .reading = {"T.61-8BIT"},
     .aliases = "T.61-7bit iso-ir-102 csISO102T617bit", .flags = kByteCase, .graphic = k94,
     .final = 'u', .left = kIa5, .differs = "#$\\^`{}~", .start = {{102}}},

    // National variants of ISO 646.
    Left94(4, "ISO646-GB", "ISO 646, United Kingdom", 'A',
           "BS_4730 iso-ir-4 gb uk csISO4UnitedKingdom"),
    Left94(10, "ISO646-SE", "ISO 646, Swedish and Finnish", 'G',
           "SEN_850200_B iso-ir-10 FI ISO646-FI se csISO10Swedish"),
    Left94(11, "ISO646-SE2", "ISO 646, Swedish with letters for names", 'H',
           "SEN_850200_C iso-ir-11 se2 csISO11SwedishForNames"),
    Left94(15, "ISO646-IT", "ISO 646, Italian", 'Y', "IT iso-ir-15 csISO15Italian"),
    Left94(16, "ISO646-PT", "ISO 646, Portuguese of 1980", 'L', "PT iso-ir-16 csISO16Portuguese"),
    Left94(17, "ISO646-ES", "ISO 646, Spanish of 1980", 'Z', "ES iso-ir-17 csISO17Spanish"),
    Left94(21, "ISO646-DE", "ISO 646, German", 'K', "DIN_66003 iso-ir-21 de csISO21German"),
    Left94(25, "ISO646-FR1", "ISO 646, French of 1973", 'R',
           "NF_Z_62-010_(1973) iso-ir-25 csISO25French"),
    Left94(57, "ISO646-CN", "ISO 646, Chinese", 'T', "GB_1988-80 iso-ir-57 cn csISO57GB1988"),
    Left94(60, "ISO646-NO", "ISO 646, Norwegian", '`',
           "NS_4551-1 iso-ir-60 no csISO60DanishNorwegian csISO60Norwegian1"),
    Left94(61, "ISO646-NO2", "ISO 646, Norwegian, second variant", 'a',
           "NS_4551-2 iso-ir-61 no2 csISO61Norwegian2"),
    Left94(69, "ISO646-FR", "ISO 646, French of 1983", 'f',
           "NF_Z_62-010 iso-ir-69 fr csISO69French"),
    Left94(84, "ISO646-PT2", "ISO 646, Portuguese of 1984", 'g',
           "PT2 iso-ir-84 csISO84Portuguese2"),
    Left94(85, "ISO646-ES2", "ISO 646, Spanish of 1984", 'h', "ES2 iso-ir-85 csISO85Spanish2"),
    Left94(86, "ISO646-HU", "ISO 646, Hungarian", 'i', "MSZ_7795.3 iso-ir-86 hu csISO86Hungarian"),
    Left94(92, "ISO646-JP-OCR-B", "ISO 646, Japanese OCR-B", 'n',
           "JIS_C6229-1984-b iso-ir-92 jp-ocr-b csISO92JISC62991984b"),
    Left94(121, "ISO646-CA", "ISO 646, Canadian", 'w',
           "CSA_Z243.4-1985-1 iso-ir-121 csa7-1 ca csISO121Canadian1"),
    Left94(122, "ISO646-CA2", "ISO 646, Canadian, second variant", 'x',
           "CSA_Z243.4-1985-2 iso-ir-122 csa7-2 csISO122Canadian2"),
    Left94(141, "ISO646-YU", "ISO 646, Serbo-Croatian and Slovene", 'z',
           "JUS_I.B1.002 iso-ir-141 js yu csISO141JUSIB1002"),
    Left94(151, "ISO646-CU", "ISO 646, Cuban", 'A', "NC_NC00-10:81 cuba iso-ir-151 csISO151Cuba",
           kByteCase, '!'),

    // Greek, Cyrillic and Arabic in seven bits.
    Left94(18, "GREEK7-OLD", "Greek, old", '[', "iso-ir-18 csISO18Greek7Old"),
    Left94(19, "LATIN-GREEK", "Latin and Greek capitals", '\\', "iso-ir-19 csISO19LatinGreek",
           CS_FLAG_BYTE),
    Left94(27, "LATIN-GREEK-1", "Latin with some Greek capitals", 'U',
           "iso-ir-27 csISO27LatinGreek1"),
    Left94(37, "ISO_5427", "Cyrillic", 'N', "iso-ir-37 csISO5427Cyrillic"),
    Left94(51, "INIS-CYRILLIC", "Cyrillic, INIS", '^', "iso-ir-51 csISO51INISCyrillic"),
    Left94(54, "ISO_5427-EXT", "Cyrillic, further letters", 'Q',
           "ISO_5427:1981 iso-ir-54 ISO5427Cyrillic1981 csISO54271981"),
    Left94(55, "ISO_5428", "Greek, bibliographic", 'S', "ISO_5428:1980 iso-ir-55 csISO5428Greek"),
    Left94(88, "GREEK7", "Greek, ELOT 927", 'j', "iso-ir-88 csISO88Greek7"),
    Left94(89, "ASMO_449", "Arabic", 'k', "ISO_9036 arabic7 iso-ir-89 csISO89ASMO449",
           CS_FLAG_BYTE),
    Left94(150, "GREEK-CCITT", "Greek, CCITT", '@', "iso-ir-150 csISO150 csISO150GreekCCITT",
           kByteCase, '!'),

    // Right halves with their partners.
    Latin(100, "ISO-8859-1", "Latin 1, Western European", 'A',
          "iso-ir-100 ISO_8859-1:1987 latin1 l1 IBM819 CP819 csISOLatin1"),
    Latin(101, "ISO-8859-2", "Latin 2, Central European", 'B',
          "iso-ir-101 ISO_8859-2:1987 latin2 l2 csISOLatin2"),
    Latin(109, "ISO-8859-3", "Latin 3, Southern European", 'C',
          "iso-ir-109 ISO_8859-3:1988 latin3 l3 csISOLatin3"),
    Latin(110, "ISO-8859-4", "Latin 4, Northern European", 'D',
          "iso-ir-110 ISO_8859-4:1988 latin4 l4 csISOLatin4"),
    Latin(144, "ISO-8859-5", "Latin and Cyrillic", 'L',
          "iso-ir-144 ISO_8859-5:1988 cyrillic csISOLatinCyrillic"),
    Latin(127, "ISO-8859-6", "Latin and Arabic", 'G',
          "iso-ir-127 ISO_8859-6:1987 ECMA-114 ASMO-708 arabic csISOLatinArabic ISO-8859-6-E "
          "csISO88596E ISO-8859-6-I csISO88596I"),
    Latin(126, "ISO-8859-7", "Latin and Greek", 'F',
          "iso-ir-126 ISO_8859-7:1987 ELOT_928 ECMA-118 greek greek8 csISOLatinGreek"),
    Latin(138, "ISO-8859-8", "Latin and Hebrew", 'H',
          "iso-ir-138 ISO_8859-8:1988 hebrew csISOLatinHebrew ISO-8859-8-E csISO88598E "
          "ISO-8859-8-I csISO88598I"),
    Latin(148, "ISO-8859-9", "Latin 5, Turkish", 'M',
          "iso-ir-148 ISO_8859-9:1989 latin5 l5 csISOLatin5"),
    Latin(157, "ISO-8859-10", "Latin 6, Nordic", 'V',
          "iso-ir-157 l6 ISO_8859-10:1992 csISOLatin6 latin6"),
    Latin(166, "ISO-8859-11", "Latin and Thai", 'T'),
    Latin(179, "ISO-8859-13", "Latin 7, Baltic", 'Y', "csISO885913"),
    Latin(199, "ISO-8859-14", "Latin 8, Celtic", '_',
          "iso-ir-199 ISO_8859-14:1998 latin8 iso-celtic l8 csISO885914"),
    Latin(203, "ISO-8859-15", "Latin 9, Western European with the euro", 'b',
          "Latin-9 csISO885915"),
    Latin(226, "ISO-8859-16", "Latin 10, South-Eastern European", 'f',
          "iso-ir-226 ISO_8859-16:2001 latin10 l10 csISO885916"),
    Latin(111, "ECMA-CYRILLIC", "Latin and Cyrillic, KOI8-E", '@',
          "iso-ir-111 KOI8-E csISO111ECMACyrillic"),
    Latin(153, "GOST_19768-74", "Latin and Cyrillic, older", 'O',
          "ST_SEV_358-88 iso-ir-153 csISO153GOST1976874"),
    {.number = 13, .name = "JIS X 0201", .what = "Japanese, katakana of one byte",
     .iconv = nullptr, .reading = {"SHIFT_JIS"},
     .aliases = "X0201 csHalfWidthKatakana", .flags = kByteCase, .graphic = k94, .final = 'I',
     .left = 13 + kInSevenBits, .right = 13, .partner = 14, .start = {{14, 13}, 0, 1}},
    {.number = kT61, .name = "T.61", .what = "Latin letters with marks, Teletex",
     .iconv = "T.61-8BIT", .aliases = "iso-ir-103 csISO103T618bit",
     .flags = CS_FLAG_T61 | CS_FLAG_CASE | CS_FLAG_ESCAPES, .escMode = 1, .units = Units::marked,
     .graphic = k94, .final = 'v', .right = kT61, .partner = 102, .partner2 = kIa5,
     .start = {{102, 0, kT61}, 0, 2}},

    // Sets of two-byte characters.
    TwoBytes(42, "JIS C 6226-1978", "Japanese, of 1978", '@', "EUC-JP",
             "iso-ir-42 csISO42JISC62261978"),
    TwoBytes(87, "JIS X 0208", "Japanese", 'B', "EUC-JP",
             "JIS_C6226-1983 iso-ir-87 x0208 JIS_X0208-1983 csISO87JISX0208"),
    TwoBytes(159, "JIS X 0212", "Japanese, supplementary", 'D', "EUC-JP",
             "JIS_X0212-1990 x0212 iso-ir-159 csISO159JISX02121990", "\x8F"),
    TwoBytes(149, "KS X 1001", "Korean", 'C', "EUC-KR",
             "KS_C_5601-1987 iso-ir-149 KS_C_5601-1989 KSC_5601 korean csKSC56011987"),
    TwoBytes(58, "GB 2312", "Chinese, simplified", 'A', "EUC-CN",
             "GB_2312-80 iso-ir-58 chinese csISO58GB231280"),

    // The same right halves, in seven bits.
    InSevenBits(100, "ISO-8859-1 RIGHT HALF", "ISO-8859-1"),
    InSevenBits(101, "ISO-8859-2 RIGHT HALF", "ISO-8859-2"),
    InSevenBits(109, "ISO-8859-3 RIGHT HALF", "ISO-8859-3"),
    InSevenBits(110, "ISO-8859-4 RIGHT HALF", "ISO-8859-4"),
    InSevenBits(144, "ISO-8859-5 RIGHT HALF", "ISO-8859-5"),
    InSevenBits(127, "ISO-8859-6 RIGHT HALF", "ISO-8859-6", CS_FLAG_BYTE),
    InSevenBits(126, "ISO-8859-7 RIGHT HALF", "ISO-8859-7"),
    InSevenBits(138, "ISO-8859-8 RIGHT HALF", "ISO-8859-8", CS_FLAG_BYTE),
    InSevenBits(148, "ISO-8859-9 RIGHT HALF", "ISO-8859-9"),
    InSevenBits(157, "ISO-8859-10 RIGHT HALF", "ISO-8859-10"),
    InSevenBits(166, "ISO-8859-11 RIGHT HALF", "ISO-8859-11", CS_FLAG_BYTE),
    InSevenBits(179, "ISO-8859-13 RIGHT HALF", "ISO-8859-13"),
    InSevenBits(199, "ISO-8859-14 RIGHT HALF", "ISO-8859-14"),
    InSevenBits(203, "ISO-8859-15 RIGHT HALF", "ISO-8859-15"),
    InSevenBits(226, "ISO-8859-16 RIGHT HALF", "ISO-8859-16"),
    InSevenBits(111, "ECMA-CYRILLIC RIGHT HALF", "ECMA-CYRILLIC"),
    InSevenBits(153, "GOST_19768-74 RIGHT HALF", "GOST_19768-74"),
    InSevenBits(13, "JIS X 0201 KATAKANA", "SHIFT_JIS", CS_FLAG_BYTE,
                "JIS_C6220-1969-jp JIS_C6220-1969 iso-ir-13 katakana x0201-7 csISO13JISC6220jp"),

    // Sets of one byte a character that are not registered.
    SevenBit(2001, "ISO646-DK", "ISO 646, Danish", "DS_2089 dk csISO646Danish"),
    SevenBit(2002, "ISO646-KR", "ISO 646, Korean", "KSC5636 csKSC5636"),
    CodePage(2003, "KOI8-R", "Russian", "KOI8-R", "csKOI8R"),
    CodePage(2004, "KOI8-U", "Ukrainian", "KOI8-U", "csKOI8U"),
    CodePage(2005, "KOI8-RU", "Russian, Ukrainian, Belarusian", "KOI8-RU", ""),
    CodePage(2006, "WINDOWS-874", "Thai", "CP874", "cswindows874"),
    CodePage(2007, "WINDOWS-1250", "Central European", "CP1250", "cswindows1250"),
    CodePage(2008, "WINDOWS-1251", "Cyrillic", "CP1251", "cswindows1251"),
    CodePage(2009, "WINDOWS-1252", "Western European", "CP1252", "cswindows1252"),
    CodePage(2010, "WINDOWS-1253", "Greek", "CP1253", "cswindows1253"),
    CodePage(2011, "WINDOWS-1254", "Turkish", "CP1254", "cswindows1254"),
    CodePage(2012, "WINDOWS-1255", "Hebrew", "CP1255", "cswindows1255"),
    CodePage(2013, "WINDOWS-1256", "Arabic", "CP1256", "cswindows1256"),
    CodePage(2014, "WINDOWS-1257", "Baltic", "CP1257", "cswindows1257"),
    CodePage(2015, "WINDOWS-1258", "Vietnamese", "CP1258", "cswindows1258"),
    CodePage(2016, "IBM437", "DOS, United States", "CP437", "437 csPC8CodePage437"),
    CodePage(2017, "IBM850", "DOS, Western European", "CP850", "850 csPC850Multilingual"),
    CodePage(2018, "IBM852", "DOS, Central European", "CP852", "852 csPCp852"),
    CodePage(2019, "IBM855", "DOS, Cyrillic", "CP855", "855 csIBM855"),
    CodePage(2020, "IBM857", "DOS, Turkish", "CP857", "857 csIBM857"),
    CodePage(2021, "IBM858", "DOS, Western European with the euro", "CP858",
             "IBM00858 CCSID00858 CP00858 PC-Multilingual-850+euro csIBM00858"),
    CodePage(2022, "IBM862", "DOS, Hebrew", "CP862", "862 csPC862LatinHebrew"),
    CodePage(2023, "IBM866", "DOS, Cyrillic, Russian", "CP866", "866 csIBM866"),
    CodePage(2024, "MACINTOSH", "Mac OS Roman", "MACINTOSH", "mac csMacintosh"),
    CodePage(2025, "MAC-CYRILLIC", "Mac OS Cyrillic", "MAC-CYRILLIC", ""),
    CodePage(2026, "TIS-620", "Thai", "TIS-620", "csTIS620"),
    CodePage(2027, "VISCII", "Vietnamese", "VISCII", "csVISCII"),
    CodePage(2028, "ARMSCII-8", "Armenian", "ARMSCII-8", ""),
    CodePage(2029, "GEORGIAN-PS", "Georgian", "GEORGIAN-PS", ""),
    CodePage(2030, "HP-ROMAN8", "HP, Western European", "HP-ROMAN8", "roman8 r8 csHPRoman8"),

    // Codes.
    {.number = 1001, .name = "ISO-2022-JP", .what = "Japanese", .iconv = "ISO-2022-JP",
     .aliases = "csISO2022JP",
     .flags = CS_FLAG_ESCAPES, .escMode = 1, .start = {{kIa5}}},
    {.number = 1002, .name = "ISO-2022-KR", .what = "Korean", .iconv = "ISO-2022-KR",
     .aliases = "csISO2022KR",
     .flags = CS_FLAG_ESCAPES, .escMode = 1, .start = {{kIa5}}},
    {.number = 1003, .name = "EUC-JP", .what = "Japanese", .iconv = "EUC-JP",
     .aliases = "Extended_UNIX_Code_Packed_Format_for_Japanese csEUCPkdFmtJapanese",
     .flags = CS_FLAG_ASCII_SUPERSET, .escMode = 1, .start = {{kIa5, 87, 13, 159}, 0, 1}},
    {.number = 1004, .name = "EUC-KR", .what = "Korean", .iconv = "EUC-KR", .aliases = "csEUCKR",
     .flags = CS_FLAG_ASCII_SUPERSET, .escMode = 1, .start = {{kIa5, 149}, 0, 1}},
    {.number = 1005, .name = "EUC-CN", .what = "Chinese, simplified", .iconv = "EUC-CN",
     .aliases = "GB2312 csGB2312",
     .flags = CS_FLAG_ASCII_SUPERSET, .escMode = 1, .start = {{kIa5, 58}, 0, 1}},
    {.number = kUtf8, .name = "UTF8", .what = "Unicode", .iconv = "UTF-8", .aliases = "csUTF8",
     .flags = CS_FLAG_T61 | CS_FLAG_ASCII_SUPERSET, .units = Units::utf8, .start = {{kIa5}}},
};
// clang-format on

} // namespace libstr::ccs

#endif
