// SPDX-License-Identifier: Apache-2.0
#include "services/ccs/table.h"
#include "tests/support/test.h"

#include <array>

namespace
{

// A graphic set: the kinds of its text in each half (0: not a set of this half), its bytes, and the
// set that it makes one text with.
struct Set {
    uint16_t left, right;
    unsigned int bytes;
    uint16_t partner;
};

// By size, intermediate bytes and final byte: "94 B", "96 A", "94n B".
const std::map<std::string, Set> kSets = [] {
    std::map<std::string, Set> sets;
    for (const libstr::ccs::Row &row : libstr::ccs::kRows) {
        const char *const sizes[] = {"", "94 ", "96 ", "94n ", "96n "};
        std::string key = sizes[static_cast<int>(row.graphic)];
        key += row.intermediate == 0 ? "" : std::string(1, row.intermediate);
        const uint16_t partner = row.units == libstr::ccs::Units::marked ? 0 : row.partner;
        if (row.final != 0)
            sets[key + row.final] = {row.left, row.right, row.bytes, partner};
    }
    return sets;
}();

struct Code {
    std::array<std::string, 4> g;
    int left, right;
    char coding = '@'; // ISO 2022; G is UTF-8, ? one that is not known
};
const std::map<std::string, Code> kStarts = {
    {"IA5", {{"94 B"}, 0, -1}},
    {"ISO-2022-JP", {{"94 B"}, 0, -1}},
    {"ISO-2022-KR", {{"94 B"}, 0, -1}},
    {"EUC-JP", {{"94 B", "94n B", "94 I", "94n D"}, 0, 1}},
    {"EUC-KR", {{"94 B", "94n C"}, 0, 1}},
    {"T.61", {{"94 u", "", "94 v"}, 0, 2}},
    {"ISO-8859-1", {{"94 B", "96 A"}, 0, 1}},
    {"JIS X 0201", {{"94 J", "94 I"}, 0, 1}},
    {"UTF8", {{"94 B"}, 0, -1, 'G'}},
    {"no such set", {{}, 0, -1}},
};

struct Reader {
    std::string_view text;
    Code code;
    bool escapes, shifts;                    // whether it heeds them
    size_t rawByte = std::string_view::npos; // where a single shift has made the next byte raw

    unsigned int At(size_t i) const
    {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
    }
    std::string Held(int element) const
    {
        return element < 0 ? "" : code.g.at(static_cast<size_t>(element));
    }
    Set SetOf(int element) const
    {
        const auto found = kSets.find(Held(element));
        return found == kSets.end() ? Set{0, 0, 1, 0} : found->second;
    }
    bool AreOneText() const
    {
        const uint16_t left = SetOf(code.left).left;
        return left != 0 && Held(code.left) != "94 u" && SetOf(code.right).partner == left;
    }
    uint16_t LeftKind() const
    {
        const uint16_t left = SetOf(code.left).left;
        return AreOneText() ? SetOf(code.right).right : left != 0 ? left : uint16_t{CS_SEG_RAW};
    }

    struct Unit {
        uint16_t kind;
        size_t length;
    };

    // The character at i in the set that `element` holds.
    Unit Character(size_t i, int element, bool baseInLeft, bool invoked) const
    {
        const Unit raw = {CS_SEG_RAW, 1};
        const unsigned int byte = At(i), low = byte & 0x7F;
        const Set set = SetOf(element);
        const bool inRight = byte >= 0x80;
        const uint16_t own = inRight ? set.right : set.left;
        if (own == 0 || ((low == 0x20 || low == 0x7F) && !Held(element).starts_with("96")))
            return raw;
        if (Held(element) == "94 u" && std::strchr("#$\\^`{}~", static_cast<int>(byte)) != nullptr)
            return {102, 1}; // T.61 has no ASCII in these
        const uint16_t kind = inRight || !invoked ? own : LeftKind();
        if (own == 103 && byte >= 0xC1 && byte <= 0xCF) {
            size_t marks = 0;
            while (At(i + marks) >= 0xC1 && At(i + marks) <= 0xCF)
                ++marks;
            const unsigned int base = At(i + marks);
            const bool leftBase = base >= 0x20 && base <= 0x7E && baseInLeft;
            const bool rightBase = base >= 0xA1 && base <= 0xFE;
            return marks <= 4 && (leftBase || rightBase) ? Unit{kind, marks + 1} : raw;
        }
        if (set.bytes == 1)
            return {kind, 1};
        const unsigned int trail = At(i + 1);
        const bool isTrail =
            trail / 0x80 == byte / 0x80 && (trail & 0x7F) > 0x20 && (trail & 0x7F) < 0x7F;
        return isTrail ? Unit{kind, 2} : raw;
    }

    // An escape or control sequence that begins at i and whose body begins `skip` bytes later.
    size_t Sequence(size_t i, size_t skip, bool control) const
    {
        size_t end = i + skip;
        while (control && At(end) >= 0x30 && At(end) <= 0x3F)
            ++end;
        while (At(end) >= 0x20 && At(end) <= 0x2F)
            ++end;
        if (At(end) == 0)
            return end - i; // cut off
        const bool isFinal = At(end) >= (control ? 0x40U : 0x30U) && At(end) <= 0x7E;
        return isFinal ? end + 1 - i : 1;
    }

