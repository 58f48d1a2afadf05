// SPDX-License-Identifier: Apache-2.0
//
// strtool sets: the table of character sets.
#include "tools/show.h"
#include "tools/verbs.h"

#include "services/services.h"

#include <str/charset.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace strtool
{
namespace
{

constexpr size_t kColumns = 6;
constexpr const char *kHeader[kColumns] = {"number", "name",        "bytes",
                                           "iconv",  "designation", "flags"};
constexpr bool kIsNumber[kColumns] = {true, false, true, false, false, false};

struct FlagName {
    uint32_t flag;
    const char *name;
};
constexpr FlagName kFlagNames[] = {
    {CS_FLAG_BYTE, "byte"},       {CS_FLAG_ASCII, "ascii"},
    {CS_FLAG_CASE, "case"},       {CS_FLAG_ASCII_SUPERSET, "ascii-superset"},
    {CS_FLAG_T61, "base-units"},  {CS_FLAG_UNIFORM, "uniform"},
    {CS_FLAG_ESCAPES, "escapes"},
};

std::string FlagsInWords(uint32_t flags)
{
    std::string words;
    for (const FlagName &known : kFlagNames)
        if ((flags & known.flag) != 0)
            words.append(words.empty() ? "" : " ").append(known.name);
    return words;
}

// As the standard writes it: ESC $ B.
std::string DesignationInWords(const char *designation)
{
    if (designation == nullptr)
        return "-";
    std::string words = "ESC";
    for (const char *byte = designation + 1; *byte != '\0'; ++byte)
        words.append(" ").append(1, *byte);
    return words;
}

using Cells = std::vector<std::string>;

std::vector<Cells> TableOfSets()
{
    std::vector<Cells> table = {Cells(std::begin(kHeader), std::end(kHeader))};
    ccs_SetInfo set;
    for (int i = 0; ccs_GetSetInfo(i, &set) != 0; ++i)
        table.push_back({std::to_string(set.number), set.name, std::to_string(set.bytes),
                         set.iconvName == nullptr ? "-" : set.iconvName,
                         DesignationInWords(set.designation), FlagsInWords(set.flags)});
    return table;
}

void Sets(bool colored)
{
    const std::vector<Cells> table = TableOfSets();
    size_t widths[kColumns] = {};
    for (const Cells &cells : table)
        for (size_t i = 0; i < kColumns; ++i)
            widths[i] = std::max(widths[i], cells[i].size());
    for (const Cells &cells : table) {
        const Color color = &cells == &table.front() ? kDim : kPlain;
        Row row(colored);
        for (size_t i = 0; i < kColumns; ++i)
            if (kIsNumber[i])
                row.Right(cells[i], widths[i], color);
            else
                row.Left(cells[i], widths[i], color);
        row.Print();
    }
}

} // namespace

void AddSets(CLI::App &app)
{
    CLI::App *verb = app.add_subcommand("sets", "List the character sets");
    const auto when = std::make_shared<std::string>("auto");
    AddColorOption(*verb, *when);
    verb->callback([when] { Sets(UseColor(*when)); });
}

} // namespace strtool
