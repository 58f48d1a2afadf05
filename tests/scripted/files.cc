// SPDX-License-Identifier: Apache-2.0
#include "tests/scripted/files.h"

#include <platform/er.h>
#include <platform/os.h>

#include <cstdlib>

namespace scripted
{
bool memoryIsOut;
size_t asked;
} // namespace scripted

extern "C" void *os_realloc(void *block, size_t size)
{
    scripted::asked = size;
    if (scripted::memoryIsOut)
        er_TracedEscape(ER_CLASS_LIBRARY, OS_ESC_MEMORY, "tests/scripted/files", 1);
    return std::realloc(block, size);
}
