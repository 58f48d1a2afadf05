// SPDX-License-Identifier: Apache-2.0
//
// A block that grows and is never released: it holds the library's results, and the next one
// overwrites them.  The source that owns a buffer decides when and by how much it grows.
#ifndef STR_CORE_BUFFER_H
#define STR_CORE_BUFFER_H

#include <platform/os.h>

#include <cstddef>

namespace libstr
{

template <class T>
struct Buffer {
    T *at;
    size_t capacity; // in elements
};

// Gives the buffer so many elements.  Raises OS_ESC_MEMORY, and the buffer is then unchanged.
template <class T>
void Resize(Buffer<T> *buffer, size_t capacity)
{
    buffer->at = static_cast<T *>(os_realloc(buffer->at, capacity * sizeof(T)));
    buffer->capacity = capacity;
}

// The same, with the first block from os_malloc.
template <class T>
void Grow(Buffer<T> *buffer, size_t capacity)
{
    if (buffer->capacity == 0)
        *buffer = {static_cast<T *>(os_malloc(capacity * sizeof(T))), capacity};
    else
        Resize(buffer, capacity);
}

} // namespace libstr

#endif
