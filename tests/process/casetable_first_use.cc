// SPDX-License-Identifier: Apache-2.0
//
// The first use of a set, which compiles its table, when processes get in each other's way.
//
//     race [SEED]   many processes begin at once and some of them are killed: every other one gets
//                   the table, one alone compiles it, and no onlooker finds a file that is not whole
//     kill          a process is killed at each of its system calls: the next one gets the table.
//                   Where no process may trace another, ends with 77.
#include "services/services.h"
#include "tests/process/digest.h"
#include "tests/support/escape.h"
#include "tests/support/home.h"

#include <platform/lkf.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <random>

namespace
{

void Check(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "FAILED: %s\n", what);
    std::exit(1);
}

// ---- Processes -----------------------------------------------------------------------------

// A process whose status is 0 when `work` answers true, and which does not outlive this one.
template <class Work>
pid_t Fork(const Work &work)
{
    const pid_t child = fork();
    Check(child >= 0, "a process can be forked");
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        _exit(work() ? 0 : 1);
    }
    return child;
}

int StatusOf(pid_t child)
{
    int status = 0;
    Check(waitpid(child, &status, 0) == child, "a process can be waited for");
    return status;
}

// ---- The set -------------------------------------------------------------------------------

constexpr CSDescriptor kSet = {87, 0};
constexpr char kSource[] = "toupper/87.s", kCompiled[] = "toupper/87.b";
constexpr char kTemporary[] = "toupper/casetemp", kLock[] = "sys/toupper.lk";

// It goes at the end of the program, also when a check ends it.
const TempHome &Home()
{
    static const TempHome home;
    return home;
}
std::string theDigest; // of the right table

std::string PathOf(const char *name) { return Home().PathOf(name); }

bool Exists(const char *name) { return access(PathOf(name).c_str(), F_OK) == 0; }

bool IsRight(const CaseTableRecord &record) { return Digest(record) == theDigest; }

bool FileIsRight()
{
    CaseTableRecord record = {};
    const bool right =
        str_LoadCaseTable(PathOf(kCompiled).c_str(), &record) == 1 && IsRight(record);
    str_FreeCTEntry(&record);
    return right;
}

// In a process that has used no set before.
bool UseTheSet()
{
    const CaseTableRecord *const record = str_InitCaseTables(&kSet);
    return record != nullptr && IsRight(*record);
}

bool LockIsFree() // at once
{
    return StatusOf(Fork([] {
               lkf_SetPatience(0);
               return Escaped([] { lkf_LockFile(LKF_EXCLUSIVE, "~/sys/toupper.lk"); }) == 0;
           })) == 0;
}

// Takes away what processes have made.
void Undo(bool lockFile)
{
    unlink(PathOf(kCompiled).c_str());
    unlink(PathOf(kTemporary).c_str());
    if (lockFile)
        unlink(PathOf(kLock).c_str());
}

// Writes a source with so many rules that neither file is read or written in one piece.
void Prepare()
{
    std::string source = "TOUPPER CHARSET many\n";
    char rule[40];
    for (int lead = 0x21; lead < 0x41; ++lead)
        for (int trail = 0x21; trail < 0x7F; ++trail) {
            std::snprintf(rule, sizeof rule, "\\x%02x\\x%02x = \\x%02x\\x%02x\n", lead, trail, lead,
                          trail + 0x80);
            source += rule;
        }
    Home().Write(kSource, source);
    er_SetTraceSink([](int, const char *, int) {});
    CaseTableRecord record = {};
    Check(str_CompileCaseTable(PathOf(kSource).c_str(), PathOf(kCompiled).c_str(), &record) == 1,
          "the source compiles");
    theDigest = Digest(record);
    str_FreeCTEntry(&record);
    Check(FileIsRight(), "it is written, and loads as it compiled");
    Undo(true);
}

// ---- race ----------------------------------------------------------------------------------

constexpr int kRounds = 50;
constexpr int kProcesses = 32;
constexpr unsigned kOneIn = 8; // killed, though some have ended before

// What the onlooker shares with the main process.
struct Board {
    std::atomic<unsigned> round; // odd while the files are being taken away
    std::atomic<bool> over;
    std::atomic<unsigned> loads, faults, replaced;
};

