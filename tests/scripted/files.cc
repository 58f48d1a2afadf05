// SPDX-License-Identifier: Apache-2.0
#include "tests/scripted/files.h"

#include <platform/enc.h>
#include <platform/er.h>
#include <platform/os.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace scripted
{
Files files;
Held held;
} // namespace scripted

using scripted::files;
using scripted::held;

namespace
{

// Fails the call whose turn it is.
void MayFail()
{
    if (files.escapeClass != 0 && files.callsLeft-- == 0)
        er_TracedEscape(files.escapeClass, OS_ESC_FILE, "tests/scripted/files", 1);
}

// ---- Memory: every block is new, full of 0xEE, with more of it behind, and goes as such ------

#ifdef __SANITIZE_ADDRESS__
constexpr size_t kBehind = 0; // the sanitizer looks there itself
#else
constexpr size_t kBehind = 8;
#endif

void *NewBlock(void *old, size_t size)
{
    char *const block = static_cast<char *>(std::malloc(size + kBehind));
    std::memset(block, 0xEE, size + kBehind);
    if (old != nullptr)
        std::memcpy(block, old, std::min(size, held.blocks.at(old)));
    held.blocks[block] = size;
    return block;
}

} // namespace

extern "C" {

void *os_malloc(size_t size)
{
    held.asked = size;
    MayFail();
    return NewBlock(nullptr, size);
}

void *os_realloc(void *block, size_t size)
{
    held.asked = size;
    MayFail();
    void *const moved = NewBlock(block, size);
    os_free(block);
    return moved;
}

void os_free(void *block)
{
    if (block == nullptr)
        return;
    const size_t size = held.blocks.at(block);
    if (std::string(kBehind, '\xEE') !=
        std::string_view(static_cast<char *>(block) + size, kBehind))
        std::abort(); // somebody wrote behind it
    std::memset(block, 0xEE, size);
    held.blocks.erase(block);
    std::free(block);
}

// A side is the bytes that it is written with.
const unsigned char *enc_ConvertLongEncodedStr(const char *text, int, int *length)
{
    static std::string bytes;
    bytes = text;
    *length = static_cast<int>(bytes.size());
    return reinterpret_cast<const unsigned char *>(bytes.c_str());
}
}
