// SPDX-License-Identifier: Apache-2.0
//
// The case tables that are kept in data/toupper: that they are what their generator writes, and that
// each, compiled, upper-cases what iconv reads in its set as GLib does.
#include "services/services.h"
#include "tests/support/home.h"
#include "tests/support/text.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <str/casetable.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

namespace
{

namespace fs = std::filesystem;

const fs::path kSources = STR_DATA_DIR "/toupper";

std::string FileBytes(const fs::path &file)
{
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

std::map<std::string, std::string> SourcesIn(const fs::path &directory)
{
    std::map<std::string, std::string> sources;
    for (const fs::directory_entry &entry : fs::directory_iterator(directory))
        if (entry.path().extension() == ".s")
            sources[entry.path().filename()] = FileBytes(entry.path());
    return sources;
}

TEST(ToUpperData, IsWhatItsGeneratorWrites)
{
    const TempHome home;
    const fs::path anew = home.PathOf("toupper");
    ASSERT_EQ(std::system((STR_GENERATE " " + anew.string()).c_str()), 0);
    const auto kept = SourcesIn(kSources), made = SourcesIn(anew);
    EXPECT_EQ(kept.size(), made.size());
    for (const auto &[name, source] : made)
        EXPECT_TRUE(kept.contains(name) && kept.at(name) == source) << name;
}

// ---- What iconv reads ----------------------------------------------------------------------

// How the codes of a set read in a code of iconv: behind `prefix`, with `top` set in each byte.
struct Reading {
    const char *iconv;
    unsigned bytes = 1;
    unsigned top = 0;
    unsigned last = 0xFF; // the last byte that is of the set
    const char *prefix = "";
};

// clang-format off
const std::map<uint16_t, Reading> kReadings = {
    {6, {"ASCII"}}, {14, {"ISO646-JP"}}, {13, {"SHIFT_JIS"}}, {102, {"T.61-8BIT", 1, 0, 0x7F}}, {103, {"T.61-8BIT"}},
    {100, {"ISO-8859-1"}}, {1100, {"ISO-8859-1", 1, 0x80, 0x7F}},
    {101, {"ISO-8859-2"}}, {1101, {"ISO-8859-2", 1, 0x80, 0x7F}},
    {144, {"ISO-8859-5"}}, {1144, {"ISO-8859-5", 1, 0x80, 0x7F}},
    {126, {"ISO-8859-7"}}, {1126, {"ISO-8859-7", 1, 0x80, 0x7F}},
    {148, {"ISO-8859-9"}}, {1148, {"ISO-8859-9", 1, 0x80, 0x7F}},
    {203, {"ISO-8859-15"}}, {1203, {"ISO-8859-15", 1, 0x80, 0x7F}},
    {42, {"EUC-JP", 2, 0x80}}, {87, {"EUC-JP", 2, 0x80}}, {159, {"EUC-JP", 2, 0x80, 0xFF, "\x8F"}},
    {149, {"EUC-KR", 2, 0x80}}, {58, {"EUC-CN", 2, 0x80}},
};
// clang-format on

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

// ---- What a compiled file says -------------------------------------------------------------

// Its rules, by the bytes of the character; a map entry goes before a list.
std::map<std::string, std::string> RulesOf(const std::string &file)
{
    const auto number = [&](size_t at) {
        uint32_t value;
        std::memcpy(&value, &file.at(at + sizeof value - 1) + 1 - sizeof value, sizeof value);
        return size_t{value};
    };
    constexpr size_t kRecord = sizeof(CaseTableHeader), kMap = kRecord + sizeof(CaseTableRecord);
    std::map<std::string, std::string> rules;
    for (size_t byte = 0; byte < 256; ++byte)
        if (const char upper = file.at(kMap + byte); upper != 0)
            rules.emplace(Byte(byte), std::string{upper});

    const auto takeList = [&](size_t at, size_t count, const std::string &lead) {
        for (const size_t end = at + 3 * count; at < end; at += 3)
            if (!rules.contains(lead))
                rules.emplace(lead + file.at(at),
                              file.substr(at + 1, lead.empty() || file.at(at + 2) != 0 ? 2 : 1));
        return at;
    };
    const size_t leads =
        takeList(kMap + 256, number(kRecord + offsetof(CaseTableRecord, NumExpansions)), "");
    size_t at = leads + sizeof(LeadEntry) * number(kRecord + offsetof(CaseTableRecord, NumLeads));
    for (size_t lead = leads, end = at; lead < end; lead += sizeof(LeadEntry))
        at = takeList(at, number(lead + offsetof(LeadEntry, NumTrails)), file.substr(lead, 1));
    EXPECT_EQ(at, file.size());
    return rules;
}

// Character by character: a byte that has no rule stays, and the next is looked up by itself.
std::string UpperOf(const std::map<std::string, std::string> &rules, const std::string &text)
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

class ToUpperTable : public testing::TestWithParam<uint16_t>
{
};

TEST_P(ToUpperTable, GivesTheSimpleUpperCaseOfEveryCharacter)
{
    const std::string number = std::to_string(GetParam());
    const TempHome home;
    CaseTableRecord record = {};
    ASSERT_EQ(
        str_CompileCaseTable((kSources / (number + ".s")).c_str(), "~/toupper/table", &record), 1);
    str_FreeCTEntry(&record);
    const auto rules = RulesOf(home.Read("toupper/table"));

    ASSERT_TRUE(kReadings.contains(GetParam()));
    const Reading &reading = kReadings.at(GetParam());
    std::map<char32_t, std::string> held;
    for (const std::string &code : CodesOf(reading))
        held.emplace(CharacterOf(reading, code), code);
    int changed = 0;
    for (const std::string &code : CodesOf(reading)) {
        const std::string where = testing::PrintToString(code);
        const char32_t character = CharacterOf(reading, code);
        const auto upper = static_cast<char32_t>(g_unichar_toupper(character));
        const std::string shown = UpperOf(rules, code);
        if (reading.bytes == 2) {
            EXPECT_TRUE(rules.contains(code))
                << where << ": the second byte would begin a character";
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

std::vector<uint16_t> SetsWithCase()
{
    std::vector<uint16_t> numbers;
    ccs_SetInfo set;
    for (int i = 0; ccs_GetSetInfo(i, &set) != 0; ++i)
        if ((set.flags & CS_FLAG_CASE) != 0)
            numbers.push_back(set.number);
    return numbers;
}

INSTANTIATE_TEST_SUITE_P(Data, ToUpperTable, testing::ValuesIn(SetsWithCase()),
                         testing::PrintToStringParamName());

} // namespace
