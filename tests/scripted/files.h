// SPDX-License-Identifier: Apache-2.0
//
// Memory, files, locks and the service account, with a failure where a test wants it and an account
// of what is held: the linked definitions take the place of the default ones.  A call that raises
// an escape has done nothing.
#ifndef TESTS_SCRIPTED_FILES_H
#define TESTS_SCRIPTED_FILES_H

#include <functional>
#include <map>
#include <set>
#include <string>
#include <sys/types.h>
#include <unistd.h>

namespace scripted
{

struct Files {
    // The call after so many more, of the function named or of all, raises an escape of that class;
    // 0 for never.
    int callsLeft = 0, escapeClass = 0;
    std::string failing;
    std::string failed; // the function that did raise it

    gid_t group = getegid(); // of the service account
    int chownResult = 0;
    // What enc_ makes of a side; what happens once a lock is granted.
    std::function<std::string(const char *)> decode = [](auto text) { return text; };
    std::function<void()> granted = [] {};

    int opened = 0;    // descriptors
    std::string locks; // the modes that were granted and a - for each release
};

struct Held {
    std::map<void *, size_t> blocks; // and their sizes
    std::set<void *> open;           // streams and directories
    size_t asked = 0;                // bytes of the block asked for last
};

extern Files files; // a test begins with fresh ones
extern Held held;   // by everybody, since the process began

} // namespace scripted

#endif
