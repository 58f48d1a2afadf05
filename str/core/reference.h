// SPDX-License-Identifier: Apache-2.0
//
// References: how a case table names its arrays in 4 bytes on every build.
//
// Where addresses are 4 bytes wide a reference of this process is the address itself; where they
// are wider it is a place in one table of blocks.  In an attached image it is an offset.
#ifndef STR_CORE_REFERENCE_H
#define STR_CORE_REFERENCE_H

#include <str/casetable.h>

#include <cstddef>
#include <cstdint>

namespace libstr::reference
{

// Makes sure that the next Make cannot fail, so that no block is ever without an owner.  Raises
// OS_ESC_MEMORY.
void Reserve();

// A reference to `block`, in place of `old`, which named the block before it moved; 0 for a new
// reference, made room for by Reserve.
CaseTableRef Make(void *block, CaseTableRef old);

// The block of this process that `ref` names, null for none.
void *Resolve(CaseTableRef ref);

template <class T>
T *Resolve(CaseTableRef ref)
{
    return static_cast<T *>(Resolve(ref));
}

// Releases the block and the reference, which becomes 0.
void Release(CaseTableRef *ref);

// The array that a record of the registry names: in the image once one is attached, when the
// process no longer uses records of its own, else in the process.
template <class T>
const T *ResolveForReading(CaseTableRef ref)
{
    if (str_ba == nullptr)
        return Resolve<T>(ref);
    const void *const array = ref == 0 ? nullptr : str_ba + ref;
    return static_cast<const T *>(array);
}

} // namespace libstr::reference

#endif
