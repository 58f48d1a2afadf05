// SPDX-License-Identifier: Apache-2.0
//
// What tests of case tables share: a home, what was logged and traced, and what tables hold, told
// in the bytes of their compiled files and in words.
#ifndef TESTS_SUPPORT_CASETABLE_H
#define TESTS_SUPPORT_CASETABLE_H

#include "tests/support/home.h"

#include <gtest/gtest.h>
#include <str/casetable.h>

#include <string>
#include <string_view>

class CaseTableTest : public testing::Test
{
  protected:
    CaseTableTest();
    ~CaseTableTest() override;

    // Releases the registry, unless it is an image, and the work area; nothing is attached then.
    static void ReleaseTables();

    static std::string logged; // the texts, a line each
    static std::string traced; // "17+name 17-name "
    TempHome home;
};

// A compiled file, perhaps with bytes behind it, with 0 for every reference and negative count.
std::string WithoutReferences(std::string file);

// The same of the file that `record`, of this process or of the attached image, and its arrays make.
std::string FileOf(const CaseTableRecord &record);

// What a whole compiled file says: "LATIN1 61>41 DF:5353 C2[61:C241 62:4100]", being the name, the
// map's entries that are not the identity, the expansions, and the trails of each lead byte.
std::string RulesOf(std::string_view file);

bool IsClear(const CaseTableRecord &record);

#endif
