// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_RANDOM_TEXT_H
#define TESTS_SUPPORT_RANDOM_TEXT_H

#include <random>
#include <string>

// What random tests begin with: the number in STR_TEST_SEED, which CI makes anew each time, else 7.
unsigned int TestSeed();

// The codes that random text is read in.
inline const char *const kCodes[] = {"IA5",  "ISO-2022-JP", "ISO-2022-KR", "EUC-JP", "EUC-KR",
                                     "T.61", "ISO-8859-1",  "JIS X 0201",  "UTF8"};

// Text of less than `mostPieces` pieces: whole sequences, their parts, characters, a random byte.
std::string RandomText(std::mt19937 &random, size_t mostPieces);

#endif
