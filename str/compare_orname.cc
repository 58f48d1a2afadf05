// SPDX-License-Identifier: Apache-2.0
//
// Comparison of O/R names, attribute by attribute.  The name services parse them, and
// str_cmpTextStr orders their values.
#include <str/compare.h>

#include <platform/ccs.h>
#include <platform/mdc.h>
#include <platform/nm.h>

#include <algorithm>
#include <cstring>

namespace
{

constexpr int kMost = 255; // bytes of a value that are compared

// A copy of a value, which no NUL follows in its name, and its set.
struct Value {
    char text[kMost + 1];
    CSDescriptor cs;
};

// Which T.61 forms are used.
struct Acceptable {
    const char *charsetName;
    bool any;
};

void Take(const char *bytes, int length, const char *charsetName, Value *value)
{
    const int kept = std::clamp(length, 0, kMost);
    mdc_strlcpy(value->text, bytes == nullptr ? "" : bytes, static_cast<size_t>(kept) + 1);
    ccs_GetCSDescriptor(charsetName, &value->cs);
}

void TakeField(const char *orName, int field, Acceptable acceptable, Value *value)
{
    nm_ORName parsed;
    int status;
    nm_ParseORN(orName, &parsed, &status);
    int length = 0;
    if (NM_HAS_T61_FORM(field)) {
        const char *form = nm_GetFieldMemPtr(orName, &parsed, field + NM_T61_FORM, &length);
        const char *set = form == nullptr ? nullptr : t61_ParseO61Str(form, length);
        if (set != nullptr && (acceptable.any || std::strcmp(set, acceptable.charsetName) == 0))
            return Take(form, length, set, value);
    }
    const char *plain = nm_GetFieldMemPtr(orName, &parsed, field, &length);
    Take(plain, length, "IA5", value);
}

} // namespace

int str_cmpORName(const char *orName1, const char *orName2, const char *charsetName, int anyCharset,
                  const char *attributes)
{
    const Acceptable acceptable = {charsetName, anyCharset != 0};
    int order = 0;
    while (order == 0 && *attributes != '\0') {
        const char *const comma = mdc_strchr(attributes, ',');
        const int length =
            comma == nullptr ? -1
                             : static_cast<int>(std::min<ptrdiff_t>(comma - attributes, INT32_MAX));
        const int field = da_AttIdToORNIndex(attributes, length);
        Value value1;
        Value value2;
        TakeField(orName1, field, acceptable, &value1);
        TakeField(orName2, field, acceptable, &value2);
        order = str_cmpTextStr(value1.text, value2.text, 1, &value1.cs, &value2.cs);
        attributes = comma == nullptr ? "" : comma + 1;
    }
    return order;
}
