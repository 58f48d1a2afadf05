// SPDX-License-Identifier: Apache-2.0
//
// Sizes inside the library are exact.  Where an interface returns a smaller type, a size that does
// not fit raises the escape of an allocation that fails.
#ifndef STR_CORE_SIZES_H
#define STR_CORE_SIZES_H

#include "str/core/frame.h"

#include <platform/os.h>

#include <utility>

namespace libstr
{

template <class Result, class Size>
Result Fit(const char *source, Size size, int line = __builtin_LINE())
{
    if (!std::in_range<Result>(size))
        frame::Raise(source, OS_ESC_MEMORY, line);
    return static_cast<Result>(size);
}

} // namespace libstr

#endif
