// SPDX-License-Identifier: Apache-2.0
//
// Pattern matching, beside the matchers that are at hand: fnmatch, GLib's and PCRE2's, each with its
// pattern made ready beforehand.  They know no segments, so text that switches sets is converted to
// UTF-8 for them, by a converter that is kept open.
#define PCRE2_CODE_UNIT_WIDTH 8

#include "bench/support.h"
#include "bench/texts.h"

#include <fnmatch.h>
#include <glib.h>
#include <iconv.h>
#include <locale.h>
#include <pcre2.h>
#include <str/match.h>

#include <stdexcept>

namespace
{

using bench::Sort;
using bench::Text;
using bench::Way;

constexpr size_t kSizes[] = {64, 256, 4096, 65536};
constexpr size_t kGrowingSizes[] = {1024, 2048, 4096, 8192, 16384, 32768, 65536};
constexpr size_t kMost = 256 * 1024; // bytes of a converted text

// ---- Patterns ------------------------------------------------------------------------------

// Three pieces, in UTF-8, with a wildcard between each two.
struct Pieces {
    std::string head, middle, tail;

    std::string With(const std::string &wildcard) const
    {
        return head + wildcard + middle + wildcard + tail;
    }
};

const Pieces kWords = {"Minutes", "No. 4711", "the end"};
const Pieces kJapanese = {"議事録", "第4711号", "以上"};

pcre2_code *Compile(const Pieces &pieces, const char *any, uint32_t utf)
{
    const std::string written = pieces.With(any);
    int error;
    size_t place;
    pcre2_code *code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(written.data()), written.size(),
                                     utf | PCRE2_DOTALL | PCRE2_ANCHORED | PCRE2_ENDANCHORED,
                                     &error, &place, nullptr);
    if (code == nullptr || pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) != 0)
        throw std::runtime_error("PCRE2 does not compile " + written);
    return code;
}

// The pattern as each matcher has it.
struct Pattern {
    std::string ours, shell;
    GPatternSpec *spec;
    pcre2_code *greedy, *lazy;

    Pattern(const Pieces &pieces, const Sort &sort, uint32_t utf)
        : ours(bench::Recode(sort.iconv, "UTF-8", pieces.With("\x1F"))), shell(pieces.With("*")),
          spec(g_pattern_spec_new(shell.c_str())), greedy(Compile(pieces, ".*", utf)),
          lazy(Compile(pieces, ".*?", utf))
    {
    }
};

const Sort kIa5 = {"", "IA5", "ASCII"};
const Sort kMail = {"", "ISO-2022-JP", "ISO-2022-JP"};
const Sort kUtf8 = {"", "UTF8", "UTF-8"};

const Pattern theIa5(kWords, kIa5, 0);
const Pattern theMail(kJapanese, kMail, PCRE2_UTF);
const Pattern theUtf8(kJapanese, kUtf8, PCRE2_UTF);

// ---- Ways ----------------------------------------------------------------------------------

const locale_t theBytes = newlocale(LC_ALL_MASK, "C", nullptr);
pcre2_match_data *const theMatch = pcre2_match_data_create(1, nullptr);

size_t Ours(const std::string &text, const Pattern &pattern, const CSDescriptor *cs)
{
    return static_cast<size_t>(str_USPatternMatch(text.c_str(), pattern.ours.c_str(), cs));
}

using Matcher = size_t (*)(const char *text, size_t size, const Pattern &pattern);

size_t ByFnmatch(const char *text, size_t, const Pattern &pattern)
{
    return fnmatch(pattern.shell.c_str(), text, 0) == 0;
}

size_t ByGLib(const char *text, size_t, const Pattern &pattern)
{
    return static_cast<size_t>(g_pattern_spec_match_string(pattern.spec, text));
}

size_t ByPcre2(const char *text, size_t size, const pcre2_code *code)
{
    return pcre2_match(code, reinterpret_cast<PCRE2_SPTR>(text), size, 0, 0, theMatch, nullptr) >=
           0;
}

size_t ByGreedy(const char *text, size_t size, const Pattern &pattern)
{
    return ByPcre2(text, size, pattern.greedy);
}

size_t ByLazy(const char *text, size_t size, const Pattern &pattern)
{
    return ByPcre2(text, size, pattern.lazy);
}

template <const Pattern &pattern>
size_t Segmented(const Text &text)
{
    return Ours(text.bytes, pattern, &text.cs);
}

size_t Utf8(const Text &text)
{
    return static_cast<size_t>(str_utf8USPatternMatch(text.bytes.c_str(), theUtf8.ours.c_str()));
}

template <const Pattern &pattern, Matcher matcher>
size_t AsItIs(const Text &text)
{
    return matcher(text.bytes.c_str(), text.bytes.size(), pattern);
}

// fnmatch goes by the locale.
template <const Pattern &pattern>
size_t FnmatchBytes(const Text &text)
{
    const locale_t before = uselocale(theBytes);
    const size_t answer = AsItIs<pattern, ByFnmatch>(text);
    uselocale(before);
    return answer;
}

