// SPDX-License-Identifier: Apache-2.0
//
// How output looks: visible bytes, columns, colour.
#ifndef TOOLS_SHOW_H
#define TOOLS_SHOW_H

#include <string>
#include <string_view>

namespace CLI
{
class App;
}

namespace strtool
{

// Bytes as they may be typed: ESC as \e, backslash as \\, other control and high bytes as \xHH.
std::string VisibleBytes(std::string_view bytes);
size_t VisibleBytesWidth(std::string_view bytes);

// UTF-8 with unprintable characters as \u{HHHH}.
std::string VisibleText(std::string_view utf8);

// ---- Colour --------------------------------------------------------------------------------

// Declares --color; `when` holds the default.
void AddColorOption(CLI::App &verb, std::string &when);

// Whether to colour standard output: always, never, or auto, which depends on the terminal and the
// environment variables NO_COLOR and TERM.
bool UseColor(const std::string &when);

// The text between ESC [ and m.  Empty: the terminal's colour.
using Color = std::string_view;
inline constexpr Color kPlain = "";
inline constexpr Color kDim = "2";
inline constexpr Color kRed = "31";

// ---- Rows ----------------------------------------------------------------------------------

// A line of cells, two blanks apart.
class Row
{
  public:
    explicit Row(bool inColor) : colored(inColor) {}

    // A cell of at least `width` columns.
    void Left(std::string_view text, size_t width, Color color = kPlain);
    void Right(std::string_view text, size_t width, Color color = kPlain);

    // Writes the line, without the blanks at its end, to standard output.
    void Print();

  private:
    void Put(std::string_view text, Color color);

    std::string line;
    size_t blanks = 0; // due before the next cell
    bool colored;
};

} // namespace strtool

#endif