// Loads the compiled file again and again, whenever it is there.
bool LookOn(Board *board)
{
    er_SetLogSink([](int, const char *) {});
    unsigned lastRound = 1;
    ino_t lastFile = 0;
    for (; !board->over; usleep(50)) {
        const unsigned round = board->round;
        struct stat file;
        if (round % 2 == 1 || stat(PathOf(kCompiled).c_str(), &file) != 0)
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
}

// One round; answers how many were killed.
int RunTogether(std::mt19937 &random)
{
    int start[2]; // all begin when its other end is closed
    Check(pipe(start) == 0, "there is a pipe");
    pid_t processes[kProcesses];
    for (pid_t &process : processes)
        process = Fork([&] {
            close(start[1]);
            char none;
            return read(start[0], &none, 1) == 0 && UseTheSet();
        });
    close(start[0]);
    close(start[1]);
    for (const pid_t process : processes)
        if (random() % kOneIn == 0) {
            usleep(1U << random() % 14);
            kill(process, SIGKILL);
        }
    int killed = 0;
    for (const pid_t process : processes) {
        const int status = StatusOf(process);
        const bool wasKilled = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
        Check(status == 0 || wasKilled, "every survivor gets the table");
        killed += wasKilled ? 1 : 0;
    }
    return killed;
}

int Race(unsigned seed)
{
    std::printf("casetable_first_use race %u\n", seed);
    std::fflush(stdout);
    std::mt19937 random(seed);
    void *const shared =
        mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Check(shared != MAP_FAILED, "there is shared memory");
    auto *const board = new (shared) Board{};
    const pid_t onlooker = Fork([&] { return LookOn(board); });
    int killed = 0;
    for (int round = 0; round < kRounds; ++round) {
        killed += RunTogether(random);
        Check(LockIsFree(), "no lock is left behind");
        Check(FileIsRight(), "the compiled file is left behind");
        ++board->round;
        Undo(round % 2 == 0);
        ++board->round;
    }
    board->over = true;
    Check(StatusOf(onlooker) == 0, "the onlooker ends well");
    std::printf("%d killed; %u loads by the onlooker\n", killed, board->loads.load());
    Check(killed > 0 && board->loads > kRounds, "there was something to see");
    Check(board->faults == 0, "a file that is there is whole");
    Check(board->replaced == 0, "a file that is there is not made again");
    return 0;
}

// ---- kill ----------------------------------------------------------------------------------

constexpr int kSkipped = 77;

// Lets a process use the set and kills it at its stop number `stops`: at the entry of a system call
// when that is odd, at its exit when even.  Answers its status.
int KilledAt(int stops)
{
    const pid_t child = Fork([] {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(kSkipped);
        raise(SIGSTOP);
        return UseTheSet();
    });
    int status = StatusOf(child);
    for (int stop = 0; stop < stops && WIFSTOPPED(status); ++stop) {
        Check(ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0, "it goes on");
        status = StatusOf(child);
    }
    if (!WIFSTOPPED(status))
        return status;
    Check(WSTOPSIG(status) == SIGTRAP, "it stops at a system call");
    kill(child, SIGKILL);
    return StatusOf(child);
}

int Kill()
{
    int stops = 1, status = SIGKILL;
    int fragments = 0, files = 0; // what the kills left behind
    for (; WIFSIGNALED(status); ++stops) {
        Undo(true);
        status = KilledAt(stops);
        if (WIFEXITED(status) && WEXITSTATUS(status) == kSkipped) {
            std::puts("**** SKIPPED: processes may not trace each other here ****");
            return kSkipped;
        }
        fragments += Exists(kTemporary) ? 1 : 0;
        files += Exists(kCompiled) ? 1 : 0;
        const pid_t next = Fork([] {
            lkf_SetPatience(0);
            return UseTheSet() && FileIsRight();
        });
        const bool recovered = StatusOf(next) == 0 && LockIsFree();
        if (!recovered)
            std::fprintf(stderr, "killed at stop %d:\n", stops);
        Check(recovered, "the next process gets the table, and nobody keeps the lock");
    }
    Check(status == 0, "left alone, it ends well");
    std::printf("%d kills: %d left a fragment, %d a compiled file\n", stops - 2, fragments, files);
    Check(fragments > 10 && files > 2, "kills fall while the file is written, and behind that");
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    Check(argc > 1, "there is an argument");
    Prepare();
    if (std::string(argv[1]) == "kill")
        return Kill();
    return Race(argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10))
                         : std::random_device()());
}
