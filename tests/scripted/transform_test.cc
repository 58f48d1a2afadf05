// SPDX-License-Identifier: Apache-2.0
//
// Transformation of UTF-8 input while memory runs out.
#include "tests/scripted/files.h"
#include "tests/support/escape.h"

#include <gtest/gtest.h>
#include <str/str.h>

namespace
{

// The result, "escaped" when an escape arrived.
std::string Transformed(const std::string &input)
{
    unsigned int length;
    const char *result = nullptr;
    const auto transform = [&] {
        result = str_TransformUTF8InputStr(input.c_str(), -1, "", nullptr, "", '\\', 0, &length);
    };
    return Escaped(transform) != 0 ? "escaped" : result;
}

// The first test of the process that transforms: the buffer is not there yet.
TEST(ScriptedTransform, MemoryThatRunsOutLeavesTheBufferUsable)
{
    const std::string longer(1000, 'x');
    scripted::files.escapeClass = 3;
    scripted::files.callsLeft = 0;
    EXPECT_EQ(Transformed("abc"), "escaped");
    scripted::files.callsLeft = 1; // the first allocation succeeds, the growth does not
    EXPECT_EQ(Transformed("abc"), "abc");
    EXPECT_EQ(Transformed(longer), "escaped");
    scripted::files.callsLeft = 1;
    EXPECT_EQ(Transformed(longer), longer);
    scripted::files.callsLeft = 0;
    for (const std::string &text : {std::string("a"), longer})
        EXPECT_EQ(Transformed(text), text) << "no allocation in steady state";
    scripted::files.escapeClass = 0;
}

} // namespace
