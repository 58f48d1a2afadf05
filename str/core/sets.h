// SPDX-License-Identifier: Apache-2.0
//
// What the library asks about a character set.  One call of the service gets all flags of a set, so
// code with several questions keeps a SetFlags.
#ifndef STR_CORE_SETS_H
#define STR_CORE_SETS_H

#include <platform/ccs.h>

namespace libstr
{

struct SetFlags {
    SetFlags(const CSDescriptor *cs) : word(ccs_GetCSFlags(cs)) {}
    bool Has(uint32_t flags) const { return (word & flags) == flags; }

    uint32_t word;
};

// The flags of the set that a segment's kind names.
inline SetFlags FlagsOf(uint16_t kind)
{
    const CSDescriptor cs = {kind, 0};
    return &cs;
}

inline bool HasByteCharacters(SetFlags set) { return set.Has(CS_FLAG_BYTE); }
inline bool HasBaseUnits(SetFlags set) { return set.Has(CS_FLAG_T61); }
inline bool HasCase(SetFlags set) { return set.Has(CS_FLAG_CASE); }
inline bool IsAscii(SetFlags set) { return set.Has(CS_FLAG_ASCII); }
inline bool HoldsAscii(SetFlags set) { return set.Has(CS_FLAG_ASCII_SUPERSET); }
inline bool IsUniform(SetFlags set) { return set.Has(CS_FLAG_UNIFORM); }
inline bool SwitchesSets(SetFlags set) { return set.Has(CS_FLAG_ESCAPES); }
inline bool HasNoC1(SetFlags set) { return set.Has(CS_FLAG_NO_C1); }

// Text of the set can be counted and cut at any byte.
inline bool IsPlainByteSet(SetFlags set) { return HasByteCharacters(set) && !HasBaseUnits(set); }

// The one set that the library knows by name.
inline bool IsUtf8(const CSDescriptor *cs)
{
    const char *n = ccs_GetCSName(cs); // most names differ in the first byte: not worth a call
    return n[0] == 'U' && n[1] == 'T' && n[2] == 'F' && n[3] == '8' && n[4] == '\0';
}

} // namespace libstr

#endif
