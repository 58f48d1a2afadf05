// SPDX-License-Identifier: Apache-2.0
//
// What GLib makes of single characters (g_utf8_strup, g_utf8_casefold), kept, since GLib allocates
// for every call.
//
// A form is up to three characters of 18 bits, the first one in the lowest bits.  With the high
// bits of its character it fits in one number, which is read and written at once.  So any number of
// threads may share the forms, and in the worst case ask GLib twice.
#ifndef STR_CORE_CASE_FORMS_H
#define STR_CORE_CASE_FORMS_H

#include "base/utf8.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace libstr
{

using CaseForm = uint64_t;

inline constexpr unsigned int kFormBits = 18; // of each character

// Forms are kept for the characters below; the others have no case.
inline constexpr gunichar kFormsEnd = 0x20000;

struct CaseFormStore {
    static constexpr gunichar kPlaces = 2048;

    std::atomic<uint64_t> places[kPlaces]; // by the low bits of characters
    std::atomic<uint16_t> pairs[0x800];    // of the characters of two bytes: see PairOf
};

struct CaseForms {
    gchar *(*change)(const gchar *, gssize);
    CaseFormStore *store;
};

// Asks GLib, and keeps the form.
CaseForm MakeForm(const CaseForms &forms, gunichar character);

// The form of a character below kFormsEnd.
inline CaseForm FormOf(const CaseForms &forms, gunichar character)
{
    constexpr unsigned int kShift = 3 * kFormBits;
    const uint64_t place =
        forms.store->places[character % CaseFormStore::kPlaces].load(std::memory_order_relaxed);
    const gunichar high = character / CaseFormStore::kPlaces + 1; // not 0, as a free place is
    return place >> kShift == high ? place & ((uint64_t{1} << kShift) - 1)
                                   : MakeForm(forms, character);
}

struct CaseBytes {
    static constexpr size_t kMost = 12;

    unsigned int length;
    char bytes[kMost];
};

// The bytes of the form of any well-formed character.
CaseBytes BytesOf(const CaseForms &forms, gunichar character);

// Asks GLib, and keeps the pair.
uint16_t MakePair(const CaseForms &forms, gunichar character);

// The form of the well-formed character of two bytes at `at`, if that has two bytes too: these as
// they are in memory, else 0.
inline uint16_t PairOf(const CaseForms &forms, const char *at)
{
    const gunichar character =
        static_cast<guchar>(at[0]) * 0x40U + static_cast<guchar>(at[1]) - (0xC0 * 0x40 + 0x80);
    const uint16_t pair = forms.store->pairs[character].load(std::memory_order_relaxed);
    return pair != 0 ? pair : MakePair(forms, character);
}

} // namespace libstr

#endif
