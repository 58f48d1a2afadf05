// SPDX-License-Identifier: Apache-2.0
//
// The default services around files, and those of case tables: what they do where the system says
// no, and between processes.
#include "services/services.h"

#include "tests/support/escape.h"
#include "tests/support/home.h"
#include "tests/support/sinks.h"

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
#include <fcntl.h>
#include <grp.h>
#include <numeric>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

// What the calls of these names fail with; 0 when they succeed.  fstat is called as 64-bit systems
// call it for large files.
int theFsyncError, theFstatError, theChownError;

namespace
{
off_t theSyncedLength; // of the file that fsync was called for last

int FailsWith(int error) { return (errno = error) != 0 ? -1 : 0; }
} // namespace

// These come before the C library's.
extern "C" int fsync(int fd)
{
    struct stat file;
    theSyncedLength = fstat(fd, &file) == 0 ? file.st_size : -1;
    return FailsWith(theFsyncError);
}

extern "C" int fstat64(int fd, struct stat64 *file) noexcept
{
    return FailsWith(theFstatError) != 0 ? -1 : fstatat64(fd, "", file, AT_EMPTY_PATH);
}

extern "C" int fchownat(int fd, const char *path, uid_t owner, gid_t group, int flags) noexcept
{
    return FailsWith(theChownError) != 0
               ? -1
               : static_cast<int>(syscall(SYS_fchownat, fd, path, owner, group, flags));
}

namespace
{

using namespace std::string_literals;
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

// Gives up the rights of root, to which permissions mean nothing.
void BecomeNobody()
{
    if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0))
        _exit(99);
}

struct Services : testing::Test {
    const TempHome home;
    const int next = NextDescriptor();
};

// ---- os_ -----------------------------------------------------------------------------------

TEST_F(Services, TheHomeIsTheHostsThenTheEnvironmentsThenTheInstalledOne)
{
    unsetenv("STR_HOME");
    os_SetHome("");
    const std::string installed = os_GetHome();
    EXPECT_TRUE(installed.ends_with("/libstr")) << installed;
    for (const char *environment : {"/from/environment", ""}) {
        setenv("STR_HOME", environment, 1);
        EXPECT_EQ(os_GetHome(), *environment == '\0' ? installed : environment);
        EXPECT_EQ(os_SetHome("/from/host"s.c_str()), 0);
        EXPECT_EQ(os_SetHome(std::string(PATH_MAX, 'x').c_str()), -1);
        EXPECT_STREQ(os_GetHome(), "/from/host") << "a copy, and as it was";
        EXPECT_EQ(os_SetHome(nullptr), 0);
    }
    unsetenv("STR_HOME");
    EXPECT_EQ(os_fexists("~"), 0) << "a name like any other";
}

TEST_F(Services, WhatCannotBeHadIsAnEscapeAndLeavesNothingOpen)
{
    home.Write("file", "");
    for (const auto &[to, link] :
         {std::pair{"nowhere/at/all", "sys/toupper.lk"}, {"file", "link"}, {"/dev/zero", "device"}})
        EXPECT_EQ(symlink(to, home.PathOf(link).c_str()), 0);
    EXPECT_EQ(mkfifo(home.PathOf("pipe").c_str(), 0666), 0);
    static const std::string tooLong = "~" + std::string(PATH_MAX, '/'); // cut off, the home
    const std::function<void()> attempts[] = {
        [] { os_fopen("~/none", "r"); },
        [] { os_fopen("~/file", ""); },
        [] { os_fopen("~/link", "a"); },
        [] { os_fopen("~/device", "r"); },
        [] { os_open("~/pipe", O_RDWR, 0); },
        [] { os_fdopen(os_open("~/file", O_RDONLY, 0), "w"); },
        [] { os_opendir("~/file"); },
        [] { os_opendir(tooLong.c_str()); },
        [] { lkf_LockFile(0, "~/file"); },
        [] { lkf_LockFile(3, "~/file"); },
        [] { lkf_LockFile(LKF_SHARED, "~/sys/toupper.lk"); },
        [] { lkf_LockFile(LKF_SHARED, "~/none/toupper.lk"); },
        [] { lkf_LockFile(LKF_SHARED, "~/sys"); },
        [] { lkf_LockFile(LKF_SHARED, "~/pipe"); },
    };
    for (const auto &attempt : attempts) {
        EXPECT_EQ(Escaped(attempt), OS_ESC_FILE) << &attempt - attempts;
        EXPECT_EQ(NextDescriptor(), next) << &attempt - attempts;
    }
    EXPECT_EQ(os_fexists(tooLong.c_str()), 0);
    void *block = os_realloc(os_malloc(0), 0);
    EXPECT_EQ(Escaped([&] { block = os_realloc(block, SIZE_MAX / 2 + 1); }), OS_ESC_MEMORY);
    os_free(os_realloc(block, 100)); // it is still there
}

