// SPDX-License-Identifier: Apache-2.0
//
// The default services around files, and those of case tables: what they do where the system says
// no, and between processes.
#include "services/services.h"

#include "tests/support/escape.h"
#include "tests/support/home.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <platform/ccs.h>
#include <platform/enc.h>
#include <platform/ext.h>
#include <platform/lkf.h>
#include <platform/mdc.h>
#include <platform/os.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <grp.h>
#include <numeric>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

int theFsyncError;     // what fsync fails with; 0 for the real one
off_t theSyncedLength; // of the file that fsync was called for last

} // namespace

// Stands before the C library's, so that a disk can fail.
extern "C" int fsync(int fd)
{
    struct stat file;
    theSyncedLength = fstat(fd, &file) == 0 ? file.st_size : -1;
    errno = theFsyncError;
    return theFsyncError != 0 ? -1 : static_cast<int>(syscall(SYS_fsync, fd));
}

namespace
{

using std::chrono::milliseconds;
using std::chrono::steady_clock;

bool IsOpen(int fd) { return fcntl(fd, F_GETFD) != -1; }

// The number that the next descriptor gets.
int NextDescriptor()
{
    const int fd = dup(0);
    close(fd);
    return fd;
}

// ---- The home ------------------------------------------------------------------------------

TEST(ServiceHome, IsTheHostsThenTheEnvironmentsThenTheInstalledOne)
{
    unsetenv("STR_HOME");
    const std::string installed = os_GetHome();
    EXPECT_EQ(installed.substr(installed.rfind('/')), "/libstr");
    setenv("STR_HOME", "/from/environment", 1);
    EXPECT_STREQ(os_GetHome(), "/from/environment");
    std::string host = "/from/host";
    EXPECT_EQ(os_SetHome(host.c_str()), 0);
    host[1] = '\0';
    EXPECT_STREQ(os_GetHome(), "/from/host") << "a copy";
    EXPECT_EQ(os_SetHome(std::string(PATH_MAX, 'x').c_str()), -1);
    EXPECT_STREQ(os_GetHome(), "/from/host");
    EXPECT_EQ(os_SetHome(""), 0);
    EXPECT_STREQ(os_GetHome(), "/from/environment");
    setenv("STR_HOME", "", 1);
    EXPECT_EQ(os_SetHome(nullptr), 0);
    EXPECT_EQ(os_GetHome(), installed);
    unsetenv("STR_HOME");
}

TEST(ServiceHome, EveryPathMayLieInIt)
{
    const TempHome home;
    close(os_open("~/toupper/casetemp", O_WRONLY | O_CREAT, 0664));
    EXPECT_EQ(os_rename("~/toupper/casetemp", "~/toupper/6.b"), 0);
    EXPECT_EQ(home.List("toupper"), std::vector<std::string>{"6.b"});
    EXPECT_NE(os_fexists("~/toupper/6.b"), 0);
    EXPECT_EQ(os_fexists("~/toupper/6.s"), 0);
    EXPECT_NE(os_fexists("~/toupper"), 0);
    home.Write("only-here", "");
    EXPECT_EQ(os_fexists("only-here"), 0) << "below the working directory";
    EXPECT_EQ(os_fexists("~"), 0) << "a name like any other";
}

TEST(ServiceHome, PathsTooLongFailAsTheFunctionDoes)
{
    const std::string tooLong = "~/" + std::string(PATH_MAX - 2, 'x');
    const char *const path = tooLong.c_str();
    EXPECT_EQ(Escaped([=] { os_fopen(path, "r"); }), OS_ESC_FILE);
    EXPECT_EQ(Escaped([=] { os_open(path, O_RDONLY, 0); }), OS_ESC_FILE);
    EXPECT_EQ(Escaped([=] { os_opendir(path); }), OS_ESC_FILE);
    EXPECT_EQ(Escaped([=] { lkf_LockFile(LKF_SHARED, path); }), OS_ESC_FILE);
    EXPECT_EQ(os_fexists(path), 0);
    EXPECT_EQ(os_rename(path, "x"), -1);
    EXPECT_EQ(os_rename("x", path), -1);
    EXPECT_NE(ext_ChownToVornith(path), 0);
}

// ---- os_ -----------------------------------------------------------------------------------

TEST(OsFiles, WhatCannotBeOpenedIsAnEscapeAndLeavesNothingOpen)
{
    const TempHome home;
    home.Write("file", "");
    const int next = NextDescriptor();
    EXPECT_EQ(Escaped([] { os_fopen("~/none", "r"); }), OS_ESC_FILE);
    EXPECT_EQ(Escaped([] { os_fopen("~/file", ""); }), OS_ESC_FILE);
    const std::string longMode(70, 'r');
    EXPECT_EQ(Escaped([&] { os_fopen("~/file", longMode.c_str()); }), OS_ESC_FILE);
    EXPECT_EQ(Escaped([] { os_open("~/none", O_RDONLY, 0); }), OS_ESC_FILE);
    EXPECT_EQ(Escaped([] { os_opendir("~/file"); }), OS_ESC_FILE);
    EXPECT_EQ(Escaped([] { os_fdopen(os_open("~/file", O_RDONLY, 0), "w"); }), OS_ESC_FILE);
    EXPECT_EQ(NextDescriptor(), next);
}

TEST(OsFiles, AreClosedInProgramsExecuted)
{
    const TempHome home;
    FILE *const stream = os_fopen("~/file", "w+");
    EXPECT_EQ(fcntl(fileno(stream), F_GETFD), FD_CLOEXEC);
    os_fclose(stream);
    const int fd = os_open("~/file", O_RDONLY, 0);
    EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
    close(fd);
}

TEST(OsFiles, LinesEndAtTheirNewlineOrTheBuffer)
{
    const TempHome home;
    home.Write("lines", std::string("ab\n\nabcdef\0g", 12));
    FILE *const stream = os_fopen("~/lines", "r");
    char line[5];
    for (const char *const expected : {"ab\n", "\n", "abcd", "ef"}) {
        ASSERT_EQ(os_fgets(line, sizeof line, stream), line);
        EXPECT_STREQ(line, expected);
    }
    EXPECT_EQ(os_fgets(line, 1, stream), line);
    EXPECT_EQ(line[0], '\0');
    EXPECT_EQ(os_fgets(line, sizeof line, stream), nullptr);
    EXPECT_EQ(os_fgets(line, 0, stream), nullptr);
    EXPECT_EQ(os_fclose(stream), 0);
}

TEST(OsFiles, AnErrorIsNoEndOfFile)
{
    const TempHome home;
    char line[8];
    FILE *stream = os_fopen("~/toupper", "r");
    EXPECT_EQ(Escaped([&] { os_fgets(line, sizeof line, stream); }), OS_ESC_FILE);
    EXPECT_EQ(os_fread(line, 1, sizeof line, stream), 0u);
    EXPECT_EQ(os_fclose(stream), 0);
    stream = os_fopen("/proc/self/mem", "r+");
    EXPECT_EQ(os_fread(line, 1, sizeof line, stream), 0u);
    EXPECT_EQ(Escaped([=] { os_fclose(stream); }), 0) << "nothing was written";
}

// A pipe of which a thread writes a part, interrupts the reader, and writes the rest.
void ReadWithInterruption(const std::function<void(FILE *)> &read)
{
    struct sigaction before, interrupting = {};
    interrupting.sa_handler = [](int) {};
    sigaction(SIGUSR1, &interrupting, &before);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::thread writer([&, reader = pthread_self()] {
        EXPECT_EQ(write(ends[1], "ab", 2), 2);
        std::this_thread::sleep_for(milliseconds(50));
        pthread_kill(reader, SIGUSR1);
        std::this_thread::sleep_for(milliseconds(20));
        EXPECT_EQ(write(ends[1], "c\n", 2), 2);
        close(ends[1]);
    });
    FILE *const stream = os_fdopen(ends[0], "r");
    read(stream);
    writer.join();
    os_fclose(stream);
    sigaction(SIGUSR1, &before, nullptr);
}

TEST(OsFiles, SignalsDoNotEndTheReading)
{
    char text[8] = "";
    ReadWithInterruption([&](FILE *stream) { os_fgets(text, sizeof text, stream); });
    EXPECT_STREQ(text, "abc\n");
    size_t items = 0;
    ReadWithInterruption([&](FILE *stream) { items = os_fread(text, 2, 3, stream); });
    EXPECT_EQ(items, 2u);
}

TEST(OsFiles, LossIsAnEscapeAndTheHandlerCanClose)
{
    FILE *stream = os_fopen("/dev/full", "w");
    const int fd = fileno(stream);
    EXPECT_EQ(os_fwrite("abc", 1, 3, stream), 3u);
    EXPECT_EQ(Escaped([=] { os_fclose(stream); }), OS_ESC_FILE) << "when it is flushed";
    EXPECT_TRUE(IsOpen(fd));
    EXPECT_EQ(Escaped([=] { os_fclose(stream); }), 0);
    EXPECT_FALSE(IsOpen(fd));

    static const char large[100000] = {};
    stream = os_fopen("/dev/full", "w");
    EXPECT_EQ(Escaped([=] { os_fwrite(large, 1, sizeof large, stream); }), OS_ESC_FILE);
    EXPECT_EQ(Escaped([=] { os_fclose(stream); }), 0);
    EXPECT_FALSE(IsOpen(fd));

    for (const size_t pending : {0u, 3u}) {
        stream = os_fopen("/dev/full", "w");
        EXPECT_LT(mdc_fwrite(large, 1, sizeof large, stream), sizeof large) << "not told so far";
        EXPECT_EQ(mdc_fwrite(large, 1, pending, stream), pending);
        EXPECT_EQ(Escaped([=] { os_fclose(stream); }), OS_ESC_FILE);
        EXPECT_EQ(os_fclose(stream), 0);
    }

    stream = os_fopen("/dev/full", "w");
    EXPECT_EQ(Escaped([=] { os_fwrite(large, 1, sizeof large, stream); }), OS_ESC_FILE);
    mdc_fclose(stream);
    stream = os_fopen("/dev/full", "w");
    os_fwrite("abc", 1, 3, stream);
    EXPECT_EQ(Escaped([=] { os_fclose(stream); }), OS_ESC_FILE) << "another stream, same address";
    os_fclose(stream);
}

TEST(OsFiles, AreOnTheDiskBeforeTheyAreClosed)
{
    const TempHome home;
    struct Row {
        int error, first;
    };
    for (const auto [error, first] : {Row{0, 0}, Row{EINVAL, 0}, Row{ENOTSUP, 0}, Row{EROFS, 0},
                                      Row{EIO, OS_ESC_FILE}, Row{ENOSPC, OS_ESC_FILE}}) {
        FILE *const stream = os_fopen("~/file", "w");
        os_fwrite("abc", 1, 3, stream);
        theFsyncError = error;
        theSyncedLength = -1;
        EXPECT_EQ(Escaped([=] { os_fclose(stream); }), first) << error;
        EXPECT_EQ(theSyncedLength, 3);
        if (first != 0) {
            EXPECT_EQ(Escaped([=] { os_fclose(stream); }), 0) << error;
        }
        theFsyncError = 0;
    }
    FILE *const stream = os_fopen("~/file", "r");
    theFsyncError = EIO;
    EXPECT_EQ(Escaped([=] { os_fclose(stream); }), 0) << "only read";
    theFsyncError = 0;
}

TEST(OsFiles, EachOpenDirectoryHasAnEntryOfItsOwn)
{
    const TempHome home;
    const std::string longest(NAME_MAX, 'x');
    home.Write("toupper/" + longest, "");
    home.Write("sys/toupper.lk", "");
    const auto next = [](void *dir) {
        os_dirent *entry = os_readdir(dir);
        while (entry != nullptr && entry->name[0] == '.')
            entry = os_readdir(dir);
        return entry;
    };
    void *const first = os_opendir("~/toupper");
    void *const second = os_opendir("~/sys");
    const os_dirent *const entry = next(first);
    EXPECT_STREQ(next(second)->name, "toupper.lk");
    EXPECT_EQ(entry->name, longest);
    EXPECT_EQ(entry->name, reinterpret_cast<const char *>(entry) + 10);
    EXPECT_EQ(next(first), nullptr);
    EXPECT_EQ(os_closedir(first), 0);
    EXPECT_EQ(os_closedir(second), 0);
}

TEST(OsNumbers, HaveDigitsOfTheirBase)
{
    struct Row {
        unsigned long value;
        int base, minDigits;
        std::string text;
    };
    const std::string ones(sizeof(long) * CHAR_BIT, '1');
    for (const Row &row :
         {Row{12, 10, 1, "12"}, Row{0, 10, 1, "0"}, Row{0, 10, -3, "0"}, Row{7, 10, 3, "007"},
          Row{1234, 10, 3, "1234"}, Row{35, 36, 1, "z"}, Row{36, 36, 1, "10"},
          Row{255, 16, 4, "00ff"}, Row{~0UL, 2, 1, ones}, Row{~0UL, 10, 1, std::to_string(~0UL)},
          Row{5, 10, 90, std::string(89, '0') + "5"}, Row{5, 1, 1, ""}, Row{5, 0, 1, ""},
          Row{5, -10, 1, ""}, Row{5, 37, 1, ""}}) {
        char text[100];
        int length = -1;
        os_ul2str(row.value, row.base, row.minDigits, text, &length);
        EXPECT_EQ(text, row.text);
        EXPECT_EQ(length, static_cast<int>(row.text.size()));
    }
}

// ---- lkf_ ----------------------------------------------------------------------------------

constexpr char kLock[] = "~/sys/toupper.lk";

int TryLock(int mode)
{
    return Escaped([=] { lkf_LockFile(mode, kLock); });
}

// The exit status of a process that is made for `body`.
int InChild(const std::function<int()> &body)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(body());
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Processes that hold on until they are killed and tell their number when they are ready.
class Held
{
  public:
    explicit Held(const std::function<void(const std::function<void()> &hold)> &body)
    {
        EXPECT_EQ(pipe(ends_), 0);
        child_ = fork();
        if (child_ == 0)
            body([this] {
                const pid_t self = getpid();
                if (write(ends_[1], &self, sizeof self) == sizeof self)
                    sleep(60);
                _exit(1);
            });
    }
    ~Held()
    {
        close(ends_[0]);
        close(ends_[1]);
    }
    pid_t pid() const { return child_; }
    pid_t NextReady() const
    {
        pid_t pid = -1;
        EXPECT_EQ(read(ends_[0], &pid, sizeof pid), static_cast<ssize_t>(sizeof pid));
        return pid;
    }
    void Kill() const
    {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }

