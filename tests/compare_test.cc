// SPDX-License-Identifier: Apache-2.0
//
// Comparison beside a slow one, which goes character by character; UTF-8 beside GLib; O/R names.

#include "str/core/upshift.h"
#include "tests/support/casetable.h"
#include "tests/support/samples.h"

#include <deque>
#include <str/case.h>
#include <str/compare.h>
#include <tuple>

namespace
{

// Case tables with every sort of rule; other sets have none.
const std::map<uint16_t, std::string> kRules = {
    {6, "a=A b=B c=C s=S x=X g=G l=L"},
    {100, R"(a=A b=B \xE9=\xC9 z=\xC2S Z=\xC2A \xC2a=\xC2A \xC8u=u \xC6\xFC=\xC6\xFB)"},
    {103, R"(\xC8u=\xC8U \xC8U=\xC8U \xF3=\xE3 \xF1=\xC8U)"},
    {87, R"(\x46\x7C=Zz \xC6\xFC=\xC6\xFB)"},
};

struct Comparison : CaseTableTest {
    Comparison()
    {
        for (const auto &[kind, rules] : kRules) {
            home.Write("toupper/" + std::to_string(kind) + ".s", "T C test\n" + rules);
            const CSDescriptor cs = {kind, 0};
            EXPECT_NE(str_InitCaseTables(&cs), nullptr) << logged;
        }
    }
};

constexpr uint16_t kUtf8 = 196;

int Sign(int order) { return (order > 0) - (order < 0); }

using Runs = std::deque<std::pair<uint16_t, std::string>>; // bytes with their kind

struct Text {
    CSDescriptor cs;
    std::string bytes;
    unsigned int limit = UINT_MAX; // of bytes; 2^31 and more is none
    bool isOneRun = false, isWhole = false;

    bool IsEmpty() const { return bytes.empty() || limit == 0; }

