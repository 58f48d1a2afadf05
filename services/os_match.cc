// SPDX-License-Identifier: Apache-2.0
//
// The matcher of single-set text, in a source of its own: a host may replace only this function.
#include <platform/os.h>

#include "base/wildcard.h"

using namespace libstr;

extern "C" {

int os_USPatternMatch(const char *string, const char *pattern)
{
    return wildcard::Matches(string, pattern) ? 1 : 0;
}

} // extern "C"