  private:
    int ends_[2];
    pid_t child_;
};

class LockFile : public testing::Test
{
  protected:
    LockFile() { lkf_SetPatience(0); }
    ~LockFile() override { lkf_SetPatience(30000); }

    // Whether another process would get the lock now.
    static bool IsGranted(int mode)
    {
        return InChild([=] { return TryLock(mode) == 0 ? 1 : 0; }) == 1;
    }

    const TempHome home_;
};

TEST_F(LockFile, ExcludesOtherProcesses)
{
    struct Row {
        int held, wanted;
        bool granted;
    };
    for (const auto [held, wanted, granted] :
         {Row{LKF_SHARED, LKF_SHARED, true}, Row{LKF_SHARED, LKF_EXCLUSIVE, false},
          Row{LKF_EXCLUSIVE, LKF_SHARED, false}, Row{LKF_EXCLUSIVE, LKF_EXCLUSIVE, false}}) {
        const int handle = lkf_LockFile(held, kLock);
        EXPECT_EQ(IsGranted(wanted), granted) << held << " " << wanted;
        lkf_UnLockFile(handle);
        EXPECT_TRUE(IsGranted(wanted)) << held << " " << wanted;
    }
}

TEST_F(LockFile, GoesWithAKilledHolderWhoseChildLives)
{
    const Held holder([](const auto &hold) {
        lkf_LockFile(LKF_EXCLUSIVE, kLock);
        fork();
        hold();
    });
    const pid_t two[] = {holder.NextReady(), holder.NextReady()};
    EXPECT_FALSE(IsGranted(LKF_SHARED));
    holder.Kill();
    EXPECT_TRUE(IsGranted(LKF_EXCLUSIVE));
    kill(two[0] == holder.pid() ? two[1] : two[0], SIGKILL);
}

TEST_F(LockFile, IsTheParentsAlone)
{
    const int handle = lkf_LockFile(LKF_SHARED, kLock);
    EXPECT_EQ(InChild([=] {
                  const int next = NextDescriptor();
                  lkf_LockFile(LKF_SHARED, kLock);
                  lkf_UnLockFile(handle);
                  return IsOpen(next) ? 0 : 1;
              }),
              0)
        << "the child's own is released";
    EXPECT_FALSE(IsGranted(LKF_EXCLUSIVE));
    lkf_UnLockFile(handle);
}

TEST_F(LockFile, IsReleasedInEveryCopyOfItsDescriptor)
{
    const int next = NextDescriptor();
    const int handle = lkf_LockFile(LKF_EXCLUSIVE, kLock);
    const int copy = dup(next);
    lkf_UnLockFile(handle);
    EXPECT_TRUE(IsGranted(LKF_EXCLUSIVE));
    close(copy);
}

TEST_F(LockFile, VoidHandlesTouchNothing)
{
    const int next = NextDescriptor();
    const int handle = lkf_LockFile(LKF_EXCLUSIVE, kLock);
    ASSERT_TRUE(IsOpen(next));
    close(next);
    ASSERT_EQ(os_open("~/sys", O_RDONLY, 0), next);
    lkf_UnLockFile(handle);
    EXPECT_TRUE(IsOpen(next)) << "another's now";
    close(next);

    const int first = lkf_LockFile(LKF_EXCLUSIVE, kLock);
    lkf_UnLockFile(first);
    const int second = lkf_LockFile(LKF_EXCLUSIVE, kLock);
    for (const int nobodys : {first, handle, 0, -1, INT_MAX})
        lkf_UnLockFile(nobodys);
    EXPECT_FALSE(IsGranted(LKF_SHARED));
    lkf_UnLockFile(second);
    EXPECT_EQ(NextDescriptor(), next);
}

TEST_F(LockFile, IsWaitedForSoLong)
{
    const int handle = lkf_LockFile(LKF_EXCLUSIVE, kLock);
    lkf_SetPatience(80);
    const int next = NextDescriptor();
    const auto begin = steady_clock::now();
    EXPECT_EQ(TryLock(LKF_SHARED), LKF_ESC_TIMEOUT);
    EXPECT_GE(steady_clock::now() - begin, milliseconds(80));
    EXPECT_EQ(NextDescriptor(), next);
    EXPECT_STRNE(er_GetCodeText(LKF_ESC_TIMEOUT), er_GetCodeText(-1));

    lkf_SetPatience(-1);
    std::thread holder([=] {
        std::this_thread::sleep_for(milliseconds(100));
        lkf_UnLockFile(handle);
    });
    lkf_UnLockFile(lkf_LockFile(LKF_EXCLUSIVE, kLock));
    holder.join();
}

TEST_F(LockFile, IsTheOneThatStandsThereWhenItIsGranted)
{
    const int handle = lkf_LockFile(LKF_EXCLUSIVE, kLock);
    lkf_SetPatience(30000);
    int granted = 0;
    std::thread waiter([&] { granted = lkf_LockFile(LKF_EXCLUSIVE, kLock); });
    std::this_thread::sleep_for(milliseconds(50));
    home_.Write("sys/other", "");
    EXPECT_EQ(os_rename("~/sys/other", kLock), 0);
    lkf_UnLockFile(handle);
    waiter.join();
    lkf_SetPatience(0);
    EXPECT_FALSE(IsGranted(LKF_SHARED)) << "the new file is not locked";
    lkf_UnLockFile(granted);
}

TEST_F(LockFile, IsMadeForEverybody)
{
    const mode_t mask = os_umask(0077);
    lkf_UnLockFile(lkf_LockFile(LKF_SHARED, kLock));
    os_umask(mask);
    struct stat file;
    ASSERT_EQ(stat(home_.PathOf("sys/toupper.lk").c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 07777, 0666u);
}

// Gives up the rights of root, to which permissions mean nothing.
void BecomeNobody()
{
    if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0))
        _exit(99);
}

