// SPDX-License-Identifier: Apache-2.0
//
// Display width over a service that answers by script: every kind of segment, every length that a
// service may answer, and what it is asked.
#include "tests/scripted/ccs.h"
#include "tests/support/guarded.h"

#include <gtest/gtest.h>
#include <str/str.h>

#include <random>

namespace
{

using scripted::script;
using scripted::Script;

constexpr uint16_t kByteSet = 1, kPairSet = 2, kUnitSet = 3, kTripleSet = 4;

// Sets of one, two and three bytes and of base units, in a code of number 9.
Script Sets()
{
    Script sets;
    sets.flags = {{kUnitSet, CS_FLAG_T61}};
    sets.bytes = {{kByteSet, 1}, {kPairSet, 2}, {kTripleSet, 3}};
    return sets;
}

unsigned int WidthOf(std::string_view bytes, CSDescriptor cs = {9, 2})
{
    const Guarded text(bytes);
    return str_dispstrlen(text.c_str(), &cs);
}

TEST(ScriptedWidth, GoesByTheKindsOfSegments)
{
    script = Sets();
    script.segments = {
        {CS_SEG_IGNORE, 3}, {kPairSet, 4}, {CS_SEG_NONE, 2}, {CS_SEG_RAW, 4}, {kByteSet, 2}};
    EXPECT_EQ(WidthOf("\x1B$Babcd??\n\x7F\x1B.xy"), 2U + 4U + 2U);
    script.segments = {};
    EXPECT_EQ(WidthOf("unseen"), 0U);
}

TEST(ScriptedWidth, TakesTheQuickPathsByNameAndFlags)
{
    script = Sets();
    script.segments = {{CS_SEG_RAW, 1}};
    script.flags[9] = CS_FLAG_BYTE;
    EXPECT_EQ(WidthOf("a\nb", {9, 0}), 3U) << "plain bytes";
    EXPECT_EQ(WidthOf("a\nb", {9, 1}), 1U) << "escapes are possible: walked";
    script.flags[9] = CS_FLAG_BYTE | CS_FLAG_T61;
    EXPECT_EQ(WidthOf("a\nb", {9, 0}), 1U) << "base units: walked";
    script.name = "UTF8";
    EXPECT_EQ(WidthOf("a\xC3\xA9", {9, 1}), 2U) << "UTF-8 goes by its name";
    script.name = "UTF8x";
    EXPECT_EQ(WidthOf("a\xC3\xA9", {9, 1}), 1U);
}

TEST(ScriptedWidth, AUnitWithoutLengthEndsItsSegmentAlone)
{
    for (const int length : {0, -1, -32768}) {
        script = Sets();
        script.segments = {{kByteSet, 5}, {kByteSet, 2}};
        script.control = [length](auto, auto) { return length; };
        EXPECT_EQ(WidthOf("ab\ncdef"), 2U + 2U) << length;
        script.segments = {{kUnitSet, 3}};
        script.baseUnit = [length](auto, auto) { return length; };
        EXPECT_EQ(WidthOf("xyz"), 1U) << length;
        script.bytes[kPairSet] = static_cast<int16_t>(length);
        script.segments = {{kPairSet, 4}};
        EXPECT_EQ(WidthOf("abcd"), 1U) << length;
    }
}

TEST(ScriptedWidth, TellsTheServiceTheWholeSegment)
{
    script = Sets();
    script.segments = {{kUnitSet, 7}};
    script.control = [](auto, auto) { return 3; };
    script.baseUnit = [](const char *at, auto) { return *at == '^' ? 2 : 1; };
    EXPECT_EQ(WidthOf("a\n[1^ez"), 3U);
    EXPECT_EQ(script.asked,
              "unit of 3/2 in 7\ncontrol of 3/2 in 7\nunit of 3/2 in 7\nunit of 3/2 in 7\n");
}

// The rule once more, a unit at a time, against the count in blocks, at every length and place.
int SlowDispLen(std::string_view seg, uint16_t set)
{
    int columns = 0;
    for (size_t at = 0; at < seg.size();) {
        const auto byte = static_cast<unsigned char>(seg[at]);
        const bool control = (byte & 0x7F) < 0x20, plain = byte == 0x20 || byte == 0x7F;
        columns += !control && byte != 0x7F;
        at += control             ? static_cast<size_t>(script.control(&seg[at], 0))
              : plain             ? 1
              : set == kUnitSet   ? static_cast<size_t>(script.baseUnit(&seg[at], 0))
              : set == kTripleSet ? 3
              : set == kPairSet   ? 2
                                  : 1;
    }
    return columns;
}

TEST(ScriptedWidth, CountsInBlocksAsOneByOne)
{
    script = Sets();
    script.control = [](const char *at, auto) { return *at == '\x1B' ? 3 : 1; };
    script.baseUnit = [](const char *at, auto) { return *at < 0 ? 2 : 1; };
    std::mt19937 random(6);
    const std::string_view bytes =
        "aaaaaaaabcdZ09!~\x21\xA1\xFE\xC2\xE9 \x7F\n\x1B\x9B\x80\xFF\xA0";
    for (int round = 0; round < 60000; ++round) {
        const bool mostlyPlain = random() % 2 == 0;
        std::string text;
        for (auto i = random() % 70; i > 0; --i)
            text += bytes[random() % (mostlyPlain && random() % 8 != 0 ? 16 : bytes.size())];
        const auto set = static_cast<uint16_t>(1 + random() % 4);
        const bool ascii = random() % 2 == 0;
        script.flags[kUnitSet] = CS_FLAG_T61 | (ascii ? CS_FLAG_ASCII_SUPERSET : 0U);
        const CSDescriptor segCs = {set, 2};
        const Guarded guarded(text);
        ASSERT_EQ(str_GetDispLen(guarded.c_str(), static_cast<unsigned int>(text.size()), &segCs),
                  SlowDispLen(text, set))
            << set << " " << testing::PrintToString(text);
    }
}

} // namespace
