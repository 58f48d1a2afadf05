// SPDX-License-Identifier: Apache-2.0
//
// The ISO 2022 engine on random text, which is often bad or cut off.
#include "services/ccs/sets.h"
#include "tests/support/test.h"

using namespace libstr;

namespace
{

// A limit ends the text as its NUL does; one beyond the NUL changes nothing.
TEST(Engine, AgreesWithTheSlowReaderOnRandomText)
{
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 40000 && !HasFailure(); ++round) {
        const char *set = kCodes[random() % std::size(kCodes)];
        CSDescriptor cs = {6, 6};
        EXPECT_EQ(ccs_GetCSDescriptor(set, &cs), set == "no such set"s ? 0 : 1);
        cs.escMode = random() % 4 != 0;
        const std::string bytes = RandomText(random, round % 8000 == 0 ? 8000 : 14);
        SCOPED_TRACE(set + std::to_string(cs.escMode) + testing::PrintToString(bytes));
        const std::string segments = ReadSlowly(set, bytes, cs.escMode != 0);
        const Guarded text(bytes);
        const std::string longer = text.c_str() + "F|"s;
        const auto length = static_cast<int>(longer.size() - 2);
        EXPECT_EQ(SegmentsOf(cs, text.c_str()), segments);
        EXPECT_EQ(SegmentsOf(cs, longer.c_str(), length), segments);
        EXPECT_EQ(SegmentsOf(cs, text.c_str(), length + 1000), segments);
        str_dispstrlen(text.c_str(), &cs); // reads nothing beyond the text
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
        {ccs_GetT61BaseUnitLen, "malformed UTF-8", 196, "\x97", 1, 1},
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
            ASSERT_EQ(UnitAt(std::string(text + at, avail).c_str(), length, cs), 0);
        }
    }
}

// Unit by unit, every segment of the walk ends where it says, whether or not it heeds escapes.
TEST(Engine, LengthServicesAgreeWithTheWalk)
{
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 40000; ++round) {
        ccs_SetInfo set = {};
        set.number = 4711; // now and then, which is no set's
        ccs_GetSetInfo(static_cast<int>(random() % (std::size(ccs::kSets) + 1)), &set);
        const CSDescriptor cs = {set.number, static_cast<uint16_t>(random() % 2)};
        const std::string text = RandomText(random, 8);
        SCOPED_TRACE(std::to_string(set.number) + " " + std::to_string(cs.escMode) +
                     testing::PrintToString(text));
        int count = 0;
        const bool bytes = (set.flags & CS_FLAG_BYTE) != 0 && cs.escMode == 0;
        const CSSegment *list = ccs_GetAllStrs(&cs, text.c_str(), -1, &count);
        for (int i = 0; !bytes && i < count - 1 && !HasFatalFailure(); ++i)
            if (list[i].kind < CS_SEG_IGNORE)
                CheckUnits(list[i].text, list[i].length, {list[i].kind, cs.escMode});
        ASSERT_FALSE(HasFatalFailure());
    }
}

} // namespace
