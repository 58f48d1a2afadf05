// SPDX-License-Identifier: Apache-2.0
//
// Parts of a text: those that fit, and those of a split, beside slow ones, which go unit by unit.
#include "fuzz/text.h"

// What no cut divides: a sequence, a character with the single shift before it, a byte of no set.
struct Unit {
    unsigned int start, end;
    uint16_t kind;
    int bytes; // that a split counts
    bool hasWidth;
};
using Units = std::vector<Unit>;

static void AddUnits(const CSDescriptor &cs, const CSSegment &segment, Units *units)
{
    const CSDescriptor segCs = {segment.kind, cs.escMode};
    const bool isRaw = segment.kind == CS_SEG_RAW, isIgnored = segment.kind == CS_SEG_IGNORE;
    const bool hasC1 = (ccs_GetCSFlags(&segCs) & CS_FLAG_NO_C1) == 0;
    unsigned int at = units->empty() ? 0 : units->back().end;
    const char *const text = segment.text - at;
    for (unsigned int start = at, end = at + segment.length; at < end;) {
        const char byte = text[at];
        int length = isRaw ? 1 : static_cast<int>(end - at);
        const bool isUnit =
            isRaw || isIgnored || ccs_GetNextCharLen(text + at, length, &length, &segCs) != 0;
        at += static_cast<unsigned int>(length);
        if (!isUnit && at < end)
            continue; // a single shift
        const bool isControl = (byte & 0x60) == 0 && (hasC1 || byte >= 0);
        const bool hasWidth = isRaw || (!isIgnored && !isControl && byte != 0x7F);
        const bool isCounted = hasWidth || (!isIgnored && byte == '\n');
        units->push_back({start, at, segment.kind, isCounted ? length : 0, hasWidth});
        start = at;
    }
}

static Units UnitsOf(const CSDescriptor &cs, const std::string &text)
{
    Units units;
    int count = 0;
    const CSSegment *segment = ccs_GetAllStrs(&cs, text.c_str(), -1, &count);
    for (; segment->kind != CS_SEG_END; ++segment)
        AddUnits(cs, *segment, &units);
    return units;
}

static unsigned int Kept(const Input &input, const Units &units, unsigned int n)
{
    unsigned int kept = input.plain ? n : 0;
    for (const Unit &unit : units)
        kept = unit.end <= n ? std::max(kept, unit.end) : kept;
    return kept;
}

static unsigned int SplitPoint(const Units &units, int mode, int limit)
{
    int used = 0;
    for (const Unit &unit : units) {
        const int takes = unit.bytes == 0 || mode == 1 ? unit.bytes : 1;
        if (takes > limit - used)
            return used == 0 ? 0 : unit.start;
        used += takes;
        if (takes != 0 && used == limit)
            return unit.end;
    }
    return used == 0 ? 0 : units.back().end;
}

// The kind of the last unit, which is at or after `start`; CS_SEG_END if it begins before that.
static uint16_t LastKind(const CSDescriptor &cs, const std::string &text, size_t start)
{
    const Unit last = UnitsOf(cs, text).back();
    return last.start < start ? uint16_t{CS_SEG_END} : last.kind;
}

// The longest start of whole units that fits with what closes it, and may go on with a letter.
static std::string Closed(const CSDescriptor &cs, const std::string &text, unsigned int n)
{
    const Units units = UnitsOf(cs, text);
    for (auto unit = units.rbegin(); unit != units.rend(); ++unit) {
        const std::string kept = text.substr(0, unit->end);
        int length = 0;
        unsigned int at = 0, size = 0;
        for (auto *next = ccs_Get1stStr; at < unit->end; next = ccs_GetNextStr, at += size)
            next(&cs, kept.c_str() + at, static_cast<int>(unit->end - at), &size);
        const char *const escapes = ccs_GetConfAsciiEscs(&cs, cs.escMode, &length);
        const std::string closed = kept + std::string(escapes, escapes + length);
        if (closed.size() <= n && LastKind(cs, kept + "N", kept.size()) != CS_SEG_END &&
            LastKind(cs, closed + "N", 0) == LastKind(cs, "N", 0))
            return closed;
    }
    return "";
}

static bool IsBeginning(const Kinds &part, const Kinds &whole)
{
    return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

static std::string CheckTruncation(const Input &input, const char *text, const Units &units)
{
    const CSDescriptor *const cs = &input.cs;
    const unsigned int n = input.limit, kept = Kept(input, units, n);
    for (const unsigned int most : {n, UINT_MAX, unsigned{INT_MAX}})
        Demand(str_truncstrlen(text, most, cs) == Kept(input, units, most));
    unsigned int length = 0;
    const std::string part = input.first.substr(0, kept), zeros(n, '\0');
    const auto filled = [&](const std::string &begin) { return (begin + zeros).substr(0, n); };
    char *const room = Room(2, n);
    Demand(std::string(str_truncate(room, text, n, cs, &length), n) == filled(part));
    Demand(length == kept);
    const std::string copied = str_strlcpy(room - 1, text, n + 1, cs);
    Demand(copied == part || (input.utf8 && input.first.starts_with(copied)));
    Demand(input.plain || IsBeginning(KindsOf(*cs, part), KindsOf(*cs, input.first)));
    const bool anyByteEnds = input.plain && cs->escMode == 0;
    const std::string closed = anyByteEnds ? part : Closed(*cs, input.first, n);
    Demand(str_truncateclosed(room, text, n, cs) == closed.size());
    Demand(std::string(room, n) == filled(closed));
    return closed;
}

static std::string CheckSplit(const Input &input, const char *text, const Units &units, int mode,
                              int limit)
{
    const CSDescriptor *const cs = &input.cs;
    char *second = nullptr;
    const auto size = static_cast<unsigned int>(input.first.size());
    unsigned int firstLen = 0, secondLen = 0, expected = SplitPoint(units, mode, limit);
    Demand(str_FindSplitPoint(text, mode, limit, cs) == int64_t{expected});
    if (input.plain && cs->escMode == 0) // every byte counts
        expected = std::min(static_cast<unsigned int>(std::max(limit, 0)), size);
    const char *const first = (mode == 1 ? str_SplitByDispBytes : str_SplitByDispLen)(
        text, limit, &second, &firstLen, &secondLen, cs);
    const std::string part = first == nullptr ? "" : first, rest = second == nullptr ? "" : second;
    Demand(part == input.first.substr(0, expected) && (first == nullptr) == (expected == 0));
    Demand(firstLen == expected && secondLen == rest.size());
    Demand((second == nullptr) == (expected == 0 || expected == size));
    if (first == nullptr)
        return "null";
    Demand(second == nullptr || rest.ends_with(text + firstLen));
    Demand(rest.size() <= size - firstLen + 81);
    const Kinds whole = KindsOf(*cs, text), parts = KindsOf(*cs, part), after = KindsOf(*cs, rest);
    Demand(IsBeginning(parts, whole));
    Demand(IsBeginning({after.rbegin(), after.rend()}, {whole.rbegin(), whole.rend()}));
    // A sequence that is not complete may end the first part, and goes on with no other byte.
    const size_t lost = whole.size() - parts.size() - after.size();
    Demand(lost == 0 || lost < part.size() - std::min(part.find_last_of("\x1B\x9B"), part.size()));
    return part + "|" + rest;
}

std::string Try(const Input &input, const char *text, const char *)
{
    const Units units = UnitsOf(input.cs, input.first);
    const auto columns = std::count_if(units.begin(), units.end(), std::mem_fn(&Unit::hasWidth));
    const size_t size = input.first.size(),
                 shown = input.plain && input.cs.escMode == 0 ? size : static_cast<size_t>(columns);
    Demand(input.utf8 || str_dispstrlen(text, &input.cs) == shown);
    std::string all = CheckTruncation(input, text, units);
    const int limit = static_cast<int>(input.limit), within = limit % (static_cast<int>(size) + 3);
    for (const int most : {limit == 255 ? INT_MAX : limit, within - 1, within / 2, within / 4, 1})
        all += CheckSplit(input, text, units, 0, most) + CheckSplit(input, text, units, 1, most);
    return all;
}
