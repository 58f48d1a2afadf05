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

std::string UpperByGLib(const std::string &text)
{
    gchar *const upper = g_utf8_strup(text.c_str(), -1);
    const std::string result = upper;
    g_free(upper);
    return result;
}

void CheckUpper(const std::string &text)
{
    const CSDescriptor cs = DescriptorOf("UTF8");
    int length = -1;
    const std::string upper = str_ToUpper(Guarded(text).c_str(), -1, &length, &cs);
    ASSERT_EQ(upper, UpperByGLib(text)) << text;
    ASSERT_EQ(length, upper.size());
}

// The marks, and the characters that folding or upper case changes.
const std::vector<std::string> &Characters()
{
    static std::vector<std::string> characters;
    for (gunichar c = characters.empty() ? 1 : 0x110000; c < 0x110000; ++c) {
        if (!g_unichar_validate(c))
            continue;
        const std::string text = InUtf8(c);
        const bool changes = Folded(UpperByGLib(text)) != text;
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
    const std::string usual = UpperByGLib(text);
    for (const std::string name : {"tr_TR", "de_DE", "az_AZ", "lt_LT", "C"}) {
        std::filesystem::create_symlink("/usr/lib/locale/C.utf8", home.PathOf(name));
        ASSERT_NE(setlocale(LC_CTYPE, name.c_str()), nullptr) << name;
        CheckUpper(text);
        EXPECT_EQ(UpperByGLib(text) == usual, name == "de_DE" || name == "C") << name;
    }
    unsetenv("LOCPATH");
}

// As a cache may go by some bits of a character, each is compared with those that differ in one.
// Begins with the character `c`, and leaves every other one to another thread.
void CompareEveryOther(gunichar c)
{
    const CSDescriptor cs = DescriptorOf("UTF8");
    for (; c < 0x20000; c += 2) {
        const std::string before(c % 20, 'b'),
            text = before + InUtf8(c) + "A", form = Folded(InUtf8(c)), folded = before + form + "a";
        for (gunichar bit = 0; bit < 17; ++bit) {
            const std::string changed = InUtf8(c ^ 1U << bit), other = before + changed + "a";
            ASSERT_EQ(str_strucasecmp(text.c_str(), other.c_str(), &cs) == 0,
                      form == Folded(changed))
                << text << " " << other;
        }
        ASSERT_EQ(str_strucasecmp(text.c_str(), folded.c_str(), &cs) == 0, form == Folded(form));
        for (size_t part = 1; part < form.size(); ++part) { // with what follows it between
            const std::string other = before + form.substr(0, part) + "a" + form.substr(part);
            ASSERT_NE(str_strucasecmp(text.c_str(), other.c_str(), &cs), 0) << text;
        }
    }
}

TEST(Utf8Blocks, AreComparedInThreadsToo)
{
    std::thread thread(CompareEveryOther, 'A');
    CompareEveryOther('B');
    thread.join();
}

} // namespace
