/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Formats a line with a string that ends in kanji, and with one that is cut.
 *
 *     cc -std=c11 printf.c -o printf $(pkg-config --cflags --libs libstr)
 */
#include <platform/ccs.h>
#include <str/str.h>

#include <stdio.h>

int main(void)
{
    CSDescriptor jp, utf8;
    if (!ccs_GetCSDescriptor("ISO-2022-JP", &jp) || !ccs_GetCSDescriptor("UTF8", &utf8))
        return 1;
    const char *word = "\x1B$B2q5D"; /* two kanji; nothing switches back to ASCII */

    char line[80];
    int bytes = str_simplesprintf(&jp, line, "%s (%d)", word, 3); /* adds ESC ( B */
    str_simpleprintf(&utf8, "%d bytes, %u columns\n", bytes, str_dispstrlen(line, &jp));
    str_simpleprintf(&utf8, "[%.3s]\n", "na\xC3\xAFve"); /* 3 bytes would cut the third character */
    return 0;
}
/* prints:
 * 14 bytes, 6 columns
 * [na]
 */
