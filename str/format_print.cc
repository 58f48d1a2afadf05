// SPDX-License-Identifier: Apache-2.0
//
// The print functions: scan, fetch, build, deliver.  Where every byte is a character, the C library
// prints.
#include <str/format.h>

#include "base/blocks.h"
#include "str/core/build.h"
#include "str/core/frame.h"
#include "str/core/segments.h"

#include <platform/mdc.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>

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

// Fetches the argument of that number.
void Fetch(Arguments *arguments, int k, int type, va_list *list)
{
    switch (type) {
    case STR_ARG_SHORT:
        arguments->shorts[k] = static_cast<short>(va_arg(*list, int));
        break;
    case STR_ARG_INT:
        arguments->ints[k] = va_arg(*list, int);
        break;
    case STR_ARG_LONG:
        arguments->longs[k] = va_arg(*list, long);
        break;
    case STR_ARG_FLOAT:
        arguments->floats[k] = static_cast<float>(va_arg(*list, double));
        break;
    case STR_ARG_DOUBLE:
        arguments->doubles[k] = va_arg(*list, double);
        break;
    case STR_ARG_LONG_DOUBLE:
        arguments->longDoubles[k] = va_arg(*list, long double);
        break;
    case STR_ARG_POINTER:
    case STR_ARG_STRING:
        arguments->pointers[k] = va_arg(*list, void *);
        break;
    default:
        break;
    }
}

struct Built {
    const char *text; // null when nothing was built
    unsigned int length;
    unsigned int omission = 0; // as in Build
    Bytes omitted = {nullptr, 0};
};

// As the table of the format says.
Built BuildByTable(Arguments *arguments, const CSDescriptor *cs, const char *format, va_list *list)
{
    Scan(arguments, cs, format);
    for (int k = 1; k <= arguments->maxParam; ++k)
        Fetch(arguments, k, arguments->table[k].type, list);
    Built built;
    built.text =
        str_buildpfstring(cs, &built.length, format, arguments->table, arguments->maxParam,
                          arguments->shorts, arguments->ints, arguments->longs, arguments->floats,
                          arguments->doubles, arguments->longDoubles, arguments->pointers);
    return built;
}

// ---- Without a table -----------------------------------------------------------------------
//
// A format without positions takes its arguments in the order of its directives.  So each is
// fetched and printed where its directive is found.

struct Print {
    Build build;
    Arguments *arguments;
    va_list *list;
    int number;       // of the last directive
    const char *text; // of the format that is not yet printed
    bool isOver;      // an escape has ended the text; only errors are looked for
};

void PrintDirective(Print *print, const char *at, Directive *directive)
{
    const bool isText = directive->type == STR_ARG_NONE;
    const bool width = !isText && directive->widthParam == kNextArgument;
    const bool precision = !isText && directive->precParam == kNextArgument;
    print->number = std::min(print->number + 1 + width + precision, STR_PARAMETERS);
    if (isText)
        return;
    if (print->number == STR_PARAMETERS)
        ReportDirective();
    if (print->number == STR_PARAMETERS || print->isOver)
        return;
    if (width)
        SetWidth(directive, va_arg(*print->list, int));
    if (precision)
        directive->precision = va_arg(*print->list, int);
    Fetch(print->arguments, print->number, directive->type, print->list);
    print->isOver =
        !AppendText(&print->build, {print->text, static_cast<size_t>(at - print->text)}) ||
        !AppendArgument(&print->build, print->number, directive->type, *directive);
    print->text = directive->end;
}

void PrintSegment(Print *print, const char *at, const char *end)
{
    while ((at = blocks::Find(at, end, '%')) != end) {
        Directive directive = ReadDirective(at, end);
        if (directive.end == nullptr) {
            ReportDirective();
            return;
        }
        PrintDirective(print, at, &directive);
        at = directive.end;
    }
}

void PrintSegments(Print *print, CSWalk *walk, const char *end)
{
    CSSegment segments[16];
    int count = 1;
    while (walk->at < end && count != 0) {
        count = ccs_NextSegments(walk, segments, std::size(segments));
        for (int i = 0; i < count; ++i)
            if (HoldsDirectives(segments[i].kind))
                PrintSegment(print, segments[i].text, segments[i].text + segments[i].length);
    }
}

