/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Shows how many columns three texts take, each in the character set that it comes in.
 *
 *     cc -std=c11 width.c -o width $(pkg-config --cflags --libs libstr)
 */
#include <platform/ccs.h>
#include <str/str.h>

#include <stdio.h>

static const struct {
    const char *set;
    const char *text;
} samples[] = {
    {"ISO-8859-1", "caf\xE9"},
    {"ISO-2022-JP", "\x1B$B$3$s$K$A$O\x1B(B!"}, /* five kanji-set characters, one ASCII */
    {"UTF8", "na\xC3\xAFve"},
};

int main(void)
{
    for (size_t i = 0; i < sizeof samples / sizeof samples[0]; i++) {
        CSDescriptor cs;
        if (!ccs_GetCSDescriptor(samples[i].set, &cs)) {
            fprintf(stderr, "%s: no such character set\n", samples[i].set);
            return 1;
        }
        printf("%s %u\n", samples[i].set, str_dispstrlen(samples[i].text, &cs));
    }
    return 0;
}
