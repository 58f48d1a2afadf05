// SPDX-License-Identifier: Apache-2.0
//
// Case tables: the language of the sources, the compiled files, the registry and publishing.
#include "tests/support/casetable.h"

#include <sys/stat.h>

namespace
{

using namespace std::string_view_literals;

constexpr CSDescriptor kLatin = {100, 0}, kGreek = {126, 0};

struct CaseTables : CaseTableTest {
    CaseTables() { csTable = ccs_GetCSTable(&companion); }

    // What the source compiles to, or the code of what is wrong with it and the log.
    std::string Compile(std::string_view source)
    {
        home.Write("toupper/12.s", source);
        logged.clear();
        const int done = str_CompileCaseTable("~/toupper/12.s", "~/toupper/12.b", &record);
        const std::string rules = TakeRules(done == 1, &record);
        EXPECT_TRUE(done == 0 || rules == RulesOf(home.Read("toupper/12.b")));
        return rules + logged;
    }

    // The slot of a set's table once it has been used; -1 when there is no table.
    static ptrdiff_t Use(const CSDescriptor &cs)
    {
        const CaseTableRecord *const used = str_InitCaseTables(&cs);
        return used == nullptr ? -1 : used - pCaseTabs;
    }

    static ptrdiff_t SlotFor(const CSDescriptor &cs)
    {
        CaseTableRecord *table = nullptr;
        return str_GetTouTable(&cs, &table) == 0 ? -1 : table - pCaseTabs;
    }

