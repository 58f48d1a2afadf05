// SPDX-License-Identifier: Apache-2.0
#include "tests/support/random_text.h"

#include <string_view>

namespace
{

// Pieces that make random text come upon every rule: whole sequences, their parts, and characters.
const std::string_view kPieces[] = {
    "\x1B$B",
    "\x1B(B",
    "\x1B(J",
    "\x1B$@",
    "\x1B$)C",
    "\x1B$(D",
    "\x1B$(!A",
    "\x1B*5",
    "\x1B%G",
    "\x1B%/G",
    "\x1B%@",
    "\x1B(I",
    "\x1B-A",
    "\x1B.F",
    "\x1B*v",
    "\x1B)u",
    "\x1Bn",
    "\x1Bo",
    "\x1B~",
    "\x1B}",
    "\x1B|",
    "\x1BN",
    "\x1BO",
    "\x1B",
    "\x1B[1m",
    "\x1B#3",
    "\x1B(%",
    "\x0E",
    "\x0F",
    "\x8E",
    "\x8F",
    "\x9B",
    "\x80",
    "\xA0",
    "\xFF",
    "\x7F",
    " ",
    "\n",
    "\xC2",
    "\xC8u",
    "\x46\x7C",
    "\xC6",
    "\xC6\xFC",
    "a",
    "Zz",
    "abcdefg",
    "\xE9",
    "\x46\x7C\x46\x7C\x46\x7C",
    "~",
    "0123456789012345678901234567890123456789",
    "\xB0\xB1\xB2\xB3\xB4\xB5\xB6\xB7",
};

} // namespace

std::string RandomText(std::mt19937 &random, size_t mostPieces)
{
    std::string bytes;
    for (size_t pieces = random() % mostPieces; pieces > 0; --pieces)
        bytes += kPieces[random() % std::size(kPieces)];
    if (random() % 4 == 0 && !bytes.empty())
        bytes[random() % bytes.size()] = static_cast<char>(random() % 256);
    return bytes;
}
