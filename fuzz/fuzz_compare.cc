// SPDX-License-Identifier: Apache-2.0
//
// Equality, order and upper case of two texts, and the order of O/R names.
#include "fuzz/text.h"

#include <platform/nm.h>

static int Sign(int order) { return (order > 0) - (order < 0); }

// Two texts, in this order and the other one: which comes first does not matter where it should not.
static std::string CheckOrder(const Input &input, const char *a, const char *b, int caseless)
{
    const CSDescriptor *const cs = &input.cs, *const cs2 = &input.cs2;
    const unsigned int n = input.limit, m = input.choice, all = INT_MAX + 1U;
    const int differ = str_DoCompareToEnd(a, b, caseless, cs, cs2),
              bytes = str_DoCompareByByteLen(a, b, n, m, caseless, cs, cs2),
              chars = str_DoCompareByCharLen(a, b, n, caseless, cs, cs2),
              order = Sign(str_cmpTextStr(a, b, caseless, cs, cs2));
    Demand(str_DoCompareToEnd(b, a, caseless, cs2, cs) == differ &&
           str_DoCompareByByteLen(b, a, m, n, caseless, cs2, cs) == bytes &&
           str_DoCompareByCharLen(b, a, n, caseless, cs2, cs) == chars &&
           Sign(str_cmpTextStr(b, a, caseless, cs2, cs)) == -order);
    Demand(str_cmpTextStr(a, a, caseless, cs, cs) == 0);
    Demand(n > input.first.size() || str_DoCompareByByteLen(a, a, n, n, caseless, cs, cs) == 0);
    const std::string part = input.first.substr(0, str_truncstrlen(a, n, cs));
    Demand(input.plain || str_cmpTextStr(part.c_str(), a, caseless, cs, cs) <= 0);

    // As their bytes with the kinds say.
    const Kinds kinds = KindsOf(*cs, a), kinds2 = KindsOf(*cs2, b);
    const bool same = std::equal(kinds.begin(), kinds.end(), kinds2.begin(), kinds2.end(), IsSame);
    if (*a != '\0' && *b != '\0' && !input.utf8 && ccs_GetCSName(cs2) != "UTF8"s) {
        Demand((str_DoCompareToEnd(a, b, 0, cs, cs2) == 0) == same && (differ == 0 || !same));
        Demand((str_DoCompareByByteLen(a, b, all, all, 0, cs, cs2) == 0) == same);
        Demand((str_DoCompareByCharLen(a, b, all, 0, cs, cs2) == 0) == same);
        Demand((differ == 0) == (order == 0));
    }
    return std::to_string(differ) + std::to_string(bytes) + std::to_string(chars + 4 * order);
}

static std::string CheckUpper(const Input &input, const char *text)
{
    int length = -1;
    const char *const made = str_ToUpper(text, -1, &length, &input.cs);
    Demand((made == nullptr) == (input.utf8 && !input.wellFormed));
    const std::string upper = made == nullptr ? "" : made;
    Demand(made == nullptr ? length == -1 : upper.size() == static_cast<size_t>(length));
    // The upper case of the dotless i (F5, FD) is in another set, and of a byte after ESC part of a
    // sequence.  A mark before a letter that has no such mark (C1 to CF) makes two characters of
    // the two for one function, and one for the other.
    if ((input.cs.escMode != 0 ? !input.utf8 : input.plain) &&
        input.first.find_first_of("\x1B\xF5\xFD") == std::string::npos &&
        ((input.flags & CS_FLAG_T61) == 0 ||
         input.first.find_first_of("\xC1\xC2\xC3\xC4\xC5\xC6\xC7\xC8\xC9\xCA\xCB\xCC\xCD\xCE"
                                   "\xCF") == std::string::npos)) {
        Demand(str_DoCompareToEnd(upper.c_str(), text, 1, &input.cs, &input.cs) == 0);
        Demand(str_ToUpper(upper.c_str(), -1, &length, &input.cs) == upper);
    }
    return upper;
}

static std::string CheckNames(const Input &input, const char *a, const char *b)
{
    const char *const set = ccs_GetCSName(&input.cs);
    const int any = static_cast<int>(input.choice / 8 % 2);
    const int order = Sign(str_cmpORName(a, b, set, any, "S,G,DDT1,DDV1,OU1,OU,C,X.121"));
    Demand(Sign(str_cmpORName(b, a, set, any, "S,G,DDT1,DDV1,OU1,OU,C,X.121")) == -order);
    Demand(str_cmpORName(a, a, set, any, b) == 0);
    nm_ORName name;
    int status, length;
    nm_ParseORN(a, &name, &status);
    for (int field = 0; field < NM_FIELD_COUNT; ++field) {
        const char *const value = nm_GetFieldMemPtr(a, &name, field, &length);
        Demand(value == nullptr ? length == 0
                                : value >= a && value + length <= a + input.first.size() &&
                                      !*t61_ParseO61Str(value, length) == (field < NM_T61_FORM));
    }
    return std::to_string(order);
}

std::string Try(const Input &input, const char *a, const char *b)
{
    return input.choice % 4 == 0 ? CheckNames(input, a, b)
                                 : CheckOrder(input, a, b, static_cast<int>(input.choice / 4 % 2)) +
                                       CheckUpper(input, a);
}