// Whether the format may have positions or other numbers of arguments.
bool HasNumbers(const char *format, const char *end)
{
    for (const char *at = format; (at = blocks::Find(at, end, '$')) != end; ++at)
        if (at - format >= 2 && (at[-2] == '%' || at[-2] == '*'))
            return true;
    return false;
}

template <char... bytes>
blocks::Block AnyOf(blocks::Block block)
{
    return (blocks::Equal(block, bytes) | ...);
}

// Whether the format has no numbers, no bytes of 0x80 and above, and none that switches sets.  With
// `invariant`, also none of the bytes that ISO 646 leaves to national variants.
bool IsSimple(const char *at, const char *end, bool invariant)
{
    for (; at < end; at += blocks::kSize) {
        const blocks::Block block = blocks::Load(at, static_cast<size_t>(end - at));
        const blocks::Block others = AnyOf<'$', '\x1B', '\x0E', '\x0F'>(block);
        if (blocks::Mask(block | others) != 0)
            return false;
        if (invariant &&
            blocks::Mask(AnyOf<'#', '@', '[', '\\', ']', '^', '`', '{', '|', '}', '~'>(block)) != 0)
            return false;
    }
    return true;
}

// Whether the format has no numbers, and is one segment that holds ASCII.
bool IsAscii(const CSDescriptor *cs, SetFlags set, const char *format, const char *end)
{
    if (HoldsAscii(set))
        return IsSimple(format, end, false);
    CSWalk walk; // says that the service is one that begins in ASCII
    return SwitchesSets(set) && IsSimple(format, end, true) && BeginOwnWalk(&walk, format, cs);
}

Built BuildText(const CSDescriptor *cs, SetFlags set, const char *format, va_list *list,
                bool isCopied = false)
{
    Arguments all;
    const size_t size = std::strlen(format);
    const bool isSimple = IsAscii(cs, set, format, format + size);
    CSWalk walk;
    if (!isSimple && (HasNumbers(format, format + size) || !BeginOwnWalk(&walk, format, cs)))
        return BuildByTable(&all, cs, format, list);
    const Values values = {all.shorts,  all.ints,        all.longs,   all.floats,
                           all.doubles, all.longDoubles, all.pointers};
    Print print = {Build(cs, set, &values, isCopied), &all, list, 0, format, false};
    print.isOver = !BeginText(&print.build, size);
    if (isSimple)
        PrintSegment(&print, format, format + size);
    else
        PrintSegments(&print, &walk, format + size);
    if (!print.isOver)
        AppendText(&print.build, {print.text, static_cast<size_t>(format + size - print.text)});
    const Build &build = print.build;
    return {EndText(&print.build), build.length, build.omission, build.omitted};
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
    const size_t end = built.omission + built.omitted.size;
    if (built.omitted.size != 0) { // copied first, since it may be in `dest`
        std::memmove(dest + built.omission, built.omitted.at, built.omitted.size);
        std::memcpy(dest, built.text, built.omission);
    }
    std::memcpy(dest + end, built.text + end, built.length + 1 - end);
    return static_cast<int>(built.length);
}

} // namespace

#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the caller vouches for the format

int str_simplefprintf(const CSDescriptor *cs, FILE *stream, const char *format, ...)
{
    frame::TraceEntry();
    const SetFlags set = cs;
    va_list list;
    va_start(list, format);
    const int result = HasByteCharacters(set) ? std::vfprintf(stream, format, list)
                                              : Write(BuildText(cs, set, format, &list), stream);
    va_end(list);
    frame::TraceExit();
    return result;
}

int str_simpleprintf(const CSDescriptor *cs, const char *format, ...)
{
    frame::TraceEntry();
    va_list list;
    va_start(list, format);
    const int result = Write(BuildText(cs, cs, format, &list), stdout);
    va_end(list);
    frame::TraceExit();
    return result;
}

int str_simplesprintf(const CSDescriptor *cs, char *dest, const char *format, ...)
{
    frame::TraceEntry();
    const SetFlags set = cs;
    va_list list;
    va_start(list, format);
    const int result = HasByteCharacters(set) ? std::vsprintf(dest, format, list)
                                              : Copy(BuildText(cs, set, format, &list, true), dest);
    va_end(list);
    frame::TraceExit();
    return result;
}
