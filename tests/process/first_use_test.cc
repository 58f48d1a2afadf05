// SPDX-License-Identifier: Apache-2.0
//
// The first use of a set, which compiles its table, when processes get in each other's way.
#include "tests/support/casetable.h"
#include "tests/support/escape.h"
#include "tests/support/random_text.h"

#include <platform/lkf.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <random>

using namespace std::string_literals;

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

bool Succeeds(const std::function<bool()> &work) { return StatusOf(Fork(work)) == 0; }

class FirstUse : public CaseTableTest
{
  protected:
    // A source with so many rules that neither file is read or written in one piece.
    FirstUse()
    {
        std::string source = "T C many";
        for (char lead = 'A'; lead < 'Z'; ++lead)
            for (int rule = 0; rule < 100; ++rule)
                source += "\n"s + lead + "\\x7F=\\x" + std::to_string(rule / 10) +
                          std::to_string(rule % 10);
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

    static bool LockIsFree() // at once
    {
        return Succeeds([] {
            lkf_SetPatience(0);
            return Escaped([] { lkf_LockFile(LKF_EXCLUSIVE, "~/sys/toupper.lk"); }) == 0;
        });
    }

    // Takes away what processes have made.
    void Undo() const
    {
        for (const char *made : {"toupper/87.b", "toupper/casetemp", "sys/toupper.lk"})
            home.Remove(made);
    }

    CaseTableRecord record = {};
    std::string rules;
};

// What an onlooker shares with the main process.
struct Board {
    std::atomic<unsigned> round; // odd between the races, while the files are taken away
    std::atomic<bool> over;
    std::atomic<unsigned> loads, faults, replaced;
};

// Many processes begin at once and some are killed: every other one gets the table, one alone
// compiles it, and an onlooker, who loads the file whenever it is there, finds it whole.
TEST_F(FirstUse, IsARaceThatAllWin)
{
    std::mt19937 random(TestSeed());
    auto *const board = new (mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Board{1, false, 0, 0, 0};
    const pid_t onlooker = Fork([&] {
        unsigned lastRound = 1;
        ino_t lastFile = 0;
        for (; !board->over; usleep(50)) {
            const unsigned round = board->round;
            struct stat file;
            if (round % 2 == 1 || stat(home.PathOf("toupper/87.b").c_str(), &file) != 0)
                continue;
            const bool right = FileIsRight();
            if (board->round != round)
                continue; // it may have been taken away meanwhile
            ++board->loads;
            board->faults += right ? 0 : 1;
            board->replaced += round == lastRound && file.st_ino != lastFile ? 1 : 0;
            lastRound = round;
            lastFile = file.st_ino;
        }
        return true;
    });
    int killed = 0;
    for (int round = 0; round < 50 && !HasFailure(); ++round) {
        pid_t processes[32];
        for (pid_t &process : processes)
            process = Fork([&] {
                while (board->round % 2 == 1)
                    usleep(10);
                return UseTheSet();
            });
        ++board->round;
        for (const pid_t process : processes)
            if (random() % 8 == 0) { // though some have ended before
                usleep(1U << random() % 14);
                kill(process, SIGKILL);
            }
        for (const pid_t process : processes) {
            const int status = StatusOf(process);
            const bool wasKilled = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
            EXPECT_TRUE(status == 0 || wasKilled) << status;
            killed += wasKilled ? 1 : 0;
        }
        EXPECT_TRUE(LockIsFree() && FileIsRight());
        ++board->round;
        Undo();
    }
    board->over = true;
    EXPECT_EQ(StatusOf(onlooker), 0);
    EXPECT_TRUE(killed > 0 && board->loads > 50) << "there was something to see";
    EXPECT_EQ(board->faults, 0u);
    EXPECT_EQ(board->replaced, 0u) << "a file that is there is not made again";
}

// A process is killed at each of its system calls, on the way in and on the way out: the next one
// gets the table.
TEST_F(FirstUse, MayBeKilledAnywhere)
{
    constexpr int kMayNot = 77;
    int status = SIGKILL, fragments = 0, files = 0; // what the kills left
    for (int stops = 1; WIFSIGNALED(status) && !HasFailure(); ++stops) {
        Undo();
        const pid_t child = Fork([&] {
            if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
                _exit(kMayNot);
            raise(SIGSTOP);
            return UseTheSet();
        });
        status = StatusOf(child);
        if (WIFEXITED(status) && WEXITSTATUS(status) == kMayNot)
            GTEST_SKIP() << "processes may not trace each other here";
        for (int stop = 0; stop < stops && WIFSTOPPED(status); ++stop) {
            ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
            status = StatusOf(child);
        }
        if (WIFSTOPPED(status)) {
            EXPECT_EQ(WSTOPSIG(status), SIGTRAP);
            kill(child, SIGKILL);
            status = StatusOf(child);
        }
        fragments += home.List("toupper").count("casetemp") != 0 ? 1 : 0;
        files += home.List("toupper").count("87.b") != 0 ? 1 : 0;
        EXPECT_TRUE(Succeeds([&] { return (lkf_SetPatience(0), UseTheSet() && FileIsRight()); }))
            << "killed at stop " << stops;
        EXPECT_TRUE(LockIsFree()) << "killed at stop " << stops;
    }
    EXPECT_EQ(status, 0) << "left alone, it ends well";
    EXPECT_TRUE(fragments > 10 && files > 2) << "while the file is written, and after that";
}

} // namespace
