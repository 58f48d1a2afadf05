// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 in blocks, beside GLib, which goes character by character.
#include "base/utf8_blocks.h"
#include "tests/support/home.h"
#include "tests/support/test.h"

#include <glib.h>

#include <clocale>
#include <filesystem>
#include <thread>

namespace
{

constexpr gunichar kIotaSubscript = 0x345; // the one that is moved

std::string Taken(gchar *text)
{
    const std::string result = text;
    g_free(text);
    return result;
}

std::string InUtf8(gunichar c)
{
    char bytes[7] = {};
    g_unichar_to_utf8(c, bytes);
    return bytes;
}

bool IsValid(const std::string &text)
{
    return g_utf8_validate(text.c_str(), -1, nullptr) != FALSE;
}

size_t CountByGLib(const std::string &text)
{
    return IsValid(text) ? static_cast<size_t>(g_utf8_strlen(text.c_str(), -1))
                         : libstr::utf8::kNotUtf8;
}

// Upper case by GLib and, if that is another one, by the library.
void CheckUpper(const std::string &text)
{
    static const CSDescriptor cs = DescriptorOf("UTF8");
    const Guarded guarded(text);
    int length = -1;
    const char *const upper = str_ToUpper(guarded.c_str(), -1, &length, &cs);
    ASSERT_EQ(upper != nullptr, IsValid(text));
    if (upper == nullptr)
        return;
    ASSERT_EQ(upper, Taken(g_utf8_strup(text.c_str(), -1))) << text;
    ASSERT_EQ(length, std::strlen(upper));
}

// The characters that have case or belong to others; and of these one of each combining class, all
// whose upper case is longer or shorter, and what some language has rules for.
struct Characters {
    std::vector<std::string> all, special = {"i", "I", "\u0130", "\u0131", "\u03C3", "\u03C2", "."};

