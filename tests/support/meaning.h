// SPDX-License-Identifier: Apache-2.0
//
// What a pattern means, said without pieces: whether each of its bytes matches, from the last on.
#ifndef TESTS_SUPPORT_MEANING_H
#define TESTS_SUPPORT_MEANING_H

#include "base/wildcard.h"

#include <platform/ccs.h>

#include <cstring>
#include <string>
#include <vector>

// A text as it is matched: its bytes with their sets, and a NUL of kind CS_SEG_END.
struct Meaning {
    struct Symbol {
        char byte;
        uint16_t kind;
    };
    std::string text;
    std::vector<Symbol> symbols = {};
    bool isOneSegment = false;

    Meaning(const std::string &bytes, const CSDescriptor &cs) : text(bytes)
    {
        int count = 0;
        const CSSegment *const list = ccs_GetRealStrs(&cs, text.c_str(), -1, &count);
        for (int i = 0; i < count; ++i)
            for (unsigned int at = 0; at < list[i].length; ++at)
                symbols.push_back({list[i].text[at], list[i].kind});
        isOneSegment = count == 2 && list->length == text.size();
        symbols.push_back({'\0', CS_SEG_END});
    }

    // `equivalent` says of two kinds whether their bytes are compared.  Of two US in a row the
    // second needs a byte that its set can be compared with, unless both texts are one segment.
    template <class Equivalent>
    bool Matches(const Meaning &pattern, Equivalent equivalent) const
    {
        const auto &s = symbols, &p = pattern.symbols;
        if (text.empty() || pattern.text.empty() || text == pattern.text)
            return text == pattern.text;
        const auto alike = [&](size_t i, size_t j) { return equivalent(s[i].kind, p[j].kind); };
        const bool strict = !isOneSegment || !pattern.isOneSegment || !alike(0, 0);
        const size_t end = s.size() - 1;
        std::vector<char> rest(s.size(), 0), row(s.size(), 0); // from which bytes on they match
        rest[end] = 1;
        for (size_t j = p.size() - 1; j-- > 0; rest = row)
            for (size_t i = s.size(); i-- > 0;)
                if (p[j].byte != libstr::wildcard::kUs)
                    row[i] = i < end && rest[i + 1] && s[i].byte == p[j].byte && alike(i, j);
                else
                    row[i] = (i < end && row[i + 1]) ||
                             (rest[i] && (!strict || p[j + 1].byte != libstr::wildcard::kUs ||
                                          alike(i, j + 1)));
        return rest[0] != 0 && end > 0 && p.size() > 1;
    }
};

#endif
