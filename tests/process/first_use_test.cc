// SPDX-License-Identifier: Apache-2.0
//
// What processes do in a home when they get in each other's way, are killed, when the kernel refuses
// what they ask for, and when the power is lost: nothing is lost, and the next process is right.
#include "tests/support/casetable.h"
#include "tools/verbs.h"

#include <CLI/CLI.hpp>
#include <malloc.h>
#include <platform/cvc.h>
#include <platform/lkf.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>

namespace
{

namespace fs = std::filesystem;

// Whether to take the time for all cases.
bool TakesAll() { return std::getenv("STR_TEST_SWEEP") != nullptr; }

// A process whose status is 0 when `work` returns true in time.
pid_t Fork(const std::function<bool()> &work)
{
    const pid_t child = fork();
    if (child == 0) {
        er_SetLogSink([](int, const char *) {});
        for (const int fd : {STDOUT_FILENO, STDERR_FILENO}) // which strtool would fill
            dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), fd);
        _exit((alarm(TakesAll() ? 900 : 60), work()) ? 0 : 1);
    }
    return child;
}

int StatusOf(pid_t child)
{
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

// A number that processes share.
std::atomic<int> *Shared()
{
    return new (mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1,
                     0)) std::atomic<int>{0};
}

auto Descriptors() { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); }

// ---- What processes do ---------------------------------------------------------------------

// So many rules that neither file is read or written in one piece.
std::string ManyRules(const std::string &name)
{
    std::string source = "T C " + name;
    for (int rule = 1000; rule < 3500; ++rule)
        source += "\n\\x" + std::to_string(rule).insert(2, "\\x7F=\\x");
    return source;
}

struct FirstUse : CaseTableTest {
    // What a process does in the home.
    struct Work {
        const char *name;
        void (FirstUse::*run)();
        const char *there = nullptr; // a file that is there before, with the compiled table
        int done = 0;                // the status that is right; 1 is that of a failure
        bool usesGlib = false; // which ends the process without memory, even by a stack overflow
    };

    FirstUse()
    {
        home.Write("toupper/87.s", ManyRules("many"));
        Use();
        rules = RulesOf(*used);
        compiled = home.Read("toupper/87.b");
        ReleaseTables();
        used = nullptr;
    }
    void Use()
    {
        const CSDescriptor set = {87, 0};
        used = str_InitCaseTables(&set);
        status = used == nullptr ? 1 : 0;
    }
    void Publish()
    {
        status = str_ReadStrToWkArea(0, nullptr) == 1 ? 0 : 1;
        str_FreeWkArea();
    }
    // The C library does not look again for a converter that it did not find.
    void Convert()
    {
        const bool hasFailed = std::exchange(status, 1) != 0;
        char *text = nullptr;
        int sizes[4];
        Escaped([&] {
            status = cvc_ConvertString(0, 0, "\x1B$B$\"", -1, "ISO-2022-JP", "UCS2,8", &text,
                                       &sizes[0], &sizes[1], &sizes[2], &sizes[3]);
        });
        status = status == 0 && std::strcmp(text, "あ") != 0 ? -1 : hasFailed ? 0 : status;
    }
    void MakeHome()
    {
        setenv("TMPDIR", home.PathOf("tmp").c_str(), 1);
        try {
            CLI::App app;
            strtool::AddInitHome(app, status);
            app.parse("init-home " + home.PathOf("new") + " --compile", false);
        } catch (const std::exception &) {
            status = 1;
        }
        os_SetHome(home.path().c_str());
    }
    // Whether the work is done or, unless it must be, has failed.  Files are whole or not there.
    bool IsRight(const Work &work, bool must) const
    {
        const auto has = [this](const char *name, const std::string &bytes, bool needs) {
            return fs::exists(home.PathOf(name)) ? home.Read(name) == bytes : !needs;
        };
        const bool isMade = work.run == &FirstUse::MakeHome && status == 0;
        return (status == work.done || (status == 1 && !must)) &&
               (used == nullptr || RulesOf(*used) == rules) &&
               has("toupper/87.b", compiled, must && !work.usesGlib) &&
               has("new/toupper/87.b", compiled, isMade) &&
               has("new/toupper/87.s", work.done == 0 ? ManyRules("many") : compiled,
                   isMade || work.done != 0);
    }
    bool Does(const Work &work)
    {
        ReleaseTables();
        used = nullptr;
        (this->*work.run)();
        return IsRight(work, true);
    }
    bool NextProcessDoes(const Work &work)
    {
        return StatusOf(Fork([&] { return (lkf_SetPatience(0), Does(work)); })) == 0;
    }
    void Undo()
    {
        for (const char *made : {"toupper", "sys", "new", "tmp"})
            fs::remove_all(home.PathOf(made));
        for (const char *made : {"toupper", "sys", "tmp"})
            fs::create_directory(home.PathOf(made));
        home.Write("toupper/87.s", ManyRules("many"));
    }

