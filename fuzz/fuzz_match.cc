// SPDX-License-Identifier: Apache-2.0
//
// Patterns: those that are made of a text match it, and others as an obvious matcher says.
#include "fuzz/text.h"

static bool Matches(std::string_view text, std::string_view pattern)
{
    size_t us = pattern.find('\x1F'), at = 0;
    if (us == std::string_view::npos || !text.starts_with(pattern.substr(0, us)))
        return text == pattern;
    for (; us != std::string_view::npos; us = pattern.find('\x1F')) {
        if (at = text.find(pattern.substr(0, us)); at == std::string_view::npos)
            return false;
        text.remove_prefix(at + us);
        pattern.remove_prefix(us + 1);
    }
    return text.ends_with(pattern);
}

std::string Try(const Input &input, const char *text, const char *pattern)
{
    const CSDescriptor *const cs = &input.cs;
    const bool matches = Matches(text, pattern), lone = input.second == "\x1F",
               valid = input.wellFormed && g_utf8_validate(pattern, -1, nullptr);
    Demand(str_utf8USPatternMatch(text, pattern) == (lone || (valid && matches)));
    Demand(os_USPatternMatch(text, pattern) == matches);
    Demand(str_USPatternMatch(text, text, cs) == 1);
    const int match = str_USPatternMatch(text, pattern, cs);
    int count = 0;
    const CSSegment *list = ccs_GetAllStrs(cs, pattern, -1, &count);
    const int kind = count == 2 ? list->kind : CS_SEG_IGNORE;
    list = ccs_GetAllStrs(cs, text, -1, &count);
    Demand(count != 2 || kind == CS_SEG_IGNORE || str_EquivTypes(list->kind, kind) == 0 ||
           match == matches);

    // A US matches what there is in one segment between two places.
    const size_t from = str_truncstrlen(text, input.limit, cs);
    const size_t to = str_truncstrlen(text, input.limit + input.choice, cs);
    size_t end = 0;
    bool apt = !input.plain && count > 1 && list[count - 2].kind != CS_SEG_IGNORE;
    for (; list->kind != CS_SEG_END; ++list) {
        apt = apt && list->kind != CS_SEG_RAW &&
              (list->kind != CS_SEG_IGNORE || end > from || from >= end + list->length);
        end += end > from ? 0 : list->length;
    }
    const std::string own = input.first.substr(0, input.plain ? 0 : from) + '\x1F' +
                            (apt ? text + (to > end ? from : to) : "");
    for (const auto &[its, byte] : KindsOf(*cs, own))
        apt = apt && its != CS_SEG_RAW;
    if (apt && input.first.find('\x1F') == std::string::npos)
        Demand(str_USPatternMatch(text, Guarded(own).c_str(), cs) == 1);
    return std::to_string(match);
}
