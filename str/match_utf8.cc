// SPDX-License-Identifier: Apache-2.0
//
// Matching of UTF-8 text, by bytes: no character begins inside another.
#include <str/match.h>

#include "base/utf8_blocks.h"
#include "base/wildcard.h"
#include "str/core/frame.h"

#include <cstring>

using namespace libstr;

namespace
{

using wildcard::kUs;

bool IsLoneUs(const char *pattern) { return pattern[0] == kUs && pattern[1] == '\0'; }

bool IsValid(const char *text)
{
    return utf8::CountValid(text, std::strlen(text)) != utf8::kNotUtf8;
}

// Validates last: most texts do not match.
bool Matches(const char *string, const char *pattern)
{
    return IsLoneUs(pattern) ||
           (wildcard::Matches(string, pattern) && IsValid(string) && IsValid(pattern));
}

} // namespace

int str_utf8USPatternMatch(const char *string, const char *pattern)
{
    frame::TraceEntry();
    const bool matches = Matches(string, pattern);
    frame::TraceExit();
    return matches ? 1 : 0;
}