    std::string rules, compiled;
    const CaseTableRecord *used = nullptr;
    int status = 0;
};

const FirstUse::Work kWorks[] = {
    {"compile", &FirstUse::Use},
    {"load", &FirstUse::Use, "toupper/87.b"},
    {"publish", &FirstUse::Publish},
    {"convert", &FirstUse::Convert, nullptr, 0, true},
    {"init-home", &FirstUse::MakeHome, nullptr, 0, true},
    {"init-home beside another file", &FirstUse::MakeHome, "new/toupper/87.s", 1, true},
};
const FirstUse::Work &kCompile = kWorks[0];

// ---- Many processes ------------------------------------------------------------------------

// Many processes begin at once and some are killed: every other one gets the table, one alone makes
// it, and an onlooker finds the file whole from the moment it is there.
TEST_F(FirstUse, IsARaceThatAllWin)
{
    std::mt19937 random(TestSeed());
    std::atomic<int> *const begun = Shared();
    const std::string made = home.PathOf("toupper/87.b"), first = home.PathOf("toupper/first");
    int killed = 0;
    for (int race = 0; race < (TakesAll() ? 1000 : 20) && !HasFailure(); ++race) {
        const pid_t onlooker = Fork([&] {
            while (link(made.c_str(), first.c_str()) != 0)
                usleep(10);
            return home.Read("toupper/first") == compiled;
        });
        pid_t processes[64];
        for (pid_t &process : processes)
            process = Fork([&] {
                while (*begun == race)
                    usleep(10);
                return Does(kCompile);
            });
        ++*begun;
        for (const pid_t process : processes)
            if (random() % 8 == 0) { // though some have ended before
                usleep(1U << random() % 14);
                kill(process, SIGKILL);
            }
        for (const pid_t process : processes) {
            const int ended = StatusOf(process);
            EXPECT_TRUE(ended == 0 || ended == SIGKILL) << ended;
            killed += ended;
        }
        EXPECT_TRUE(StatusOf(onlooker) == 0 && NextProcessDoes(kCompile));
        EXPECT_TRUE(fs::equivalent(made, first)) << "what is there is not made again";
        Undo();
    }
    EXPECT_GT(killed, 0);
}

// What happens to a home in use, and is undone.
const struct Event {
    const char *name;
    bool mayMiss; // meanwhile there need not be a table
    void (*turn)(const std::string &home, bool on);
} kEvents[] = {
    {"removed", true,
     [](const std::string &home, bool on) {
         fs::rename(home + (on ? "/toupper" : "/-"), home + (on ? "/-" : "/toupper"));
     }},
    {"replaced", false,
     [](const std::string &home, bool) { // by one in which nothing is being written
         fs::remove(home + "/new/toupper/casetemp");
         renameat2(AT_FDCWD, (home + "/toupper").c_str(), AT_FDCWD, (home + "/new/toupper").c_str(),
                   RENAME_EXCHANGE);
     }},
    {"made read-only", false,
     [](const std::string &home, bool on) { // as soon as nothing is being written
         const unsigned long flags = MS_REMOUNT | MS_BIND | (on ? unsigned{MS_RDONLY} : 0);
         while (mount(nullptr, home.c_str(), nullptr, flags, nullptr) != 0 && errno == EBUSY)
             usleep(10);
     }},
    {"filled", false,
     [](const std::string &home, bool on) {
         std::ofstream(home + "/full") << std::string(on ? 1 << 20 : 0, 'x');
     }},
};

