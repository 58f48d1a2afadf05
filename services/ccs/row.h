// SPDX-License-Identifier: Apache-2.0
//
// What a row of the table of character sets says.
#ifndef SERVICES_CCS_ROW_H
#define SERVICES_CCS_ROW_H

#include <str/charset.h>

#include <cstdint>

namespace libstr::ccs
{

// How a graphic set is designated (ISO 2022): by its size.  `none` for the rows that are no graphic
// set but a code, a way to use several.
enum class Graphic : uint8_t { none, set94, set96, set94n, set96n };

// How the characters of a set are told apart, beyond their fixed number of bytes.
enum class Units : uint8_t { fixed, marked, utf8 };

inline constexpr uint8_t kNowhere = 0xFF; // what a half has invoked that has nothing

// What stands in G0 to G3 when a string of the set begins (numbers of sets, 0 for nothing), and
// which of the four is invoked in the left half (bytes 0x20 to 0x7F) and in the right (0xA0 on).
struct Start {
    uint16_t g[4] = {0, 0, 0, 0};
    uint8_t left = 0;
    uint8_t right = kNowhere;
};

// How iconv reads a character of a set: in the code of this name, after the bytes `before`, and
// with `bits` set in each byte.
struct Reading {
    const char *code = nullptr;
    const char *before = "";
    uint8_t bits = 0;
};

struct SetRow {
    uint16_t number;      // ISO-IR registration where there is one, else from 1001 on
    const char *name;     // in upper case
    const char *iconv;    // the same code's name for iconv, null where it knows none
    Reading reading = {}; // needed where `iconv` is null
    uint32_t flags;       // CS_FLAG_...
    uint16_t escMode = 0;
    uint8_t bytes = 1; // of a character; of the shortest where lengths are mixed
    Units units = Units::fixed;

    Graphic graphic = Graphic::none;
    char final = 0; // final byte of its designation

    uint16_t left = 0;  // kind of its text in the left half, 0 for none: the bytes are raw
    uint16_t right = 0; // kind of its text in the right half
    // The characters of the left half that ASCII does not have there: they are of kind `number`.
    const char *differs = "";
    // The set that, to its left, makes one text of both halves with it, and another that does.
    // With a marked set they make no text of one kind: they have the letters that its marks stand
    // before.
    uint16_t partner = 0;
    uint16_t partner2 = 0;

    Start start = {};
};

inline constexpr uint16_t kIa5 = 6;
inline constexpr uint16_t kT61 = 103;
inline constexpr uint16_t kUtf8 = 196;

} // namespace libstr::ccs

#endif
