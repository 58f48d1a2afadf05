// SPDX-License-Identifier: Apache-2.0
//
// Upper case of texts: by the shipped case tables beside what iconv and GLib say, by random tables
// beside a slow and obvious lookup, and at the edges.
#include "services/ccs/sets.h"
#include "tests/support/casetable.h"
#include "tests/support/samples.h"
#include "tests/support/test.h"

#include <glib.h>

#include <clocale>
#include <filesystem>
#include <sstream>
#include <utility>

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

// ---- The shipped tables --------------------------------------------------------------------

// The codes of a set's characters, as iconv reads them.  Two bytes have the top bits of `half`.
std::map<char32_t, std::string> CodesOf(const ccs::SetRow &set, unsigned half)
{
    std::map<char32_t, std::string> codes;
    for (unsigned code = 0x21; code < 0x10000; ++code) {
        const unsigned first = code >> 8;
        const bool isMarked = set.units == ccs::Units::marked && first > 0xC0 && first < 0xD0;
        if (first == 0 ? set.bytes != 1 || (set.right == 0 && code >= 0x80)
                       : !isMarked && (set.bytes != 2 || (code & 0x8080) != half))
            continue;
        std::string bytes(first == 0 ? 0 : 1, static_cast<char>(first));
        bytes += static_cast<char>(code);
        std::string coded = set.reading.before + bytes;
        for (char &byte : coded)
            byte = static_cast<char>(byte | set.reading.bits);
        const auto character = Decode(set.iconv == nullptr ? set.reading.code : set.iconv, coded);
        if (character && character->size() == 1)
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
            for (const auto &[c, code] : codes) {
                const auto upper = codes.find(static_cast<char32_t>(g_unichar_toupper(c)));
                all += code;
                allUpper += upper == codes.end() ? code : upper->second;
                EXPECT_EQ(Upper(code, cs), allUpper.substr(all.size() - code.size()))
                    << set.name << " " << static_cast<uint32_t>(c);
            }
            EXPECT_NE(all, allUpper) << set.name;
            EXPECT_EQ(Upper(all, cs), allUpper) << set.name << ", as one text";
        }
}

TEST_F(CaseConversion, OfSamplesIsWhatGLibMakesOfTheCharacters)
{
    for (const Sample &sample : kSamples)
        if (const char *const iconv = IconvNameOf(sample); iconv != nullptr) {
            const CSDescriptor cs = {DescriptorOf(sample.set).csNum, 1}; // may switch sets
            const std::u32string text = *Decode(iconv, sample.bytes);
            const auto *const characters = reinterpret_cast<const gunichar *>(text.c_str());
            gchar *const utf8 = g_ucs4_to_utf8(characters, -1, nullptr, nullptr, nullptr);
            gchar *const upper = g_utf8_strup(utf8, -1);
            EXPECT_TRUE(Decode(iconv, Upper(sample.bytes, cs)) == Decode("UTF-8", upper)) << upper;
            g_free(upper);
            g_free(utf8);
        }
}

// ---- Random tables -------------------------------------------------------------------------

struct Rule {
    std::string left, right;
};

// The upper case of the first character of `text`, by the rules as they were written: the last one
// about its first byte says whether there is an upper case of one byte for one; of those for the
// character, the first holds.
std::string UpperByRules(const std::vector<Rule> &rules, std::string_view text, int *consumed)
{
    std::string mapped = {text[0]}, expansion, pair;
    for (const auto &[left, right] : rules) {
        if (left[0] == text[0])
            mapped = left.size() + right.size() == 2 && right[0] != '\0' ? right : "";
        if (expansion.empty() && right.size() == 2 && left == text.substr(0, 1))
            expansion = right;
        if (pair.empty() && left.size() == 2 && left == text.substr(0, 2))
            pair = right.substr(0, right.back() == '\0' ? 1 : 2);
    }
    *consumed = (mapped + expansion).empty() && !pair.empty() ? 2 : 1;
    for (const std::string &upper : {mapped, expansion, pair})
        if (!upper.empty())
            return upper;
    return {text[0]};
}