TEST_F(Services, LinesEndAtTheirNewlineOrTheBufferAndNotAtAnError)
{
    static char line[5];
    home.Write("lines", "ab\n\nabcdef\0g"s);
    FILE *stream = os_fopen("~/lines", "r");
    EXPECT_EQ(fcntl(fileno(stream), F_GETFD), FD_CLOEXEC);
    std::string lines;
    while (os_fgets(line, sizeof line, stream) != nullptr)
        lines += line + "|"s;
    EXPECT_EQ(lines, "ab\n|\n|abcd|ef|");
    EXPECT_EQ(os_fgets(line, 1, stream), line);
    EXPECT_EQ(line[0], '\0');
    EXPECT_EQ(os_fgets(line, 0, stream), nullptr);
    EXPECT_EQ(os_fclose(stream), 0);
    stream = os_fopen(home.path().c_str(), "r");
    EXPECT_EQ(Escaped([=] { os_fgets(line, sizeof line, stream); }), OS_ESC_FILE);
    EXPECT_EQ(os_fread(line, 1, sizeof line, stream), 0u);
    EXPECT_EQ(os_fclose(stream), 0);
    FILE *const memory = os_fopen("/proc/self/mem", "r+");
    EXPECT_EQ(os_fread(line, 1, sizeof line, memory), 0u);
    EXPECT_EQ(Escaped([=] { os_fclose(memory); }), 0) << "nothing was written";
}

int theWriteEnd;

// A pipe that holds a part, and the rest once a signal has interrupted its reader.
FILE *InterruptedPipe()
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    theWriteEnd = ends[1];
    EXPECT_EQ(write(theWriteEnd, "ab", 2), 2);
    struct sigaction finishing = {};
    finishing.sa_handler = [](int) { close(write(theWriteEnd, "c\n", 2) == 2 ? theWriteEnd : -1); };
    sigaction(SIGALRM, &finishing, nullptr);
    ualarm(50000, 0);
    return os_fdopen(ends[0], "r");
}

TEST_F(Services, SignalsDoNotEndTheReading)
{
    char text[8] = "";
    FILE *stream = InterruptedPipe();
    EXPECT_EQ(os_fgets(text, sizeof text, stream), text);
    EXPECT_STREQ(text, "abc\n");
    errno = EIO; // of an error that is over
    EXPECT_EQ(os_fgets(text, sizeof text, stream), nullptr);
    os_fclose(stream);
    stream = InterruptedPipe();
    EXPECT_EQ(os_fread(text, 2, 3, stream), 2u);
    os_fclose(stream);
}

TEST_F(Services, LossIsAnEscapeAndTheHandlerCanClose)
{
    static const char large[100000] = {};
    const auto loseAtOnce = [] {
        FILE *const stream = os_fopen("/dev/full", "w");
        EXPECT_EQ(Escaped([=] { os_fwrite(large, 1, sizeof large, stream); }), OS_ESC_FILE);
        return stream;
    };
    mdc_fclose(loseAtOnce()); // the next stream has the same address
    const std::pair<size_t, size_t> rows[] = {{0, 3}, {sizeof large, 0}, {sizeof large, 3}};
    for (const auto &[first, second] : rows) {
        FILE *const stream = os_fopen("/dev/full", "w");
        mdc_fwrite(large, 1, first, stream);
        mdc_fwrite(large, 1, second, stream);
        EXPECT_EQ(Escaped([=] { os_fclose(stream); }), OS_ESC_FILE) << first << " " << second;
        EXPECT_TRUE(IsOpen(next));
        EXPECT_EQ(os_fclose(stream), 0) << first << " " << second;
        EXPECT_FALSE(IsOpen(next));
    }
    FILE *const stream = loseAtOnce();
    EXPECT_EQ(Escaped([=] { os_fclose(stream); }), 0) << "told already";
}

