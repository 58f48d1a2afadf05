// SPDX-License-Identifier: Apache-2.0
//
// The first use of a set, which compiles its table, when processes get in each other's way.
#include "tests/support/casetable.h"

#include <platform/lkf.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
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

// ---- System calls that fail ----------------------------------------------------------------

// The errors that a call may give; EINTR only once, since nothing interrupts for ever.
const struct {
    long call;
    std::vector<int> errors;
} kCalls[] = {
    // clang-format off
    {SYS_openat, {EACCES, EMFILE, ENOSPC, EROFS, EINTR, EIO}}, {SYS_read, {EIO, EISDIR, EINTR}},
    {SYS_write, {EIO, ENOSPC, EFBIG, EINTR}}, {SYS_close, {EIO, EINTR}}, {SYS_fsync, {EIO, ENOSPC}},
    {SYS_rename, {EACCES, ENOSPC, EROFS}}, {SYS_unlink, {EACCES, EROFS}}, {SYS_lseek, {EINVAL}},
    {SYS_fcntl, {EAGAIN, ENOLCK, EINTR, EINVAL}}, {SYS_getdents64, {EIO}}, {SYS_fchown, {EPERM}},
    {SYS_fchownat, {EPERM, EIO}}, {SYS_fchmod, {EPERM}}, {SYS_faccessat, {EACCES, EIO}},
#if defined(__x86_64__)
    {SYS_newfstatat, {EACCES, EIO}}, {SYS_fstat, {EIO}}, {SYS_access, {EACCES, EIO}},
#else
    {SYS_fcntl64, {EAGAIN, ENOLCK, EINTR}}, {SYS_statx, {EACCES, EIO}}, {SYS_access, {EACCES}},
#endif
    // clang-format on
};

#if defined(__x86_64__)
constexpr auto kNumber = &user_regs_struct::orig_rax;
constexpr auto kResult = &user_regs_struct::rax;
constexpr auto kCount = &user_regs_struct::rdx; // of a read or write
#else
constexpr auto kNumber = &user_regs_struct::orig_eax;
constexpr auto kResult = &user_regs_struct::eax;
constexpr auto kCount = &user_regs_struct::edx;
#endif
using Register = std::remove_reference_t<decltype(std::declval<user_regs_struct>().*kNumber)>;

constexpr size_t kMostKinds = 7; // the errors of a call, and a short read or write

// How one call of a process fails, or all from that one on.
struct Fault {
    int place;   // the number of the call among those that may fail
    size_t kind; // the number of its error; one more makes a read or write short
    bool lasts;
};

// Changes the registers of a call that fails by the fault, so that it is not made, and says with
// which error it fails.
void Break(const Fault &fault, int *place, user_regs_struct *registers, int *error)
{
    const auto call = static_cast<long>(registers->*kNumber);
    const auto *const row = std::find_if(std::begin(kCalls), std::end(kCalls),
                                         [call](const auto &each) { return each.call == call; });
    if (row == std::end(kCalls) || ++*place < fault.place || (*place > fault.place && !fault.lasts))
        return;
    const size_t kind = fault.kind % (row->errors.size() + 1);
    if (kind == row->errors.size()) {
        if ((call == SYS_read || call == SYS_write) && registers->*kCount > 1)
            registers->*kCount = 1 + registers->*kCount / 2;
        return;
    }
    if (fault.lasts && row->errors[kind] == EINTR)
        return;
    *error = row->errors[kind];
    if (call != SYS_close) // which closes in any case
        registers->*kNumber = static_cast<Register>(-1);
}

constexpr long kMark = SYS_getppid; // the work begins and ends with it

// Runs the traced child to its end, with the fault in its work.  Returns its status; `calls`
// receives how many calls of the work may fail.
int Trace(pid_t child, const Fault &fault, int *calls)
{
    int status = StatusOf(child), error = 0;
    *calls = 0;
    for (bool works = false, enters = true; WIFSTOPPED(status); enters = !enters) {
        user_regs_struct registers;
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        status = StatusOf(child);
        if (ptrace(PTRACE_GETREGS, child, nullptr, &registers) != 0)
            continue;
        if (!enters && error != 0)
            registers.*kResult = static_cast<Register>(-std::exchange(error, 0));
        else if (enters && static_cast<long>(registers.*kNumber) == kMark)
            works = !works;
        else if (enters && works)
            Break(fault, calls, &registers, &error);
        ptrace(PTRACE_SETREGS, child, nullptr, &registers);
    }
    return status;
}

auto Descriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

// The answer is right or none, nothing stays open or locked, the file is whole or not there, and
// both the next call and the next process get the table.
TEST_F(FirstUse, MayFailAtAnySystemCall)
{
    const bool all = std::getenv("STR_TEST_SWEEP") != nullptr;
    ASSERT_TRUE(UseTheSet());
    const std::string compiled = home.Read("toupper/87.b");
    ReleaseTables();
    const auto use = [this] {
        return pCaseTabs == nullptr ? UseTheSet() || NumCaseTabs == 0 : true;
    };
    const auto publish = [] { return (str_ReadStrToWkArea(0, nullptr), str_FreeWkArea(), true); };
    int failures = 0;
    const auto run = [&](const std::function<bool()> &work, bool isMade, const Fault &fault) {
        int calls = 0;
        Undo();
        if (isMade)
            home.Write("toupper/87.b", compiled);
        const pid_t child = Fork([&] {
            lkf_SetPatience(50);
            const auto before = Descriptors();
            const bool isTraced = ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0;
            raise(SIGSTOP);
            syscall(kMark);
            const bool right = work();
            syscall(kMark);
            return isTraced && right && Descriptors() == before && (ReleaseTables(), UseTheSet());
        });
        EXPECT_EQ(Trace(child, fault, &calls), 0);
        EXPECT_TRUE(os_fexists("~/toupper/87.b") == 0 || FileIsRight());
        EXPECT_TRUE(NextProcessGetsIt());
        ++failures;
        return calls;
    };
    for (const auto &[work, isMade] :
         {std::pair<std::function<bool()>, bool>{use, false}, {use, true}, {publish, false}})
        for (const bool lasts : {false, true}) {
            const int calls = run(work, isMade, {INT_MAX, 0, false});
            for (int place = 1; place <= calls && !HasFailure(); ++place)
                for (size_t kind = 0; kind < kMostKinds; ++kind)
                    if (all || kind == static_cast<size_t>(place) % kMostKinds) {
                        SCOPED_TRACE(std::to_string(place) + " " + std::to_string(kind) +
                                     (lasts ? " lasts" : ""));
                        run(work, isMade, {place, kind, lasts});
                    }
        }
    EXPECT_GT(failures, 100);
}

} // namespace
