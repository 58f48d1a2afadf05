// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_RULES_H
#define TESTS_SUPPORT_RULES_H

#include <str/casetable.h>

#include <string>
#include <string_view>

// What a table of this process or of the attached image says: "LATIN1 61>41 DF:5353 C2[61:C241
// 62:4200]", being the name, the map's entries that are not the identity, the expansions, and the
// trails of each lead byte.
std::string RulesOf(const CaseTableRecord &record);

// The same of a compiled file that is long enough.
std::string RulesOf(std::string_view file);

#endif
