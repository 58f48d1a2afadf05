// SPDX-License-Identifier: Apache-2.0
//
// A map of 256 bytes applied to many bytes at a time.  An entry of 0 has no answer and stops a run.
#ifndef STR_CORE_BYTEMAP_H
#define STR_CORE_BYTEMAP_H

#include <cstddef>
#include <cstdint>

namespace libstr
{

// A byte map and what long runs need to know of it, which the first of them works out.
struct ByteMap {
    static constexpr int kUnknown = -1;

    const uint8_t *upper;
    int rows;                           // of 16 entries that change a byte, or kUnknown
    uint8_t first[16];                  // the byte that each of these rows begins with
    alignas(16) uint8_t change[16][16]; // entry xor byte
};

// Ready for use as far as `upper` goes; the rest stays untouched until it is needed.
inline void SetByteMap(ByteMap *map, const uint8_t *upper)
{
    map->upper = upper;
    map->rows = ByteMap::kUnknown;
}

// Writes the entries of `length` bytes at `in` to `out`, up to the first that is 0.  Returns how
// many it wrote.
size_t MapBytes(ByteMap *map, const uint8_t *in, size_t length, uint8_t *out);

// How many bytes at the start of `a` and `b`, of `length`, have entries that agree and are not 0.
size_t MappedAlike(ByteMap *map, const uint8_t *a, const uint8_t *b, size_t length);

} // namespace libstr

#endif
