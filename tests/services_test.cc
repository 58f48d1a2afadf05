// SPDX-License-Identifier: Apache-2.0
//
// The default services around files: what they do where the system says no, and between processes.
#include "tests/support/home.h"
#include "tests/support/test.h"

#include <platform/enc.h>
#include <platform/ext.h>
#include <platform/lkf.h>
#include <platform/mdc.h>

#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

static int theFsyncError; // of the next call; 0 when it succeeds
static off_t theSyncedLength;

// Comes before the C library's.
extern "C" int fsync(int fd)
{
    theSyncedLength = lseek(fd, 0, SEEK_END);
    errno = std::exchange(theFsyncError, 0);
    return errno != 0 ? -1 : 0;
}

namespace
{

constexpr uid_t kNobody = 65534;

int NextDescriptor()
{
    const int fd = dup(0);
    close(fd);
    return fd;
}

// The exit status of a process that is made for `body`, with the rights of `user` if not of root.
int InChild(const std::function<int()> &body, uid_t user = 0)
{
    const pid_t child = fork();
    if (child == 0 && user != 0 && geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0))
        _exit(99);
    if (child == 0)
        _exit(body());
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct Services : testing::Test {
    const TempHome home;
    const int next = NextDescriptor();

    ~Services() override { EXPECT_EQ(NextDescriptor(), next) << "nothing is left open"; }
    struct stat StatusOf(const char *name) const
    {
        struct stat file = {};
        lstat(home.PathOf(name).c_str(), &file);
        return file;
    }
};

TEST_F(Services, TheHomeIsTheHostsThenTheEnvironmentsThenTheInstalledOne)
{
    setenv("STR_HOME", "/from/environment", 1);
    EXPECT_EQ(os_SetHome(std::string(PATH_MAX, 'x').c_str()), -1);
    EXPECT_EQ(os_GetHome(), home.path()) << "as it was";
    os_SetHome("");
    EXPECT_STREQ(os_GetHome(), "/from/environment");
    unsetenv("STR_HOME");
    EXPECT_TRUE(std::string(os_GetHome()).ends_with("/libstr")) << os_GetHome();
}

TEST_F(Services, WhatCannotBeHadIsAnEscape)
{
    home.Write("file", "");
    EXPECT_EQ(symlink("file", home.PathOf("link").c_str()), 0);
    EXPECT_EQ(mkfifo(home.PathOf("pipe").c_str(), 0666), 0);
    const std::string slashes(PATH_MAX - home.path().size(), '/');
    for (const std::string &path : {"~/none/file"s, "~/link"s, "~/pipe"s, "~" + slashes}) {
        EXPECT_EQ(Escaped([&] { os_fopen(path.c_str(), "r+"); }), OS_ESC_FILE) << path;
        EXPECT_EQ(Escaped([&] { os_opendir(path.c_str()); }), OS_ESC_FILE) << path;
        EXPECT_EQ(Escaped([&] { lkf_LockFile(LKF_SHARED, path.c_str()); }), OS_ESC_FILE) << path;
    }
    os_fclose(os_fopen("~/link", "w"));
    EXPECT_TRUE(S_ISREG(StatusOf("link").st_mode)) << "a file that replaces it";
    EXPECT_EQ(Escaped([] { os_fdopen(dup(0), "?"); }), OS_ESC_FILE) << "and it is closed";
    void *block = os_realloc(os_malloc(0), 0);
    EXPECT_EQ(Escaped([&] { block = os_realloc(block, SIZE_MAX / 2 + 1); }), OS_ESC_MEMORY);
    os_free(os_realloc(block, 100)); // it is still there
}

TEST_F(Services, ReadingEndsAtTheNewlineOrTheBufferAndNotAtASignalOrAnError)
{
    static int ends[2]; // of a pipe that gets the rest of its text from the signal
    struct sigaction finishing = {};
    finishing.sa_handler = [](int) { close(write(ends[1], "bcdef\0g", 7) == 7 ? ends[1] : -1); };
    sigaction(SIGALRM, &finishing, nullptr);
    for (const size_t count : {size_t{0}, size_t{9}}) {
        EXPECT_EQ(pipe(ends) == 0 ? write(ends[1], "ab\n\na", 5) : -1, 5);
        ualarm(50000, 0);
        FILE *const stream = os_fdopen(ends[0], "r");
        char text[100] = "", line[5];
        EXPECT_EQ(os_fread(text, 5, count, stream), count == 0 ? 0u : 2u) << "whole items";
        while (os_fgets(line, sizeof line, stream) != nullptr)
            std::strcat(std::strcat(text, line), "|");
        EXPECT_STREQ(text, count == 0 ? "ab\n|\n|abcd|ef|" : "ab\n\nabcdef");
        os_fclose(stream);
    }
    FILE *const memory = os_fopen("/proc/self/mem", "r+");
    static char byte[2];
    EXPECT_EQ(Escaped([=] { os_fgets(byte, 2, memory); }), OS_ESC_FILE);
    os_fclose(memory);
}

TEST_F(Services, LossIsAnEscapeAndTheHandlerCanClose)
{
    static const char large[100000] = {};
    for (const auto closeLost : {os_fclose, mdc_fclose}) { // the next stream has the same address
        FILE *const stream = os_fopen("/dev/full", "w");
        EXPECT_EQ(Escaped([=] { os_fwrite(large, 1, sizeof large, stream); }), OS_ESC_FILE);
        EXPECT_EQ(Escaped([=] { closeLost(stream); }), 0) << "told already";
    }
    const auto close = [](const char *path, size_t first, size_t second, int error) {
        FILE *const stream = os_fopen(path, "w");
        mdc_fwrite(large, 1, first, stream);
        mdc_fwrite(large, 1, second, stream);
        theFsyncError = error;
        theSyncedLength = 0;
        const int code = Escaped([=] { os_fclose(stream); });
        EXPECT_EQ(code != 0 ? os_fclose(stream) : 0, 0) << path << first << " " << error;
        return code;
    };
    for (const size_t first : {size_t{0}, sizeof large})
        EXPECT_EQ(close("/dev/full", first, 3, 0), OS_ESC_FILE);
    EXPECT_EQ(close("~/file", 0, 3, EIO), OS_ESC_FILE);
    for (const int error : {0, EINTR, EINVAL, ENOTSUP, EROFS})
        EXPECT_EQ(close("~/file", 0, 3, error) + theSyncedLength, 3) << error;
}

TEST_F(Services, DirectoriesAreReadToTheirEndOrAnError)
{
    void *const directory = os_opendir("~/");
    std::set<std::string> names;
    while (const os_dirent *const entry = os_readdir(directory))
        names.insert(entry->name);
    EXPECT_EQ(names, (std::set{"."s, ".."s, "sys"s, "toupper"s}));
    close(next);
    EXPECT_EQ(Escaped([=] { os_readdir(directory); }), OS_ESC_FILE);
    EXPECT_EQ(os_closedir(directory), -1);
}

struct LockFile : Services {
    LockFile() { lkf_SetPatience(0); }
    ~LockFile() override { lkf_SetPatience(30000); }