TEST_F(Services, FilesAreOnTheDiskBeforeTheyAreClosed)
{
    for (const int error : {0, EINVAL, ENOTSUP, EROFS, EIO, ENOSPC}) {
        FILE *const stream = os_fopen("~/file", "w");
        os_fwrite("abc", 1, 3, stream);
        theFsyncError = error;
        theSyncedLength = -1;
        const bool isLost = error == EIO || error == ENOSPC;
        EXPECT_EQ(Escaped([=] { os_fclose(stream); }), isLost ? OS_ESC_FILE : 0) << error;
        EXPECT_EQ(theSyncedLength, 3);
        EXPECT_EQ(isLost ? os_fclose(stream) : 0, 0) << error;
    }
    FILE *const stream = os_fopen("~/file", "r");
    EXPECT_EQ(Escaped([=] { os_fclose(stream); }), 0) << "only read";
    theFsyncError = 0;
}

TEST_F(Services, EachOpenDirectoryHasAnEntryOfItsOwn)
{
    const std::string longest(NAME_MAX, 'x');
    home.Write("toupper/" + longest, "");
    home.Write("sys/toupper.lk", "");
    static void *first, *second;
    first = os_opendir("~/toupper");
    second = os_opendir("~/sys");
    std::set<std::string> names;
    while (const os_dirent *const entry = os_readdir(first)) {
        names.insert(os_readdir(second)->name);
        names.insert(entry->name);
    }
    EXPECT_EQ(names, (std::set{"."s, ".."s, longest, "toupper.lk"s}));
    EXPECT_EQ(os_closedir(first), 0);
    close(next + 1);
    EXPECT_EQ(Escaped([] { os_readdir(second); }), OS_ESC_FILE) << "not an end";
    os_closedir(second);
}

TEST(OsNumbers, HaveDigitsOfTheirBaseAndTextsFitTheirRoom)
{
    const auto digits = [](unsigned long value, int base, int minDigits) {
        char text[100];
        int length = -1;
        os_ul2str(value, base, minDigits, text, &length);
        EXPECT_EQ(text[length], '\0');
        return std::string(text, text + length);
    };
    EXPECT_EQ(digits(0, 10, -3) + digits(1234, 10, 3) + digits(1260, 36, 3), "012340z0");
    EXPECT_EQ(digits(7, 10, 90), std::string(89, '0') + "7");
    EXPECT_EQ(digits(~0UL, 2, 1), std::string(sizeof(long) * CHAR_BIT, '1'));
    EXPECT_EQ(digits(5, 1, 1) + digits(5, INT_MIN, 1) + digits(5, 37, 1), "");
    char room[] = "zzz";
    EXPECT_EQ(mdc_strlcpy(room, "abcd", 0), 4u);
    EXPECT_STREQ(room, "zzz");
    EXPECT_EQ(mdc_strlcpy(room, "abcd", 3), 4u);
    EXPECT_STREQ(room, "ab");
}

// ---- lkf_ ----------------------------------------------------------------------------------

struct LockFile : Services {
    LockFile() { lkf_SetPatience(0); }
    ~LockFile() override { lkf_SetPatience(30000); }

    static int Lock(int mode) { return lkf_LockFile(mode, "~/sys/toupper.lk"); }
    static int TryLock(int mode)
    {
        return Escaped([=] { Lock(mode); });
    }
    // Whether another process would get the lock now.
    static bool IsGranted(int mode)
    {
        return InChild([=] { return TryLock(mode) == 0 ? 1 : 0; }) == 1;
    }
};

TEST_F(LockFile, ExcludesOtherProcesses)
{
    for (const int held : {LKF_SHARED, LKF_EXCLUSIVE}) {
        const int handle = Lock(held);
        EXPECT_EQ(IsGranted(LKF_SHARED), held == LKF_SHARED);
        EXPECT_FALSE(IsGranted(LKF_EXCLUSIVE));
        lkf_UnLockFile(handle);
        EXPECT_TRUE(IsGranted(LKF_EXCLUSIVE));
    }
}

