// SPDX-License-Identifier: Apache-2.0
//
// strtool init-home: makes a service home, with the sources of the case tables.
#include "tools/casetable.h"
#include "tools/input.h"
#include "tools/verbs.h"

#include "services/services.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>

namespace strtool
{

namespace fs = std::filesystem;

namespace
{

// The group works in the home, and new files there belong to the group.  The umask says what others
// may do.  Everybody who may enter the home may open the lock.
constexpr mode_t kOthers = 07;
constexpr mode_t kDirectoryMode = 02775;
constexpr mode_t kFileMode = 0664;
constexpr mode_t kLockMode = 0666;

struct InitHomeOptions {
    std::string home;
    std::string from;
    bool compile = false;
};

[[noreturn]] void Fail(const fs::path &path, int error)
{
    throw FileError(path.string() + ": " + std::strerror(error));
}

void Say(const char *what, const fs::path &path) { std::printf("%s %s\n", what, path.c_str()); }

// An existing directory keeps its mode.
void MakeDirectory(const fs::path &directory, mode_t mode)
{
    if (mkdir(directory.c_str(), mode) != 0) {
        const int error = errno;
        std::error_code unknown;
        if (!fs::is_directory(directory, unknown))
            Fail(directory, error == EEXIST ? ENOTDIR : error);
        return;
    }
    if (chmod(directory.c_str(), mode) != 0) // mkdir ignores the set-group-ID bit
        Fail(directory, errno);
    Say("made", directory);
}

// The lock must exist for users who may not create it.  It has its mode from the first moment.
void MakeLock(const fs::path &lock)
{
    const mode_t mask = umask(0);
    const int fd = open(lock.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kLockMode);
    const int error = errno;
    umask(mask);
    if (fd >= 0) {
        close(fd);
        Say("made", lock);
    } else if (error != EEXIST) {
        Fail(lock, error);
    }
}

std::set<fs::path> SourcesIn(const fs::path &directory)
{
    std::set<fs::path> sources;
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().extension() == ".s")
            sources.insert(entry->path());
    const std::string why = error ? error.message() : "there are no case table sources here";
    if (error || sources.empty())
        throw FileError(directory.string() + ": " + why + ": see --from");
    return sources;
}

void Copy(const fs::path &source, const fs::path &target)
{
    const std::string bytes = ReadFile(source);
    if (TypeOf(target) != fs::file_type::not_found) {
        if (ReadFile(target) != bytes)
            throw FileError(target.string() + ": a different file exists and is left as it is");
        return;
    }
    GError *error = nullptr;
    if (g_file_set_contents_full(target.c_str(), bytes.data(), static_cast<gssize>(bytes.size()),
                                 G_FILE_SET_CONTENTS_CONSISTENT, kFileMode, &error) == FALSE) {
        const std::string why = error->message; // names the file
        g_error_free(error);
        throw FileError(why);
    }
    Say("wrote", target);
}

void Compile(const fs::path &source, const fs::path &directory)
{
    const fs::path compiled = CompiledFile(source, directory);
    if (TypeOf(compiled) != fs::file_type::not_found) {
        Say("kept", compiled);
        return;
    }
    CompileTable(source, compiled);
    Say("compiled", compiled);
}

void ShowExport(const fs::path &home)
{
    gchar *quoted = g_shell_quote(home.c_str());
    std::printf("export STR_HOME=%s\n", quoted);
    g_free(quoted);
}

int InitHome(const InitHomeOptions &options)
{
    const fs::path home = (fs::absolute(options.home) / "").lexically_normal().parent_path();
    const fs::path tables = home / "toupper";
    const fs::path from =
        options.from.empty() ? fs::path(os_GetHome()) / "toupper" : fs::path(options.from);
    const mode_t others = umask(0) & kOthers;
    umask(others | S_IWOTH); // the group may always write here, others never
    int status = kDone;
    const auto doing = [&status](const auto &step) {
        try {
            step();
        } catch (const FileError &error) {
            Complain(error.what());
            status = kFailed;
        }
    };
    doing([&] {
        const std::set<fs::path> sources = SourcesIn(from);
        for (const fs::path &directory : {home, tables, home / "sys"})
            MakeDirectory(directory, kDirectoryMode & ~others);
        MakeLock(home / "sys" / "toupper.lk");
        for (const fs::path &source : sources)
            doing([&] {
                Copy(source, tables / source.filename());
                if (options.compile)
                    Compile(tables / source.filename(), tables);
            });
        ShowExport(home);
    });
    return status;
}

} // namespace

void AddInitHome(CLI::App &app, int &status)
{
    CLI::App *verb = app.add_subcommand("init-home", "Make a service home, with its case tables");
    const auto options = std::make_shared<InitHomeOptions>();
    verb->add_option("DIR", options->home, "The home")->type_name("")->required();
    verb->add_option("--from", options->from,
                     "Where the sources N.s are, if not in the current home")
        ->type_name("DIR");
    verb->add_flag("--compile", options->compile, "Compile them all now");
    verb->callback([options, &status] { status = InitHome(*options); });
}

} // namespace strtool
