// SPDX-License-Identifier: Apache-2.0
//
// strtool: does with real text what libstr does, and shows it.
#include "tools/input.h"
#include "tools/verbs.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace
{

using namespace strtool;

int Run(int argc, char **argv)
{
    int status = kDone;
    er_SetTraceSink([](int, const char *, int) {}); // for those who look into the library
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
        throw UsageError(error.what());
    }
    return status;
}

// What is still in the buffer may not reach its file either.
int Close(int status)
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status;
    const std::string why = std::strerror(errno);
    Complain("standard output: " + why);
    return kFailed;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return Close(Run(argc, argv));
    } catch (const UsageError &error) {
        Complain(error.what());
        std::fputs("Try 'strtool --help'.\n", stderr);
        return kMisused;
    } catch (const std::exception &error) {
        Complain(error.what());
        return kFailed;
    }
}
