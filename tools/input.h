// SPDX-License-Identifier: Apache-2.0
//
// Texts as the verbs take them: each argument, or each line of standard input, in a set that an
// option names.
#ifndef TOOLS_INPUT_H
#define TOOLS_INPUT_H

#include "tools/stream.h"

#include "services/services.h"

#include <str/charset.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace strtool
{

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1; // a text could not be handled
inline constexpr int kMisused = 2;

// The command line is wrong.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A text cannot be handled; the other texts are.
struct TextError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct TextOptions {
    std::string charset = "UTF8";
    bool utf8In = false;
    bool utf8Out = false; // for the verbs that print texts
    std::vector<std::string> arguments;
    size_t firstNumber = 1;          // of the arguments, in messages
    std::optional<std::string> file; // whose lines are the texts, if not standard input
};

// Declares TEXT...
void AddTexts(CLI::App &verb, TextOptions &options);

// Declares TEXT..., --charset and --utf8-in.
void AddTextOptions(CLI::App &verb, TextOptions &options);

// Declares an option that takes a number from 0 to INT_MAX.
CLI::Option &AddNumber(CLI::App &verb, const std::string &name, std::optional<int> &number,
                       const std::string &description);

// The command line without the program's name, last word first, for CLI::App to parse.
std::vector<std::string> CommandLine(int argc, char **argv);

// The set of that name, or of that iconv name, in upper or lower case.
ccs_SetInfo FindSet(const std::string &name);

// The descriptor of a string in the set.
CSDescriptor DescriptorOf(const ccs_SetInfo &set);

// Decodes \xHH, \e, \n, \t and \\.  Throws a TextError for a NUL.
std::string Unescape(std::string_view written);

// The value, as a signed char, of the only byte of what is written.
int OneByte(const std::string &written);

// The UTF-8 `text` in the set.  Throws a TextError when the set cannot hold it.
std::string FromUtf8(const std::string &text, const ccs_SetInfo &set);

// Calls `handle` for every text; returns the exit code.  A text that contains a NUL or cannot be
// converted to the set gets a message instead, as does one for which `handle` throws a TextError.
using TextHandler = std::function<void(const std::string &text, const CSDescriptor &cs)>;
int ForEachText(const TextOptions &options, const TextHandler &handle);

} // namespace strtool

#endif
