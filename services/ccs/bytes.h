// SPDX-License-Identifier: Apache-2.0
//
// What a byte is by itself, before any set gives it a meaning.
#ifndef SERVICES_CCS_BYTES_H
#define SERVICES_CCS_BYTES_H

#include "services/ccs/sets.h"

namespace libstr::ccs
{

inline constexpr unsigned char kEsc = 0x1B;
inline constexpr unsigned char kSo = 0x0E;
inline constexpr unsigned char kSi = 0x0F;
inline constexpr unsigned char kSs2 = 0x8E;
inline constexpr unsigned char kSs3 = 0x8F;
inline constexpr unsigned char kCsi = 0x9B;

constexpr unsigned char Byte(const char *at) { return static_cast<unsigned char>(*at); }

// The byte at an offset; 0 where the text ends before it, since every reader stops at 0.
constexpr unsigned char ByteWithin(const char *at, size_t offset, size_t avail)
{
    return offset < avail ? Byte(at + offset) : 0;
}

constexpr bool InRange(unsigned char byte, unsigned char first, unsigned char last)
{
    return byte >= first && byte <= last;
}
constexpr bool IsControl(unsigned char byte) { return (byte & 0x60) == 0; }
constexpr bool IsSpaceOrDelete(unsigned char byte) { return byte == 0x20 || byte == 0x7F; }
constexpr bool IsGraphic94(unsigned char byte) { return InRange(byte & 0x7F, 0x21, 0x7E); }
constexpr bool IsMark(unsigned char byte) { return InRange(byte, 0xC1, 0xCF); } // in a marked set

// ---- Classes -------------------------------------------------------------------------------

// A byte's class is what its meaning depends on.  NUL has no class, so every run stops there.
inline constexpr uint16_t kLow = 0x01;        // C0 control, space or DEL
inline constexpr uint16_t kShiftC0 = 0x02;    // ESC, SO, SI
inline constexpr uint16_t kLeftSame = 0x04;   // graphic character of the left half
inline constexpr uint16_t kLeftOther = 0x08;  // ... where a set may differ from ASCII
inline constexpr uint16_t kC1 = 0x10;         // C1 control
inline constexpr uint16_t kShiftC1 = 0x20;    // SS2, SS3, CSI
inline constexpr uint16_t kRight94 = 0x40;    // graphic character of the right half
inline constexpr uint16_t kRightMark = 0x80;  // ... where a marked set has a mark
inline constexpr uint16_t kRightEdge = 0x100; // graphic character of a 96-set only
inline constexpr uint16_t kLeft94 = kLeftSame | kLeftOther;
inline constexpr uint16_t kRightPair = kRight94 | kRightMark;
inline constexpr uint16_t kOfLeft = kLow | kLeft94 | kC1;
inline constexpr uint16_t kOfRight = kRightPair | kRightEdge;

inline constexpr auto kClasses = [] {
    std::array<uint16_t, 256> classes{};
    for (size_t byte = 1; byte < 256; ++byte) {
        const size_t low = byte & 0x7F;
        const bool isRight = byte >= 0x80;
        if (low < 0x20)
            classes[byte] = isRight ? kC1 : kLow;
        else if (low == 0x20 || low == 0x7F)
            classes[byte] = isRight ? kRightEdge : kLow;
        else
            classes[byte] = isRight ? kRight94 : kIsDifferent[byte] ? kLeftOther : kLeftSame;
        if (IsMark(static_cast<unsigned char>(byte)))
            classes[byte] = kRightMark;
    }
    classes[kEsc] = classes[kSo] = classes[kSi] = kShiftC0;
    classes[kSs2] = classes[kSs3] = classes[kCsi] = kShiftC1;
    return classes;
}();

inline uint16_t ClassAt(const char *at) { return kClasses[Byte(at)]; }

} // namespace libstr::ccs

#endif
