// SPDX-License-Identifier: Apache-2.0
//
// References where addresses are wider than 4 bytes: places in a table of blocks, counted from 1.
#include "str/core/reference.h"

#include "str/core/steady.h"

namespace
{

union Place {
    void *block;
    CaseTableRef nextFree; // 0 for none
};

libstr::Steady<Place> thePlaces;
CaseTableRef theCount; // of the places that there are
CaseTableRef theFirstFree;

constexpr bool kIsAddress = sizeof(void *) == sizeof(CaseTableRef);

Place *PlaceOf(CaseTableRef ref) { return ElementAt(thePlaces, ref - 1); }

void PutFree(CaseTableRef ref)
{
    PlaceOf(ref)->nextFree = theFirstFree;
    theFirstFree = ref;
}

} // namespace

namespace libstr::reference
{

void Reserve()
{
    if (kIsAddress || theFirstFree != 0)
        return;
    GrowTo(&thePlaces, theCount);
    PutFree(++theCount);
}

CaseTableRef Make(void *block, CaseTableRef old)
{
    if (kIsAddress)
        return static_cast<CaseTableRef>(reinterpret_cast<uintptr_t>(block));
    CaseTableRef ref = old;
    if (ref == 0) {
        ref = theFirstFree;
        theFirstFree = PlaceOf(ref)->nextFree;
    }
    PlaceOf(ref)->block = block;
    return ref;
}

void *Resolve(CaseTableRef ref)
{
    if (kIsAddress)
        return reinterpret_cast<void *>(uintptr_t{ref}); // NOLINT(performance-no-int-to-ptr)
    return ref == 0 ? nullptr : PlaceOf(ref)->block;
}

void Release(CaseTableRef *ref)
{
    os_free(Resolve(*ref));
    if (!kIsAddress && *ref != 0)
        PutFree(*ref);
    *ref = 0;
}

} // namespace libstr::reference
