// SPDX-License-Identifier: Apache-2.0
//
// Equality and order of two texts beside a slow one, which goes character by character; upper case,
// and the order of O/R names.
#include "fuzz/text.h"
#include "str/core/upshift.h"

#include <platform/nm.h>

#include <deque>
#include <tuple>

static int Sign(int order) { return (order > 0) - (order < 0); }

constexpr uint16_t kUtf8 = 196;

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

static std::string Take(Runs *runs, int size)
{
    std::string &bytes = runs->front().second;
    const std::string taken = bytes.substr(0, static_cast<size_t>(size));
    bytes.erase(0, taken.size());
    if (bytes.empty())
        runs->pop_front();
    return taken;
}

// The next character in upper case, as a signed number, and its size.
static std::pair<int, int> TakeUpper(Runs *runs, const CSDescriptor &cs)
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

static uint32_t FlagsOf(const CSDescriptor &cs) { return ccs_GetCSFlags(&cs); }

// The set by which the two are compared, 0 for none.
static uint16_t Common(uint16_t kind1, uint16_t kind2)
{
    const auto [low, high] = std::minmax(kind1, kind2);
    const bool areAscii =
        low == 6 && high != CS_SEG_RAW && (FlagsOf({high, 0}) & CS_FLAG_ASCII_SUPERSET) != 0;
    return low == high || areAscii ? high : 0;
}

static auto Rank(uint16_t kind)
{
    const CSDescriptor cs = {kind, 0};
    const char *const designation = ccs_GetDesignation(&cs, 1);
    const char final = designation == nullptr ? '\0' : std::string(designation).back();
    return std::tuple((FlagsOf(cs) & CS_FLAG_BYTE) == 0, final, static_cast<int16_t>(kind));
}

