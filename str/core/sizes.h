// SPDX-License-Identifier: Apache-2.0
//
// Sizes are counted without loss.  Where an interface has a smaller type for its answer, a size
// that it cannot say is refused in the same way as memory that cannot be had.
#ifndef STR_CORE_SIZES_H
#define STR_CORE_SIZES_H

#include "str/core/frame.h"

#include <platform/os.h>

#include <utility>

namespace libstr
{

template <class Answer, class Size>
Answer Fit(const char *source, Size size, int line = __builtin_LINE())
{
    if (!std::in_range<Answer>(size))
        frame::Raise(source, OS_ESC_MEMORY, line);
    return static_cast<Answer>(size);
}

} // namespace libstr

#endif
