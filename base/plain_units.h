// SPDX-License-Identifier: Apache-2.0
//
// How text is passed over byte by byte.
#ifndef BASE_PLAIN_UNITS_H
#define BASE_PLAIN_UNITS_H

#include "base/plain_text.h"

#include <algorithm>

namespace libstr::plain
{

inline constexpr unsigned char kEsc = 0x1B;
inline constexpr size_t kSequence = 3; // bytes of a sequence that is known here
inline constexpr size_t kWindow = 64;

constexpr bool IsIn(unsigned char byte, unsigned char first, unsigned char last)
{
    return byte >= first && byte <= last;
}
constexpr bool IsShift(unsigned char byte) { return byte == kEsc || (byte & 0xFE) == 0x0E; }
constexpr bool IsShown(unsigned char byte) { return IsIn(byte, 0x20, 0x7E); }
constexpr bool IsMark(unsigned char byte) { return IsIn(byte, 0xC1, 0xCF); }

inline void Take(Passage *passage, size_t bytes, size_t shown, bool line)
{
    passage->bytes += bytes;
    passage->columns += shown != 0;
    passage->shown += shown;
    passage->lines += line;
}

inline const unsigned char *At(const Passage &passage)
{
    return reinterpret_cast<const unsigned char *>(passage.text + passage.bytes);
}

// The bytes that may be passed and read.
inline size_t Left(const Passage &passage)
{
    return std::min(passage.known, passage.mostBytes) - passage.bytes;
}

inline bool GoesOn(const Passage &passage)
{
    return passage.bytes < passage.known && !IsOver(passage);
}

} // namespace libstr::plain

#endif
