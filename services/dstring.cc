// SPDX-License-Identifier: Apache-2.0
//
// Strings that grow to at least twice their room, so that the average cost of appending does not
// depend on the length.
#include <platform/dstring.h>

#include <platform/er.h>
#include <platform/os.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace
{

constexpr char kSource[] = "services/dstring";

constexpr unsigned int kLeast = 64; // bytes of the first room

// Makes room for `length` bytes and a NUL.
void Reserve(dstring *string, unsigned int length)
{
    if (length < string->capacity)
        return;
    if (length == UINT_MAX)
        er_TracedEscape(ER_CLASS_LIBRARY, OS_ESC_MEMORY, kSource, __LINE__);
    const unsigned int doubled = string->capacity > UINT_MAX / 2 ? UINT_MAX : string->capacity * 2;
    const unsigned int capacity = std::max({length + 1, doubled, kLeast});
    string->text = static_cast<char *>(os_realloc(string->text, capacity));
    string->capacity = capacity;
}

void End(dstring *string, unsigned int length)
{
    string->length = length;
    if (string->text != nullptr)
        string->text[length] = '\0';
}

} // namespace

extern "C" {

void dstring_init(dstring *string) { *string = {nullptr, 0, 0}; }

void dstring_setLength(dstring *string, unsigned int length)
{
    if (length < string->length)
        End(string, length);
}

void dstring_appendN(dstring *string, const char *bytes, unsigned int count)
{
    const unsigned int length = string->length;
    Reserve(string, count > UINT_MAX - length ? UINT_MAX : length + count);
    std::memcpy(string->text + length, bytes, count);
    End(string, length + count);
}

void dstring_appendChar(dstring *string, char byte) { dstring_appendN(string, &byte, 1); }

void dstring_set(dstring *string, const char *text, int length)
{
    const size_t count = length < 0 ? std::strlen(text) : static_cast<size_t>(length);
    const auto taken = static_cast<unsigned int>(std::min(count, size_t{UINT_MAX}));
    Reserve(string, taken);
    std::memcpy(string->text, text, taken);
    End(string, taken);
}

} // extern "C"
