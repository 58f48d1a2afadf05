// SPDX-License-Identifier: Apache-2.0
//
// Whether code for AVX2 is built, and whether this processor runs it.  Each function that is marked
// with STR_AVX2 has a plain form beside it, which gives the same results.
//
// STR_NO_VECTOR leaves out all vector code, SSE2 too.
#ifndef BASE_VECTOR_H
#define BASE_VECTOR_H

#if defined(__x86_64__) && !defined(STR_NO_VECTOR)

#include <immintrin.h>

#define STR_AVX2 __attribute__((target("avx2,bmi,bmi2,lzcnt,popcnt")))

namespace libstr
{

// Every processor with AVX2 has the other four too.
inline bool HasAvx2() { return __builtin_cpu_supports("avx2") != 0; }

} // namespace libstr

#endif
#endif
