// SPDX-License-Identifier: Apache-2.0
//
// The notation of bytes in case table sources.
#include <platform/enc.h>
#include <platform/er.h>
#include <platform/os.h>

#include "base/thread_memory.h"

#include <glib.h>

#include <cstring>

using namespace libstr;

namespace
{

constexpr char kSource[] = "services/enc";

// The thread's decoded bytes.
struct Decoded : KeptByThread {
    unsigned char *at;
};
thread_local Decoded theBytes;

void ReleaseBytes(KeptByThread *)
{
    os_free(theBytes.at);
    theBytes.at = nullptr;
}

unsigned char *RoomFor(size_t size)
{
    if (!KeepByThread(&theBytes, ReleaseBytes))
        er_TracedEscape(ER_CLASS_LIBRARY, OS_ESC_MEMORY, kSource, __LINE__);
    return theBytes.at = static_cast<unsigned char *>(os_realloc(theBytes.at, size));
}

constexpr int kMalformed = -1;

// The value of exactly `count` digits of that base at `text`, if it fits in a byte.
int ByteOfDigits(const char *text, int count, int base)
{
    int value = 0;
    for (int i = 0; i < count; ++i) {
        const int digit = g_ascii_xdigit_value(text[i]);
        if (digit < 0 || digit >= base)
            return kMalformed;
        value = value * base + digit;
    }
    return value <= 0xFF ? value : kMalformed;
}

// The byte written down at `text`; `used` receives the characters that it takes.
int ByteAt(const char *text, int *used)
{
    *used = 1;
    if (text[0] != '\\')
        return g_ascii_isprint(text[0]) ? text[0] : kMalformed;
    *used = text[1] == '\\' ? 2 : 4;
    return text[1] == '\\'  ? '\\'
           : text[1] == 'x' ? ByteOfDigits(text + 2, 2, 16)
                            : ByteOfDigits(text + 1, 3, 8);
}

} // namespace

extern "C" {

const unsigned char *enc_ConvertLongEncodedStr(const char *text, int, int *length)
{
    unsigned char *const bytes = RoomFor(std::strlen(text)); // a byte takes a character or more
    int count = 0;
    for (int used; *text != '\0'; text += used) {
        const int byte = ByteAt(text, &used);
        if (byte == kMalformed)
            er_TracedEscape(ER_CLASS_LIBRARY, ENC_ESC_MALFORMED, kSource, __LINE__);
        bytes[count++] = static_cast<unsigned char>(byte);
    }
    *length = count;
    return bytes;
}

} // extern "C"