TEST_F(LockFile, MayBeReadOnlyToShare)
{
    chmod(home_.path().c_str(), 0755);
    home_.Write("sys/toupper.lk", "");
    chmod(home_.PathOf("sys/toupper.lk").c_str(), 0444);
    const auto lockAsNobody = [](int mode) {
        return InChild([=] {
            BecomeNobody();
            return TryLock(mode) % 100;
        });
    };
    EXPECT_EQ(lockAsNobody(LKF_SHARED), 0);
    EXPECT_EQ(lockAsNobody(LKF_EXCLUSIVE), OS_ESC_FILE % 100);
}

TEST_F(LockFile, FailsWithoutAFile)
{
    EXPECT_EQ(TryLock(0), OS_ESC_FILE);
    EXPECT_EQ(TryLock(3), OS_ESC_FILE);
    EXPECT_EQ(symlink("nowhere/at/all", home_.PathOf("sys/toupper.lk").c_str()), 0);
    EXPECT_EQ(TryLock(LKF_SHARED), OS_ESC_FILE);
    EXPECT_EQ(Escaped([] { lkf_LockFile(LKF_SHARED, "~/none/toupper.lk"); }), OS_ESC_FILE);
    EXPECT_EQ(Escaped([] { lkf_LockFile(LKF_SHARED, "~/sys"); }), OS_ESC_FILE);
}

