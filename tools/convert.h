// SPDX-License-Identifier: Apache-2.0
//
// iconv, with as much room for its output as it takes.
#ifndef TOOLS_CONVERT_H
#define TOOLS_CONVERT_H

#include <iconv.h>

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

    // The three need an open converter.
    // Goes back to the initial state of both codes.
    void Restart();
    // Appends what `bytes` convert to, and answers how many did: fewer where one does not.
    size_t Convert(std::string_view bytes, std::string &out);
    // Appends what brings the output back to its initial state.
    void Finish(std::string &out);

  private:
    iconv_t handle;
};

} // namespace strtool

#endif
