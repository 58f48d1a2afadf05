// SPDX-License-Identifier: Apache-2.0
//
// Upper case of texts: by the shipped case tables beside what iconv and GLib say, by random tables
// beside a slow and obvious lookup, and at the edges.
#include "services/ccs/sets.h"
#include "services/services.h"
#include "tests/support/casetable.h"
#include "tests/support/guarded.h"
#include "tests/support/samples.h"
#include "tests/support/text.h"

#include <glib.h>
#include <str/case.h>

#include <algorithm>
#include <climits>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <set>

using namespace libstr;

namespace
{

// The shipped sources, and nothing registered by the tests before.
class CaseConversion : public CaseTableTest
{
  protected:
    CaseConversion()
    {
        int none;
        ccs_SetCSTable(0, &none);
        std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper"));
    }
    ~CaseConversion() override { ccs_SetCSTable(0, nullptr); }
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

// How iconv reads a set: as the codes of so many bytes that stand behind `prefix` and have the top
// bit, and it alone, of `top` in each byte (-1: either); the set has the codes with `flipped` bits.
struct Reading {
    const char *set, *iconv;
    size_t bytes = 1;
    std::string prefix = {};
    int top = -1;
    char flipped = 0;
};

// Those of all sets that have case; sets of two bytes a character are in both halves.
std::vector<Reading> AllReadings()
{
    std::vector<Reading> all;
    for (const ccs::SetRow &set : ccs::kSets) {
        if ((set.flags & CS_FLAG_CASE) == 0)
            continue;
        const char *const iconv = set.iconv == nullptr ? set.reading.code : set.iconv;
        const int top = set.reading.bits != 0 ? 0x80 : set.right == 0 ? 0 : -1;
        const char flipped = set.right == 0 && top > 0 ? '\x80' : '\0';
        all.push_back({set.name, iconv, set.bytes, set.reading.before, top, flipped});
        if (set.bytes == 2)
            all.push_back({set.name, iconv, 2, set.reading.before, top, '\x80'});
        if (set.units == ccs::Units::marked)
            all.push_back({set.name, iconv, 2});
    }
    return all;
}

// The character in the set, empty when the set does not have it.
std::string Encode(char32_t character, const Reading &reading)
{
    gsize length = 0;
    gchar *const bytes = g_convert(Utf8Of({character}).c_str(), -1, reading.iconv, "UTF-8", nullptr,
                                   &length, nullptr);
    std::string code(bytes == nullptr ? "" : bytes, length);
    g_free(bytes);
    if (code.size() != reading.prefix.size() + reading.bytes || !code.starts_with(reading.prefix))
        return "";
    code.erase(0, reading.prefix.size());
    for (char &byte : code) {
        if (reading.top >= 0 && (byte & 0x80) != reading.top)
            return "";
        byte = static_cast<char>(byte ^ reading.flipped);
    }
    return code.front() == '\0' ? "" : code;
}

TEST_F(CaseConversion, GivesTheSimpleUpperCaseOfEveryCharacterOfEverySet)
{
    for (const Reading &reading : AllReadings()) {
        const CSDescriptor cs = DescriptorOf(reading.set);
        std::map<char32_t, std::string> codes;
        for (char32_t c = 1; c < 0x10000; ++c)
            if (const std::string code = Encode(c, reading); !code.empty())
                codes[c] = code;
        std::string all, allUpper;
        int changed = 0;
        for (const auto &[c, code] : codes) {
            const auto upper = codes.find(static_cast<char32_t>(g_unichar_toupper(c)));
            const std::string expected = upper == codes.end() ? code : upper->second;
            EXPECT_EQ(Upper(code, cs), expected) << reading.set << " " << Utf8Of({c});
            all += code;
            allUpper += expected;
            changed += expected == code ? 0 : 1;
        }
        EXPECT_GE(changed, 20) << reading.set;
        EXPECT_TRUE(Upper(all, cs) == allUpper) << reading.set << ", as one text";
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
    char notation[16];
    for (const Rule &rule : rules)
        for (const std::string *side : {&rule.left, &rule.right}) {
            source += side == &rule.left ? "\n" : "=";
            for (const char byte : *side) {
                std::snprintf(notation, sizeof notation, "\\x%02X", byte & 0xFF);
                source += notation;
            }
        }
    return source;
}

TEST_F(CaseConversion, OfARunIsThatOfItsCharacters)
{
    std::mt19937 random(31);
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
    for (const char *set : {"ISO-8859-1", "T.61", "UTF8", "ISO-2022-JP", "JIS X 0201 KATAKANA"}) {
        const CSDescriptor cs = DescriptorOf(set);
        const std::string upper = cs.csNum == 1013 ? "abc" : "ABC"; // katakana have no case
        const Guarded text("abc");
        for (const int length : {-1, INT_MIN, 3, 4, INT_MAX, 2, 1, 0}) {
            const std::string expected = upper.substr(0, static_cast<unsigned>(length));
            int outLen = -1;
            EXPECT_EQ(str_ToUpper(text.c_str(), length, &outLen, &cs), expected);
            EXPECT_EQ(outLen, expected.size()) << set << " " << length;
        }
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
