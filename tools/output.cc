// SPDX-License-Identifier: Apache-2.0
#include "tools/output.h"

#include "tools/segment.h"

#include <CLI/CLI.hpp>

namespace strtool
{

void AddOutputOption(CLI::App &verb, TextOptions &options)
{
    verb.add_flag("--utf8-out", options.utf8Out,
                  "Write the results in UTF-8, without escape sequences");
}

void Output::Print(const std::vector<std::string> &texts, const CSDescriptor &cs)
{
    std::string lines;
    for (const std::string &text : texts) {
        if (utf8)
            AppendUtf8(text, cs, lines);
        else
            lines += text;
        lines += '\n';
    }
    Put(lines);
}

// Segment by segment: iconv may not know the code of a text that switches sets.
void Output::AppendUtf8(const std::string &text, const CSDescriptor &cs, std::string &lines)
{
    int count;
    const CSSegment *segment = ccs_GetAllStrs(&cs, text.c_str(), -1, &count);
    for (; segment->kind != CS_SEG_END; ++segment) {
        const CSDescriptor segCs = {segment->kind, cs.escMode};
        if (!IsEscape(*segment) && !decoder.Decode(BytesOf(*segment), segCs, lines))
            throw TextError("from byte " + std::to_string(segment->text - text.c_str() + 1) +
                            " on the result is " + KindName(*segment) +
                            ", which cannot be written in UTF-8");
    }
}

} // namespace strtool
