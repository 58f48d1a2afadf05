// SPDX-License-Identifier: Apache-2.0
//
// A block that grows.  The source that owns a buffer decides when and by how much.
#ifndef STR_CORE_BUFFER_H
#define STR_CORE_BUFFER_H

#include "base/thread_memory.h"
#include "str/core/frame.h"

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

// A thread's own buffer, which is thread-local: it holds the library's results until the thread's
// next one overwrites them, or the thread ends.
template <class T>
struct ThreadBuffer : KeptByThread, Buffer<T> {
};

template <class T>
void ReleaseBuffer(KeptByThread *kept)
{
    auto *const buffer = static_cast<ThreadBuffer<T> *>(kept);
    os_free(buffer->at);
    buffer->at = nullptr;
    buffer->capacity = 0;
}

// As Grow of its block.
template <class T>
void Grow(ThreadBuffer<T> *buffer, size_t capacity)
{
    if (!KeepByThread(buffer, ReleaseBuffer<T>))
        frame::Raise("str/core/buffer", OS_ESC_MEMORY);
    Buffer<T> &block = *buffer;
    Grow(&block, capacity);
}

} // namespace libstr

#endif
