// SPDX-License-Identifier: Apache-2.0
//
// strtool upper: texts in upper case.
#include "tools/output.h"
#include "tools/tables.h"
#include "tools/verbs.h"

#include <str/case.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace strtool
{
namespace
{

std::string Upper(const std::string &text, const CSDescriptor &cs)
{
    DemandTables(text, cs);
    int length;
    const char *const upper = str_ToUpper(text.c_str(), -1, &length, &cs);
    if (upper == nullptr)
        throw TextError("this is not well-formed UTF-8");
    return {upper, static_cast<size_t>(length)};
}

int UpperEach(const TextOptions &options)
{
    Output output(options.utf8Out);
    return ForEachText(options, [&](const std::string &text, const CSDescriptor &cs) {
        output.Print({Upper(text, cs)}, cs);
    });
}

} // namespace

void AddUpper(CLI::App &app, int &status)
{
    CLI::App *verb = app.add_subcommand("upper", "Put each text into upper case");
    const auto options = std::make_shared<TextOptions>();
    AddTextOptions(*verb, *options);
    AddOutputOption(*verb, *options);
    verb->callback([options, &status] { status = UpperEach(*options); });
}

} // namespace strtool
