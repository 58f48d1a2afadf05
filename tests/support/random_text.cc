// SPDX-License-Identifier: Apache-2.0
#include "tests/support/text.h"

#include <cstdlib>
#include <string_view>

namespace
{

// Pieces that make random text come upon every rule: whole sequences, their parts, and characters.
const std::string_view kPieces[] = {
    // clang-format off
    "\x1B$B", "\x1B(B", "\x1B(J", "\x1B$@", "\x1B$)C", "\x1B$(D", "\x1B(I", "\x1B-A", "\x1B.F",
    "\x1B$(!A", "\x1B*5", "\x1B*v", "\x1B)u", "\x1B(%", // unknown sets among them
    "\x1B%G", "\x1B%/G", "\x1B%@", // codings
    "\x0E", "\x0F", "\x1Bn", "\x1Bo", "\x1B~", "\x1B}", "\x1B|", // locking shifts
    "\x1BN", "\x1BO", "\x8E", "\x8F", // single shifts
    "\x1B", "\x1B[1m", "\x1B#3", "\x9B", "\x80", "\x7F", "\n", // other controls
    "a", "Zz", "abcdefg", "~", " ", "0123456789012345678901234567890123456789",
    "\x46\x7C", "\x46\x7C\x46\x7C\x46\x7C", "\xC6", "\xC6\xFC",
    "\xC3\xA9", "\xE6\x97\xA5", "\xE6\x97", "\xED\xA0\x80",
    "\xC2", "\xC8u", "\xE9", "\xA0", "\xFF", "\xB0\xB1\xB2\xB3\xB4\xB5\xB6\xB7",
    // clang-format on
};

} // namespace

unsigned int TestSeed()
{
    const char *const seed = std::getenv("STR_TEST_SEED");
    return seed == nullptr ? 7 : static_cast<unsigned int>(std::strtoul(seed, nullptr, 10));
}

std::string RandomText(std::mt19937 &random, size_t mostPieces)
{
    std::string bytes;
    for (size_t pieces = random() % mostPieces; pieces > 0; --pieces)
        bytes += kPieces[random() % std::size(kPieces)];
    if (random() % 4 == 0 && !bytes.empty())
        bytes[random() % bytes.size()] = static_cast<char>(random() % 256);
    return bytes;
}
