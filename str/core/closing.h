// SPDX-License-Identifier: Apache-2.0
#ifndef STR_CORE_CLOSING_H
#define STR_CORE_CLOSING_H

#include "str/core/frame.h"

#include <platform/os.h>

namespace libstr
{

// Closes, for a handler, what it no longer matters to keep: after an escape of the first call a
// second one closes it.
template <class Close>
void AbandonBy(Close &&close)
{
    bool isOpen = true;
    for (int tries = 0; isOpen && tries < 2; ++tries)
        frame::Disregard([&] {
            close();
            isOpen = false;
        });
}

inline void Abandon(FILE *stream)
{
    AbandonBy([&] { os_fclose(stream); });
}

inline void AbandonDirectory(void *directory)
{
    AbandonBy([&] { os_closedir(directory); });
}

} // namespace libstr

#endif
