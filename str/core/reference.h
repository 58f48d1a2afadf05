// SPDX-License-Identifier: Apache-2.0
//
// References: how a case table refers to its arrays in 4 bytes on every build.
//
// Where addresses have 4 bytes, a reference of this process is the address itself.  Where they are
// wider, it is a place in one table of blocks.  In an attached image it is an offset.
//
// References are made and released under the lock of the case tables.
#ifndef STR_CORE_REFERENCE_H
#define STR_CORE_REFERENCE_H

#include <str/casetable.h>

#include <cstddef>
#include <cstdint>

namespace libstr::reference
{

// Makes sure that the next Make cannot fail: no block is ever without an owner.  Raises
// OS_ESC_MEMORY.
void Reserve();

// A reference to `block`.  `old` referred to the block before it moved; 0 asks for a new reference,
// after Reserve.
CaseTableRef Make(void *block, CaseTableRef old);

// The block of this process that `ref` refers to; null for 0.
void *Resolve(CaseTableRef ref);

template <class T>
T *Resolve(CaseTableRef ref)
{
    return static_cast<T *>(Resolve(ref));
}

// Releases the block and the reference, which becomes 0.
void Release(CaseTableRef *ref);

// The array that a record refers to: in the process or, with a base, in an image.
template <class T>
const T *ResolveForReading(CaseTableRef ref, const char *base = str_ba)
{
    if (base == nullptr)
        return Resolve<T>(ref);
    const void *const array = ref == 0 ? nullptr : base + ref;
    return static_cast<const T *>(array);
}

} // namespace libstr::reference

#endif
