// SPDX-License-Identifier: Apache-2.0
//
// The comparison of two texts of one set that differ in the case of letters only.
//
// Where one ASCII letter takes the place of another in text, a text is divided into segments as
// before (ccs_BeginWalk).  So one walk serves both texts, and only the segments in which they
// differ are compared.
#ifndef STR_CORE_IN_STEP_H
#define STR_CORE_IN_STEP_H

#include <platform/ccs.h>

namespace libstr
{

// `unknown`: the texts have to be compared in another way.
enum class InStep { equal, different, unknown };

InStep CompareInStep(const char *s1, const char *s2, bool caseless, const CSDescriptor *cs);

} // namespace libstr

#endif
