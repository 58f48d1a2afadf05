/* SPDX-License-Identifier: Apache-2.0 */
/*
 * ccs_: coded character sets.  Tells the library how a text divides into segments, how long the
 * units inside a segment are, what properties a set has, which escape sequences to emit, and which
 * case table serves a set.  The library decodes no escape sequence itself.
 *
 * A host replaces any function by linking its own definition.  Those that share state go together:
 * the walk with the model escapes, the case table registration with its look-up.
 *
 * Texts.  The descriptor `cs` of a function that takes a whole text is the string's own; the length
 * services take the descriptor of one segment: csNum is the segment's kind, escMode the string's.
 * What is asked of a set alone (its flags, name, number, designation, case table) depends on csNum
 * alone, as escMode may not have been filled in.  Descriptors and texts are only read and nothing
 * keeps a pointer to them.
 *
 * Limits.  `length` is the number of bytes to consider, negative for up to the NUL.  `at` points at
 * a byte and `avail` bytes may be looked at, that byte included.  A NUL ends the text in every
 * case: even inside a character or an escape sequence, and when `length` or `avail` reach beyond
 * it.  No byte after the NUL or the limit is ever read.
 *
 * Results that are pointers belong to the service and are not released.  Texts that depend on a set
 * alone last as long as the process; for the others it is said how long.
 *
 * Threads: the walk state is the calling thread's in the default service.  Segment lists, case
 * table registration and initialisation are process-wide, without a lock.
 *
 * Escapes: in the default service the list functions raise OS_ESC_MEMORY of class
 * ER_CLASS_LIBRARY when they have no memory, or more than INT_MAX records.  They and the walk raise
 * it for a segment of 2^32 bytes and more, whose length they cannot tell.  In a replacement any
 * function may raise an escape; the library passes it on or handles it.
 */
#ifndef PLATFORM_CCS_H
#define PLATFORM_CCS_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- Segments ------------------------------------------------------------------------------
 *
 * Segments cover every byte of the text exactly once, in order, and none is empty.  Their kinds:
 *
 * - the number of a set: whole characters of that set, with controls between them.  US and every
 *   other control that switches no set belongs, as space and DEL do, to the set of the left half.
 *   In T.61 that is IA5, for all that means there what it does in ASCII.  T.61 itself (103) has the
 *   letters of the right half, and marks with their base letters; T.61 PRIMARY (102) has the bytes
 *   of the left half that are not ASCII.
 * - CS_SEG_IGNORE: one escape sequence, control sequence (CSI) or locking shift, whole.  A sequence
 *   that the limit or the NUL cuts off ends there.  Also a single shift that shifts no character.
 * - CS_SEG_RAW: bytes that cannot be characters.  A lead byte without its trail, a mark without its
 *   base, bytes of an unknown or empty designation; everything, when the text's own set is unknown.
 *
 * A single shift (SS2, SS3) switches for one character only.  It is in the segment of the character
 * that it shifts, as a control of its own, and is never parted from it.
 *
 * Where escMode is 0, ESC, SO, SI and CSI are controls in the text.  ESC N and ESC O are single
 * shifts that shift nothing, except in UTF-8 and in sets with CS_FLAG_BYTE.  A string of a set with
 * CS_FLAG_BYTE that has a right half is then one segment, whatever its bytes.
 */

/* Begins a walk at `text`, in the initial state of a string of `cs`, and returns the kind of the
 * first segment.  `segmentLength` receives its bytes.  At the end of the text, which for an empty
 * one is at once, returns CS_SEG_END and length 0. */
uint16_t ccs_Get1stStr(const CSDescriptor *cs, const char *text, int length,
                       unsigned int *segmentLength);

/* Goes on with the walk that this thread began last: the state is the one left by the segment
 * before.  The caller has moved `text` past that segment and taken its bytes off `length`, unless
 * that is negative.  Result as above. */
uint16_t ccs_GetNextStr(const CSDescriptor *cs, const char *text, int length,
                        unsigned int *segmentLength);

/* The segments that a walk would return, as a list, contiguous and ended by a record of kind
 * CS_SEG_END; `count` receives the number of records, that one included.  Never null.  The next
 * request for a list, of either sort and by any thread, overwrites it; a caller that needs two at
 * once copies the first.  Leaves the thread's walk as it is. */
CSSegment *ccs_GetAllStrs(const CSDescriptor *cs, const char *text, int length, int *count);

/* The same without the records of kind CS_SEG_IGNORE and CS_SEG_NONE: what pattern matching works
 * on.  Null, with `count` 0, when the text cannot be divided into segments at all. */
CSSegment *ccs_GetRealStrs(const CSDescriptor *cs, const char *text, int length, int *count);

/* ---- Units inside a segment ----------------------------------------------------------------
 *
 * A unit is a control function or a character.  Space (0x20) and DEL (0x7F) are units of one byte,
 * of which nobody asks.  A length service returns 0, "cannot be told", when the unit does not fit
 * in `avail` or the NUL cuts it; never a length that would cut a unit.  The caller then stops.
 * Asked of each unit of a segment in turn, the services end where the segment does.
 */

