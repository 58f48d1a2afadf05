// SPDX-License-Identifier: Apache-2.0
//
// The first use of a set, which compiles its table, when processes get in each other's way.
#include "tests/support/casetable.h"

#include <platform/lkf.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

namespace
{

// A process whose status is 0 when `work` returns true within a minute.
pid_t Fork(const std::function<bool()> &work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit((alarm(60), work()) ? 0 : 1);
    return child;
}

int StatusOf(pid_t child)
{
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

struct FirstUse : CaseTableTest {
    // A source with so many rules that neither file is read or written in one piece.
    FirstUse()
    {
        std::string source = "T C many";
        for (int rule = 1000; rule < 3500; ++rule)
            source += "\n\\x" + std::to_string(rule).insert(2, "\\x7F=\\x");
        home.Write("toupper/87.s", source);
        CaseTableRecord record = {};
        rules = TakeRules(str_CompileCaseTable("~/toupper/87.s", "~/toupper/87.b", &record) == 1,
                          &record);
        Undo();
    }

    // In a process that has used no set before.
    bool UseTheSet() const
    {
        const CSDescriptor set = {87, 0};
        const CaseTableRecord *const used = str_InitCaseTables(&set);
        return used != nullptr && RulesOf(*used) == rules;
    }
    bool FileIsRight() const
    {
        CaseTableRecord record = {};
        return TakeRules(str_LoadCaseTable("~/toupper/87.b", &record) == 1, &record) == rules;
    }
    bool NextProcessGetsIt() const
    {
        const auto use = [this] { return (lkf_SetPatience(0), UseTheSet() && FileIsRight()); };
        return StatusOf(Fork(use)) == 0;
    }
    void Undo() const
    {
        for (const char *made : {"87.b", "casetemp", "first", "../sys/toupper.lk"})
            home.Remove("toupper/"s + made);
    }

    std::string rules;
};

// Many processes begin at once and some are killed: every other one gets the table, one alone makes
// it, and an onlooker finds the file whole from the moment it is there.
TEST_F(FirstUse, IsARaceThatAllWin)
{
    std::mt19937 random(TestSeed());
    auto *const begun =
        new (mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
            std::atomic<int>{0};
    const std::string made = home.PathOf("toupper/87.b"), first = home.PathOf("toupper/first");
    int killed = 0;
    for (int race = 0; race < 50 && !HasFailure(); ++race) {
        const pid_t onlooker = Fork([&] {
            while (link(made.c_str(), first.c_str()) != 0)
                usleep(10);
            return FileIsRight();
        });
        pid_t processes[32];
        for (pid_t &process : processes)
            process = Fork([&] {
                while (*begun == race)
                    usleep(10);
                return UseTheSet();
            });
        ++*begun;
        for (const pid_t process : processes)
            if (random() % 8 == 0) { // though some have ended before
                usleep(1U << random() % 14);
                kill(process, SIGKILL);
            }
        for (const pid_t process : processes) {
            const int status = StatusOf(process);
            EXPECT_TRUE(status == 0 || status == SIGKILL) << status;
            killed += status;
        }
        EXPECT_TRUE(StatusOf(onlooker) == 0 && NextProcessGetsIt());
        EXPECT_TRUE(std::filesystem::equivalent(made, first)) << "what is there is not made again";
        Undo();
    }
    EXPECT_GT(killed, 0);
}

// A process is killed at each of its system calls, on the way in and on the way out: the next one
// gets the table.
TEST_F(FirstUse, MayBeKilledAnywhere)
{
    int status = SIGKILL, fragments = 0, files = 0; // what the kills left
    for (int stops = 1; status == SIGKILL && !HasFailure(); ++stops) {
        Undo();
        const pid_t child = Fork([this] {
            return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 && raise(SIGSTOP) == 0 &&
                   UseTheSet();
        });
        status = StatusOf(child);
        if (!WIFSTOPPED(status))
            GTEST_SKIP() << "processes may not trace each other here";
        for (int stop = 0; stop < stops && WIFSTOPPED(status); ++stop) {
            ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
            status = StatusOf(child);
        }
        if (WIFSTOPPED(status) && kill(child, SIGKILL) == 0)
            status = StatusOf(child);
        fragments += os_fexists("~/toupper/casetemp");
        files += os_fexists("~/toupper/87.b");
        EXPECT_TRUE(NextProcessGetsIt()) << "killed at stop " << stops;
    }
    EXPECT_EQ(status, 0) << "left alone, it ends well";
    EXPECT_TRUE(fragments > 10 && files > 2) << "while the file is written, and after that";
}

} // namespace
