// SPDX-License-Identifier: Apache-2.0
//
// Upper case of texts: by the shipped case tables beside iconv and GLib, by random tables beside a
// slow and obvious lookup, and at the edges.
#include "tests/support/casetable.h"
#include "tests/support/samples.h"

#include <glib.h>

namespace
{

struct CaseConversion : CaseTableTest {
    CaseConversion() { std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper")); }
};

std::string Upper(std::string_view text, const CSDescriptor &cs)
{
    const Guarded input(text);
    int length = -1;
    const auto *const upper =
        str_ToUpper(input.c_str(), static_cast<int>(text.size()), &length, &cs);
    EXPECT_EQ(upper[length], '\0');
    return {upper, static_cast<size_t>(length)};
}

// ---- The shipped tables --------------------------------------------------------------------

TEST_F(CaseConversion, ShippedTablesAreWhatTheirGeneratorWrites)
{
    const std::string anew = home.PathOf("sys"), diff = "diff -r -x generate.cc -x README.md ";
    ASSERT_EQ(std::system((STR_GENERATE " " + anew).c_str()), 0);
    EXPECT_EQ(std::system((diff + STR_DATA_DIR "/toupper " + anew).c_str()), 0);
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

using Rules = std::vector<std::pair<std::string, std::string>>; // left and right sides

// The last rule about a byte says whether there is an upper case of one byte for one; of the other
// rules the first that fits holds.
std::string UpperByRules(const Rules &rules, std::string_view text)
{
    std::string upper;
    while (!text.empty()) {
        std::string one = {text[0]}, expansion, pair;
        for (const auto &[left, right] : rules) {
            if (left[0] == text[0])
                one = left.size() + right.size() == 2 && right[0] != '\0' ? right : "";
            if (expansion.empty() && right.size() == 2 && left == text.substr(0, 1))
                expansion = right;
            if (pair.empty() && left.size() == 2 && left == text.substr(0, 2))
                pair = right.substr(0, right.back() == '\0' ? 1 : 2);
        }
        one = one.empty() ? expansion : one;
        const bool isPair = one.empty() && !pair.empty();
        upper += isPair ? pair : one.empty() ? std::string{text[0]} : one;
        text.remove_prefix(isPair ? 2 : 1);
    }
    return upper;
}

// At once and one by one.
void ExpectUpper(const std::string &upper, const Guarded &text, int length,
                 const CaseTableRecord *table)
{
    const auto *const bytes = reinterpret_cast<const unsigned char *>(text.data());
    unsigned int used = 0, capacity = 0;
    const auto *const run = str_UpShift(bytes, length, table, nullptr, &used, &capacity);
    ASSERT_EQ(std::string(run, run + used), upper);
    ASSERT_TRUE(length == 0 || used < capacity) << "room for a NUL";
    unsigned char one[2];
    std::string ones;
    for (int at = 0, written; at < length; ones.append(one, one + written))
        at += str_UpShiftChar(bytes + at, length - at, table, one, &written);
    ASSERT_EQ(ones, upper);
}

TEST_F(CaseConversion, OfARunIsThatOfItsCharacters)
{
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 40; ++round) {
        // Bytes that have many rules, among them the NUL, and now and then any other.
        std::string few(1 + random() % 8, '\0');
        std::generate(few.begin() + 1, few.end(), random);
        const unsigned rare = 1U << random() % 8;
        const auto often = [&] { return few[random() % few.size()]; };
        const auto byte = [&] {
            return random() % rare != 0 ? static_cast<char>(random()) : often();
        };
        Rules rules(random() % 60);
        std::ostringstream source("T C x", std::ios::ate);
        for (auto &[left, right] : rules) {
            left = {often(), often()};
            right = {byte(), byte()};
            left.resize(1 + random() % 2);
            right.resize(1 + random() % 2);
            for (const char *between = "\n"; const std::string &side : {left, right})
                for (source << std::exchange(between, "="); const char code : side)
                    source << "\\x" << std::hex << (code >> 4 & 0xF) << (code & 0xF);
        }
        home.Write("toupper/6.s", source.str());
        CaseTableRecord table = {};
        ASSERT_EQ(str_CompileCaseTable("~/toupper/6.s", "~/toupper/6.b", &table), 1) << logged;
        const CSDescriptor ascii = {6, 0};
        const CaseTableRecord *const prepared = str_InitCaseTables(&ascii);
        for (int length = 0; length <= 300; length += length < 140 ? 1 : 16) {
            const Guarded input(static_cast<size_t>(length));
            std::generate_n(input.data(), length, byte);
            const std::string upper = UpperByRules(rules, {input.data(), input.data() + length});
            ExpectUpper(upper, input, length, &table);
            ExpectUpper(upper, input, length, prepared);
            ASSERT_FALSE(HasFatalFailure()) << source.str();
        }
        str_FreeCTEntry(&table);
    }
}

TEST_F(CaseConversion, LengthsBeyondTheTextMeanTheText)
{
    for (const char *set : {"ISO-8859-1", "UTF8", "ISO-2022-JP"})
        for (const int length : {-1, INT_MIN, 3, 4, INT_MAX, 2, 1, 0}) {
            const CSDescriptor cs = DescriptorOf(set);
            const auto upper = "ABC"s.substr(0, static_cast<unsigned>(length));
            int outLen = -1;
            EXPECT_EQ(str_ToUpper(Guarded("abc").c_str(), length, &outLen, &cs), upper) << set;
            EXPECT_EQ(outLen, upper.size()) << set << " " << length;
        }
    const CSDescriptor cs = DescriptorOf("UTF8");
    int length = 4711;
    EXPECT_EQ(str_ToUpper("caf\xC3\xA9", 4, &length, &cs), nullptr) << "half a character";
    EXPECT_EQ(length, 4711);
}

// Every length, so that the NUL comes to the end of every buffer.
TEST_F(CaseConversion, TheBufferHasRoomForTheNulWhateverTheTextEndsWith)
{
    home.Write("toupper/6.s", "T C x\ns=SS");
    for (size_t length = 0; length < 2000; ++length) {
        const std::string text(length, 's'), kept = "\x1B(I" + std::string(length, '1');
        EXPECT_EQ(Upper(text, DescriptorOf("IA5")), std::string(2 * length, 'S'));
        EXPECT_EQ(Upper(kept, DescriptorOf("ISO-2022-JP")), kept);
    }
}

} // namespace
