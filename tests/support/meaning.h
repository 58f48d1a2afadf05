// SPDX-License-Identifier: Apache-2.0
//
// A slow matcher: what a text says decides, not the escape sequences in it.
#ifndef TESTS_SUPPORT_MEANING_H
#define TESTS_SUPPORT_MEANING_H

#include "tests/support/test.h"

// A text as it is matched: its bytes with their sets, and a NUL of kind CS_SEG_END.
struct Meaning {
    std::string text;
    Kinds symbols;
    bool isOneSegment = false;

    Meaning(const std::string &bytes, const CSDescriptor &cs)
        : text(bytes), symbols(KindsOf(cs, text))
    {
        int count = 0;
        const CSSegment *const list = ccs_GetRealStrs(&cs, text.c_str(), -1, &count);
        isOneSegment = count == 2 && list->length == text.size();
        symbols.emplace_back(CS_SEG_END, '\0');
    }

    static bool Alike(const Kinds::value_type &a, const Kinds::value_type &b)
    {
        return a.first != CS_SEG_END && str_EquivTypes(a.first, b.first) != 0;
    }

    // Whether each byte of the pattern matches, from the last on.  Of two US in a row the second
    // needs a byte that its set can be compared with, unless both texts are one segment.
    bool Matches(const Meaning &pattern) const
    {
        const auto &s = symbols, &p = pattern.symbols;
        if (text.empty() || pattern.text.empty() || text == pattern.text)
            return text == pattern.text;
        const bool strict = !isOneSegment || !pattern.isOneSegment || !Alike(s[0], p[0]);
        const size_t end = s.size() - 1;
        std::vector<char> rest(s.size(), 0), row(s.size(), 0); // from which bytes on they match
        rest[end] = 1;
        for (size_t j = p.size() - 1; j-- > 0; rest = row)
            for (size_t i = s.size(); i-- > 0;)
                if (p[j].second != '\x1F')
                    row[i] =
                        i < end && rest[i + 1] && s[i].second == p[j].second && Alike(s[i], p[j]);
                else
                    row[i] = (i < end && row[i + 1]) ||
                             (rest[i] &&
                              (!strict || p[j + 1].second != '\x1F' || Alike(s[i], p[j + 1])));
        return rest[0] != 0 && end > 0 && p.size() > 1;
    }
};

#endif
