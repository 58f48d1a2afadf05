// SPDX-License-Identifier: Apache-2.0
//
// What each export traces: its entry and its exit, around those of the exports that it calls.  Then
// every export in many threads at once, from the first use of every set on: each thread gets the
// answers that one thread alone gets.
#include "tests/support/casetable.h"

#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <sstream>
#include <thread>

namespace
{

// ---- A call of each export that needs no file ------------------------------------------------

const CSDescriptor kMail = DescriptorOf("ISO-2022-JP"), kT61 = DescriptorOf("T.61"),
                   kUtf8 = DescriptorOf("UTF8"), kIa5 = DescriptorOf("IA5");
constexpr char kText[] = "a \x1B$B\x46\x7C\x4B\x5C\x1B(B bc\n\x1B$B#a#b\x1B(B Re: No. 5",
               kOther[] = "A \x1B$B\x46\x7C\x4B\x5C\x1B(B BC\n\x1B$B#A#B\x1B(B RE: no. 5",
               kTele[] = "Ren\xC2\x65 M\xC8uller #", kUpTele[] = "REN\xC2\x45 m\xC8Uller #",
               kWide[] = "\xC3\xA9t\xC3\xA9 \xCE\xB1\xCF\x82", kUs[] = "\x1F\x62",
               kUpWide[] = "\xC3\x89T\xC3\x89 \xCE\x91\xCE\xA3", kMiddle[] = "\x1F\x62\x63\x1F";
const char *const kReplacements[] = {"<b>"};

// What a thread works with, and what it was answered.
struct Own {
    int number = 0;
    char room[1000] = "";
    std::string answer = "";
    char *rest = nullptr;
    unsigned int size = 0, restSize = 0;
    int length = 0;

