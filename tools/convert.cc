// SPDX-License-Identifier: Apache-2.0
#include "tools/convert.h"

#include <cstdint>

namespace strtool
{

Converter::Converter(const char *to, const char *from)
    : handle(to != nullptr && from != nullptr ? g_iconv_open(to, from) : nullptr)
{
}

Converter::~Converter()
{
    if (IsOpen())
        g_iconv_close(handle);
}

// g_iconv_open returns -1 when there is no such conversion.
bool Converter::IsOpen() const
{
    return handle != nullptr && reinterpret_cast<intptr_t>(handle) != -1;
}

size_t Converter::Convert(std::string_view bytes, std::string &out)
{
    gsize done = 0;
    gsize written = 0;
    g_iconv(handle, nullptr, nullptr, nullptr, nullptr); // an earlier text may have failed halfway
    gchar *const converted = g_convert_with_iconv(bytes.data(), static_cast<gssize>(bytes.size()),
                                                  handle, &done, &written, nullptr);
    if (converted == nullptr && done == bytes.size())
        done = 0; // all was read, but some characters were replaced
    if (converted != nullptr && done == bytes.size())
        out.append(converted, written);
    g_free(converted);
    return done;
}

} // namespace strtool
