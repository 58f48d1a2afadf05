/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Gets the descriptor of a character set by its name, and measures a text in that set.
 *
 *     cc -std=c11 descriptor.c -o descriptor $(pkg-config --cflags --libs libstr)
 */
#include <platform/ccs.h>
#include <str/str.h>

#include <stdio.h>

int main(void)
{
    CSDescriptor cs;
    if (!ccs_GetCSDescriptor("T.61", &cs))
        return 1;
    printf("%u columns\n", str_dispstrlen("Ren\xC2\x65", &cs)); /* 5 bytes */
    return 0;
}
/* prints:
 * 4 columns
 */
