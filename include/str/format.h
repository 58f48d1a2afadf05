/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Formatting: printf for texts that switch sets.
 *
 * Directives are looked for only in segments of sets that hold ASCII at its codes
 * (CS_FLAG_ASCII_SUPERSET), so that a byte 0x25 inside another character is never taken for a '%'.
 *
 * In a set with CS_FLAG_ESCAPES, a string argument is followed by the escape sequences that switch
 * back to the beginning of such a text, in ASCII, when its last segment is of raw bytes or of a set
 * that does not hold ASCII.  The kind of the last segment decides.  A string that ends in a bare
 * escape sequence, such as one that str_strlcpy has cut, counts as one of the set that ccs_GetCP
 * tells: with the default services ASCII, so nothing follows it, and what comes next may be read in
 * the wrong set.
 *
 * A precision cuts a string after so many bytes, none of which may then be a NUL; bytes after them
 * are not read, so the string need not end there.  What is kept is whole characters only: a
 * character or escape sequence that the cut may have gone through is left out, and so are escape
 * sequences that are left without a character after them.  What follows is decided by what is kept.
 * In a plain single-byte set (CS_FLAG_BYTE without CS_FLAG_T61) every byte is kept.
 *
 * A directive is '%', a position with '$', flags (- + space # 0 '), width, precision, size (h, hh,
 * l or L) and a conversion, of which only '%' and the conversion have to be there:
 *
 *     d i o u x X    an int, with h a short, with l a long
 *     c              an int, printed as one byte; 0 prints nothing
 *     e E f g G      a double, with L a long double
 *     s              a string in the set of the format; null reads "(null)"
 *     P              a pointer, printed like %p
 *     n              a pointer; prints nothing, and nothing is written through it
 *     %              no argument; the directive is text, so that %% prints both signs
 *
 * Except for what is said here, all print what printf prints.  Other bytes in a directive are
 * passed over: p, a, F, j, z, t and q are not conversions or sizes, and ll is l.
 *
 * Arguments are numbered from 1 to 49.  A directive without a position takes the number after that
 * of the directive before it, and each '*' in it one more, before the value; %% takes a number too,
 * which no argument has.  A position is one character: its code less that of '0' is the number.  A
 * '*' followed by such a character and '$' takes the argument of that number.  A '$' after a
 * conversion is text, as in "%d$".
 *
 * A directive is printed as it is, as text,
 *   - when it has a number outside 1 to 49: PrintfError tells of it;
 *   - when its segment ends before its conversion: PrintfError tells of it;
 *   - when a later directive has a value of the same number;
 *   - when one of its arguments is taken for another type too.
 *
 * Formats, and strings that no precision cuts, are NUL-terminated.  The text is built in a buffer
 * of the library, which the next call that prints, by anyone, overwrites and which is never
 * released.  It grows to twice the longest format and to the longest text so far.  One call at a
 * time may print in a process.
 */
#ifndef STR_FORMAT_H
#define STR_FORMAT_H

#include <str/charset.h>

#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Records of a parameter table, and entries of an array of values: indexed by the number of the
 * argument, so that the first is not used. */
#define STR_PARAMETERS 50

/* Types of arguments. */
#define STR_ARG_UNUSED 0 /* no argument has this number */
#define STR_ARG_SHORT 1  /* passed as an int */
#define STR_ARG_INT 2    /* every width and precision is one */
#define STR_ARG_LONG 3
#define STR_ARG_FLOAT 4 /* passed as a double; no directive has this type */
#define STR_ARG_DOUBLE 5
#define STR_ARG_LONG_DOUBLE 6
#define STR_ARG_POINTER 7 /* of n and P */
#define STR_ARG_NONE 8    /* of %%; in no table */
#define STR_ARG_STRING 9

/* What a format says of one argument. */
typedef struct ParameterRecord {
    int32_t type;         /* STR_ARG_... */
    int32_t isConversion; /* 1: last taken for a value; 0: for a width or precision, or unused */
    /* Of the directive whose value it is, where there is one, though another takes it for a width or
     * precision too; else null and 0: */
    const char *text;   /* its '%', inside the format */
    uint32_t textLen;   /* its bytes, its conversion included */
    int32_t widthParam; /* the number that its '*' names for the width; 0: '*' alone; -1: no '*' */
    int32_t precParam;  /* the same for the precision */
} ParameterRecord;

/* Set to 1 where a directive cannot be taken (see above).  The library never clears it. */
extern char PrintfError;

/* Scans `format`, whose segments are the `count` records that ccs_GetAllStrs lists, the last one
 * included, and describes its arguments in `table`, which has STR_PARAMETERS records.  Returns the
 * highest number that an argument has, 0 for none; records beyond it are not all written.  Where a
 * number is taken more than once, the last time counts.  The table points into the format and lasts
 * as long as that.  Keeps nothing.  The library raises no escape here; one that a service raises
 * passes through. */
uint16_t str_GetParams(const CSDescriptor *cs, const char *format, const CSSegment *segments,
                       int count, ParameterRecord *table);

/* Builds the text of `format` with the directives of `table` replaced by their arguments.  `table`
 * and `maxParam` are what str_GetParams made of this very format.  The arrays have a value for
 * every argument, at its number and in the array of its type (STRING is a pointer too); all other
 * entries need not be filled in.
 *
 * Returns the text, in the buffer of the library, and stores its bytes without the NUL in
 * `*outLen`; null and 0 when there is none.
 *
 * When memory cannot be had, which includes a text of nearly INT_MAX bytes and a value that the C
 * library cannot format, that escape, of class 3, ends here, and so does one of the services that
 * look at the strings: the result is the text up to the directive where it arose.  An escape of
 * another class goes on to the caller's environment. */
char *str_buildpfstring(const CSDescriptor *cs, unsigned int *outLen, const char *format,
                        const ParameterRecord *table, int maxParam, const short *shorts,
                        const int *ints, const long *longs, const float *floats,
                        const double *doubles, const long double *longDoubles,
                        void *const *pointers);

/* Print to a stream, to standard output, and to `dest`, which has room for the text and its NUL.
 * The arguments follow the format in the order of their numbers; a number that no directive has
 * takes none.  Return the bytes printed, without the NUL; -1 when the stream did not take all of
 * them, and when there are none: `dest` is then untouched.
 *
 * In a set where every byte is a character (CS_FLAG_BYTE), str_simplefprintf is vfprintf and
 * str_simplesprintf is vsprintf, with all that their formats can say and do.
 *
 * An escape raised while the format is divided into segments goes on to the caller's environment;
 * others as for str_buildpfstring. */
int str_simplefprintf(const CSDescriptor *cs, FILE *stream, const char *format, ...);
int str_simpleprintf(const CSDescriptor *cs, const char *format, ...);
int str_simplesprintf(const CSDescriptor *cs, char *dest, const char *format, ...);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
