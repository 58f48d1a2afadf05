/* SPDX-License-Identifier: Apache-2.0 */
/*
 * ccs_: coded character sets.  The service says how a text divides into segments, how long the
 * units inside a segment are, what properties a set has, which escape sequences to emit, and which
 * case table serves a set.  The library itself decodes no escape sequence.
 *
 * A host replaces any function by linking its own definition.  Functions that share state are
 * replaced together: the walk with the model escapes, the registration of case tables with its
 * look-up.
 *
 * Texts.  A function that takes a whole text takes the string's own descriptor `cs`.  The length
 * services take the descriptor of one segment: csNum is the segment's kind, escMode the string's.
 * The properties of a set (its flags, name, number, designation, case table) depend on csNum only,
 * since escMode may not have been filled in.  Descriptors and texts are only read, and no pointer
 * to them is kept.
 *
 * Limits.  `length` is the number of bytes to consider, negative for up to the NUL.  `at` points at
 * a byte; `avail` bytes may be looked at, that byte included.  A NUL always ends the text, even
 * inside a character or an escape sequence, and when `length` or `avail` reaches beyond it.  No
 * byte after the NUL or the limit is ever read.
 *
 * Pointers that are returned belong to the service; the caller does not release them.  Texts that
 * depend only on a set last as long as the process; each other function says how long its text
 * lasts.
 *
 * Threads: any number at once in the default service, where the walk state and the segment list are
 * the calling thread's.  The library calls ccs_DoInitTables and ccs_PutToUpperByCSNum in one thread
 * at a time, while others read what is registered.  A replacement that cannot be called by several
 * threads at once limits the functions of the library that call it.
 *
 * Escapes: in the default service the list functions raise OS_ESC_MEMORY of class ER_CLASS_LIBRARY
 * when memory runs out or there would be more than INT_MAX records.  They and the walks also raise
 * it for a segment of 2^32 bytes or more, whose length the interface cannot hold.  In a replacement
 * any function may raise an escape; the library passes it on or handles it.
 */
#ifndef PLATFORM_CCS_H
#define PLATFORM_CCS_H

#include <str/charset.h>

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- Segments ------------------------------------------------------------------------------
 *
 * Segments cover every byte of the text exactly once, in order, and none is empty.  Their kinds:
 *
 * - the number of a set: whole characters of that set, with controls between them.  Space, DEL, US
 *   and every other control that does not switch sets belong to the set of the left half.  In T.61
 *   every byte that means what it means in ASCII is IA5.  T.61 itself (103) has the letters of the
 *   right half, and marks with their base letters.  T.61 PRIMARY (102) has the bytes of the left
 *   half that are not ASCII.
 * - CS_SEG_IGNORE: one whole escape sequence, control sequence (CSI) or locking shift.  A sequence
 *   that the limit or the NUL cuts off ends there.  Also a single shift that shifts no character.
 * - CS_SEG_RAW: bytes that cannot be characters.  A lead byte without its trail, a mark without its
 *   base, bytes of an unknown or empty designation; everything, when the text's own set is unknown.
 *
 * A single shift (SS2, SS3) switches for one character only.  It is in the same segment as the
 * character that it shifts, as a control of its own, and is never separated from it.
 *
 * Where escMode is 0, ESC, SO, SI and CSI are controls in the text.  ESC N and ESC O are single
 * shifts that shift nothing, except in UTF-8 and in sets with CS_FLAG_BYTE.  If a set with
 * CS_FLAG_BYTE has a right half, a string of it is then one segment, whatever its bytes.
 */

/* Begins a walk at `text`, in the initial state of a string of `cs`, and returns the kind of the
 * first segment.  `segmentLength` receives its length in bytes.  Returns CS_SEG_END and length 0 at
 * the end of the text, at once if the text is empty. */
uint16_t ccs_Get1stStr(const CSDescriptor *cs, const char *text, int length,
                       unsigned int *segmentLength);

/* Continues the walk that this thread began last, in the state after the segment before.  The
 * caller has moved `text` past that segment and subtracted its bytes from `length`, unless `length`
 * is negative.  Result as above. */
uint16_t ccs_GetNextStr(const CSDescriptor *cs, const char *text, int length,
                        unsigned int *segmentLength);

/* The segments that a walk would return, as a contiguous list that ends with a record of kind
 * CS_SEG_END; `count` receives the number of records, that one included.  Never null.  The next
 * call of this function or the next in the same thread overwrites the list; a caller that needs two
 * lists copies the first.  The thread's walk stays as it is. */
CSSegment *ccs_GetAllStrs(const CSDescriptor *cs, const char *text, int length, int *count);

/* The same without the records of kind CS_SEG_IGNORE and CS_SEG_NONE, for pattern matching.  Null,
 * with `count` 0, when the text cannot be divided into segments. */
CSSegment *ccs_GetRealStrs(const CSDescriptor *cs, const char *text, int length, int *count);

