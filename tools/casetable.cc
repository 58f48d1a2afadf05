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

std::string Words(GError *error)
{
    std::string words = error->message;
    g_error_free(error);
    return words;
}

// ---- Writing -------------------------------------------------------------------------------

// Writes to a file of any sort, such as a device or a pipe.
void WriteInto(const fs::path &file, const std::string &bytes)
{
    std::FILE *const stream = std::fopen(file.c_str(), "we");
    bool isWritten = stream != nullptr;
    if (isWritten) {
        isWritten = std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
        isWritten = std::fclose(stream) == 0 && isWritten;
    }
    if (!isWritten)
        Fail(file, std::strerror(errno));
}

// Creates a regular file, which appears when it is complete, in place of an earlier one.
void Replace(const fs::path &file, const std::string &bytes)
{
    constexpr int kMode = 0666; // less the umask
    GError *error = nullptr;
    if (g_file_set_contents_full(file.c_str(), bytes.data(), static_cast<gssize>(bytes.size()),
                                 G_FILE_SET_CONTENTS_CONSISTENT, kMode, &error) == FALSE)
        Fail(file, Words(error));
}

void WriteFile(const fs::path &file, const std::string &bytes)
{
    std::error_code ignored;
    if (TypeOf(file, false) == fs::file_type::not_found)
        Replace(file, bytes);
    else if (TypeOf(file) == fs::file_type::regular)
        Replace(fs::canonical(file, ignored), bytes);
    else
        WriteInto(file, bytes);
}

// ---- Messages of the library ---------------------------------------------------------------

// The line number at the end of its message about a source; 0 if there was no such message.
int theFailedLine;

void TakeLog(int code, const char *text)
{
    if (code != STR_LOG_NOT_COMPILED)
        return;
    const char *const end = text + std::strlen(text);
    const char *digits = end;
    while (digits > text && g_ascii_isdigit(digits[-1]))
        --digits;
    std::from_chars(digits, end, theFailedLine);
}

// Calls the library with its log going to TakeLog.  Returns what the call returns.
int Listening(const std::function<int()> &call)
{
    theFailedLine = 0;
    er_SetLogSink(TakeLog);
    const int result = call();
    er_SetLogSink(nullptr);
    return result;
}

// The line of the source in which the library's `piece` lies: it reads long lines in pieces.
int LineOfPiece(std::string_view source, int piece)
{
    constexpr size_t kPiece = 80;
    int line = 0;
    for (size_t at = 0, pieces = 0; at < source.size() && pieces < static_cast<size_t>(piece);) {
        const size_t newline = std::min(source.find('\n', at), source.size() - 1);
        pieces += (newline - at) / kPiece + 1;
        at = newline + 1;
        ++line;
    }
    return line;
}

[[noreturn]] void FailAtLine(const fs::path &file, long line, const std::string &why)
{
    throw FileError(file.string() + ":" + std::to_string(line) + ": " + why);
}

[[noreturn]] void FailAsSaid(const fs::path &file, std::string_view bytes)
{
    const std::string why = er_GetCodeText(er_GetLastCode());
    if (theFailedLine == 0)
        Fail(file, why);
    FailAtLine(file, LineOfPiece(bytes, theFailedLine), why);
}

// ---- Files that the library reads and writes -----------------------------------------------

// A temporary service home with a copy of a file.  So the library can read any file, even a pipe,
// under a name that is short enough for its messages, and may write compiled files.
class Workplace
{
  public:
    static constexpr char kGiven[] = "~/given";
    static constexpr char kCompiled[] = "~/compiled";

    explicit Workplace(const std::string &given) : Workplace() { WriteInto(home / "given", given); }
    ~Workplace()
    {
        os_SetHome(nullptr);
        std::error_code ignored;
        fs::remove_all(home, ignored);
    }
    Workplace(const Workplace &) = delete;
    Workplace &operator=(const Workplace &) = delete;

