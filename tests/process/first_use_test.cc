// SPDX-License-Identifier: Apache-2.0
//
// The first use of a set, which compiles its table, when processes get in each other's way.
#include "tests/support/casetable.h"
#include "tests/support/test.h"

#include <platform/lkf.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

namespace
{

// A process whose status is 0 when `work` returns true, and which does not outlive this one.
pid_t Fork(const std::function<bool()> &work)
{
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        _exit(work() ? 0 : 1);
    }
    return child;
}

int StatusOf(pid_t child)
{
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

class FirstUse : public CaseTableTest
{
  protected:
    // A source with so many rules that neither file is read or written in one piece.
    FirstUse()
    {
        std::string source = "T C many";
        for (int rule = 1000; rule < 3500; ++rule)
            source += "\n"s + static_cast<char>('A' - 10 + rule / 100) + "\\x7F=\\x" +
                      std::to_string(rule).substr(2);
        home.Write("toupper/87.s", source);
        str_CompileCaseTable("~/toupper/87.s", "~/toupper/87.b", &record);
        rules = RulesOf(record);
        str_FreeCTEntry(&record);
        EXPECT_TRUE(FileIsRight());
        Undo();
    }

    bool FileIsRight()
    {
        const bool right =
            str_LoadCaseTable("~/toupper/87.b", &record) == 1 && RulesOf(record) == rules;
        str_FreeCTEntry(&record);
        return right;
    }

    // In a process that has used no set before.
    bool UseTheSet() const
    {
        const CSDescriptor set = {87, 0};
        const CaseTableRecord *const used = str_InitCaseTables(&set);
        return used != nullptr && RulesOf(*used) == rules;
    }

    // Whether another process gets the table, without waiting for the lock.
    bool NextProcessGetsIt()
    {
        const auto use = [&] { return (lkf_SetPatience(0), UseTheSet() && FileIsRight()); };
        return StatusOf(Fork(use)) == 0;
    }

    // Takes away what processes have made.
    void Undo() const
    {
        for (const char *made :
             {"toupper/87.b", "toupper/casetemp", "toupper/first", "sys/toupper.lk"})
            home.Remove(made);
    }

    CaseTableRecord record = {};
    std::string rules;
};

// Many processes begin at once and some are killed: every other one gets the table, one alone
// compiles it, and an onlooker, who loads the file from the moment it is there, finds it whole.
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
            for (alarm(20); link(made.c_str(), first.c_str()) != 0;)
                usleep(10);
            bool right = true;
            for (int time = 0; time < 20; ++time)
                right = FileIsRight() && right;
            return right;
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
            killed += status == 0 ? 0 : 1;
        }
        EXPECT_EQ(StatusOf(onlooker), 0);
        EXPECT_TRUE(NextProcessGetsIt());
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
    for (int stops = 1; WIFSIGNALED(status) && !HasFailure(); ++stops) {
        Undo();
        const pid_t child = Fork([&] {
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
        if (WIFSTOPPED(status))
            status = kill(child, SIGKILL) == 0 ? StatusOf(child) : -1;
        fragments += os_fexists("~/toupper/casetemp");
        files += os_fexists("~/toupper/87.b");
        EXPECT_TRUE(NextProcessGetsIt()) << "killed at stop " << stops;
    }
    EXPECT_EQ(status, 0) << "left alone, it ends well";
    EXPECT_TRUE(fragments > 10 && files > 2) << "while the file is written, and after that";
}

} // namespace