template <Matcher matcher>
size_t Converted(const Text &text)
{
    static const iconv_t converter = iconv_open("UTF-8", kMail.iconv);
    static char converted[kMost + 1];
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char *in = const_cast<char *>(text.bytes.data()), *out = converted;
    size_t inLeft = text.bytes.size(), outLeft = kMost;
    if (iconv(converter, &in, &inLeft, &out, &outLeft) != 0)
        throw std::runtime_error("iconv did not convert");
    *out = '\0';
    return matcher(converted, kMost - outLeft, theMail);
}

const std::vector<Way> kWaysOfIa5 = {{"libstr", Segmented<theIa5>},
                                     {"fnmatch", FnmatchBytes<theIa5>},
                                     {"g_pattern_spec", AsItIs<theIa5, ByGLib>},
                                     {"PCRE2 with .*", AsItIs<theIa5, ByGreedy>},
                                     {"PCRE2 with .*?", AsItIs<theIa5, ByLazy>}};
const std::vector<Way> kWaysOfMail = {{"libstr", Segmented<theMail>},
                                      {"iconv, fnmatch", Converted<ByFnmatch>},
                                      {"iconv, g_pattern_spec", Converted<ByGLib>},
                                      {"iconv, PCRE2 with .*", Converted<ByGreedy>},
                                      {"iconv, PCRE2 with .*?", Converted<ByLazy>}};
const std::vector<Way> kWaysOfUtf8 = {{"libstr", Utf8},
                                      {"fnmatch", AsItIs<theUtf8, ByFnmatch>},
                                      {"g_pattern_spec", AsItIs<theUtf8, ByGLib>},
                                      {"PCRE2 with .*", AsItIs<theUtf8, ByGreedy>},
                                      {"PCRE2 with .*?", AsItIs<theUtf8, ByLazy>}};

// ---- Texts ---------------------------------------------------------------------------------

const std::vector<std::string> kMinutes = {
    "The ", "meeting ", "was ",    "opened ", "at ",        "noon. ", "Item ",   "3: ",
    "the ", "budget ",  "of the ", "new ",    "building, ", "see ",   "No. 47. "};

enum class Shape { match, missInTheMiddle, missAtTheEnd };
constexpr const char *kShapes[] = {"match", "miss in the middle", "miss at the end"};

// About so many bytes: the pieces with other text between them, except the one that is missing.
Text MakeText(Sort sort, const Pieces &pieces, const std::vector<std::string> &filler, Shape shape,
              size_t size)
{
    sort.title = kShapes[static_cast<size_t>(shape)];
    const size_t taken = bench::Recode(sort.iconv, "UTF-8", pieces.With("")).size();
    Text text = bench::MakeText(sort, filler, (size - std::min(size, taken)) / 2);
    const std::string between = bench::Recode("UTF-8", sort.iconv, text.bytes);
    const std::string all = pieces.head + between +
                            (shape == Shape::missInTheMiddle ? "" : pieces.middle) + between +
                            (shape == Shape::missAtTheEnd ? "" : pieces.tail);
    text.bytes = bench::Recode(sort.iconv, "UTF-8", all);
    return text;
}

void CompareAll(const char *family, const Sort &sort, const Pieces &pieces,
                const std::vector<std::string> &filler, const std::vector<Way> &ways)
{
    for (const Shape shape : {Shape::match, Shape::missInTheMiddle, Shape::missAtTheEnd})
        for (const size_t size : kSizes)
            bench::Compare(family, MakeText(sort, pieces, filler, shape, size), ways);
}

// ---- Near misses ---------------------------------------------------------------------------

// A piece that is nearly found everywhere: in one segment, in many, in UTF-8.
const Pieces kNearly = {"", "aaaaaaaaaaaaaaab", ""};
const Pattern theNearly(kNearly, kUtf8, PCRE2_UTF);

size_t NearlyUtf8(const Text &text)
{
    return static_cast<size_t>(str_utf8USPatternMatch(text.bytes.c_str(), theNearly.ours.c_str()));
}

void CompareNearMisses(const char *family, Sort sort, const char *title,
                       const std::vector<std::string> &pieces, const std::vector<Way> &ways)
{
    sort.title = title;
    std::vector<Text> texts;
    for (const size_t size : kGrowingSizes)
        texts.push_back(bench::MakeText(sort, pieces, size));
    bench::CompareGrowth(family, texts, ways);
}

const bool theRegistration = [] {
    constexpr const char *segmented = "str_USPatternMatch";
    constexpr const char *utf8 = "str_utf8USPatternMatch";
    CompareAll("str_USPatternMatch, IA5", kIa5, kWords, kMinutes, kWaysOfIa5);
    CompareAll("str_USPatternMatch, ISO-2022-JP", kMail, kJapanese, bench::kSubjects, kWaysOfMail);
    CompareAll(utf8, kUtf8, kJapanese, bench::kJapaneseLetter, kWaysOfUtf8);
    const std::vector<Way> nearlySegmented = {{"libstr", Segmented<theNearly>}};
    CompareNearMisses(segmented, kIa5, "near misses, IA5", {"a"}, nearlySegmented);
    CompareNearMisses(segmented, kMail, "near misses, segments", {"aaaaaaaaaaaaaaaaaa", "会"},
                      nearlySegmented);
    CompareNearMisses(utf8, kUtf8, "near misses, UTF-8", {"a"}, {{"libstr", NearlyUtf8}});
    return true;
}();

} // namespace
