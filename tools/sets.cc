// SPDX-License-Identifier: Apache-2.0
//
// strtool sets: the table of character sets, and why a set is not in it.
#include "tools/convert.h"
#include "tools/input.h"
#include "tools/show.h"
#include "tools/stream.h"
#include "tools/verbs.h"

#include "services/ccs/table.h"
#include "services/services.h"

#include <CLI/CLI.hpp>
#include <glib.h>
#include <platform/ccs.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

namespace strtool
{
namespace
{

struct FlagName {
    uint32_t flag;
    const char *name;
};
constexpr FlagName kFlagNames[] = {
    {CS_FLAG_BYTE, "byte"},       {CS_FLAG_ASCII, "ascii"},
    {CS_FLAG_CASE, "case"},       {CS_FLAG_ASCII_SUPERSET, "ascii-superset"},
    {CS_FLAG_T61, "base-units"},  {CS_FLAG_UNIFORM, "uniform"},
    {CS_FLAG_ESCAPES, "escapes"}, {CS_FLAG_NO_C1, "no-c1"},
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

// ---- The table -----------------------------------------------------------------------------

std::string BytesInWords(const ccs_SetInfo &set)
{
    const bool isMixed = (set.flags & CS_FLAG_BYTE) == 0 && set.designation == nullptr;
    return isMixed || (set.flags & CS_FLAG_T61) != 0 ? std::to_string(set.bytes) + "+"
                                                     : std::to_string(set.bytes);
}

const char *WhatIs(int index) { return libstr::ccs::kRows[index].what; }

void PrintRow(bool colored, Color color, const std::string (&cells)[4])
{
    Row row(colored);
    row.Left(cells[0], 24, color);
    row.Right(cells[1], 6, color);
    row.Right(cells[2], 5, color);
    row.Left(cells[3], 0, color);
    row.Print();
}

void PrintAll(bool colored)
{
    PrintRow(colored, kDim, {"name", "number", "bytes", "what it is"});
    ccs_SetInfo set;
    for (int i = 0; ccs_GetSetInfo(i, &set) != 0; ++i)
        PrintRow(colored, kPlain,
                 {set.name, std::to_string(set.number), BytesInWords(set), WhatIs(i)});
}

// Words of a table in Markdown.
std::string InCode(const std::string &words)
{
    if (words.empty())
        return "";
    std::string code = "`";
    for (const char c : words)
        code += c == ' ' ? std::string("`, `") : std::string(1, c);
    return code + "`";
}

void PrintMarkdown()
{
    Put("# Character sets\n\n"
        "`strtool sets --markdown` writes this page from the table of sets. A set is found by its\n"
        "name, and by its other names, in any case and with or without hyphens, underscores and\n"
        "spaces. The set's own name in any case comes first, then the other names.\n\n"
        "Registered sets have the number of their registration in ISO-IR; 1000 more is the right\n"
        "half by itself, in seven bits. Codes begin at 1001, sets that are not registered at "
        "2001.\n"
        "`+`: some characters take more bytes.\n\n"
        "`strtool sets --why NAME` says why there is no set of a name, and what to do.\n\n"
        "| name | number | bytes | what it is | designation | other names |\n"
        "|---|--:|--:|---|---|---|\n");
    ccs_SetInfo set;
    for (int i = 0; ccs_GetSetInfo(i, &set) != 0; ++i) {
        std::string others = set.aliases;
        if (set.iconvName != nullptr && std::string(set.iconvName) != set.name)
            others.insert(0, std::string(set.iconvName) + (others.empty() ? "" : " "));
        const std::string designation = DesignationInWords(set.designation);
        // Backquotes need a code of two.
        Put("| " + std::string(set.name) + " | " + std::to_string(set.number) + " | " +
            BytesInWords(set) + " | " + WhatIs(i) + " | " +
            (set.designation == nullptr ? "" : "`` " + designation + " ``") + " | " +
            InCode(others) + " |\n");
    }
}

void PrintOne(const std::string &name, bool colored)
{
    const ccs_SetInfo set = FindSet(name);
    int index = 0;
    for (ccs_SetInfo other; ccs_GetSetInfo(index, &other) != 0 && other.number != set.number;)
        ++index;
    const std::pair<const char *, std::string> facts[] = {
        {"name", set.name},
        {"what it is", WhatIs(index)},
        {"number", std::to_string(set.number)},
        {"bytes", BytesInWords(set)},
        {"iconv", set.iconvName == nullptr ? "-" : set.iconvName},
        {"designation", DesignationInWords(set.designation)},
        {"flags", FlagsInWords(set.flags)},
        {"other names", set.aliases},
    };
    for (const auto &[what, fact] : facts) {
        Row row(colored);
        row.Left(what, 11, kDim);
        row.Left(fact, 0);
        row.Print();
    }
}

// ---- What there is not ---------------------------------------------------------------------

struct Reason {
    const char *names; // with spaces between them; an asterisk ends the beginning of a name
    const char *why;
    const char *instead; // a code for iconv
};
constexpr Reason kReasons[] = {
    {"SHIFT* SJIS MSKANJI CSSHIFTJIS WINDOWS31J CSWINDOWS31J CP932 MS932 IBM943",
     "The first byte of a character is often from 0x80 to 0x9F, where the library takes bytes for "
     "C1 control functions, and the second may be a letter of ASCII.",
     "EUC-JP or UTF-8"},
    {"GBK CP936 MS936 WINDOWS936 CSGBK GB18030 CSGB18030",
     "The first byte of a character may be from 0x80 to 0x9F, where the library takes bytes "
     "for C1 control functions, and the second may be a letter of ASCII.",
     "EUC-CN or UTF-8"},
    {"UHC CP949 MS949 WINDOWS949 JOHAB CP1361",
     "The first byte of a character may be from 0x80 to 0x9F, where the library takes bytes "
     "for C1 control functions, and the second may be a letter of ASCII.",
     "EUC-KR or UTF-8"},
    {"BIG5* BIGFIVE CNBIG5 CSBIG5* CP950 MS950",
     "The second byte of a character may be a letter of ASCII, and in its extensions the "
     "first may be from 0x80 to 0x9F, where the library takes bytes for C1 control functions.",
     "UTF-8"},
    {"EUCTW CSEUCTW", "Some of its characters take four bytes.", "UTF-8"},
    {"UTF16* UTF32* UCS2* UCS4* ISO10646UCS* CSUTF16* CSUTF32* CSUCS4 UNICODE CSUNICODE",
     "Its texts have NUL bytes, and a NUL ends a text.", "UTF-8"},
    {"UTF7* HZ* CSUTF7", "It switches sets by graphic characters of ASCII.", "UTF-8"},
    {"EBCDIC* CSEBCDIC* IBM037 CP037 IBM273 IBM500 CP500 IBM1026 CP1026 IBM1047 CP1047",
     "Its controls, digits and letters are elsewhere than those of ASCII.", "UTF-8"},
    {"ISO2022CN* ISO2022JP1 ISO2022JP2 ISO2022JP3",
     "It is a code that is not in the table. ISO-2022-JP and ISO-2022-KR read the designations of "
     "all sets that 'strtool sets NAME' shows with a designation.",
     "UTF-8"},
};

// Without what does not matter in a name.
std::string Plain(const std::string &name)
{
    std::string plain;
    for (const char c : name)
        if (c != '-' && c != '_' && c != ' ')
            plain += g_ascii_toupper(c);
    return plain;
}

// In lines of at most 79 columns.
std::string Wrapped(const std::string &text)
{
    std::istringstream words(text);
    std::string lines, line;
    for (std::string word; words >> word;) {
        if (!line.empty() && line.size() + 1 + word.size() > 79)
            lines += std::exchange(line, "") + "\n";
        line += (line.empty() ? "" : " ") + word;
    }
    return lines + line + "\n";
}

bool IsNamed(const Reason &reason, const std::string &name)
{
    std::istringstream names(reason.names);
    for (std::string known; names >> known;) {
        const bool isBeginning = known.back() == '*';
        if (isBeginning ? name.starts_with(known.substr(0, known.size() - 1)) : name == known)
            return true;
    }
    return false;
}

void PrintWhyNot(const std::string &name)
{
    const auto *const reason =
        std::find_if(std::begin(kReasons), std::end(kReasons),
                     [&](const Reason &known) { return IsNamed(known, Plain(name)); });
    const bool isRefused = reason != std::end(kReasons);
    if (isRefused)
        Put(Wrapped(reason->why));
    if (isRefused || Converter("UTF-8", name.c_str()).IsOpen())
        Put(std::string(isRefused ? "" : "It is not in the table.\n") + "Convert the text to " +
            (isRefused ? reason->instead : "UTF-8") + ": iconv -f " + name + " -t UTF-8\n");
    else
        Put("Neither strtool nor iconv knows '" + name + "'. Is it spelt as 'iconv -l' has it?\n");
}

void PrintWhy(const std::string &name)
{
    CSDescriptor cs;
    if (ccs_GetCSDescriptor(name.c_str(), &cs) == 0)
        PrintWhyNot(name);
    else
        Put("There is a set of this name: " + std::string(FindSet(name).name) + "\n");
}

struct SetsOptions {
    std::string color = "auto", name, why;
    bool markdown = false;
};

void Sets(const SetsOptions &options)
{
    if (!options.why.empty())
        PrintWhy(options.why);
    else if (options.markdown)
        PrintMarkdown();
    else if (!options.name.empty())
        PrintOne(options.name, UseColor(options.color));
    else
        PrintAll(UseColor(options.color));
}

} // namespace

void AddSets(CLI::App &app)
{
    CLI::App *verb = app.add_subcommand("sets", "List the character sets, or show one");
    const auto options = std::make_shared<SetsOptions>();
    verb->add_option("NAME", options->name, "The set to show; without it, all are listed");
    verb->add_option("--why", options->why, "Say why there is no set of this name")
        ->type_name("NAME");
    verb->add_flag("--markdown", options->markdown, "Write docs/character-sets.md");
    AddColorOption(*verb, options->color);
    verb->callback([options] { Sets(*options); });
}

} // namespace strtool
