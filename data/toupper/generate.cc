// SPDX-License-Identifier: Apache-2.0
//
// generate DIRECTORY: writes the case table source N.s of every set that has case, from GLib's
// simple upper case and what iconv reads in the set.  Sets of two-byte characters have long sources:
// those with the same rules share one, and the others are links to it.
#include "services/ccs/sets.h"

#include <glib.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

using namespace libstr;

namespace
{

using Code = std::string;                    // the bytes of a character
using Characters = std::map<Code, gunichar>; // in the order of their bytes
using Rules = std::map<Code, Code>;          // to the upper case of each

// ---- The characters of a set --------------------------------------------------------------------

// How iconv reads the bytes of a set.
struct Reading {
    const char *code;
    const char *before; // comes before the bytes
    unsigned bits;      // set in each byte
    unsigned last;      // the last byte that belongs to the set; DEL does not
};

Reading ReadingOf(const ccs::Row &set)
{
    const char *const code = set.iconv == nullptr ? set.reading.code : set.iconv;
    return {code, set.reading.before, set.reading.bits, set.right == 0 ? 0x7EU : 0xFFU};
}

// The character that the bytes are; 0 unless they are exactly one.
gunichar CharacterOf(const Reading &reading, const Code &code)
{
    std::string bytes = reading.before;
    for (const char byte : code)
        bytes += static_cast<char>(static_cast<unsigned char>(byte) | reading.bits);
    gsize length = 0;
    gchar *text = g_convert(bytes.data(), static_cast<gssize>(bytes.size()), "UTF-8", reading.code,
                            nullptr, &length, nullptr);
    const bool isOne = text != nullptr && g_utf8_strlen(text, static_cast<gssize>(length)) == 1;
    const gunichar character = isOne ? g_utf8_get_char(text) : 0;
    g_free(text);
    return character;
}

Code Bytes(unsigned first) { return Code(1, static_cast<char>(first)); }
Code Bytes(unsigned first, unsigned second) { return Bytes(first) + Bytes(second); }

Characters CharactersOf(const ccs::Row &set, const Reading &reading)
{
    Characters characters;
    const auto take = [&](const Code &code) {
        if (const gunichar character = CharacterOf(reading, code); character != 0)
            characters.emplace(code, character);
    };
    if (set.bytes == 2) {
        for (unsigned first = 0x21; first < 0x7F; ++first)
            for (unsigned second = 0x21; second < 0x7F; ++second)
                take(Bytes(first, second));
        return characters;
    }
    for (unsigned byte = 0; byte <= reading.last; ++byte)
        take(Bytes(byte));
    if (set.units == ccs::Units::marked)
        for (unsigned mark = 0x80; mark <= reading.last; ++mark)
            for (unsigned letter = 0x20; letter < 0x7F; ++letter)
                take(Bytes(mark, letter));
    return characters;
}

// ---- The rules ----------------------------------------------------------------------------------

// One for each character that changes into another of the set.
Rules ChangesOf(const Characters &characters)
{
    std::map<gunichar, Code> codes;
    for (const auto &[code, character] : characters)
        codes.emplace(character, code);
    Rules rules;
    for (const auto &[code, character] : characters) {
        const auto upper = codes.find(g_unichar_toupper(character));
        if (upper != codes.end() && upper->first != character)
            rules.emplace(code, upper->second);
    }
    return rules;
}

// The small letters that have no rule, in their order: the set does not have their upper case.
std::vector<Code> StayingOf(const Characters &characters, const Rules &changes)
{
    std::vector<Code> staying;
    for (const auto &[code, character] : characters)
        if (g_unichar_islower(character) && !changes.contains(code))
            staying.push_back(code);
    return staying;
}

Code InHalf(const Code &code, unsigned top)
{
    return Bytes(static_cast<unsigned char>(code[0]) | top,
                 static_cast<unsigned char>(code[1]) | top);
}

// One for each pair of bytes, in either half.  Most keep the pair as it is: without a rule the second
// byte would be looked up by itself and taken for the first byte of a pair.
Rules WholePairs(const Rules &changes)
{
    Rules rules;
    for (unsigned first = 0x21; first < 0x7F; ++first)
        for (unsigned second = 0x21; second < 0x7F; ++second) {
            const Code code = Bytes(first, second);
            const auto change = changes.find(code);
            for (const unsigned top : {0x00U, 0x80U})
                rules.emplace(InHalf(code, top),
                              InHalf(change == changes.end() ? code : change->second, top));
        }
    return rules;
}

// The changes, and a rule that keeps every other character of two bytes as it is: without it the
// character would be taken for two.
Rules WholeCharacters(const Rules &changes, const Characters &characters)
{
    Rules rules = changes;
    for (const auto &[code, character] : characters)
        if (code.size() == 2)
            rules.emplace(code, code);
    return rules;
}

Rules RulesOf(const ccs::Row &set)
{
    const Characters characters = CharactersOf(set, ReadingOf(set));
    const Rules changes = ChangesOf(characters);
    return set.bytes == 2 && !changes.empty() ? WholePairs(changes)
                                              : WholeCharacters(changes, characters);
}

// ---- The files ----------------------------------------------------------------------------------

using Sets = std::vector<const ccs::Row *>; // with the same rules, one or more

// In the notation of platform/enc.h.
std::string Written(const Code &code)
{
    std::string written;
    for (const char byte : code) {
        if (g_ascii_isgraph(byte) &&
            std::string_view("=<->#\\").find(byte) == std::string_view::npos) {
            written += byte;
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned char>(byte));
            written += escaped;
        }
    }
    return written;
}