    CaseTableRecord record = {};
    int32_t companion;
    void *csTable;
};

// ---- The registry ---------------------------------------------------------------------------

TEST_F(CaseTables, TheRegistryGrowsByFirstUse)
{
    er_SetLogSink(nullptr);
    testing::internal::CaptureStderr();
    for (int use = 0; use < 2; ++use)
        EXPECT_EQ(Use(kLatin), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "libstr: 23803: case table source ~/toupper/100.s could not be compiled: line 0: "s +
                  er_GetCodeText(OS_ESC_FILE) + " (~ is " + home.path() + ")\n");
    EXPECT_TRUE(pCaseTabs == nullptr && InitTabsDone != 0) << "the first slot is given back";
    home.Write("toupper/100.s", "T C latin\na=A");
    EXPECT_EQ(Use(kLatin), 0) << "tried again";
    EXPECT_EQ(SlotFor(kGreek), -1);
    home.Write("toupper/126.s", "T C greek\n\\xE1=\\xC1");
    EXPECT_EQ(SlotFor(kGreek), 1) << "a slot was given back, and is made";
    home.Write("toupper/126.s", "no longer a source");
    EXPECT_EQ(Use(kGreek), 2) << "loaded, not compiled";
    EXPECT_EQ(SlotFor(kGreek), 2) << "the last registration holds";
    ccs_PutToUpperByCSNum(1013, 1, companion, csTable);
    EXPECT_EQ(SlotFor({1013, 0}), -1) << "katakana have no case, whatever their number";
    home.Write("toupper/126.b", "damaged");
    EXPECT_EQ(Use(kGreek), -1) << "never made anew";
    ASSERT_EQ(NumCaseTabs, 3);
    EXPECT_EQ(RulesOf(pCaseTabs[0]), "LATIN 61>41");
    EXPECT_EQ(RulesOf(pCaseTabs[2]), "GREEK E1>C1");
}

// ---- The source's language ------------------------------------------------------------------

std::string Refused(int code, int line)
{
    return std::to_string(code) +
           "23803 case table source ~/toupper/12.s could not be compiled: line " +
           std::to_string(line) + "\n";
}

// clang-format off
const std::pair<std::string, std::string> kSources[] = { // the source, its rules or its fault
    {"TOU CHARSET X\r\n  # note\n \t\f\v\r\n\n# \na=A\nb = B", "X 61>41 62>42"},
    {"T C \xE9-\x01" "a" + std::string(35, '2'), "\xE9-\x01" "A" + std::string(35, '2')},
    {"T C x\0y\0\na=A\0 b=B\n\0c=C\nd=D"s, "X 61>41 64>44"}, // a NUL ends a line
    {"T C x\nc->C d<>D\te=>E f <=- F\ng= G", "X 63>43 64>44 65>45 66>46 67>47"},
    {"T C x\na>=A\n>A = B", "X 3E>00 61>00 61[3E:4100] 3E[41:4200]"}, // > may begin a left side
    {"T C x\na=A> b=-=B c = =C", "X 61>00 62>42 63>00 61:413E 63:3D43"},
    {"T C x\n\\x3D=\\075\\x3d \\\\=\\x00", "X 3D>00 5C>00 3D:3D3D"},
    {"T C " + std::string(40, 'n'), Refused(STR_ESC_NAME_TOO_LONG, 1)},
    {"toupper C x", Refused(STR_ESC_NOT_TOUPPER, 1)},
    {"T CHARSETS x", Refused(STR_ESC_NOT_CHARSET, 1)},
    {"\nTOUPPER C\nx", Refused(STR_ESC_WORD_MISSING, 2)},
    {"T C x\na=\nA", Refused(STR_ESC_WORD_MISSING, 2)},
    {"# note\n\n \n#", Refused(STR_ESC_NO_HEADER, 4)},
    {"T C x\na b", Refused(STR_ESC_NO_OPERATOR, 2)},
    {"T C x\nabc=A", Refused(STR_ESC_LEFT_TOO_LONG, 2)},
    {"T C x\na=A=B", Refused(STR_ESC_RIGHT_TOO_LONG, 2)},
    {"T C x\n\n\\400=A", Refused(ENC_ESC_MALFORMED, 3)},
    // Long lines are read in pieces.
    {"T C x\na=A" + std::string(76, ' ') + "\n=", Refused(STR_ESC_NO_LEFT_SIDE, 3)},
    {"T C x\na=A" + std::string(77, ' ') + "\n=", Refused(STR_ESC_NO_LEFT_SIDE, 4)},
    {"T C x\na=" + std::string(20, 'x'), Refused(STR_ESC_RIGHT_TOO_LONG, 2)},
    {"T C x\n" + std::string(20, 'x') + "=a", Refused(STR_ESC_LEFT_TOO_LONG, 2)},
};
// clang-format on

TEST_F(CaseTables, SourcesAreReadByTheirGrammar)
{
    for (const auto &[source, rules] : kSources)
        EXPECT_EQ(Compile(source), rules) << source.substr(0, 90);
    std::string many = "T C x\n";
    for (int rule = 0; rule < 32768; ++rule)
        many += "ab=A\n";
    EXPECT_EQ(Compile(many), Refused(OS_ESC_MEMORY, 32769)) << "one more than lists may have";
    EXPECT_EQ(str_CompileCaseTable("~/toupper", "~/toupper/12.b", &record), 0);
    EXPECT_EQ(er_GetLastCode(), OS_ESC_FILE) << "not a file";
}

// ---- The compiled file ----------------------------------------------------------------------

constexpr char kRich[] = "T C rich\na=A \\xDF=SS \\xC2\\x61=\\xC2\\x41 \\xC2\\x62=B";
constexpr char kRichRules[] = "RICH 61>41 C2>00 DF>00 DF:5353 C2[61:C241 62:4200]";

TEST_F(CaseTables, TheCompiledFileIsLaidOutByteForByte)
{
    const std::string one = "\1\0\0\0"s, two = "\2\0\0\0"s, twenty = "\x14\0\0\0"s;
    EXPECT_EQ(Compile(kRich), kRichRules);
    std::string file = home.Read("toupper/12.b");
    file.erase(0xA4, 256); // the map, which the rules say
    EXPECT_EQ(file, "\x4E\x61\xBC\0\x0B\0\0\0"s + std::string(44, '\0') + "RICH" +
                        std::string(80, '\0') + "\xA4\0\0\0\xA4\1\0\0"s + twenty + one +
                        "\xA7\1\0\0"s + twenty + one + "\xDFSS" + "\xC2\0\0\0\xB7\1\0\0"s + twenty +
                        two + "a\xC2\x41" + "bB\0"s)
        << "an array is named by its offset";
}

TEST_F(CaseTables, TheCompiledFileGetsItsNameWholeAndIsTheAccounts)
{
    const mode_t mask = umask(0137);
    home.Write("toupper/12.old", "a colleague's");
    ASSERT_EQ(symlink("12.old", home.PathOf("toupper/casetemp").c_str()), 0);
    EXPECT_EQ(Compile("T C x\na=A"), "X 61>41");
    EXPECT_EQ(home.Read("toupper/12.old"), "a colleague's");
    EXPECT_FALSE(home.Remove("toupper/casetemp"));
    EXPECT_EQ(umask(mask), 0137U) << "the caller's mask";
    struct stat status = {};
    ASSERT_EQ(stat(home.PathOf("toupper/12.b").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0664U) << "whatever the mask";
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give the home to another group";
    ASSERT_EQ(chown(home.path().c_str(), 0, getegid() + 1), 0);
    home.Remove("toupper/12.b");
    EXPECT_EQ(str_CompileCaseTable("~/toupper/12.s", "~/toupper/12.b", &record), 1);
    EXPECT_EQ(TakeRules(true, &record), "X 61>41") << "good for this process";
    EXPECT_FALSE(home.Remove("toupper/12.b")) << "others than the account's group write none";
}

TEST_F(CaseTables, FilesAreLoadedAsFarAsTheirCountsGoOrRefused)
{
    EXPECT_EQ(Compile(kRich + " \\xC8\\x61=A"s).substr(0, 5), "RICH ");
    const std::string good = home.Read("toupper/12.b");
    const auto load = [&](const std::string &file) {
        home.Remove("toupper/12.b"); // to write a file anew may wait for the disk
        home.Write("toupper/12.b", file);
        logged.clear();
        const bool done = str_LoadCaseTable("~/toupper/12.b", &record) == 1;
        ASSERT_EQ(TakeRules(done, &record), RulesOf(file)) << testing::PrintToString(file);
        EXPECT_EQ(logged, done ? "" : "0 ~/toupper/12.b\n");
    };
    load(good + "more");
    for (size_t at = 0; at < good.size() && !HasFailure(); ++at) {
        load(good.substr(0, at));
        for (int bit = 0; bit < 8; ++bit) {
            std::string file = good;
            file[at] = static_cast<char>(file[at] ^ 1 << bit);
            load(file);
        }
        for (const uint32_t word : {32767U, 32768U, 1U << 31}) {
            std::string file = good + "   ";
            std::memcpy(&file[at], &word, sizeof word);
            load(file);
        }
    }
}

// ---- Publishing -----------------------------------------------------------------------------

TEST_F(CaseTables, AnImageOfEverySetThatHasASourceServesWhereverItIsAttached)
{
    for (const char *other : {"0.s", "13.s.bak", "casetemp", "s", ".s", "15.S", "16", "17.b"})
        home.Write("toupper/"s + other, "T C x\na=A");
    home.Write("toupper/13.s", "wrong");
    EXPECT_EQ(str_ReadStrToWkArea(companion, csTable), 1);
    EXPECT_EQ(logged, "23803 case table source ~/toupper/13.s could not be compiled: line 1\n"
                      "200 case table 13.s could not be read\n");
    const Image empty(nullptr, 99);
    EXPECT_TRUE(empty.done == 1 && empty.count == 0);
    home.Write("toupper/100.s", kRich);
    home.Write("toupper/126.s", "T C x\na=A");
    for (uint32_t time = 1; time <= 2; ++time) { // compiled, then loaded
        EXPECT_EQ(str_ReadStrToWkArea(companion, csTable), 1);
        EXPECT_EQ(str_TotalWorkArea(), time * (368 + 420)) << "adds to what is there";
    }
    EXPECT_GT(ccs_GetToUpperTable(&kLatin), 2);
    const uint32_t size = 4 + str_TotalWorkArea();
    const Guarded segment(size), elsewhere(size);
    for (uint32_t refuse = 0; refuse < 11; ++refuse)
        EXPECT_EQ(Image(segment.data(), size, refuse).done, 0) << refuse;
    const Image image(segment.data(), size, 11);
    EXPECT_EQ(image.done, 1);
    str_FreeWkArea();
    EXPECT_EQ(str_TotalWorkArea(), 0U);
    std::memcpy(elsewhere.data(), segment.data(), size);
    std::memset(segment.data(), 0xEE, size);

    str_AttachSMem(image.records, image.count, elsewhere.data());
    ASSERT_EQ(NumCaseTabs, 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(RulesOf(pCaseTabs[i]), pCaseTabs[i].NumLeads == 1 ? kRichRules : "X 61>41");
    EXPECT_EQ(str_IsDataStale(), 0);
    home.Remove("toupper/126.b");
    EXPECT_TRUE(Use(kGreek) == -1 && NumCaseTabs == 4) << "none is added";
    EXPECT_FALSE(home.Remove("toupper/126.b")) << "nor is a file made";
    os_SetHome(home.PathOf("nowhere").c_str());
    EXPECT_EQ(str_ReadStrToWkArea(0, nullptr), 0) << "no directory";
}

} // namespace
