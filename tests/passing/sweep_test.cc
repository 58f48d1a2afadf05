// SPDX-License-Identifier: Apache-2.0
//
// Every export that calls a service, with each of its calls failing in turn: the answer or the escape
// is the documented one, nothing stays held, and the next call is right.
#include "services/services.h"
#include "tests/passing/services.h"
#include "tests/support/casetable.h"
#include "tests/support/escape.h"
#include "tests/support/text.h"

#include <platform/os.h>
#include <str/str.h>

#include <cstring>

namespace
{

using namespace std::string_literals;
using passing::failure;
using passing::held;

// What a work answers, as text.
std::string theAnswer;
void Answer(const char *text) { theAnswer = text == nullptr ? "null" : text; }
void Answer(int64_t number) { theAnswer = std::to_string(number); }

const CSDescriptor kMail = DescriptorOf("ISO-2022-JP"), kT61 = DescriptorOf("T.61"),
                   kUtf8 = DescriptorOf("UTF8"), kLatin = DescriptorOf("ISO-8859-1");
constexpr char kText[] = "a \x1B$B\x46\x7C\x4B\x5C\x1B(B bc\n\x1B$BF|",
               kUpper[] = "A \x1B$B\x46\x7C\x4B\x5C\x1B(B BC\n\x1B$BF|",
               kTele[] = "Ren\xC2"
                         "e\x1B$BF|";

const char *const kReplacements[] = {"<b>"};
char theRoom[400];
char *Room(const char *text) { return std::strcpy(theRoom, text); }
unsigned int theLength;
CaseTableRecord theRecord;

// What becomes of an escape of class `ends` out of one of the functions that `within` names, or of
// all: it ends in the work, whose answer is then `failing`; * is for one that is not the right one.
// Every other escape goes on to the caller, except that a table that cannot be had is no table.
struct Work {
    const char *name;
    int ends;
    const char *within;
    const char *failing;
    void (*run)();
    bool needsTables = false;
};

constexpr char kAll[] = "*";

// The functions that the first use of a case table calls; none in vain.
constexpr char kTable[] = "lkf_LockFile os_malloc os_realloc os_fopen os_open os_fdopen os_fgets "
                          "os_fread os_fclose mdc_fclose enc_ConvertLongEncodedStr";

void Split(decltype(&str_SplitByDispLen) split)
{
    char *second = nullptr;
    const char *const first = split(kText, 4, &second, &theLength, &theLength, &kMail);
    theAnswer = first == nullptr ? "null" : first + "|"s + (second == nullptr ? "" : second);
}

// clang-format off
const Work kWorks[] = {
    {"width", 0, "", "", [] { Answer(str_dispstrlen(kText, &kMail)); }},
    {"truncate", 0, "", "", [] { Answer(str_truncate(theRoom, kText, 7, &kMail, &theLength)); }},
    {"strncpy", 0, "", "", [] { Answer(str_strncpy(theRoom, kTele, 4, &kT61)); }},
    {"strlcpy", 0, "", "", [] { Answer(str_strlcpy(theRoom, kText, 9, &kMail)); }},
    {"strcat", 0, "", "", [] { Answer(str_strcat(Room("a\x1B$BF|"), "b", &kMail)); }},
    {"strncat", 0, "", "", [] { Answer(str_strncat(Room("a\x1B$BF|"), "b", 1, &kMail)); }},
    {"strchr", 0, "", "", [] { Answer(str_strchr(kText, 'c', &kMail)); }},
    {"split by columns", 3, "ccs_GetModelEscapes os_malloc os_realloc", "*", [] { Split(str_SplitByDispLen); }},
    {"split by bytes", 3, "ccs_GetModelEscapes os_malloc os_realloc", "*", [] { Split(str_SplitByDispBytes); }},
    {"equal", 0, "", "", [] { Answer(str_strucasecmp3(kText, kUpper, &kMail, &kMail)); }, true},
    {"equal bytes", 0, "", "", [] { Answer(str_strncmp2(kText, kText, 12, 12, &kMail)); }},
    {"equal characters", 0, "", "", [] { Answer(str_strncmp(kText, kText, 4, &kMail)); }},
    {"order", 0, "", "", [] { Answer(str_cmpTextStr("Ab", "aB", 1, &kT61, &kLatin)); }, true},
    {"order of names", 0, "", "", [] { Answer(str_cmpORName("/S=X/C=gb/", "/S=x/C=GB/", "T.61", 0, "C,S")); }, true},
    {"upper case", 5, kAll, "null", [] { int n; Answer(str_ToUpper(kText, -1, &n, &kMail)); }, true},
    {"upper case of UTF-8", 0, "", "", [] { int n; Answer(str_ToUpper("\xC3\xA9", -1, &n, &kUtf8)); }},
    {"upper case by conversion", 0, "", "", [] { int n; Answer(str_ToUpperUni("\xC3\xA9", 2, &n, 4)); }},
    {"equal by conversion", 0, "", "", [] { Answer(str_strcasecmpUni("\xC3\xA9", "e", 4)); }},
    {"match", 0, "", "", [] { Answer(str_USPatternMatch(kText, "\x1F" "bc\x1F", &kMail)); }},
    {"transform", 0, "", "", [] { Answer(str_TransformUTF8InputStr("a(\\1.x", -1, "(", kReplacements, ".", '\\', 0, &theLength)); }},
    {"format", 3, "os_malloc os_realloc ccs_GetCSFlags ccs_Get1stStr ccs_GetNextStr ccs_GetCP ccs_GetConfAsciiEscs", "*", [] { str_simplesprintf(&kMail, Room(""), "%d %s, %s.", 7, kText, "b"); Answer(theRoom); }},
    {"compile", 3, kAll, "0", [] { Answer(str_CompileCaseTable("~/toupper/100.s", "~/toupper/100.b", &theRecord) != 0 || !IsClear(theRecord)); }},
    {"load", 3, kAll, "0", [] { Answer(str_LoadCaseTable("~/toupper/101.b", &theRecord) != 0 || !IsClear(theRecord)); }},
    {"first use", 3, kTable, "0", [] { Answer(str_InitCaseTables(&kLatin) != nullptr || pCaseTabs != nullptr); }},
    {"work area", 3, kAll, "0", [] { Answer(str_ReadStrToWkArea(0, nullptr)); }},
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

    static void CloseAll()
    {
        for (const void *const stream : held.open)
            std::fclose(static_cast<FILE *>(const_cast<void *>(stream)));
        held.open.clear();
    }

    // Runs the work; the code of the escape that ended it, 0 for none.
    int Run(const Work &work)
    {
        std::remove(home.PathOf("toupper/100.b").c_str());
        theAnswer.clear();
        static bool environmentIsOurs; // an escape comes to it, or nobody would see it
        environmentIsOurs = true;
        const int code = Escaped([&] {
            sigjmp_buf *const ours = er_GetCurrEnv();
            work.run();
            environmentIsOurs = er_GetCurrEnv() == ours;
        });
        failure.escapeClass = 0;
        EXPECT_TRUE(environmentIsOurs);
        EXPECT_TRUE(code == 0 || IsClear(theRecord));
        EXPECT_EQ(er_GetLive(), 0);
        EXPECT_TRUE(os_fexists("~/toupper/100.b") == 0 ||
                    home.Read("toupper/100.b") == home.Read("toupper/101.b"))
            << "whole or not there";
        str_FreeCTEntry(&theRecord);
        ReleaseTables();
        if (failure.failed == "os_fclose")
            CloseAll(); // what could not be closed is the caller's
        EXPECT_TRUE(held.open.empty());
        EXPECT_EQ(held.locks, 0);
        return code;
    }
};

bool Names(const char *names, const std::string &call)
{
    return names == kAll || (" "s + names + " ").find(" " + call + " ") != std::string::npos;
}

// Asked before a work protects itself, too.
constexpr char kOutsideToo[] = "ccs_GetCSFlags ccs_GetCSName";

// Writing the compiled file, and closing the source, may fail without harm; so may one table of a
// work area.
bool MayGoOn(const Work &work, const std::string &call, int escapeClass)
{
    return Names("os_fclose mdc_fclose os_open os_fdopen os_fwrite os_rename ext_ChownToVornith",
                 call) ||
           (escapeClass == 3 && work.run == std::end(kWorks)[-1].run);
}

TEST_F(EveryCall, MayRaiseAnEscapeAndTheNextIsRight)
{
    for (const Work &work : kWorks) {
        EXPECT_EQ(Run(work), 0) << work.name;
        EXPECT_EQ(Run(work), 0) << work.name;
        const std::string right = theAnswer;
        const size_t blocks = held.blocks.size();
        for (const int escapeClass : {3, 5})
            for (int calls = 0;; ++calls) {
                failure = {calls, escapeClass, ""};
                const int code = Run(work);
                const std::string call = failure.failed;
                SCOPED_TRACE(work.name + " "s + call + " " + std::to_string(calls) + " " +
                             std::to_string(escapeClass));
                if (call.empty())
                    break;
                const bool ends = work.ends == escapeClass && Names(work.within, call);
                const bool noTable = work.needsTables && escapeClass == 3 && Names(kTable, call);
                const bool asSaid =
                    *work.failing == '*' ? theAnswer != right : theAnswer == work.failing;
                const bool wentOn = theAnswer == right && MayGoOn(work, call, escapeClass);
                if (code != 0)
                    EXPECT_TRUE(code == passing::kCode && (!ends || Names(kOutsideToo, call)))
                        << code;
                else
                    EXPECT_TRUE((ends && asSaid) || noTable || wentOn) << theAnswer;
                EXPECT_EQ(held.blocks.size(), blocks) << "a leak";
                EXPECT_EQ(Run(work), 0);
                EXPECT_EQ(theAnswer, right);
            }
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
    for (const auto &[variant, forms] : {std::pair{0, "UCS2>UCS2UP"},
                                         {3, "UCS2,7>UCS2UP,7"},
                                         {4, "UCS2,8>UCS2UP,8"},
                                         {5, "UCS2>UCS2UP"},
                                         {-3, "UCS2>UCS2UP"}}) {
        int length = 0;
        str_ToUpperUni("a", 0, &length, variant);
        EXPECT_EQ(passing::converted, "12 0 "s + forms);
    }
}

} // namespace