// One process publishes two tables by turns, others use what is there, and the event comes and goes:
// nobody finds anything but one of the two.  Without the right to mount the last events do nothing.
TEST_F(FirstUse, TakesAHomeAsItIs)
{
    const char *const seconds = std::getenv("STR_TEST_SECONDS");
    const std::chrono::milliseconds each(seconds == nullptr ? 250 : std::atoi(seconds) * 1000 / 4);
    std::atomic<int> *const over = Shared();
    const std::string other = "OTHER" + rules.substr(4);
    const auto publish = [&] {
        for (CaseTableRecord record = {}; *over == 0; str_FreeCTEntry(&record))
            str_CompileCaseTable(++status % 2 == 0 ? "~/other.s" : "~/toupper/87.s",
                                 "~/toupper/87.b", &record);
        return true;
    };
    for (const Event &event : kEvents) {
        const auto read = [&] {
            for (; *over == 0; ReleaseTables()) {
                Use();
                const std::string found = used == nullptr ? "" : RulesOf(*used);
                if (found.empty() ? !event.mayMiss : found != rules && found != other)
                    return false;
            }
            return true;
        };
        const auto turn = [&] {
            if (unshare(CLONE_NEWNS) == 0 &&
                mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0)
                mount("none", home.path().c_str(), "tmpfs", 0, "size=200k");
            Undo();
            home.Write("other.s", ManyRules("other"));
            bool isRight = Does(kCompile) && Does(kWorks[4]);
            std::vector<pid_t> processes = {Fork(publish)};
            while (processes.size() < 7)
                processes.push_back(Fork(read));
            const auto end = std::chrono::steady_clock::now() + each;
            for (bool on = true; !on || std::chrono::steady_clock::now() < end; on = !on) {
                usleep(5000);
                event.turn(home.path(), on);
            }
            *over = 1;
            for (const pid_t process : processes)
                isRight = StatusOf(process) == 0 && isRight;
            Undo();
            return isRight && Does(kCompile);
        };
        *over = 0;
        EXPECT_EQ(StatusOf(Fork(turn)), 0) << event.name;
    }
}

// ---- System calls --------------------------------------------------------------------------

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
    {SYS_mkdir, {EACCES, ENOSPC, EROFS}}, {SYS_chmod, {EPERM, EROFS}}, {SYS_rmdir, {EACCES}},
    {SYS_unlinkat, {EACCES, EROFS}}, {SYS_fallocate, {ENOSPC, EOPNOTSUPP, EINTR}},
#if defined(__x86_64__)
    {SYS_newfstatat, {EACCES, EIO}}, {SYS_fstat, {EIO}}, {SYS_access, {EACCES, EIO}},
    {SYS_chown, {EPERM}},
#else
    {SYS_fcntl64, {EAGAIN, ENOLCK, EINTR}}, {SYS_statx, {EACCES, EIO}}, {SYS_access, {EACCES}},
    {SYS_chown32, {EPERM}},
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) // which need their memory
#elif defined(__x86_64__)
    {SYS_mmap, {ENOMEM}}, {SYS_brk, {ENOMEM}},
#else
    {SYS_mmap2, {ENOMEM}}, {SYS_brk, {ENOMEM}},
#endif
    // clang-format on
};

#if defined(__x86_64__)
constexpr auto kNumber = &user_regs_struct::orig_rax;
constexpr auto kResult = &user_regs_struct::rax;
constexpr auto kFirst = &user_regs_struct::rdi;
constexpr auto kCount = &user_regs_struct::rdx; // of a read or write
#else
constexpr auto kNumber = &user_regs_struct::orig_eax;
constexpr auto kResult = &user_regs_struct::eax;
constexpr auto kFirst = &user_regs_struct::ebx;
constexpr auto kCount = &user_regs_struct::edx;
#endif
using Register = std::remove_reference_t<decltype(std::declval<user_regs_struct>().*kNumber)>;

constexpr size_t kKill = 7; // beyond the errors of a call, and a short read or write

// How one call of a process fails, or all from that one on.
struct Fault {
    int place = 0;   // the number of the call among those that may fail; 0 for none
    size_t kind = 0; // the number of its error; one more makes a read or write short, or kKill
    bool lasts = false;
};

