// SPDX-License-Identifier: Apache-2.0
//
// strtool inspect: how texts divide into segments, a line for each.
#include "tools/decode.h"
#include "tools/input.h"
#include "tools/segment.h"
#include "tools/show.h"
#include "tools/verbs.h"

#include <platform/ccs.h>
#include <str/display.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <memory>
#include <span>

namespace strtool
{
namespace
{

constexpr Color kSetColors[] = {"36", "32", "33", "35", "34"};
constexpr size_t kWidestData = 40; // wider data moves the text after it to the right

struct Widths {
    size_t offset;
    size_t kind;
    size_t bytes;
    size_t columns;
    size_t data;
};

class Inspector
{
  public:
    explicit Inspector(bool inColor) : colored(inColor) {}

    void Show(const std::string &text, const CSDescriptor &cs)
    {
        int count;
        const CSSegment *list = ccs_GetAllStrs(&cs, text.c_str(), -1, &count);
        const std::span segments(list, static_cast<size_t>(count) - 1); // without the end's record
        const std::string columns = std::to_string(str_dispstrlen(text.c_str(), &cs));

        const Widths widths = WidthsOf(segments, text.size(), columns.size());
        if (shown++ != 0)
            Row(colored).Print();
        ShowHeader(widths);
        for (const CSSegment &segment : segments)
            ShowSegment(segment, static_cast<size_t>(segment.text - text.c_str()), cs, widths);
        ShowTotal(segments.size(), text.size(), columns, cs, widths);
    }

  private:
    static Widths WidthsOf(std::span<const CSSegment> segments, size_t bytes, size_t columnDigits)
    {
        const size_t byteDigits = std::max(std::to_string(bytes).size(), size_t{5});
        Widths widths = {std::max(byteDigits, size_t{6}), 6, byteDigits,
                         std::max(columnDigits, size_t{7}), 4};
        for (const CSSegment &segment : segments) {
            widths.kind = std::max(widths.kind, std::string_view(KindName(segment)).size());
            if (widths.data < kWidestData)
                widths.data = std::max(widths.data, VisibleBytesWidth(BytesOf(segment)));
        }
        widths.data = std::min(widths.data, kWidestData);
        return widths;
    }

    // ASCII in the terminal's colour, every other set in one of its own while there are enough.
    Color ColorOf(const CSSegment &segment)
    {
        if (IsEscape(segment))
            return kDim;
        if (IsRaw(segment))
            return kRed;
        const CSDescriptor cs = {segment.kind, 0};
        if ((ccs_GetCSFlags(&cs) & (CS_FLAG_ASCII | CS_FLAG_T61)) == CS_FLAG_ASCII)
            return kPlain;
        return colors.try_emplace(segment.kind, kSetColors[colors.size() % std::size(kSetColors)])
            .first->second;
    }

    void ShowHeader(const Widths &widths) const
    {
        Row row(colored);
        row.Right("offset", widths.offset, kDim);
        row.Left("kind", widths.kind, kDim);
        row.Right("bytes", widths.bytes, kDim);
        row.Right("columns", widths.columns, kDim);
        row.Left("data", widths.data, kDim);
        row.Left("text", 0, kDim);
        row.Print();
    }

    void ShowSegment(const CSSegment &segment, size_t offset, const CSDescriptor &cs,
                     const Widths &widths)
    {
        const CSDescriptor segCs = {segment.kind, cs.escMode};
        const bool hasText = !IsEscape(segment) && !IsRaw(segment);
        const unsigned int columns =
            hasText
                ? static_cast<unsigned int>(str_GetDispLen(segment.text, segment.length, &segCs))
            : IsRaw(segment) ? segment.length
                             : 0;
        const Color color = ColorOf(segment);
        Row row(colored);
        row.Right(std::to_string(offset), widths.offset);
        row.Left(KindName(segment), widths.kind, color);
        row.Right(std::to_string(segment.length), widths.bytes);
        row.Right(std::to_string(columns), widths.columns);
        row.Left(VisibleBytes(BytesOf(segment)), widths.data, color);
        if (hasText) {
            std::string text;
            decoder.Decode(BytesOf(segment), segCs, text);
            row.Left(VisibleText(text), 0, color);
        }
        row.Print();
    }

    void ShowTotal(size_t segments, size_t bytes, const std::string &columns,
                   const CSDescriptor &cs, const Widths &widths) const
    {
        Row row(colored);
        row.Right("", widths.offset);
        row.Left("total", widths.kind, kDim);
        row.Right(std::to_string(bytes), widths.bytes, kDim);
        row.Right(columns, widths.columns, kDim);
        row.Left(std::to_string(segments) + (segments == 1 ? " segment" : " segments") + " of " +
                     ccs_GetCSName(&cs),
                 0, kDim);
        row.Print();
    }

    const bool colored;
    size_t shown = 0; // texts
    Decoder decoder;
    std::map<uint16_t, Color> colors; // given so far, by kind
};

} // namespace

void AddInspect(CLI::App &app, int &status)
{
    CLI::App *verb = app.add_subcommand("inspect", "Show the segments that each text consists of");
    const auto options = std::make_shared<TextOptions>();
    const auto when = std::make_shared<std::string>("auto");
    AddTextOptions(*verb, *options);
    AddColorOption(*verb, *when);
    verb->callback([options, when, &status] {
        Inspector inspector(UseColor(*when));
        status = ForEachText(*options, [&](const std::string &text, const CSDescriptor &cs) {
            inspector.Show(text, cs);
        });
    });
}

} // namespace strtool
