// SPDX-License-Identifier: Apache-2.0
//
// Every row of the table of sets beside iconv and GLib: each character, random texts, the names.
#include "services/ccs/sets.h"
#include "str/core/segments.h"
#include "tests/support/casetable.h"

#include <glib.h>

using namespace libstr;

namespace
{
std::string WithBits(std::string code, int bits)
{
    for (char &byte : code)
        byte = static_cast<char>(byte | bits);
    return code;
}

// A set with its characters, and what texts of them must be.  T.61 has three kinds.
struct Reading {
    explicit Reading(const ccs::Row &of) : row(of)
    {
        const bool isMarked = row.units == ccs::Units::marked, isPairs = row.bytes == 2;
        const char first = isPairs ? 0x21 : 0x20;
        const int end = row.right == 0 || isPairs ? 0x7F : 0x100;
        for (int byte = isPairs ? first : 1; row.left + row.right != 0 && byte < end; ++byte) {
            const std::string one(1, static_cast<char>(byte));
            if (!isPairs)
                Take(one);
            for (char next = first; next < 0x7F && (isPairs || (isMarked && byte > 0xC0)); ++next)
                Take(one + next);
        }
    }
    // The character that the bytes are to iconv, or a space.
    char32_t Read(const char *iconv, const std::string &code) const
    {
        const auto read = Decode(iconv, row.reading.before + WithBits(code, row.reading.bits));
        return read && read->size() == 1 ? (*read)[0] : U' ';
    }
    void Take(const std::string &code)
    {
        const auto read = Read(row.iconv == nullptr ? row.reading.code : row.iconv, code);
        if (read == U' ' || g_unichar_iscntrl(read) != 0)
            return; // of no set, or of all
        codes.emplace(read, code);
        for (const int half : {0, row.bytes == 2 ? 0x80 : 0})
            if (characters.emplace(WithBits(code, half), read).second)
                all.push_back(WithBits(code, half));
    }
    std::string UpperOf(const std::string &code) const
    {
        const auto upper = codes.find(g_unichar_toupper(characters.at(code)));
        if (upper == codes.end() || upper->first == characters.at(code))
            return code;
        return WithBits(upper->second, row.bytes == 2 ? code[0] & 0x80 : 0);
    }
    bool IsKind(uint16_t kind, const std::string &code) const
    {
        const bool isT61 = row.left == ccs::kIa5 || row.number == ccs::kT61;
        const bool isAscii = characters.at(code) == static_cast<unsigned char>(code[0]);
        return kind == row.number || (isT61 && code[0] > 0 && (kind == 102 || isAscii));
    }
    void Expect(const std::vector<std::string> &text) const
    {
        SCOPED_TRACE(row.name + testing::PrintToString(text));
        const CSDescriptor cs = {row.number, row.escMode};
        std::string bytes, upper;
        int size = 0, length = -1, columns = 0; // VISCII has letters where controls are
        for (const std::string &code : text) {
            const CSSegment *const list = ccs_GetAllStrs(&cs, code.c_str(), -1, &size);
            EXPECT_TRUE(size == 2 && IsKind(list->kind, code)) << list->kind;
            EXPECT_NE(ccs_GetNextCharLen(code.c_str(), 9, &size, &cs), 0);
            EXPECT_EQ(static_cast<size_t>(size), code.size());
            bytes += code;
            upper += UpperOf(code);
            columns += code[0] < 0 || code[0] >= ' ';
        }
        CSWalk walk;
        CSMeasure measure = {};
        const Guarded guarded(bytes);
        EXPECT_EQ(str_dispstrlen(guarded.c_str(), &cs), text.size());
        EXPECT_STREQ(str_ToUpper(guarded.c_str(), -1, &length, &cs), upper.c_str());
        ASSERT_TRUE(BeginOwnWalk(&walk, guarded.c_str(), &cs));
        ccs_MeasureText(&walk, SIZE_MAX, SIZE_MAX, &measure);
        EXPECT_EQ(int(measure.columns), columns);
        EXPECT_EQ(str_GetDispLen(guarded.c_str(), unsigned(bytes.size()), &cs), columns);
    }
    const ccs::Row &row;
    std::map<std::string, char32_t> characters;
    std::map<char32_t, std::string> codes;
    std::vector<std::string> all;
};

TEST_F(CaseTableTest, AndNamesOfEverySetAreThoseOfIconvAndUnicode)
{
    std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper"));
    const std::vector<Reading> sets(std::begin(ccs::kRows), std::end(ccs::kRows));
    for (const Reading &set : sets) {
        EXPECT_EQ(DescriptorOf(set.row.name).csNum, set.row.number);
        for (const std::string &code : set.all)
            set.Expect({code});
        const char *const iconvs = set.row.iconv == nullptr ? "" : set.row.iconv;
        std::istringstream names(set.row.aliases + " "s + iconvs);
        for (std::string name; names >> name;) {
            std::string bare;
            for (const char c : name)
                bare += c == '-' || c == '_' ? ""s : std::string(1, g_ascii_tolower(c));
            for (const std::string &form : {name, Folded(name), bare})
                EXPECT_EQ(DescriptorOf(form.c_str()).csNum, set.row.number) << form;
            GIConv const iconv = g_iconv_open("UTF-8", name.c_str());
            if (iconv == GIConv(-1) || g_iconv_close(iconv) != 0)
                continue;
            for (const auto &[code, character] : set.characters)
                EXPECT_EQ(set.Read(name.c_str(), code), character) << name;
        }
    }
    const char *const rounds = std::getenv("STR_TEST_ROUNDS");
    std::mt19937 random(TestSeed());
    for (int left = rounds == nullptr ? 2000 : std::atoi(rounds); left > 0; --left) {
        const Reading &set = sets[random() % sets.size()];
        std::vector<std::string> text(set.all.empty() ? 0 : random() % 40);
        for (std::string &code : text)
            code = set.all[random() % set.all.size()];
        set.Expect(text);
    }
}

} // namespace
