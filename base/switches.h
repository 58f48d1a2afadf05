// SPDX-License-Identifier: Apache-2.0
//
// The bytes that may switch sets for more than one character.
#ifndef BASE_SWITCHES_H
#define BASE_SWITCHES_H

#include <cstddef>

namespace libstr
{

// Whether ESC, SO or SI is among the bytes.
bool HasSwitches(const char *at, size_t size);

} // namespace libstr

#endif
