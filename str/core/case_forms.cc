// SPDX-License-Identifier: Apache-2.0
#include "str/core/case_forms.h"

#include <algorithm>
#include <cstring>

namespace libstr
{

namespace
{

constexpr gunichar kFormMask = (1U << kFormBits) - 1;

CaseBytes AskGLib(const CaseForms &forms, gunichar character)
{
    char text[8] = {}; // ends with a NUL: GLib looks at what follows the character
    g_unichar_to_utf8(character, text);
    gchar *const changed = forms.change(text, -1);
    CaseBytes result = {0, {}};
    result.length = static_cast<unsigned int>(std::min(std::strlen(changed), CaseBytes::kMost));
    std::memcpy(result.bytes, changed, result.length);
    g_free(changed);
    return result;
}

} // namespace

CaseForm MakeForm(const CaseForms &forms, gunichar character)
{
    const CaseBytes changed = AskGLib(forms, character);
    CaseForm form = 0;
    unsigned int shift = 0;
    for (unsigned int at = 0; at < changed.length; shift += kFormBits) {
        const utf8::Char c = utf8::CharAt(changed.bytes + at);
        form |= static_cast<CaseForm>(c.code) << shift;
        at += c.length;
    }
    const uint64_t high = character / CaseFormStore::kPlaces + 1;
    forms.store->places[character % CaseFormStore::kPlaces].store(high << 3 * kFormBits | form,
                                                                  std::memory_order_relaxed);
    return form;
}

CaseBytes BytesOf(const CaseForms &forms, gunichar character)
{
    if (character >= kFormsEnd)
        return AskGLib(forms, character);
    CaseBytes result = {0, {}};
    for (CaseForm left = FormOf(forms, character); left != 0; left >>= kFormBits)
        result.length += static_cast<unsigned int>(g_unichar_to_utf8(
            static_cast<gunichar>(left & kFormMask), result.bytes + result.length));
    return result;
}

uint16_t MakePair(const CaseForms &forms, gunichar character)
{
    const CaseBytes form = BytesOf(forms, character);
    uint16_t pair = 0;
    if (form.length != sizeof pair)
        return 0;
    std::memcpy(&pair, form.bytes, sizeof pair);
    forms.store->pairs[character].store(pair, std::memory_order_relaxed);
    return pair;
}

} // namespace libstr
