// SPDX-License-Identifier: Apache-2.0
//
// The benchmark program.  It prints ratios, as times depend on the machine as much as on the code;
// --benchmark_out=FILE writes the times as well.
#include "bench/support.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <utility>

// ---- Allocations ---------------------------------------------------------------------------

// Every allocation of the program comes by here, those of the C library and of GLib included.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);

static size_t theAllocations; // what allocates is measured in one thread

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

// ---- Comparisons ---------------------------------------------------------------------------

struct Comparison {
    std::string family;
    Text text;
    std::vector<Way> ways;
    Outcome outcome;

    std::string NameOf(const Way &way) const
    {
        return family + "/" + text.sort.title + "/" + std::to_string(text.bytes.size()) + "/" +
               way.name;
    }
    std::string Ours() const { return NameOf(ways.front()); }
};

// A row of a table, under the caption that it shares with the rows around it.
struct Row {
    std::string caption;
    const Comparison *comparison;
    std::vector<std::pair<std::string, std::string>> ratios; // of one benchmark to another
};

// A list, since what is registered points into it.  Both are ready before the benchmarks that
// register themselves.
std::list<Comparison> &Comparisons()
{
    static std::list<Comparison> all;
    return all;
}
std::vector<Row> &Rows()
{
    static std::vector<Row> all;
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
    if (const char *dissenter = Dissenter(comparison.text, comparison.ways, comparison.outcome);
        dissenter != nullptr)
        return state.SkipWithError((std::string("not our answer: ") + dissenter).c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(way.call(comparison.text));
    state.counters[kAllocations] = static_cast<double>(AllocationsOf(way, comparison.text));
}

// Few short repetitions in turn, so that what else the machine does falls on all ways alike.
void Register(const Comparison &comparison, const Way &way)
{
    benchmark::RegisterBenchmark(comparison.NameOf(way).c_str(),
                                 [&](benchmark::State &state) { Measure(state, comparison, way); })
        ->MinTime(0.02)
        ->Repetitions(9)
        ->ReportAggregatesOnly();
}

// ---- The table of ratios -------------------------------------------------------------------

std::string Padded(const std::string &cell, size_t width)
{
    return std::string(width - std::min(width, cell.size()), ' ') + cell;
}

std::string Caption(const std::string &title, const std::vector<std::string> &columns)
{
    std::string caption = title + "\ntext                     bytes";
    for (const std::string &column : columns)
        caption += Padded(column, 22);
    return caption + Padded(kAllocations, 14);
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
        std::string caption;
        for (const Row &row : Rows()) {
            if (!IsMeasured(row))
                continue;
            if (row.caption != caption) {
                caption = row.caption;
                std::printf("\n%s\n", caption.c_str());
            }
            Print(row);
        }
        for (const auto &[name, why] : failures)
            std::fprintf(stderr, "str_bench: %s: %s\n", name.c_str(), why.c_str());
    }

  private:
    std::map<std::string, Run> medians; // of the repetitions

    bool IsMeasured(const Row &row) const
    {
        return std::all_of(row.ratios.begin(), row.ratios.end(), [&](const auto &ratio) {
            return medians.count(ratio.first) != 0 && medians.count(ratio.second) != 0;
        });
    }

    double TimeOf(const std::string &name) const { return medians.at(name).GetAdjustedCPUTime(); }

    void Print(const Row &row) const
    {
        const Comparison &comparison = *row.comparison;
        std::printf("%-22s%8zu", comparison.text.sort.title, comparison.text.bytes.size());
        for (const auto &[dividend, divisor] : row.ratios)
            std::printf("%22.1f", TimeOf(dividend) / TimeOf(divisor));
        std::printf("%14.0f\n", medians.at(comparison.Ours()).counters.at(kAllocations).value);
    }
};

} // namespace

void Compare(const char *family, const Text &text, const std::vector<Way> &ways, Outcome outcome)
{
    const Comparison &comparison =
        Comparisons().emplace_back(Comparison{family, text, ways, outcome});
    std::vector<std::string> others;
    Row row = {{}, &comparison, {}};
    for (const Way &way : comparison.ways) {
        Register(comparison, way);
        if (&way == &comparison.ways.front())
            continue;
        others.emplace_back(way.name);
        row.ratios.emplace_back(comparison.NameOf(way), comparison.Ours());
    }
    row.caption = Caption(std::string(family) + ": times faster than", others);
    Rows().push_back(row);
}

void CompareGrowth(const char *family, const std::vector<Text> &texts, const std::vector<Way> &ways,
                   Outcome outcome)
{
    const std::string title = std::string(family) + ", growing";
    const Comparison *half = nullptr;
    for (const Text &text : texts) {
        const Comparison &comparison =
            Comparisons().emplace_back(Comparison{title, text, ways, outcome});
        Register(comparison, comparison.ways.front());
        if (half != nullptr)
            Rows().push_back({Caption(title + ": times the cost of", {"half the text"}),
                              &comparison,
                              {{comparison.Ours(), half->Ours()}}});
        half = &comparison;
    }
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
