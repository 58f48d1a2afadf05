// SPDX-License-Identifier: Apache-2.0
//
// The case tables that are kept in data/toupper: that they are what their generator writes, and
// that each, compiled, upper-cases what iconv reads in its set as GLib does.
#include "services/ccs/sets.h"
#include "str/core/reference.h"
#include "tests/support/home.h"
#include "tests/support/text.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <str/casetable.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

using namespace libstr;

namespace
{

const std::string kSources = STR_DATA_DIR "/toupper/";

TEST(ToUpperData, IsWhatItsGeneratorWrites)
{
    const TempHome home;
    const std::string anew = home.PathOf("toupper");
    ASSERT_EQ(std::system((STR_GENERATE " " + anew).c_str()), 0);
    EXPECT_EQ(std::system(("diff -r -x generate.cc -x README.md " + kSources + " " + anew).c_str()),
              0);
}

// ---- What iconv reads ----------------------------------------------------------------------

// How the codes of a set read in a code of iconv: behind `prefix`, with `top` set in each byte.
struct Reading {
    const char *iconv;
    unsigned bytes;
    unsigned top;
    unsigned last; // the last byte that is of the set
    const char *prefix;
};

Reading ReadingOf(const ccs::SetRow &set)
{
    const ccs::Reading &alone = set.reading;
    return {set.iconv == nullptr ? alone.code : set.iconv, set.bytes, alone.bits,
            set.right == 0 ? 0x7FU : 0xFFU, alone.before};
}

std::string Byte(size_t value) { return std::string(1, static_cast<char>(value)); }

std::string TopBits(std::string bytes)
{
    for (char &byte : bytes)
        byte = static_cast<char>(byte & '\x80');
    return bytes;
}

// The one character that the code is; 0 for none.
char32_t CharacterOf(const Reading &reading, const std::string &code)
{
    std::string bytes = reading.prefix;
    for (const char byte : code) {
        if (static_cast<unsigned char>(byte) > reading.last)
            return 0;
        bytes += static_cast<char>(static_cast<unsigned char>(byte) | reading.top);
    }
    const auto characters = Decode(reading.iconv, bytes).value_or(U"");
    return characters.size() == 1 ? characters[0] : 0;
}

// Every code of one byte, or of two, that text of the set may hold.
std::vector<std::string> CodesOf(const Reading &reading)
{
    const bool hasMarks = reading.iconv == std::string("T.61-8BIT");
    std::vector<std::string> codes;
    for (unsigned first = 0; first < 256; ++first) {
        if (reading.bytes == 1)
            codes.push_back(Byte(first));
        const bool isLead = reading.bytes == 2 && (first & 0x7F) > 0x20 && (first & 0x7F) < 0x7F;
        if (isLead || (hasMarks && first >= 0xC1 && first <= 0xCF))
            for (unsigned second = 0x21; second < 0x7F; ++second)
                codes.push_back(Byte(first) + Byte(isLead ? second | (first & 0x80) : second));
    }
    return codes;
}

// ---- What a table says ---------------------------------------------------------------------

using Rules = std::map<std::string, std::string>; // by the bytes of the character

// A map entry goes before a list.
Rules RulesOf(const CaseTableRecord &record)
{
    Rules rules;
    const auto *const map = reference::ResolveForReading<char>(record.pByteMap);
    for (size_t byte = 0; byte < 256; ++byte)
        if (map[byte] != 0)
            rules.emplace(Byte(byte), std::string{map[byte]});
    const auto takeList = [&](CaseTableRef list, int32_t count, const std::string &lead) {
        const char *pair = reference::ResolveForReading<char>(list);
        for (; count > 0 && !rules.contains(lead); --count, pair += 3)
            rules.emplace(lead + pair[0], std::string(pair + 1, lead.empty() || pair[2] ? 2 : 1));
    };
    takeList(record.pExpansions, record.NumExpansions, "");
    const auto *const leads = reference::ResolveForReading<LeadEntry>(record.pLeads);
    for (int32_t i = 0; i < record.NumLeads; ++i)
        takeList(leads[i].pTrails, leads[i].NumTrails, Byte(leads[i].LeadByte));
    return rules;
}

// Character by character: a byte that has no rule stays, and the next is looked up by itself.
std::string UpperOf(const Rules &rules, const std::string &text)
{
    std::string upper;
    for (size_t at = 0, size; at < text.size(); at += size) {
        size = rules.contains(text.substr(at, 1)) ? 1 : 2;
        const auto rule = rules.find(text.substr(at, size));
        if (rule == rules.end())
            size = 1;
        upper += rule == rules.end() ? text.substr(at, 1) : rule->second;
    }
    return upper;
}

void CheckTableOf(const ccs::SetRow &set)
{
    const TempHome home;
    const std::string source = kSources + std::to_string(set.number) + ".s";
    CaseTableRecord record = {};
    ASSERT_EQ(str_CompileCaseTable(source.c_str(), "~/toupper/table", &record), 1);
    const Rules rules = RulesOf(record);
    str_FreeCTEntry(&record);

    const Reading reading = ReadingOf(set);
    const std::vector<std::string> codes = CodesOf(reading);
    std::map<char32_t, std::string> held;
    for (const std::string &code : codes)
        held.emplace(CharacterOf(reading, code), code);
    int changed = 0;
    for (const std::string &code : codes) {
        const std::string where = testing::PrintToString(code);
        const char32_t character = CharacterOf(reading, code);
        const auto upper = static_cast<char32_t>(g_unichar_toupper(character));
        const std::string shown = UpperOf(rules, code);
        if (reading.bytes == 2) {
            EXPECT_TRUE(rules.contains(code)) << where << ": its second byte would begin one";
            EXPECT_EQ(TopBits(shown), TopBits(code)) << where;
        }
        if (character != 0 && held.contains(upper)) {
            EXPECT_EQ(CharacterOf(reading, shown), upper) << where;
        } else if (character != 0 || code.size() == reading.bytes) {
            EXPECT_EQ(shown, code) << where;
        }
        changed += shown == code ? 0 : 1;
    }
    EXPECT_GE(changed, 20);
}

TEST(ToUpperData, GivesTheSimpleUpperCaseOfEveryCharacter)
{
    for (const ccs::SetRow &set : ccs::kSets) {
        SCOPED_TRACE(set.name);
        if ((set.flags & CS_FLAG_CASE) != 0)
            CheckTableOf(set);
    }
}

} // namespace
