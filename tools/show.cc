// SPDX-License-Identifier: Apache-2.0
#include "tools/show.h"

#include "tools/stream.h"

#include <str/display.h>

#include <CLI/CLI.hpp>
#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace strtool
{
namespace
{

constexpr char kEsc = '\x1B';

bool IsPrintable(char byte) { return byte >= 0x20 && byte < 0x7F; }

size_t ColumnsOf(std::string_view utf8)
{
    if (utf8.empty())
        return 0;
    return static_cast<size_t>(str_utf8DispStrLen(utf8.data(), static_cast<int>(utf8.size()), 1));
}

bool IsSet(const char *variable)
{
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool IsDumbTerminal()
{
    const char *terminal = std::getenv("TERM");
    return terminal == nullptr || std::string_view(terminal) == "dumb";
}

} // namespace

std::string VisibleBytes(std::string_view bytes)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string visible;
    visible.reserve(bytes.size());
    for (const char byte : bytes) {
        if (byte == kEsc)
            visible += "\\e";
        else if (byte == '\\')
            visible += "\\\\";
        else if (IsPrintable(byte))
            visible += byte;
        else
            visible.append("\\x")
                .append(1, kDigits[(byte >> 4) & 0xF])
                .append(1, kDigits[byte & 0xF]);
    }
    return visible;
}

size_t VisibleBytesWidth(std::string_view bytes)
{
    size_t width = 0;
    for (const char byte : bytes)
        width += byte == kEsc || byte == '\\' ? 2U : IsPrintable(byte) ? 1U : 4U;
    return width;
}

std::string VisibleText(std::string_view utf8)
{
    std::string visible;
    for (const char *at = utf8.data(), *end = at + utf8.size(); at < end;) {
        const gunichar c = g_utf8_get_char(at);
        const char *next = at + g_utf8_skip[static_cast<unsigned char>(*at)];
        if (g_unichar_isprint(c)) {
            visible.append(at, next);
        } else {
            char written[16];
            std::snprintf(written, sizeof written, "\\u{%X}", c);
            visible += written;
        }
        at = next;
    }
    return visible;
}

void AddColorOption(CLI::App &verb, std::string &when)
{
    verb.add_option("--color", when, "When to colour the output")
        ->type_name("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->capture_default_str();
}

bool UseColor(const std::string &when)
{
    if (when != "auto")
        return when == "always";
    return isatty(STDOUT_FILENO) != 0 && !IsSet("NO_COLOR") && !IsDumbTerminal();
}

void Row::Left(std::string_view text, size_t width, Color color)
{
    const size_t columns = ColumnsOf(text);
    Put(text, color);
    blanks += (columns < width ? width - columns : 0) + 2;
}

void Row::Right(std::string_view text, size_t width, Color color)
{
    const size_t columns = ColumnsOf(text);
    blanks += columns < width ? width - columns : 0;
    Put(text, color);
    blanks += 2;
}

void Row::Put(std::string_view text, Color color)
{
    if (text.empty())
        return;
    line.append(blanks, ' ');
    blanks = 0;
    if (colored && !color.empty())
        line.append("\x1B[").append(color).append("m").append(text).append("\x1B[0m");
    else
        line.append(text);
}

void Row::Print()
{
    line += '\n';
    strtool::Put(line);
    line.clear();
    blanks = 0;
}

} // namespace strtool