/* ---- Walks of the caller's -----------------------------------------------------------------
 *
 * An optional, faster way to read a text.  The state is in the caller's hands, so any number of
 * walks may be under way at once, in any thread.  A host need not define these functions.
 * Without them, or when ccs_BeginWalk refuses, the library reads the text with the functions above
 * and below.
 */

/* A walk.  The caller owns it and may copy it: the copy goes on by itself.  It needs no release.
 * The text must stay as it is meanwhile; the descriptor need not. */
typedef struct CSWalk {
    const char *at;           /* the next byte; moved by the functions */
    unsigned char state[232]; /* the service's */
} CSWalk;

/* What a caller would otherwise read texts with. */
typedef struct CSReaders {
    uint16_t (*get1stStr)(const CSDescriptor *, const char *, int, unsigned int *);
    uint16_t (*getNextStr)(const CSDescriptor *, const char *, int, unsigned int *);
    CSSegment *(*getAllStrs)(const CSDescriptor *, const char *, int, int *);
    CSSegment *(*getRealStrs)(const CSDescriptor *, const char *, int, int *);
    int (*getCtrlLen)(const char *, unsigned int, const CSDescriptor *);
    int16_t (*getNumBytes)(const CSDescriptor *);
    int (*getT61BaseUnitLen)(const char *, unsigned int, const CSDescriptor *);
    int (*getNextCharLen)(const char *, int, int *, const CSDescriptor *);
    uint32_t (*getCSFlags)(const CSDescriptor *);
    const char *(*getModelEscapes)(int *);
    const char *(*getConfAsciiEscs)(const CSDescriptor *, int, int *);
} CSReaders;

/* Begins a walk at `text` in the initial state of a string of `cs`.  Returns 1, or 0 when a walk
 * does not say what `readers` say; the caller then reads with them.  The default service refuses
 * all readers but its own, so a host that replaces one of them is asked wherever it would be.
 * A service that returns 1 divides a text whose escMode is not 0 in the same way when an ASCII
 * letter of a segment of text, other than one right after ESC, is replaced by another.  In its sets
 * with CS_FLAG_ESCAPES a text of bytes below 0x80 without ESC, SO and SI is one segment of ASCII, if
 * it has none of the bytes that ISO 646 leaves to national variants. */
int ccs_BeginWalk(CSWalk *walk, const CSDescriptor *cs, const char *text, int length,
                  const CSReaders *readers);

/* The next segments, as ccs_GetNextStr returns them: stores at most `max`, at least 1, and returns
 * how many; 0 at the end of the text.  After a part of a segment, the rest of it is a segment. */
int ccs_NextSegments(CSWalk *walk, CSSegment *out, int max);

/* What a walk has passed over. */
typedef struct CSMeasure {
    size_t bytes;
    size_t columns; /* displayed characters: neither control functions nor DEL; raw bytes are */
    size_t shown;   /* the bytes of these, without single shifts */
    size_t lines;   /* line feeds that are control functions */
} CSMeasure;

/* Passes over the next characters, control functions and sequences: as many as end within `bytes`,
 * and none after the one with which columns and lines together reach `columns`.  A single shift is
 * passed together with its character.  Reads little more than it passes; SIZE_MAX is no limit. */
void ccs_MeasureText(CSWalk *walk, size_t bytes, size_t columns, CSMeasure *out);

/* Writes the escape sequences that belong to the place that the walk has reached, and returns their
 * number of bytes, 0 to 81; adds no NUL.  With `closing` 0 those of ccs_GetModelEscapes, else those
 * of ccs_GetConfAsciiEscs.  Not after ccs_NextSegments with a `max` above 1. */
int ccs_GetWalkEscapes(const CSWalk *walk, int closing, char *out);

/* As ccs_GetWalkEscapes with `closing`, or -1 if a text may not end here.  It may if a letter of
 * ASCII, put right here, would not be read together with bytes before it, and, put after the
 * escapes, is read as at the beginning of a string.  After ccs_MeasureText only. */
int ccs_CloseWalk(const CSWalk *walk, char *out);

/* ---- Units inside a segment ----------------------------------------------------------------
 *
 * A unit is a control function or a character.  Space (0x20) and DEL (0x7F) are units of one byte;
 * the length services are not called for them.  A length service returns 0 when the unit does not
 * fit in `avail` or the NUL cuts it, and the caller then stops; it never returns a length that
 * would cut a unit.  Called for each unit of a segment in turn, the services end where the segment
 * ends.
 */

/* The bytes of the control function at `at`, a byte whose low seven bits are below 0x20.  In a set
 * with CS_FLAG_NO_C1 a byte from 0x80 to 0x9F is a character, for which it is not called.  For a
 * single shift its own 1 or 2 bytes (SS2 is 0x8E or ESC N), but only when the character after it
 * fits in `avail` too, since the two are never separated.  Where escMode is 0, every other control
 * function is 1 byte, even ESC and CSI. */
