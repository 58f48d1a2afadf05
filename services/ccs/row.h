// SPDX-License-Identifier: Apache-2.0
//
// A row of the table of character sets.
#ifndef SERVICES_CCS_ROW_H
#define SERVICES_CCS_ROW_H

#include <str/charset.h>

#include <cstdint>

namespace libstr::ccs
{

// The size of a graphic set, by which ISO 2022 designates it.  `none` for a code, which is a way to
// use several sets, and for a right half in seven bits.
enum class Graphic : uint8_t { none, set94, set96, set94n, set96n };

// How the characters of a set are found.
enum class Units : uint8_t { fixed, marked, utf8 };

inline constexpr uint8_t kNowhere = 0xFF; // nothing is invoked in the half

// What G0 to G3 hold when a string of the set begins (numbers of sets, 0 for nothing), and which of
// the four is invoked in the left half (bytes 0x20 to 0x7F) and in the right (0xA0 on).
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

// A row of the table as it is written.
struct Row {
    uint16_t number;      // ISO-IR registration if there is one; see table.h
    const char *name;     // in upper case
    const char *what;     // for people
    const char *iconv;    // iconv's name for the same code; null where it does not know it
    Reading reading = {}; // needed where `iconv` is null
    // IANA's names for the same code, with spaces between them: those that are not `name` or `iconv`
    // with other hyphens, underscores or case.
    const char *aliases = "";
    uint32_t flags; // CS_FLAG_...
    uint8_t escMode = 0;
    uint8_t bytes = 1; // of a character; of the shortest where lengths are mixed
    Units units = Units::fixed;
    bool isHalf = false; // a right half, used in seven bits

    Graphic graphic = Graphic::none;
    char final = 0;        // final byte of its designation
    char intermediate = 0; // '!' comes before some final bytes of 94-sets

    uint16_t left = 0;  // kind of its text in the left half; 0: the bytes are raw
    uint16_t right = 0; // kind of its text in the right half
    // The bytes of the left half that are not the characters of ASCII: they are of kind `number`.
    const char *differs = "";
    // The set that forms one kind of text with this one when it is to its left, and another such
    // set.  A marked set forms no such text: the partners have the base letters of its marks.
    uint16_t partner = 0;
    uint16_t partner2 = 0;

    Start start = {};
};

// A row as texts are read with it: without names, and without what only the beginning needs.
struct SetRow {
    uint16_t number;
    uint16_t flags;
    uint16_t left;
    uint16_t right;
    uint16_t partner;
    uint16_t partner2;
    uint8_t escMode;
    uint8_t bytes;
    Units units;
    Graphic graphic;
    char final;
    char intermediate;
    bool isHalf;
    bool differs; // some bytes of the left half do
};

inline constexpr uint16_t kIa5 = 6;
inline constexpr uint16_t kT61 = 103;
inline constexpr uint16_t kUtf8 = 196;

} // namespace libstr::ccs

#endif
