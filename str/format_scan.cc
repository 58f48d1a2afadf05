// SPDX-License-Identifier: Apache-2.0
//
// The scanner: which arguments a format takes, known before any of them is fetched.
#include <str/format.h>

#include "str/core/directive.h"
#include "str/core/segments.h"

#include <algorithm>
#include <cstring>

using namespace libstr;

char PrintfError;

namespace
{

constexpr int kAlwaysWritten = 9; // all records up to that of this number, used or not

struct Scan {
    ParameterRecord *table;
    int current; // the number of the last directive
    int highest; // that has been recorded
    int written; // all records up to this one are of this scan
};

bool IsInTable(int number) { return number >= 1 && number < STR_PARAMETERS; }

void ClearUpTo(Scan *scan, int number)
{
    while (scan->written < number)
        scan->table[++scan->written] = {};
}

// The record of an argument's number, as it stands so far.
ParameterRecord *RecordOf(Scan *scan, int number)
{
    ClearUpTo(scan, number);
    scan->highest = std::max(scan->highest, number);
    return scan->table + number;
}

// A directive that has this number for its value still stands there.
void RecordMeasure(Scan *scan, int number)
{
    if (number == 0)
        return;
    ParameterRecord *const record = RecordOf(scan, number);
    record->type = STR_ARG_INT;
    record->isConversion = 0;
}

// Numbers the arguments of the directive.
ArgumentNumbers Number(Scan *scan, const Directive &directive)
{
    int value = directive.position != 0 ? directive.position : scan->current + 1;
    if (directive.type != STR_ARG_NONE) {
        value += directive.widthParam == kNextArgument;
        value += directive.precParam == kNextArgument;
    }
    scan->current = std::min(value, STR_PARAMETERS); // behind the table is as far as it goes
    return NumbersBefore(value, directive);
}

bool AllInTable(const ArgumentNumbers &numbers)
{
    return IsInTable(numbers.value) && (numbers.width == 0 || IsInTable(numbers.width)) &&
           (numbers.precision == 0 || IsInTable(numbers.precision));
}

void RecordDirective(Scan *scan, const char *text, const Directive &directive)
{
    const ArgumentNumbers numbers = Number(scan, directive);
    if (directive.type == STR_ARG_NONE)
        return;
    if (directive.misnumbered || !AllInTable(numbers)) {
        PrintfError = 1;
        return;
    }
    RecordMeasure(scan, numbers.width);
    RecordMeasure(scan, numbers.precision);
    *RecordOf(scan, numbers.value) = {directive.type,
                                      1,
                                      text,
                                      static_cast<uint32_t>(directive.end - text),
                                      directive.widthParam,
                                      directive.precParam};
}

const char *FindPercent(const char *at, const char *end)
{
    return static_cast<const char *>(std::memchr(at, '%', static_cast<size_t>(end - at)));
}

void ScanSegment(Scan *scan, const char *at, const char *end)
{
    while ((at = FindPercent(at, end)) != nullptr) {
        const Directive directive = ReadDirective(at, end);
        if (directive.end == nullptr) {
            PrintfError = 1;
            return;
        }
        RecordDirective(scan, at, directive);
        at = directive.end;
    }
}

bool HoldsDirectives(uint16_t kind)
{
    const CSDescriptor segCs = {kind, 0};
    return IsText(kind) && (ccs_GetCSFlags(&segCs) & CS_FLAG_ASCII_SUPERSET) != 0;
}

} // namespace

uint16_t str_GetParams(const CSDescriptor *, const char *format, const CSSegment *segments,
                       int count, ParameterRecord *table)
{
    Scan scan = {table, 0, 0, -1};
    const char *at = format;
    for (int i = 0; i < count && segments[i].kind != CS_SEG_END; ++i) {
        const char *const end = at + segments[i].length;
        if (HoldsDirectives(segments[i].kind))
            ScanSegment(&scan, at, end);
        at = end;
    }
    ClearUpTo(&scan, kAlwaysWritten);
    return static_cast<uint16_t>(scan.highest);
}
