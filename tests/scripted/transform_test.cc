// SPDX-License-Identifier: Apache-2.0
//
// Transformation of UTF-8 input while memory runs out.
#include "tests/scripted/files.h"

#include <gtest/gtest.h>
#include <platform/er.h>
#include <str/str.h>

namespace
{

// The result, null for none; "escaped" when an escape arrived.  Escapes are jumps, so nothing here
// needs unwinding.
const char *TryTransform(const char *input)
{
    static const char *result;
    static unsigned int length;
    static sigjmp_buf here;
    sigjmp_buf *const outer = er_SetCurrEnv(&here);
    if (sigsetjmp(here, 0) == 0)
        result = str_TransformUTF8InputStr(input, -1, "", nullptr, "", '\\', 0, &length);
    else
        result = "escaped";
    er_SetCurrEnv(outer);
    return result;
}

// The first test of the process that transforms: the buffer is not there yet.
TEST(ScriptedTransform, MemoryThatRunsOutLeavesTheBufferUsable)
{
    const std::string longer(1000, 'x');
    scripted::files.escapeClass = 3;
    scripted::files.callsLeft = 0;
    EXPECT_STREQ(TryTransform("abc"), "escaped");
    EXPECT_NE(er_GetLive(), 0) << "it goes on to the caller";
    scripted::files.callsLeft = 1; // the first allocation succeeds, the growth does not
    EXPECT_STREQ(TryTransform("abc"), "abc");
    EXPECT_STREQ(TryTransform(longer.c_str()), "escaped");
    scripted::files.callsLeft = 1;
    EXPECT_STREQ(TryTransform(longer.c_str()), longer.c_str());
    scripted::files.callsLeft = 0;
    for (const std::string &text : {std::string("a"), longer, std::string("\\65")})
        EXPECT_STRNE(TryTransform(text.c_str()), "escaped") << "no allocation in steady state";
    scripted::files.escapeClass = 0;
    er_Clear();
}

} // namespace
