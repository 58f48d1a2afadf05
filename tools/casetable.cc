// SPDX-License-Identifier: Apache-2.0
//
// strtool casetable: compiles and checks case tables, and shows compiled ones.
#include "tools/casetable.h"

#include "tools/input.h"
#include "tools/verbs.h"

#include "services/services.h"

#include <str/casetable.h>

#include <CLI/CLI.hpp>
#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

namespace strtool
{

namespace fs = std::filesystem;

namespace
{

[[noreturn]] void Fail(const fs::path &file, const std::string &why)
{
    throw FileError(file.string() + ": " + why);
}

// ---- What the library says -----------------------------------------------------------------

// The line that its message about a source ends with; 0 while there is none.
int theFailedLine;

void TakeLog(int code, const char *text)
{
    if (code != 23803)
        return;
    const char *const end = text + std::strlen(text);
    const char *digits = end;
    while (digits > text && g_ascii_isdigit(digits[-1]))
        --digits;
    std::from_chars(digits, end, theFailedLine);
}

// Calls the library, which logs to us in the meantime.  Answers what the call answers.
int Listening(const std::function<int()> &call)
{
    theFailedLine = 0;
    er_SetLogSink(TakeLog);
    const int result = call();
    er_SetLogSink(nullptr);
    return result;
}

// The line of the file in which the library's `piece` lies: it reads long lines in pieces.
int LineOfPiece(const fs::path &file, int piece)
{
    constexpr size_t kPiece = 80;
    const std::string text = ReadFile(file);
    int line = 0;
    for (size_t at = 0, pieces = 0; at < text.size() && pieces < static_cast<size_t>(piece);) {
        const size_t newline = std::min(text.find('\n', at), text.size() - 1);
        pieces += (newline - at) / kPiece + 1;
        at = newline + 1;
        ++line;
    }
    return line;
}

[[noreturn]] void FailAsSaid(const fs::path &file)
{
    const std::string why = er_GetCodeText(er_GetLastCode());
    if (theFailedLine == 0)
        Fail(file, why);
    throw FileError(file.string() + ":" + std::to_string(LineOfPiece(file, theFailedLine)) + ": " +
                    why);
}

// ---- Homes of our own ----------------------------------------------------------------------

// A service home on the file system of a file to be made, of this process's group: the library
// writes compiled files by way of its home, for the group of the service account alone.
class TemporaryHome
{
  public:
    explicit TemporaryHome(const fs::path &beside)
        : path((fs::absolute(beside).parent_path() / ".casetable-XXXXXX").string())
    {
        if (mkdtemp(path.data()) == nullptr)
            Fail(beside, std::strerror(errno));
        // The directory around it may have passed its own group on.
        [[maybe_unused]] const int given = chown(path.c_str(), static_cast<uid_t>(-1), getegid());
        std::error_code error;
        fs::create_directory(fs::path(path) / "toupper", error);
        os_SetHome(path.c_str());
    }
    ~TemporaryHome()
    {
        os_SetHome(nullptr);
        std::error_code error;
        fs::remove_all(path, error);
    }
    TemporaryHome(const TemporaryHome &) = delete;
    TemporaryHome &operator=(const TemporaryHome &) = delete;

    fs::path CompiledFile() const { return fs::path(path) / "compiled"; }

