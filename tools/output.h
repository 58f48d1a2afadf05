// SPDX-License-Identifier: Apache-2.0
//
// Texts as the verbs print them: in their set, or in UTF-8 for a terminal.
#ifndef TOOLS_OUTPUT_H
#define TOOLS_OUTPUT_H

#include "tools/decode.h"
#include "tools/input.h"

#include <str/charset.h>

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace strtool
{

// Declares --utf8-out.
void AddOutputOption(CLI::App &verb, TextOptions &options);

class Output
{
  public:
    explicit Output(bool inUtf8) : utf8(inUtf8) {}

    // Writes the texts, with a newline after each, to standard output.  If one of them cannot be
    // written in UTF-8, throws a TextError and writes none.
    void Print(const std::vector<std::string> &texts, const CSDescriptor &cs);

  private:
    void AppendUtf8(const std::string &text, const CSDescriptor &cs, std::string &lines);

    const bool utf8;
    Decoder decoder;
};

} // namespace strtool

#endif
