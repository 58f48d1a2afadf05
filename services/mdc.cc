// SPDX-License-Identifier: Apache-2.0
//
// Functions of the C library under names that a host can replace.
#include <platform/mdc.h>

#include <glib.h>

#include <cstdio>
#include <cstring>

extern "C" {

size_t mdc_strlcpy(char *dest, const char *source, size_t size)
{
    return g_strlcpy(dest, source, size);
}

char *mdc_strchr(const char *text, int ch) { return const_cast<char *>(std::strchr(text, ch)); }

size_t mdc_fwrite(const void *data, size_t size, size_t count, FILE *stream)
{
    return std::fwrite(data, size, count, stream);
}

int mdc_fclose(FILE *stream) { return std::fclose(stream); }

} // extern "C"
