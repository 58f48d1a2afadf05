// SPDX-License-Identifier: Apache-2.0
//
// The characters of one segment in UTF-8.  iconv knows codes, but not the sets of their segments,
// so a segment is put into a form that iconv knows.
#ifndef TOOLS_DECODE_H
#define TOOLS_DECODE_H

#include "tools/convert.h"

#include <str/charset.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace strtool
{

inline constexpr char kUndecodable[] = "\u00B7"; // for a character that iconv does not know

class Decoder
{
  public:
    // Appends the characters of a segment in the set of `segCs`.  Returns false when iconv does not
    // know all of them, and appends kUndecodable for the others.
    bool Decode(std::string_view bytes, const CSDescriptor &segCs, std::string &text);

  private:
    // How iconv reads the characters of a set.
    struct Way {
        std::unique_ptr<Converter> converter; // null: not at all
        std::string designation;              // if not empty, comes first; then seven bits
        bool isByteSet;

        // Appends the characters of the codes; false when iconv does not know all of them.
        bool Append(const std::string &codes, std::string &text) const;
    };
    static Way FindWay(const CSDescriptor &segCs);

    std::map<uint16_t, Way> ways; // by kind
};

} // namespace strtool

#endif
