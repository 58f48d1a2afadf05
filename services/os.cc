// SPDX-License-Identifier: Apache-2.0
//
// The operating-system wrappers: what cannot be had is an escape, not a null.
#include <platform/os.h>

#include <platform/er.h>

#include <cstdlib>

namespace
{

constexpr char kSource[] = "services/os";

void *OrEscape(void *block, int line = __builtin_LINE())
{
    if (block == nullptr)
        er_TracedEscape(ER_CLASS_LIBRARY, OS_ESC_MEMORY, kSource, line);
    return block;
}

// A size of 0 is a block too.
size_t AtLeastOne(size_t size) { return size == 0 ? 1 : size; }

} // namespace

extern "C" {

void *os_malloc(size_t size) { return OrEscape(std::malloc(AtLeastOne(size))); }

void *os_realloc(void *block, size_t size)
{
    return OrEscape(std::realloc(block, AtLeastOne(size)));
}

void os_free(void *block) { std::free(block); }

} // extern "C"
