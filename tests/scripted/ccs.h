// SPDX-License-Identifier: Apache-2.0
//
// A coded character set service that answers what a test tells it to: the linked definitions take
// the place of the default ones.
#ifndef TESTS_SCRIPTED_CCS_H
#define TESTS_SCRIPTED_CCS_H

#include <str/charset.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace scripted
{

struct Segment {
    uint16_t kind;
    unsigned int length;
};

struct Script {
    std::vector<Segment> segments;                           // of every text that is walked
    std::map<const char *, std::vector<Segment>> segmentsOf; // of these texts instead
    std::map<uint16_t, uint32_t> flags;                      // by set
    std::map<uint16_t, int16_t> bytes;
    std::string name = "scripted";
    std::map<uint16_t, std::string> names;        // of these sets instead
    std::map<uint16_t, std::string> designations; // null for the others
    std::map<uint16_t, uint16_t> upperTables;     // record numbers
    bool endsLists = true;                        // by a record
    // The lists that pattern matching asks for in turn: the string's, the pattern's.  Nothing: null.
    std::optional<std::vector<Segment>> realLists[2];
    // Lengths of units, and every question that was asked of them.
    std::function<int(const char *at, unsigned int avail)> control = [](auto, auto) { return 1; };
    std::function<int(const char *at, unsigned int avail)> baseUnit = [](auto, auto) { return 1; };
    std::function<bool(const char *at, int avail, int *length)> unit = [](auto, auto, auto length) {
        *length = 1;
        return true; // it counts
    };
    std::string asked;
    std::string modelEscapes;
    std::string asciiEscapes;
    uint16_t codePage = 0;  // the answer of ccs_GetCP
    int raiseAfterWalk = 0; // class of an escape raised where the model escapes are asked for
    // The call after so many more, of those that a format is printed with, raises an escape of that
    // class; 0 for never.
    int callsLeft = 0, escapeClass = 0;

    const std::vector<Segment> *walked = nullptr;
    size_t next = 0;     // segment of the walk
    size_t nextList = 0; // of the two
};

// The script in force; a test begins with a fresh one.
extern Script script;

} // namespace scripted

#endif
