/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Coded character sets.  Begin here: nearly every function takes a CSDescriptor, which says how a
 * text is coded.  From examples/descriptor.c:
 *
 *     CSDescriptor cs;
 *     if (!ccs_GetCSDescriptor("T.61", &cs))
 *         return 1;
 *     printf("%u columns\n", str_dispstrlen("Ren\xC2\x65", &cs));
 *
 * ccs_GetCSDescriptor, in <platform/ccs.h>, looks a set up by its exact name.  It stores the
 * descriptor and returns 1, or returns 0 when no set has that name.  `strtool sets` lists the
 * names; a program lists them with ccs_GetSetInfo, in <services/services.h>.
 *
 * A text is a NUL-terminated byte string.  The character set service (platform/ccs.h) divides it
 * into segments: runs of bytes of one set.  Each escape or control sequence between them is a
 * segment too.  The functions work on segments, so they do not cut a character or an escape
 * sequence unless their header says so.
 *
 * Traces, memory, files and locks come from services too.  Each service may raise an escape: a jump
 * out of the function (platform/er.h).  The headers say which escapes a function may raise.
 */
#ifndef STR_CHARSET_H
#define STR_CHARSET_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* How a string is coded.  The caller owns it and passes its address; the library only reads it. */
typedef struct CSDescriptor {
    uint16_t csNum;   /* number of the string's character set, 1 to 0x7FFF */
    uint16_t escMode; /* 0: the string has no escape sequences */
} CSDescriptor;

/* One segment of a string, in the lists that the character set service returns.  The last record of
 * a list has the kind CS_SEG_END; the count of a list includes it. */
typedef struct CSSegment {
    const char *text;  /* first byte, inside the string */
    uint16_t kind;     /* number of the set, or one of CS_SEG_... */
    uint16_t reserved; /* not used */
    uint32_t length;   /* bytes */
} CSSegment;

/* Kinds of segments that are not the number of a set. */
#define CS_SEG_NONE 0        /* a run without characters, treated as CS_SEG_IGNORE */
#define CS_SEG_IGNORE 0xFFFD /* escape or control sequence: no width, kept or dropped whole */
#define CS_SEG_RAW 0xFFFE    /* bytes of no known set: a column each, equal only to raw bytes */
#define CS_SEG_END 0xFFFF    /* the end of the text */

/* Properties of a set, as ccs_GetCSFlags returns them. */
#define CS_FLAG_BYTE 0x001           /* every byte is one character */
#define CS_FLAG_ASCII 0x002          /* an ASCII set: equivalent to every other with this flag */
#define CS_FLAG_ASCII_SUPERSET 0x004 /* has the ASCII characters at their ASCII codes */
#define CS_FLAG_CASE 0x010           /* has a case table */
#define CS_FLAG_T61 0x100            /* characters are base units: marks come before their letter */
#define CS_FLAG_UNIFORM 0x400        /* the string's own case table serves all its segments */
#define CS_FLAG_ESCAPES 0x800        /* strings switch sets by escape sequences */
#define CS_FLAG_NO_C1 0x1000         /* 0x80 to 0x9F are characters, not control functions */

#ifdef __cplusplus
}
#endif
#endif