  private:
    std::string path;
};

// No home: nothing is written.
struct NoHome {
    NoHome() { os_SetHome("/dev/null/none"); }
    ~NoHome() { os_SetHome(nullptr); }
    NoHome(const NoHome &) = delete;
    NoHome &operator=(const NoHome &) = delete;
};

// ---- Compiling and checking ----------------------------------------------------------------

void CompileTo(const fs::path &source, const fs::path &compiled)
{
    CaseTableRecord record = {};
    // A path of ours that begins with ~/ is not the library's.
    const std::string from = fs::absolute(source).string(), to = compiled.string();
    if (Listening([&] { return str_CompileCaseTable(from.c_str(), to.c_str(), &record); }) == 0)
        FailAsSaid(source);
    str_FreeCTEntry(&record);
}

void Load(const fs::path &compiled)
{
    CaseTableRecord record = {};
    const std::string from = fs::absolute(compiled).string();
    if (Listening([&] { return str_LoadCaseTable(from.c_str(), &record); }) == 0)
        FailAsSaid(compiled);
    str_FreeCTEntry(&record);
}

bool IsCompiled(const fs::path &file)
{
    const uint32_t magic = GUINT32_TO_LE(CASE_TABLE_MAGIC);
    return file.extension() == ".b" || ReadFile(file).starts_with(std::string_view(
                                           reinterpret_cast<const char *>(&magic), sizeof magic));
}

void Check(const fs::path &file)
{
    if (IsCompiled(file))
        return Load(file);
    const NoHome none;
    CompileTo(file, "/dev/null/none");
}

// Does it to each file; answers the exit code.
int ForEachFile(const std::vector<std::string> &files,
                const std::function<bool(const fs::path &)> &act)
{
    int status = kDone;
    for (const std::string &file : files)
        try {
            if (!act(file))
                status = kFailed;
        } catch (const FileError &error) {
            Complain(error.what());
            status = kFailed;
        }
    return status;
}

// ---- The command line ----------------------------------------------------------------------

struct CompileOptions {
    std::vector<std::string> files;
    std::string output;
    std::string directory;
};

int Compile(const CompileOptions &options)
{
    if (!options.output.empty() && options.files.size() > 1)
        throw UsageError("casetable compile: -o takes one FILE");
    return ForEachFile(options.files, [&](const fs::path &source) {
        const fs::path directory =
            options.directory.empty() ? source.parent_path() : fs::path(options.directory);
        CompileTable(source, options.output.empty() ? CompiledFile(source, directory)
                                                    : fs::path(options.output));
        return true;
    });
}

void AddCompile(CLI::App &family, int &status)
{
    CLI::App *verb = family.add_subcommand("compile", "Compile sources, N.s to N.b");
    const auto options = std::make_shared<CompileOptions>();
    verb->add_option("FILE", options->files, "The sources")->type_name("")->required();
    CLI::Option *output =
        verb->add_option("-o,--output", options->output, "The compiled file")->type_name("OUT");
    verb->add_option("-d,--directory", options->directory, "Where the compiled files go")
        ->type_name("DIR")
        ->excludes(output);
    verb->callback([options, &status] { status = Compile(*options); });
}

// Declares a verb that does the same to each file.
void AddFileVerb(CLI::App &family, const char *name, const char *description, const char *files,
                 bool (*act)(const fs::path &), int &status)
{
    CLI::App *verb = family.add_subcommand(name, description);
    const auto names = std::make_shared<std::vector<std::string>>();
    verb->add_option("FILE", *names, files)->type_name("")->required();
    verb->callback([names, act, &status] { status = ForEachFile(*names, act); });
}

} // namespace

std::string ReadFile(const fs::path &file)
{
    std::FILE *stream = std::fopen(file.c_str(), "rbe");
    if (stream == nullptr)
        Fail(file, std::strerror(errno));
    std::string bytes;
    char buffer[4096];
    for (size_t count; (count = std::fread(buffer, 1, sizeof buffer, stream)) > 0;)
        bytes.append(buffer, count);
    const int error = std::ferror(stream) != 0 ? errno : 0;
    std::fclose(stream);
    if (error != 0)
        Fail(file, std::strerror(error));
    return bytes;
}

fs::path CompiledFile(const fs::path &source, const fs::path &directory)
{
    return directory / source.filename().replace_extension(".b");
}

void CompileTable(const fs::path &source, const fs::path &compiled)
{
    const TemporaryHome home(compiled);
    CompileTo(source, home.CompiledFile());
    if (!fs::exists(home.CompiledFile())) // the library does not say so
        Fail(compiled, er_GetCodeText(er_GetLastCode()));
    std::error_code error;
    fs::rename(home.CompiledFile(), compiled, error);
    if (error)
        Fail(compiled, error.message());
}

void AddCaseTable(CLI::App &app, int &status)
{
    CLI::App *family = app.add_subcommand("casetable", "Compile, check and show case tables")
                           ->require_subcommand(1);
    AddCompile(*family, status);
    AddFileVerb(
        *family, "check", "Say what is wrong with sources or compiled files", "The files",
        [](const fs::path &file) {
            Check(file);
            return true;
        },
        status);
    AddFileVerb(*family, "dump", "Show compiled files, and what is odd about them",
                "The compiled files", DumpTable, status);
}

} // namespace strtool
