// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_RULES_H
#define TESTS_SUPPORT_RULES_H

#include <str/casetable.h>

#include <cstring>
#include <string>
#include <string_view>

// What a table of this process or of the attached image says: "LATIN1 61>41 DF:5353 C2[61:C241
// 62:4200]", being the name, the map's entries that are not the identity, the expansions, and the
// trails of each lead byte.
std::string RulesOf(const CaseTableRecord &record);

// The same of a compiled file, or the code with which it is refused.
std::string RulesOf(std::string_view file);

inline bool IsClear(const CaseTableRecord &record)
{
    const CaseTableRecord clear = {};
    return std::memcmp(&record, &clear, sizeof clear) == 0;
}

// The rules of a record that has just been compiled or loaded, or, when it was not `done`, the code
// of what was wrong.  The record is clear then, or the program ends.
std::string TakeRules(bool done, CaseTableRecord *record);

#endif
