// SPDX-License-Identifier: Apache-2.0
//
// What the tests say about texts.
#ifndef TESTS_SUPPORT_TEXT_H
#define TESTS_SUPPORT_TEXT_H

#include <str/charset.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>
#include <string_view>

CSDescriptor DescriptorOf(const char *setName);

// "6x5 -x3 87x14": kind and bytes of each segment; - is CS_SEG_IGNORE, ? is CS_SEG_RAW.  Walked by
// the step-by-step service and, when `listed`, by the list service.
std::string SegmentsOf(const CSDescriptor &cs, const char *text, int length = -1);
std::string ListedSegmentsOf(const CSDescriptor &cs, const char *text, int length = -1);
std::string Notation(uint16_t kind, unsigned int length);

// In the rows of tests, _ stands for US.
inline std::string WithUs(std::string text)
{
    std::replace(text.begin(), text.end(), '_', '\x1F');
    return text;
}

// The code points of the bytes, nothing when iconv cannot read them whole.
std::optional<std::u32string> Decode(const char *iconvName, std::string_view bytes);

// A slow and obvious reader of ISO 2022 text, byte by byte.  Returns the segments of `bytes`, read as
// a string of the named set with escapes allowed.  Knows the sets of kCodes.
std::string ReadSlowly(const std::string &setName, std::string_view bytes);

// What random tests begin with: the number in STR_TEST_SEED, which CI makes anew each time, else 7.
unsigned int TestSeed();

// The codes that random text is read in.
inline const char *const kCodes[] = {"IA5",  "ISO-2022-JP", "ISO-2022-KR", "EUC-JP", "EUC-KR",
                                     "T.61", "ISO-8859-1",  "JIS X 0201",  "UTF8"};

// Text of less than `mostPieces` pieces: whole sequences, their parts, characters, a random byte.
std::string RandomText(std::mt19937 &random, size_t mostPieces);

#endif
