// SPDX-License-Identifier: Apache-2.0
//
// Matching of UTF-8 text.  Its characters never begin inside one another, so bytes are compared.
#include <str/match.h>

#include "base/wildcard.h"
#include "str/core/frame.h"

#include <glib.h>

using namespace libstr;

namespace
{

using wildcard::kUs;

bool IsLoneUs(const char *pattern) { return pattern[0] == kUs && pattern[1] == '\0'; }

bool IsValid(const char *text) { return g_utf8_validate(text, -1, nullptr) != 0; }

// Whether the texts are well-formed is asked last, since what does not match needs no answer to it.
bool Matches(const char *string, const char *pattern)
{
    return IsLoneUs(pattern) ||
           (wildcard::Matches(string, pattern) && IsValid(string) && IsValid(pattern));
}

} // namespace

int str_utf8USPatternMatch(const char *string, const char *pattern)
{
    frame::TraceEntry("str_utf8USPatternMatch");
    const bool matches = Matches(string, pattern);
    frame::TraceExit("str_utf8USPatternMatch");
    return matches ? 1 : 0;
}
