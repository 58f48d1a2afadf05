// SPDX-License-Identifier: Apache-2.0
//
// The verbs of strtool.  Each declares itself; when it is the one asked for, it runs as the command
// line is parsed and leaves its exit code in `status`.
#ifndef TOOLS_VERBS_H
#define TOOLS_VERBS_H

namespace CLI
{
class App;
}

namespace strtool
{

void AddSets(CLI::App &app);
void AddInspect(CLI::App &app, int &status);
void AddWidth(CLI::App &app, int &status);
void AddTruncate(CLI::App &app, int &status);
void AddSplit(CLI::App &app, int &status);
void AddCat(CLI::App &app, int &status);
void AddFind(CLI::App &app, int &status);
void AddUpper(CLI::App &app, int &status);
void AddCmp(CLI::App &app, int &status);
void AddCmpNames(CLI::App &app, int &status);
void AddMatch(CLI::App &app, int &status);
void AddTransform(CLI::App &app, int &status);
void AddPrintf(CLI::App &app, int &status);
void AddCaseTable(CLI::App &app, int &status);
void AddInitHome(CLI::App &app, int &status);

} // namespace strtool

#endif
