// SPDX-License-Identifier: Apache-2.0
//
// A map of 256 bytes applied to many bytes at once.  A byte whose entry is 0 ends a run.
//
// A fold is a map whose only change is to clear the bit 0x20 of some bytes, as in ASCII and
// Latin-1.
#ifndef BASE_BYTEMAP_H
#define BASE_BYTEMAP_H

#include <cstddef>
#include <cstdint>

namespace libstr
{

// A byte map and, once they have been found, its rows and whether it is a fold.
struct ByteMap {
    static constexpr int kUnknown = -1;

    const uint8_t *upper;
    int rows;                           // of 16 entries that change a byte, or kUnknown
    uint8_t first[16];                  // the first byte of each of these rows
    alignas(16) uint8_t change[16][16]; // entry xor byte
    bool isTotal;                       // only the NUL has the entry 0
    bool foldsLetters;                  // and is total: ASCII letters of both cases are the same
    bool isFold;                        // and is total
    // Of a fold, for each low half of a byte: a bit for each high half with which it changes.
    alignas(16) uint8_t folds[16];
    // A fold changes the bytes of one range only: those that, with the shift added, are greater
    // than a number, both signed.
    bool isRange;
    int8_t shift, below;
};

// Sets only what short runs need: most runs are short.
inline void SetByteMap(ByteMap *map, const uint8_t *upper)
{
    map->upper = upper;
    map->rows = ByteMap::kUnknown;
    map->isTotal = map->isFold = map->foldsLetters = false;
}

// Finds the rows, which make long runs fast.
void IndexByteMap(ByteMap *map);

// Finds whether the map is total and a fold, which takes as long as a long run.
void FindFold(ByteMap *map);

// Writes the entries of `length` bytes at `in` to `out`, up to the first entry of 0.  Returns how
// many it wrote.
size_t MapBytes(const ByteMap &map, const uint8_t *in, size_t length, uint8_t *out);

// How many of the first `length` bytes of `a` and `b`, which have no NUL, have the same entries, none
// of them 0.
size_t MappedAlike(const ByteMap &map, const uint8_t *a, const uint8_t *b, size_t length);

// How many of the first `length` bytes of `a` and `b`, which have no NUL, are the same or one ASCII
// letter in both cases.
size_t LettersAlike(const char *a, const char *b, size_t length);

} // namespace libstr

#endif
