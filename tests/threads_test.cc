// SPDX-License-Identifier: Apache-2.0
//
// Every export in many threads at once, from the first use of every set on: each thread gets the
// answers that one thread alone gets.
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

const CSDescriptor kMail = DescriptorOf("ISO-2022-JP"), kT61 = DescriptorOf("T.61"),
                   kUtf8 = DescriptorOf("UTF8"), kEuc = DescriptorOf("EUC-JP");
constexpr char kText[] = "a \x1B$B\x46\x7C\x4B\x5C\x1B(B bc\n\x1B$B#a#b\x1B(B Re: No. 5",
               kOther[] = "A \x1B$B\x46\x7C\x4B\x5C\x1B(B BC\n\x1B$B#A#B\x1B(B RE: no. 5",
               kTele[] = "Ren\xC2\x65 M\xC8uller #", kWide[] = "\xC3\xA9t\xC3\xA9 \xCE\xB1\xCF\x82";

// What one thread works with.
struct Own {
    int number;
    std::string path; // of a compiled table of its own
    char room[1000];
    std::string answer;

    void Say(int64_t value) { answer += std::to_string(value) + " "; }
    void Say(const char *text) { answer += std::string(text == nullptr ? "-" : text) + " "; }
    char *Room(const char *text) { return std::strcpy(room, text); }
};

void Compare(Own &own)
{
    own.Say(str_strcmp(kText, kText, &kMail) + 2 * str_strcmp3(kTele, "Re", &kT61, &kMail));
    own.Say(str_strncmp(kText, kText, 4, &kMail) + 2 * str_strncmp2(kTele, kTele, 4, 4, &kT61));
    own.Say(str_strnccmp3(kText, "a ", 2, &kMail, &kT61));
    own.Say(str_strnbcmp3(kText, "a ", 2, 2, &kMail, &kT61));
    own.Say(str_strucasecmp(kText, kOther, &kMail));
    own.Say(str_strucasecmp3(kTele, "REN\xC2\x45 m\xC8Uller #", &kT61, &kT61));
    own.Say(str_strucasecmp(kWide, "\xC3\x89T\xC3\x89 \xCE\x91\xCE\xA3", &kUtf8));
    own.Say(str_strucasencmp(kText, kOther, 4, &kMail));
    own.Say(str_strucasencmp2(kTele, kTele, 4, 4, &kT61));
    own.Say(str_strucasenccmp3(kText, "A ", 2, &kMail, &kT61));
    own.Say(str_strucasenbcmp3(kText, "A ", 2, 2, &kMail, &kT61));
    own.Say(str_DoCompareToEnd(kText, kOther, 1, &kMail, &kMail));
    own.Say(str_DoCompareByByteLen(kText, kOther, 9, 9, 1, &kMail, &kMail));
    own.Say(str_DoCompareByCharLen(kText, kOther, 9, 1, &kMail, &kMail));
    own.Say(str_cmpTextStr("Ab", "aB", 1, &kT61, &kMail) < 0 ? -1 : 1);
    own.Say(str_cmpORName("/S=X/C=gb/", "/S=x/C=GB/", "T.61", 0, "C,S") == 0 ? 1 : 0);
    own.Say(str_strcasecmpUni("\xC3\xA9", "\xC3\x89", 4));
}

void Cut(Own &own)
{
    unsigned int first = 0, second = 0;
    int length = 0;
    char *rest = nullptr;
    own.Say(str_SplitByDispLen(kText, 4, &rest, &first, &second, &kMail));
    own.Say(rest);
    own.Say(str_SplitByDispBytes(kText, 5, &rest, &first, &second, &kMail));
    own.Say(str_DoSplit(kTele, 0, 3, &rest, &first, &second, &kT61));
    own.Say(str_FindSplitPoint(kText, 0, 3, &kMail));
    own.Say(str_CountSSDispChars("abc", 3, 2, &length, &kT61));
    own.Say(str_CountSSDispBytes("abc", 3, 2, &length, &kT61));
    own.Say(str_dispstrlen(kText, &kMail) + str_dispstrlen(kTele, &kT61));
    own.Say(str_GetDispLen("abc", 3, &kT61) + str_utf8DispStrLen(kWide, -1, 0));
    own.Say(str_truncstrlen(kText, 9, &kMail) + str_FindTruncPt(kTele, 4, &kT61));
    own.Say(str_truncate(own.room, kText, 24, &kMail, &first));
    own.Say(str_truncateclosed(own.room, kText, 9, &kMail));
    own.Say(str_strncpy(own.room, kTele, 40, &kT61));
    own.Say(str_strlcpy(own.room, kText, 40, &kMail));
    own.Say(str_strcat(own.Room("a\x1B$BF|"), "b", &kMail));
    own.Say(str_strncat(own.Room("a\x1B$BF|"), "b", 1, &kMail));
    own.Say(str_GetEscapes(kText, "b", &kMail, &length));
    own.Say(str_strchr(kText, 'c', &kMail));
    own.Say(str_dostrchr("abc", 'c', 3));
}

