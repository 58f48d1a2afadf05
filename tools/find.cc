// SPDX-License-Identifier: Apache-2.0
//
// strtool find: where texts first have a character.
#include "tools/input.h"
#include "tools/verbs.h"

#include <str/concat.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace strtool
{
namespace
{

struct FindOptions : TextOptions {
    std::string character;
};

int Find(const FindOptions &options)
{
    const int wanted = OneByte(options.character);
    bool foundInAll = true;
    const int status = ForEachText(options, [&](const std::string &text, const CSDescriptor &cs) {
        const char *found = str_strchr(text.c_str(), wanted, &cs);
        foundInAll = foundInAll && found != nullptr;
        Put((found != nullptr ? std::to_string(found - text.c_str()) : "-") + '\n');
    });
    return foundInAll ? status : kFailed;
}

} // namespace

void AddFind(CLI::App &app, int &status)
{
    CLI::App *verb =
        app.add_subcommand("find", "Say at what byte of each text, from 0, a character first is");
    const auto options = std::make_shared<FindOptions>();
    verb->add_option("CHARACTER", options->character,
                     "The byte to find, where it is a whole character; \\xHH if it is not ASCII")
        ->type_name("")
        ->required();
    AddTextOptions(*verb, *options);
    verb->callback([options, &status] { status = Find(*options); });
}

} // namespace strtool
