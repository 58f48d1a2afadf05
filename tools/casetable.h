// SPDX-License-Identifier: Apache-2.0
//
// Case table files by themselves, outside a service home.
#ifndef TOOLS_CASETABLE_H
#define TOOLS_CASETABLE_H

#include <filesystem>
#include <stdexcept>
#include <string>

namespace strtool
{

// A file is wrong or cannot be read or written.  Says which file, the line if it is known, and why.
struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The bytes of a file.  Throws a FileError.
std::string ReadFile(const std::filesystem::path &file);

// The type of a file, not_found when there is none.  Throws a FileError when that cannot be found
// out: what is there must not be taken for missing.
std::filesystem::file_type TypeOf(const std::filesystem::path &file, bool followsLinks = true);

// 12.b for 12.s, in the directory `directory`.
std::filesystem::path CompiledFile(const std::filesystem::path &source,
                                   const std::filesystem::path &directory);

// Compiles the source to the file `compiled`, with the permissions of the umask.  A regular file
// appears when it is complete, in place of an earlier one; a device, say, is written to.  Throws a
// FileError.
void CompileTable(const std::filesystem::path &source, const std::filesystem::path &compiled);

// Shows what a compiled file contains, even if it is damaged.  Returns false when something is odd.
bool DumpTable(const std::filesystem::path &file);

} // namespace strtool

#endif