    Characters()
    {
        std::map<gint, std::string> marks;
        for (gunichar c = 1; c < 0x110000; ++c) {
            const std::string text = InUtf8(c);
            if (!g_unichar_validate(c) || c == kIotaSubscript)
                continue;
            const std::string upper = Taken(g_utf8_strup(text.c_str(), -1));
            if (g_unichar_ismark(c))
                marks[g_unichar_combining_class(c)] = text;
            if (g_unichar_ismark(c) || Taken(g_utf8_casefold(upper.c_str(), -1)) != text)
                all.push_back(text);
            if (upper.size() != text.size())
                special.push_back(text);
        }
        for (const auto &[combiningClass, mark] : marks)
            special.push_back(mark);
    }
};

TEST(Utf8Blocks, AreValidatedAndCounted)
{
    const auto bytes =
        "\x01\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0"
        "\xF1\xF3\xF4\xF5\xFF"s;
    std::string text(64, 'a');
    for (const char first : bytes)
        for (const char second : bytes)
            for (const char third : bytes)
                for (const char fourth : bytes) {
                    text.replace(30, 4, {first, second, third, fourth});
                    ASSERT_EQ(libstr::utf8::CountValid(text.c_str(), 64), CountByGLib(text));
                    ASSERT_EQ(libstr::utf8::CountValid(text.c_str() + 2, 32),
                              CountByGLib(text.substr(2, 32)));
                }
    std::mt19937 random(TestSeed());
    for (size_t length = 0; length <= 200; ++length)
        for (int round = 0; round < 50; ++round) {
            std::string whole;
            while (whole.size() < length)
                whole += random() % 3 != 0 ? "ab" : InUtf8(0x80U << random() % 13);
            whole.resize(length);
            if (length > 0 && random() % 2 == 0)
                whole[random() % length] = bytes[random() % bytes.size()];
            ASSERT_EQ(libstr::utf8::CountValid(Guarded(whole).c_str(), length), CountByGLib(whole));
        }
}

const Characters &TheCharacters()
{
    static const Characters characters;
    return characters;
}

TEST(Utf8Blocks, HaveTheUpperCaseOfGLib)
{
    for (gunichar c = 1; c < 0x110000;) {
        std::string text;
        for (; text.size() < 4096 && c < 0x110000; ++c)
            text += g_unichar_validate(c) && c != kIotaSubscript ? InUtf8(c) : "";
        CheckUpper(text);
    }
    for (const std::string &character : TheCharacters().all) {
        std::string text;
        for (const std::string &other : TheCharacters().special)
            text.append(character).append(other).append(character).append(".");
        CheckUpper(text);
        CheckUpper(character + InUtf8(kIotaSubscript) + character + "a");
    }
    CheckUpper(std::string(100, 'a') + "\xC3");
}

// The name of a locale decides; what it holds does not matter.
TEST(Utf8Blocks, FollowTheLocale)
{
    const TempHome home;
    setenv("LOCPATH", home.path().c_str(), 1);
    std::string text;
    for (const std::string &character : TheCharacters().all)
        text.append("i").append(character).append(character).append("\u0307");
    const std::string usual = Taken(g_utf8_strup(text.c_str(), -1));
    for (const std::string name : {"tr_TR", "de_DE", "az_AZ", "lt_LT", "C"}) {
        std::filesystem::create_symlink("/usr/lib/locale/C.utf8", home.PathOf(name));
        ASSERT_NE(setlocale(LC_CTYPE, name.c_str()), nullptr) << name;
        CheckUpper(text);
        const bool isUsual = name == "de_DE" || name == "C";
        EXPECT_EQ(Taken(g_utf8_strup(text.c_str(), -1)) == usual, isUsual) << name;
    }
    unsetenv("LOCPATH");
}

// Character by character; a byte of none stays.
std::string Folded(std::string_view text)
{
    std::string folded;
    for (size_t size = 1; !text.empty(); text.remove_prefix(size)) {
        const gunichar c = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        size = c < 0x110000 ? InUtf8(c).size() : 1;
        folded += c < 0x110000 ? Taken(g_utf8_casefold(InUtf8(c).c_str(), -1)) : text.substr(0, 1);
    }
    return folded;
}

// Adds the piece, in another case if it has one, to a text and to what is made of that by folding.
void Add(const std::string &piece, unsigned int way, std::string *text, std::string *folded)
{
    const auto change = way == 0 ? g_utf8_strup : way == 1 ? g_utf8_strdown : g_utf8_casefold;
    const bool isValid = IsValid(piece);
    const std::string added = isValid && way < 3 ? Taken(change(piece.c_str(), -1)) : piece;
    *text += added;
    *folded += isValid ? Taken(g_utf8_casefold(added.c_str(), -1)) : added;
}

void CompareRandomTexts(unsigned int seed)
{
    const std::vector<std::string> other = {"a",          "B",    "yz",    "\u65E5", "\U0001F600",
                                            "\U00020000", "\xFF", ".\x80", "\xC3.",  "\xE6\x97."};
    const std::vector<std::string> *const kinds[] = {&other, &other, &TheCharacters().all,
                                                     &TheCharacters().special};
    std::mt19937 random(seed);
    const auto piece = [&] {
        const auto &kind = *kinds[random() % std::size(kinds)];
        return kind[random() % kind.size()];
    };
    const CSDescriptor cs = DescriptorOf("UTF8");
    int equal = 0;
    for (int round = 0; round < 4000; ++round) {
        std::string text[2], folded[2];
        for (auto left = random() % 60; left > 0; --left) {
            const std::string first = piece(), second = random() % 99 == 0 ? piece() : first;
            Add(first, random() % 4, &text[0], &folded[0]);
            Add(second, random() % 4, &text[1], &folded[1]);
        }
        const Guarded guarded[] = {Guarded(text[0]), Guarded(text[1])};
        const int order = str_strucasecmp(guarded[0].c_str(), guarded[1].c_str(), &cs);
        EXPECT_EQ(order == 0, folded[0] == folded[1]) << text[0] << "\n" << text[1];
        equal += order == 0;
    }
    EXPECT_GT(equal, 400);
}

TEST(Utf8Blocks, AreComparedWhenTheyAreMalformed)
{
    const auto bytes = "aA\x89\xA9\xC3\xE2"s;
    const CSDescriptor cs = DescriptorOf("UTF8");
    std::map<std::string, std::string> texts; // and what folding makes of them
    for (int number = 0; number < 6 * 6 * 6 * 6; ++number) {
        std::string text(14, 'x');
        for (int rest = number + 6 * 6 * 6 * 6; rest >= 6; rest /= 6)
            text += bytes[static_cast<size_t>(rest % 6)];
        texts[text] = Folded(text);
    }
    for (const auto &[text, folded] : texts)
        for (const auto &[other, otherFolded] : texts)
            ASSERT_EQ(str_strucasecmp(text.c_str(), other.c_str(), &cs) == 0, folded == otherFolded)
                << text << " " << other;
}

TEST(Utf8Blocks, AreComparedInThreadsToo)
{
    TheCharacters();
    std::thread thread(CompareRandomTexts, TestSeed());
    CompareRandomTexts(TestSeed() + 1);
    thread.join();
}

} // namespace
