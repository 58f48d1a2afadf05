// SPDX-License-Identifier: Apache-2.0
//
// Services that pass every call on to the default ones, except the call that a test wants to fail or
// to answer nonsense, and that keep an account of what is held.
#ifndef TESTS_PASSING_SERVICES_H
#define TESTS_PASSING_SERVICES_H

#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace passing
{

// The call after so many more raises an escape of that class and does nothing; class 0: none does.
struct Failure {
    int callsLeft = 0, escapeClass = 0;
    std::string failed; // the function that did raise it
};
extern Failure failure;

inline constexpr int kCode = 4711; // of those escapes

// What the length services answer in place of the default ones, for units, characters, escapes and
// the bytes that a notation writes down.
extern std::optional<int> nonsense;

// The last request for a conversion: "12 0 from>to", or the mode of that for escapes.
extern std::string converted;
// Flags of every set, beyond those that it has.
extern uint32_t moreFlags;

// What was given out and has not come back.
struct Held {
    std::set<const void *> blocks; // of memory
    std::set<const void *> open;   // streams and directories
    int locks = 0;
};
extern Held held;

} // namespace passing

#endif
