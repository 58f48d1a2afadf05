// SPDX-License-Identifier: Apache-2.0
#include "str/core/directive.h"

#include <climits>
#include <cstring>

namespace libstr
{

namespace
{

// An argument number is one character and a '$'.  But a conversion ends the directive, and a '$'
// after it is text.
bool IsNumberNamed(const char *at, const char *end)
{
    return end - at > 1 && at[1] == '$' && *at != '\0' && TypeOf(*at, '\0') == STR_ARG_UNUSED;
}

int ReadNumber(const char *at, Directive *directive)
{
    const int number = *at - '0';
    if (number < 1)
        directive->misnumbered = true;
    return number;
}

// 0 for a byte that is not a flag.
unsigned int FlagOf(char byte)
{
    const char *const flag = std::strchr(kFlags, byte);
    return flag == nullptr || *flag == '\0' ? 0 : 1U << (flag - kFlags);
}

void AddDigit(int *number, char digit)
{
    const int value = digit - '0';
    *number = *number > (INT_MAX - value) / 10 ? INT_MAX : *number * 10 + value;
}

} // namespace

Directive ReadLongDirective(const char *start, const char *end)
{
    Directive directive;
    if (IsNumberNamed(start + 1, end))
        directive.position = ReadNumber(start + 1, &directive);

    const char *starDollar = nullptr; // the '$' of the last '*'
    char size = '\0';
    bool dot = false;
    for (const char *at = start + 1; at < end; ++at) {
        directive.type = TypeOf(*at, size);
        if (directive.type != STR_ARG_UNUSED) {
            directive.conversion = *at;
            directive.end = at + 1;
            break;
        }
        if (*at == 'h' || *at == 'l' || *at == 'L') {
            directive.halved = *at == 'h' && size == 'h';
            size = *at;
        } else if (*at == '.') {
            dot = true;
            directive.precision = 0;
        } else if (*at == '*') {
            const bool named = IsNumberNamed(at + 1, end);
            starDollar = named ? at + 2 : nullptr;
            (dot ? directive.precParam : directive.widthParam) =
                named ? ReadNumber(at + 1, &directive) : kNextArgument;
        } else if (*at == '$' && at != starDollar) {
            directive.flags = 0; // all before it is taken for a position
            directive.width = 0;
            directive.precision = -1;
        } else if (*at >= '0' && *at <= '9' && (dot || directive.width > 0 || *at != '0')) {
            AddDigit(dot ? &directive.precision : &directive.width, *at);
        } else {
            directive.flags |= FlagOf(*at);
        }
    }
    return directive;
}

} // namespace libstr
