// SPDX-License-Identifier: Apache-2.0
//
// Comparison over segments of every sort, beside a slow one that goes character by character, and
// which of the two, the C library or the engines, the entry points call.
#include "tests/scripted/ccs.h"
#include "tests/scripted/files.h"
#include "tests/support/casetable.h"
#include "tests/support/guarded.h"

#include <platform/er.h>
#include <str/compare.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <deque>
#include <random>
#include <tuple>

namespace
{

using scripted::script;
using scripted::Segment;

// ---- The sets ------------------------------------------------------------------------------

constexpr uint16_t kAscii = 6, kLatin = 100, kGreek = 126, kKana = 13, kKanji = 87, kOther = 58;
constexpr uint16_t kSkipped = 0x8000;

using Rules = std::map<std::string, std::string>;
// clang-format off
const std::map<uint16_t, Rules> kRules = {
    {kAscii, {{"a", "A"}, {"b", "B"}}}, // c has no upper case here
    {kLatin, {{"a", "A"}, {"b", "B"}, {"c", "C"}, {"\xE9", "\xC9"}, {"\xDF", "SS"}, {"\xD0", "\xC2" "A"},
              {"\xC2" "a", "\xC2" "A"}, {"\xC2" "A", "\xC2" "A"}, {"\xC2" "d", "A"},
              {"\xC2" "b", "\xC2" "B"}, {"\xC2" "B", "\xC2" "B"}}},
    {kKanji, {{"\xB0\xA2", "\xB0\xA1"}, {"\xB0\xA1", "\xB0\xA1"}}},
};
const std::map<uint16_t, std::vector<std::string>> kCharacters = {
    {kAscii, {"a", "A", "b", "B", "c", "C", "\x05", "\x06", "\x07"}},
    {kLatin, {"a", "A", "b", "B", "c", "C", "\xE9", "\xC9", "\xDF", "S", "\xD0", "\xC2" "a", "\xC2" "A", "\xC2" "b", "\xC2" "B", "\xC2" "d", "\xC2", "\x05", "\x07"}},
    {kGreek, {"a", "A", "\xE9"}}, {kKana, {"a", "\xB1"}},
    {kKanji, {"\xB0\xA1", "\xB0\xA2", "\xB1\xA1"}}, {kOther, {"\xB0\xA1"}}, {CS_SEG_RAW, {"a", "\xFE"}},
};
// clang-format on
const uint16_t kKinds[] = {kAscii, kLatin, kGreek, kKana, kKanji, kOther, CS_SEG_RAW};

// Bell is a shift that does not count; two other controls have lengths that cannot be.
bool UnitAt(const char *at, int avail, int *length)
{
    *length = *at == 5 ? 99 : *at == 6 ? 0 : (*at & '\xF0') == '\xB0' && avail > 1 ? 2 : 1;
    return *at != 7;
}

class ScriptedComparison : public CaseTableTest
{
  protected:
    ScriptedComparison()
    {
        script = {};
        scripted::files = {};
        script.flags = {{kAscii, CS_FLAG_BYTE | CS_FLAG_ASCII | CS_FLAG_CASE},
                        {kLatin, CS_FLAG_BYTE | CS_FLAG_ASCII_SUPERSET | CS_FLAG_CASE},
                        {kGreek, CS_FLAG_BYTE | CS_FLAG_ASCII_SUPERSET},
                        {kKana, CS_FLAG_BYTE},
                        {kKanji, CS_FLAG_CASE},
                        {kOther, CS_FLAG_CASE}}; // which there is no table for
        script.designations = {{kLatin, "\x1B-A"},
                               {kGreek, "\x1B-A"},
                               {kKana, "\x1B)\xC9"},
                               {kKanji, "\x1B$B"},
                               {kOther, ""}};
        script.unit = UnitAt;
        uint16_t number = 0;
        for (const auto &[kind, rules] : kRules) {
            std::string source = "T C test";
            for (const auto &[from, to] : rules)
                source += "\n" + from + "=" + to;
            home.Write("toupper/" + std::to_string(kind) + ".s", source);
            const CSDescriptor cs = {kind, 0};
            EXPECT_NE(str_InitCaseTables(&cs), nullptr) << logged;
            script.upperTables[kind] = ++number;
        }
    }
    ~ScriptedComparison() override { script = {}; }
};

// ---- The slow comparison -------------------------------------------------------------------

struct Character {
    uint16_t kind;
    std::string bytes;
};
struct Cut {
    std::string bytes;
    std::vector<Segment> segments;
};
using Runs = std::deque<Character>; // the segments that take part

Runs RunsOf(const Cut &text, size_t limit)
{
    Runs runs;
    size_t at = 0;
    for (const Segment &segment : text.segments) {
        const size_t end = std::min(at + segment.length, limit);
        if (static_cast<int16_t>(segment.kind) > 0 || segment.kind == CS_SEG_RAW)
            if (at < end)
                runs.push_back({segment.kind, text.bytes.substr(at, end - at)});
        at += segment.length;
    }
    return runs;
}

std::string Take(Runs *runs, size_t length)
{
    const std::string taken = runs->front().bytes.substr(0, length);
    runs->front().bytes.erase(0, length);
    if (runs->front().bytes.empty())
        runs->pop_front();
    return taken;
}

std::vector<int> TakeUpper(Runs *runs, const Rules &rules)
{
    const std::string &bytes = runs->front().bytes;
    const size_t length =
        !rules.contains(bytes.substr(0, 1)) && rules.contains(bytes.substr(0, 2)) ? 2 : 1;
    const std::string taken = Take(runs, length);
    const std::string upper = rules.contains(taken) ? rules.at(taken) : taken;
    std::vector<int> value = {static_cast<signed char>(upper[0])};
    if (upper.size() == 2)
        value = {value[0] * 256 + static_cast<signed char>(upper[1]), 2};
    return value;
}

bool Has(uint16_t kind, uint32_t flag) { return (script.flags[kind] & flag) != 0; }

uint16_t Common(uint16_t kind1, uint16_t kind2)
{
    const bool raw = kind1 == CS_SEG_RAW || kind2 == CS_SEG_RAW;
    if (kind1 == kind2)
        return kind1;
    if (!raw && Has(kind1, CS_FLAG_ASCII) && Has(kind2, CS_FLAG_ASCII_SUPERSET))
        return kind2;
    if (!raw && Has(kind2, CS_FLAG_ASCII) && Has(kind1, CS_FLAG_ASCII_SUPERSET))
        return kind1;
    return CS_SEG_NONE;
}

auto Rank(uint16_t kind)
{
    const std::string designation =
        script.designations.contains(kind) ? script.designations[kind] : "";
    const int last = designation.empty() ? 0 : static_cast<signed char>(designation.back());
    return std::tuple(!Has(kind, CS_FLAG_BYTE), last, static_cast<int16_t>(kind));
}

constexpr unsigned int kNoLimit = UINT_MAX;

// The order of the two, 0 for equal.  `chars` is a limit where characters are counted.
int Slow(Runs a, Runs b, bool caseless, bool counts, unsigned int chars)
{
    const bool limited = counts && chars <= INT_MAX;
    for (unsigned int done = 0; !limited || done < chars;) {
        if (a.empty() && b.empty())
            return limited ? 1 : 0;
        if (a.empty() || b.empty())
            return a.empty() ? -1 : 1;
        const uint16_t kind1 = a.front().kind, kind2 = b.front().kind;
        const uint16_t common = Common(kind1, kind2);
        if (common == CS_SEG_NONE)
            return Rank(kind1) < Rank(kind2) ? -1 : 1;
        if (caseless && kRules.contains(common)) {
            const auto upper1 = TakeUpper(&a, kRules.at(common));
            const auto upper2 = TakeUpper(&b, kRules.at(common));
            if (upper1 != upper2)
                return upper1 < upper2 ? -1 : 1;
            ++done;
            continue;
        }
        const size_t avail = std::min(a.front().bytes.size(), b.front().bytes.size());
        int length = 1;
        if (!counts || UnitAt(a.front().bytes.c_str(), static_cast<int>(avail), &length))
            ++done;
        const size_t size = std::clamp<size_t>(static_cast<size_t>(length), 1, avail);
        const int order = Take(&a, size).compare(Take(&b, size));
        if (order != 0)
            return order;
    }
    return 0;
}

// What the engines do before they begin.
int Slow(const Cut &a, const Cut &b, bool caseless, bool counts = false,
         unsigned int chars = kNoLimit, unsigned int bytes1 = kNoLimit,
         unsigned int bytes2 = kNoLimit)
{
    const bool isEmpty1 = a.bytes.empty(), isEmpty2 = b.bytes.empty();
    if ((isEmpty1 && isEmpty2) || (bytes1 == 0 && bytes2 == 0) || chars == 0)
        return 0;
    if (isEmpty1 || isEmpty2 || bytes1 == 0 || bytes2 == 0)
        return isEmpty1 ? -1 : 1;
    if ((a.bytes.size() < bytes1 && bytes1 <= INT_MAX) ||
        (b.bytes.size() < bytes2 && bytes2 <= INT_MAX))
        return 1;
    return Slow(RunsOf(a, bytes1), RunsOf(b, bytes2), caseless, counts, chars);
}

// ---- Random texts --------------------------------------------------------------------------

std::mt19937 theRandom(20'040);

bool OneIn(unsigned int n) { return theRandom() % n == 0; }

Character RandomCharacter(uint16_t kind)
{
    const auto &all = kCharacters.at(kind);
    return {kind, all[theRandom() % all.size()]};
}

std::vector<Character> RandomCharacters()
{
    const bool isLong = OneIn(12);
    const size_t count = isLong ? 100 + theRandom() % 200 : theRandom() % 7;
    std::vector<Character> characters;
    uint16_t kind = kLatin;
    while (characters.size() < count) {
        if (OneIn(isLong ? 80 : 4))
            kind = kKinds[theRandom() % std::size(kKinds)];
        characters.push_back(RandomCharacter(kind));
    }
    return characters;
}

// Much the same: other case, ASCII in another set that holds it, and seldom another character.
std::vector<Character> Varied(std::vector<Character> characters)
{
    const unsigned int seldom =
        OneIn(3) ? UINT_MAX : static_cast<unsigned int>(1 + characters.size());
    for (Character &character : characters) {
        if (OneIn(3) && kRules.contains(character.kind)) {
            const Character other = RandomCharacter(character.kind);
            Runs one = {character}, another = {other};
            const Rules &rules = kRules.at(character.kind);
            if (TakeUpper(&one, rules) == TakeUpper(&another, rules))
                character = other;
        }
        const bool isLetter = character.bytes.size() == 1 && isalpha(character.bytes[0]) != 0;
        if (isLetter && character.bytes != "S" &&
            (character.kind == kAscii || character.kind == kLatin))
            character.kind = OneIn(4) ? kAscii : character.kind;
        if (OneIn(seldom))
            character = RandomCharacter(kKinds[theRandom() % std::size(kKinds)]);
    }
    return characters;
}

Cut InSegments(const std::vector<Character> &characters)
{
    Cut text;
    for (const Character &character : characters) {
        const unsigned int often = characters.size() > 99 ? 50 : 4;
        if (OneIn(often)) {
            const uint16_t ignored[] = {CS_SEG_NONE, CS_SEG_IGNORE, kSkipped};
            text.bytes += "\x1B(B";
            text.segments.push_back({ignored[theRandom() % 3], 3});
        }
        if (OneIn(often) || text.segments.empty() || text.segments.back().kind != character.kind)
            text.segments.push_back({character.kind, 0});
        text.segments.back().length += static_cast<unsigned int>(character.bytes.size());
        text.bytes += character.bytes;
    }
    return text;
}

unsigned int RandomLimit(size_t length)
{
    const unsigned int beyond[] = {INT_MAX, INT_MAX + 1U, UINT_MAX};
    return OneIn(6) ? beyond[theRandom() % 3]
                    : static_cast<unsigned int>(theRandom() % (length + 3));
}

int Sign(int order) { return (order > 0) - (order < 0); }

TEST_F(ScriptedComparison, EveryEngineAgreesWithASlowOne)
{
    const CSDescriptor cs = {kLatin, 1};
    script.names[kGreek] = "UTF"; // is not UTF8
    int equal = 0, rounds = 0;
    for (; rounds < 12'000 && !HasFailure(); ++rounds) {
        const auto characters = RandomCharacters();
        Cut text1 = InSegments(characters), text2 = InSegments(Varied(characters));
        const Guarded guarded1(text1.bytes), guarded2(text2.bytes);
        const char *s1 = guarded1.c_str(), *s2 = guarded2.c_str();
        script.endsLists = !OneIn(4);
        script.segmentsOf = {{s1, text1.segments}, {s2, text2.segments}};
        const unsigned int chars = RandomLimit(text1.bytes.size());
        unsigned int bytes1 = RandomLimit(text1.bytes.size());
        unsigned int bytes2 = OneIn(3) ? RandomLimit(text2.bytes.size()) : bytes1;
        for (const bool caseless : {false, true, false, true}) {
            SCOPED_TRACE(testing::PrintToString(
                std::tuple(text1.bytes, text2.bytes, caseless, chars, bytes1, bytes2)));
            const int order = Slow(text1, text2, caseless);
            equal += order == 0 ? 1 : 0;
            EXPECT_EQ(str_DoCompareToEnd(s1, s2, caseless, &cs, &cs), order != 0);
            EXPECT_EQ(Sign(str_cmpTextStr(s1, s2, caseless, &cs, &cs)), Sign(order));
            EXPECT_EQ(str_DoCompareByByteLen(s1, s2, bytes1, bytes2, caseless, &cs, &cs),
                      Slow(text1, text2, caseless, false, kNoLimit, bytes1, bytes2) != 0);
            EXPECT_EQ(str_DoCompareByCharLen(s1, s2, chars, caseless, &cs, &cs),
                      Slow(text1, text2, caseless, true, chars) != 0);
            if (caseless) { // now the other way round
                std::swap(s1, s2);
                std::swap(text1, text2);
                std::swap(bytes1, bytes2);
            }
        }
    }
    EXPECT_GT(equal, rounds / 2);
    EXPECT_LT(equal, rounds * 3);
}

// ---- The entry points ----------------------------------------------------------------------

struct Entry {
    const char *name; // as traced
    int (*one)(const char *, const char *, unsigned int, unsigned int, const CSDescriptor *);
    int (*two)(const char *, const char *, unsigned int, unsigned int, const CSDescriptor *,
               const CSDescriptor *);
    int (*plain)(const char *, const char *, unsigned int); // null: always an engine
    int (*engine)(const char *, const char *, unsigned int, unsigned int, const CSDescriptor *,
                  const CSDescriptor *);
};
// clang-format off
#define ONE(call) [](auto a, auto b, [[maybe_unused]] unsigned m, [[maybe_unused]] unsigned n, auto cs) { return call; }
#define TWO(call) [](auto a, auto b, [[maybe_unused]] unsigned m, [[maybe_unused]] unsigned n, auto cs1, auto cs2) { return call; }
const Entry kEntries[] = {
    {"str_strcmp3", ONE(str_strcmp(a, b, cs)), TWO(str_strcmp3(a, b, cs1, cs2)),
     [](auto a, auto b, unsigned) { return std::strcmp(a, b); }, TWO(str_DoCompareToEnd(a, b, 0, cs1, cs2))},
    {"str_strnccmp3", ONE(str_strncmp(a, b, m, cs)), TWO(str_strnccmp3(a, b, m, cs1, cs2)),
     [](auto a, auto b, unsigned m) { return std::strncmp(a, b, m); }, TWO(str_DoCompareByCharLen(a, b, m, 0, cs1, cs2))},
    {"str_strnbcmp3", ONE(str_strncmp2(a, b, m, n, cs)), TWO(str_strnbcmp3(a, b, m, n, cs1, cs2)),
     [](auto a, auto b, unsigned m) { return std::strncmp(a, b, m); }, TWO(str_DoCompareByByteLen(a, b, m, n, 0, cs1, cs2))},
    {"str_strucasecmp3", ONE(str_strucasecmp(a, b, cs)), TWO(str_strucasecmp3(a, b, cs1, cs2)),
     nullptr, TWO(str_DoCompareToEnd(a, b, 1, cs1, cs2))},
    {"str_strucasenccmp3", ONE(str_strucasencmp(a, b, m, cs)), TWO(str_strucasenccmp3(a, b, m, cs1, cs2)),
     nullptr, TWO(str_DoCompareByCharLen(a, b, m, 1, cs1, cs2))},
    {"str_strucasenbcmp3", ONE(str_strucasencmp2(a, b, m, n, cs)), TWO(str_strucasenbcmp3(a, b, m, n, cs1, cs2)),
     nullptr, TWO(str_DoCompareByByteLen(a, b, m, n, 1, cs1, cs2))},
};
#undef ONE
#undef TWO
const char *const kPairs[][2] = {{"abd", "abC"}, {"abC", "abd"}, {"abc", "ABC"}, {"abc", "abc"}, {"", "a"}, {"a", ""}, {"ab", "abc"}};
// clang-format on

TEST_F(ScriptedComparison, SimpleSetsAreTheCLibrarys)
{
    constexpr uint16_t kUtf8 = 196;
    script.names[kUtf8] = "UTF8";
    script.segments = {{kKanji, 3}}; // has no CS_FLAG_BYTE
    for (const Entry &entry : kEntries)
        for (const auto &[a, b] : kPairs)
            for (const unsigned int limit : {0U, 2U, 3U, 4U, UINT_MAX})
                for (const unsigned int limit2 : {limit, 3U})
                    for (const uint16_t kind : {kLatin, kKanji, kUtf8}) {
                        const CSDescriptor cs = {kind, 1}, other = {kAscii, 0};
                        const bool isByte = kind == kLatin;
                        const bool isUtf8 =
                            kind == kUtf8 && entry.name == std::string("str_strcmp3");
                        const bool plain = entry.plain != nullptr && (isByte || isUtf8);
                        const int expected = plain ? entry.plain(a, b, limit)
                                                   : entry.engine(a, b, limit, limit2, &cs, &cs);
                        const std::string why = entry.name + std::string(" ") + a + " " + b;
                        EXPECT_EQ(entry.one(a, b, limit, limit2, &cs), expected) << why;
                        EXPECT_EQ(entry.two(a, b, limit, limit2, &cs, &cs), expected) << why;
                        EXPECT_EQ(entry.two(a, b, limit, limit2, &cs, &other),
                                  entry.engine(a, b, limit, limit2, &cs, &other))
                            << why;
                    }
    er_SubSystemLoggingLevel = 10;
    for (const Entry &entry : kEntries) {
        traced.clear();
        const CSDescriptor cs = {kGreek, 0};
        entry.one("a", "a", 1, 1, &cs);
        EXPECT_EQ(traced, std::string("19+") + entry.name + " 19-" + entry.name + " ");
    }
}

// A string of one plain set is not walked: nothing says that it has segments.
TEST_F(ScriptedComparison, PlainStringsAreNotWalked)
{
    const CSDescriptor latin = {kLatin, 0}, kanji = {kKanji, 0}, walked = {kLatin, 1};
    EXPECT_EQ(str_DoCompareToEnd("ab\xE9", "AB\xC9", 1, &latin, &latin), 0);
    EXPECT_EQ(str_DoCompareByByteLen("abx", "aby", 2, 2, 0, &latin, &latin), 0);
    EXPECT_EQ(str_DoCompareByCharLen("\xD0x",
                                     "\xC2"
                                     "ay",
                                     1, 1, &latin, &latin),
              0);
    for (const CSDescriptor &cs : {kanji, walked}) // without any segment
        EXPECT_EQ(str_DoCompareToEnd("ab", "xy", 1, cs.csNum == kLatin ? &latin : &cs, &cs), 0);
}

} // namespace