    void Say(int64_t value) { Say(std::to_string(value).c_str()); }
    void Say(const char *text)
    {
        for (const char *const said : {text, static_cast<const char *>(rest)})
            answer += std::string(said == nullptr ? "-" : said) + " ";
        rest = nullptr;
    }
    char *Room(const char *text) { return std::strcpy(room, text); }
};

// clang-format off
#define CALL(...) [](Own &own) { own.Say(__VA_ARGS__); }
const struct {
    void (*call)(Own &own);
    const char *traced; // "name(name())", without str_
} kCalls[] = {
    {CALL(str_strcmp(kText, kText, &kMail)), "strcmp3()"},
    {CALL(str_strcmp3(kTele, "Re", &kT61, &kMail)), "strcmp3()"},
    {CALL(str_strncmp(kText, kText, 4, &kMail)), "strnccmp3()"},
    {CALL(str_strncmp2(kTele, kTele, 4, 4, &kT61)), "strnbcmp3()"},
    {CALL(str_strnccmp3(kText, "a ", 2, &kMail, &kT61)), "strnccmp3()"},
    {CALL(str_strnbcmp3(kText, "a ", 2, 2, &kMail, &kT61)), "strnbcmp3()"},
    {CALL(str_strucasecmp(kText, kOther, &kMail)), "strucasecmp3()"},
    {CALL(str_strucasecmp3(kTele, kUpTele, &kT61, &kT61)), "strucasecmp3()"},
    {CALL(str_strucasecmp(kWide, kUpWide, &kUtf8)), "strucasecmp3()"},
    {CALL(str_strucasencmp(kText, kOther, 4, &kMail)), "strucasenccmp3()"},
    {CALL(str_strucasencmp2(kTele, kTele, 4, 4, &kT61)), "strucasenbcmp3()"},
    {CALL(str_strucasenccmp3(kText, "A ", 2, &kMail, &kT61)), "strucasenccmp3()"},
    {CALL(str_strucasenbcmp3(kText, "A ", 2, 2, &kMail, &kT61)), "strucasenbcmp3()"},
    {CALL(str_DoCompareToEnd(kText, kOther, 1, &kMail, &kMail)), ""},
    {CALL(str_DoCompareByByteLen(kText, kOther, 9, 9, 1, &kMail, &kMail)), ""},
    {CALL(str_DoCompareByCharLen(kText, kOther, 9, 1, &kMail, &kMail)), ""},
    {CALL(str_cmpTextStr("Ab", "aB", 1, &kT61, &kMail) < 0), ""},
    {CALL(str_cmpORName("/S=X/C=gb/", "/S=x/C=GB/", "T.61", 0, "C,S") == 0), ""},
    {CALL(str_strcasecmpUni("\xC3\xA9", "\xC3\x89", 4)), "strcasecmpUni(ToUpperUni()ToUpperUni())"},
    {CALL(str_SplitByDispLen(kText, 4, &own.rest, &own.size, &own.restSize, &kMail)),
     "SplitByDispLen(DoSplit(FindSplitPoint(CountSSDispChars()CountSSDispChars())))"},
    {CALL(str_SplitByDispBytes(kText, 5, &own.rest, &own.size, &own.restSize, &kMail)),
     "SplitByDispBytes(DoSplit(FindSplitPoint(CountSSDispBytes()CountSSDispBytes())))"},
    {CALL(str_DoSplit(kTele, 0, 3, &own.rest, &own.size, &own.restSize, &kT61)),
     "DoSplit(FindSplitPoint(CountSSDispChars()))"},
    {CALL(str_FindSplitPoint(kText, 0, 3, &kMail)),
     "FindSplitPoint(CountSSDispChars()CountSSDispChars())"},
    {CALL(str_CountSSDispChars("abc", 3, 2, &own.length, &kT61)), "CountSSDispChars()"},
    {CALL(str_CountSSDispBytes("abc", 3, 2, &own.length, &kT61)), "CountSSDispBytes()"},
    {CALL(str_dispstrlen(kText, &kMail)), "dispstrlen()"},
    {CALL(str_dispstrlen(kTele, &kT61)), "dispstrlen()"},
    {CALL(str_GetDispLen("abc", 3, &kT61)), ""},
    {CALL(str_utf8DispStrLen(kWide, -1, 0)), "utf8DispStrLen()"},
    {CALL(str_truncstrlen(kText, 9, &kMail)), "truncstrlen()"},
    {CALL(str_FindTruncPt(kTele, 4, &kT61)), ""},
    {CALL(str_truncate(own.room, kText, 24, &kMail, &own.size)), "truncate(truncstrlen())"},
    {CALL(str_truncateclosed(own.room, kText, 9, &kMail)), "truncateclosed()"},
    {CALL(str_strncpy(own.room, kTele, 40, &kT61)), "strncpy(truncstrlen())"},
    {CALL(str_strlcpy(own.room, kText, 40, &kMail)), "strncpy(truncstrlen())"},
    {CALL(str_strcat(own.Room("a\x1B$BF|"), "b", &kMail)), "strcat()"},
    {CALL(str_strncat(own.Room("a\x1B$BF|"), "b", 1, &kMail)), "strncat()"},
    {CALL(str_GetEscapes(kText, "b", &kMail, &own.length)), ""},
    {CALL(str_strchr(kText, 'c', &kMail)), "strchr()"},
    {CALL(str_dostrchr("abc", 'c', 3)), ""},
    {CALL(str_ToUpper(kText, -1, &own.length, &kMail)), "ToUpper()"},
    {CALL(str_ToUpper(kTele, -1, &own.length, &kT61)), "ToUpper()"},
    {CALL(str_ToUpper(kWide, -1, &own.length, &kUtf8)), "ToUpper()"},
    {CALL(str_ToUpperUni(kWide, -1, &own.length, 4)), "ToUpperUni()"},
    {CALL(str_TransformUTF8InputStr("a(\\1.x", -1, "(", kReplacements, ".", '\\', 0, &own.size)),
     "TransformUTF8InputStr()"},
    {CALL((str_simplesprintf(&kMail, own.room, "%d %s.", own.number, kText), own.room)),
     "simplesprintf()"},
    {CALL((str_simplesprintf(&kT61, own.room, "%2$s %1$s", kTele, "b"), own.room)),
     "simplesprintf()"},
    {CALL(str_simplefprintf(&kMail, stderr, "%n", nullptr)), "simplefprintf()"},
    {CALL(str_simpleprintf(&kMail, "%n", nullptr)), "simpleprintf()"},
    {CALL(str_USPatternMatch("a", "b", &kMail)), "USPatternMatch("},
    {CALL(str_USPatternMatch(kText, kUs, &kMail)), "USPatternMatch("},
    {CALL(str_USPatternMatch(kText, kMiddle, &kMail)), "USPatternMatch()"},
    {CALL(str_USPatternMatch("ab", "a\x1F\x62", &kIa5)), "USPatternMatch("}, // one segment
    {CALL(str_USPatternMatch("a\xE9", "a\x1F\x62", &kIa5)), "USPatternMatch()"},
    {CALL(str_utf8USPatternMatch(kWide, "\xC3\x89\x1F")), "utf8USPatternMatch()"},
    {CALL(str_EquivTypes(6, 100)), ""},
};
// clang-format on

// ---- What each traces -----------------------------------------------------------------------

std::string Shown()
{
    std::istringstream lines(Sinks::traced);
    std::string shown;
    for (std::string line; lines >> line;) {
        const bool enters = line[2] == '+';
        shown += (enters ? line.substr(7) : "") + (line[1] == '9' ? ")(" : "][")[enters];
    }
    return shown;
}

using Traces = CaseTableTest;

TEST_F(Traces, TellEveryEntryAndExit)
{
    static CaseTableRecord record;
    const std::pair<void (*)(Own &), const char *> others[] = {
        // of class 17 "name[]"
        // clang-format off
        {CALL(str_CompileCaseTable("~/none", "~/none.b", &record)), "CompileCaseTable()"},
        {CALL(str_LoadCaseTable("~/none.b", &record)), "LoadCaseTable()"},
        {CALL(str_InitCaseTables(&kMail) == nullptr), "InitCaseTables[CompileCaseTable()]"},
        {CALL(str_ReadStrToWkArea(0, nullptr)), "ReadStrToWkArea[]"},
        // clang-format on
    };
    Own own;
    const auto check = [&](auto call, const std::string &traces) {
        call(own); // for the case tables
        const Sinks sinks;
        er_SubSystemLoggingLevel = 10;
        call(own);
        EXPECT_EQ(Shown(), traces);
        Sinks::traced.clear();
        er_SubSystemLoggingLevel = 9;
        call(own);
        EXPECT_EQ(Shown().find('('), std::string::npos);
    };
    for (const auto &[call, traces] : others)
        check(call, traces);
    std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper"));
    for (const auto &[call, traces] : kCalls)
        check(call, traces);
}

// ---- In many threads ------------------------------------------------------------------------

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
