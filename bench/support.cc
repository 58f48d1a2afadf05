// SPDX-License-Identifier: Apache-2.0
//
// The benchmark program.  It prints ratios, since times tell of the machine as much as of the code;
// --benchmark_out=FILE writes the times as well.
#include "bench/support.h"

#include <benchmark/benchmark.h>
#include <platform/ccs.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <stdexcept>

// ---- Allocations ---------------------------------------------------------------------------

// Every allocation of the program comes by here, those of the C library and of GLib included.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);

static size_t theAllocations; // the program has one thread

void *malloc(size_t size)
{
    ++theAllocations;
    return __libc_malloc(size);
}
void *calloc(size_t count, size_t size)
{
    ++theAllocations;
    return __libc_calloc(count, size);
}
void *realloc(void *block, size_t size)
{
    ++theAllocations;
    return __libc_realloc(block, size);
}
}

namespace bench
{
namespace
{

// ---- Texts ---------------------------------------------------------------------------------

iconv_t Open(const char *to, const char *from)
{
    const iconv_t converter = iconv_open(to, from);
    if (converter == reinterpret_cast<iconv_t>(-1))
        throw std::runtime_error(std::string("iconv cannot convert ") + from + " to " + to);
    return converter;
}

std::string Encode(const char *iconvName, std::string utf8)
{
    const iconv_t converter = Open(iconvName, "UTF-8");
    std::string bytes(utf8.size() * 4 + 16, '\0');
    char *in = utf8.data(), *out = bytes.data();
    size_t inLeft = utf8.size(), outLeft = bytes.size();
    const bool encoded = iconv(converter, &in, &inLeft, &out, &outLeft) == 0 &&
                         iconv(converter, nullptr, nullptr, &out, &outLeft) == 0;
    iconv_close(converter);
    if (!encoded)
        throw std::runtime_error(std::string(iconvName) + " cannot hold: " + utf8);
    bytes.resize(bytes.size() - outLeft);
    return bytes;
}

// ---- Comparisons ---------------------------------------------------------------------------

struct Comparison {
    std::string family;
    Text text;
    std::vector<Way> ways;

    std::string NameOf(const Way &way) const
    {
        return family + "/" + text.sort.title + "/" + std::to_string(text.bytes.size()) + "/" +
               way.name;
    }
};

// A list, since what is registered points into it; ready before the benchmarks that register
// themselves.
std::list<Comparison> &Comparisons()
{
    static std::list<Comparison> all;
    return all;
}

constexpr const char *kAllocations = "allocations";

size_t AllocationsOf(const Way &way, const Text &text)
{
    const size_t before = theAllocations;
    way.call(text);
    return theAllocations - before;
}

void Measure(benchmark::State &state, const Comparison &comparison, const Way &way)
{
    const Way &ours = comparison.ways.front();
    const Text &text = comparison.text;
    if (way.call(text) != ours.call(text))
        return state.SkipWithError("its answer is not ours");
    for (auto _ : state)
        benchmark::DoNotOptimize(way.call(text));
    state.counters[kAllocations] = static_cast<double>(AllocationsOf(way, text));
}

// ---- The table of ratios -------------------------------------------------------------------

std::string Padded(const std::string &cell, size_t width)
{
    return std::string(width - std::min(width, cell.size()), ' ') + cell;
}

std::string HeaderOf(const Comparison &comparison)
{
    std::string header = comparison.family + ": times faster than\ntext                     bytes";
    for (size_t i = 1; i < comparison.ways.size(); ++i)
        header += Padded(comparison.ways[i].name, 22);
    return header + Padded(kAllocations, 14);
}

class Ratios : public benchmark::BenchmarkReporter
{
  public:
    std::map<std::string, std::string> failures; // by the name of the benchmark

    bool ReportContext(const Context &) override { return true; }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs)
            if (run.error_occurred)
                failures[run.run_name.function_name] = run.error_message;
            else if (run.aggregate_name == "median")
                medians[run.run_name.function_name] = run;
    }

    void Finalize() override
    {
        std::string header;
        for (const Comparison &comparison : Comparisons()) {
            if (!IsMeasured(comparison))
                continue;
            if (HeaderOf(comparison) != header) {
                header = HeaderOf(comparison);
                std::printf("\n%s\n", header.c_str());
            }
            PrintRow(comparison);
        }
        for (const auto &[name, why] : failures)
            std::fprintf(stderr, "str_bench: %s: %s\n", name.c_str(), why.c_str());
    }

  private:
    std::map<std::string, Run> medians; // of the repetitions

    bool IsMeasured(const Comparison &comparison) const
    {
        return std::all_of(comparison.ways.begin(), comparison.ways.end(), [&](const Way &way) {
            return medians.count(comparison.NameOf(way)) != 0;
        });
    }

    void PrintRow(const Comparison &comparison) const
    {
        const std::vector<Way> &ways = comparison.ways;
        const Run &ours = medians.at(comparison.NameOf(ways[0]));
        std::printf("%-22s%8zu", comparison.text.sort.title, comparison.text.bytes.size());
        for (size_t i = 1; i < ways.size(); ++i)
            std::printf("%22.1f", medians.at(comparison.NameOf(ways[i])).GetAdjustedCPUTime() /
                                      ours.GetAdjustedCPUTime());
        std::printf("%14.0f\n", ours.counters.at(kAllocations).value);
    }
};

} // namespace

Text MakeText(const Sort &sort, const std::vector<std::string> &pieces, size_t size)
{
    Text text = {sort, {}, Open("WCHAR_T", sort.iconv), {}};
    if (ccs_GetCSDescriptor(sort.set, &text.cs) == 0)
        throw std::runtime_error(std::string("no set ") + sort.set);
    std::string utf8;
    for (size_t i = 0;; ++i) {
        utf8 += pieces[i % pieces.size()];
        const std::string bytes = Encode(sort.iconv, utf8);
        if (bytes.size() > size)
            return text;
        text.bytes = bytes;
    }
}

// Few short repetitions in turn, so that what else the machine does falls on all ways alike.
void Compare(const char *family, const Text &text, const std::vector<Way> &ways)
{
    const Comparison &comparison = Comparisons().emplace_back(Comparison{family, text, ways});
    for (const Way &way : comparison.ways)
        benchmark::RegisterBenchmark(
            comparison.NameOf(way).c_str(),
            [&](benchmark::State &state) { Measure(state, comparison, way); })
            ->MinTime(0.02)
            ->Repetitions(9)
            ->ReportAggregatesOnly();
}

} // namespace bench

int main(int argc, char **argv)
{
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) {
        std::fputs("str_bench: no locale C.UTF-8\n", stderr);
        return 1;
    }
    std::string inTurn = "--benchmark_enable_random_interleaving=true";
    std::vector<char *> arguments = {argv[0], inTurn.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    bench::Ratios ratios;
    benchmark::RunSpecifiedBenchmarks(&ratios);
    return ratios.failures.empty() ? 0 : 1;
}
