// SPDX-License-Identifier: Apache-2.0
//
// Memory with a failure where a test wants it and an account of what is held: the linked definitions
// take the place of the default ones.  A call that raises an escape has done nothing.
#ifndef TESTS_SCRIPTED_FILES_H
#define TESTS_SCRIPTED_FILES_H

#include <cstddef>
#include <map>

namespace scripted
{

// The call after so many more raises an escape of that class; 0 for never.
struct Files {
    int callsLeft = 0, escapeClass = 0;
};

struct Held {
    std::map<void *, size_t> blocks; // and their sizes
    size_t asked = 0;                // bytes of the block asked for last
};

extern Files files; // a test begins with fresh ones
extern Held held;   // by everybody, since the process began

} // namespace scripted

#endif
