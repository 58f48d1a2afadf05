/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A host that replaces one reader of texts by one that is wrong: by FIRST every text is raw, by
 * LENGTH every base unit has one byte, by FLAGS every set is like T.61 without its marks.  Prints
 * the columns that the library counts: 3, and 2 by the default services.
 */
#include <platform/ccs.h>
#include <str/display.h>

#include <stdio.h>
#include <string.h>

#ifdef FIRST
uint16_t ccs_Get1stStr(const CSDescriptor *cs, const char *text, int length, unsigned int *size)
{
    (void)cs;
    (void)length;
    *size = (unsigned int)strlen(text);
    return *size != 0 ? CS_SEG_RAW : CS_SEG_END;
}

uint16_t ccs_GetNextStr(const CSDescriptor *cs, const char *text, int length, unsigned int *size)
{
    return ccs_Get1stStr(cs, text, length, size);
}
#elif defined(LENGTH)
int ccs_GetT61BaseUnitLen(const char *at, unsigned int avail, const CSDescriptor *cs)
{
    return at != NULL && avail != 0 && cs != NULL;
}
#elif defined(FLAGS)
uint32_t ccs_GetCSFlags(const CSDescriptor *cs) { return cs != NULL ? CS_FLAG_ESCAPES : 0; }
#endif

int main(void)
{
    CSDescriptor cs;
    if (!ccs_GetCSDescriptor("T.61", &cs))
        return 1;
    printf("%u\n", str_dispstrlen("R\xC2\x65", &cs));
    return 0;
}
