// SPDX-License-Identifier: Apache-2.0
//
// The characters of one segment in UTF-8: iconv knows codes, not the sets that the
// segments of a code are in, so a segment is brought into a form that it knows.
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

inline constexpr char kUndecodable[] = "\u00B7"; // stands for a character that iconv does not know

class Decoder
{
  public:
    // Appends the bytes of a segment of text, whole characters in the set of `segCs`.  Answers
    // false when not all of it is known; kUndecodable stands where it is not.
    bool Decode(std::string_view bytes, const CSDescriptor &segCs, std::string &text);

  private:
    // How the characters of a set are had from iconv.
    struct Way {
        std::unique_ptr<Converter> converter; // null: in no way
        std::string designation;              // not empty: the set designated, in seven bits
        bool isByteSet;

        // Appends what the codes mean; false when not all of them are known.
        bool Append(const std::string &codes, std::string &text) const;
    };
    static Way FindWay(const CSDescriptor &segCs);

    std::map<uint16_t, Way> ways; // by kind
};

} // namespace strtool

#endif
