// SPDX-License-Identifier: Apache-2.0
//
// The matcher of single-set text, apart from the other operating-system wrappers: a host replaces
// it alone.
#include <platform/os.h>

#include "base/wildcard.h"

using namespace libstr;

extern "C" {

int os_USPatternMatch(const char *string, const char *pattern)
{
    return wildcard::Matches(string, pattern) ? 1 : 0;
}

} // extern "C"
