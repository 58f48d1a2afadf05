// SPDX-License-Identifier: Apache-2.0
//
// The table of sets and the ISO 2022 engine: samples of every set beside iconv, and random text,
// which is often bad or cut off, beside a slow reader.
#include "tests/support/samples.h"

using namespace libstr;

namespace
{

// What the characters of one kind, and the controls between them, are by themselves.
std::u32string ReadAlone(uint16_t kind, const std::string &bytes)
{
    const ccs::Row &set = ccs::kRows[ccs::FindRow(kind)];
    const CSDescriptor cs = {kind, 1};
    std::u32string text;
    int length = 0;
    for (size_t at = 0; at < bytes.size(); at += static_cast<size_t>(length)) {
        const int avail = static_cast<int>(bytes.size() - at);
        if (ccs_GetNextCharLen(bytes.data() + at, avail, &length, &cs) == 0)
            continue; // a single shift
        std::string code = bytes.substr(at, static_cast<size_t>(length));
        const char32_t first = static_cast<unsigned char>(code[0]);
        for (char &byte : code)
            byte = static_cast<char>(static_cast<unsigned char>(byte) | set.reading.bits);
        if ((first & 0x7F) <= 0x20 || first == 0x7F)
            text += first; // which has one meaning in all sets
        else
            text += Decode(set.iconv == nullptr ? set.reading.code : set.iconv,
                           set.reading.before + code)
                        .value_or(U"(unreadable)");
    }
    return text;
}

// Up to every boundary that we see, iconv reads as many characters; and the segment alone, as text
// of its own kind, reads as what it adds to the whole.
TEST(SampleText, DividesAndMeasuresAsIconvReads)
{
    for (const Sample &sample : kSamples) {
        const Guarded text(sample.bytes);
        const CSDescriptor cs = DescriptorOf(sample.set);
        // With escapes allowed, text without any reads the same.
        for (const CSDescriptor &either : {cs, CSDescriptor{cs.csNum, 1}}) {
            EXPECT_EQ(SegmentsOf(either, text.c_str()), sample.segments) << sample.set;
            EXPECT_EQ(str_dispstrlen(text.c_str(), &either), sample.columns) << sample.set;
        }
        const char *const iconvName = IconvNameOf(sample);
        int count = 0;
        const CSSegment *list = ccs_GetAllStrs(&cs, sample.bytes.data(), -1, &count);
        std::u32string read;
        for (size_t end = 0; iconvName != nullptr && list->kind != CS_SEG_END; ++list) {
            end += list->length;
            if (list->kind != CS_SEG_IGNORE)
                read += ReadAlone(list->kind, {list->text, list->length});
            EXPECT_TRUE(read == Decode(iconvName, sample.bytes.substr(0, end)))
                << testing::PrintToString(sample.bytes) << " to byte " << end;
        }
    }
}

TEST(SetTable, EverySetHasASampleAndConsistentData)
{
    const CSDescriptor none = {0, 0};
    EXPECT_STREQ(ccs_GetCSName(&none), "");
    ccs_SetInfo info;
    for (int i = 0; ccs_GetSetInfo(i, &info) != 0; ++i) {
        SCOPED_TRACE(info.name);
        const auto isOfSet = [&](const Sample &sample) {
            return sample.set == std::string(info.name);
        };
        EXPECT_TRUE((info.flags & CS_FLAG_BYTE) != 0 ||
                    std::any_of(std::begin(kSamples), std::end(kSamples), isOfSet));
        const CSDescriptor cs = {info.number, 0};
        EXPECT_STREQ(ccs_GetCSName(&cs), info.name);
        // Plain byte operations are for sets of one byte a character alone.
        EXPECT_TRUE((info.flags & CS_FLAG_BYTE) == 0 || ccs_GetNumBytes(&cs) == 1);
        if (info.designation == nullptr)
            continue;
        // A designation leads to the set that it is of.
        const std::string text =
            info.designation + (info.designation[1] == '-' ? "\x0E~~"s : "~~"s);
        const std::string segments = SegmentsOf(CSDescriptor{6, 1}, text.c_str());
        const std::string kind = segments.substr(segments.rfind(' ') + 1);
        EXPECT_TRUE(kind == Notation(info.number, 2) || kind == "?x2" ||
                    kind == Notation(static_cast<uint16_t>(1000 + info.number), 2))
            << segments;
    }
}

// Sets share characters of one byte alone.
TEST(SetTable, SetsAreEquivalentOnlyWhereTheirBytesMeanTheSame)
{
    for (const ccs::Row &set1 : ccs::kRows)
        for (const ccs::Row &set2 : ccs::kRows)
            for (int byte = 0x21; byte <= 0xFF; ++byte) {
                const std::string code(1, static_cast<char>(byte));
                const char *const text = code.c_str();
                const CSDescriptor cs1 = {set1.number, set1.escMode},
                                   cs2 = {set2.number, set2.escMode};
                unsigned int size;
                const uint16_t kind = ccs_Get1stStr(&cs1, text, -1, &size);
                const bool areEqual =
                    str_DoCompareByByteLen(text, text, 1, 1, 0, &cs1, &cs2) == 0 ||
                    (byte < 0x80 && str_EquivTypes(set1.number, set2.number) != 0);
                EXPECT_TRUE(!areEqual || kind == CS_SEG_RAW ||
                            ReadAlone(set1.number, code) == ReadAlone(set2.number, code))
                    << set1.name << " " << set2.name << " " << byte;
            }
}

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

// What they say of a part of the text holds when more of it is there; 0 says that they need more.
TEST(Engine, LengthServicesNeverCutAUnit)
{
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 40000; ++round) {
        ccs_SetInfo set = {};
        set.number = 4711; // now and then, which is no set's
        ccs_GetSetInfo(static_cast<int>(random() % (std::size(ccs::kSets) + 1)), &set);
        const CSDescriptor cs = {set.number, 1};
        const std::string bytes = RandomText(random, 4).c_str(); // up to a NUL
        SCOPED_TRACE(std::to_string(set.number) + testing::PrintToString(bytes));
        const Guarded text(bytes);
        const auto size = static_cast<int>(bytes.size());
        const auto service = (*text.c_str() & 0x60) == 0 ? ccs_GetCtrlLen : ccs_GetT61BaseUnitLen;
        for (int known = 0, avail = 0; avail <= size + 2; ++avail) {
            const int length = service(text.c_str(), static_cast<unsigned int>(avail), &cs);
            ASSERT_TRUE(length >= 0 && length <= std::min(avail, size));
            ASSERT_TRUE(known == 0 || length == known) << avail;
            known = length;
            int next = 4711;
            const bool counts = ccs_GetNextCharLen(text.c_str(), avail, &next, &cs) != 0;
            ASSERT_TRUE(next <= avail && (next > 0 || (!counts && std::min(avail, size) == 0)));
        }
    }
}

} // namespace