// ---- ext_ ----------------------------------------------------------------------------------

TEST(ServiceAccount, OwnsTheHome)
{
    const TempHome home;
    struct stat dir;
    ASSERT_EQ(stat(home.path().c_str(), &dir), 0);
    EXPECT_EQ(ext_GetVornithGid(), dir.st_gid);
    home.Write("file", "");
    EXPECT_EQ(ext_ChownToVornith("~/file"), 0);
    EXPECT_NE(ext_ChownToVornith("~/none"), 0);
    os_SetHome("/none");
    EXPECT_EQ(ext_GetVornithGid(), static_cast<gid_t>(-1));
    EXPECT_NE(ext_ChownToVornith(home.PathOf("file").c_str()), 0);
}

TEST(ServiceAccount, GetsTheGroupAloneFromItsMembers)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can make files of others";
    constexpr uid_t kAccount = 40000, kNobody = 65534;
    constexpr gid_t kGroup = 40001;
    struct Row {
        uid_t actor;
        gid_t group; // of the home
        uid_t owner; // of the file
        gid_t fileGroup;
        bool succeeds;
        uid_t ownerAfter;
    };
    for (const Row &row : {Row{0, kGroup, 0, 0, true, kAccount},
                           Row{kNobody, kNobody, kNobody, kGroup, true, kNobody},
                           Row{kNobody, kGroup, kNobody, kNobody, false, kNobody},
                           Row{kNobody, kGroup, kAccount, kGroup, true, kAccount}}) {
        const TempHome home;
        home.Write("file", "");
        chmod(home.path().c_str(), 0755);
        ASSERT_EQ(chown(home.path().c_str(), kAccount, row.group), 0);
        ASSERT_EQ(chown(home.PathOf("file").c_str(), row.owner, row.fileGroup), 0);
        EXPECT_EQ(InChild([&] {
                      if (row.actor != 0)
                          BecomeNobody();
                      return ext_ChownToVornith("~/file") == 0 ? 1 : 0;
                  }),
                  row.succeeds ? 1 : 0);
        struct stat file;
        ASSERT_EQ(stat(home.PathOf("file").c_str(), &file), 0);
        EXPECT_EQ(file.st_uid, row.ownerAfter);
        EXPECT_EQ(file.st_gid == row.group, row.succeeds);
    }
}