    std::string Compiled() const
    {
        if (!fs::exists(home / "compiled")) // the library does not report this
            Fail(home, er_GetCodeText(er_GetLastCode()));
        return ReadFile(home / "compiled");
    }

  private:
    Workplace()
    {
        GError *error = nullptr;
        gchar *const made = g_dir_make_tmp("casetable-XXXXXX", &error);
        if (made == nullptr)
            throw FileError(Words(error));
        home = made;
        g_free(made);
        // The library only writes where the group is ours; the parent directory may have given its
        // own.
        [[maybe_unused]] const int given = chown(home.c_str(), static_cast<uid_t>(-1), getegid());
        std::error_code ignored;
        fs::create_directory(home / "toupper", ignored);
        os_SetHome(home.c_str());
    }

    fs::path home;
};

// ---- Compiling and checking ----------------------------------------------------------------

// The library ignores what follows a NUL in a line.
void RefuseNulIn(const fs::path &file, std::string_view source)
{
    const std::string_view before = source.substr(0, source.find('\0'));
    if (before.size() < source.size())
        FailAtLine(file, std::count(before.begin(), before.end(), '\n') + 1,
                   "there is a NUL in the line");
}

// The bytes that the source compiles to.
std::string CompileSource(const fs::path &file, const std::string &source)
{
    RefuseNulIn(file, source);
    const Workplace place(source);
    CaseTableRecord record = {};
    if (Listening([&] { return str_CompileCaseTable(place.kGiven, place.kCompiled, &record); }) ==
        0)
        FailAsSaid(file, source);
    str_FreeCTEntry(&record);
    return place.Compiled();
}

void Load(const fs::path &file, const std::string &compiled)
{
    const Workplace place(compiled);
    CaseTableRecord record = {};
    if (Listening([&] { return str_LoadCaseTable(place.kGiven, &record); }) == 0)
        FailAsSaid(file, compiled);
    str_FreeCTEntry(&record);
}

bool IsCompiled(const fs::path &file, std::string_view bytes)
{
    const uint32_t magic = GUINT32_TO_LE(CASE_TABLE_MAGIC);
    return file.extension() == ".b" || bytes.starts_with(std::string_view(
                                           reinterpret_cast<const char *>(&magic), sizeof magic));
}

bool Check(const fs::path &file)
{
    const std::string bytes = ReadFile(file);
    if (IsCompiled(file, bytes))
        Load(file, bytes);
    else
        CompileSource(file, bytes);
    return true;
}

// Calls `act` for each file; returns the exit code.
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

// Declares a verb that calls `act` for each file.
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
    gchar *contents;
    gsize size;
    GError *error = nullptr;
    if (g_file_get_contents(file.c_str(), &contents, &size, &error) == FALSE)
        throw FileError(Words(error)); // which name the file
    std::string bytes(contents, size);
    g_free(contents);
    return bytes;
}

fs::file_type TypeOf(const fs::path &file, bool followsLinks)
{
    std::error_code error;
    const fs::file_type type =
        (followsLinks ? fs::status(file, error) : fs::symlink_status(file, error)).type();
    if (type == fs::file_type::none)
        Fail(file, error.message());
    return type;
}

fs::path CompiledFile(const fs::path &source, const fs::path &directory)
{
    return directory / source.filename().replace_extension(".b");
}

void CompileTable(const fs::path &source, const fs::path &compiled)
{
    WriteFile(compiled, CompileSource(source, ReadFile(source)));
}

void AddCaseTable(CLI::App &app, int &status)
{
    CLI::App *family = app.add_subcommand("casetable", "Compile, check and show case tables")
                           ->require_subcommand(1);
    AddCompile(*family, status);
    AddFileVerb(*family, "check", "Say what is wrong with sources or compiled files", "The files",
                Check, status);
    AddFileVerb(*family, "dump", "Show compiled files, and what is odd about them",
                "The compiled files", DumpTable, status);
}

} // namespace strtool
