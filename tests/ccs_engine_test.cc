// SPDX-License-Identifier: Apache-2.0
//
// The ISO 2022 engine on text that is bad, cut off or random.
#include "services/ccs/sets.h"
#include "tests/support/test.h"

using namespace libstr;

namespace
{

struct Row {
    const char *set;
    std::string_view bytes;
    const char *segments;
    const char *why;
};

// clang-format off
const Row kBadText[] = {
    {"ISO-2022-JP", "\x1B\nb", "-x1 6x2", "only the ESC of a malformed sequence is bad"},
    {"ISO-2022-JP", "\x1B[1;31mred\x1B[m", "-x7 6x3 -x3", "control sequences have no width"},
    {"ISO-2022-JP", "\x1B(!Bx", "-x4 ?x1", "a second intermediate byte makes another set"},
    {"ISO-2022-JP", "caf\xE9\x8E\xA1", "6x3 ?x3", "eight bits where only seven are used"},
    {"ISO-2022-JP", std::string_view("\x1B$B\x46\0\x7C", 6), "-x3 ?x1", "a NUL inside a character"},
    {"ISO-2022-JP", "\x1B%Gcaf\xC3\xA9\xC3\x1B%@a", "-x3 196x5 ?x1 -x3 6x1", "into UTF-8 and back"},
    {"T.61", "\x1B%G\x1BNa", "-x3 -x2 196x1", "... where there are no shifts"},
    {"EUC-JP", "\xC6" "a\xC6\xFC", "?x1 6x1 87x2", "a lead byte before ASCII"},
    {"EUC-JP", "\x8E\n\x8F\xB0", "-x1 6x1 -x1 ?x1", "single shifts without their character"},
    {"T.61", "e\xC2\n\xC2\xC8" "e", "6x1 ?x1 6x1 103x3", "marks before a control and a letter"},
    {"T.61", "\xC1\xC1\xC1\xC1\xC1" "e", "?x1 103x5", "more marks than a letter carries"},
    {"T.61", "\x1B$B\x46\x7C\xC2\x46\xD0", "-x3 87x2 ?x2 103x1", "a mark whose base is no letter"},
    {"T.61", "[~\x1B(B~\xC2" "e", "6x1 102x1 -x3 6x1 103x2", "not ASCII, and after an escape"},
    {"T.61", "\x8E\xC6\xFC\x8E\xC6", "103x3 -x1 ?x1", "a shifted mark on a letter, and on none"},
    {"UTF8", "\xC0\x80\xED\xA0\x80z\xFF", "?x5 196x1 ?x1", "overlong, surrogate, no lead byte"},
    {"ISO-8859-1", "a\x1B$B\x80\xFF", "100x6", "escMode 0: all one segment"},
    {"IA5", "a\x1BN\xE9", "6x3 ?x1", "... but for what cannot be a character"},
    {"JIS X 0208", "\x1B$B\x1BN\x46\x7C", "87x3 -x2 87x2", "... and single shifts, to nothing"},
};
// clang-format on

// In every walk.  A limit ends the text as its NUL does; one beyond the NUL changes nothing.
void CheckWalks(const CSDescriptor &cs, std::string_view bytes, const std::string &segments)
{
    SCOPED_TRACE(std::to_string(cs.csNum) + " " + testing::PrintToString(bytes));
    const Guarded text(bytes);
    const std::string longer = text.c_str() + "F|"s;
    const auto length = static_cast<int>(longer.size() - 2);
    ASSERT_EQ(SegmentsOf(cs, text.c_str()), segments);
    ASSERT_EQ(ListedSegmentsOf(cs, text.c_str()), segments);
    ASSERT_EQ(SegmentsOf(cs, longer.c_str(), length), segments);
    ASSERT_EQ(SegmentsOf(cs, text.c_str(), length + 1000), segments);
    str_dispstrlen(text.c_str(), &cs); // reads nothing beyond the text
}

TEST(Engine, ReadsBadText)
{
    for (const Row &row : kBadText)
        CheckWalks(DescriptorOf(row.set), row.bytes, row.segments);
}

TEST(Engine, AgreesWithTheSlowReaderOnRandomText)
{
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 40000 && !HasFatalFailure(); ++round) {
        const char *set = kCodes[random() % std::size(kCodes)];
        const std::string bytes = RandomText(random, 14);
        CheckWalks({DescriptorOf(set).csNum, 1}, bytes, ReadSlowly(set, bytes));
    }
}

