// SPDX-License-Identifier: Apache-2.0
//
// What is asked of the conversion service, and what becomes of its answers, its storage and escapes.
#include "services/services.h"
#include "tests/scripted/files.h"

#include <gtest/gtest.h>
#include <platform/cvc.h>
#include <platform/er.h>
#include <str/case.h>

#include <algorithm>
#include <string>

namespace
{

// Every request, and the storage of all results.
std::string asked;
char storage[1000];
bool answers = true;

std::string traced;

class ScriptedConversion : public testing::Test
{
  protected:
    ScriptedConversion()
    {
        asked.clear();
        traced.clear();
        er_SetTraceSink([](int, const char *text, int marker) {
            traced += (marker == 1 ? "+" : "-") + std::string(text) + " ";
        });
    }
    ~ScriptedConversion() override
    {
        answers = true;
        er_SetTraceSink(nullptr);
        er_SubSystemLoggingLevel = 0;
        scripted::files.escapeClass = 0;
        er_Clear();
    }
};

} // namespace

// Answers the text with its letters of ASCII in upper case, and no NUL behind it.
extern "C" int cvc_ConvertString(int request, int options, const char *in, int inLength,
                                 const char *from, const char *to, char **result, int *resultLength,
                                 int *, int *, int *)
{
    asked += std::to_string(request) + " " + std::to_string(options) + " " + in + " " +
             std::to_string(inLength) + " " + from + ">" + to + "; ";
    if (!answers)
        return 1;
    const std::string text(in);
    std::fill(std::begin(storage), std::end(storage), '#');
    std::transform(text.begin(), text.end(), storage,
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    *result = storage;
    *resultLength = static_cast<int>(text.size());
    return 0;
}

namespace
{

TEST_F(ScriptedConversion, TheVariantNamesTheForms)
{
    int length = 0;
    for (const int variant : {0, 3, 4, 5, -3})
        EXPECT_EQ(str_ToUpperUni("a", 1, &length, variant), storage);
    EXPECT_EQ(asked, "12 0 a 1 UCS2>UCS2UP; 12 0 a 1 UCS2,7>UCS2UP,7; 12 0 a 1 UCS2,8>UCS2UP,8; "
                     "12 0 a 1 UCS2>UCS2UP; 12 0 a 1 UCS2>UCS2UP; ");
}

TEST_F(ScriptedConversion, TheFirstResultOutlivesTheSecond)
{
    er_SubSystemLoggingLevel = 10;
    EXPECT_EQ(str_strcasecmpUni("abc", "ABC", 4), 0);
    EXPECT_EQ(traced, "+str_strcasecmpUni +str_ToUpperUni -str_ToUpperUni +str_ToUpperUni "
                      "-str_ToUpperUni -str_strcasecmpUni ");
    er_SubSystemLoggingLevel = 9;
    traced.clear();
    EXPECT_LT(str_strcasecmpUni("a", "B", 4), 0);
    EXPECT_GT(str_strcasecmpUni("b", "Ab", 4), 0);
    EXPECT_EQ(traced, "");
    answers = false;
    EXPECT_GT(str_strcasecmpUni("a", "B", 4), 0) << "as they stand";
}

// How often memory is asked for in a comparison of two texts of that length; -1: it escapes.
int RequestsFor(size_t length, int most)
{
    static std::string text; // an escape unwinds nothing
    static sigjmp_buf here;
    text.assign(length, 'x');
    scripted::files.escapeClass = 5;
    scripted::files.callsLeft = most;
    sigjmp_buf *const outer = er_SetCurrEnv(&here);
    const bool escaped = sigsetjmp(here, 0) != 0;
    if (!escaped) {
        EXPECT_EQ(str_strcasecmpUni(text.c_str(), text.c_str(), 4), 0);
    }
    er_SetCurrEnv(outer);
    return escaped ? -1 : most - scripted::files.callsLeft;
}

TEST_F(ScriptedConversion, TheCopyGrowsByMoreThanIsNeeded)
{
    EXPECT_EQ(RequestsFor(400, 9), 1);
    EXPECT_EQ(RequestsFor(449, 9), 0);
    EXPECT_EQ(RequestsFor(450, 0), -1) << "what is as long as the buffer does not fit";
    EXPECT_EQ(RequestsFor(400, 0), 0) << "the old buffer is still there";
    EXPECT_EQ(RequestsFor(450, 9), 1);
    EXPECT_EQ(RequestsFor(499, 9), 0);
}

} // namespace