TEST_F(LockFile, GoesWithAKilledHolderWhoseChildLives)
{
    const pid_t holder = fork();
    if (holder == 0) {
        Lock(LKF_EXCLUSIVE);
        if (fork() == 0)
            home.Write("forked", "");
        sleep(2);
        _exit(0);
    }
    while (os_fexists("~/forked") == 0)
        usleep(1000);
    EXPECT_FALSE(IsGranted(LKF_SHARED));
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);
    EXPECT_TRUE(IsGranted(LKF_EXCLUSIVE));
}

TEST_F(LockFile, IsTheParentsAloneAndReleasedInEveryCopyOfItsDescriptor)
{
    const int handle = Lock(LKF_SHARED);
    const auto child = [=] {
        const int own = NextDescriptor();
        Lock(LKF_SHARED);
        lkf_UnLockFile(handle);
        return IsOpen(own) ? 0 : 1;
    };
    EXPECT_EQ(InChild(child), 0) << "the child's own is released";
    EXPECT_FALSE(IsGranted(LKF_EXCLUSIVE));
    const int copy = dup(next);
    theFstatError = EIO;
    lkf_UnLockFile(handle);
    theFstatError = 0;
    EXPECT_TRUE(IsGranted(LKF_EXCLUSIVE)) << "also where it cannot be seen whose it is";
    close(copy);
}

TEST_F(LockFile, InvalidHandlesTouchNothing)
{
    const int handle = Lock(LKF_EXCLUSIVE);
    close(next);
    ASSERT_EQ(os_open(home.path().c_str(), O_RDONLY, 0), next);
    EXPECT_EQ(InChild([=, this] { return IsOpen(next) ? 0 : 1; }), 0) << "nor do forks";
    lkf_UnLockFile(handle);
    EXPECT_TRUE(IsOpen(next)) << "another's now";
    close(next);
    const int first = Lock(LKF_SHARED);
    close(next); // to be the descriptor of the second
    const int second = Lock(LKF_EXCLUSIVE);
    for (const int nobodys : {first, handle, 0, -1, INT_MAX})
        lkf_UnLockFile(nobodys);
    EXPECT_FALSE(IsGranted(LKF_SHARED));
    lkf_UnLockFile(second);
    EXPECT_EQ(NextDescriptor(), next);
}

TEST_F(LockFile, IsWaitedForSoLongAndTheReasonIsLoggedOnce)
{
    const int handle = Lock(LKF_EXCLUSIVE);
    lkf_SetPatience(80);
    const int free = NextDescriptor();
    const auto begin = steady_clock::now();
    EXPECT_EQ(TryLock(LKF_SHARED), LKF_ESC_TIMEOUT);
    EXPECT_GE(steady_clock::now() - begin, milliseconds(80));
    const Sinks sinks;
    lkf_SetPatience(0);
    Escaped([] { lkf_LockFile(LKF_SHARED, "~/sys"); }); // another reason, which may be logged
    Sinks::logged.clear();
    for (int time = 0; time < 2; ++time)
        EXPECT_EQ(TryLock(LKF_SHARED), LKF_ESC_TIMEOUT);
    EXPECT_EQ(Sinks::logged, "0 " + home.PathOf("sys/toupper.lk") +
                                 " cannot be locked: " + er_GetCodeText(LKF_ESC_TIMEOUT) + "\n");
    EXPECT_EQ(NextDescriptor(), free);
    lkf_UnLockFile(handle);
}

TEST_F(LockFile, IsOfTheFileInPlaceWhenItIsGranted)
{
    const int handle = Lock(LKF_SHARED);
    lkf_SetPatience(-1);
    int granted = 0;
    std::thread waiter([&] { granted = Lock(LKF_EXCLUSIVE); });
    std::this_thread::sleep_for(milliseconds(50));
    lkf_SetPatience(0);
    EXPECT_FALSE(IsGranted(LKF_SHARED)) << "whoever waits to be alone comes first";
    home.Write("sys/other", "");
    EXPECT_EQ(os_rename("~/sys/other", "~/sys/toupper.lk"), 0);
    lkf_UnLockFile(handle);
    waiter.join();
    EXPECT_FALSE(IsGranted(LKF_SHARED)) << "the new file is not locked";
    lkf_UnLockFile(granted);
}

