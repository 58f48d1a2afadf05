// SPDX-License-Identifier: Apache-2.0
//
// GLib's iconv, kept open.
#ifndef TOOLS_CONVERT_H
#define TOOLS_CONVERT_H

#include <glib.h>

#include <string>
#include <string_view>

namespace strtool
{

class Converter
{
  public:
    // A null name is that of a code that iconv does not know.
    Converter(const char *to, const char *from);
    ~Converter();
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;

    bool IsOpen() const;

    // Appends what all of `bytes` convert to, from the initial states of both codes and back to
    // that of the output.  Returns how many bytes convert; if there are more, nothing is appended.
    // Needs an open converter.
    size_t Convert(std::string_view bytes, std::string &out);

  private:
    GIConv handle;
};

} // namespace strtool

#endif
