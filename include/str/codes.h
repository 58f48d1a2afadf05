/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Named codes.  An escape has a class and a code (platform/er.h).  A log line has a code.
 *
 * The default services have a message for each code; er_GetCodeText, in <services/services.h>,
 * returns it.  The default services raise OS_ESC_..., ENC_ESC_... and LKF_ESC_....  A host's own
 * services may raise other codes and classes.
 */
#ifndef STR_CODES_H
#define STR_CODES_H

/* ---- Classes of escapes ------------------------------------------------------------------- */

/* The class of every escape that the library and the default services raise. */
#define ER_CLASS_LIBRARY 3

/* An escape of this class ends in str_ToUpper, which then returns null.  Only a host's own services
 * raise it. */
#define ER_CLASS_CONVERSION 5

/* ---- Escapes ------------------------------------------------------------------------------ */

/* Raised while a compiled case table is loaded or written. */
#define STR_ESC_ENDS_TOO_EARLY 23801   /* the file is shorter than its counts say */
#define STR_ESC_NOT_A_CASE_TABLE 23802 /* the file is damaged or has another version */
#define STR_ESC_NOT_GIVEN 23813        /* the file cannot be given to the service account */

/* Raised while the source of a case table is compiled. */
#define STR_ESC_NAME_TOO_LONG 3084   /* the name of the set has more than 39 characters */
#define STR_ESC_NOT_TOUPPER 23805    /* the first word is not TOUPPER */
#define STR_ESC_NOT_CHARSET 23806    /* the second word is not CHARSET */
#define STR_ESC_WORD_MISSING 23807   /* the line ends where a word must follow */
#define STR_ESC_NO_LEFT_SIDE 23808   /* the rule has no left side */
#define STR_ESC_NO_RIGHT_SIDE 23809  /* the rule has no right side */
#define STR_ESC_LEFT_TOO_LONG 23810  /* the left side: over 2 bytes, or 19 characters of source */
#define STR_ESC_RIGHT_TOO_LONG 23811 /* the right side: the same */
#define STR_ESC_NO_HEADER 23812      /* the source has no header */
#define STR_ESC_NO_OPERATOR 23814    /* the rule has no operator */

/* Raised by the default services.  The library raises OS_ESC_MEMORY too, for a length that its
 * interface cannot express. */
#define OS_ESC_MEMORY 24001     /* there is not enough memory */
#define OS_ESC_FILE 24002       /* a file or directory cannot be opened, read, written or locked */
#define ENC_ESC_MALFORMED 24003 /* the text does not follow the notation */
#define LKF_ESC_TIMEOUT 24004   /* the lock was not granted in time */

/* ---- Log lines ---------------------------------------------------------------------------- */

/* After the colon: the arguments of the line. */
#define STR_LOG_NO_TABLE 200       /* a case table cannot be read: the name of its source */
#define STR_LOG_NOT_COMPILED 23803 /* a source cannot be compiled: its name, the line number */
#define STR_LOG_GIVEN_UP 23816     /* an escape ended the work on a text */
#define STR_LOG_INVALID_UTF8 24070 /* the input is not UTF-8: it, from its first bad byte on */

#endif
