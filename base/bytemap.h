// SPDX-License-Identifier: Apache-2.0
//
// A map of 256 bytes applied to many bytes at once.  A byte whose entry is 0 ends a run.
#ifndef BASE_BYTEMAP_H
#define BASE_BYTEMAP_H

#include <cstddef>
#include <cstdint>

namespace libstr
{

// A byte map, and the rows that change bytes.  The first long run finds the rows.
struct ByteMap {
    static constexpr int kUnknown = -1;

    const uint8_t *upper;
    int rows;                           // of 16 entries that change a byte, or kUnknown
    uint8_t first[16];                  // the first byte of each of these rows
    alignas(16) uint8_t change[16][16]; // entry xor byte
};

// Sets only what short runs need: most runs are short.
inline void SetByteMap(ByteMap *map, const uint8_t *upper)
{
    map->upper = upper;
    map->rows = ByteMap::kUnknown;
}

// Writes the entries of `length` bytes at `in` to `out`, up to the first entry of 0.  Returns how
// many it wrote.
size_t MapBytes(ByteMap *map, const uint8_t *in, size_t length, uint8_t *out);

// How many of the first `length` bytes of `a` and `b` have the same entries, none of them 0.
size_t MappedAlike(ByteMap *map, const uint8_t *a, const uint8_t *b, size_t length);

} // namespace libstr

#endif
