// SPDX-License-Identifier: Apache-2.0
//
// Truncation, splitting, joining, search and width beside slow ones, which go unit by unit.

#include "tests/support/samples.h"

#include <glib.h>

namespace
{

constexpr uint16_t kAscii = 6, kUtf8 = 196;

uint32_t FlagsOf(const CSDescriptor &cs) { return ccs_GetCSFlags(&cs); }

// What a text says: its bytes by kind, however many segments and escapes they are spread over.
using Content = std::vector<std::pair<uint16_t, std::string>>;

Content ContentOf(const CSDescriptor &cs, const std::string &text, Content content = {})
{
    int count = 0;
    const CSSegment *segment = ccs_GetRealStrs(&cs, text.c_str(), -1, &count);
    for (; segment->kind != CS_SEG_END; ++segment) {
        if (content.empty() || content.back().first != segment->kind)
            content.emplace_back(segment->kind, "");
        content.back().second.append(segment->text, segment->length);
    }
    return content;
}

// What no cut divides: a sequence, a character with the single shift before it, a byte of no set.
struct Unit {
    unsigned int start, end;
    uint16_t kind;
    int bytes; // that a split counts
};

struct Text {
    CSDescriptor cs;
    std::string whole;
    Guarded guarded{whole};
    const char *text = guarded.c_str();
    unsigned int size = static_cast<unsigned int>(whole.size()), width = 0;
    bool isPlain = (FlagsOf(cs) & (CS_FLAG_BYTE | CS_FLAG_T61)) == CS_FLAG_BYTE;
    bool isGood = true; // bad text may read otherwise when a malformed sequence is cut
    std::vector<Unit> units = {};

    void AddUnits(const CSSegment &segment, unsigned int at)
    {
        const CSDescriptor segCs = {segment.kind, cs.escMode};
        const bool isRaw = segment.kind == CS_SEG_RAW, isIgnored = segment.kind == CS_SEG_IGNORE;
        isGood = isGood && !(isIgnored && segment.length == 1 && (text[at] & 0x7F) >= 0x1B);
        for (unsigned int start = at, end = at + segment.length; at < end;) {
            const char byte = text[at];
            int length = isRaw ? 1 : static_cast<int>(end - at);
            const bool isUnit =
                isRaw || isIgnored || ccs_GetNextCharLen(text + at, length, &length, &segCs) != 0;
            at += static_cast<unsigned int>(length);
            if (!isUnit && at < end)
                continue; // a single shift
            const bool hasWidth = isRaw || (!isIgnored && (byte & 0x60) != 0 && byte != 0x7F);
            const bool isCounted = hasWidth || (!isIgnored && byte == '\n');
            width += hasWidth;
            units.push_back({start, at, segment.kind, isCounted ? length : 0});
            start = at;
        }
    }

    unsigned int Kept(unsigned int n) const
    {
        unsigned int kept = isPlain ? n : 0;
        for (const Unit &unit : units)
            kept = unit.end <= n ? std::max(kept, unit.end) : kept;
        return kept;
    }

    unsigned int SplitPoint(int mode, int limit) const
    {
        int used = 0;
        for (const Unit &unit : units) {
            const int takes = unit.bytes == 0 || mode == 1 ? unit.bytes : 1;
            if (takes > limit - used)
                return used == 0 ? 0 : unit.start;
            used += takes;
            if (takes != 0 && used == limit)
                return unit.end;
        }
        return used == 0 ? 0 : size;
    }

    const char *Find(int ch) const
    {
        if (cs.escMode == 0)
            return std::strchr(text, ch);
        for (const Unit &unit : units)
            for (const char *at = text + unit.start; at < text + unit.end; ++at)
                if (*at == ch && unit.kind < CS_SEG_IGNORE &&
                    (unit.kind == kAscii || (FlagsOf(cs) & CS_FLAG_BYTE) != 0))
                    return at;
        return nullptr;
    }