/* The bytes of the control function at `at`, a byte whose low seven bits are below 0x20.  For a
 * single shift its own 1 or 2 bytes (SS2 as 0x8E or as ESC N), but only when the character after it
 * fits in `avail` too: the two never part.  Where escMode is 0, every other control function is 1
 * byte, ESC and CSI as well. */
int ccs_GetCtrlLen(const char *at, unsigned int avail, const CSDescriptor *cs);

/* The bytes of every character of a set without CS_FLAG_T61: at least 1, and 1 for raw bytes.
 * Since segments hold whole characters, nobody checks it against the segment's end. */
int16_t ccs_GetNumBytes(const CSDescriptor *cs);

/* The bytes of the base unit at `at` in a set with CS_FLAG_T61: the marks that stand before a base
 * character, and that character.  `at` points at neither control, space nor DEL.  In a set that has
 * CS_FLAG_ASCII_SUPERSET too, a unit that begins with a byte below 0x80 has that byte alone. */
int ccs_GetT61BaseUnitLen(const char *at, unsigned int avail, const CSDescriptor *cs);

/* `length` receives the bytes of the unit at `at`, of any sort, in a set of any sort.  With an
 * `avail` of at least 1 and a byte other than NUL that is at least 1, so that a comparison always
 * moves on: of a unit that is cut off, what there is of it is a unit.  Otherwise it is 0.
 *
 * Comparisons pass an escMode of 0 whatever that of the string.  ESC N and ESC O are therefore
 * single shifts in every set except UTF-8 and the sets with CS_FLAG_BYTE that have a designation,
 * where each byte is a character.
 *
 * Returns non-zero when the unit counts as a character, in limits given in characters; 0 when it
 * does not, such as a single shift, whose character counts. */
int ccs_GetNextCharLen(const char *at, int avail, int *length, const CSDescriptor *cs);

/* ---- Properties of a set ------------------------------------------------------------------- */

/* The CS_FLAG_... of the set; 0 for a number that is no set's. */
uint32_t ccs_GetCSFlags(const CSDescriptor *cs);

/* The set's name; empty, never null, for a number that is no set's.  "UTF8" says that a string is
 * UTF-8, and no other set may have that name. */
const char *ccs_GetCSName(const CSDescriptor *cs);

/* Stores the descriptor of a string in the set named `setName`, spelled exactly so, and returns 1.
 * For an unknown name returns 0, and `out` is {0, 0}, whose strings are raw throughout. */
int ccs_GetCSDescriptor(const char *setName, CSDescriptor *out);

/* An escape sequence that designates the set; null or empty when it has none.  `which` chooses
 * among several; the library passes 1.  Its last byte orders texts of different sets. */
const char *ccs_GetDesignation(const CSDescriptor *cs, int which);

/* The number of the set in force where a string says nothing else; the library passes 0 and uses
 * the answer for a string that ends without a text segment.  What is stored through `out` is the
 * service's own; the library does not read it. */
uint16_t ccs_GetCP(int which, uint32_t *out);

/* ---- Escape sequences to emit -------------------------------------------------------------- */

/* The escape sequences that, at the start of a string, bring about the state in which the last walk
 * of this thread stopped: where the last segment that it returned ends.  Put before the rest of a
 * split text, they make it stand alone.  A single shift is among them where it makes the next byte
 * raw.  `length` receives their bytes: 0 to 81, none of them NUL; no NUL need follow them.  Never
 * null; overwritten by the next call in the same thread. */
const char *ccs_GetModelEscapes(int *length);

/* The escape sequences that switch a string of `cs`, which the last walk of this thread walked to
 * its end, back to the state in which strings of the set begin and ASCII text reads as such.
 * `escMode` is that of `cs`.  `length` receives their bytes, without the NUL that ends them.  Never
 * null, empty where none are needed; overwritten by the next call in the same thread. */
const char *ccs_GetConfAsciiEscs(const CSDescriptor *cs, int escMode, int *length);

/* ---- Case tables --------------------------------------------------------------------------- */

/* 0 until ccs_DoInitTables has run, then non-zero. */
extern int InitTabsDone;

/* Readies the service's tables and sets InitTabsDone.  Every other function works before it too;
 * a second call does nothing. */
void ccs_DoInitTables(void);

/* The number under which the set's case table is filed: N in the file names N.s and N.b. */
int ccs_GetCSNumber(const CSDescriptor *cs);

/* The service's table of sets, and in `companion` a number that goes with it.  Both are opaque and
 * may be null and 0: the library hands them to ccs_PutToUpperByCSNum and does nothing else. */
void *ccs_GetCSTable(int32_t *companion);

/* Registers the record number `recordNumber` for the set whose case table is filed under
 * `setNumber`, in place of an earlier one; 0 for none.  Record numbers count from 1.  A set number
 * that the service does not know is ignored. */
void ccs_PutToUpperByCSNum(int setNumber, uint16_t recordNumber, int32_t companion, void *csTable);

/* The record number registered for the set, 0 when there is none yet. */
uint16_t ccs_GetToUpperTable(const CSDescriptor *cs);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