// The same of a text, which the library must tell at once and at each character.
void ExpectUpper(const std::vector<Rule> &rules, const std::string &text,
                 const CaseTableRecord *table)
{
    const Guarded input(text);
    const auto *const bytes = reinterpret_cast<const unsigned char *>(input.c_str());
    const int length = static_cast<int>(text.size());
    std::string upper;
    for (int at = 0, consumed; at < length; at += consumed) {
        const std::string one =
            UpperByRules(rules, text.substr(static_cast<size_t>(at)), &consumed);
        unsigned char out[2];
        int written = 0;
        ASSERT_EQ(str_UpShiftChar(bytes + at, length - at, table, out, &written), consumed);
        ASSERT_EQ(std::string(out, out + written), one) << "at " << at;
        upper += one;
    }
    unsigned int used = 0, capacity = 0;
    const auto *const run = str_UpShift(bytes, length, table, nullptr, &used, &capacity);
    ASSERT_EQ(std::string(run, run + used), upper);
    ASSERT_TRUE(text.empty() || used < capacity) << "room for a NUL";
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
        std::ostringstream source("T C x", std::ios::ate);
        for (Rule &rule : rules) {
            rule = {{few[random() % few.size()]}, {byte()}};
            if (random() % 2 == 0)
                rule.left += few[random() % few.size()];
            if (random() % 2 == 0)
                rule.right += byte();
            for (const char *between = "\n"; const std::string &side : {rule.left, rule.right})
                for (source << std::exchange(between, "="); const char code : side)
                    source << "\\x" << std::hex << (code >> 4 & 0xF) << (code & 0xF);
        }
        home.Write("toupper/x.s", source.str());
        CaseTableRecord table = {};
        ASSERT_EQ(str_CompileCaseTable("~/toupper/x.s", "~/toupper/x.b", &table), 1) << logged;
        for (size_t length = 0; length <= 300; length += length < 140 ? 1 : 16) {
            std::string text(length, ' ');
            std::generate(text.begin(), text.end(), byte);
            ExpectUpper(rules, text, &table);
            ASSERT_FALSE(HasFatalFailure()) << testing::PrintToString(text) << source.str();
        }
        str_FreeCTEntry(&table);
    }
}

// ---- Edges ---------------------------------------------------------------------------------

TEST_F(CaseConversion, LengthsBeyondTheTextMeanTheText)
{
    const Guarded text("abc");
    for (const char *set : {"ISO-8859-1", "UTF8", "ISO-2022-JP", "JIS X 0201 KATAKANA"})
        for (const int length : {-1, INT_MIN, 3, 4, INT_MAX, 2, 1, 0}) {
            const CSDescriptor cs = DescriptorOf(set);
            const std::string upper = cs.csNum == 1013 ? "abc" : "ABC"; // katakana have no case
            const std::string expected = upper.substr(0, static_cast<unsigned>(length));
            int outLen = -1;
            EXPECT_EQ(str_ToUpper(text.c_str(), length, &outLen, &cs), expected) << set;
            EXPECT_EQ(outLen, expected.size()) << set << " " << length;
        }
}

TEST_F(CaseConversion, TheBufferHasRoomForTheNulWhateverTheTextEndsWith)
{
    home.Write("toupper/6.s", "T C x\ns=SS");
    const CSDescriptor ia5 = DescriptorOf("IA5"), mail = DescriptorOf("ISO-2022-JP");
    EXPECT_EQ(Upper("s", ia5), "SS");
    const auto capacity = [] {
        unsigned int used = 0, room = 0;
        const unsigned char byte = 'x';
        str_UpShift(&byte, 1, pCaseTabs, nullptr, &used, &room);
        return room;
    };
    for (unsigned more = 0; more < 16; ++more) {
        const size_t bytes = capacity() - 2 + more % 4, expanding = bytes / (more < 8 ? 2 : 3);
        const std::string rest = more < 8 ? "x" : "\x1B(I" + std::string(bytes, '1');
        const std::string kept = rest.substr(0, bytes - 2 * expanding);
        EXPECT_EQ(Upper(std::string(expanding, 's') + kept, more < 8 ? ia5 : mail),
                  std::string(2 * expanding, 'S') + kept);
        EXPECT_LT(bytes, capacity());
    }
}

TEST_F(CaseConversion, OfUtf8IsGLibs)
{
    const CSDescriptor cs = DescriptorOf("UTF8");
    EXPECT_EQ(Upper("stra\xC3\x9F\x65 \xF0\x90\x90\xA8", cs), "STRASSE \xF0\x90\x90\x80");
    const Guarded cut("caf\xC3\xA9 \xE6\x97");
    int length = 4711;
    for (const int invalid : {-1, 4})
        EXPECT_EQ(str_ToUpper(cut.c_str(), invalid, &length, &cs), nullptr) << "half a character";
    EXPECT_EQ(length, 4711);
    EXPECT_STREQ(str_ToUpper("\u0345\u0301", 2, &length, &cs), "\u0399") << "no mark in reach";
    const bool isTurkish = std::setlocale(LC_CTYPE, "tr_TR.UTF-8") != nullptr;
    EXPECT_EQ(Upper("i", cs), isTurkish ? "\xC4\xB0" : "I") << "in the locale of the process";
    std::setlocale(LC_CTYPE, "C");
}

} // namespace