TEST_F(LockFile, IsMadeForEverybodyAndMayBeReadOnlyToShare)
{
    const mode_t mask = os_umask(0077);
    lkf_UnLockFile(Lock(LKF_SHARED));
    os_umask(mask);
    const std::string path = home.PathOf("sys/toupper.lk");
    struct stat file;
    ASSERT_EQ(stat(path.c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 07777, 0666u);
    chmod(home.path().c_str(), 0755);
    // Modes of ~/toupper and of the lock file; what those get who share, and who do not.
    constexpr mode_t kNone = 07777;
    constexpr mode_t kNo = OS_ESC_FILE % 100;
    const mode_t rows[][4] = {{0777, 0444, 0, kNo}, {0777, 0, kNo, kNo}, {0777, kNone, kNo, kNo},
                              {0555, 0444, 0, 0},   {0555, 0, 0, 0},     {0555, kNone, 0, 0}};
    for (const auto &[tables, lock, shared, exclusive] : rows) {
        home.Write("sys/toupper.lk", "");
        chmod(home.PathOf("toupper").c_str(), tables);
        EXPECT_EQ(lock == kNone ? std::remove(path.c_str()) : chmod(path.c_str(), lock), 0);
        chmod(home.PathOf("sys").c_str(), 0555);
        for (const int mode : {LKF_SHARED, LKF_EXCLUSIVE})
            EXPECT_EQ(InChild([=] { return (BecomeNobody(), TryLock(mode) % 100); }),
                      static_cast<int>(mode == LKF_SHARED ? shared : exclusive))
                << tables << " " << lock;
        chmod(home.PathOf("sys").c_str(), 0755);
    }
    home.Write("sys/toupper.lk", "");
    const int handle = Lock(LKF_EXCLUSIVE);
    EXPECT_EQ(InChild([=] { return (BecomeNobody(), TryLock(LKF_SHARED) % 100); }),
              LKF_ESC_TIMEOUT % 100)
        << "one that is there is waited for";
    lkf_UnLockFile(handle);
}

// ---- ext_ ----------------------------------------------------------------------------------

TEST_F(Services, TheAccountOwnsTheHome)
{
    struct stat dir;
    ASSERT_EQ(stat(home.path().c_str(), &dir), 0);
    EXPECT_EQ(ext_GetVornithGid(), dir.st_gid);
    EXPECT_EQ(ext_ChownToVornith("~/sys"), 0);
    EXPECT_EQ(symlink("sys", home.PathOf("link").c_str()), 0);
    home.Write("file", "");
    EXPECT_EQ(link(home.PathOf("file").c_str(), home.PathOf("another").c_str()), 0);
    for (const char *path : {"~/none", "~/link", "~/file"})
        EXPECT_NE(ext_ChownToVornith(path), 0) << path;
    os_SetHome("/none");
    EXPECT_EQ(ext_GetVornithGid(), static_cast<gid_t>(-1));
    EXPECT_NE(ext_ChownToVornith(home.PathOf("sys").c_str()), 0);
    EXPECT_EQ(NextDescriptor(), next);
}

TEST(ServiceAccount, GetsTheGroupAloneFromItsMembers)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can make files of others";
    constexpr unsigned int kAccount = 40000, kGroup = 40001, kNobody = 65534;
    // Who acts, the home's group, the file's owner and group, its owner afterwards, success.
    const unsigned int rows[][6] = {{0, kGroup, 0, 0, kAccount, 1},
                                    {kNobody, kNobody, kNobody, kGroup, kNobody, 1},
                                    {kNobody, kGroup, kNobody, kNobody, kNobody, 0},
                                    {kNobody, kGroup, kAccount, kGroup, kAccount, 1}};
    for (const auto &[actor, group, owner, fileGroup, ownerAfter, succeeds] : rows) {
        const TempHome home;
        home.Write("file", "");
        chmod(home.path().c_str(), 0755);
        ASSERT_EQ(chown(home.path().c_str(), kAccount, group), 0);
        ASSERT_EQ(chown(home.PathOf("file").c_str(), owner, fileGroup), 0);
        const bool isGiven = InChild([isRoot = actor == 0] {
                                 isRoot ? void() : BecomeNobody();
                                 return ext_ChownToVornith("~/file");
                             }) == 0;
        EXPECT_EQ(isGiven, succeeds == 1);
        struct stat file;
        ASSERT_EQ(stat(home.PathOf("file").c_str(), &file), 0);
        EXPECT_EQ(file.st_uid, ownerAfter);
        EXPECT_EQ(file.st_gid == group, succeeds == 1);
    }
}

