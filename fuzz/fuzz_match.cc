// SPDX-License-Identifier: Apache-2.0
//
// Patterns: they match as obvious matchers say.
#include "fuzz/text.h"
#include "tests/support/meaning.h"

static bool Matches(std::string_view text, std::string_view pattern)
{
    size_t us = pattern.find('\x1F'), at = 0;
    if (us == std::string_view::npos || !text.starts_with(pattern.substr(0, us)))
        return text == pattern;
    for (; us != std::string_view::npos; us = pattern.find('\x1F')) {
        if (at = text.find(pattern.substr(0, us)); at == std::string_view::npos)
            return false;
        text.remove_prefix(at + us);
        pattern.remove_prefix(us + 1);
    }
    return text.ends_with(pattern);
}

std::string Try(const Input &input, const char *text, const char *pattern)
{
    const CSDescriptor *const cs = &input.cs;
    const bool matches = Matches(text, pattern), lone = input.second == "\x1F",
               valid = input.wellFormed && g_utf8_validate(pattern, -1, nullptr);
    Demand(str_utf8USPatternMatch(text, pattern) == (lone || (valid && matches)));
    Demand(os_USPatternMatch(text, pattern) == matches);
    Demand(str_USPatternMatch(text, text, cs) == 1);
    const int match = str_USPatternMatch(text, pattern, cs);
    Demand((match != 0) == Meaning(text, *cs).Matches(Meaning(pattern, *cs)));
    return std::to_string(match);
}
