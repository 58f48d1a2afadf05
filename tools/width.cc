// SPDX-License-Identifier: Apache-2.0
//
// strtool width: the columns of texts.
#include "tools/input.h"
#include "tools/verbs.h"

#include <str/display.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace strtool
{

void AddWidth(CLI::App &app, int &status)
{
    CLI::App *verb = app.add_subcommand("width", "Count the columns of each text");
    const auto options = std::make_shared<TextOptions>();
    AddTextOptions(*verb, *options);
    verb->callback([options, &status] {
        status = ForEachText(*options, [](const std::string &text, const CSDescriptor &cs) {
            Put(std::to_string(str_dispstrlen(text.c_str(), &cs)) + '\n');
        });
    });
}

} // namespace strtool
