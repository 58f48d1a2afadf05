// SPDX-License-Identifier: Apache-2.0
//
// Every export in many threads at once, from the first use of every set on: each thread gets the
// answers that one thread alone gets.
#include "tests/support/calls.h"
#include "tests/support/casetable.h"

#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

namespace
{

constexpr int kThreads = 8;

std::atomic<int> theLogs;

void CallAll(Own &own)
{
    for (size_t i = 0; i < std::size(kCalls); ++i)
        kCalls[(i + static_cast<size_t>(own.number) * 7) % std::size(kCalls)].call(own);
}

// The case table of every set, in an order of the thread's own.
void Tables(Own &own)
{
    const int count = ccs_GetSetCount();
    std::map<int, std::string> rules;
    for (int i = 0; i < count; ++i) {
        ccs_SetInfo info;
        ccs_GetSetInfo((i * 7 + own.number * 3) % count, &info);
        const CSDescriptor cs = {info.number, 0};
        CaseTableRecord *record = nullptr;
        if (str_GetTouTable(&cs, &record) == 0)
            continue;
        unsigned char out[2];
        int written = 0;
        for (int byte = 0x21; byte < 0xFF; ++byte) {
            const unsigned char in[] = {static_cast<unsigned char>(byte), 0x61};
            str_UpShiftChar(in, 2, record, out, &written);
            rules[info.number].append(reinterpret_cast<char *>(out), static_cast<size_t>(written));
        }
    }
    for (const auto &[number, found] : rules)
        own.Say((std::to_string(number) + found).c_str());
}

void Records(Own &own)
{
    const std::string path = "~/toupper/7000" + std::to_string(own.number) + ".b";
    CaseTableRecord record = {}, *array = nullptr;
    int32_t count = 0;
    int16_t index = 0;
    own.Say(str_CompileCaseTable("~/toupper/103.s", path.c_str(), &record));
    own.Say(RulesOf(record).c_str());
    str_FreeCTEntry(&record);
    own.Say(str_LoadCaseTable(path.c_str(), &record) == 1 ? RulesOf(record).c_str() : "");
    str_FreeCTEntry(&record);
    own.Say(str_InitControlTable(&index, &array, &count) == array ? index : -1);
    os_free(array);
}

// The work area is the process's, so only what is in a segment of one's own can be told.
void Publish(Own &own)
{
    std::vector<uint16_t> numbers(static_cast<size_t>(ccs_GetSetCount()));
    own.Say(str_ReadStrToWkArea(ccs_GetSetCount(), numbers.data()) + str_IsDataStale());
    str_TotalWorkArea();
    std::vector<char> segment(1 << 20);
    const Image image(segment.data(), segment.size());
    str_FreeWkArea();
}

constexpr void (*kWorks[])(Own &) = {CallAll, Tables, Records, Publish};

struct Threads : CaseTableTest {
    Threads()
    {
        namespace fs = std::filesystem;
        fs::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper"));
        er_SetTraceSink([](int, const char *, int) {});
        er_SetLogSink([](int, const char *) { ++theLogs; });
    }

    static std::string AnswerOf(int number, void (*work)(Own &))
    {
        Own own = {number};
        work(own);
        return own.answer;
    }

    // Runs all works in all threads for so long, and each at least once; then alone.
    static void RunAll(std::chrono::milliseconds time)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        std::string answers[kThreads][std::size(kWorks)];
        std::atomic<int> ready = 0, different = 0;
        std::vector<std::thread> threads;
        for (int number = 0; number < kThreads; ++number)
            threads.emplace_back([&, number] {
                for (++ready; ready < kThreads;)
                    std::this_thread::yield();
                do
                    for (size_t i = 0; i < std::size(kWorks); ++i) {
                        const size_t work = (i + static_cast<size_t>(number)) % std::size(kWorks);
                        std::string &first = answers[number][work];
                        const std::string answer = AnswerOf(number, kWorks[work]);
                        first = first.empty() ? answer : first;
                        different += answer != first;
                    }
                while (std::chrono::steady_clock::now() < end);
            });
        for (std::thread &thread : threads)
            thread.join();
        EXPECT_EQ(different, 0);
        EXPECT_EQ(theLogs, 0);
        for (int number = 0; number < kThreads; ++number)
            for (size_t work = 0; work < std::size(kWorks); ++work)
                EXPECT_EQ(answers[number][work], AnswerOf(number, kWorks[work])) << work;
    }
};

TEST_F(Threads, GetTheAnswersOfOne)
{
    const char *const seconds = std::getenv("STR_TEST_SECONDS");
    RunAll(std::chrono::seconds(seconds == nullptr ? 1 : std::atoi(seconds)));
}

// A segment with the tables of all sets, and who is registered for which.
struct Segment {
    std::vector<uint16_t> numbers = std::vector<uint16_t>(static_cast<size_t>(ccs_GetSetCount()));
    std::vector<char> bytes = std::vector<char>(1 << 20);
    std::optional<Image> image;

    Segment()
    {
        str_ReadStrToWkArea(ccs_GetSetCount(), numbers.data());
        image.emplace(bytes.data(), bytes.size());
        str_FreeWkArea();
    }
    void Attach()
    {
        ccs_SetCSTable(ccs_GetSetCount(), numbers.data());
        str_AttachSMem(image->records, image->count, bytes.data());
    }
};

// Between the two steps of attaching, a set may have no table or another's.
TEST_F(Threads, MayAttachAnImageWhileOthersCompare)
{
    Segment segments[2];
    std::string right;
    for (void (*const work)(Own &) : {CallAll, Tables})
        right += AnswerOf(0, work);
    std::atomic<bool> over = false;
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number)
        threads.emplace_back([&, number] {
            while (!over)
                for (void (*const work)(Own &) : {CallAll, Tables})
                    AnswerOf(number, work);
        });
    for (int time = 0; time < 60; ++time) {
        segments[time % 2].Attach();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    over = true;
    for (std::thread &thread : threads)
        thread.join();
    std::string found;
    for (void (*const work)(Own &) : {CallAll, Tables})
        found += AnswerOf(0, work);
    EXPECT_EQ(found, right);
}

using Children = Threads;

TEST_F(Children, GoOnWhateverOtherThreadsDid)
{
    const std::string right = AnswerOf(0, CallAll);
    std::atomic<bool> over = false;
    std::vector<std::thread> threads;
    for (int number = 1; number < 4; ++number)
        threads.emplace_back([&, number] {
            while (!over)
                AnswerOf(number, Records);
        });
    for (int time = 0; time < 100; ++time) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(20);
            CaseTableRecord record = {};
            const int loaded = str_LoadCaseTable("~/toupper/103.b", &record);
            _exit(loaded == 1 && AnswerOf(0, CallAll) == right ? 0 : 1);
        }
        int status = -1;
        EXPECT_TRUE(waitpid(child, &status, 0) == child && status == 0) << time;
    }
    over = true;
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace
