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
    // Null means a code that iconv does not know.
    Converter(const char *to, const char *from);
    ~Converter();
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;

    bool IsOpen() const;

    // Converts `bytes`, from the initial state of both codes and back to that of the output, and
    // appends the result.  Returns how many bytes convert; if not all do, appends nothing.  The
    // converter must be open.
    size_t Convert(std::string_view bytes, std::string &out);

  private:
    GIConv handle;
};

} // namespace strtool

#endif
