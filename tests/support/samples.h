// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_SAMPLES_H
#define TESTS_SUPPORT_SAMPLES_H

#include "services/ccs/sets.h"
#include "tests/support/test.h"

struct Sample {
    const char *set;
    std::string_view bytes;
    const char *segments;
    unsigned int columns;
};

// What a text of each set looks like: real words, with the bytes that make the set special.
// clang-format off
inline const Sample kSamples[] = {
    {"IA5", "Hello, world", "6x12", 12},
    {"JIS X 0201 ROMAN", "\\100 ~", "14x6", 6},
    {"T.61 PRIMARY", "Oslo 1984 ~", "6x10 102x1", 11},
    {"ISO-8859-1", "na\xEFve caf\xE9", "100x10", 10},
    {"ISO-8859-2", "\xA3\xF3" "d\xBC", "101x4", 4},
    {"ISO-8859-5", "\xBC\xDE\xE1\xDA\xD2\xD0 1", "144x8", 8},
    {"ISO-8859-7", "\xC1\xE8\xDE\xED\xE1", "126x5", 5},
    {"ISO-8859-9", "\xDDstanbul", "148x8", 8},
    {"ISO-8859-15", "5 \xA4", "203x3", 3},
    {"JIS X 0201", "\xB6\xC5 kana", "13x7", 7},
    {"T.61", "Ren\xC2\x65 M\xC8uller, \xCA" "Angstr\xC8om \xF9",
     "6x3 103x2 6x2 103x2 6x6 103x2 6x5 103x2 6x2 103x1", 23},
    {"T.61", "Dvo\xCF" "r\xC2" "ak \x1B$B\x46\x7C\xE1\x1B(B Tokyo",
     "6x3 103x4 6x2 -x3 87x2 103x1 -x3 6x6", 15},
    {"ISO-8859-1 RIGHT HALF", "cafi", "1100x4", 4},
    {"ISO-8859-2 RIGHT HALF", "#s", "1101x2", 2},
    {"ISO-8859-5 RIGHT HALF", "<^a", "1144x3", 3},
    {"ISO-8859-7 RIGHT HALF", "Ah^ma", "1126x5", 5},
    {"ISO-8859-9 RIGHT HALF", "]", "1148x1", 1},
    {"ISO-8859-15 RIGHT HALF", "$", "1203x1", 1},
    {"JIS X 0201 KATAKANA", "6E", "1013x2", 2},
    {"JIS C 6226-1978", "\x46\x7C\x4B\x5C", "42x4", 2},
    {"JIS X 0208", "\xC6\xFC\xCB\xDC", "87x4", 2},
    {"JIS X 0212", "\xB0\xA1\xB0\xA2", "159x4", 2},
    {"KS X 1001", "\xC7\xD1\xB1\xDB", "149x4", 2},
    {"GB 2312", "\xD6\xD0\xCE\xC4", "58x4", 2},
    {"ISO-2022-JP", "Re: \x1B$B\x46\x7C\x4B\x5C\x38\x6C\x1B(B mail", "6x4 -x3 87x6 -x3 6x5", 12},
    {"ISO-2022-JP", "\x1B$@\x46\x7C\x4B\x5C\x1B(J\\500\x1B(B", "-x3 42x4 -x3 14x4 -x3", 6},
    {"ISO-2022-KR", "\x1B$)C\x0E\x47\x51\x31\x5B\x0F ok", "-x4 -x1 149x4 -x1 6x3", 5},
    {"EUC-JP", "a\xC6\xFC\x8E\xB6\x8E\xC5\x8F\xB0\xA1.", "6x1 87x2 13x4 159x3 6x1", 6},
    {"EUC-KR", "\xC7\xD1\xB1\xDB text", "149x4 6x5", 7},
    {"EUC-CN", "\xD6\xD0\xCE\xC4 (wen)", "58x4 6x6", 8},
    {"UTF8", "caf\xC3\xA9 \xE6\x97\xA5\xF0\x9F\x98\x80", "196x13", 7},
};
// clang-format on

// How iconv calls the code that the sample is in; null when it cannot read it.
inline const char *IconvNameOf(const Sample &sample)
{
    const uint16_t set = DescriptorOf(sample.set).csNum;
    const bool switches = sample.bytes.find('\x1B') != sample.bytes.npos;
    const char *const name = libstr::ccs::kRows[libstr::ccs::FindRow(set)].iconv;
    return set == 103 && switches ? nullptr : name; // iconv knows T.61 alone
}

#endif
