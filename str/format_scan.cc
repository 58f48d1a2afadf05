// SPDX-License-Identifier: Apache-2.0
//
// The scanner: finds which arguments a format takes, before any of them is fetched.
#include <str/format.h>

#include "base/blocks.h"
#include "str/core/directive.h"

#include <algorithm>
#include <atomic>
#include <utility>

using namespace libstr;

char PrintfError;

namespace
{

thread_local bool theDirectiveIsWrong;

constexpr int kAlwaysWritten = 9; // the records up to this number are written even when unused

struct Scan {
    ParameterRecord *table;
    int current; // the number of the last directive
    int highest; // the highest number recorded
    int written; // this scan has written all records up to this number
};

bool IsInTable(int number) { return number >= 1 && number < STR_PARAMETERS; }

void ClearUpTo(Scan *scan, int number)
{
    while (scan->written < number)
        scan->table[++scan->written] = {};
}

// The record of an argument, as written so far.
ParameterRecord *RecordOf(Scan *scan, int number)
{
    ClearUpTo(scan, number);
    scan->highest = std::max(scan->highest, number);
    return scan->table + number;
}

// Records an argument that is a width or precision.  The text of a directive with the same number
// stays in the record.
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
    scan->current = std::min(value, STR_PARAMETERS); // one past the table at most
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
        ReportDirective();
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

void ScanSegment(Scan *scan, const char *at, const char *end)
{
    while ((at = blocks::Find(at, end, '%')) != end) {
        const Directive directive = ReadDirective(at, end);
        if (directive.end == nullptr) {
            ReportDirective();
            return;
        }
        RecordDirective(scan, at, directive);
        at = directive.end;
    }
}

} // namespace

void libstr::ReportDirective()
{
    std::atomic_ref(PrintfError).store(1, std::memory_order_relaxed);
    theDirectiveIsWrong = true;
}

int str_GetPrintfError(void) { return std::exchange(theDirectiveIsWrong, false) ? 1 : 0; }

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
