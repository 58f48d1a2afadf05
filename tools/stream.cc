// SPDX-License-Identifier: Apache-2.0
#include "tools/stream.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace strtool
{
namespace
{

int theLoss; // the errno of the first write to standard output that failed

void Note(bool isWritten)
{
    if (!isWritten && theLoss == 0)
        theLoss = errno;
}

void ThrowIfLost()
{
    if (theLoss != 0)
        throw OutputLost(std::string("standard output: ") + std::strerror(theLoss));
}

} // namespace

void Put(std::string_view bytes)
{
    Note(std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size());
    ThrowIfLost();
}

void Flush()
{
    Note(std::fflush(stdout) == 0 && std::ferror(stdout) == 0);
    ThrowIfLost();
}

void Complain(const std::string &what)
{
    Note(std::fflush(stdout) == 0); // so that the two stay in order in one file
    std::fprintf(stderr, "strtool: %s\n", what.c_str());
}

} // namespace strtool
