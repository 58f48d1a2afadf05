// SPDX-License-Identifier: Apache-2.0
//
// The text of a format and its arguments, as it is built in the print buffer.
//
// What appends returns false when an escape of the library has ended the work.  The text is then
// what has been appended before.
#ifndef STR_CORE_BUILD_H
#define STR_CORE_BUILD_H

#include "str/core/directive.h"
#include "str/core/sets.h"

#include <climits>
#include <cstddef>

namespace libstr
{

// Values of arguments, each at the index of its number.
struct Values {
    const short *shorts;
    const int *ints;
    const long *longs;
    const float *floats;
    const double *doubles;
    const long double *longDoubles;
    void *const *pointers;
};

struct Build {
    const CSDescriptor *cs;
    SetFlags set;
    Values values;
    unsigned int length; // of the text so far; less than the buffer's capacity
};

struct Bytes {
    const char *at;
    size_t size;
};

// Sets a width that is an argument.
inline void SetWidth(Directive *directive, int width)
{
    directive->width = width;
    if (width < 0) {
        directive->flags |= kLeftFlag;
        directive->width = width == INT_MIN ? INT_MAX : -width;
    }
}

// Begins a text, with room for a format of so many bytes.
bool BeginText(size_t formatSize);

bool AppendText(Build *build, Bytes text);

// Appends the argument of that number and type, which suits the directive.  Width and precision
// that are arguments have been set.
bool AppendArgument(Build *build, int number, int type, const Directive &directive);

// The text with its NUL; null when it is empty.
char *EndText(Build *build);

} // namespace libstr

#endif