// Whether the first argument of a call is a pipe.  Sanitizers use them; what is tested does not.
bool IsOnPipe(pid_t child, const user_regs_struct &registers)
{
    std::error_code ignored;
    const std::string file =
        "/proc/" + std::to_string(child) + "/fd/" + std::to_string(registers.*kFirst);
    return fs::read_symlink(file, ignored).string().starts_with("pipe:");
}

// Changes the registers of a call that fails by the fault, so that it is not made, and says with
// which error it fails; or kills the process.
void Break(pid_t child, const Fault &fault, int *place, user_regs_struct *registers, int *error)
{
    const auto call = static_cast<long>(registers->*kNumber);
    const auto *const row = std::find_if(std::begin(kCalls), std::end(kCalls),
                                         [call](const auto &each) { return each.call == call; });
    if (row == std::end(kCalls) || IsOnPipe(child, *registers) || ++*place < fault.place ||
        fault.place == 0 || (*place > fault.place && !fault.lasts))
        return;
    if (fault.kind == kKill) {
        kill(child, SIGKILL);
        return;
    }
    const size_t kind = fault.kind % (row->errors.size() + 1);
    if (kind == row->errors.size()) {
        if ((call == SYS_read || call == SYS_write) && registers->*kCount > 1)
            registers->*kCount = 1 + registers->*kCount / 2;
        return;
    }
    if (fault.lasts && row->errors[kind] == EINTR)
        return;
    if (call == SYS_brk) { // which fails by leaving all as it is
        registers->*kFirst = 0;
        return;
    }
    *error = row->errors[kind];
    if (call != SYS_close) // which closes in any case
        registers->*kNumber = static_cast<Register>(-1);
}

constexpr long kMark = SYS_getppid; // the work begins and ends with it
using AfterCall = std::function<void(pid_t child, const user_regs_struct &registers)>;

// Runs the traced child to its end, with the fault in its work.  Returns its status; `calls`
// receives how many calls of the work may fail.
int Trace(pid_t child, const Fault &fault, int *calls, const AfterCall &afterCall)
{
    int status = StatusOf(child), error = 0;
    *calls = 0;
    user_regs_struct registers, entered;
    for (bool works = false, enters = true; WIFSTOPPED(status); enters = !enters) {
        const int signal = WSTOPSIG(status);
        const bool isOurs = signal == SIGTRAP || signal == SIGSTOP;
        ptrace(PTRACE_SYSCALL, child, nullptr, isOurs ? 0 : signal);
        status = StatusOf(child);
        if (ptrace(PTRACE_GETREGS, child, nullptr, &registers) != 0)
            continue;
        if (enters)
            entered = registers;
        registers.*kFirst = entered.*kFirst; // as the program knows that they are left alone
        registers.*kCount = entered.*kCount;
        if (!enters && error != 0)
            registers.*kResult = static_cast<Register>(-std::exchange(error, 0));
        else if (enters && static_cast<long>(registers.*kNumber) == kMark)
            works = !works;
        else if (enters && works)
            Break(child, fault, calls, &registers, &error);
        else if (!enters && works && afterCall)
            afterCall(child, registers);
        ptrace(PTRACE_SETREGS, child, nullptr, &registers);
    }
    return status;
}

// Leaves so little room in the heap that the work must ask for more.
void UseUpTheHeap()
{
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which do not ask for it so
    mallopt(M_TOP_PAD, 0);
    for (const void *const end = sbrk(0); sbrk(0) == end;)
        if (void *volatile block = std::malloc(1000); block == nullptr)
            return;
#endif
}

struct SystemCalls : FirstUse {
    // Does the work in a process that the fault meets, and again without it.  Returns its status.
    int Run(const Work &work, const Fault &fault, int *calls, const AfterCall &afterCall = {})
    {
        Undo();
        if (work.there != nullptr) {
            fs::create_directories(fs::path(home.PathOf(work.there)).parent_path());
            home.Write(work.there, compiled);
        }
        const pid_t child = Fork([&] {
            lkf_SetPatience(50);
            const auto before = Descriptors();
            const bool isTraced = ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0;
            UseUpTheHeap();
            raise(SIGSTOP);
            syscall(kMark);
            (this->*work.run)();
            syscall(kMark);
            return isTraced && IsRight(work, false) && Descriptors() == before && Does(work);
        });
        return Trace(child, fault, calls, afterCall);
    }
};

