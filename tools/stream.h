// SPDX-License-Identifier: Apache-2.0
//
// Results go to standard output, complaints to standard error.
#ifndef TOOLS_STREAM_H
#define TOOLS_STREAM_H

#include <stdexcept>
#include <string>
#include <string_view>

namespace strtool
{

// Standard output has failed, so nothing more can be printed.
struct OutputLost : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Writes the bytes to standard output, which is buffered.  Throws OutputLost once a write has
// failed.
void Put(std::string_view bytes);

// Writes what is still in the buffer.  Throws OutputLost once a write has failed.
void Flush();

// Says on standard error what is wrong.
void Complain(const std::string &what);

} // namespace strtool

#endif
