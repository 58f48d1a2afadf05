// SPDX-License-Identifier: Apache-2.0
//
// Upper case of texts: by the shipped case tables beside what iconv and GLib say, by random tables
// beside a slow and obvious lookup, and at the edges.
#include "services/ccs/sets.h"
#include "services/services.h"
#include "tests/support/casetable.h"
#include "tests/support/guarded.h"
#include "tests/support/random_text.h"
#include "tests/support/samples.h"
#include "tests/support/text.h"

#include <glib.h>
#include <str/case.h>

#include <algorithm>
#include <climits>
#include <clocale>
#include <filesystem>
#include <map>
#include <random>

using namespace libstr;

namespace
{

// The shipped sources.
class CaseConversion : public CaseTableTest
{
  protected:
    CaseConversion() { std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper")); }
};

std::string Upper(std::string_view text, const CSDescriptor &cs)
{
    const Guarded input(text);
    int length = -1;
    const char *const upper =
        str_ToUpper(input.c_str(), static_cast<int>(text.size()), &length, &cs);
    EXPECT_EQ(upper[length], '\0');
    return {upper, static_cast<size_t>(length)};
}

std::string Utf8Of(const std::u32string &characters)
{
    std::string utf8;
    for (const char32_t c : characters) {
        char bytes[6];
        utf8.append(bytes, static_cast<size_t>(g_unichar_to_utf8(c, bytes)));
    }
    return utf8;
}

// ---- The shipped tables --------------------------------------------------------------------

// The codes of a set's characters, as iconv reads them.  Two bytes have the top bits of `half`.
std::map<char32_t, std::string> CodesOf(const ccs::SetRow &set, unsigned half)
{
    const char *const iconv = set.iconv == nullptr ? set.reading.code : set.iconv;
    const bool isMarked = set.units == ccs::Units::marked;
    std::map<char32_t, std::string> codes;
    for (unsigned code = 0x21; code < 0x10000; ++code) {
        const unsigned first = code >> 8;
        const bool fits = first == 0 ? set.bytes == 1 && (set.right != 0 || code < 0x80)
                                     : (set.bytes == 2 && (code & 0x8080) == half) ||
                                           (isMarked && first > 0xC0 && first < 0xD0);
        if (!fits)
            continue;
        std::string bytes(first == 0 ? 0 : 1, static_cast<char>(first));
        bytes += static_cast<char>(code);
        std::string coded = set.reading.before + bytes;
        for (char &byte : coded)
            byte = static_cast<char>(byte | set.reading.bits);
        if (const auto character = Decode(iconv, coded); character && character->size() == 1)
            codes.emplace(character->front(), bytes);
    }
    return codes;
}

TEST_F(CaseConversion, GivesTheSimpleUpperCaseOfEveryCharacterOfEverySet)
{
    for (const ccs::SetRow &set : ccs::kSets)
        for (const unsigned half : {0U, 0x8080U}) {
            if ((set.flags & CS_FLAG_CASE) == 0 || (set.bytes == 1 && half != 0))
                continue;
            const CSDescriptor cs = DescriptorOf(set.name);
            const auto codes = CodesOf(set, half);
            std::string all, allUpper;
            int changed = 0;
            for (const auto &[c, code] : codes) {
                const auto upper = codes.find(static_cast<char32_t>(g_unichar_toupper(c)));
                const std::string expected = upper == codes.end() ? code : upper->second;
                EXPECT_EQ(Upper(code, cs), expected) << set.name << " " << Utf8Of({c});
                all += code;
                allUpper += expected;
                changed += expected == code ? 0 : 1;
            }
            EXPECT_GE(changed, 20) << set.name;
            EXPECT_TRUE(Upper(all, cs) == allUpper) << set.name << ", as one text";
        }
}

TEST_F(CaseConversion, OfSamplesIsWhatGLibMakesOfTheCharacters)
{
    int read = 0;
    for (const Sample &sample : kSamples) {
        const char *const iconvName = IconvNameOf(sample);
        if (iconvName == nullptr)
            continue;
        const CSDescriptor cs = {DescriptorOf(sample.set).csNum, 1}; // may switch sets
        gchar *const upper = g_utf8_strup(Utf8Of(*Decode(iconvName, sample.bytes)).c_str(), -1);
        EXPECT_EQ(Utf8Of(*Decode(iconvName, Upper(sample.bytes, cs))), upper);
        g_free(upper);
        ++read;
    }
    EXPECT_GE(read, 14);
    EXPECT_EQ(Upper("\xDF\xFF\xB5", DescriptorOf("ISO-8859-1")), "\xDF\xFF\xB5")
        << "GLib's are two letters, or not in the set";
}

// ---- Random tables -------------------------------------------------------------------------

struct Rule {
    std::string left, right;
};

// The upper case of the first character of `text`, by the rules as they were written: the last one
// about its first byte says whether there is an upper case of one byte for one; of those for the
// character, the first holds.
std::string UpperByRules(const std::vector<Rule> &rules, std::string_view text, size_t *consumed)
{
    char mapped = text[0];
    std::string expansion, pair;
    for (const Rule &rule : rules) {
        if (rule.left[0] == text[0])
            mapped = rule.left.size() + rule.right.size() == 2 ? rule.right[0] : '\0';
        if (expansion.empty() && rule.right.size() == 2 && rule.left == text.substr(0, 1))
            expansion = rule.right;
        if (pair.empty() && rule.left.size() == 2 && rule.left == text.substr(0, 2))
            pair = rule.right.substr(0, rule.right.back() == '\0' ? 1 : 2);
    }
    *consumed = mapped == '\0' && expansion.empty() && !pair.empty() ? 2 : 1;
    if (mapped != '\0')
        return {mapped};
    return !expansion.empty() ? expansion : !pair.empty() ? pair : std::string(text.substr(0, 1));
}

// The same of a text, which the library must tell at once and at each character.
void ExpectUpper(const std::vector<Rule> &rules, const std::string &text,
                 const CaseTableRecord *table)
{
    const Guarded input(text);
    const auto *const bytes = reinterpret_cast<const unsigned char *>(input.c_str());
    std::string upper;
    for (size_t at = 0, consumed; at < text.size(); at += consumed) {
        const std::string one = UpperByRules(rules, std::string_view(text).substr(at), &consumed);
        unsigned char out[2];
        int written = 0;
        ASSERT_EQ(
            str_UpShiftChar(bytes + at, static_cast<int>(text.size() - at), table, out, &written),
            consumed);
        ASSERT_EQ(std::string(out, out + written), one) << "at " << at;
        upper += one;
    }
    unsigned int used = 0, capacity = 0;
    const unsigned char *const run =
        str_UpShift(bytes, static_cast<int>(text.size()), table, nullptr, &used, &capacity);
    ASSERT_EQ(std::string(run, run + used), upper);
    ASSERT_TRUE(text.empty() || used < capacity) << "room for a NUL";
}

std::string Source(const std::vector<Rule> &rules)
{
    std::string source = "T C x";
    for (const Rule &rule : rules)
        for (const std::string *side : {&rule.left, &rule.right}) {
            source += side == &rule.left ? "\n" : "=";
            for (const char byte : *side)
                source += std::string("\\x") + "0123456789ABCDEF"[byte >> 4 & 0xF] +
                          "0123456789ABCDEF"[byte & 0xF];
        }
    return source;
}

TEST_F(CaseConversion, OfARunIsThatOfItsCharacters)
{
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 40; ++round) {
        // Bytes that have many rules, among them the NUL, and now and then any other.
        std::string few(1 + random() % 8, '\0');
        std::generate(few.begin() + 1, few.end(), random);
        const unsigned rare = 1U << random() % 8;
        const auto byte = [&] {
            return random() % rare != 0 ? static_cast<char>(random()) : few[random() % few.size()];
        };
        std::vector<Rule> rules(random() % 60);
        for (Rule &rule : rules) {
            rule = {{few[random() % few.size()]}, {byte()}};
            if (random() % 2 == 0)
                rule.left += few[random() % few.size()];
            if (random() % 2 == 0)
                rule.right += byte();
        }
        home.Write("toupper/x.s", Source(rules));
        CaseTableRecord table = {};
        ASSERT_EQ(str_CompileCaseTable("~/toupper/x.s", "~/toupper/x.b", &table), 1) << logged;
        for (size_t length = 0; length <= 300; length += length < 140 ? 1 : 16) {
            std::string text(length, ' ');
            std::generate(text.begin(), text.end(), byte);
            ExpectUpper(rules, text, &table);
            ASSERT_FALSE(HasFatalFailure()) << testing::PrintToString(text) << Source(rules);
        }
        str_FreeCTEntry(&table);
    }
}

// ---- Edges ---------------------------------------------------------------------------------

TEST_F(CaseConversion, LengthsBeyondTheTextMeanTheText)
{
    for (const char *set : {"ISO-8859-1", "UTF8", "ISO-2022-JP", "JIS X 0201 KATAKANA"}) {
        const CSDescriptor cs = DescriptorOf(set);
        const std::string upper = cs.csNum == 1013 ? "abc" : "ABC"; // katakana have no case
        const Guarded text("abc");
        for (const int length : {-1, INT_MIN, 3, 4, INT_MAX, 2, 1, 0}) {
            const std::string expected = upper.substr(0, static_cast<unsigned>(length));
            int outLen = -1;
            EXPECT_EQ(str_ToUpper(text.c_str(), length, &outLen, &cs), expected) << set;
            EXPECT_EQ(outLen, expected.size()) << set << " " << length;
        }
    }
}

// What the shared buffer has room for.
unsigned int Capacity()
{
    unsigned int used = 0, capacity = 0;
    const unsigned char none = 'x';
    str_UpShift(&none, 1, pCaseTabs, nullptr, &used, &capacity);
    return capacity;
}

TEST_F(CaseConversion, TheBufferHasRoomForTheNulWhateverTheTextEndsWith)
{
    home.Write("toupper/6.s", "T C x\ns=SS");
    const CSDescriptor ia5 = DescriptorOf("IA5"), mail = DescriptorOf("ISO-2022-JP");
    EXPECT_EQ(Upper("s", ia5), "SS");
    for (size_t more = 0; more < 8; ++more) {
        const size_t bytes = Capacity() - 2 + more % 4, expanding = bytes / 3;
        const std::string kana = "\x1B(I" + std::string(bytes - 2 * expanding - 3, '1');
        const std::string text = std::string(expanding, 's') + kana;
        EXPECT_EQ(Upper(text, mail), std::string(2 * expanding, 'S') + kana);
        EXPECT_LT(bytes, Capacity());
        const size_t full = Capacity() - 2 + more % 4;
        EXPECT_EQ(Upper(std::string(full % 2, 'x') + std::string(full / 2, 's'), ia5).size(), full);
        EXPECT_LT(full, Capacity());
    }
}

TEST_F(CaseConversion, OfUtf8IsGLibs)
{
    const CSDescriptor cs = DescriptorOf("UTF8");
    EXPECT_EQ(Upper("stra\xC3\x9F\x65 \xF0\x90\x90\xA8", cs), "STRASSE \xF0\x90\x90\x80");
    const Guarded cut("caf\xC3\xA9 \xE6\x97");
    int length = 4711;
    EXPECT_EQ(str_ToUpper(cut.c_str(), -1, &length, &cs), nullptr);
    EXPECT_EQ(str_ToUpper(cut.c_str(), 4, &length, &cs), nullptr) << "half a character";
    EXPECT_EQ(length, 4711);
    EXPECT_EQ(logged, "");
    EXPECT_STREQ(str_ToUpper(cut.c_str(), 5, &length, &cs), "CAF\xC3\x89");
    EXPECT_STREQ(str_ToUpper("\u0345\u0301", 2, &length, &cs), "\u0399") << "no mark in reach";
    const bool isTurkish = std::setlocale(LC_CTYPE, "tr_TR.UTF-8") != nullptr;
    EXPECT_EQ(Upper("i", cs), isTurkish ? "\xC4\xB0" : "I") << "in the locale of the process";
    std::setlocale(LC_CTYPE, "C");
}

} // namespace
