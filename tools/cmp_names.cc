// SPDX-License-Identifier: Apache-2.0
//
// strtool cmp-names: which of two O/R names comes first.
#include "tools/input.h"
#include "tools/tables.h"
#include "tools/verbs.h"

#include <str/compare.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace strtool
{
namespace
{

struct NamesOptions {
    std::string name1, name2;
    std::string attributes;
    std::string charset = "T.61";
    bool anyCharset = false;
};

int CompareNames(const NamesOptions &options)
{
    const std::string name1 = Unescape(options.name1), name2 = Unescape(options.name2);
    for (const char *set : {"IA5", "T.61"})
        DemandTables(name1 + name2, DescriptorOf(FindSet(set)));
    const int order = str_cmpORName(name1.c_str(), name2.c_str(), options.charset.c_str(),
                                    options.anyCharset ? 1 : 0, options.attributes.c_str());
    Put(order == 0 ? "=\n" : order < 0 ? "<\n" : ">\n");
    Flush();
    return order == 0 ? kDone : kFailed;
}

} // namespace

void AddCmpNames(CLI::App &app, int &status)
{
    CLI::App *verb = app.add_subcommand("cmp-names", "Say which of two O/R names comes first");
    const auto options = std::make_shared<NamesOptions>();
    verb->add_option("NAME1", options->name1,
                     "An O/R name, like /C=GB/S=Smith/ or C=GB; S=Smith, with \\xHH for bytes")
        ->type_name("")
        ->required();
    verb->add_option("NAME2", options->name2, "Another")->type_name("")->required();
    verb->add_option("--attributes", options->attributes,
                     "The attributes that count, the first before the others")
        ->type_name("C,ADMD,...")
        ->required();
    verb->add_option("--charset", options->charset,
                     "The set whose values count, besides plain ones")
        ->type_name("NAME")
        ->capture_default_str();
    verb->add_flag("--any-charset", options->anyCharset, "Values in any set count");
    verb->footer(
        "The exit code is 0 if they are equal, 1 if they differ, 2 if they cannot be compared.");
    verb->callback([options, &status] {
        status = kMisused; // if it throws
        status = CompareNames(*options);
    });
}

} // namespace strtool