// ---- enc_ ----------------------------------------------------------------------------------

TEST(EncodedBytes, FollowTheNotation)
{
    struct Row {
        const char *text;
        std::string bytes;
    };
    using namespace std::string_literals;
    const std::string large(100000, 'x');
    for (const Row &row :
         {Row{"", ""}, Row{"a ~", "a ~"}, Row{"\\xE9", "\xE9"}, Row{"\\xe9g", "\xE9g"},
          Row{"\\351\\377\\000a", "\351\377\0a"s}, Row{"\\x00", "\0"s}, Row{"\\\\x41", "\\x41"},
          Row{large.c_str(), large}, Row{"\\x41\\102", "AB"}}) {
        int length = -1;
        const unsigned char *const bytes = enc_ConvertLongEncodedStr(row.text, ENC_BYTES, &length);
        EXPECT_EQ(std::string(bytes, bytes + length), row.bytes);
    }
    for (const char *const text : {"\\", "a\\", "\\x", "\\x4", "\\x4g", "\\X41", "\\400", "\\38",
                                   "\\07", "\\078", "\\n", "\t", "\x7F", "\x80", "\xE9", "\xFF"}) {
        int length = -1;
        EXPECT_EQ(Escaped([&] { enc_ConvertLongEncodedStr(text, ENC_BYTES, &length); }),
                  ENC_ESC_MALFORMED)
            << text;
        EXPECT_EQ(length, -1);
    }
}

