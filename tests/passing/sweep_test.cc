// SPDX-License-Identifier: Apache-2.0
//
// Every export that calls a service, with each of its calls failing in turn or with other answers
// than those of the default services.
#include "tests/passing/services.h"
#include "tests/support/casetable.h"

#include <pthread.h>
#include <sys/stat.h>

#include <utility>

namespace
{

using passing::failure;
using passing::held;

// What a work answers, as text.
std::string theAnswer;
void Answer(const char *text) { theAnswer = text == nullptr ? "null" : text; }
void Answer(int64_t number) { theAnswer = std::to_string(number); }

const CSDescriptor kMail = DescriptorOf("ISO-2022-JP"), kT61 = DescriptorOf("T.61"),
                   kUtf8 = DescriptorOf("UTF8"), kLatin = DescriptorOf("ISO-8859-1");
constexpr char kTele[] = "Ren\xC2\x65\x1B$BF|",
               kText[] = "a \x1B$B\x46\x7C\x4B\x5C\x1B(B bc\n\x1B$BF|",
               kUpper[] = "A \x1B$B\x46\x7C\x4B\x5C\x1B(B BC\n\x1B$BF|",
               kHalf[] = "a \x1B$B\x46\x7C\x4B\x5C\x1B(B BC\n\x1B$BF|"; // without the first table

const char *const kReplacements[] = {"<b>"};
char theRoom[400];
char *Room(const char *text) { return std::strcpy(theRoom, text); }
unsigned int theLength;
CaseTableRecord theRecord;

const char *Split(decltype(&str_SplitByDispLen) split)
{
    char *second = nullptr;
    const char *const first = split(kText, 4, &second, &theLength, &theLength, &kMail);
    return second == nullptr ? first : std::strcat(std::strcat(Room(first), "|"), second);
}

const char *Upper(const char *text, const CSDescriptor &cs)
{
    int length = 4711;
    const char *const upper = str_ToUpper(text, -1, &length, &cs);
    const bool isGivenUp = Sinks::logged.ends_with("23816 an operation on a text was given up\n");
    return upper == nullptr && length == 4711 && isGivenUp ? "given up" : upper;
}

const char *Format()
{
    str_simplesprintf(&kMail, Room(""), "%d %s, %s.", 7, kText, "b");
    return theRoom;
}

// An escape of class `ends` out of a function that `within` names ends in the work, whose answer is
// then `failing`; * is for one that is not the right one.  Every other escape goes on to the
// caller, except that a table that cannot be had is no table, and then the answer is `without`.
struct Work {
    const char *name;
    void (*run)();
    const char *without = nullptr;
    int ends = 0;
    const char *within = "", *failing = "";
};

// The functions that make or load a table call; none in vain.
constexpr char kTable[] = "lkf_LockFile os_malloc os_realloc os_fopen os_open os_fdopen os_fgets "
                          "os_fread mdc_fclose enc_ConvertLongEncodedStr";
// Those that may fail without harm, and those that do so as well: the compiled file is not written.
constexpr char kHarmless[] = "os_fclose os_fwrite os_rename ext_ChownToVornith";
constexpr char kOpen[] = "os_open os_fdopen";
constexpr char kAll[] = "*", kBlocks[] = "ccs_GetModelEscapes os_malloc os_realloc";
constexpr char kFormat[] = "os_malloc os_realloc ccs_GetCSFlags ccs_Get1stStr ccs_GetNextStr "
                           "ccs_GetCP ccs_GetConfAsciiEscs";
constexpr char kDirectory[] = "os_malloc os_opendir os_readdir os_closedir";
constexpr char kTagged[] = "a(\\1.x", kC[] = "/S=X/C=gb/", kBig[] = "/S=x/C=GB/",
               k100[] = "~/toupper/100.b";

// clang-format off
#define WORK(call) #call, [] { Answer(call); }
const Work kWorks[] = {
    {WORK(str_dispstrlen(kText, &kMail))},
    {WORK(str_truncate(theRoom, kText, 7, &kMail, &theLength))},
    {WORK(str_strncpy(theRoom, kTele, 4, &kT61))},
    {WORK(str_strlcpy(theRoom, kText, 9, &kMail))},
    {WORK(str_strcat(Room("a\x1B$BF|"), "b", &kMail))},
    {WORK(str_strncat(Room("a\x1B$BF|"), "b", 1, &kMail))},
    {WORK(str_strchr(kText, 'c', &kMail))},
    {WORK(Split(str_SplitByDispLen)), nullptr, 3, kBlocks, "*"},
    {WORK(Split(str_SplitByDispBytes)), nullptr, 3, kBlocks, "*"},
    {WORK(str_strucasecmp3(kText, kUpper, &kMail, &kMail)), "1"},
    {WORK(str_strncmp2(kText, kText, 12, 12, &kMail))},
    {WORK(str_strncmp(kText, kText, 4, &kMail))},
    {WORK(str_cmpTextStr("Ab", "aB", 1, &kT61, &kLatin) < 0), "1"},
    {WORK(str_cmpORName(kC, kBig, "T.61", 0, "C,S") > 0), "1"},
    {WORK(Upper(kText, kMail)), kHalf, 5, kAll, "given up"},
    {WORK(Upper("\xC3\xA9", kUtf8))},
    {WORK(str_ToUpperUni("\xC3\xA9", 2, reinterpret_cast<int *>(&theLength), 4))},
    {WORK(str_strcasecmpUni("\xC3\xA9", "e", 4))},
    {WORK(str_USPatternMatch(kText, "\x1F" "bc\x1F", &kMail))},
    {WORK(str_TransformUTF8InputStr(kTagged, -1, "(", kReplacements, ".", '\\', 0, &theLength))},
    {WORK(Format()), nullptr, 3, kFormat, "*"},
    {WORK(str_CompileCaseTable("~/toupper/100.s", k100, &theRecord)), nullptr, 3, kTable, "0"},
    {WORK(str_LoadCaseTable("~/toupper/101.b", &theRecord)), nullptr, 3, kTable, "0"},
    {WORK(str_InitCaseTables(&kLatin) != nullptr || pCaseTabs != nullptr), nullptr, 3, kTable, "0"},
    {WORK(str_ReadStrToWkArea(0, nullptr)), "1", 3, kDirectory, "0"},
};
// clang-format on

class EveryCall : public CaseTableTest
{
  protected:
    EveryCall()
    {
        for (const char *const name : {"6", "100", "101"})
            home.Write("toupper/"s + name + ".s",
                       "T C x\na=A b=B c=C e=E g=G n=N d=DD \\xC2a=\\xC2A");
        str_CompileCaseTable("~/toupper/101.s", "~/toupper/101.b", &theRecord);
        str_FreeCTEntry(&theRecord);
    }

