// SPDX-License-Identifier: Apache-2.0
//
// Measures a text without regard to the kinds of its segments.
#ifndef SERVICES_CCS_MEASURE_H
#define SERVICES_CCS_MEASURE_H

#include "base/plain_text.h"
#include "services/ccs/walk.h"

namespace libstr::ccs
{

// Passes over the units and sequences at `at`, as far as the limits allow.  `avail` bytes are
// known of the text, none of them NUL.  `isCut` receives whether the sequence after them might
// be read in another way if more of the text were known.
plain::Passed Measure(Walk *walk, const char *at, size_t avail, const plain::Limits &limits,
                      bool *isCut);

} // namespace libstr::ccs

#endif
