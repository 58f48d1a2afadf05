// SPDX-License-Identifier: Apache-2.0
//
// What is prepared for a case table changes no result: beside byte maps without an index, and
// beside copies of the records, for which nothing is prepared.
#include "str/core/comparison.h"
#include "tests/support/casetable.h"

#include <array>
#include <filesystem>
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

auto Order(const std::string &a, const std::string &b, int limit, const CaseTableRecord *record)
{
    const auto judge = [](auto x, auto y) { return std::memcmp(x.bytes, y.bytes, 2); };
    const Run runs[] = {{a.data(), a.size()}, {b.data(), b.size()}};
    const RunResult result = CompareRunInUpperCase(runs[0], runs[1], limit, record, judge);
    return std::tuple(result.order, result.bytes1, result.bytes2, result.chars);
}

TEST_F(PreparedTables, GiveTheSameAsTheirRecords)
{
    std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper"));
    ccs_SetInfo set;
    for (int i = 0; ccs_GetSetInfo(i, &set) != 0; ++i)
        str_InitCaseTables(std::array{CSDescriptor{set.number, 0}}.data());
    std::mt19937 random(TestSeed());
    for (const CaseTableRecord *record = pCaseTabs; record != pCaseTabs + NumCaseTabs; ++record) {
        const CaseTableRecord copy = *record;
        ASSERT_TRUE(prepared::Find(record) != nullptr && prepared::Find(&copy) == nullptr);
        std::string all; // the pairs that have another upper case
        for (unsigned pair = 0; pair < 0x10000; ++pair) {
            const std::string two = {static_cast<char>(pair >> 8), static_cast<char>(pair)};
            ASSERT_EQ(Upper(two, record), Upper(two, &copy)) << record->CharSetName << pair;
            all += Upper(two, &copy) == two ? "" : two;
        }
        for (unsigned round = 0; round < 3000; ++round) {
            std::string a;
            while (a.size() < round % 150)
                a += random() % 8 ? all.substr(random() % all.size(), 2) : "\xC2";
            std::string b = random() % 2 ? Upper(a, &copy) : a;
            b.resize(random() % 2 ? b.size() : random() % 150, b.c_str()[0]);
            const int limit = random() % 2 ? kNoLimit : static_cast<int>(random() % 99);
            ASSERT_EQ(Upper(a, record), Upper(a, &copy));
            ASSERT_EQ(Order(a, b, limit, record), Order(a, b, limit, &copy));
        }
    }
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
    static uint32_t next; // what is free in it
    const auto allocate = [](char *, uint32_t size) { return std::exchange(next, next + size); };
    for (const std::string upper : {"I", "O"}) { // in the same place
        home.Write("toupper/6.s", "T C x\na=" + upper);
        home.Remove("toupper/6.b");
        str_FreeWkArea();
        str_ReadStrToWkArea(0, nullptr);
        uint32_t records = next = 4;
        int32_t count = 0;
        str_CopyWorkAreaToSMem(allocate, segment, &records, &count);
        str_AttachSMem(records, count, segment);
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