// The length, negative where it does not count.
int NextCharLen(const char *at, unsigned int avail, const CSDescriptor *cs)
{
    int length = 4711;
    const int counts = ccs_GetNextCharLen(at, static_cast<int>(avail), &length, cs);
    return counts != 0 ? length : -length;
}

TEST(Engine, LengthServicesNeverCutAUnit)
{
    const struct {
        decltype(&ccs_GetCtrlLen) service;
        const char *what;
        uint16_t set;
        std::string_view bytes;
        unsigned int avail;
        int length;
        // clang-format off
    } rows[] = {
        {ccs_GetCtrlLen, "a control sequence that the NUL cuts", 103, "\x1B[3", 9, 0},
        {ccs_GetCtrlLen, "a malformed one", 103, "\x1B[\n", 9, 1},
        {ccs_GetCtrlLen, "... without", 13, "\x8E\xB6", 1, 0},
        {ccs_GetCtrlLen, "SS3 with half of it", 159, "\x8F\xB0\xA1", 2, 0},
        {ccs_GetCtrlLen, "SS3 that shifts nothing", 87, "\x8F \x46\x7C", 2, 1},
        {ccs_GetCtrlLen, "SS2 in seven bits", 1126, "\x1BNa", 3, 2},
        {ccs_GetT61BaseUnitLen, "mark and letter that the NUL parts", 103, "\xC2", 9, 0},
        {ccs_GetT61BaseUnitLen, "UTF-8 that does not fit", 196, "\xE6\x97\xA5", 2, 0},
        {ccs_GetT61BaseUnitLen, "... malformed", 196, "\x97", 1, 1},
        {ccs_GetT61BaseUnitLen, "... malformed as far as it goes", 196, "\xE0\x80", 2, 1},
        {NextCharLen, "nothing there", 6, "a", 0, 0},
        {NextCharLen, "half a character", 87, "\x46", 1, 1},
        {NextCharLen, "SS2", 13, "\x8E\xB6", 2, -1},
        {NextCharLen, "... alone", 13, "\x8E", 1, 1},
        {NextCharLen, "a byte of no set", 4711, "\x46\x7C", 2, 1},
    };
    // clang-format on
    for (const auto &row : rows) {
        const Guarded text(row.bytes);
        const CSDescriptor cs = {row.set, 1};
        EXPECT_EQ(row.service(text.c_str(), row.avail, &cs), row.length) << row.what;
    }
}

// The bytes of the unit at `at`, as those who ask for lengths have them.
int UnitAt(const char *at, unsigned int avail, const CSDescriptor &cs)
{
    if ((*at & 0x60) == 0)
        return ccs_GetCtrlLen(at, avail, &cs);
    if (*at == ' ' || *at == 0x7F)
        return 1;
    return (ccs_GetCSFlags(&cs) & CS_FLAG_T61) != 0 ? ccs_GetT61BaseUnitLen(at, avail, &cs)
                                                    : ccs_GetNumBytes(&cs);
}

void CheckUnits(const char *text, unsigned int size, const CSDescriptor &cs)
{
    for (unsigned int at = 0, length = 0; at < size; at += length) {
        length = static_cast<unsigned int>(UnitAt(text + at, size - at, cs));
        ASSERT_GE(length, 1U);
        ASSERT_LE(length, size - at);
        // Comparisons always say 0, where ESC is a character of sets of bytes, not of their halves.
        const bool isHalf = cs.csNum > 1000;
        const bool same = (ccs_GetCSFlags(&cs) & CS_FLAG_BYTE) == 0 || isHalf || text[at] != '\x1B';
        for (const uint16_t escMode : {cs.escMode, same ? uint16_t{0} : cs.escMode}) {
            const CSDescriptor segCs = {cs.csNum, escMode};
            const int next = NextCharLen(text + at, size - at, &segCs);
            ASSERT_EQ(std::abs(next), static_cast<int>(length));
        }
        const bool asked = ccs_GetNumBytes(&cs) == 1 || (text[at] & 0x60) == 0;
        for (unsigned int avail = 1; asked && avail < length; ++avail) {
            ASSERT_EQ(UnitAt(text + at, avail, cs), 0);
        }
    }
}

