/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Divides a text into lines of at most 5 columns. Each line can be read by itself.
 *
 *     cc -std=c11 split.c -o split $(pkg-config --cflags --libs libstr)
 */
#include <platform/ccs.h>
#include <str/str.h>

#include <stdio.h>
#include <string.h>

int main(void)
{
    CSDescriptor cs;
    if (!ccs_GetCSDescriptor("ISO-2022-JP", &cs))
        return 1;
    char text[200] = "\x1B$B$*Ld$$9g$o$;\x1B(B No.20417"; /* 6 kanji and kana, 9 of ASCII */

    char *first, *rest;
    unsigned int firstLen, restLen;
    while ((first = str_SplitByDispLen(text, 5, &rest, &firstLen, &restLen, &cs)) != NULL) {
        printf("%u columns in %u bytes\n", str_dispstrlen(first, &cs), firstLen);
        strcpy(text, rest != NULL ? rest : ""); /* the next split overwrites `rest` */
    }
    return 0;
}
/* prints:
 * 5 columns in 13 bytes
 * 5 columns in 12 bytes
 * 5 columns in 5 bytes
 */
