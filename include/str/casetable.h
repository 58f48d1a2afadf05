/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Case tables: how text of one character set is converted to upper case.
 *
 * Most programs need nothing of this header: conversion and comparison find their tables by
 * themselves.
 *
 * A table is written as a small text file, the source.  On first use it is compiled into a record
 * in memory and a binary file; after that the file is loaded.  A process keeps its tables in a
 * registry, which grows with the sets that it uses (str_InitCaseTables).  A server can instead
 * publish the tables of all sets in shared memory; other processes attach this image
 * (str_AttachSMem).  A record has the same layout in the file, in the process and in the image, in
 * 32-bit and 64-bit builds: each can read what another wrote.
 *
 * The files, where ~/ is the service home (platform/os.h) and N is the number of the set:
 *
 *     ~/toupper/N.s        source            ~/toupper/casetemp   a compiled file being written
 *     ~/toupper/N.b        compiled file     ~/sys/toupper.lk     lock, held to compile and to load
 *
 * A compiled file is never made anew.  If you change the source, remove the compiled file.
 *
 * Source files.  The first line names the set.  The words after it are rules; the right side is the
 * upper case of the left side.  Blank lines, and lines that begin with #, are skipped.
 *
 *     TOUPPER CHARSET LATIN1
 *     a = A   b = B   \xE0 -> \xC0   \xDF => SS
 *
 * Keywords may be shortened (T C LATIN1).  An operator is any run of the characters < > = and -.  A
 * side is one or two bytes in the notation of platform/enc.h.  A line has 80 characters; a longer
 * one is read in pieces of 80.
 *
 * A fault in a file raises an escape with a code STR_ESC_... (str/codes.h) and class
 * ER_CLASS_LIBRARY.  The function that compiles or loads ends it.
 *
 * Threads: any number at once.  A lock of the process lets one thread at a time change case tables;
 * those that only use them never wait for it.
 */
#ifndef STR_CASETABLE_H
#define STR_CASETABLE_H

#include <str/charset.h>

#include <assert.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- The record ---------------------------------------------------------------------------- */

/* Refers to an array; 0 for none.  In the image it is the offset of the array in bytes from str_ba.
 * In a file it is the offset of the array in the file, so that the file is the same whoever
 * compiles it; a reader needs only the counts.  In a record of the process it has a meaning for the
 * library only. */
typedef uint32_t CaseTableRef;

/* The two-byte characters that begin with one lead byte. */
typedef struct LeadEntry {
    uint8_t LeadByte;
    uint8_t reserved[3];  /* 0 */
    CaseTableRef pTrails; /* 3 bytes each: second byte, then its upper case in two bytes, or in one
                             byte and a 0 */
    int32_t MaxTrails;
    int32_t NumTrails;
} LeadEntry;

/* The case table of one set.  Max... is the number of elements that an array has room for, Num...
 * the number in use: at most CASE_TABLE_MOST_ENTRIES. */
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

/* The compiled file is, without gaps: this header, the record, the byte map, the expansions, the
 * lead entries, and the trails of each lead entry in turn.  All numbers are little-endian. */
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
#define CASE_TABLE_MOST_ENTRIES 32767 /* elements of an array, at most */

/* The layout, checked by your compiler. */
static_assert(offsetof(LeadEntry, LeadByte) == 0 && offsetof(LeadEntry, reserved) == 1 &&
                  offsetof(LeadEntry, pTrails) == 4 && offsetof(LeadEntry, MaxTrails) == 8 &&
                  offsetof(LeadEntry, NumTrails) == 12 && sizeof(LeadEntry) == 16,
              "a lead entry has 16 bytes");
static_assert(offsetof(CaseTableRecord, CharSetName) == 0 &&
                  offsetof(CaseTableRecord, reserved) == 40 &&
                  offsetof(CaseTableRecord, pByteMap) == 84 &&
                  offsetof(CaseTableRecord, pExpansions) == 88 &&
                  offsetof(CaseTableRecord, MaxExpansions) == 92 &&
                  offsetof(CaseTableRecord, NumExpansions) == 96 &&
                  offsetof(CaseTableRecord, pLeads) == 100 &&
                  offsetof(CaseTableRecord, MaxLeads) == 104 &&
                  offsetof(CaseTableRecord, NumLeads) == 108 && sizeof(CaseTableRecord) == 112,
              "a record has 112 bytes");
static_assert(offsetof(CaseTableHeader, magic) == 0 && offsetof(CaseTableHeader, version) == 4 &&
                  offsetof(CaseTableHeader, zero) == 8 &&
                  offsetof(CaseTableHeader, reserved) == 12 && sizeof(CaseTableHeader) == 52,
              "the header of a compiled file has 52 bytes");

/* The registry: its first record, and the number of records.  When a record is added, all of them
 * may move; the old ones stay as they are until the process ends. */
extern CaseTableRecord *pCaseTabs;
extern int32_t NumCaseTabs;

/* The beginning of the attached image, null when none is attached. */
extern char *str_ba;

/* ---- Compiling and loading ----------------------------------------------------------------- */

/* Compiles the source file `sourceName` into `record`, whose 112 bytes must be 0.  If the process
 * runs in the group of the service account, also writes the file `compiledName`, by way of
 * ~/toupper/casetemp; failing to write it is not an error.
 *
 * Returns 1; the record then owns its arrays (str_FreeCTEntry).  Returns 0 when the source cannot
 * be read or is wrong: logs STR_LOG_NOT_COMPILED with its name and the line, and the record is all
 * 0.  An escape that is not of class ER_CLASS_LIBRARY goes on to the caller's environment.  Takes
 * no lock. */