int ccs_GetCtrlLen(const char *at, unsigned int avail, const CSDescriptor *cs);

/* The bytes of every character of a set without CS_FLAG_T61: at least 1, and 1 for raw bytes.
 * Segments hold whole characters, so the result is not checked against the segment's end. */
int16_t ccs_GetNumBytes(const CSDescriptor *cs);

/* The bytes of the base unit at `at` in a set with CS_FLAG_T61: a base character and the marks
 * before it.  `at` does not point at a control, space or DEL.  In a set that has
 * CS_FLAG_ASCII_SUPERSET too, a unit that begins with a byte below 0x80 is that byte only. */
int ccs_GetT61BaseUnitLen(const char *at, unsigned int avail, const CSDescriptor *cs);

/* `length` receives the bytes of the unit at `at`, of any sort, in a set of any sort.  If `avail`
 * is at least 1 and the byte is not NUL, it is at least 1, so that a comparison always moves on:
 * the rest of a unit that is cut off is a unit too.  Otherwise it is 0.
 *
 * Comparisons always pass an escMode of 0, whatever the string's is.  ESC N and ESC O are therefore
 * single shifts in every set except UTF-8 and the sets with CS_FLAG_BYTE that have a designation,
 * where each byte is a character.
 *
 * Returns non-zero when the unit counts as a character in a limit given in characters.  Returns 0
 * when it does not, as for a single shift: the character after it counts. */
int ccs_GetNextCharLen(const char *at, int avail, int *length, const CSDescriptor *cs);

/* ---- Properties of a set ------------------------------------------------------------------- */

/* The CS_FLAG_... of the set; 0 for an unknown number. */
uint32_t ccs_GetCSFlags(const CSDescriptor *cs);

/* The set's name; empty, never null, for an unknown number.  "UTF8" means that a string is UTF-8;
 * no other set may have that name. */
const char *ccs_GetCSName(const CSDescriptor *cs);

/* Stores the descriptor of a string in the set named `setName` and returns 1.  The name is exactly
 * the set's, or else, in the default service, another name of it: case, hyphens, underscores and
 * spaces do not matter then.  For an unknown name returns 0 and stores {0, 0}, with which every
 * string is raw. */
int ccs_GetCSDescriptor(const char *setName, CSDescriptor *out);

/* An escape sequence that designates the set; null or empty when there is none.  `which` chooses
 * among several; the library passes 1.  Its last byte puts texts of different sets in order. */
const char *ccs_GetDesignation(const CSDescriptor *cs, int which);

/* The number of the set in force where a string does not say which; the library passes 0 and uses
 * the result for a string that ends without a text segment.  `out` receives a value of the
 * service's own, which the library does not read. */
uint16_t ccs_GetCP(int which, uint32_t *out);

/* ---- Escape sequences to emit -------------------------------------------------------------- */

/* The escape sequences that, at the start of a string, restore the state after the last segment
 * that this thread's walk returned.  Put before the second part of a split text, they let it be
 * read without the first.  They end with a single shift where one makes the next byte raw.
 * `length` receives their number of bytes, 0 to 81.  They contain no NUL and need not end with one.
 * Never null; overwritten by the next call in the same thread. */
const char *ccs_GetModelEscapes(int *length);

/* The escape sequences that bring a string of `cs` back to the state in which strings of the set
 * begin, so that ASCII text after them is read as ASCII.  This thread's last walk must have read
 * the string to its end.  `escMode` is that of `cs`.  `length` receives their number of bytes,
 * without the NUL at their end.  Never null, empty where none are needed; overwritten by the next
 * call in the same thread. */
const char *ccs_GetConfAsciiEscs(const CSDescriptor *cs, int escMode, int *length);

/* ---- Case tables --------------------------------------------------------------------------- */

/* 0 until ccs_DoInitTables has run, then non-zero. */
extern int InitTabsDone;

/* Prepares the service's tables and sets InitTabsDone.  Every other function works before it too;
 * a second call does nothing. */
void ccs_DoInitTables(void);

/* The number of the set's case table: N in the file names N.s and N.b. */
int ccs_GetCSNumber(const CSDescriptor *cs);

/* The service's table of sets; `companion` receives a number that belongs to it.  Both are opaque
 * and may be null and 0: the library only hands them to ccs_PutToUpperByCSNum. */
void *ccs_GetCSTable(int32_t *companion);

/* Registers the record number `recordNumber` for the set whose case table has the number
 * `setNumber`, in place of an earlier one; 0 for none.  Record numbers count from 1.  Does nothing
 * for a number that the service does not know. */
void ccs_PutToUpperByCSNum(int setNumber, uint16_t recordNumber, int32_t companion, void *csTable);

/* The record number registered for the set; 0 when there is none yet. */
uint16_t ccs_GetToUpperTable(const CSDescriptor *cs);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
