// SPDX-License-Identifier: Apache-2.0
#ifndef FUZZ_CASE_TABLE_H
#define FUZZ_CASE_TABLE_H

#include "services/services.h"
#include "tests/support/home.h"
#include "tests/support/rules.h"

#include <cstdlib>
#include <cstring>

namespace fuzz
{

// The program's own home, in which it makes no noise.
inline const TempHome &Home()
{
    static const TempHome home;
    er_SetLogSink([](int, const char *) {});
    return home;
}

inline std::string PathOf(const char *name) { return Home().PathOf(name); }

inline void Demand(bool holds)
{
    if (!holds)
        std::abort();
}

// All that the record holds, which is read and released; nothing where `done` is 0, and then the
// record has to be clear.
inline std::string Taken(int done, CaseTableRecord *record)
{
    const CaseTableRecord clear = {};
    const std::string rules = done == 1 ? RulesOf(*record) : "";
    Demand(done == 1 || std::memcmp(record, &clear, sizeof clear) == 0);
    str_FreeCTEntry(record);
    return rules;
}

inline std::string Load(const char *name)
{
    CaseTableRecord record = {};
    return Taken(str_LoadCaseTable(PathOf(name).c_str(), &record), &record);
}

} // namespace fuzz

#endif