int str_CompileCaseTable(const char *sourceName, const char *compiledName, CaseTableRecord *record);

/* Loads the compiled file `compiledName` into `record`, whose 112 bytes must be 0.  Only the
 * header, the counts and the length are checked.
 *
 * Returns 1; the record then owns its arrays (str_FreeCTEntry).  Returns 0 when the file cannot be
 * read, is damaged or has another version: logs its name, and the record is all 0.  The file is
 * left as it is.  An escape that is not of class ER_CLASS_LIBRARY goes on to the caller's
 * environment.  Takes no lock. */
int str_LoadCaseTable(const char *compiledName, CaseTableRecord *record);

/* ---- The registry -------------------------------------------------------------------------- */

/* Adds the table of the set `cs` to the registry, and registers it with the service
 * (ccs_PutToUpperByCSNum).  Call it once for a set.  Returns the record, which is valid until
 * another is added.  Returns null when the set has no readable table, which is logged (the next
 * call tries again), and when an image is attached.  An escape of class ER_CLASS_LIBRARY ends here,
 * except one of the character set service. */
CaseTableRecord *str_InitCaseTables(const CSDescriptor *cs);

/* Adds the table of the set number `setNumber` to the array of `*count` records at `*tables`, and
 * registers it with the service, which receives `companion` and `csTable` unchanged.  Under the
 * lock, loads the compiled file, or compiles the source when there is none.  Returns the record,
 * which is valid until another is added; null when there is no readable table. */
CaseTableRecord *str_ReadCaseTable(uint32_t setNumber, CaseTableRecord **tables, int32_t *count,
                                   int32_t companion, void *csTable);

/* Adds a record of 112 zero bytes to the array, which may move.  Returns it; `*index` receives its
 * index, from 0.  Raises what str_AllocEntry raises. */
CaseTableRecord *str_InitControlTable(int16_t *index, CaseTableRecord **tables, int32_t *count);

/* ---- Arrays -------------------------------------------------------------------------------- */

/* Adds an element to an array, which grows by `step` elements of `elementSize` bytes.  `*capacity`
 * and `*used` count elements.  With a capacity of 0 a new array begins, and `block` is not read.
 * Returns the block, which may have moved; `*index` receives the index of the element, whose bytes
 * are not set.
 *
 * Raises OS_ESC_MEMORY when there is no memory, and after CASE_TABLE_MOST_ENTRIES elements; block
 * and counts are then as before. */
void *str_AllocEntry(void *block, int32_t *capacity, int32_t *used, uint32_t elementSize,
                     int32_t step, int16_t *index);

/* Releases the arrays of a record and sets its 112 bytes to 0.  The record must be of this process,
 * not of an image. */
void str_FreeCTEntry(CaseTableRecord *record);

/* ---- Publishing ---------------------------------------------------------------------------- */

/* Allocates `size` bytes in a shared segment that begins at `segment`.  Returns their offset in the
 * segment, a multiple of 4 and never 0; 0 when there is no room. */
typedef uint32_t (*SegmentAlloc)(char *segment, uint32_t size);

/* A server publishes in these steps: read all tables into the work area, measure it, allocate a
 * segment, copy the work area into it, empty the work area.  Then every process that maps the
 * segment attaches it.
 *
 * The first step registers tables that nothing can read before the last step.  In between, a
 * process that uses these registrations must not convert to upper case or compare without regard to
 * case.
 *
 * str_ReadStrToWkArea reads the table of every set that has a source in ~/toupper, compiles it if
 * needed, and adds it to the work area.  It registers each with the service, which receives
 * `companion` and `csTable` unchanged.  A table that cannot be read is logged (STR_LOG_NO_TABLE)
 * and left out.  Returns 1; 0 when an escape of class ER_CLASS_LIBRARY ended the work, for example
 * because there is no such directory. */
int str_ReadStrToWkArea(int32_t companion, void *csTable);

/* Returns the bytes that a segment needs to hold the tables of the work area, if the allocator
 * rounds each request up to a multiple of 4. */
uint32_t str_TotalWorkArea(void);

/* Copies the work area to the segment at `segment`, in blocks from `alloc`.  `*recordsOffset` and
 * `*recordCount` receive what str_AttachSMem needs.  Returns 1; 0 when the segment is full, and
 * must then not be attached. */
int str_CopyWorkAreaToSMem(SegmentAlloc alloc, char *segment, uint32_t *recordsOffset,
                           int32_t *recordCount);

/* Empties the work area and releases its tables. */
void str_FreeWkArea(void);

/* Whether the image is out of date: always returns 0. */
int str_IsDataStale(void);

/* Whether the image in the `size` bytes at `segment` may be attached: all its records, and all the
 * arrays to which they refer, lie in these bytes, and every record has a byte map.  What the tables
 * say is not looked at.  Takes the values that str_AttachSMem takes.  Returns 1 or 0; a segment
 * that does not begin at a multiple of 4 bytes gives 0. */
int str_CheckSMem(uint32_t recordsOffset, int32_t recordCount, const char *segment, size_t size);

/* Makes the image at `segment`, where this process has mapped it, the registry.  An earlier
 * registry of the process is not released.  From now on no table is added.
 *
 * The library keeps what it works out from an image until the process ends.  So call this for every
 * image, even if you map it where another one was.  Other threads may go on meanwhile (see
 * ccs_SetCSTable in services/services.h).  The segment of an image that was attached before has to
 * stay as long as a call that began before may use it.
 *
 * The image is trusted: its offsets and counts are not checked (see str_CheckSMem).  Whoever can
 * write to the segment later can make every process that attached it read anywhere. */
void str_AttachSMem(uint32_t recordsOffset, int32_t recordCount, char *segment);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
