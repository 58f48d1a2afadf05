/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Puts a text into a field that is too short for it. No character is cut.
 *
 *     cc -std=c11 truncate.c -o truncate $(pkg-config --cflags --libs libstr)
 */
#include <platform/ccs.h>
#include <str/str.h>

#include <stdio.h>

int main(void)
{
    CSDescriptor cs;
    if (!ccs_GetCSDescriptor("UTF8", &cs))
        return 1;
    const char *name = "Universit\xC3\xA4t"; /* the 10th and the 11th byte are one character */

    char field[11]; /* 10 bytes and a NUL */
    str_strlcpy(field, name, sizeof field, &cs);
    printf("%s, %u bytes\n", field, str_truncstrlen(name, sizeof field - 1, &cs));
    return 0;
}
/* prints:
 * Universit, 9 bytes
 */