void Change(Own &own)
{
    int length = 0;
    unsigned int size = 0;
    const char *const replacements[] = {"<b>"};
    for (const auto &[cs, text] : {std::pair{&kMail, kText}, {&kT61, kTele}, {&kUtf8, kWide}})
        own.Say(str_ToUpper(text, -1, &length, cs));
    own.Say(str_ToUpperUni(kWide, -1, &length, 4));
    own.Say(str_TransformUTF8InputStr("a(\\1.x", -1, "(", replacements, ".", '\\', 0, &size));
    own.Say(str_simplesprintf(&kMail, own.room, "%d %s, %-5s.", own.number, kText, "b"));
    own.Say(own.room + 1); // after its number
    own.Say(str_simplesprintf(&kT61, own.room, "%2$s %1$s", kTele, "b"));
    own.Say(str_simplefprintf(&kMail, stderr, "%n", nullptr));
    own.Say(str_simpleprintf(&kMail, "%n", nullptr));
}

void Match(Own &own)
{
    for (const char *const pattern : {"\x1F"
                                      "bc\x1F",
                                      "\x1FNO. 5", "a\x1F"})
        own.Say(str_USPatternMatch(kText, pattern, &kMail));
    own.Say(str_utf8USPatternMatch(kWide, "\xC3\x89\x1F"));
    own.Say(str_EquivTypes(6, 100));
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
    CaseTableRecord record = {}, *array = nullptr;
    int32_t count = 0;
    int16_t index = 0;
    own.Say(str_CompileCaseTable("~/toupper/103.s", own.path.c_str(), &record));
    own.Say(RulesOf(record).c_str());
    str_FreeCTEntry(&record);
    own.Say(str_LoadCaseTable(own.path.c_str(), &record) == 1 ? RulesOf(record).c_str() : "");
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
    thread_local uint32_t used;
    used = 4;
    uint32_t records = 0;
    int32_t count = 0;
    const auto take = [](char *, uint32_t size) {
        const uint32_t begin = used;
        used += (size + 3) / 4 * 4;
        return used <= 1 << 20 ? begin : 0;
    };
    str_CopyWorkAreaToSMem(take, segment.data(), &records, &count);
    str_FreeWkArea();
}

constexpr void (*kWorks[])(Own &) = {Compare, Cut, Change, Match, Tables, Records, Publish};

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
        Own own = {number, "~/toupper/7000" + std::to_string(number) + ".b", {}, {}};
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
    uint32_t records = 0;
    int32_t count = 0;

    Segment()
    {
        str_ReadStrToWkArea(ccs_GetSetCount(), numbers.data());
        static uint32_t used;
        used = 4;
        const auto take = [](char *, uint32_t size) {
            return std::exchange(used, used + (size + 3) / 4 * 4);
        };
        str_CopyWorkAreaToSMem(take, bytes.data(), &records, &count);
        str_FreeWkArea();
    }
    void Attach()
    {
        ccs_SetCSTable(ccs_GetSetCount(), numbers.data());
        str_AttachSMem(records, count, bytes.data());
    }
};

// Between the two steps of attaching, a set may have no table or another's.
TEST_F(Threads, MayAttachAnImageWhileOthersCompare)
{
    Segment segments[2];
    std::string right;
    for (void (*const work)(Own &) : {Compare, Change, Tables})
        right += AnswerOf(0, work);
    std::atomic<bool> over = false;
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number)
        threads.emplace_back([&, number] {
            while (!over)
                for (void (*const work)(Own &) : {Compare, Change, Tables})
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
    for (void (*const work)(Own &) : {Compare, Change, Tables})
        found += AnswerOf(0, work);
    EXPECT_EQ(found, right);
}

using Children = Threads;

TEST_F(Children, GoOnWhateverOtherThreadsDid)
{
    const std::string right = AnswerOf(0, Compare);
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
            _exit(loaded == 1 && AnswerOf(0, Compare) == right ? 0 : 1);
        }
        int status = -1;
        EXPECT_TRUE(waitpid(child, &status, 0) == child && status == 0) << time;
    }
    over = true;
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace
