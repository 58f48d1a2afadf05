// SPDX-License-Identifier: Apache-2.0
#include "tools/decode.h"

#include "services/services.h"

#include <platform/ccs.h>

namespace strtool
{
namespace
{

// The codes of iconv that accept the designations of the most sets.
constexpr const char *kDesignating[] = {"ISO-2022-JP-2", "ISO-2022-JP-3"};

const char *IconvNameOf(const CSDescriptor &cs)
{
    ccs_SetInfo set;
    for (int i = 0; ccs_GetSetInfo(i, &set) != 0; ++i)
        if (set.number == cs.csNum)
            return set.iconvName;
    return nullptr;
}

std::unique_ptr<Converter> Open(const char *code)
{
    auto converter = std::make_unique<Converter>("UTF-8", code);
    return converter->IsOpen() ? std::move(converter) : nullptr;
}

bool Takes(Converter &converter, const std::string &designation)
{
    std::string shown;
    return converter.Convert(designation, shown) == designation.size() && shown.empty();
}

// The length of the unit at `at`, and whether it is a character or control to show.
struct Unit {
    size_t length;
    bool counts;
};

Unit UnitAt(std::string_view bytes, size_t at, const CSDescriptor &cs)
{
    int length = 0;
    const int counts =
        ccs_GetNextCharLen(bytes.data() + at, static_cast<int>(bytes.size() - at), &length, &cs);
    return {length < 1 ? 1 : static_cast<size_t>(length), counts != 0};
}

bool IsGraphicLeft(char byte) { return byte > 0x20 && byte < 0x7F; }

bool Fail(std::string &text)
{
    text += kUndecodable;
    return false;
}

} // namespace

bool Decoder::Way::Append(const std::string &codes, std::string &text) const
{
    const std::string bytes = designation + codes;
    return converter->Convert(bytes, text) == bytes.size();
}

Decoder::Way Decoder::FindWay(const CSDescriptor &segCs)
{
    const uint32_t flags = ccs_GetCSFlags(&segCs);
    const bool isByteSet = (flags & CS_FLAG_BYTE) != 0;
    if (auto converter = Open(IconvNameOf(segCs)))
        return {std::move(converter), "", isByteSet};
    if ((flags & CS_FLAG_ASCII_SUPERSET) != 0)
        return {Open("ASCII"), "", isByteSet};
    const char *designation = ccs_GetDesignation(&segCs, 1);
    if (designation != nullptr && *designation != '\0')
        for (const char *code : kDesignating)
            if (auto converter = Open(code); converter && Takes(*converter, designation))
                return {std::move(converter), designation, isByteSet};
    return {nullptr, "", isByteSet};
}

bool Decoder::Decode(std::string_view bytes, const CSDescriptor &segCs, std::string &text)
{
    auto found = ways.find(segCs.csNum);
    if (found == ways.end())
        found = ways.emplace(segCs.csNum, FindWay(segCs)).first;
    const Way &way = found->second;
    if (way.converter == nullptr)
        return Fail(text);

    // A set by itself has neither single shifts nor, in seven bits, top bits.
    std::string codes;
    for (size_t at = 0; at < bytes.size();) {
        const Unit unit = UnitAt(bytes, at, segCs);
        if (unit.counts)
            codes.append(bytes, at, unit.length);
        at += unit.length;
    }
    if (!way.designation.empty())
        for (char &code : codes) {
            if (way.isByteSet && IsGraphicLeft(code))
                return Fail(text); // a character of the set in the left half
            code = static_cast<char>(code & 0x7F);
        }

    if (way.Append(codes, text))
        return true;
    for (size_t at = 0; at < codes.size();) { // at least the characters that are known
        const std::string unit = codes.substr(at, UnitAt(codes, at, segCs).length);
        if (!way.Append(unit, text))
            Fail(text);
        at += unit.size();
    }
    return false;
}

} // namespace strtool
