// SPDX-License-Identifier: Apache-2.0
//
// strtool cat: texts joined, with the escape sequences that are needed between them.
#include "tools/output.h"
#include "tools/verbs.h"

#include <str/concat.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace strtool
{
namespace
{

std::string Joined(const std::vector<std::string> &texts, const CSDescriptor &cs)
{
    std::string joined;
    for (const std::string &text : texts) {
        int length;
        if (const char *escapes = str_GetEscapes(joined.c_str(), text.c_str(), &cs, &length))
            joined += escapes;
        joined += text;
    }
    return joined;
}

// Prints nothing if one of the texts is bad.
int Cat(const TextOptions &options)
{
    std::vector<std::string> texts;
    const int status = ForEachText(
        options, [&](const std::string &text, const CSDescriptor &) { texts.push_back(text); });
    if (status != kDone)
        return status;
    const CSDescriptor cs = DescriptorOf(FindSet(options.charset));
    Output(options.utf8Out).Print({Joined(texts, cs)}, cs);
    return kDone;
}

} // namespace

void AddCat(CLI::App &app, int &status)
{
    CLI::App *verb = app.add_subcommand("cat", "Join the texts to one");
    const auto options = std::make_shared<TextOptions>();
    AddTextOptions(*verb, *options);
    AddOutputOption(*verb, *options);
    verb->callback([options, &status] { status = Cat(*options); });
}

} // namespace strtool
