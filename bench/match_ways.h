// SPDX-License-Identifier: Apache-2.0
//
// Ways to match a pattern, each with its pattern made ready beforehand, and texts to match.
#ifndef BENCH_MATCH_WAYS_H
#define BENCH_MATCH_WAYS_H

#define PCRE2_CODE_UNIT_WIDTH 8

#include "bench/support.h"

#include <fnmatch.h>
#include <glib.h>
#include <locale.h>
#include <pcre2.h>
#include <str/match.h>

#include <algorithm>
#include <stdexcept>

namespace bench::match
{

// ---- Patterns ------------------------------------------------------------------------------

// Three pieces, in UTF-8, with a wildcard between each two.
struct Pieces {
    std::string head, middle, tail;

    std::string With(const std::string &wildcard) const
    {
        return head + wildcard + middle + wildcard + tail;
    }
};

inline pcre2_code *Compile(const Pieces &pieces, const char *any, uint32_t utf)
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

inline const Sort kIa5 = {"", "IA5", "ASCII"};
inline const Sort kMail = {"", "ISO-2022-JP", "ISO-2022-JP"};
inline const Sort kUtf8 = {"", "UTF8", "UTF-8"};

// ---- Ways ----------------------------------------------------------------------------------

inline const locale_t theBytes = newlocale(LC_ALL_MASK, "C", nullptr);
inline pcre2_match_data *const theMatch = pcre2_match_data_create(1, nullptr);

inline size_t Ours(const std::string &text, const Pattern &pattern, const CSDescriptor *cs)
{
    return static_cast<size_t>(str_USPatternMatch(text.c_str(), pattern.ours.c_str(), cs));
}

using Matcher = size_t (*)(const char *text, size_t size, const Pattern &pattern);

inline size_t ByFnmatch(const char *text, size_t, const Pattern &pattern)
{
    return fnmatch(pattern.shell.c_str(), text, 0) == 0;
}

inline size_t ByGLib(const char *text, size_t, const Pattern &pattern)
{
    return static_cast<size_t>(g_pattern_spec_match_string(pattern.spec, text));
}

inline size_t ByPcre2(const char *text, size_t size, const pcre2_code *code)
{
    return pcre2_match(code, reinterpret_cast<PCRE2_SPTR>(text), size, 0, 0, theMatch, nullptr) >=
           0;
}

inline size_t ByGreedy(const char *text, size_t size, const Pattern &pattern)
{
    return ByPcre2(text, size, pattern.greedy);
}

inline size_t ByLazy(const char *text, size_t size, const Pattern &pattern)
{
    return ByPcre2(text, size, pattern.lazy);
}

template <const Pattern &pattern>
size_t Segmented(const Text &text)
{
    return Ours(text.bytes, pattern, &text.cs);
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

// ---- Texts ---------------------------------------------------------------------------------

enum class Shape { match, missInTheMiddle, missAtTheEnd };
constexpr const char *kShapes[] = {"match", "miss in the middle", "miss at the end"};

// About so many bytes: the pieces with other text between them, except the one that is missing.
inline Text MakeText(Sort sort, const Pieces &pieces, const std::vector<std::string> &filler,
                     Shape shape, size_t size)
{
    sort.title = kShapes[static_cast<size_t>(shape)];
    const size_t taken = bench::Recode(sort.iconv, "UTF-8", pieces.With("")).size();
    Text text = MakeText(sort, filler, (size - std::min(size, taken)) / 2);
    const std::string between = bench::Recode("UTF-8", sort.iconv, text.bytes);
    const std::string all = pieces.head + between +
                            (shape == Shape::missInTheMiddle ? "" : pieces.middle) + between +
                            (shape == Shape::missAtTheEnd ? "" : pieces.tail);
    text.bytes = bench::Recode(sort.iconv, "UTF-8", all);
    return text;
}

} // namespace bench::match

#endif
