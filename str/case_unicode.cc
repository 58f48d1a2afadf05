// SPDX-License-Identifier: Apache-2.0
//
// Upper case and comparison of text in the universal set, by way of the conversion service.
#include <str/case.h>

#include "str/core/buffer.h"
#include "str/core/frame.h"

#include <platform/cvc.h>

#include <glib.h>

#include <cstring>

using namespace libstr;

namespace
{

// A comparison's first text: the service may reuse its own storage for the second.
thread_local ThreadBuffer<char> theCopy;

constexpr size_t kSpare = 50; // bytes more than needed

// The service's names for a form of the universal set and for its upper case.
struct Form {
    const char *name;
    const char *upperName;
};

Form FormOf(int variant)
{
    switch (variant) {
    case 3:
        return {"UCS2,7", "UCS2UP,7"};
    case 4:
        return {"UCS2,8", "UCS2UP,8"};
    default:
        return {"UCS2", "UCS2UP"};
    }
}

const char *Copy(const char *text, size_t length)
{
    ThreadBuffer<char> *const copy = &theCopy;
    if (copy->capacity <= length)
        Grow(copy, length + kSpare);
    std::memcpy(copy->at, text, length);
    copy->at[length] = '\0';
    return copy->at;
}

bool IsEmpty(const char *text) { return text == nullptr || *text == '\0'; }

} // namespace

char *str_ToUpperUni(const char *in, int inLen, int *outLen, int variant)
{
    const Form form = FormOf(variant);
    char *upper = nullptr;
    frame::TraceEntry();
    int details[3];
    cvc_ConvertString(CVC_REQUEST_TEXT, CVC_OPTIONS_NONE, in, inLen, form.name, form.upperName,
                      &upper, outLen, &details[0], &details[1], &details[2]);
    frame::TraceExit();
    return upper;
}

int str_strcasecmpUni(const char *s1, const char *s2, int variant)
{
    frame::TraceEntry();
    int length = 0;
    const char *first = s1;
    char *upper = str_ToUpperUni(s1, -1, &length, variant);
    if (upper != nullptr && !IsEmpty(s1))
        first = Copy(upper, static_cast<size_t>(length));

    const char *second = s2;
    upper = str_ToUpperUni(s2, -1, &length, variant);
    if (upper != nullptr && !IsEmpty(s2)) {
        upper[length] = '\0';
        second = upper;
    }
    const int order = g_strcmp0(first, second);
    frame::TraceExit();
    return order;
}
