// SPDX-License-Identifier: Apache-2.0
//
// What the benchmarks of all families share: texts of a wanted size, and comparisons of a function
// of the library with what a user would do instead.
#ifndef BENCH_SUPPORT_H
#define BENCH_SUPPORT_H

#include <iconv.h>
#include <str/charset.h>

#include <cstddef>
#include <string>
#include <vector>

namespace bench
{

// A character set by the names that the library and iconv have for it, and what the table of
// ratios calls texts of this sort.
struct Sort {
    const char *title;
    const char *set;
    const char *iconv;
};

struct Text {
    Sort sort;
    CSDescriptor cs;
    iconv_t converter; // to wide characters, open as long as the program runs
    iconv_t encoder;   // from wide characters, likewise
    std::string bytes;
    size_t characters; // as iconv counts them
    std::string other; // what the text is compared with
};

// A text of at most `size` bytes: the UTF-8 `pieces`, again and again, as many as fit.  iconv
// converts it to the set, so its bytes do not depend on the library.
Text MakeText(const Sort &sort, const std::vector<std::string> &pieces, size_t size);

// The same text in another code, both by the names of iconv; throws if there is none.
std::string Recode(const char *to, const char *from, const std::string &bytes);

// A way to do the job.
struct Way {
    const char *name;
    size_t (*call)(const Text &text);
};

// The outcome of a call: the number that it returned, or something else that it made.  It has to be
// the same for all ways of a comparison; otherwise none is timed, and the run fails.
using Outcome = std::string (*)(const Text &text, size_t answer);
std::string Answer(const Text &text, size_t answer);

// The name of a way whose outcome is not that of the first, which is ours; null if there is none.
const char *Dissenter(const Text &text, const std::vector<Way> &ways, Outcome outcome);

// ---- str_bench -----------------------------------------------------------------------------

// Measures the ways on the text.  The table of the family then shows how many times faster the
// first, which is ours, is than each of the others, and how often a call of it allocates.
void Compare(const char *family, const Text &text, const std::vector<Way> &ways,
             Outcome outcome = Answer);

// Measures the first way, which is ours, on texts of which each has twice the bytes of the one
// before; the others are there to agree with.  The table shows what each costs compared with its
// half.
void CompareGrowth(const char *family, const std::vector<Text> &texts, const std::vector<Way> &ways,
                   Outcome outcome = Answer);

} // namespace bench

#endif
