// SPDX-License-Identifier: Apache-2.0
//
// An array that grows while others read it: its elements never move, and are never released.
#ifndef STR_CORE_STEADY_H
#define STR_CORE_STEADY_H

#include <platform/os.h>

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstring>

namespace libstr
{

// Parts of 32, 32, 64, 128 ... elements.
template <class T>
struct Steady {
    static constexpr size_t kFirst = 32;
    static constexpr unsigned int kParts = 24;

    std::atomic<T *> parts[kParts];

    static constexpr unsigned int PartOf(size_t index)
    {
        return static_cast<unsigned int>(std::bit_width(index / kFirst));
    }

    // Where the part begins, which is also the size of all but the first.
    static constexpr size_t BeginOf(unsigned int part)
    {
        return part == 0 ? 0 : kFirst << (part - 1);
    }
};

// The part with the element; null where the array has not grown so far.
template <class T>
T *PartWith(const Steady<T> &array, size_t index)
{
    const unsigned int part = array.PartOf(index);
    return part < array.kParts ? array.parts[part].load(std::memory_order_acquire) : nullptr;
}

// An element that the array has.
template <class T>
T *ElementAt(const Steady<T> &array, size_t index)
{
    return PartWith(array, index) + (index - array.BeginOf(array.PartOf(index)));
}

// Lets the array have the element; new ones are all zero bits.  One thread at a time may do this.
// Raises OS_ESC_MEMORY, and the array is then unchanged.
template <class T>
void GrowTo(Steady<T> *array, size_t index)
{
    for (unsigned int part = 0; part <= array->PartOf(index); ++part) {
        if (array->parts[part].load(std::memory_order_relaxed) != nullptr)
            continue;
        const size_t size = part == 0 ? array->kFirst : array->BeginOf(part);
        // NOLINTNEXTLINE(bugprone-sizeof-expression): of pointers too
        const size_t bytes = size * sizeof(T);
        void *const made = os_malloc(bytes);
        std::memset(made, 0, bytes);
        array->parts[part].store(static_cast<T *>(made), std::memory_order_release);
    }
}

} // namespace libstr

#endif
