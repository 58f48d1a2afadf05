// SPDX-License-Identifier: Apache-2.0
//
// How fast the library is beside the fastest of the functions that one would use instead, and how
// fast it is to be.  What is printed is the time of that function divided by ours.  See ./dev goals.
#include "bench/compare_ways.h"
#include "bench/cut_ways.h"
#include "bench/format_ways.h"
#include "bench/match_ways.h"
#include "bench/tables.h"
#include "bench/texts.h"
#include "bench/upper_ways.h"
#include "bench/width_ways.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <map>
#include <random>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

namespace
{

using bench::Sort;
using bench::Text;
using bench::Way;
using Pieces = std::vector<std::string>;
using Ways = std::vector<Way>;

// ---- Jobs ----------------------------------------------------------------------------------

// What the library does, and what texts it does it to.
struct Job {
    const char *family;
    size_t (*ours)(const Text &text);
    bench::Outcome outcome;
    Text (*make)(const Sort &sort, const Pieces &pieces, size_t size);
};

Text WithCapitals(const Sort &sort, const Pieces &pieces, size_t size)
{
    return bench::comparison::WithCapitals(bench::MakeText(sort, pieces, size));
}

Text WithCopy(const Sort &sort, const Pieces &pieces, size_t size)
{
    return bench::comparison::WithCopy(bench::MakeText(sort, pieces, size));
}

const bench::match::Pieces kThree = {"Re: ", "No. 5", "end"};
const bench::match::Pattern theThree(kThree, bench::match::kIa5, 0);

template <bench::match::Shape shape>
Text WithThree(const Sort &sort, const Pieces &pieces, size_t size)
{
    return bench::match::MakeText(sort, kThree, pieces, shape, size);
}

constexpr const char kComparison[] = "comparison", kUpperCase[] = "upper case", kWidth[] = "width",
                     kCutting[] = "truncation and splits", kMatching[] = "matching",
                     kFormatting[] = "formatting";

const Job kCaseless = {kComparison, bench::comparison::Ours, bench::Answer, WithCapitals};
const Job kEquality = {kComparison, bench::comparison::OursInCase, bench::Answer, WithCopy};
const Job kUpper = {kUpperCase, bench::upper::Ours, bench::upper::UpperCase, bench::MakeText};
const Job kColumns = {kWidth, bench::width::Ours, bench::Answer, bench::MakeText};
const Job kTruncate = {kCutting, bench::cut::Truncate, bench::cut::Kept, bench::MakeText};
const Job kClosed = {kCutting, bench::cut::TruncateClosed, bench::cut::Kept, bench::MakeText};
const Job kSplit = {kCutting, bench::cut::Split, bench::cut::Parts, bench::MakeText};
const Job kMatch = {kMatching, bench::match::Segmented<theThree>, bench::Answer,
                    WithThree<bench::match::Shape::match>};
const Job kMiss = {kMatching, bench::match::Segmented<theThree>, bench::Answer,
                   WithThree<bench::match::Shape::missInTheMiddle>};
const Job kPrint = {kFormatting, bench::format::Short<bench::format::kPrint>,
                    bench::format::Printed, bench::MakeText};

// ---- What one would use instead ------------------------------------------------------------

const Ways kMatchers = {{"fnmatch", bench::match::FnmatchBytes<theThree>},
                        {"PCRE2 with .*", bench::match::AsItIs<theThree, bench::match::ByGreedy>},
                        {"PCRE2 with .*?", bench::match::AsItIs<theThree, bench::match::ByLazy>}};

const Ways kStrcasecmp = {{"strcasecmp", bench::comparison::ByStrcasecmp}};
const Ways kInLatin1 = {{"strcasecmp_l", bench::comparison::InLatin1}};
const Ways kUnicodeCaseless = {{"mbstowcs, wcscasecmp", bench::comparison::ByMbstowcs},
                               {"ICU, folded", bench::comparison::ByIcuInUtf8},
                               {"ICU, converted", bench::comparison::ByIcu}};
const Ways kIconvCaseless = {{"iconv, wcscasecmp", bench::comparison::ByIconv}};
const Ways kStrcmp = {{"strcmp", bench::comparison::ByStrcmp}};
const Ways kToupper = {{"toupper_l", bench::upper::ByToupper}};
const Ways kUnicodeUpper = {{"ICU", bench::upper::ByIcuInUtf8},
                            {"mbstowcs, towupper", bench::upper::ByMbstowcs}};
const Ways kIconvUpper = {{"iconv, towupper", bench::upper::ByIconv}};
const Ways kStrlen = {{"g_utf8_strlen", bench::width::CountedByGLib}};
const Ways kWcswidth = {{"iconv, wcswidth", bench::width::KeptOpen}};
const Ways kByHand = {{"loop by hand", bench::width::CountedByHand}};
const Ways kPrevChar = {{"g_utf8_find_prev_char", bench::cut::TruncateByGLib}};
const Ways kIconvTruncate = {
    {"iconv there and back", bench::cut::KeptOpen<bench::cut::ThereAndBack>},
    {"iconv to itself", bench::cut::ToItself}};
const Ways kIconvClosed = {{"iconv there and back", bench::cut::ThereAndBackClosed}};
const Ways kIconvSplit = {
    {"iconv there and back", bench::cut::KeptOpen<bench::cut::ConvertBothHalves>}};
const Ways kSnprintf = {{"snprintf", bench::format::Short<bench::format::kSnprintf>}};

// ---- Workloads -----------------------------------------------------------------------------

const Sort kAscii = {"", "IA5", "US-ASCII"};
const Sort kLatin1 = {"", "ISO-8859-1", "ISO-8859-1"};
const Sort kUtf8 = {"", "UTF8", "UTF-8"};
const Sort kJapanese = {"", "ISO-2022-JP", "ISO-2022-JP"};
const Sort kT61 = {"", "T.61", "T.61-8BIT"};
const Pieces kNearMisses = {"No. 4, ", "No. 6; ", "No 5, "};

// For texts of 64 and of 4096 bytes; 0 where there is none.
struct Ratios {
    double at64, at4096;
};

// Of the peers the fastest counts.
struct Workload {
    const char *name;
    const Job &job;
    const Sort &sort;
    const Pieces &pieces;
    const Ways &peers;
    Ratios floor, goal;

