/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Coded character sets as libstr sees them.
 *
 * A text is a NUL-terminated byte string together with a CSDescriptor that says how to read it.
 * A service (platform/ccs.h) divides the text into segments: runs of bytes of one set, with the
 * escape and control sequences between them as segments of their own.  Every function of the
 * library works on segments, so none of them ever cuts a character or an escape sequence.
 */
#ifndef STR_CHARSET_H
#define STR_CHARSET_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* How a string is coded.  Passed by pointer, owned by the caller, only read by the library. */
typedef struct CSDescriptor {
    uint16_t csNum;   /* number of the string's character set (1 to 0x7FFF) */
    uint16_t escMode; /* 0: the string holds no escape sequences, so byte operations may apply */
} CSDescriptor;

/* One segment of a string, in the lists that the character set service answers.  A list ends with
 * a record of kind CS_SEG_END, which its count includes. */
typedef struct CSSegment {
    const char *text;  /* first byte, inside the string */
    uint16_t kind;     /* number of the set, or one of CS_SEG_... */
    uint16_t reserved; /* not used */
    uint32_t length;   /* bytes */
} CSSegment;

/* Segment kinds that are not the number of a set. */
#define CS_SEG_NONE 0        /* a run without characters, treated as CS_SEG_IGNORE */
#define CS_SEG_IGNORE 0xFFFD /* escape or control sequence: no width, kept or dropped whole */
#define CS_SEG_RAW 0xFFFE    /* bytes of no known set: a column each, equal only to raw bytes */
#define CS_SEG_END 0xFFFF    /* no further segment */

/* Properties of a set: the word that ccs_GetCSFlags answers. */
#define CS_FLAG_BYTE 0x001           /* every byte is one character */
#define CS_FLAG_ASCII 0x002          /* an ASCII set: equivalent to every other with this flag */
#define CS_FLAG_ASCII_SUPERSET 0x004 /* holds ASCII at its ASCII codes */
#define CS_FLAG_CASE 0x010           /* has a case table */
#define CS_FLAG_T61 0x100            /* characters are base units: marks stand before their base */
#define CS_FLAG_UNIFORM 0x400        /* the string's own case table serves all its segments */
#define CS_FLAG_ESCAPES 0x800        /* strings switch sets by escape sequences */

#ifdef __cplusplus
}
#endif
#endif
