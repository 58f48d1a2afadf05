// SPDX-License-Identifier: Apache-2.0
//
// The search for what switches sets, on every length and place.
#include "base/switches.h"
#include "tests/support/test.h"

namespace
{

TEST(Switches, AreFoundWhereverTheyAre)
{
    for (size_t size = 0; size <= 300; ++size)
        for (const char *const other : {"a", "\n\x0D\x10\x1A\x1C\x8E\x9B\xFF"}) {
            const Guarded text(size); // nothing after it may be read
            for (size_t i = 0; i < size; ++i)
                text.data()[i] = other[i % strlen(other)];
            EXPECT_FALSE(libstr::HasSwitches(text.data(), size)) << size;
            for (size_t i = 0; i < size; ++i) {
                const char before = std::exchange(text.data()[i], "\x0E\x0F\x1B"[i % 3]);
                EXPECT_TRUE(libstr::HasSwitches(text.data(), size)) << size << " " << i;
                text.data()[i] = before;
            }
        }
}

} // namespace