TEST(EncodedBytes, BelongToTheirThread)
{
    int length = 0;
    const unsigned char *const mine = enc_ConvertLongEncodedStr("ab", ENC_BYTES, &length);
    std::thread([] {
        int other = 0;
        enc_ConvertLongEncodedStr("cd", ENC_BYTES, &other);
    }).join();
    EXPECT_EQ(std::string(mine, mine + length), "ab");
}

// ---- Registration of case tables -----------------------------------------------------------

class Registration : public testing::Test
{
  protected:
    ~Registration() override
    {
        ccs_SetCSTable(-1, this); // its own, emptied
    }
    static uint16_t Of(uint16_t number)
    {
        const CSDescriptor cs{number, 0};
        return ccs_GetToUpperTable(&cs);
    }
};

TEST_F(Registration, TellsTheRecordOfEverySet)
{
    ccs_DoInitTables();
    EXPECT_NE(InitTabsDone, 0);
    int32_t companion = 0;
    void *const table = ccs_GetCSTable(&companion);
    ccs_SetInfo info;
    for (int i = 0; ccs_GetSetInfo(i, &info) != 0; ++i) {
        const CSDescriptor cs{info.number, 0};
        EXPECT_EQ(ccs_GetCSNumber(&cs), info.number);
        EXPECT_EQ(Of(info.number), 0);
        ccs_PutToUpperByCSNum(info.number, static_cast<uint16_t>(i + 1), companion, table);
    }
    for (int i = 0; ccs_GetSetInfo(i, &info) != 0; ++i)
        EXPECT_EQ(Of(info.number), i + 1);
    for (const int nobodys : {-1, 0, 7, 6 + 0x10000, INT_MAX})
        ccs_PutToUpperByCSNum(nobodys, 99, companion, table);
    EXPECT_EQ(Of(6), 1);
    EXPECT_EQ(Of(7), 0);
    EXPECT_EQ(Of(0xFFFF), 0);
    ccs_PutToUpperByCSNum(6, 0, 0, nullptr);
    EXPECT_EQ(Of(6), 0) << "null stands for the process's own";
}

