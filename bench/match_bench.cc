// SPDX-License-Identifier: Apache-2.0
//
// Pattern matching, beside the matchers that are at hand: fnmatch, GLib's and PCRE2's.  They know no
// segments, so text that switches sets is converted to UTF-8 for them, by a converter that is kept
// open.
#include "bench/match_ways.h"
#include "bench/texts.h"

#include <iconv.h>

namespace
{

using namespace bench::match;
using bench::Sort;
using bench::Text;
using bench::Way;

constexpr size_t kSizes[] = {64, 256, 4096, 65536};
constexpr size_t kGrowingSizes[] = {1024, 2048, 4096, 8192, 16384, 32768, 65536};
constexpr size_t kMost = 256 * 1024; // bytes of a converted text

const Pieces kWords = {"Minutes", "No. 4711", "the end"};
const Pieces kJapanese = {"議事録", "第4711号", "以上"};

const Pattern theIa5(kWords, kIa5, 0);
const Pattern theMail(kJapanese, kMail, PCRE2_UTF);
const Pattern theUtf8(kJapanese, kUtf8, PCRE2_UTF);

size_t Utf8(const Text &text)
{
    return static_cast<size_t>(str_utf8USPatternMatch(text.bytes.c_str(), theUtf8.ours.c_str()));
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
    CompareAll("str_USPatternMatch, IA5", kIa5, kWords, bench::kMinutes, kWaysOfIa5);
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
