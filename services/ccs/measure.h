// SPDX-License-Identifier: Apache-2.0
//
// Measures a text without regard to the kinds of its segments.
#ifndef SERVICES_CCS_MEASURE_H
#define SERVICES_CCS_MEASURE_H

#include "base/plain_text.h"
#include "services/ccs/walk.h"

namespace libstr::ccs
{

// Passes over the units and sequences at the passage's place, as far as its limits allow.  Returns
// whether the sequence after them might be read in another way if more of the text were known.
bool Measure(Walk *walk, plain::Passage *passage);

} // namespace libstr::ccs

#endif
