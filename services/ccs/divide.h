// SPDX-License-Identifier: Apache-2.0
//
// Reads a text many segments at a time.
#ifndef SERVICES_CCS_DIVIDE_H
#define SERVICES_CCS_DIVIDE_H

#include "services/ccs/walk.h"

namespace libstr::ccs
{

// Segments that have been found.
struct Found {
    CSSegment *segments;
    int count;
    int most;
    bool fits; // false: the last segment is longer than a record can say
};

// Finds the segments at `at`, of which the last is found to its end.  `avail` as for NextSegment.
void Divide(Walk *walk, const char *at, size_t avail, Found *found);

} // namespace libstr::ccs

#endif
