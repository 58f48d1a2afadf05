/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Compares a name in two character codes, with and without regard to case.
 *
 *     cc -std=c11 compare.c -o compare $(pkg-config --cflags --libs libstr)
 */
#include <platform/ccs.h>
#include <str/str.h>

#include <stdio.h>

int main(void)
{
    CSDescriptor t61, cyrillic;
    if (!ccs_GetCSDescriptor("T.61", &t61) || !ccs_GetCSDescriptor("ISO-8859-5", &cyrillic))
        return 1;
    const char *entry = "\x1B-L\x1B~\xB0\xDD\xE2\xDE\xDD"; /* switches to Cyrillic */
    const char *file = "\xB0\xBD\xC2\xBE\xBD";             /* the same in capitals */

    if (str_strcmp3(entry, file, &t61, &cyrillic) != 0)
        puts("not the same");
    if (str_strucasecmp3(entry, file, &t61, &cyrillic) == 0)
        puts("the same except for case");
    return 0;
}
/* prints:
 * not the same
 * the same except for case
 */
