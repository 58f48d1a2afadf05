// SPDX-License-Identifier: Apache-2.0
//
// Case table files, one at a time and apart from any service home.
#ifndef TOOLS_CASETABLE_H
#define TOOLS_CASETABLE_H

#include <filesystem>
#include <stdexcept>
#include <string>

namespace strtool
{

// A file is wrong or cannot be had.  Says which file, where it can the line, and why.
struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The bytes of a file.  Throws a FileError.
std::string ReadFile(const std::filesystem::path &file);

// 12.b for 12.s, in the directory `directory`.
std::filesystem::path CompiledFile(const std::filesystem::path &source,
                                   const std::filesystem::path &directory);

// Compiles the source to the file `compiled`, with the permissions that the umask leaves.  A
// regular file appears when it is complete, in place of an earlier one; to another, such as a
// device, it is written.  Throws a FileError.
void CompileTable(const std::filesystem::path &source, const std::filesystem::path &compiled);

// Tells what stands in a compiled file, whatever it holds.  Returns false when something is odd.
bool DumpTable(const std::filesystem::path &file);

} // namespace strtool

#endif