// The order of the two, 0 for equal; with a limit of characters, whether they are.
static int Slow(const Text &text1, const Text &text2, bool caseless, unsigned int chars = UINT_MAX)
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
        if (caseless && libstr::CaseTableOf(&cs) != nullptr) {
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

// `value` is the C library's, which counts for one set of bytes.
struct Check {
    const Input &input;
    const char *a, *b;
    std::string said = "";

    void Order(Text text1, Text text2)
    {
        for (const bool caseless : {false, true}) {
            const int order = Slow(text1, text2, caseless),
                      found = Sign(str_cmpTextStr(a, b, caseless, &text1.cs, &text2.cs));
            Demand(found == Sign(order) && (caseless || Sign(Slow(text2, text1, false)) == -found));
            said += std::to_string(found);
        }
    }
    template <class... Limits>
    void Equality(const Text &text1, const Text &text2, unsigned int most, int value, auto engine,
                  auto one, auto two, auto caselessOne, auto caselessTwo, Limits... limits)
    {
        const CSDescriptor *const cs = &text1.cs, *const cs2 = &text2.cs;
        const bool isOne = cs->csNum == cs2->csNum,
                   isAsBytes = isOne && (input.plain || (input.utf8 && sizeof...(limits) == 0));
        for (const bool caseless : {false, true}) {
            const int order = Slow(text1, text2, caseless, most) != 0;
            Demand(engine(a, b, limits..., caseless, cs, cs2) == order);
            const int byTwo = (caseless ? caselessTwo : two)(a, b, limits..., cs, cs2);
            Demand(byTwo == (!caseless && isAsBytes ? value : order));
            Demand(!isOne || cs->escMode != cs2->escMode ||
                   (caseless ? caselessOne : one)(a, b, limits..., cs) == byTwo);
            said += std::to_string(byTwo);
        }
    }
};

static std::string CheckOrder(const Input &input, const char *a, const char *b)
{
    Text text1 = {input.cs, input.first}, text2 = {input.cs2, input.second};
    Check check = {input, a, b};
    check.Order(text1, text2);
    text1.isOneRun = text2.isOneRun =
        input.plain && input.cs.csNum == input.cs2.csNum && input.cs.escMode == 0;
    const auto size = static_cast<unsigned int>(input.first.size());
    const unsigned int near = input.limit % (size + 4) - 1, // around 0 or 2^31
        n = input.limit % 6 == 0 ? INT_MAX + 1U + near : near, m = input.choice < 9 ? n : near + 1;
    text1.isWhole = true;
    check.Equality(text1, text2, UINT_MAX, std::strcmp(a, b), str_DoCompareToEnd, str_strcmp,
                   str_strcmp3, str_strucasecmp, str_strucasecmp3);
    text1.isWhole = false;
    check.Equality(text1, text2, n, std::strncmp(a, b, n), str_DoCompareByCharLen, str_strncmp,
                   str_strnccmp3, str_strucasencmp, str_strucasenccmp3, n);
    text1.limit = n;
    text2.limit = m;
    check.Equality(text1, text2, UINT_MAX, std::strncmp(a, b, n), str_DoCompareByByteLen,
                   str_strncmp2, str_strnbcmp3, str_strucasencmp2, str_strucasenbcmp3, n, m);
    return check.said;
}

static std::string UpperBySegments(const CSDescriptor &cs, const char *text)
{
    std::string upper;
    int count = 0, length = 0;
    const CSSegment *at = ccs_GetAllStrs(&cs, text, -1, &count);
    for (; --count > 0; ++at) {
        const CSDescriptor kind = {at->kind, 0};
        const std::string bytes(at->text, at->length);
        const bool hasCase = (ccs_GetCSFlags(&kind) & CS_FLAG_CASE) != 0;
        upper += hasCase ? str_ToUpper(bytes.c_str(), -1, &length, &kind) : bytes;
    }
    return upper;
}

static std::string CheckUpper(const Input &input, const char *text)
{
    int length = -1;
    const char *const made = str_ToUpper(text, -1, &length, &input.cs);
    Demand((made == nullptr) == (input.utf8 && !input.wellFormed));
    const std::string upper = made == nullptr ? "" : made;
    Demand(made == nullptr ? length == -1 : upper.size() == static_cast<size_t>(length));
    Demand(input.utf8 || input.cs.escMode == 0 || upper == UpperBySegments(input.cs, text));
    return upper;
}

static std::string CheckNames(const Input &input, const char *a, const char *b)
{
    const char *const set = ccs_GetCSName(&input.cs);
    const int any = static_cast<int>(input.choice / 8 % 2);
    const int order = Sign(str_cmpORName(a, b, set, any, "S,G,DDT1,DDV1,OU1,OU,C,X.121"));
    Demand(Sign(str_cmpORName(b, a, set, any, "S,G,DDT1,DDV1,OU1,OU,C,X.121")) == -order);
    Demand(str_cmpORName(a, a, set, any, b) == 0);
    nm_ORName name;
    int status, length;
    nm_ParseORN(a, &name, &status);
    for (int field = 0; field < NM_FIELD_COUNT; ++field) {
        const char *const value = nm_GetFieldMemPtr(a, &name, field, &length);
        Demand(value == nullptr ? length == 0
                                : value >= a && value + length <= a + input.first.size() &&
                                      !*t61_ParseO61Str(value, length) == (field < NM_T61_FORM));
    }
    return std::to_string(order);
}

// Rules of every sort, in place of those of the sets; texts get longer and shorter by them.
const std::pair<const char *, const char *> kSources[] = {
    {"6", "a=A b=B c=C s=S x=X g=G l=L z=ZZ"},
    {"100", R"(a=A b=B \xE9=\xC9 z=\xC2S Z=\xC2A \xC2a=\xC2A \xC8u=u \xC6\xFC=\xC6\xFB)"},
    {"103", R"(\xC8u=U \xC8U=\xC8U \xF3=\xE3 \xF1=\xC8U \xC2Z=V)"},
    {"87", R"(\x46\x7C=Zz \xC6\xFC=\xC6\xFB)"},
};

// Every other time the tables are copies, for which nothing is prepared.
std::string Try(const Input &input, const char *a, const char *b)
{
    static CaseTableRecord *own = nullptr;
    static std::vector<CaseTableRecord> copies;
    for (const auto &[name, rules] : kSources)
        if (copies.empty())
            kHome.Write("toupper/"s + name + ".s", "T C x\n"s + rules);
    ccs_SetInfo set;
    for (int i = 0; copies.empty() && ccs_GetSetInfo(i, &set) != 0; ++i) {
        const CSDescriptor cs = {set.number, 0};
        str_InitCaseTables(&cs);
    }
    if (copies.empty())
        copies.assign(own = pCaseTabs, pCaseTabs + NumCaseTabs);
    pCaseTabs = input.choice % 8 < 4 ? own : copies.data();
    return CheckNames(input, a, b) + CheckOrder(input, a, b) + CheckUpper(input, a);
}