// Lines of rules.  Pairs with another first byte begin a new line.
std::string Lines(const Rules &rules)
{
    constexpr size_t kLongest = 76;
    std::string lines, line;
    char first = 0;
    for (const auto &[code, upper] : rules) {
        const std::string rule = Written(code) + "=" + Written(upper);
        const bool isOther = code.size() == 2 && code[0] != first;
        if (!line.empty() && (isOther || line.size() + 1 + rule.size() > kLongest)) {
            lines += line + "\n";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + rule;
        first = code.size() == 2 ? code[0] : '\0';
    }
    return line.empty() ? lines : lines + line + "\n";
}

// A word of a source.
std::string Word(std::string name)
{
    for (char &c : name)
        if (c == ' ')
            c = '-';
    return name;
}

std::string NamesOf(const Sets &sets, const char *between)
{
    std::string names;
    for (const ccs::Row *set : sets)
        names += (names.empty() ? "" : between) + std::string(set->name);
    return names;
}

std::string CodesOf(const Sets &sets)
{
    std::set<std::string> codes;
    for (const ccs::Row *set : sets)
        codes.insert(ReadingOf(*set).code);
    std::string list;
    for (const std::string &code : codes)
        list += (list.empty() ? "" : ", ") + code;
    return list;
}

// What is said of the small letters without a rule.
std::string StayingIn(const ccs::Row &set)
{
    if (set.bytes == 2)
        return "# A letter whose upper case the set does not have stays as it is.\n#\n"
               "# Every pair of bytes is here, in either half. Most are their own upper case:\n"
               "# the rule keeps the second byte from being taken for the first of a pair.\n";
    const Characters characters = CharactersOf(set, ReadingOf(set));
    std::string line, lines;
    for (const Code &code : StayingOf(characters, ChangesOf(characters))) {
        if (line.size() > 64) {
            lines += "#" + line + "\n";
            line.clear();
        }
        line += " " + Written(code);
    }
    if (line.empty())
        return "";
    return "# These stay as they are, since the set does not have their upper case:\n" + lines +
           "#" + line + "\n";
}

std::string SourceOf(const Sets &sets, const Rules &rules)
{
    const std::string isMade =
        "#\n"
        "# Made by data/toupper/generate.cc: the simple upper case of Unicode, from\n"
        "# GLib, for the characters that iconv reads as ";
    return "# The upper case of " + NamesOf(sets, ", ") + ".\n" + isMade + CodesOf(sets) + ".\n" +
           StayingIn(*sets.front()) + "\nTOUPPER CHARSET " + Word(NamesOf(sets, "+")) + "\n\n" +
           Lines(rules);
}

bool Fail(const char *why)
{
    std::fprintf(stderr, "generate: %s\n", why);
    return false;
}

bool Write(const std::string &path, const std::string &text)
{
    GError *error = nullptr;
    if (g_file_set_contents(path.c_str(), text.data(), static_cast<gssize>(text.size()), &error))
        return true;
    Fail(error->message);
    g_error_free(error);
    return false;
}

bool Link(const std::string &path, const std::string &target)
{
    std::error_code error;
    std::filesystem::remove(path, error);
    std::filesystem::create_symlink(target, path, error);
    return !error || Fail((path + ": " + error.message()).c_str());
}

bool WriteSources(const std::string &directory, const Sets &sets, const Rules &rules)
{
    const auto fileOf = [](const ccs::Row *set) { return std::to_string(set->number) + ".s"; };
    if (rules.empty())
        return Fail((std::string("iconv reads no small letter in ") + sets.front()->name).c_str());
    const std::string first = fileOf(sets.front());
    if (!Write(directory + "/" + first, SourceOf(sets, rules)))
        return false;
    for (size_t i = 1; i < sets.size(); ++i)
        if (!Link(directory + "/" + fileOf(sets[i]), first))
            return false;
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fputs("usage: generate DIRECTORY\n", stderr);
        return 2;
    }
    std::map<Rules, Sets> shared;
    for (const ccs::Row &set : ccs::kRows) {
        if ((set.flags & CS_FLAG_CASE) == 0)
            continue;
        const Rules rules = RulesOf(set);
        if (set.bytes == 2)
            shared[rules].push_back(&set);
        else if (!WriteSources(argv[1], {&set}, rules))
            return 1;
    }
    for (const auto &[rules, sets] : shared)
        if (!WriteSources(argv[1], sets, rules))
            return 1;
    return 0;
}
