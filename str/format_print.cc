// SPDX-License-Identifier: Apache-2.0
//
// The print functions: scan, fetch, build, deliver.  Where every byte is a character, the C library
// prints.
#include <str/format.h>

#include "str/core/frame.h"
#include "str/core/sets.h"

#include <platform/mdc.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

using namespace libstr;

namespace
{

struct Arguments {
    ParameterRecord table[STR_PARAMETERS];
    int maxParam;
    short shorts[STR_PARAMETERS];
    int ints[STR_PARAMETERS];
    long longs[STR_PARAMETERS];
    float floats[STR_PARAMETERS];
    double doubles[STR_PARAMETERS];
    long double longDoubles[STR_PARAMETERS];
    void *pointers[STR_PARAMETERS];
};

void Scan(Arguments *arguments, const CSDescriptor *cs, const char *format)
{
    int count;
    const CSSegment *segments = ccs_GetAllStrs(cs, format, -1, &count);
    arguments->maxParam = str_GetParams(cs, format, segments, count, arguments->table);
}

void Fetch(Arguments *arguments, va_list list)
{
    for (int k = 1; k <= arguments->maxParam; ++k)
        switch (arguments->table[k].type) {
        case STR_ARG_SHORT:
            arguments->shorts[k] = static_cast<short>(va_arg(list, int));
            break;
        case STR_ARG_INT:
            arguments->ints[k] = va_arg(list, int);
            break;
        case STR_ARG_LONG:
            arguments->longs[k] = va_arg(list, long);
            break;
        case STR_ARG_FLOAT:
            arguments->floats[k] = static_cast<float>(va_arg(list, double));
            break;
        case STR_ARG_DOUBLE:
            arguments->doubles[k] = va_arg(list, double);
            break;
        case STR_ARG_LONG_DOUBLE:
            arguments->longDoubles[k] = va_arg(list, long double);
            break;
        case STR_ARG_POINTER:
        case STR_ARG_STRING:
            arguments->pointers[k] = va_arg(list, void *);
            break;
        default:
            break;
        }
}

struct Built {
    const char *text; // null when nothing was built
    unsigned int length;
};

Built BuildText(const CSDescriptor *cs, const char *format, va_list list)
{
    Arguments arguments;
    Scan(&arguments, cs, format);
    Fetch(&arguments, list);
    Built built;
    built.text =
        str_buildpfstring(cs, &built.length, format, arguments.table, arguments.maxParam,
                          arguments.shorts, arguments.ints, arguments.longs, arguments.floats,
                          arguments.doubles, arguments.longDoubles, arguments.pointers);
    return built;
}

int Write(const Built &built, FILE *stream)
{
    if (built.text == nullptr || mdc_fwrite(built.text, 1, built.length, stream) != built.length)
        return -1;
    return static_cast<int>(built.length);
}

int Copy(const Built &built, char *dest)
{
    if (built.text == nullptr)
        return -1;
    std::memcpy(dest, built.text, built.length + 1);
    return static_cast<int>(built.length);
}

} // namespace

#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the caller vouches for the format

int str_simplefprintf(const CSDescriptor *cs, FILE *stream, const char *format, ...)
{
    frame::TraceEntry();
    va_list list;
    va_start(list, format);
    const int result = HasByteCharacters(cs) ? std::vfprintf(stream, format, list)
                                             : Write(BuildText(cs, format, list), stream);
    va_end(list);
    frame::TraceExit();
    return result;
}

int str_simpleprintf(const CSDescriptor *cs, const char *format, ...)
{
    frame::TraceEntry();
    va_list list;
    va_start(list, format);
    const int result = Write(BuildText(cs, format, list), stdout);
    va_end(list);
    frame::TraceExit();
    return result;
}

int str_simplesprintf(const CSDescriptor *cs, char *dest, const char *format, ...)
{
    frame::TraceEntry();
    va_list list;
    va_start(list, format);
    const int result = HasByteCharacters(cs) ? std::vsprintf(dest, format, list)
                                             : Copy(BuildText(cs, format, list), dest);
    va_end(list);
    frame::TraceExit();
    return result;
}
