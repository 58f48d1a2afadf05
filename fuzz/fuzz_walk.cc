// SPDX-License-Identifier: Apache-2.0
//
// The segments of a text, its width, and the search in it.
#include "fuzz/text.h"

namespace libstr
{
extern const CSReaders kReaders;
}

std::string Try(const Input &input, const char *text, const char *)
{
    const CSDescriptor cs = input.cs;
    const bool cut = input.choice % 2 != 0, byColumns = input.choice % 4 > 1,
               wide = input.choice % 16 == 0; // what is sought, which is no byte
    const size_t size = std::min<size_t>(cut ? input.limit : SIZE_MAX, input.first.size());
    const std::string part = input.first.substr(0, size);
    Demand(KindsOf(cs, part) == KindsOf(cs, input.first, static_cast<int>(size)));
    const unsigned int columns = str_dispstrlen(text, &cs);
    const auto byte = static_cast<signed char>(input.limit);
    const char *const found = str_strchr(text, byte + (wide ? 256 : 0), &cs);
    const std::string said =
        std::to_string(columns) + " " + std::to_string(found == nullptr ? -1 : found - text);
    CSWalk walk;
    const int length = cut ? static_cast<int>(input.limit) : -1;
    if (ccs_BeginWalk(&walk, &cs, text, length, &libstr::kReaders) == 0)
        return said;

    // The same segments from the reader's calls and from a walk, which cover every byte once.
    const CSWalk begin = walk;
    const char *at = text;
    std::vector<CSSegment> ahead(1 + input.choice % 40);
    std::vector<uint16_t> kinds;
    unsigned int bytes = 0, sum = 0;
    int next = 0, count = 0;
    const char *first = nullptr;
    uint16_t kind = ccs_Get1stStr(&cs, text, length, &bytes);
    for (; kind != CS_SEG_END;
         kind = ccs_GetNextStr(&cs, at, cut ? length - int(at - text) : -1, &bytes)) {
        if (next == count) {
            count = ccs_NextSegments(&walk, ahead.data(), static_cast<int>(ahead.size()));
            next = 0;
        }
        const CSSegment &segment = ahead[static_cast<size_t>(next++)];
        Demand(count > 0 && bytes > 0 && segment.kind == kind && segment.length == bytes &&
               segment.text == at);
        const CSDescriptor segCs = {kind, cs.escMode};
        const bool shown = kind != CS_SEG_IGNORE;
        if (shown)
            sum += kind == CS_SEG_RAW
                       ? bytes
                       : static_cast<unsigned int>(str_GetDispLen(at, bytes, &segCs));
        if (first == nullptr && shown && kind != CS_SEG_RAW &&
            ((input.flags & CS_FLAG_BYTE) || (ccs_GetCSFlags(&segCs) & CS_FLAG_ASCII)))
            first = static_cast<const char *>(std::memchr(at, byte, bytes));
        kinds.insert(kinds.end(), bytes, kind);
        at += bytes;
    }
    Demand(at == text + size && bytes == 0);
    Demand(next < count || ccs_NextSegments(&walk, ahead.data(), 1) == 0);
    if (size == input.first.size()) {
        Demand(found == (cs.escMode == 0 ? std::strchr(text, byte) : wide ? nullptr : first));
        Demand(sum == columns || input.utf8 || (input.plain && cs.escMode == 0));
    }

    // A walk that has passed over a part goes on as the walk of the whole does.
    CSMeasure whole, passed, rest;
    ccs_MeasureText(&(walk = begin), SIZE_MAX, SIZE_MAX, &whole);
    Demand(whole.bytes == size && walk.at == text + size);
    ccs_MeasureText(&(walk = begin), byColumns ? SIZE_MAX : input.limit,
                    byColumns ? input.limit : SIZE_MAX, &passed);
    Demand((byColumns ? passed.columns + passed.lines : passed.bytes) <= input.limit);
    CSWalk copy = walk;
    ccs_MeasureText(&copy, SIZE_MAX, SIZE_MAX, &rest);
    Demand(passed.bytes + rest.bytes == size && passed.columns + rest.columns == whole.columns &&
           passed.shown + rest.shown == whole.shown && passed.lines + rest.lines == whole.lines);
    while (ccs_NextSegments(&walk, ahead.data(), 1) == 1)
        for (uint32_t i = 0; i < ahead[0].length; ++i)
            Demand(kinds.at(static_cast<size_t>(ahead[0].text + i - text)) == ahead[0].kind);
    return said;
}
