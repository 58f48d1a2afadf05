// SPDX-License-Identifier: Apache-2.0
//
// One directive of a format.  The scanner takes the arguments from it, the builder what to print.
// Both read it with this code, so they agree.
#ifndef STR_CORE_DIRECTIVE_H
#define STR_CORE_DIRECTIVE_H

#include "str/core/segments.h"
#include "str/core/sets.h"

#include <str/format.h>

namespace libstr
{

// The number of a width's or precision's argument may also be:
inline constexpr int kNoArgument = -1;  // it is not an argument
inline constexpr int kNextArgument = 0; // it is the next argument

inline constexpr char kFlags[] = "-+ #0'";
inline constexpr unsigned int kLeftFlag = 1; // the bit of the first; the others follow

struct Directive {
    const char *end = nullptr;    // after the conversion; null when there is no conversion
    int type = STR_ARG_UNUSED;    // STR_ARG_...
    int position = 0;             // 0 for none
    int widthParam = kNoArgument; // or kNextArgument, or a number
    int precParam = kNoArgument;  // likewise
    int width = 0;                // as written, at most INT_MAX; 0 for none
    int precision = -1;           // as written, at most INT_MAX; -1 for none
    unsigned int flags = 0;       // a bit for each of kFlags
    char conversion = '\0';
    bool halved = false;      // hh
    bool misnumbered = false; // it has an argument number below 1
};

// The type of a conversion's argument; STR_ARG_UNUSED for a byte that is not a conversion.
inline int TypeOf(char conversion, char size)
{
    switch (conversion) {
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        return size == 'h' ? STR_ARG_SHORT : size == 'l' ? STR_ARG_LONG : STR_ARG_INT;
    case 'c':
        return STR_ARG_INT;
    case 'e':
    case 'E':
    case 'f':
    case 'g':
    case 'G':
        return size == 'L' ? STR_ARG_LONG_DOUBLE : STR_ARG_DOUBLE;
    case 'n':
    case 'P':
        return STR_ARG_POINTER;
    case 's':
        return STR_ARG_STRING;
    case '%':
        return STR_ARG_NONE;
    default:
        return STR_ARG_UNUSED;
    }
}

// As ReadDirective, for a directive that has more than a conversion.
Directive ReadLongDirective(const char *start, const char *end);

// Reads the directive whose '%' is at `start`.  No byte at `end` or after it is read.
inline Directive ReadDirective(const char *start, const char *end)
{
    Directive directive;
    if (end - start >= 2)
        directive.type = TypeOf(start[1], '\0');
    if (directive.type == STR_ARG_UNUSED)
        return ReadLongDirective(start, end);
    directive.conversion = start[1];
    directive.end = start + 2;
    return directive;
}

// Whether a segment of that kind may have directives.
inline bool HoldsDirectives(uint16_t kind) { return IsText(kind) && HoldsAscii(FlagsOf(kind)); }

// The numbers of a directive's arguments; 0 for a width or precision that is not an argument.
struct ArgumentNumbers {
    int width;
    int precision;
    int value;
};

// Width and precision, where they are the next arguments, come before the value in this order.
inline ArgumentNumbers NumbersBefore(int value, const Directive &directive)
{
    ArgumentNumbers numbers = {directive.widthParam, directive.precParam, value};
    int next = value;
    if (directive.precParam == kNextArgument)
        numbers.precision = --next;
    if (directive.widthParam == kNextArgument)
        numbers.width = --next;
    if (directive.precParam == kNoArgument)
        numbers.precision = 0;
    if (directive.widthParam == kNoArgument)
        numbers.width = 0;
    return numbers;
}

// Says that a directive cannot be taken, in PrintfError and for the thread.
void ReportDirective();

} // namespace libstr

#endif