    // The kind of the last unit, which is at or after `start`; CS_SEG_END if it begins before that.
    static uint16_t LastKind(const CSDescriptor &cs, const std::string &bytes, size_t start)
    {
        Text all{cs, bytes};
        all.Divide();
        return all.units.back().start < start ? uint16_t{CS_SEG_END} : all.units.back().kind;
    }

    // The longest start of whole units that fits with what closes it, and may go on with a letter.
    std::string Closed(unsigned int n) const
    {
        for (auto unit = units.rbegin(); unit != units.rend(); ++unit) {
            const auto end = static_cast<int>(unit->end);
            unsigned int segment;
            int length = 0, at = 0;
            for (auto *next = ccs_Get1stStr; next(&cs, text + at, end - at, &segment) != CS_SEG_END;
                 next = ccs_GetNextStr)
                at += static_cast<int>(segment);
            const char *const escapes = ccs_GetConfAsciiEscs(&cs, cs.escMode, &length);
            if (unit->end + static_cast<unsigned int>(length) > n)
                continue;
            const std::string kept = whole.substr(0, unit->end),
                              closed = kept + std::string(escapes, escapes + length);
            if (LastKind(cs, kept + "N", kept.size()) != CS_SEG_END &&
                LastKind(cs, closed + "N", 0) == LastKind(cs, "N", 0))
                return closed;
        }
        return "";
    }

    void CheckTruncation(unsigned int n) const
    {
        const Guarded closed(n);
        std::string all =
            cs.escMode == 0 && isPlain ? whole.substr(0, Kept(std::min(n, size))) : Closed(n);
        ASSERT_EQ(str_truncateclosed(closed.data(), text, n, &cs), all.size());
        all.resize(n);
        ASSERT_EQ(std::string(closed.data(), n), all);

        const Guarded room(n), copy(n + 1);
        unsigned int kept = 4711;
        std::string expected = whole.substr(0, Kept(n));
        expected.resize(n);
        ASSERT_EQ(str_truncstrlen(text, n, &cs), Kept(n));
        ASSERT_EQ(std::string(str_truncate(room.data(), text, n, &cs, &kept), n), expected);
        ASSERT_EQ(kept, Kept(n));
        if (cs.csNum == kUtf8)
            return; // of which the copies read no more than n bytes
        ASSERT_EQ(std::string(str_strlcpy(copy.data(), text, n + 1, &cs), n + 1), expected + '\0');
    }

    void CheckSplit(int mode, int limit) const
    {
        ASSERT_EQ(str_FindSplitPoint(text, mode, limit, &cs), int64_t{SplitPoint(mode, limit)});
        const bool everyByteCounts = isPlain && cs.escMode == 0;
        const auto most = static_cast<unsigned int>(std::max(limit, 0));
        const auto expected = everyByteCounts ? std::min(most, size) : SplitPoint(mode, limit);
        char *second = nullptr;
        unsigned int firstLen = 4711, secondLen = 4711;
        const auto split = mode == 1 ? str_SplitByDispBytes : str_SplitByDispLen;
        const char *first = split(text, limit, &second, &firstLen, &secondLen, &cs);
        const std::string front = first == nullptr ? "" : first,
                          back = second == nullptr ? "" : second;
        ASSERT_EQ(front, whole.substr(0, expected));
        ASSERT_TRUE(firstLen == expected && secondLen == back.size());
        ASSERT_EQ(first == nullptr, expected == 0);
        ASSERT_EQ(second == nullptr, expected == 0 || expected == size);
        ASSERT_TRUE(!isGood || expected == 0 ||
                    ContentOf(cs, back, ContentOf(cs, front)) == ContentOf(cs, whole));
    }

    void Divide()
    {
        int count = 0;
        const CSSegment *segment = ccs_GetAllStrs(&cs, text, -1, &count);
        for (unsigned int at = 0; segment->kind != CS_SEG_END; at += segment++->length)
            AddUnits(*segment, at);
    }

