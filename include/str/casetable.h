/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Case tables: how text of one character set is turned into upper case.
 *
 * A table is written as a small text file, compiled into a record and a binary file on first use,
 * and loaded from that file ever after.  A process keeps its tables in a registry that grows with
 * the sets it uses (str_InitCaseTables); a server can publish the tables of all sets through shared
 * memory instead, to processes that attach the image (str_AttachSMem).  Most programs call nothing
 * of this: upper-casing and comparison find their tables by themselves.
 *
 * A record has one layout in the file, in the process and in the image, on 32-bit and 64-bit
 * builds, so that each reads what any other wrote.
 *
 * The files, "~/" being the home directory of the service (platform/os.h), N the number of the set:
 *
 *     ~/toupper/N.s        source            ~/toupper/casetemp   a compiled file under construction
 *     ~/toupper/N.b        compiled file     ~/sys/toupper.lk     lock, held to compile and to load
 *
 * A compiled file is made once and never refreshed: remove it after a change of its source.
 *
 * The source: blank lines, and lines that begin with #, are skipped.  The first line names the set,
 * every later word belongs to a rule, and the right side is the upper case of the left:
 *
 *     TOUPPER CHARSET LATIN1
 *     a = A   b = B   \xE0 -> \xC0   \xDF => SS
 *
 * Keywords may be shortened (T C LATIN1).  An operator is any run of < > = and -.  A side is one or
 * two bytes in the notation of platform/enc.h.  A line is 80 characters; a longer one is read in
 * pieces of 80.
 *
 * Failures are escapes of class 3 (platform/er.h) within the library, with the codes 3084, 23801,
 * 23802, 23805 to 23814 that the catalogue explains.  Threads: one at a time for all of this.
 */
#ifndef STR_CASETABLE_H
#define STR_CASETABLE_H

#include <str/charset.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- The record ---------------------------------------------------------------------------- */

/* Names an array; 0 for none.  In a record of the process it is the library's own business; in the
 * image it is the array's offset in bytes from str_ba; in a file it is the array's offset there, which
 * makes the file the same whoever compiles it.  Who reads a file goes by the counts alone. */
typedef uint32_t CaseTableRef;

/* The two-byte characters that begin with one lead byte. */
typedef struct LeadEntry {
    uint8_t LeadByte;
    uint8_t reserved[3];  /* 0 */
    CaseTableRef pTrails; /* 3 bytes each: second byte, then its upper case in two bytes, or in one
                             with a 0 behind it */
    int32_t MaxTrails;
    int32_t NumTrails;
} LeadEntry;

/* The case table of one set.  Max... are the elements that an array has room for, Num... those in
 * use; at most 32,767 each. */
typedef struct CaseTableRecord {
    char CharSetName[40];  /* upper case, NUL-terminated; for people to read */
    uint8_t reserved[44];  /* 0 */
    CaseTableRef pByteMap; /* 256 bytes: the upper case of each byte, or 0 where the lists decide */
    CaseTableRef pExpansions; /* 3 bytes each: a byte, then its upper case in two bytes */
    int32_t MaxExpansions;
    int32_t NumExpansions;
    CaseTableRef pLeads; /* LeadEntry each */
    int32_t MaxLeads;
    int32_t NumLeads;
} CaseTableRecord;

/* The compiled file: this header, the record, the byte map, the expansions, the lead entries, and
 * the trails of each lead entry, with no gaps.  All numbers are little-endian. */
typedef struct CaseTableHeader {
    uint32_t magic;   /* CASE_TABLE_MAGIC */
    uint32_t version; /* CASE_TABLE_VERSION */
    uint32_t zero;    /* 0 */
    uint8_t reserved[40];
} CaseTableHeader;

#define CASE_TABLE_MAGIC 12345678
#define CASE_TABLE_VERSION 11
#define CASE_TABLE_MAP_SIZE 256       /* bytes of the byte map */
#define CASE_TABLE_RULE_SIZE 3        /* bytes of an expansion and of a trail */
#define CASE_TABLE_MOST_ENTRIES 32767 /* elements of an array */

/* The registry: the first record and their number.  Records move when one is added. */
extern CaseTableRecord *pCaseTabs;
extern int32_t NumCaseTabs;

/* Where the attached image begins, null for none. */
extern char *str_ba;

/* ---- Compiling and loading ----------------------------------------------------------------- */

/* Compiles the source file `sourceName` into `record`, whose 112 bytes are 0.  Also writes the file
 * `compiledName`, by way of ~/toupper/casetemp, when the process runs in the group of the service
 * account; that this fails is no failure.
 *
 * Returns 1; the record then owns its arrays (str_FreeCTEntry).  Returns 0 when the source cannot be
 * read or is wrong: logs 23803 with the name and the line, and the record is all 0.  An escape of
 * another class than 3 goes on to the caller's environment.  Takes no lock. */