TEST_F(Registration, MayLieInATableOfTheHosts)
{
    std::vector<uint16_t> shared(static_cast<size_t>(ccs_GetSetCount()));
    const int32_t companion = ccs_GetSetCount();
    ccs_PutToUpperByCSNum(87, 7, 0, nullptr);
    ccs_PutToUpperByCSNum(6, 3, companion, shared.data());
    EXPECT_EQ(Of(6), 0) << "not in use yet";
    ccs_SetCSTable(companion, shared.data());
    EXPECT_EQ(Of(6), 3);
    EXPECT_EQ(Of(87), 0);
    int32_t answered = 0;
    EXPECT_EQ(ccs_GetCSTable(&answered), shared.data());
    EXPECT_EQ(answered, companion);
    EXPECT_EQ(std::accumulate(shared.begin(), shared.end(), 0), 3);

    ccs_SetCSTable(0, nullptr);
    EXPECT_EQ(Of(6), 0);
    EXPECT_EQ(Of(87), 7);
    ccs_PutToUpperByCSNum(6, 9, companion - 1, shared.data());
    EXPECT_EQ(Of(6), 9) << "a table of other sets";
    ccs_SetCSTable(companion + 1, shared.data());
    EXPECT_EQ(Of(6), 0);
    EXPECT_EQ(Of(87), 0) << "other case tables";
}

} // namespace
