// SPDX-License-Identifier: Apache-2.0
//
// The text of a format and its arguments, as it is built in the print buffer.
//
// What appends returns false when an escape of the library has ended the work.  The text is then
// what has been appended before.
#ifndef STR_CORE_BUILD_H
#define STR_CORE_BUILD_H

#include "str/core/buffer.h"
#include "str/core/directive.h"
#include "str/core/sets.h"

#include <climits>
#include <cstddef>
#include <cstring>

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

struct Bytes {
    const char *at;
    size_t size;
};

struct Build {
    const CSDescriptor *cs;
    SetFlags set;
    const Values *values;
    bool isCopied; // the text will be copied from the buffer, so a long string need not be in it

    // See BeginText.
    ThreadBuffer<char> *buffer;
    unsigned int length;   // of the text so far; less than the buffer's capacity
    unsigned int omission; // where the buffer has a gap
    Bytes omitted;         // for this string of the caller's; size 0 for none

    Build(const CSDescriptor *ofFormat, SetFlags flags, const Values *all, bool copied)
        : cs(ofFormat), set(flags), values(all), isCopied(copied)
    {
    }
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
bool BeginText(Build *build, size_t formatSize);

inline bool HasRoom(const Build &build, size_t bytes)
{
    return build.buffer->capacity - build.length > bytes;
}

// Enlarges the buffer by so many bytes at least.
bool Enlarge(const Build &build, size_t bytes);

// Makes room for so many more bytes and the NUL.
inline bool MakeRoom(const Build &build, size_t bytes)
{
    return HasRoom(build, bytes) || Enlarge(build, bytes);
}

// Writes where there is room.
inline void Put(Build *build, Bytes bytes)
{
    std::memcpy(build->buffer->at + build->length, bytes.at, bytes.size);
    build->length += static_cast<unsigned int>(bytes.size);
}

inline bool AppendText(Build *build, Bytes text)
{
    if (text.size == 0)
        return true;
    if (!MakeRoom(*build, text.size))
        return false;
    Put(build, text);
    return true;
}

// Appends the argument of that number and type, which suits the directive.  Width and precision
// that are arguments have been set.
bool AppendArgument(Build *build, int number, int type, const Directive &directive);

// The text with its NUL, and without what is omitted; null when it is empty.
char *EndText(Build *build);

} // namespace libstr

#endif
