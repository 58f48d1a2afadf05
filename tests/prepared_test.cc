// SPDX-License-Identifier: Apache-2.0
//
// What is prepared for a case table: beside byte maps without an index, and never of other arrays.
#include "str/core/prepared.h"
#include "tests/support/casetable.h"

#include <numeric>
#include <thread>
#include <utility>

using namespace libstr;

namespace
{

uint8_t *In(const Guarded &bytes) { return reinterpret_cast<uint8_t *>(bytes.data()); }

TEST(ByteMaps, GiveTheSameInBlocksAsByteByByte)
{
    std::mt19937 random(TestSeed());
    for (unsigned round = 0; round < 16; ++round) { // folds, then maps with other changes and gaps
        uint8_t upper[256];
        std::iota(upper, upper + 256, uint8_t{0});
        for (unsigned letter = 0; letter < 26; ++letter)
            upper[round % 4 == 0 ? (0x60 + round * 16 + letter) % 256
                                 : (64 + random() % 192) | 0x20] &= 0xDF;
        for (int other = 0; round >= 8 && other < 4; ++other)
            upper[random() % 256] = static_cast<uint8_t>(random() % 2 * random());
        ByteMap plain, indexed;
        SetByteMap(&plain, upper);
        SetByteMap(&indexed, upper);
        IndexByteMap(&indexed);
        FindFold(&indexed);
        ASSERT_TRUE(indexed.isFold || round >= 8);
        for (size_t size = 0; size <= 200; ++size) {
            const Guarded a(size), b(size), out(2 * size);
            std::generate_n(In(a), size, [&] { return 1 + random() % 255; });
            std::transform(In(a), In(a) + size, In(b), [&](unsigned byte) {
                const bool same = upper[byte] == upper[byte ^ 0x20] || random() % 999 == 0;
                return same ? byte ^ 0x20 : byte;
            });
            ASSERT_EQ(MappedAlike(indexed, In(a), In(b), size),
                      MappedAlike(plain, In(a), In(b), size));
            if (size != 0 && random() % 2 != 0)
                a.data()[random() % size] = '\0';
            const size_t mapped = MapBytes(plain, In(a), size, In(out));
            ASSERT_EQ(MapBytes(indexed, In(a), size, In(out) + size), mapped);
            ASSERT_EQ(std::memcmp(In(out), In(out) + size, mapped), 0);
        }
    }
}

TEST(ByteMaps, FindLettersThatDifferInMoreThanCase)
{
    std::mt19937 random(TestSeed());
    for (size_t round = 0; round < 20 * 201; ++round) {
        const size_t size = round % 201;
        const Guarded a(size), b(size);
        std::generate_n(In(a), size,
                        [&] { return random() % 2 ? random() | 1 : '@' + random() % 64; });
        std::transform(In(a), In(a) + size, In(b), [&](unsigned byte) {
            const bool isLetter = byte < 0x80 && std::isalpha(static_cast<int>(byte)) != 0;
            return isLetter || random() % 199 == 0 ? byte ^ random() % 2 * 0x20 : byte;
        });
        const auto alike = [](uint8_t x, uint8_t y) {
            return x == y || ((x ^ y) == 0x20 && x < 0x80 && std::isalpha(x) != 0);
        };
        const auto [at, other] = std::mismatch(In(a), In(a) + size, In(b), alike);
        ASSERT_EQ(LettersAlike(a.data(), b.data(), size), at - In(a));
    }
}

using PreparedTables = CaseTableTest;

std::string Upper(const std::string &text, const CaseTableRecord *record)
{
    unsigned used = 0, capacity = 0;
    const auto *const in = reinterpret_cast<const unsigned char *>(text.data());
    const auto length = static_cast<int>(text.size());
    const auto *const upper = str_UpShift(in, length, record, nullptr, &used, &capacity);
    return {upper, upper + used};
}

TEST_F(PreparedTables, ServeNoOtherArrays)
{
    const CSDescriptor cs = {6, 0};
    home.Write("toupper/6.s", "T C x\na=A");
    CaseTableRecord *const own = str_InitCaseTables(&cs), whole = *own;
    own->NumLeads = 1;
    EXPECT_EQ(prepared::Find(own), nullptr);
    str_FreeCTEntry(&(*own = whole));
    home.Write("toupper/6.s", "T C x\na=E");
    str_CompileCaseTable("~/toupper/6.s", "~/toupper/6.b", own);
    EXPECT_TRUE(own->pByteMap == whole.pByteMap || sizeof own == 4) << "the same reference";
    EXPECT_TRUE(prepared::Find(own) == nullptr && Upper("a", own) == "E");

    alignas(4) static char segment[4000];
    for (const std::string upper : {"I", "O"}) { // in the same place
        home.Write("toupper/6.s", "T C x\na=" + upper);
        home.Remove("toupper/6.b");
        str_FreeWkArea();
        str_ReadStrToWkArea(0, nullptr);
        const Image image(segment, sizeof segment);
        str_AttachSMem(image.records, image.count, segment);
        const UpShiftTable *found = nullptr;
        std::thread other([&] { found = prepared::Find(pCaseTabs); });
        EXPECT_EQ(Upper("a", pCaseTabs), upper);
        other.join();
        EXPECT_TRUE(found != nullptr && found == prepared::Find(pCaseTabs));
        for (char *const elsewhere : {segment + 4, static_cast<char *>(nullptr)}) {
            str_ba = elsewhere;
            EXPECT_EQ(prepared::Find(pCaseTabs), nullptr);
        }
        pCaseTabs = own;
        EXPECT_EQ(Upper("a", own), "E");
    }
}

} // namespace