// The answer is right or none, nothing stays open or locked, what is written is whole or not there,
// and both the same process, unless it is killed, and the next one succeed after that.
TEST_F(SystemCalls, MayFailOrBeTheLast)
{
    int failures = 0;
    const auto run = [&](const Work &work, const Fault &fault) {
        int calls;
        const int ended = Run(work, fault, &calls);
        SCOPED_TRACE(work.name + " "s + std::to_string(fault.place) + " " +
                     std::to_string(fault.kind) + (fault.lasts ? " lasts" : ""));
        const bool isKilled = fault.kind == kKill && calls >= fault.place; // the heap varies a bit
        EXPECT_TRUE(
            ended == (isKilled ? SIGKILL : 0) ||
            (work.usesGlib && WIFSIGNALED(ended) && (fault.lasts || WTERMSIG(ended) != SIGSEGV)))
            << ended;
        EXPECT_TRUE(NextProcessDoes(work));
        ++failures;
        return calls;
    };
    for (const Work &work : kWorks)
        for (const bool lasts : {false, true}) {
            const int calls = run(work, {});
            for (int place = 1; place <= calls && !HasFailure(); ++place)
                for (size_t kind = 0; kind <= (lasts ? kKill - 1 : kKill); ++kind)
                    if (TakesAll() || kind == kKill || kind == static_cast<size_t>(place) % kKill)
                        run(work, {place, kind, lasts});
        }
    EXPECT_GT(failures, 100);
}

// ---- Power ---------------------------------------------------------------------------------

ino_t InodeOf(const std::string &path)
{
    struct stat file = {};
    stat(path.c_str(), &file);
    return file.st_ino;
}

// Adds what may be there when the power is lost now: files that were not synchronised are torn.
// Where the last names are lost too, it is what was there earlier.
using Files = std::map<std::string, std::optional<std::string>>; // nothing for a directory
struct Power {
    std::set<std::pair<ino_t, std::string>> stored; // synchronised, or there before
    std::set<Files> remains;
};
void LosePower(const TempHome &home, ino_t synchronised, Power *power)
{
    for (int way = 0; way < 4; ++way) {
        Files files;
        for (const auto &entry : fs::recursive_directory_iterator(home.path())) {
            const std::string name = fs::relative(entry.path(), home.path());
            std::optional<std::string> &bytes = files[name];
            if (entry.is_directory())
                continue;
            bytes = home.Read(name);
            const std::pair file(InodeOf(entry.path()), *bytes);
            if (file.first == synchronised || power->remains.empty())
                power->stored.insert(file);
            if (way != 0 && power->stored.count(file) == 0)
                bytes = std::string(way == 1 ? bytes->size() : 0, '\0') +
                        bytes->substr(0, way == 2 ? bytes->size() / 2 : 0);
        }
        power->remains.insert(files);
    }
}

TEST_F(SystemCalls, MayLoseTheirPower)
{
    size_t total = 0;
    for (const Work &work : kWorks) {
        int calls;
        Power power;
        const auto look = [&](pid_t child, const user_regs_struct &registers) {
            const bool isDone = registers.*kNumber == SYS_fsync && registers.*kResult == 0;
            const std::string file =
                "/proc/" + std::to_string(child) + "/fd/" + std::to_string(registers.*kFirst);
            LosePower(home, isDone ? InodeOf(file) : 0, &power);
        };
        EXPECT_EQ(Run(work, {}, &calls, look), 0);
        for (const Files &files : power.remains) {
            for (const auto &entry : fs::directory_iterator(home.path()))
                fs::remove_all(entry);
            for (const auto &[name, bytes] : files)
                if (bytes)
                    home.Write(name, *bytes);
                else
                    fs::create_directory(home.PathOf(name));
            EXPECT_TRUE(NextProcessDoes(work)) << work.name;
        }
        total += power.remains.size();
    }
    EXPECT_GT(total, 50U);
}

} // namespace