    Unit Shifted(size_t i, size_t shift, int element)
    {
        const unsigned int byte = At(i + shift);
        if ((byte & 0x60) == 0 || Held(element).empty() || (shift == 2 && !escapes))
            return {CS_SEG_IGNORE, shift};
        const Set set = SetOf(element);
        if ((byte < 0x80 ? set.left : set.right) == 0 && byte != 0x20 && byte != 0x7F)
            rawByte = i + shift;
        const Unit character = Character(i + shift, element, false, false);
        if (character.kind == CS_SEG_RAW)
            return {CS_SEG_IGNORE, shift};
        return {character.kind, shift + character.length};
    }

    Unit Utf8Character(size_t i) const
    {
        for (size_t length = 1; length <= 4 && i + length <= text.size(); ++length)
            if (Decode("UTF-8", text.substr(i, length)))
                return {196, length};
        return {CS_SEG_RAW, 1};
    }

    Unit UnitAt(size_t i)
    {
        if (i == rawByte)
            return {CS_SEG_RAW, 1};
        const unsigned int byte = At(i);
        const bool iso2022 = code.coding == '@';
        const bool c1 = iso2022 && code.right >= 0 && !Held(code.right).empty();
        if (!escapes && AreOneText())
            return {LeftKind(), 1};
        if (iso2022 && shifts && byte == 0x1B && (At(i + 1) == 'N' || At(i + 1) == 'O'))
            return Shifted(i, 2, At(i + 1) == 'N' ? 2 : 3);
        if (escapes && byte == 0x1B)
            return {CS_SEG_IGNORE, At(i + 1) == '[' ? Sequence(i, 2, true) : Sequence(i, 1, false)};
        if (escapes && (byte == 0x0E || byte == 0x0F))
            return {CS_SEG_IGNORE, 1};
        if (!iso2022)
            return code.coding == 'G' ? Utf8Character(i) : Unit{CS_SEG_RAW, 1};
        if (c1 && (byte == 0x8E || byte == 0x8F))
            return Shifted(i, 1, byte == 0x8E ? 2 : 3);
        if (escapes && c1 && byte == 0x9B)
            return {CS_SEG_IGNORE, Sequence(i, 1, true)};
        if (byte >= 0x80 && byte < 0xA0 && !c1)
            return {CS_SEG_RAW, 1};
        if ((byte & 0x60) == 0 || byte == 0x20 || byte == 0x7F)
            return {LeftKind(), 1};
        const bool takesMarks = SetOf(code.left).left == 6;
        return Character(i, byte >= 0x80 ? code.right : code.left, takesMarks, true);
    }

    void Apply(std::string_view sequence)
    {
        const char final = sequence.back();
        if (sequence == "\x0E" || sequence == "\x0F")
            code.left = sequence == "\x0E" ? 1 : 0;
        if (sequence[0] != '\x1B' || sequence.size() < 2 || final < 0x30)
            return;
        if (sequence[1] == '%') {
            code.coding = sequence == "\x1B%@" || sequence == "\x1B%G" ? final : '?';
            return;
        }
        const size_t shift = std::string_view("no~}|").find(final);
        if (sequence.size() == 2 && shift != sequence.npos)
            (shift < 2 ? code.left : code.right) = "23123"[shift] - '0';
        std::string_view between = sequence.substr(1, sequence.size() - 2);
        const bool many = !between.empty() && between[0] == '$';
        if (many)
            between.remove_prefix(1);
        const bool implied = many && between.empty();
        const size_t element =
            implied ? 0 : std::string_view("()*+,-./").find(between.substr(0, 1));
        if ((between.empty() && !implied) || element > 7 || element == 4)
            return;
        const std::string size = std::string(element > 4 ? "96" : "94") + (many ? "n" : "") + " ";
        code.g.at(element % 4) = size + std::string(between.substr(implied ? 0 : 1)) + final;
    }
};

} // namespace

std::string ReadSlowly(const std::string &set, std::string_view bytes, bool escapes)
{
    Reader reader = {bytes.substr(0, bytes.find('\0')), kStarts.at(set), escapes,
                     escapes || (set != "IA5" && set != "no such set")};
    std::string segments;
    uint16_t runKind = CS_SEG_END;
    unsigned int run = 0;
    for (size_t i = 0; i < reader.text.size();) {
        const Reader::Unit unit = reader.UnitAt(i);
        if (run != 0 && (unit.kind != runKind || unit.kind == CS_SEG_IGNORE))
            segments += Notation(runKind, std::exchange(run, 0)) + " ";
        runKind = unit.kind;
        run += static_cast<unsigned int>(unit.length);
        if (unit.kind == CS_SEG_IGNORE)
            reader.Apply(reader.text.substr(i, unit.length));
        i += unit.length;
    }
    return run == 0 ? "" : segments + Notation(runKind, run);
}
