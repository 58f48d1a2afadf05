// SPDX-License-Identifier: Apache-2.0
//
// strtool match: the texts that match a pattern.
#include "tools/output.h"
#include "tools/segment.h"
#include "tools/show.h"
#include "tools/verbs.h"

#include <platform/ccs.h>
#include <platform/os.h>
#include <str/match.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>
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

// Calls `handle` for every character and control of the text, with the kind of its segment.
using UnitHandler = std::function<void(uint16_t kind, std::string_view unit)>;
void ForEachUnit(const std::string &text, const CSDescriptor &cs, const UnitHandler &handle)
{
    int count;
    const CSSegment *segment = ccs_GetRealStrs(&cs, text.c_str(), -1, &count);
    for (; segment->kind != CS_SEG_END; ++segment) {
        const CSDescriptor segCs = {segment->kind, cs.escMode};
        for (std::string_view rest = BytesOf(*segment); !rest.empty();) {
            int length = 0;
            ccs_GetNextCharLen(rest.data(), static_cast<int>(rest.size()), &length, &segCs);
            const auto size = static_cast<size_t>(std::max(length, 1));
            handle(segment->kind, rest.substr(0, size));
            rest.remove_prefix(size);
        }
    }
}

uint32_t FlagsOf(uint16_t kind)
{
    const CSDescriptor cs = {kind, 0};
    return ccs_GetCSFlags(&cs);
}

bool IsAscii(uint16_t kind) { return (FlagsOf(kind) & CS_FLAG_ASCII) != 0; }

// Replaces the wildcard by US where it is a character of ASCII or of the text's own set.
void PutUs(std::string &pattern, char wildcard, const CSDescriptor &cs)
{
    const bool anyKind = (FlagsOf(cs.csNum) & CS_FLAG_BYTE) != 0;
    ForEachUnit(pattern, cs, [&](uint16_t kind, std::string_view unit) {
        if (unit == std::string_view(&wildcard, 1) &&
            (anyKind || kind == cs.csNum || IsAscii(kind)))
            pattern[static_cast<size_t>(unit.data() - pattern.data())] = kUs;
    });
}

// The pattern in the set, with US for the wildcard.  Repeats of US are removed: the library wants a
// byte for each.
std::string PatternOf(const MatchOptions &options)
{
    const ccs_SetInfo set = FindSet(options.charset);
    std::string pattern = Unescape(options.pattern);
    try {
        if (options.utf8In || options.utf8Pattern)
            pattern = FromUtf8(pattern, set);
    } catch (const TextError &error) {
        throw UsageError(std::string("PATTERN: ") + error.what());
    }
    if (!options.wildcard.empty())
        PutUs(pattern, static_cast<char>(OneByte(options.wildcard)), DescriptorOf(set));
    const auto bothUs = [](char a, char b) { return a == kUs && b == kUs; };
    pattern.erase(std::unique(pattern.begin(), pattern.end(), bothUs), pattern.end());
    return pattern;
}

// The text with its characters and their sets spelled out, so that only whole characters can match.
// US stays as it is.
std::string Spell(const std::string &text, const CSDescriptor &cs)
{
    std::string spelled;
    ForEachUnit(text, cs, [&spelled](uint16_t kind, std::string_view unit) {
        if (unit.front() == kUs)
            spelled += kUs;
        else
            spelled += "\x01" + (IsAscii(kind) ? "ASCII" : std::to_string(kind)) + ':' +
                       VisibleBytes(unit) + "\x02";
    });
    return spelled;
}

// The library compares bytes, so its match may begin or end inside a character.
bool Matches(const std::string &text, const std::string &pattern, const CSDescriptor &cs)
{
    if (std::string_view(ccs_GetCSName(&cs)) == "UTF8")
        return str_utf8USPatternMatch(text.c_str(), pattern.c_str()) != 0;
    return str_USPatternMatch(text.c_str(), pattern.c_str(), &cs) != 0 &&
           os_USPatternMatch(Spell(text, cs).c_str(), Spell(pattern, cs).c_str()) != 0;
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
                     "What the whole text must match: \\x1F matches any run of characters, every "
                     "other character itself")
        ->type_name("")
        ->required();
    verb->add_option("--wildcard", options->wildcard,
                     "A character that also matches any run of characters")
        ->type_name("C");
    AddTextOptions(*verb, *options);
    verb->add_flag("--utf8-pattern", options->utf8Pattern,
                   "The pattern is written in UTF-8, even if the texts are not");
    AddOutputOption(*verb, *options);
    verb->callback([options, &status] { status = Match(*options); });
}

} // namespace strtool