// ---- enc_ ----------------------------------------------------------------------------------

TEST(EncodedBytes, FollowTheNotation)
{
    const std::string large(100000, 'x');
    const std::pair<const char *, std::string> rows[] = {
        {"", ""},
        {"\\xE9\\xe9ga ~\\\\x41", "\xE9\xE9ga ~\\x41"},
        {"\\351\\377\\000a\\x00\\x41\\102", "\351\377\0a\0AB"s},
        {large.c_str(), large},
    };
    for (const auto &[text, expected] : rows) {
        int length = -1, other = 0;
        const unsigned char *const bytes = enc_ConvertLongEncodedStr(text, ENC_BYTES, &length);
        std::thread([&] { enc_ConvertLongEncodedStr("cd", ENC_BYTES, &other); }).join();
        EXPECT_EQ(std::string(bytes, bytes + length), expected) << "another thread has its own";
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

TEST(EncodedBytes, WithoutAKeyOfThreadsAreAnEscape)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // whatever ran before
    const auto convert = [] {
        int length;
        for (pthread_key_t key; pthread_key_create(&key, nullptr) == 0;) {
        }
        return Escaped([&] { enc_ConvertLongEncodedStr("a", ENC_BYTES, &length); });
    };
    EXPECT_EXIT(std::_Exit(convert() == OS_ESC_MEMORY), testing::ExitedWithCode(1), "");
}

// ---- Registration of case tables -----------------------------------------------------------

TEST(Registration, IsOfEverySetAndMayLieInATableOfTheHosts)
{
    const auto tableOf = [](int number) {
        const CSDescriptor cs{static_cast<uint16_t>(number), 0};
        EXPECT_EQ(ccs_GetCSNumber(&cs), number);
        return ccs_GetToUpperTable(&cs);
    };
    const int32_t count = ccs_GetSetCount();
    ccs_SetInfo info;
    for (const int added : {0, 1})
        for (int i = 0; ccs_GetSetInfo(i, &info) != 0; ++i) {
            EXPECT_EQ(tableOf(info.number), added * (i + 1));
            for (const int number : {int{info.number}, -1, 0, 7, 6 + 0x10000, INT_MAX})
                ccs_PutToUpperByCSNum(number, static_cast<uint16_t>(i + 1), 0, nullptr);
        }
    EXPECT_EQ(tableOf(7) + tableOf(0xFFFF), 0);
    std::vector<uint16_t> shared(static_cast<size_t>(count));
    ccs_PutToUpperByCSNum(6, 4711, count, shared.data());
    EXPECT_EQ(tableOf(6), 1) << "not in use yet";
    ccs_SetCSTable(count, shared.data());
    EXPECT_EQ(tableOf(6) + tableOf(87), 4711);
    int32_t answered = 0;
    EXPECT_EQ(ccs_GetCSTable(&answered), shared.data());
    EXPECT_EQ(answered, count);
    EXPECT_EQ(std::accumulate(shared.begin(), shared.end(), 0), 4711);
    ccs_SetCSTable(0, nullptr);
    ccs_PutToUpperByCSNum(87, 9, count - 1, shared.data());
    EXPECT_EQ(tableOf(6), 1);
    EXPECT_EQ(tableOf(87), 9) << "a table of other sets";
    ccs_SetCSTable(count + 1, shared.data());
    EXPECT_EQ(tableOf(6) + tableOf(87), 0) << "emptied: other case tables";
}

} // namespace
