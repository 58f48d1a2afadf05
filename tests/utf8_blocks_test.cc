// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 in blocks, beside GLib, which goes character by character.
#include "base/utf8_blocks.h"
#include "tests/support/home.h"
#include "tests/support/test.h"

#include <glib.h>

#include <clocale>
#include <thread>

namespace
{

const std::string kIotaSubscript = "\u0345"; // the one that is moved

std::string InUtf8(gunichar c)
{
    char bytes[7] = {};
    g_unichar_to_utf8(c, bytes);
    return bytes;
}

size_t CountByGLib(const std::string &text)
{
    const bool isValid = g_utf8_validate(text.c_str(), -1, nullptr) != FALSE;
    return isValid ? static_cast<size_t>(g_utf8_strlen(text.c_str(), -1)) : libstr::utf8::kNotUtf8;
}

using Change = gchar *(*)(const gchar *, gssize);

std::string Changed(Change change, const std::string &text)
{
    if (CountByGLib(text) == libstr::utf8::kNotUtf8)
        return text;
    gchar *const changed = change(text.c_str(), -1);
    std::string result = changed;
    g_free(changed);
    return result;
}

std::string Folded(const std::string &text) { return Changed(g_utf8_casefold, text); }

void CheckUpper(const std::string &text)
{
    const CSDescriptor cs = DescriptorOf("UTF8");
    int length = -1;
    const std::string upper = str_ToUpper(Guarded(text).c_str(), -1, &length, &cs);
    ASSERT_EQ(upper, Changed(g_utf8_strup, text)) << text;
    ASSERT_EQ(length, upper.size());
}

// The marks, and the characters that folding or upper case changes.
const std::vector<std::string> &Characters()
{
    static std::vector<std::string> characters;
    for (gunichar c = characters.empty() ? 1 : 0x110000; c < 0x110000; ++c) {
        const std::string text = InUtf8(c);
        const bool changes = Folded(Changed(g_utf8_strup, text)) != text;
        if ((g_unichar_ismark(c) || changes) && text != kIotaSubscript)
            characters.push_back(text);
    }
    return characters;
}

TEST(Utf8Blocks, AreValidatedAndCounted)
{
    const auto bytes =
        "\x01\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0"
        "\xF1\xF3\xF4\xF5\xFF"s;
    for (size_t number = 0; number < 24 * 24 * 24 * 24; ++number) { // four bytes anywhere
        std::string text(4 + number % 97, 'a');
        size_t rest = number;
        for (size_t at = number % (text.size() - 3), end = at + 4; at < end; ++at, rest /= 24)
            text[at] = bytes[rest % 24];
        ASSERT_EQ(libstr::utf8::CountValid(text.data(), text.size()), CountByGLib(text)) << number;
    }
    std::string whole;
    while (whole.size() < 220)
        whole += "a\u00E9\u65E5\U0001F600";
    for (size_t length = 0; length <= 200; ++length)
        for (size_t start = 0; start < 10; ++start) {
            const Guarded part(whole.substr(start, length));
            ASSERT_EQ(libstr::utf8::CountValid(part.c_str(), length), CountByGLib(part.c_str()));
        }
}

TEST(Utf8Blocks, HaveTheUpperCaseOfGLib)
{
    for (gunichar c = 1; c < 0x110000;) {
        std::string text;
        for (; text.size() < 4096 && c < 0x110000; ++c)
            text += g_unichar_validate(c) && InUtf8(c) != kIotaSubscript ? InUtf8(c) : "";
        CheckUpper(text);
    }
    const auto &characters = Characters();
    for (size_t i = 0; i < characters.size(); ++i) {
        std::string text;
        for (size_t other = i % 16; other < characters.size(); other += 16)
            text += characters[i] + characters[other] + characters[i] + ".";
        CheckUpper(text);
        CheckUpper(characters[i] + kIotaSubscript + characters[i] + "a");
    }
}

// The name of a locale decides; what it holds does not matter.
TEST(Utf8Blocks, FollowTheLocale)
{
    const TempHome home;
    setenv("LOCPATH", home.path().c_str(), 1);
    std::string text;
    for (const std::string &character : Characters())
        text += "i" + character + character + "\u0307";
    const std::string usual = Changed(g_utf8_strup, text);
    for (const std::string name : {"tr_TR", "de_DE", "az_AZ", "lt_LT", "C"}) {
        std::filesystem::create_symlink("/usr/lib/locale/C.utf8", home.PathOf(name));
        ASSERT_NE(setlocale(LC_CTYPE, name.c_str()), nullptr) << name;
        CheckUpper(text);
        EXPECT_EQ(Changed(g_utf8_strup, text) == usual, name == "de_DE" || name == "C") << name;
    }
    unsetenv("LOCPATH");
}

TEST(Utf8Blocks, AreComparedAndCutWhenTheyAreMalformed)
{
    const CSDescriptor cs = DescriptorOf("UTF8"), walked = {cs.csNum, 1};
    std::map<std::string, std::string> texts; // and what folding makes of them
    for (int number = 0; number < 6 * 6 * 6 * 6; ++number) {
        std::string text = "14 characters.";
        for (int rest = number + 6 * 6 * 6 * 6; rest >= 6; rest /= 6)
            text += "aA\x89\xA9\xC3\xE2"[rest % 6];
        std::string &folded = texts[text] = text;
        std::replace(folded.begin(), folded.end(), 'A', 'a');
        for (size_t at; (at = folded.find("\u00C9")) != std::string::npos;)
            folded.replace(at, 2, "\u00E9");
    }
    for (const auto &[text, folded] : texts) {
        for (const auto &[other, otherFolded] : texts)
            ASSERT_EQ(str_strucasecmp(text.c_str(), other.c_str(), &cs) == 0, folded == otherFolded)
                << text << " " << other;
        for (unsigned int n = 0; n < 20; ++n)
            ASSERT_EQ(str_truncstrlen(text.c_str(), n, &cs),
                      str_truncstrlen(text.c_str(), n, &walked));
    }
}

// Begins with the character `i`, and leaves every other one to another thread.
void CompareInOtherCase(size_t i)
{
    const auto &all = Characters();
    const CSDescriptor cs = DescriptorOf("UTF8");
    for (; i < all.size(); i += 2)
        for (size_t other = i % 64; other < all.size(); other += 64)
            for (const Change change : {g_utf8_strup, g_utf8_strdown}) {
                const std::string text = "13 characters" + all[i] + all[other] + all[i];
                const std::string changed = Changed(change, text);
                ASSERT_EQ(str_strucasecmp(text.c_str(), changed.c_str(), &cs) == 0,
                          Folded(text) == Folded(changed))
                    << text;
            }
}

TEST(Utf8Blocks, AreComparedInThreadsToo)
{
    Characters();
    std::thread thread(CompareInOtherCase, 0);
    CompareInOtherCase(1);
    thread.join();
}

} // namespace
