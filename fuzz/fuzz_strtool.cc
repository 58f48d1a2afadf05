// SPDX-License-Identifier: Apache-2.0
//
// A command line of any words: what is wrong is said, and nothing else.  Texts are read from
// standard input as they are from arguments.
#define main RunStrtool
#include "tools/main.cc"
#undef main

#include "fuzz/case_table.h"
#include "tools/show.h"

// The exit code and all that is printed.
static std::pair<int, std::string> RunWords(std::vector<std::string> words, FILE *lines)
{
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    char *said;
    size_t size;
    FILE *const output = stdout, *const errors = stderr;
    stdin = lines;
    stdout = stderr = open_memstream(&said, &size);
    const int status = RunStrtool(static_cast<int>(argv.size()), argv.data());
    std::fclose(std::exchange(stdout, output));
    stderr = errors;
    const std::unique_ptr<char, decltype(&std::free)> owned(said, std::free);
    return {status, {said, size}};
}

// Words end with NULs, the last one with a line feed; lines follow.
extern "C" int LLVMFuzzerTestOneInput(const char *bytes, size_t size)
{
    std::string all = std::string(bytes, size) + "\n", lines = all.substr(all.find('\n') + 1);
    std::istringstream given(all.substr(0, all.find('\n'))), rest(lines);
    std::vector<std::string> words = {"strtool"};
    for (std::string word; std::getline(given, word, '\0'); words.push_back(word))
        if (word.starts_with("--lines") || word == "casetable" || word == "init-home")
            return 0; // these name files
    const std::unique_ptr<FILE, decltype(&std::fclose)> input(
        fmemopen(lines.data(), lines.size(), "r"), std::fclose);
    const auto [status, said] = RunWords(words, input.get());
    Demand(status == kMisused ? said.starts_with("strtool: ")
                              : status == kDone || status == kFailed);
    if (!std::feof(input.get()))
        return 0;
    if (std::find(words.begin(), words.end(), "--") == words.end())
        words.emplace_back("--");
    for (std::string line; std::getline(rest, line);)
        words.push_back(VisibleBytes(line));
    const auto [same, again] = RunWords(words, input.get());
    Demand(same == status && (again == said || said.find("strtool: ") != said.npos));
    return 0;
}
