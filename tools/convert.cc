// SPDX-License-Identifier: Apache-2.0
#include "tools/convert.h"

#include <cerrno>
#include <cstdint>

namespace strtool
{
namespace
{

constexpr size_t kError = static_cast<size_t>(-1);

// Without bytes (a null pointer) brings the output back to its initial state.
size_t Run(iconv_t handle, std::string_view bytes, std::string &out)
{
    char *input = const_cast<char *>(bytes.data()); // iconv does not write there
    size_t left = bytes.size();
    for (;;) {
        char buffer[4096];
        char *output = buffer;
        size_t room = sizeof buffer;
        const size_t result =
            iconv(handle, input == nullptr ? nullptr : &input, &left, &output, &room);
        const bool isFull = result == kError && errno == E2BIG;
        out.append(buffer, sizeof buffer - room);
        if (!isFull)
            return bytes.size() - left;
    }
}

} // namespace

Converter::Converter(const char *to, const char *from)
    : handle(to != nullptr && from != nullptr ? iconv_open(to, from) : nullptr)
{
}

Converter::~Converter()
{
    if (IsOpen())
        iconv_close(handle);
}

// iconv_open says with -1 that there is no such conversion.
bool Converter::IsOpen() const
{
    return handle != nullptr && reinterpret_cast<intptr_t>(handle) != -1;
}

void Converter::Restart() { iconv(handle, nullptr, nullptr, nullptr, nullptr); }

size_t Converter::Convert(std::string_view bytes, std::string &out)
{
    return bytes.empty() ? 0 : Run(handle, bytes, out);
}

void Converter::Finish(std::string &out) { Run(handle, {}, out); }

} // namespace strtool