    Ways AllWays() const
    {
        Ways ways = {{"libstr", job.ours}};
        ways.insert(ways.end(), peers.begin(), peers.end());
        return ways;
    }
};

using bench::kJapaneseLetter;
using bench::kLetter;
using bench::kMinutes;
using bench::kMixed;
using bench::kSubjects;

// clang-format off
const Workload kWorkloads[] = {
    {"caseless ASCII", kCaseless, kAscii, kMinutes, kStrcasecmp, {0.22, 0.45}, {0.5, 1}},
    {"caseless Latin-1", kCaseless, kLatin1, kLetter, kInLatin1, {1.5, 7}, {2, 10}},
    {"caseless UTF-8, western", kCaseless, kUtf8, kLetter, kUnicodeCaseless, {7, 7}, {10, 10}},
    {"caseless UTF-8, mixed", kCaseless, kUtf8, kMixed, kUnicodeCaseless, {4.5, 4.5}, {6, 8}},
    {"caseless ISO-2022-JP", kCaseless, kJapanese, kSubjects, kIconvCaseless, {2.7, 3.2}, {5, 6}},
    {"caseless T.61", kCaseless, kT61, kLetter, kIconvCaseless, {5, 10}, {8, 15}},
    {"equality Latin-1", kEquality, kLatin1, kLetter, kStrcmp, {0.48, 0.9}, {0.6, 1}},
    {"upper Latin-1", kUpper, kLatin1, kLetter, kToupper, {4.5, 30}, {6, 32}},
    {"upper UTF-8, western", kUpper, kUtf8, kLetter, kUnicodeUpper, {5.8, 6.5}, {6, 8}},
    {"upper UTF-8, mixed", kUpper, kUtf8, kMixed, kUnicodeUpper, {3.5, 3.6}, {4, 6}},
    {"upper ISO-2022-JP", kUpper, kJapanese, kSubjects, kIconvUpper, {0, 0}, {5, 6}},
    {"upper T.61", kUpper, kT61, kLetter, kIconvUpper, {0, 0}, {5, 6}},
    {"width UTF-8, western", kColumns, kUtf8, kLetter, kStrlen, {7, 29}, {8, 30}},
    {"width UTF-8, mixed", kColumns, kUtf8, kMixed, kStrlen, {4.3, 18}, {5, 20}},
    {"width ISO-2022-JP", kColumns, kJapanese, kSubjects, kWcswidth, {3, 4.4}, {5, 8}},
    {"width ISO-2022-JP, by hand", kColumns, kJapanese, kSubjects, kByHand, {0.55, 1}, {1, 2}},
    {"width T.61", kColumns, kT61, kLetter, kWcswidth, {5.9, 24}, {8, 30}},
    {"truncate UTF-8", kTruncate, kUtf8, kLetter, kPrevChar, {0.64, 0.96}, {1, 1}},
    {"truncate ISO-2022-JP, closed", kClosed, kJapanese, kSubjects, kIconvClosed, {10, 15}, {15, 25}},
    {"truncate T.61", kTruncate, kT61, kLetter, kIconvTruncate, {6.3, 26}, {10, 30}},
    {"split ISO-2022-JP", kSplit, kJapanese, kSubjects, kIconvSplit, {0, 0}, {15, 20}},
    {"split T.61", kSplit, kT61, kLetter, kIconvSplit, {0, 0}, {15, 20}},
    {"wildcard, match", kMatch, kAscii, kMinutes, kMatchers, {1.4, 3.2}, {2, 4}},
    {"wildcard, miss", kMiss, kAscii, kMinutes, kMatchers, {2.3, 8}, {3, 10}},
    {"wildcard, near miss", kMiss, kAscii, kNearMisses, kMatchers, {2.3, 8}, {3, 10}},
    {"format Latin-1", kPrint, kLatin1, kLetter, kSnprintf, {0.85, 0.9}, {1, 1}},
    {"format UTF-8", kPrint, kUtf8, kLetter, kSnprintf, {0.85, 0.9}, {1, 1}},
    {"format ISO-2022-JP", kPrint, kJapanese, kJapaneseLetter, kSnprintf, {0.85, 0.9}, {1, 1}},
    {"format T.61", kPrint, kT61, kLetter, kSnprintf, {0.85, 0.9}, {1, 1}},
};
// clang-format on

// ---- Texts ---------------------------------------------------------------------------------

constexpr size_t kTexts = 16; // of a workload: too much for a branch predictor to learn

// At least so many characters, of pieces in an order that each number has for itself.
Pieces Characters(const Pieces &pieces, size_t number, size_t count)
{
    std::minstd_rand random(static_cast<unsigned>(number + 1));
    Pieces characters;
    while (characters.size() < count)
        for (const char byte : pieces[random() % pieces.size()]) {
            if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80)
                characters.emplace_back();
            characters.back() += byte;
        }
    return characters;
}

