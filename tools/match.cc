// SPDX-License-Identifier: Apache-2.0
//
// strtool match: the texts that match a pattern.
#include "tools/output.h"
#include "tools/verbs.h"

#include <platform/ccs.h>
#include <str/concat.h>
#include <str/match.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace strtool
{
namespace
{

constexpr char kUs = 0x1F;

struct MatchOptions : TextOptions {
    std::string pattern, wildcard;
    bool utf8Pattern = false;
};

// The pattern in the set, with US for the wildcard where that is a character by itself.
std::string PatternOf(const MatchOptions &options)
{
    const ccs_SetInfo set = FindSet(options.charset);
    const CSDescriptor cs = DescriptorOf(set);
    std::string pattern = Unescape(options.pattern).c_str(); // up to a NUL
    try {
        if (options.utf8In || options.utf8Pattern)
            pattern = FromUtf8(pattern, set);
    } catch (const TextError &error) {
        throw UsageError(std::string("PATTERN: ") + error.what());
    }
    if (options.wildcard.empty())
        return pattern;
    const int wildcard = OneByte(options.wildcard);
    while (char *at = str_strchr(pattern.data(), wildcard, &cs))
        *at = kUs;
    return pattern;
}

bool Matches(const std::string &text, const std::string &pattern, const CSDescriptor &cs)
{
    if (std::string_view(ccs_GetCSName(&cs)) == "UTF8")
        return str_utf8USPatternMatch(text.c_str(), pattern.c_str()) != 0;
    return str_USPatternMatch(text.c_str(), pattern.c_str(), &cs) != 0;
}

int Match(const MatchOptions &options)
{
    const std::string pattern = PatternOf(options);
    Output output(options.utf8Out);
    bool anyMatches = false;
    const int status = ForEachText(options, [&](const std::string &text, const CSDescriptor &cs) {
        if (!Matches(text, pattern, cs))
            return;
        anyMatches = true;
        output.Print({text}, cs);
    });
    return anyMatches ? status : kFailed;
}

} // namespace

void AddMatch(CLI::App &app, int &status)
{
    CLI::App *verb = app.add_subcommand("match", "Show the texts that match a pattern");
    const auto options = std::make_shared<MatchOptions>();
    verb->add_option("PATTERN", options->pattern,
                     "What the whole text has to be: \\x1F stands for any run of characters, every "
                     "other character for itself")
        ->type_name("")
        ->required();
    verb->add_option("--wildcard", options->wildcard,
                     "A character that stands for any run of characters too")
        ->type_name("C");
    AddTextOptions(*verb, *options);
    verb->add_flag("--utf8-pattern", options->utf8Pattern,
                   "The pattern is written in UTF-8, also where the texts are not");
    AddOutputOption(*verb, *options);
    verb->callback([options, &status] { status = Match(*options); });
}

} // namespace strtool