    Runs Parts() const // those that are compared
    {
        const std::string kept = bytes.substr(0, limit);
        if (isOneRun)
            return {{cs.csNum, kept}};
        Runs runs;
        int count = 0;
        const CSSegment *segment = ccs_GetRealStrs(&cs, kept.c_str(), -1, &count);
        for (; segment->kind != CS_SEG_END; ++segment)
            runs.emplace_back(segment->kind, std::string(segment->text, segment->length));
        return runs;
    }
};

std::string Take(Runs *runs, int size)
{
    std::string &bytes = runs->front().second;
    const std::string taken = bytes.substr(0, static_cast<size_t>(size));
    bytes.erase(0, taken.size());
    if (bytes.empty())
        runs->pop_front();
    return taken;
}

// The next character in upper case, as a signed number, and its size.
std::pair<int, int> TakeUpper(Runs *runs, const CSDescriptor &cs)
{
    unsigned char upper[2];
    int written = 0;
    const std::string bytes = runs->front().second;
    const auto *const at = reinterpret_cast<const unsigned char *>(bytes.data());
    const int most = static_cast<int>(bytes.size());
    Take(runs, str_UpShiftChar(at, most, libstr::CaseTableOf(&cs), upper, &written));
    const int first = static_cast<signed char>(upper[0]);
    return {written == 1 ? first : first * 256 + static_cast<signed char>(upper[1]), written};
}

uint32_t FlagsOf(const CSDescriptor &cs) { return ccs_GetCSFlags(&cs); }

// The set by which the two are compared, 0 for none.
uint16_t Common(uint16_t kind1, uint16_t kind2)
{
    const auto [low, high] = std::minmax(kind1, kind2);
    const bool areAscii =
        low == 6 && high != CS_SEG_RAW && (FlagsOf({high, 0}) & CS_FLAG_ASCII_SUPERSET) != 0;
    return low == high || areAscii ? high : 0;
}

auto Rank(uint16_t kind)
{
    const CSDescriptor cs = {kind, 0};
    const char *const designation = ccs_GetDesignation(&cs, 1);
    const char final = designation == nullptr ? '\0' : std::string(designation).back();
    return std::tuple((FlagsOf(cs) & CS_FLAG_BYTE) == 0, final, static_cast<int16_t>(kind));
}

// The order of the two, 0 for equal; with a limit of characters, whether they are.
int Slow(const Text &text1, const Text &text2, bool caseless, unsigned int chars = UINT_MAX)
{
    if ((text1.bytes.empty() && text2.bytes.empty()) || chars == 0 ||
        (text1.limit == 0 && text2.limit == 0))
        return 0;
    if (text1.IsEmpty() || text2.IsEmpty())
        return text1.IsEmpty() ? -1 : 1;
    if (text1.isWhole && (text1.cs.csNum == kUtf8 || text2.cs.csNum == kUtf8)) {
        const bool areAlike =
            caseless ? Folded(text1.bytes) == Folded(text2.bytes) : text1.bytes == text2.bytes;
        return !areAlike || text1.cs.csNum != text2.cs.csNum;
    }
    for (const Text &text : {text1, text2})
        if (text.limit <= INT_MAX && text.bytes.size() < text.limit)
            return 1;
    const bool limited = chars <= INT_MAX;
    Runs a = text1.Parts(), b = text2.Parts();
    for (unsigned int done = 0; !limited || done < chars;) {
        if (a.empty() || b.empty())
            return limited ? 1 : static_cast<int>(b.empty()) - static_cast<int>(a.empty());
        const uint16_t kind1 = a[0].first, kind2 = b[0].first, common = Common(kind1, kind2);
        const CSDescriptor cs = {common, 0};
        if (common == 0)
            return Rank(kind1) < Rank(kind2) ? -1 : 1;
        if (caseless && kRules.contains(common)) {
            const auto upper1 = TakeUpper(&a, cs), upper2 = TakeUpper(&b, cs);
            if (upper1 != upper2)
                return upper1 < upper2 ? -1 : 1;
            ++done;
            continue;
        }
        int size = static_cast<int>(std::min(a[0].second.size(), b[0].second.size()));
        done += ccs_GetNextCharLen(a[0].second.c_str(), size, &size, &cs) != 0;
        if (const int order = Take(&a, limited ? size : 1).compare(Take(&b, limited ? size : 1)))
            return order;
    }
    return 0;
}

// clang-format off
const std::string kPieces[] = {
    "a", "k", "K", "\u212A", "ss", "\u00DF", "\u1E9E", "\u0131", "I", "\u0390", "\u1FD3", "@", "`",
    "\u03B9\u0308\u0301", "\u01C5", "\u13A0", "\uAB70", "\U00010400", "\U00010428", "[", "{",
    "\u65E5", "0123456789abcdefg", "\xC3", "\xA9", "\xE6\x97", "\xF0\x90\x90", "\xED\xA0\x80",
};
// clang-format on

Text RandomlyMade(std::mt19937 &random)
{
    const char *const set = kSamples[random() % std::size(kSamples)].set;
    Text text = {DescriptorOf(random() % 4 == 0 ? "UTF8" : set), ""};
    text.cs.escMode = random() % 4 == 0 ? random() % 2 : text.cs.escMode;
    for (auto left = text.cs.csNum == kUtf8 ? random() % 9 : 0; left > 0; --left)
        text.bytes += kPieces[random() % std::size(kPieces)];
    if (text.cs.csNum != kUtf8)
        text.bytes = RandomText(random, random() % 4 == 0 ? 30 : 6).c_str(); // up to a NUL
    return text;
}

// Much the same: cut elsewhere, of other case, without a byte, with other characters.
std::string Varied(std::mt19937 &random, std::string bytes)
{
    for (auto changes = random() % 4; changes > 0 && !bytes.empty(); --changes) {
        const size_t at = random() % bytes.size();
        const std::string others[] = {"\x1B[m" + bytes.substr(at, 1),
                                      std::string(1, static_cast<char>(bytes[at] ^ 0x20)), "",
                                      kPieces[random() % std::size(kPieces)]};
        bytes.replace(at, 1, others[random() % 4]);
    }
    return bytes.c_str(); // up to a NUL
}

TEST_F(Comparison, IsThatOfASlowOne)
{
    std::mt19937 random(TestSeed());
    int equal = 0, rounds = 0;
    CaseTableRecord *const own = pCaseTabs;
    std::vector<CaseTableRecord> copies(own, own + NumCaseTabs); // for which nothing is prepared
    for (; rounds < 16'000 && !HasFailure(); ++rounds) {
        pCaseTabs = rounds % 2 == 0 ? own : copies.data();
        Text text1 = RandomlyMade(random), text2 = random() % 2 == 0 ? text1 : RandomlyMade(random);
        text2.bytes = Varied(random, random() % 4 == 0 ? text2.bytes : text1.bytes);
        const CSDescriptor &cs1 = text1.cs, &cs2 = text2.cs;
        const Guarded guarded1(text1.bytes), guarded2(text2.bytes);
        const char *const s1 = guarded1.c_str(), *const s2 = guarded2.c_str();
        const auto limit = [&](const Text &text) {
            const auto near = static_cast<unsigned int>(random() % (text.bytes.size() + 4)) - 1;
            return random() % 6 == 0 ? INT_MAX + 1U + near : near; // around 0 or 2^31
        };
        const unsigned int chars = limit(text1), bytes1 = limit(text1);
        const unsigned int bytes2 = random() % 3 == 0 ? limit(text2) : bytes1;
        SCOPED_TRACE(
            testing::PrintToString(std::tuple(cs1.csNum, cs1.escMode, text1.bytes, bytes1,
                                              cs2.csNum, cs2.escMode, text2.bytes, bytes2, chars)));
        for (const bool caseless : {false, true}) {
            const int order = Slow(text1, text2, caseless);
            EXPECT_EQ(Sign(str_cmpTextStr(s1, s2, caseless, &cs1, &cs2)), Sign(order));
            EXPECT_TRUE(caseless || Sign(Slow(text2, text1, false)) == -Sign(order));
            equal += order == 0;
        }
        const uint32_t sort = FlagsOf(cs1) & (CS_FLAG_BYTE | CS_FLAG_T61);
        const bool isOne = cs1.csNum == cs2.csNum, isPlain = isOne && sort == CS_FLAG_BYTE;
        text1.isOneRun = text2.isOneRun = isPlain && cs1.escMode == 0 && cs2.escMode == 0;
        // `value` is the C library's, which counts for one set of bytes.
        const auto check = [&](auto engine, unsigned int most, int value, auto one, auto two,
                               auto caselessOne, auto caselessTwo, auto... limits) {
            const bool isUtf8 = isOne && cs1.csNum == kUtf8 && sizeof...(limits) == 0;
            for (const bool caseless : {false, true}) {
                const int order = Slow(text1, text2, caseless, most) != 0;
                EXPECT_EQ(engine(s1, s2, limits..., caseless, &cs1, &cs2), order);
                const int byTwo = (caseless ? caselessTwo : two)(s1, s2, limits..., &cs1, &cs2);
                EXPECT_EQ(byTwo, !caseless && (isPlain || isUtf8) ? value : order);
                EXPECT_TRUE(!isOne || cs1.escMode != cs2.escMode ||
                            (caseless ? caselessOne : one)(s1, s2, limits..., &cs1) == byTwo);
            }
        };
        text1.isWhole = true;
        check(str_DoCompareToEnd, UINT_MAX, std::strcmp(s1, s2), str_strcmp, str_strcmp3,
              str_strucasecmp, str_strucasecmp3);
        text1.isWhole = false;
        check(str_DoCompareByCharLen, chars, std::strncmp(s1, s2, chars), str_strncmp,
              str_strnccmp3, str_strucasencmp, str_strucasenccmp3, chars);
        text1.limit = bytes1;
        text2.limit = bytes2;
        check(str_DoCompareByByteLen, UINT_MAX, std::strncmp(s1, s2, bytes1), str_strncmp2,
              str_strnbcmp3, str_strucasencmp2, str_strucasenbcmp3, bytes1, bytes2);
    }
    EXPECT_GT(equal, rounds / 3);
    pCaseTabs = own;
}

const std::string k254(254, 'x'), kLong(60'000, 'x');
const struct {
    std::string name1, name2;
    const char *charset, *attributes;
    int any, order;
} kNames[] = {
    // clang-format off
    {"C=GB; G=b", "C=GB; S=x", "T.61", "C,C, ,S,G,", 0, -1}, // named again, and not there
    {"C=GB; S=\"\"", "C=DE", "T.61", "S,CN,XYZ", 0, 0}, // empty, not there, and unknown
    {"S=MUELLER; S=M\xC8ULLER", "S=M\xC8uLLER", "T.61", "S", 0, 0}, // the T.61 form
    {"S=\xF1" "b", "S=\xC8u" "B", "T.61", "S", 0, 0}, // a letter as two bytes
    {"DDA:x=\xF3", "DDA:X=\xE3", nullptr, "DDT1,DDV1", 1, 0},
    {"S=" + k254 + "a", "S=" + k254 + "b", "T.61", "S", 0, -1}, // byte 255 counts
    {"S=x" + k254 + "a", "S=" + kLong, "T.61", "S", 0, 0}, // byte 256 does not
    // clang-format on
};

TEST_F(Comparison, OrdersORNamesByTheirAttributes)
{
    for (const auto &[first, second, charset, attributes, any, expected] : kNames)
        for (const int sign : {1, -1}) {
            const Guarded a(sign > 0 ? first : second), b(sign > 0 ? second : first);
            const int order = str_cmpORName(a.c_str(), b.c_str(), charset, any, attributes);
            EXPECT_EQ(Sign(order), sign * expected) << first << " " << second;
        }
}

TEST_F(Comparison, CountsTextsOf2GiBToTheirEnds)
{
    if (sizeof(size_t) == 4)
        GTEST_SKIP() << "no room for them";
    const LongText text(size_t{INT32_MAX} + 100);
    const CSDescriptor latin1 = DescriptorOf("ISO-8859-1");
    EXPECT_EQ(str_strucasecmp(text.c_str(), text.c_str() + 1, &latin1), 1);
    int length = 4711;
    EXPECT_EQ(Escaped([&] { str_ToUpper(text.c_str(), -1, &length, &latin1); }), OS_ESC_MEMORY);
    EXPECT_EQ(length, 4711);
}

} // namespace