    void Check()
    {
        Divide();
        for (const unsigned int most : {UINT_MAX, unsigned{INT_MAX}})
            ASSERT_EQ(str_truncstrlen(text, most, &cs), Kept(most));
        const unsigned int columns = isPlain && cs.escMode == 0 ? size : width;
        ASSERT_TRUE(cs.csNum == kUtf8 || str_dispstrlen(text, &cs) == columns);
        for (unsigned int n = 0; n <= size + 3; ++n) {
            CheckTruncation(n);
            for (const int mode : {0, 1}) {
                CheckSplit(mode, n > size + 2 ? INT_MAX : static_cast<int>(n) - 1);
                const int ch = static_cast<signed char>(text[n % (size + 1)]) + 256 * mode;
                ASSERT_EQ(str_strchr(text, ch, &cs), Find(ch));
            }
        }
    }
};

TEST(Cut, IsThatOfASlowOne)
{
    std::mt19937 random(TestSeed());
    for (size_t round = 0; round < 1000 && !HasFatalFailure(); ++round) {
        const Sample &sample = kSamples[round % std::size(kSamples)];
        CSDescriptor cs = DescriptorOf(sample.set);
        if (round % 2 == 1)
            cs.escMode = random() % 2;
        const auto text = round % 4 == 0 ? std::string(sample.bytes) : RandomText(random, 12);
        SCOPED_TRACE(sample.set + testing::PrintToString(text) + std::to_string(cs.escMode));
        Text{cs, text.c_str()}.Check(); // up to a NUL
    }
}

TEST(Cut, BeginsTheOldestSetsWithThreeBytes)
{
    const CSDescriptor cs = DescriptorOf("ISO-2022-JP");
    for (const std::string text : {"\x1B$@F|F|", "\x1B$AF|F|", "\x1B$BF|F|"}) {
        char *second = nullptr;
        unsigned int firstLen, secondLen;
        str_SplitByDispLen(text.c_str(), 1, &second, &firstLen, &secondLen, &cs);
        EXPECT_EQ(second, text.substr(0, 5));
    }
}

void CheckJoin(const CSDescriptor &cs, const std::string &first, const std::string &second)
{
    const Content front = ContentOf(cs, first), back = ContentOf(cs, second);
    const uint16_t last = front.empty() ? uint16_t{CS_SEG_RAW} : front.back().first;
    const bool switches = (FlagsOf(cs) & CS_FLAG_ESCAPES) != 0;
    int length = 4711;
    const char *const escapes = str_GetEscapes(first.c_str(), second.c_str(), &cs, &length);
    ASSERT_EQ(escapes != nullptr, switches && last < CS_SEG_IGNORE && last != kAscii &&
                                      !back.empty() && back.front().first == kAscii);
    const std::string between = escapes == nullptr ? "" : escapes;
    ASSERT_EQ(length, switches ? static_cast<int>(between.size()) : 4711);
    const std::string segments = SegmentsOf(cs, first.c_str());
    const bool endsEscape = segments[segments.rfind(' ') + 1] == '-';
    const bool isNoticed = last != CS_SEG_RAW && (!endsEscape || last != kAscii);
    ASSERT_TRUE(!isNoticed ||
                ContentOf(cs, second, front) == ContentOf(cs, first + between + second));
}

TEST(Concat, ReadsAsItsParts)
{
    for (const Sample &front : kSamples)
        for (const Sample &back : kSamples)
            for (unsigned int n = 0; n <= front.bytes.size(); ++n) {
                const CSDescriptor cs = DescriptorOf(front.set);
                const unsigned int kept = str_truncstrlen(front.bytes.data(), n, &cs);
                const std::string first(front.bytes.substr(0, kept)), second(back.bytes);
                SCOPED_TRACE(front.set + testing::PrintToString(first + "|" + second));
                CheckJoin(cs, first + "\xFF", second); // of no set, in most
                if (cs.csNum == DescriptorOf(back.set).csNum)
                    CheckJoin(cs, first, second);
            }
}

bool BeginsCharacter(const std::string &bytes)
{
    const auto ends = {"\x80", "\xBF", "\x80\x80", "\xBF\x80", "\x80\x80\x80", "\xBF\x80\x80"};
    return std::any_of(ends.begin(), ends.end(), [&](const std::string &end) {
        const std::string all = bytes + end;
        return g_utf8_validate(all.c_str(), -1, nullptr) && g_utf8_strlen(all.c_str(), -1) == 1;
    });
}

// How many characters are in the bytes, of which the last may go on after them, and their bytes.
std::pair<int, size_t> Characters(const std::string &bytes, bool mayGoOn)
{
    int count = 0;
    size_t at = 0;
    for (; at < bytes.size() && !(mayGoOn && BeginsCharacter(bytes.substr(at))); ++count) {
        const gunichar c = g_utf8_get_char_validated(bytes.c_str() + at, -1);
        at += c < 0x80000000 ? static_cast<size_t>(g_unichar_to_utf8(c, nullptr)) : 1;
    }
    return {count, at};
}

TEST(Utf8, IsCutAndCountedByCharacters)
{
    const CSDescriptor cs = DescriptorOf("UTF8");
    const auto pieces =
        "0123456789a\n\x7F\x1B\u00E9\u65E5\U0010FFFF\x80\x8F\x90\x9F\xA0\xBF\xC1\xC2"
        "\xE0\xED\xEF\xF0\xF4\xF5\xF8"s;
    std::mt19937 random(TestSeed());
    for (int round = 0; round < 1500 && !HasFailure(); ++round) {
        std::string text;
        for (auto left = random() % 12; left > 0; --left)
            text += pieces.substr(random() % pieces.size(), 1 + random() % 4);
        SCOPED_TRACE(testing::PrintToString(text));
        const Guarded whole(text);
        const auto escapes = static_cast<int>(std::count(text.begin(), text.end(), '\x1B'));
        const int all = Characters(text, false).first;
        EXPECT_EQ(str_dispstrlen(whole.c_str(), &cs), all);
        EXPECT_EQ(str_utf8DispStrLen(whole.c_str(), -1, 0), all - escapes);
        for (unsigned int n = 0; n <= text.size() + 3; ++n) {
            const size_t read = std::min<size_t>(n, text.size() + 1);
            const Guarded front(read), copy(n);
            std::memcpy(front.data(), whole.c_str(), read);
            const auto [count, bytes] = Characters(text.substr(0, n), n <= text.size());
            std::string kept = text.substr(0, bytes);
            kept.resize(n);
            str_strncpy(copy.data(), front.data(), n, &cs);
            EXPECT_EQ(std::string(copy.data(), n), kept) << n;
            const int limit = static_cast<int>(n);
            EXPECT_EQ(str_utf8DispStrLen(front.data(), limit, 1), count) << n;
            EXPECT_EQ(str_utf8DispStrLen(whole.c_str(), limit, 0), count - escapes) << n;
        }
    }
}

TEST(Segments, EndAtTheNul)
{
    const CSDescriptor cs = {87, 1};
    for (const std::string bytes : {"\x46\x7C\x46\x7C", "\x46\x7C\x46", ""})
        for (const unsigned int beyond : {0U, 1U, UINT_MAX / 2}) {
            const Guarded guarded(bytes);
            const char *const text = guarded.c_str();
            const auto size = static_cast<unsigned int>(bytes.size()), most = size + beyond;
            const int characters = static_cast<int>(size + 1) / 2;
            int used, usedBytes;
            str_CountSSDispChars(text, most, 99, &used, &cs);
            str_CountSSDispBytes(text, most, 99, &usedBytes, &cs);
            EXPECT_EQ(str_FindTruncPt(text, most, &cs), size / 2 * 2);
            EXPECT_EQ(str_GetDispLen(text, most, &cs), characters);
            EXPECT_TRUE(used == characters && usedBytes == 2 * characters);
            EXPECT_EQ(str_dostrchr(text, 0, most), beyond == 0 ? nullptr : text + size);
        }
    char room[] = "abc";
    EXPECT_STREQ(str_strlcpy(room, nullptr, 0, nullptr), "abc");
    EXPECT_STREQ(str_strlcpy(room, nullptr, 3, nullptr), "");
}

} // namespace