// From 3/4 to 5/4 of the mean.
std::vector<Text> MakeTexts(const Workload &workload, size_t mean)
{
    std::vector<Text> texts;
    for (size_t i = 0; i < kTexts; ++i) {
        const size_t size = mean * 3 / 4 + mean * i / (2 * (kTexts - 1));
        texts.push_back(
            workload.job.make(workload.sort, Characters(workload.pieces, i, size), size));
    }
    return texts;
}

// Texts on which all ways agree.
std::vector<Text> CheckedTexts(const Workload &workload, size_t mean)
{
    std::vector<Text> texts = MakeTexts(workload, mean);
    for (const Text &text : texts)
        if (const char *who = bench::Dissenter(text, workload.AllWays(), workload.job.outcome))
            throw std::runtime_error(std::string(workload.name) + ": not our answer: " + who +
                                     ", of \"" + text.bytes + "\"");
    return texts;
}

// ---- Times ---------------------------------------------------------------------------------

constexpr double kSlice = 1e-4; // seconds
constexpr size_t kRounds = 61, kRuns = 3;

volatile size_t theSink; // results are used

[[gnu::noinline]] void Pass(const Way &way, const std::vector<Text> &texts)
{
    for (const Text &text : texts)
        theSink = way.call(text);
}

// Of the calling thread.
double SecondsOf(size_t passes, const Way &way, const std::vector<Text> &texts)
{
    const auto now = [] {
        timespec time;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    for (size_t i = 0; i < passes; ++i)
        Pass(way, texts);
    return now() - start;
}

size_t PassesOfASlice(const Way &way, const std::vector<Text> &texts)
{
    size_t passes = 1;
    while (SecondsOf(passes, way, texts) < kSlice)
        passes *= 2;
    return passes;
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// How many times faster than each peer ours is, and all in short turns: what else the machine does
// falls on all alike.
std::vector<double> Measure(const Workload &workload, size_t mean)
{
    const std::vector<Text> texts = CheckedTexts(workload, mean);
    const Ways ways = workload.AllWays();
    std::vector<size_t> passes;
    for (const Way &way : ways)
        passes.push_back(PassesOfASlice(way, texts));
    std::vector<std::vector<double>> rounds(ways.size() - 1);
    for (size_t round = 0; round < kRounds; ++round) {
        std::vector<double> times;
        for (size_t i = 0; i < ways.size(); ++i)
            times.push_back(SecondsOf(passes[i], ways[i], texts) / static_cast<double>(passes[i]));
        for (size_t i = 1; i < ways.size(); ++i)
            rounds[i - 1].push_back(times[i] / times[0]);
    }
    std::vector<double> ratios(rounds.size());
    std::transform(rounds.begin(), rounds.end(), ratios.begin(), Median);
    return ratios;
}

// ---- Results -------------------------------------------------------------------------------

// The ratios to each peer, of a number of runs through all workloads.
class Results
{
  public:
    Results(const std::vector<const Workload *> &workloads, const std::vector<size_t> &sizes,
            size_t runs)
    {
        for (size_t run = 0; run < runs; ++run)
            for (const Workload *workload : workloads)
                for (const size_t size : sizes)
                    Add(*workload, size, Measure(*workload, size));
    }

    double RatioTo(const Way &peer, const Workload &workload, size_t size) const
    {
        return Median(all.at({&workload, size, &peer}));
    }

    const Way &FastestPeer(const Workload &workload, size_t size) const
    {
        return *std::min_element(
            workload.peers.begin(), workload.peers.end(), [&](const Way &one, const Way &other) {
                return RatioTo(one, workload, size) < RatioTo(other, workload, size);
            });
    }

    double Ratio(const Workload &workload, size_t size) const
    {
        return RatioTo(FastestPeer(workload, size), workload, size);
    }

  private:
    std::map<std::tuple<const Workload *, size_t, const Way *>, std::vector<double>> all;

    void Add(const Workload &workload, size_t size, const std::vector<double> &ratios)
    {
        for (size_t i = 0; i < ratios.size(); ++i)
            all[{&workload, size, &workload.peers[i]}].push_back(ratios[i]);
    }
};

using Selection = std::vector<const Workload *>;

std::string Bound(double ratio)
{
    char text[16] = "-";
    if (ratio > 0)
        std::snprintf(text, sizeof text, "%.4g", ratio);
    return text;
}

// What a ratio reaches, by the two digits that are printed.
const char *Reached(double measured, double floor, double goal)
{
    const double ratio = std::round(measured * 100) / 100;
    if (ratio >= goal)
        return "goal";
    if (floor > 0)
        return ratio >= floor ? "floor" : "below";
    return "-";
}

void PrintRatio(double ratio, double floor, double goal)
{
    std::printf("%10.2f%7s%6s  %-6s", ratio, Bound(floor).c_str(), Bound(goal).c_str(),
                Reached(ratio, floor, goal));
}

// Short texts may cost more, but not more than twice.
void PrintTable(const Selection &workloads)
{
    const Results results(workloads, {16, 64, 4096}, kRuns);
    std::printf("%-30s%-23s%7s%18s%13s%19s\n", "times faster than", "the fastest, at 4096 B",
                "16 B", "64 B  floor  goal", "", "4096 B  floor  goal");
    for (const Workload *each : workloads) {
        const double at16 = results.Ratio(*each, 16), at64 = results.Ratio(*each, 64);
        std::printf("%-30s%-23s%7.2f%s", each->name, results.FastestPeer(*each, 4096).name, at16,
                    at16 < at64 / 2 ? "!" : " ");
        PrintRatio(at64, each->floor.at64, each->goal.at64);
        PrintRatio(results.Ratio(*each, 4096), each->floor.at4096, each->goal.at4096);
        std::printf("\n");
    }
    std::printf("! less than half of the ratio at 64 bytes\n");
}

void PrintPeers(const Selection &workloads)
{
    const std::vector<size_t> sizes = {16, 64, 4096};
    const Results results(workloads, sizes, kRuns);
    for (const Workload *each : workloads)
        for (const Way &peer : each->peers) {
            std::printf("%-30s%-23s", each->name, peer.name);
            for (const size_t size : sizes)
                std::printf("%10.2f", results.RatioTo(peer, *each, size));
            std::printf("\n");
        }
}

// A block for each workload, as gnuplot reads them.
void PrintPoints(const Selection &workloads)
{
    const std::vector<size_t> sizes = {16, 32, 64, 256, 1024, 4096, 16384, 65536};
    const Results results(workloads, sizes, 1);
    for (const Workload *each : workloads) {
        std::printf("%s\t%s\n", each->job.family, each->name);
        for (const size_t size : sizes)
            std::printf("%zu\t%.3f\n", size, results.Ratio(*each, size));
        std::printf("\n\n");
    }
}

// ---- Threads -------------------------------------------------------------------------------

// The time of a call in two threads at once, divided by its time in one alone.
double MeasureThreads(const Workload &workload, size_t mean)
{
    constexpr size_t kTurns = 31, kSlices = 20; // of a turn: longer than a thread takes to begin
    const std::vector<Text> texts = CheckedTexts(workload, mean);
    const Way ours = {"libstr", workload.job.ours};
    const size_t passes = kSlices * PassesOfASlice(ours, texts);
    std::vector<double> ratios;
    for (size_t turn = 0; turn < kTurns; ++turn) {
        const double alone = SecondsOf(passes, ours, texts);
        double together[2];
        std::thread other([&] { together[0] = SecondsOf(passes, ours, texts); });
        together[1] = SecondsOf(passes, ours, texts);
        other.join();
        ratios.push_back((together[0] + together[1]) / 2 / alone);
    }
    return Median(ratios);
}

void PrintThreads(const Selection &workloads)
{
    std::printf("%-30s%10s%10s\n", "two threads to one", "64 B", "4096 B");
    for (const Workload *each : workloads)
        std::printf("%-30s%10.2f%10.2f\n", each->name, MeasureThreads(*each, 64),
                    MeasureThreads(*each, 4096));
}

// ---- Instructions --------------------------------------------------------------------------

} // namespace

// Callgrind counts what is done in here, and finds it by its name: not merged with Pass.
extern "C" [[gnu::noipa]] void bench_counted_pass(const Way &way, const std::vector<Text> &texts)
{
    for (const Text &text : texts)
        theSink = way.call(text);
}

namespace
{

// The counts are Callgrind's; this says what they count, in the same order.
void RunCounted(const Selection &workloads)
{
    for (const Workload *each : workloads)
        for (const size_t size : {64U, 4096U}) {
            const std::vector<Text> texts = MakeTexts(*each, size);
            const Way ours = {"libstr", each->job.ours};
            Pass(ours, texts); // functions are bound, buffers grown, tables read
            bench_counted_pass(ours, texts);
            std::printf("%s\t%zu\t%zu\n", each->name, size, texts.size());
        }
}

} // namespace

int main(int argc, char **argv)
try {
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        throw std::runtime_error("no locale C.UTF-8");
    void (*action)(const Selection &) = PrintTable;
    std::string_view wanted;
    for (const std::string_view argument : std::vector<std::string_view>(argv + 1, argv + argc))
        if (argument == "--peers")
            action = PrintPeers;
        else if (argument == "--threads")
            action = PrintThreads;
        else if (argument == "--points")
            action = PrintPoints;
        else if (argument == "--counted")
            action = RunCounted;
        else
            wanted = argument;
    const bench::ShippedTables tables;
    if (bench::theLatin1 == nullptr)
        throw std::runtime_error("localedef cannot make en_US.ISO-8859-1");
    Selection selection;
    for (const Workload &each : kWorkloads)
        if (std::string_view(each.name).find(wanted) != std::string_view::npos)
            selection.push_back(&each);
    action(selection);
    return 0;
} catch (const std::exception &failure) {
    std::fprintf(stderr, "str_goals: %s\n", failure.what());
    return 1;
}
