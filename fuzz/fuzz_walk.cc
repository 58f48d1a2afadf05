// SPDX-License-Identifier: Apache-2.0
//
// The segments of a text, its width, and the search in it.
#include "fuzz/text.h"

namespace libstr
{
extern const CSReaders kReaders;
}

static bool BeginsCharacter(const std::string &bytes)
{
    const auto ends = {"\x80", "\xBF", "\x80\x80", "\xBF\x80", "\x80\x80\x80", "\xBF\x80\x80"};
    return std::any_of(ends.begin(), ends.end(), [&](const std::string &end) {
        const std::string all = bytes + end;
        return g_utf8_validate(all.c_str(), -1, nullptr) && g_utf8_strlen(all.c_str(), -1) == 1;
    });
}

// How many characters are in the bytes, of which the last may go on after them, and their bytes.
static std::pair<int, size_t> Characters(const std::string &bytes, bool mayGoOn)
{
    int count = 0;
    size_t at = 0;
    for (; at < bytes.size() && !(mayGoOn && BeginsCharacter(bytes.substr(at))); ++count) {
        const gunichar c = g_utf8_get_char_validated(bytes.c_str() + at, -1);
        at += c < 0x80000000 ? static_cast<size_t>(g_unichar_to_utf8(c, nullptr)) : 1;
    }
    return {count, at};
}

static void CheckUtf8(const std::string &whole, const char *text, unsigned int n)
{
    const CSDescriptor cs = {196, 0};
    const auto escapes = static_cast<int>(std::count(whole.begin(), whole.end(), '\x1B')),
               all = Characters(whole, false).first, limit = static_cast<int>(n);
    Demand(str_dispstrlen(text, &cs) == static_cast<unsigned int>(all));
    Demand(str_utf8DispStrLen(text, -1, 0) == all - escapes);
    const std::string part = whole.substr(0, n);
    const auto [count, bytes] = Characters(part, n <= whole.size());
    const size_t read = std::min<size_t>(n, whole.size() + 1);
    char *const front = std::copy_n(text, read, Room(2, read)) - read, *const copy = Room(3, n);
    Demand(str_utf8DispStrLen(front, limit, 1) == count);
    Demand(str_utf8DispStrLen(text, limit, 0) == count - escapes);
    str_strncpy(copy, front, n, &cs);
    Demand(std::string(copy, n) == part.substr(0, bytes) + std::string(n - bytes, '\0'));
}

std::string Try(const Input &input, const char *text, const char *)
{
    CheckUtf8(input.first, text, input.limit % (static_cast<unsigned int>(input.first.size()) + 4));
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
