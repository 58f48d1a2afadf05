// SPDX-License-Identifier: Apache-2.0
//
// Ways to print a text by a format.
#ifndef BENCH_FORMAT_WAYS_H
#define BENCH_FORMAT_WAYS_H

#include "bench/support.h"

#include <str/format.h>

#include <cstdio>
#include <cstring>

#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace bench::format
{

inline thread_local char thePrint[128 * 1024];

// ---- The library ---------------------------------------------------------------------------

inline constexpr auto kPrint = [](const Text &text, const char *format, auto... arguments) {
    return static_cast<size_t>(str_simplesprintf(&text.cs, thePrint, format, arguments...));
};

// ---- The others ----------------------------------------------------------------------------

inline constexpr auto kSnprintf = [](const Text &, const char *format, auto... arguments) {
    return static_cast<size_t>(std::snprintf(thePrint, sizeof thePrint, format, arguments...));
};

// ---- What is printed -----------------------------------------------------------------------

// Not known to the compiler, which would print it itself.
inline const char *theShortFormat = "x=%d y=%s";
inline int theNumber = 7;

// A number and a string, which is the text.
template <const auto &print>
size_t Short(const Text &text)
{
    return print(text, theShortFormat, theNumber, text.bytes.c_str());
}

inline std::string Printed(const Text &, size_t size)
{
    std::string printed(thePrint, size);
    std::memset(thePrint, 0xFF, sizeof thePrint); // nothing is left for the next way
    return printed;
}

} // namespace bench::format

#endif
