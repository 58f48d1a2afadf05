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
    std::string bytes;
};

// A text of at most `size` bytes: of the UTF-8 `pieces`, as many as fit, again and again.  iconv puts
// it into the set, so that its bytes are none of our making.
Text MakeText(const Sort &sort, const std::vector<std::string> &pieces, size_t size);

// A way to do the job.  All ways of a comparison answer the same number for the same text; one that
// does not is not timed, and the run fails.
struct Way {
    const char *name;
    size_t (*call)(const Text &text);
};

// Measures the ways on the text.  The table of the family then shows how many times faster the
// first, which is ours, is than each of the others, and how often a call of it allocates.
void Compare(const char *family, const Text &text, const std::vector<Way> &ways);

} // namespace bench

#endif
