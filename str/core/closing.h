// SPDX-License-Identifier: Apache-2.0
#ifndef STR_CORE_CLOSING_H
#define STR_CORE_CLOSING_H

#include "str/core/frame.h"

#include <platform/os.h>

namespace libstr
{

// Closes a stream whose contents no longer matter, for a handler: after an escape of os_fclose a
// second call closes it.
inline void Abandon(FILE *stream)
{
    bool isOpen = true;
    for (int tries = 0; isOpen && tries < 2; ++tries)
        frame::Disregard([&] {
            os_fclose(stream);
            isOpen = false;
        });
}

} // namespace libstr

#endif