int str_CompileCaseTable(const char *sourceName, const char *compiledName, CaseTableRecord *record);

/* Loads the compiled file `compiledName` into `record`, whose 112 bytes are 0.  A damaged file is
 * told from a good one as far as its header, its counts and its length go.
 *
 * Returns 1; the record then owns its arrays (str_FreeCTEntry).  Returns 0 when the file cannot be
 * read or is none of this version: logs its name, and the record is all 0.  An escape of another
 * class than 3 goes on to the caller's environment.  The file stays as it is.  Takes no lock. */
int str_LoadCaseTable(const char *compiledName, CaseTableRecord *record);

/* ---- The registry -------------------------------------------------------------------------- */

/* Adds the table of the set `cs` to the registry, on its first use, and registers it with the
 * service (ccs_PutToUpperByCSNum).  Returns its record, good until another is added; null when the
 * set has no readable table, which is logged and tried again the next time, or when an image is
 * attached.  Escapes of class 3 end here, but for those of the character set service. */
CaseTableRecord *str_InitCaseTables(const CSDescriptor *cs);

/* Adds the table of the set number `setNumber` to the array of `*count` records at `*tables`, and
 * registers it with the service, which gets `companion` and `csTable` as they are.  Loads the
 * compiled file where there is one and compiles the source where there is none, under the lock.
 * Returns the record, good until another is added; null when it cannot be had. */
CaseTableRecord *str_ReadCaseTable(uint32_t setNumber, CaseTableRecord **tables, int32_t *count,
                                   int32_t companion, void *csTable);

/* Adds a record of 112 zero bytes to the array, which may move.  Returns it; `*index` receives its
 * place, counted from 0.  Raises the escapes of str_AllocEntry. */
CaseTableRecord *str_InitControlTable(int16_t *index, CaseTableRecord **tables, int32_t *count);

/* ---- Arrays -------------------------------------------------------------------------------- */

/* Hands out the next element of an array that grows by `step` elements of `elementSize` bytes.
 * `*capacity` and `*used` count elements; with a capacity of 0, `block` is not looked at and a new
 * array begins.  Returns the block, which may have moved; `*index` receives the element's place.
 * The element is not cleared.
 *
 * Raises OS_ESC_MEMORY when the memory cannot be had, and for an element beyond the 32,767th; block
 * and counts are then as they were. */
void *str_AllocEntry(void *block, int32_t *capacity, int32_t *used, uint32_t elementSize,
                     int32_t step, int16_t *index);

/* Releases the arrays of a record of this process, never of an image, and clears its 112 bytes. */
void str_FreeCTEntry(CaseTableRecord *record);

/* ---- Publishing ---------------------------------------------------------------------------- */

/* Gives out `size` bytes of a shared segment that begins at `segment`: returns their offset from
 * there, a multiple of 4, or 0 when there is no such room.  Never gives out offset 0. */
typedef uint32_t (*SegmentAlloc)(char *segment, uint32_t size);

/* Publishing takes these steps, in a server: read all tables, measure them, allocate a segment, copy
 * them into it, release them.  Every process that maps the segment then attaches it.
 *
 * The first step registers tables that nothing can read until the last: a process that uses these
 * registrations must not upper-case, nor compare without regard to case, in between.
 *
 * Reads the table of every set that has a source in ~/toupper into the work area, compiling those
 * that are not yet compiled, and registers it with the service, which gets `companion` and `csTable`
 * as they are.  A table that cannot be read is logged (200) and left out.  Returns 1; 0 when an
 * escape of class 3 ended the work, such as when there is no such directory.  Adds to what the work
 * area holds already. */
int str_ReadStrToWkArea(int32_t companion, void *csTable);

/* The bytes of a segment that has room for the tables of the work area, for an allocator that rounds
 * each request up to a multiple of 4. */
uint32_t str_TotalWorkArea(void);

/* Copies the work area to the segment at `segment`, in blocks from `alloc`.  `*recordsOffset` and
 * `*recordCount` receive what str_AttachSMem needs.  Returns 1; 0 when the segment is full, and what
 * stands there is then not to be attached. */
int str_CopyWorkAreaToSMem(SegmentAlloc alloc, char *segment, uint32_t *recordsOffset,
                           int32_t *recordCount);

/* Empties the work area. */
void str_FreeWkArea(void);

/* Whether the image is out of date: always 0. */
int str_IsDataStale(void);

/* Makes the image at `segment`, where this process has mapped it, the registry.  A registry of the
 * process's own is left as it is and not released; from here on no table is added.
 *
 * The image is trusted: its offsets and counts are used unchecked.  Who may write to the segment
 * can make every process that attached it read anywhere. */
void str_AttachSMem(uint32_t recordsOffset, int32_t recordCount, char *segment);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
