// SPDX-License-Identifier: Apache-2.0
//
// strtool cmp: whether two texts, or the lines of two files, are equal, or which comes first.
#include "tools/input.h"
#include "tools/tables.h"
#include "tools/verbs.h"

#include <str/compare.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace strtool
{
namespace
{

struct CmpOptions : TextOptions {
    std::string charset2;
    std::string text1, text2;
    bool lines = false;
    bool ignoreCase = false;
    bool order = false;
};

struct Input {
    std::string text;
    CSDescriptor cs;
};

// The first or second text of the command line, or the lines of that file.  Sets `status` if there
// is an error.
std::vector<Input> InputsOf(const CmpOptions &options, size_t number, int &status)
{
    const std::string &given = number == 1 ? options.text1 : options.text2;
    TextOptions one;
    one.charset = number == 1 || options.charset2.empty() ? options.charset : options.charset2;
    one.utf8In = options.utf8In;
    one.firstNumber = number;
    if (options.lines)
        one.file = given;
    else
        one.arguments = {given};
    std::vector<Input> inputs;
    status |= ForEachText(one, [&](const std::string &text, const CSDescriptor &cs) {
        if (options.ignoreCase)
            DemandTables(text, cs);
        inputs.push_back({text, cs});
    });
    return inputs;
}

// Negative, 0 or positive; without an order, 0 or another value.
int CompareTexts(const Input &a, const Input &b, const CmpOptions &options)
{
    const char *const s1 = a.text.c_str(), *const s2 = b.text.c_str();
    if (options.order)
        return str_cmpTextStr(s1, s2, options.ignoreCase ? 1 : 0, &a.cs, &b.cs);
    return options.ignoreCase ? str_strucasecmp3(s1, s2, &a.cs, &b.cs)
                              : str_strcmp3(s1, s2, &a.cs, &b.cs);
}

int Cmp(const CmpOptions &options)
{
    int status = kDone;
    const auto inputs1 = InputsOf(options, 1, status);
    const auto inputs2 = InputsOf(options, 2, status);
    if (status != kDone)
        return kMisused; // there is nothing to compare with
    const size_t count = std::max(inputs1.size(), inputs2.size());
    for (size_t i = 0; i < count; ++i) {
        const bool both = i < inputs1.size() && i < inputs2.size();
        const int order = both                 ? CompareTexts(inputs1[i], inputs2[i], options)
                          : i < inputs1.size() ? 1
                                               : -1;
        Put(order == 0 ? "=\n" : !options.order ? "!=\n" : order < 0 ? "<\n" : ">\n");
        status |= order == 0 ? kDone : kFailed;
    }
    Flush();
    return status;
}

} // namespace

void AddCmp(CLI::App &app, int &status)
{
    CLI::App *verb =
        app.add_subcommand("cmp", "Say whether two texts are equal, by the exit code too");
    const auto options = std::make_shared<CmpOptions>();
    verb->add_option("A", options->text1, "A text, with \\xHH \\e \\n \\t \\\\ for bytes")
        ->type_name("")
        ->required();
    verb->add_option("B", options->text2, "Another")->type_name("")->required();
    verb->add_flag("--lines", options->lines, "A and B are files: compare them line by line");
    verb->add_flag("--ignore-case", options->ignoreCase, "Without regard to case");
    verb->add_flag("--order", options->order,
                   "Say which comes first: < or >; UTF-8 goes by its bytes");
    verb->add_option("--charset", options->charset, "The set of the texts: see strtool sets")
        ->type_name("NAME")
        ->capture_default_str();
    verb->add_option("--charset2", options->charset2, "The set of B, if it differs")
        ->type_name("NAME");
    verb->add_flag("--utf8-in", options->utf8In,
                   "The texts are written in UTF-8: convert them first");
    verb->footer(
        "The exit code is 0 if they are equal, 1 if they differ, 2 if they cannot be compared.");
    verb->callback([options, &status] {
        status = kMisused; // if it throws
        status = Cmp(*options);
    });
}

} // namespace strtool