    static int Lock(int mode) { return lkf_LockFile(mode, "~/sys/toupper.lk"); }
    // The code of the escape as an exit status; 0 when the lock is granted.
    static int Refusal(int mode) { return Escaped(std::bind(Lock, mode)) % 100; }
    // Whether another process would get the lock now.
    static bool IsGranted(int mode) { return InChild(std::bind(Refusal, mode)) == 0; }
};

TEST_F(LockFile, ExcludesOtherProcessesUntilTheHolderReleasesIt)
{
    for (const int held : {LKF_SHARED, LKF_EXCLUSIVE}) {
        const int handle = Lock(held), copy = dup(next);
        EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
        const auto child = [=, this] {
            const int own = os_open("~/sys/toupper.lk", O_RDONLY, 0);
            lkf_UnLockFile(handle);
            return own == next && fcntl(own, F_GETFD) != -1 ? 0 : 1;
        };
        EXPECT_EQ(InChild(child), 0) << "has neither the descriptor nor the handle";
        EXPECT_EQ(IsGranted(LKF_SHARED), held == LKF_SHARED);
        EXPECT_FALSE(IsGranted(LKF_EXCLUSIVE));
        lkf_UnLockFile(handle);
        EXPECT_TRUE(IsGranted(LKF_EXCLUSIVE));
        close(copy);
    }
}

TEST_F(LockFile, IsReleasedByItsHandleAloneAndTheReasonOfARefusalLoggedOnce)
{
    const Sinks sinks;
    const int first = Lock(LKF_SHARED);
    close(next); // to be the descriptor of the second
    const int second = Lock(LKF_EXCLUSIVE);
    for (const int nobodys : {first, 0, -1, INT_MAX})
        lkf_UnLockFile(nobodys);
    EXPECT_EQ(Refusal(LKF_SHARED) + Refusal(LKF_SHARED), 2 * (LKF_ESC_TIMEOUT % 100));
    EXPECT_EQ(Sinks::logged, "0 " + home.PathOf("sys/toupper.lk") +
                                 " cannot be locked: " + er_GetCodeText(LKF_ESC_TIMEOUT) + "\n");
    for (const char *path : {"~/none/file", "~/none/file", "~/sys", "~/none/file"})
        EXPECT_EQ(Escaped([=] { lkf_LockFile(LKF_SHARED, path); }), OS_ESC_FILE);
    EXPECT_EQ(std::count(Sinks::logged.begin(), Sinks::logged.end(), '\n'), 4);
    lkf_UnLockFile(second);
}

TEST_F(LockFile, IsWaitedForAndOfTheFileInPlaceWhenItIsGranted)
{
    const int handle = Lock(LKF_SHARED);
    lkf_SetPatience(10000);
    int granted = 0;
    std::thread waiter([&] { granted = Lock(LKF_EXCLUSIVE); });
    usleep(50000);
    lkf_SetPatience(0);
    EXPECT_FALSE(IsGranted(LKF_SHARED)) << "whoever waits to be alone comes first";
    EXPECT_TRUE(home.Remove("sys/toupper.lk"));
    lkf_UnLockFile(handle);
    waiter.join();
    EXPECT_FALSE(IsGranted(LKF_SHARED)) << "the new file is not locked";
    lkf_UnLockFile(granted);
}

TEST_F(LockFile, IsMadeForEverybodyAndMayBeReadOnlyToShare)
{
    const mode_t mask = os_umask(0077);
    const int made = Lock(LKF_EXCLUSIVE);
    os_umask(mask);
    EXPECT_EQ(StatusOf("sys/toupper.lk").st_mode & 07777, 0666u);
    chmod(home.path().c_str(), 0755);
    // Modes of ~/toupper and of the lock file; what those get who share, and who do not.
    constexpr int kNo = OS_ESC_FILE % 100, kWait = LKF_ESC_TIMEOUT % 100;
    const int rows[][4] = {{0555, 0666, kWait, kWait}, {0777, 0666, 0, 0}, {0777, 0444, 0, kNo},
                           {0777, 0, kNo, kNo},        {0555, 0444, 0, 0}, {0555, 0, 0, 0}};
    for (const auto &[tables, lock, shared, exclusive] : rows) {
        chmod(home.PathOf("toupper").c_str(), static_cast<mode_t>(tables));
        chmod(home.PathOf("sys/toupper.lk").c_str(), static_cast<mode_t>(lock));
        EXPECT_EQ(InChild(std::bind(Refusal, LKF_SHARED), kNobody), shared) << lock;
        EXPECT_EQ(InChild(std::bind(Refusal, LKF_EXCLUSIVE), kNobody), exclusive) << lock;
        lkf_UnLockFile(made);
    }
}

TEST_F(Services, TheAccountOwnsTheHomeAndGetsTheGroupAloneFromItsMembers)
{
    EXPECT_EQ(ext_GetVornithGid(), StatusOf("").st_gid);
    home.Write("file", "");
    EXPECT_EQ(symlink("file", home.PathOf("link").c_str()), 0);
    EXPECT_NE(ext_ChownToVornith("~/link"), 0);
    home.Write("one name", "");
    EXPECT_EQ(link(home.PathOf("one name").c_str(), home.PathOf("another").c_str()), 0);
    EXPECT_NE(ext_ChownToVornith("~/another"), 0);
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can make files of others";
    constexpr uid_t kAccount = 40000, kGroup = 40001;
    chmod(home.path().c_str(), 0755);
    // Who acts, the home's group, the file's group, its owner afterwards, success.
    const uid_t rows[][5] = {{0, kGroup, 0, kAccount, 1},
                             {kNobody, kNobody, kGroup, kNobody, 1},
                             {kNobody, kGroup, kNobody, kNobody, 0}};
    for (const auto &[actor, group, fileGroup, ownerAfter, succeeds] : rows) {
        EXPECT_EQ(chown(home.path().c_str(), kAccount, group), 0);
        EXPECT_EQ(chown(home.PathOf("file").c_str(), actor, fileGroup), 0);
        EXPECT_EQ(InChild([] { return ext_ChownToVornith("~/file"); }, actor) == 0, succeeds == 1);
        EXPECT_EQ(StatusOf("file").st_uid, ownerAfter);
        EXPECT_EQ(StatusOf("file").st_gid == group, succeeds == 1);
    }
}

TEST(EncodedBytes, FollowTheNotation)
{
    int length = -1, other = 0;
    const unsigned char *const bytes =
        enc_ConvertLongEncodedStr("\\xE9\\377\\000a ~\\\\x41\\102", ENC_BYTES, &length);
    std::thread([&] { enc_ConvertLongEncodedStr("cd", ENC_BYTES, &other); }).join();
    EXPECT_EQ(std::string(bytes, bytes + length), "\xE9\xFF\0a ~\\x41B"s) << "the thread's own";
    for (const char *const text : {"a\\", "\\x4g", "\\X41", "\\400", "\\38", "\\07", "\t", "\x7F"})
        EXPECT_EQ(Escaped([&] { enc_ConvertLongEncodedStr(text, 0, &other); }), ENC_ESC_MALFORMED)
            << text;
}

TEST(Registration, IsOfEverySetAndMayLieInATableOfTheHosts)
{
    const int count = ccs_GetSetCount();
    uint16_t shared[1000] = {};
    ccs_SetInfo info;
    for (int i = 0; ccs_GetSetInfo(i, &info) != 0; ++i)
        for (const int number : {int{info.number}, -1, 7, 6 + 0x10000})
            ccs_PutToUpperByCSNum(number, static_cast<uint16_t>(i + 1), count, shared);
    for (const int entries : {count, count + 1}) { // one too many: other case tables
        ccs_SetCSTable(entries, shared);
        for (int i = 0; ccs_GetSetInfo(i, &info) != 0; ++i) {
            const CSDescriptor cs{info.number, 0};
            EXPECT_EQ(ccs_GetToUpperTable(&cs), entries == count ? i + 1 : 0);
        }
    }
}

} // namespace