// Unit by unit, every segment of the walk ends where it says, whether or not it heeds escapes; and
// no comparison by characters depends on which text comes first.
TEST(Engine, LengthServicesAgreeWithTheWalk)
{
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 40000; ++round) {
        ccs_SetInfo set = {};
        set.number = 4711; // now and then, which is no set's
        ccs_GetSetInfo(static_cast<int>(random() % (std::size(ccs::kSets) + 1)), &set);
        const CSDescriptor cs = {set.number, static_cast<uint16_t>(random() % 2)};
        const std::string front = RandomText(random, 4);
        const std::string text = front + RandomText(random, 4),
                          other = front + RandomText(random, 4);
        SCOPED_TRACE(std::to_string(set.number) + " " + std::to_string(cs.escMode) +
                     testing::PrintToString(text));
        int count = 0;
        const bool bytes = (set.flags & CS_FLAG_BYTE) != 0 && cs.escMode == 0;
        const CSSegment *list = ccs_GetAllStrs(&cs, text.c_str(), -1, &count);
        for (int i = 0; !bytes && i < count - 1 && !HasFatalFailure(); ++i)
            if (list[i].kind < CS_SEG_IGNORE)
                CheckUnits(list[i].text, list[i].length, {list[i].kind, cs.escMode});
        for (const unsigned int limit : {1U, 2U, 5U}) {
            ASSERT_EQ(str_DoCompareByCharLen(text.c_str(), other.c_str(), limit, 0, &cs, &cs),
                      str_DoCompareByCharLen(other.c_str(), text.c_str(), limit, 0, &cs, &cs))
                << testing::PrintToString(other);
        }
        ASSERT_FALSE(HasFatalFailure());
    }
}

// A segment of 2^32 bytes, whose length no record can say.  An address of 32 bits reaches no such
// text.
TEST(Engine, RefusesASegmentThatIsTooLong)
{
    if constexpr (sizeof(size_t) > sizeof(uint32_t)) {
        const LongText text(size_t{UINT32_MAX} + 1);
        const CSDescriptor cs = DescriptorOf("ISO-8859-1");
        unsigned int length = 0;
        int count = 0;
        EXPECT_EQ(Escaped([&] { ccs_Get1stStr(&cs, text.c_str(), -1, &length); }), OS_ESC_MEMORY);
        EXPECT_EQ(Escaped([&] { ccs_GetAllStrs(&cs, text.c_str(), -1, &count); }), OS_ESC_MEMORY);
        ASSERT_EQ(ccs_Get1stStr(&cs, text.c_str() + 1, -1, &length), 100);
        EXPECT_EQ(length, UINT32_MAX);
    }
}

// A list grows with its text; matching works on the segments that carry characters.
TEST(Engine, ListsManySegments)
{
    std::string bytes;
    for (int i = 0; i < 5000; ++i)
        bytes += "\x1B$B\x46\x7C\x1B(Ba";
    const CSDescriptor cs = DescriptorOf("ISO-2022-JP");
    int count = 0;
    const CSSegment *list = ccs_GetAllStrs(&cs, bytes.c_str(), -1, &count);
    ASSERT_EQ(count, 20001);
    EXPECT_EQ(list[19999].text, bytes.data() + bytes.size() - 1);
    list = ccs_GetRealStrs(&cs, bytes.c_str(), -1, &count);
    ASSERT_EQ(count, 10001);
    EXPECT_EQ(list[9998].kind, 87);
    EXPECT_EQ(std::string_view(list[9998].text, list[9998].length), "\x46\x7C");
    EXPECT_EQ(list[10000].kind, CS_SEG_END);
    list = ccs_GetRealStrs(&cs, "", -1, &count);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(list[0].kind, CS_SEG_END);
}

} // namespace
