// SPDX-License-Identifier: Apache-2.0
//
// The case tables in data/toupper are what their generator writes.
#include "tests/support/home.h"
#include "tests/support/test.h"

namespace
{

const std::string kSources = STR_DATA_DIR "/toupper/";

TEST(ToUpperData, IsWhatItsGeneratorWrites)
{
    const TempHome home;
    const std::string anew = home.PathOf("toupper");
    ASSERT_EQ(std::system((STR_GENERATE " " + anew).c_str()), 0);
    EXPECT_EQ(std::system(("diff -r -x generate.cc -x README.md " + kSources + " " + anew).c_str()),
              0);
}

} // namespace
