// SPDX-License-Identifier: Apache-2.0
//
// strtool: shows on real text what libstr does.
#include "tools/input.h"
#include "tools/verbs.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <string>

namespace
{

using namespace strtool;

// Names an unknown verb: CLI11 only says that a verb is required.
std::string WhyNot(const CLI::App &app, const CLI::ParseError &error)
{
    const std::vector<std::string> strange = app.remaining(true);
    if (error.get_name() != "RequiredError" || strange.empty())
        return error.what();
    return "'" + strange.front() + "' is not known here";
}

void Run(int argc, char **argv, int &status)
{
    er_SetTraceSink([](int, const char *, int) {}); // for debuggers
    CLI::App app{"Shows, measures, cuts and joins text in many coded character sets.", "strtool"};
    app.set_version_flag("--version", "strtool " STRTOOL_VERSION);
    app.require_subcommand(1);
    AddSets(app);
    AddInspect(app, status);
    AddWidth(app, status);
    AddTruncate(app, status);
    AddSplit(app, status);
    AddCat(app, status);
    AddFind(app, status);
    AddUpper(app, status);
    AddCmp(app, status);
    AddCmpNames(app, status);
    AddMatch(app, status);
    AddTransform(app, status);
    AddPrintf(app, status);
    AddCaseTable(app, status);
    AddInitHome(app, status);
    try {
        app.parse(CommandLine(argc, argv));
    } catch (const CLI::Success &asked) {
        app.exit(asked); // prints the help or the version
    } catch (const CLI::ParseError &error) {
        throw UsageError(WhyNot(app, error));
    }
    Flush(); // writing the rest of the buffer may fail too
}

} // namespace

int main(int argc, char **argv)
{
    int status = kDone;
    try {
        Run(argc, argv, status);
        return status;
    } catch (const UsageError &error) {
        Complain(error.what());
        std::fputs("Try 'strtool --help'.\n", stderr);
        return kMisused;
    } catch (const std::exception &error) {
        Complain(error.what());
        return std::max(status, kFailed);
    }
}