    // Runs the work; the code of the escape that ended it, 0 for none.
    int Run(const Work &work)
    {
        home.Remove("toupper/100.b");
        umask(022);
        theAnswer.clear();
        logged.clear();
        static bool environmentIsOurs;
        environmentIsOurs = true; // unless an escape comes to it
        const int code = Escaped([&] {
            sigjmp_buf *const ours = er_GetCurrEnv();
            work.run();
            environmentIsOurs = er_GetCurrEnv() == ours;
        });
        failure.escapeClass = 0;
        EXPECT_TRUE(environmentIsOurs);
        EXPECT_TRUE(theAnswer == "1" || IsClear(theRecord));
        EXPECT_EQ(er_GetLive(), 0);
        EXPECT_EQ(umask(022), 022U);
        EXPECT_TRUE(os_fexists("~/toupper/100.b") == 0 ||
                    home.Read("toupper/100.b") == home.Read("toupper/101.b"));
        str_FreeCTEntry(&theRecord);
        ReleaseTables();
        EXPECT_TRUE(held.open.empty());
        held.open.clear();
        EXPECT_EQ(held.locks, 0);
        return code;
    }
};

bool Names(const char *names, const std::string &call)
{
    return names == kAll || (" "s + names + " ").find(" " + call + " ") != std::string::npos;
}

constexpr char kEscape[] = "an escape";

// How the work may end after that call has failed.
std::set<std::string> Ends(const Work &work, const std::string &call, int escapeClass,
                           const std::string &right)
{
    if (Names(kHarmless, call))
        return {right};
    std::set<std::string> ends;
    if (work.ends == escapeClass && Names(work.within, call))
        ends = {work.failing};
    if (work.without != nullptr && escapeClass == 3 && Names(kTable, call))
        ends.insert({right, work.without});
    if (ends.empty() || Names("ccs_GetCSFlags ccs_GetCSName", call)) // before the work is protected
        ends.insert(kEscape);
    if (Names(kOpen, call))
        ends.insert(right);
    return ends;
}

// Once, from then on, or twice: the second may be raised while the work recovers from the first.
TEST_F(EveryCall, MayRaiseEscapesAndTheNextIsRight)
{
    for (const Work &work : kWorks) {
        EXPECT_EQ(Run(work), 0) << work.name;
        EXPECT_EQ(Run(work), 0) << work.name;
        const std::string right = theAnswer;
        const size_t blocks = held.blocks.size();
        const auto countFailures = [&](int escapeClass, int calls, int again) {
            failure = {calls, escapeClass, "", again};
            const int code = Run(work);
            SCOPED_TRACE(work.name + " "s + failure.failed + " " + std::to_string(calls));
            std::set<std::string> ends;
            size_t failures = 0;
            std::istringstream failed(failure.failed);
            for (std::string call; failed >> call; ++failures)
                ends.merge(Ends(work, call, escapeClass, right));
            if (failures > 1 && work.without == kHalf)
                ends.insert(kText); // without the second table either
            EXPECT_TRUE(code == 0 || code == passing::kCode);
            EXPECT_TRUE(ends.empty() || ends.count(code == 0 ? theAnswer : kEscape) != 0 ||
                        (ends.count("*") != 0 && theAnswer != right))
                << theAnswer;
            EXPECT_EQ(held.blocks.size(), blocks) << "a leak";
            EXPECT_EQ(Run(work), 0);
            EXPECT_EQ(theAnswer, right);
            return failures;
        };
        for (const int escapeClass : {3, 5})
            for (int calls = 0; countFailures(escapeClass, calls, passing::kNever) == 1; ++calls) {
                countFailures(escapeClass, calls, passing::kAlways);
                for (int again = 0; countFailures(escapeClass, calls, again) == 2; ++again) {
                }
            }
    }
}

// Whatever a thread's results are in goes with the thread, however it ends.
TEST_F(EveryCall, KeepsNothingOfAThreadThatHasEnded)
{
    size_t blocks = 0; // after the first thread
    for (void (*const end)() :
         {+[] {}, +[] {}, +[] { pthread_exit(nullptr); },
          +[] { Escaped([] { er_TracedEscape(3, passing::kCode, __FILE__, __LINE__); }); }}) {
        const auto use = [&] {
            for (const Work &work : kWorks)
                EXPECT_EQ(Run(work), 0) << work.name;
            end();
        };
        const auto call = [](void *body) {
            (*static_cast<decltype(use) *>(body))();
            return static_cast<void *>(nullptr);
        };
        pthread_t thread;
        ASSERT_EQ(pthread_create(&thread, nullptr, call,
                                 const_cast<void *>(static_cast<const void *>(&use))),
                  0);
        pthread_join(thread, nullptr);
        EXPECT_TRUE(blocks == 0 || held.blocks.size() == blocks);
        blocks = held.blocks.size();
    }
}

// What a length service may not answer stops a walk; it never leads it out of the text.
TEST_F(EveryCall, TakesNonsenseForTheEndOfASegment)
{
    for (const Work &work : kWorks)
        for (const int length : {0, -1, -32768, 32767}) {
            passing::nonsense = length;
            EXPECT_EQ(Run(work), 0) << work.name;
            passing::nonsense.reset();
        }
}

TEST(Conversion, TheVariantNamesTheForms)
{
    const char *const forms[] = {"UCS2>UCS2UP", "UCS2,7>UCS2UP,7", "UCS2,8>UCS2UP,8"};
    for (const auto &[variant, form] : {std::pair{0, 0}, {3, 1}, {4, 2}, {5, 0}, {-3, 0}}) {
        int length = 0;
        str_ToUpperUni("a", 0, &length, variant);
        EXPECT_EQ(passing::converted, "12 0 "s + forms[form]);
    }
}

TEST_F(EveryCall, ReferencesThatCannotGrowLeaveTheOthersAlone)
{
    CaseTableRecord records[200] = {};
    for (CaseTableRecord &record : records) {
        int calls = 0;
        for (failure = {0, 3, ""}; str_LoadCaseTable("~/toupper/101.b", &record) == 0;
             failure = {++calls, 3, ""})
            EXPECT_TRUE(IsClear(record));
    }
    failure = {};
    std::set<CaseTableRef> maps;
    for (CaseTableRecord &record : records) {
        maps.insert(record.pByteMap);
        str_FreeCTEntry(&record);
    }
    EXPECT_EQ(maps.size(), 200U);
}

TEST_F(EveryCall, AUniformSetsOwnTableServesAllSegments)
{
    for (const char *set : {"6", "103"})
        home.Write("toupper/"s + set + ".s", "T C x\na="s + set[0]);
    for (const auto &[flags, upper] :
         {std::pair{0U, "\x1B(B6\x1B$Baa"}, {unsigned{CS_FLAG_UNIFORM}, "\x1B(B1\x1B$B11"}}) {
        int length;
        passing::moreFlags = flags;
        EXPECT_EQ(str_ToUpper("\x1B(Ba\x1B$Baa", -1, &length, &kT61), std::string(upper));
        EXPECT_STREQ(str_ToUpper("a", -1, &length, &kMail), "6") << "it has none of its own";
    }
    passing::moreFlags = 0;
}

} // namespace
