/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Formatting: printf for texts that switch sets.  From examples/printf.c:
 *
 *     char line[80];
 *     int bytes = str_simplesprintf(&jp, line, "%s (%d)", word, 3);
 *     str_simpleprintf(&utf8, "%d bytes, %u columns\n", bytes, str_dispstrlen(line, &jp));
 *     str_simpleprintf(&utf8, "[%.3s]\n", "na\xC3\xAFve");
 *
 * A directive is found only in segments of sets that have ASCII at its codes
 * (CS_FLAG_ASCII_SUPERSET): a byte 0x25 inside another character is not taken for a '%'.  A
 * directive is '%', a position with '$', flags (- + space # 0 '), width, precision, size (h, hh, l
 * or L) and a conversion.  All but '%' and the conversion are optional.
 *
 *     d i o u x X    an int; with h a short, with l a long
 *     c              an int, printed as one byte; 0 prints nothing
 *     e E f g G      a double; with L a long double
 *     s              a string in the set of the format; null prints "(null)" if that fits
 *     P              a pointer, printed like %p
 *     n              a pointer; prints nothing, and nothing is written through it
 *     %              no argument; the directive is text, so %% prints both signs
 *
 * Otherwise all is as with printf.  Other bytes in a directive are skipped: p, a, F, j, z, t and q
 * are not conversions or sizes, and ll is l.
 *
 * Strings.  In a set with CS_FLAG_ESCAPES, a string may end in a segment of raw bytes, or of a set
 * that does not hold ASCII.  Then escape sequences follow it, which switch back to the state in
 * which such a text begins, in ASCII.  The kind of the last segment decides.  A string that ends in
 * a bare escape sequence, for example because str_strlcpy has cut it, counts as one of the set that
 * ccs_GetCP returns.  With the default services that is ASCII: nothing follows the string, and the
 * next text may be read in the wrong set.
 *
 * The precision of a string is a number of bytes.  Bytes after them are not read, so no NUL need
 * follow; a NUL among them ends the string.  Only whole characters are kept, and only escape
 * sequences that a character follows.  What is kept decides what follows the string.  In a plain
 * single-byte set (CS_FLAG_BYTE without CS_FLAG_T61) every byte is kept.
 *
 * Arguments have the numbers 1 to 49.  A directive without a position takes the number after the
 * one of the directive before it.  Each '*' takes one more, before the value.  %% takes a number
 * too, which no argument has.  A position is one character, whose code minus that of '0' is the
 * number.  A '*' followed by such a character and '$' takes the argument of that number.  A '$'
 * after a conversion is text, as in "%d$".
 *
 * A directive is printed as it is, as text, when
 *   - it has a number outside 1 to 49; PrintfError is set to 1;
 *   - its segment ends before its conversion; PrintfError is set to 1;
 *   - a later directive has a value of the same number;
 *   - one of its arguments is also taken as another type.
 *
 * Formats, and strings without a precision, are NUL-terminated.  The text is built in a buffer of
 * the library.  The thread's next call that prints overwrites it; it is released when the thread
 * ends.  It grows to twice the longest format, and to the longest text so far.
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

/* Records of a parameter table, and entries of an array of values.  The index is the number of the
 * argument, so the first is not used. */
#define STR_PARAMETERS 50

/* Types of arguments. */
#define STR_ARG_UNUSED 0 /* no argument has this number */
#define STR_ARG_SHORT 1  /* passed as an int */
#define STR_ARG_INT 2    /* also every width and precision */
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
    /* The directive that takes this argument as its value, even if another one takes it as a
     * width or precision too; null and 0 when there is none: */
    const char *text;   /* its '%', inside the format */
    uint32_t textLen;   /* its bytes, with the conversion */
    int32_t widthParam; /* the number that its '*' gives for the width; 0: '*' alone; -1: no '*' */
    int32_t precParam;  /* the same for the precision */
} ParameterRecord;

/* Set to 1 when a directive cannot be taken (see above), in any thread.  The library never clears
 * it. */
extern char PrintfError;

/* Whether a directive could not be taken in this thread since it last called this function: returns
 * 1 or 0. */
int str_GetPrintfError(void);

/* Describes the arguments of `format` in `table`, which has STR_PARAMETERS records.  `segments` are
 * the `count` segments of the format as ccs_GetAllStrs lists them, with the last record.
 *
 * Returns the highest number of an argument, 0 for none; not all records after that are written.
 * Where a number is taken more than once, the last time counts.  The table points into the format,
 * and is valid as long as the format is.  Keeps nothing.  The library raises no escape here; an
 * escape of a service passes through. */
uint16_t str_GetParams(const CSDescriptor *cs, const char *format, const CSSegment *segments,
                       int count, ParameterRecord *table);

/* Builds the text of `format`, with the directives of `table` replaced by their arguments.  `table`
 * and `maxParam` are what str_GetParams made of this very format.  For every argument, the array of
 * its type has the value at the index of its number (a STRING is in `pointers`).  Other entries
 * need no value.
 *
 * Returns the text, in the buffer of the library; `*outLen` receives its bytes without the NUL.
 * Null and 0 when the text is empty.
 *
 * An escape of class ER_CLASS_LIBRARY that is raised while directives are replaced ends here; the
 * result is then the text up to that directive.  It is raised when there is no memory (also for a
 * text of nearly INT_MAX bytes, and for a value that the C library cannot format), and by services
 * that look at the strings.  An escape of another class goes on to the caller's environment. */
char *str_buildpfstring(const CSDescriptor *cs, unsigned int *outLen, const char *format,
                        const ParameterRecord *table, int maxParam, const short *shorts,
                        const int *ints, const long *longs, const float *floats,
                        const double *doubles, const long double *longDoubles,
                        void *const *pointers);

/* Print to a stream, to standard output, and to `dest`, which has room for the text and its NUL.
 * The arguments follow the format in the order of their numbers.  A number that no directive has
 * takes no argument.
 *
 * Return the bytes printed, without the NUL.  Return -1 when the stream did not take all of them,
 * and when the text is empty; `dest` is then unchanged.
 *
 * In a set where every byte is a character (CS_FLAG_BYTE), str_simplefprintf is vfprintf and
 * str_simplesprintf is vsprintf: nothing above applies, and %n does write.
 *
 * An escape that is raised while the format is divided into segments goes on to the caller's
 * environment; for others see str_buildpfstring. */
int str_simplefprintf(const CSDescriptor *cs, FILE *stream, const char *format, ...);
int str_simpleprintf(const CSDescriptor *cs, const char *format, ...);
int str_simplesprintf(const CSDescriptor *cs, char *dest, const char *format, ...);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
