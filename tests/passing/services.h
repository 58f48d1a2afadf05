// SPDX-License-Identifier: Apache-2.0
//
// Services that pass calls on to the default ones, fail or answer nonsense as a test wants, and
// keep an account of what is held.
#ifndef TESTS_PASSING_SERVICES_H
#define TESTS_PASSING_SERVICES_H

#include <climits>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace passing
{

// The call after so many more raises an escape of that class and does nothing; class 0: none does.
// So does the one after `again` more, or every later one.
inline constexpr int kNever = INT_MAX, kAlways = -1;
struct Failure {
    int callsLeft = 0, escapeClass = 0;
    std::string failed; // the functions that did raise it
    int again = kNever;
};
extern Failure failure;

inline constexpr int kCode = 4711; // of those escapes

extern std::optional<int> nonsense; // what services that return a length return

// The last request for a conversion, "12 0 from>to"; or the mode of the last request for escapes.
extern std::string converted;

extern bool ownWalks; // whether there are walks that belong to the caller

extern uint32_t moreFlags; // of every set, beyond those that it has

// What was given out and has not come back.
struct Held {
    std::set<const void *> blocks; // of memory
    std::set<const void *> open;   // streams and directories
    int locks = 0;
};
extern Held held;

} // namespace passing

#endif
