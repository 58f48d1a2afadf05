// SPDX-License-Identifier: Apache-2.0
//
// A coded character set service that answers what a test tells it to: the linked definitions take
// the place of the default ones.
#ifndef TESTS_SCRIPTED_CCS_H
#define TESTS_SCRIPTED_CCS_H

#include <str/charset.h>

#include <map>
#include <string>
#include <vector>

namespace scripted
{

struct Segment {
    uint16_t kind;
    unsigned int length;
};

struct Script {
    std::vector<Segment> segments;      // of every text that is walked
    std::map<uint16_t, uint32_t> flags; // by set
    std::map<uint16_t, int16_t> bytes;
    std::map<uint16_t, uint16_t> upperTables; // record numbers
    // The lists that pattern matching asks for in turn: the string's, the pattern's.
    std::vector<Segment> realLists[2];
    std::string modelEscapes;
    std::string asciiEscapes;
    std::string asked; // for the latter

    size_t next = 0;     // segment of the walk
    size_t nextList = 0; // of the two
};

// The script in force; a test begins with a fresh one.
extern Script script;

} // namespace scripted

#endif
