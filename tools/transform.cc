// SPDX-License-Identifier: Apache-2.0
//
// strtool transform: UTF-8 input rewritten by rules.
#include "tools/input.h"
#include "tools/verbs.h"

#include <str/transform.h>

#include <CLI/CLI.hpp>
#include <glib.h>

#include <map>
#include <memory>
#include <optional>

namespace strtool
{
namespace
{

struct TransformOptions : TextOptions {
    std::vector<std::string> replacements; // as C=TEXT
    std::string drop, escape;
    bool prefix = false;
};

// The first byte that is not UTF-8, if there is one.
std::optional<size_t> BadByte(const std::string &text)
{
    const char *bad;
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), &bad))
        return std::nullopt;
    return static_cast<size_t>(bad - text.c_str());
}

class Rules
{
  public:
    explicit Rules(const TransformOptions &options)
        : drop(Unescape(options.drop)), prefix(options.prefix)
    {
        for (const std::string &rule : options.replacements)
            AddReplacement(rule);
        slots.resize(specials.size());
        for (const auto &[at, text] : texts)
            slots[at] = text.c_str();
        if (!options.escape.empty())
            escape = static_cast<char>(OneByte(options.escape));
    }

    std::string Transform(const std::string &text) const
    {
        unsigned int length;
        const char *out =
            str_TransformUTF8InputStr(text.c_str(), -1, specials.c_str(), slots.data(),
                                      drop.c_str(), escape, prefix, &length);
        return out == nullptr ? std::string() : std::string(out, length);
    }

  private:
    void AddReplacement(const std::string &written)
    {
        const std::string rule = Unescape(written);
        const auto first = static_cast<guchar>(rule[0]);
        const size_t size = BadByte(rule) ? 0 : static_cast<size_t>(g_utf8_skip[first]);
        if (size == 0 || size >= rule.size() || rule[size] != '=')
            throw UsageError("--replace: '" + written + "' is not a character, '=' and a text");
        texts[specials.size()] = rule.substr(size + 1);
        specials += rule.substr(0, size);
    }

    std::string specials, drop;
    std::map<size_t, std::string> texts; // by the byte of specials
    std::vector<const char *> slots;     // one for each byte
    char escape = '\0';                  // none: a text has no NUL
    bool prefix;
};

int Transform(const TransformOptions &options)
{
    const Rules rules(options);
    return ForEachText(options, [&](const std::string &text, const CSDescriptor &) {
        if (const std::optional<size_t> bad = BadByte(text))
            throw TextError("byte " + std::to_string(*bad + 1) +
                            " does not begin a UTF-8 character");
        Put(rules.Transform(text) + '\n');
    });
}

} // namespace

void AddTransform(CLI::App &app, int &status)
{
    CLI::App *verb = app.add_subcommand("transform", "Rewrite UTF-8 input, character by character");
    const auto options = std::make_shared<TransformOptions>();
    verb->add_option("--replace", options->replacements,
                     "A character and the text that replaces it")
        ->type_name("C=TEXT")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    verb->add_option("--escape", options->escape,
                     "The character before the decimal digits of a control function or a byte, or "
                     "before a character that stays as it is")
        ->type_name("C");
    verb->add_option("--drop", options->drop,
                     "Characters to delete, each with the one that follows it")
        ->type_name("CHARACTERS");
    verb->add_flag("--prefix", options->prefix,
                   "Keep up to four groups in parentheses as they are, before a '='");
    AddTexts(*verb, *options);
    verb->callback([options, &status] { status = Transform(*options); });
}

} // namespace strtool
