// SPDX-License-Identifier: Apache-2.0
//
// strtool init-home: makes a service home, with the sources of the case tables.
#include "tools/casetable.h"
#include "tools/input.h"
#include "tools/verbs.h"

#include "services/services.h"

#include <CLI/CLI.hpp>
#include <glib.h>
#include <sys/stat.h>

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

// The group works in the home, and what it makes there stays the group's.
constexpr mode_t kDirectoryMode = 02775;
constexpr mode_t kFileMode = 0664;

struct InitHomeOptions {
    std::string home;
    std::string from;
    bool compile = false;
};

[[noreturn]] void FailWithErrno(const fs::path &path)
{
    throw FileError(path.string() + ": " + std::strerror(errno));
}

void Say(const char *what, const fs::path &path) { std::printf("%s %s\n", what, path.c_str()); }

// One that is there already keeps its mode.
void MakeDirectory(const fs::path &directory)
{
    if (fs::is_directory(directory))
        return;
    if (mkdir(directory.c_str(), kDirectoryMode) != 0 ||
        chmod(directory.c_str(), kDirectoryMode) != 0) // whatever the umask
        FailWithErrno(directory);
    Say("made", directory);
}

std::set<fs::path> SourcesIn(const fs::path &directory)
{
    std::set<fs::path> sources;
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(directory, error))
        if (entry.path().extension() == ".s")
            sources.insert(entry.path());
    if (sources.empty())
        throw FileError(directory.string() + ": no case table sources here: see --from");
    return sources;
}

void Copy(const fs::path &source, const fs::path &target)
{
    const std::string bytes = ReadFile(source);
    if (fs::exists(target)) {
        if (ReadFile(target) != bytes)
            throw FileError(target.string() + ": is there already and is another; left as it is");
        return;
    }
    GError *error = nullptr;
    if (g_file_set_contents_full(target.c_str(), bytes.data(), static_cast<gssize>(bytes.size()),
                                 G_FILE_SET_CONTENTS_CONSISTENT, kFileMode, &error) == FALSE) {
        const std::string why = error->message; // names the file
        g_error_free(error);
        throw FileError(why);
    }
    if (chmod(target.c_str(), kFileMode) != 0)
        FailWithErrno(target);
    Say("wrote", target);
}

void Compile(const fs::path &source, const fs::path &directory)
{
    const fs::path compiled = CompiledFile(source, directory);
    if (fs::exists(compiled)) {
        Say("kept", compiled);
        return;
    }
    CompileTable(source, compiled);
    if (chmod(compiled.c_str(), kFileMode) != 0) // whatever the umask
        FailWithErrno(compiled);
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
            MakeDirectory(directory);
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
                     "Where the sources N.s are, if not in the home in force")
        ->type_name("DIR");
    verb->add_flag("--compile", options->compile, "Compile them all now");
    verb->callback([options, &status] { status = InitHome(*options); });
}

} // namespace strtool
