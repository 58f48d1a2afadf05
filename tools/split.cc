// SPDX-License-Identifier: Apache-2.0
//
// strtool split: texts in parts of at most so many columns or bytes.
#include "tools/output.h"
#include "tools/verbs.h"

#include <str/split.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace strtool
{
namespace
{

struct SplitOptions : TextOptions {
    std::optional<int> columns;
    std::optional<int> bytes;
    bool all = false;
};

bool ShowsNothing(const char *text, const CSDescriptor &cs)
{
    return str_FindSplitPoint(text, 0, 1, &cs) == 0;
}

// The parts in order.  Each part except the last displays something, so the loop ends.
std::vector<std::string> Parts(std::string text, const SplitOptions &options,
                               const CSDescriptor &cs)
{
    const auto split = options.columns ? str_SplitByDispLen : str_SplitByDispBytes;
    const int limit = options.columns ? *options.columns : *options.bytes;
    std::vector<std::string> parts;
    do {
        char *second = nullptr;
        unsigned int firstLen = 0;
        unsigned int secondLen = 0;
        const char *first = split(text.c_str(), limit, &second, &firstLen, &secondLen, &cs);
        // Escape sequences at the end of a text are not a line by themselves.
        if (first == nullptr || second == nullptr || (options.all && ShowsNothing(second, cs)))
            break;
        parts.emplace_back(first, firstLen);
        text.assign(second, secondLen);
    } while (options.all);
    parts.push_back(std::move(text));
    return parts;
}

int Split(const SplitOptions &options)
{
    if (options.columns.has_value() == options.bytes.has_value())
        throw UsageError("split takes either --columns or --bytes");
    Output output(options.utf8Out);
    return ForEachText(options, [&](const std::string &text, const CSDescriptor &cs) {
        output.Print(Parts(text, options, cs), cs);
    });
}

} // namespace

void AddSplit(CLI::App &app, int &status)
{
    CLI::App *verb =
        app.add_subcommand("split", "Split each text in a first part and the rest, a line each");
    const auto options = std::make_shared<SplitOptions>();
    AddNumber(*verb, "--columns", options->columns, "The columns that the first part may take");
    AddNumber(*verb, "--bytes", options->bytes,
              "The bytes that its characters may take, escape sequences not counted");
    verb->add_flag("--all", options->all, "Split the rest too, until nothing is left");
    AddTextOptions(*verb, *options);
    AddOutputOption(*verb, *options);
    verb->callback([options, &status] { status = Split(*options); });
}

} // namespace strtool
