// SPDX-License-Identifier: Apache-2.0
//
// Patterns: they match as obvious matchers say.
#include "fuzz/text.h"
#include "tests/support/meaning.h"

std::string Try(const Input &input, const char *text, const char *pattern)
{
    const CSDescriptor *const cs = &input.cs;
    const CSDescriptor one = {100, 0}; // in which a text is one segment
    const bool matches = *text == '\0' ? std::strspn(pattern, "\x1F") == input.second.size()
                                       : Meaning(text, one).Matches(Meaning(pattern, one)),
               lone = input.second == "\x1F",
               valid = input.wellFormed && g_utf8_validate(pattern, -1, nullptr);
    Demand(str_utf8USPatternMatch(text, pattern) == (lone || (valid && matches)));
    Demand(os_USPatternMatch(text, pattern) == matches);
    Demand(str_USPatternMatch(text, text, cs) == 1);
    const int match = str_USPatternMatch(text, pattern, cs);
    Demand((match != 0) == Meaning(text, *cs).Matches(Meaning(pattern, *cs)));
    return std::to_string(match);
}
