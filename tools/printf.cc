// SPDX-License-Identifier: Apache-2.0
//
// strtool printf: a format with its arguments.
#include "tools/output.h"
#include "tools/verbs.h"

#include <platform/ccs.h>
#include <str/format.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

namespace strtool
{
namespace
{

// The whole argument, read by a function of the C library.
template <class Read>
auto Number(const std::string &text, Read read)
{
    char *end = nullptr;
    errno = 0;
    const auto number = read(text.c_str(), &end);
    if (text.empty() || *end != '\0' || errno == ERANGE)
        throw UsageError("'" + text + "' is not a number that the format can take");
    return number;
}

long long Integer(const std::string &text, long long least, long long most)
{
    const long long number =
        Number(text, [](const char *at, char **end) { return strtoll(at, end, 0); });
    if (number < least || number > most)
        throw UsageError("'" + text + "' is not in the range that the format can take");
    return number;
}

// The values of arguments by their numbers, as str_buildpfstring takes them.
struct Values {
    short shorts[STR_PARAMETERS];
    int ints[STR_PARAMETERS];
    long longs[STR_PARAMETERS];
    double doubles[STR_PARAMETERS];
    long double longDoubles[STR_PARAMETERS];
    void *pointers[STR_PARAMETERS];

    void Set(int number, int type, std::string &text)
    {
        switch (type) {
        case STR_ARG_SHORT:
            shorts[number] = static_cast<short>(Integer(text, SHRT_MIN, USHRT_MAX));
            break;
        case STR_ARG_INT:
            ints[number] = static_cast<int>(Integer(text, INT_MIN, UINT_MAX));
            break;
        case STR_ARG_LONG:
            longs[number] = static_cast<long>(Integer(text, LONG_MIN, LONG_MAX));
            break;
        case STR_ARG_DOUBLE:
            doubles[number] = Number(text, strtod);
            break;
        case STR_ARG_LONG_DOUBLE:
            longDoubles[number] = Number(text, strtold);
            break;
        default:
            pointers[number] = text.data();
        }
    }
};

bool IsTaken(const ParameterRecord &record) { return record.type != STR_ARG_UNUSED; }

// Gives the arguments in order to the numbers that the format takes.
void Assign(std::vector<std::string> &texts, const ParameterRecord *table, int maxParam,
            Values &values)
{
    const auto given = static_cast<ptrdiff_t>(texts.size() - 1); // after the format
    const auto taken = std::count_if(table + 1, table + 1 + maxParam, IsTaken);
    if (given != taken)
        throw UsageError("the format takes " + std::to_string(taken) + " arguments, and " +
                         std::to_string(given) + " are given");
    auto text = texts.begin();
    for (int number = 1; number <= maxParam; ++number)
        if (IsTaken(table[number]))
            values.Set(number, table[number].type, *++text);
}

std::string Printed(std::vector<std::string> &texts, const CSDescriptor &cs)
{
    const char *format = texts.front().c_str();
    int count;
    const CSSegment *segments = ccs_GetAllStrs(&cs, format, -1, &count);
    ParameterRecord table[STR_PARAMETERS];
    const int maxParam = str_GetParams(&cs, format, segments, count, table);
    Values values;
    Assign(texts, table, maxParam, values);
    unsigned int length;
    const char *text = str_buildpfstring(&cs, &length, format, table, maxParam, values.shorts,
                                         values.ints, values.longs, nullptr, values.doubles,
                                         values.longDoubles, values.pointers);
    return text == nullptr ? "" : std::string(text, length);
}

struct PrintfOptions : TextOptions {
    std::string format;
};

int Printf(PrintfOptions options)
{
    options.arguments.insert(options.arguments.begin(), options.format);
    std::vector<std::string> texts;
    const int status = ForEachText(
        options, [&](const std::string &text, const CSDescriptor &) { texts.push_back(text); });
    if (status != kDone)
        return status;
    const CSDescriptor cs = DescriptorOf(FindSet(options.charset));
    Output(options.utf8Out).Print({Printed(texts, cs)}, cs);
    if (PrintfError == 0)
        return kDone;
    Complain("the format has an unknown directive, which is printed as it is");
    return kFailed;
}

} // namespace

void AddPrintf(CLI::App &app, int &status)
{
    CLI::App *verb = app.add_subcommand("printf", "Print arguments by a format");
    const auto options = std::make_shared<PrintfOptions>();
    verb->add_option("FORMAT", options->format,
                     "What to print: %d %s and the like are replaced by the texts; %% stays as "
                     "it is")
        ->type_name("")
        ->required();
    AddTextOptions(*verb, *options);
    verb->get_option("TEXT")->description(
        "An argument each, with \\xHH \\e \\n \\t \\\\ for bytes");
    AddOutputOption(*verb, *options);
    verb->callback([options, &status] { status = Printf(*options); });
}

} // namespace strtool
