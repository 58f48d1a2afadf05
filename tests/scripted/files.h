// SPDX-License-Identifier: Apache-2.0
//
// Memory that runs out where a test wants it: the linked definition takes the place of the default
// one.
#ifndef TESTS_SCRIPTED_FILES_H
#define TESTS_SCRIPTED_FILES_H

#include <cstddef>

namespace scripted
{

extern bool memoryIsOut; // for blocks that grow
extern size_t asked;     // bytes of the block asked for last

} // namespace scripted

#endif
