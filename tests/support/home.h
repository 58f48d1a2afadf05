// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_HOME_H
#define TESTS_SUPPORT_HOME_H

#include "services/services.h"

#include <str/case.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

// A new service home with the empty directories toupper and sys.  It goes with all that it holds.
// Names are those after "~/".
class TempHome
{
  public:
    TempHome()
        : path_(mkdtemp((std::filesystem::temp_directory_path() / "libstr.XXXXXX").string().data()))
    {
        os_SetHome(path_.c_str());
        for (const char *directory : {"toupper", "sys"})
            std::filesystem::create_directory(PathOf(directory));
    }
    ~TempHome()
    {
        os_SetHome(nullptr);
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempHome(TempHome &&) = delete;

    const std::string &path() const { return path_; }
    std::string PathOf(const std::string &name) const { return path_ + "/" + name; }

    void Write(const std::string &name, std::string_view bytes) const
    {
        std::ofstream(PathOf(name), std::ios::binary) << bytes;
    }
    std::string Read(const std::string &name) const
    {
        const std::ifstream file(PathOf(name), std::ios::binary);
        return (std::ostringstream() << file.rdbuf()).str();
    }
    // Whether it was there.
    bool Remove(const std::string &name) const { return std::remove(PathOf(name).c_str()) == 0; }

  private:
    std::string path_;
};

// Puts what is in the work area into a segment, in which it allocates so many blocks at most.
struct Image {
    uint32_t records = 0, end = 4; // of what is allocated
    int32_t count = 0;
    int done;

    Image(char *segment, size_t size, uint32_t blocks = UINT32_MAX)
    {
        static thread_local size_t room, left;
        static thread_local Image *image;
        room = size;
        left = blocks;
        image = this;
        const auto allocate = [](char *, uint32_t bytes) -> uint32_t {
            const uint32_t after = image->end + (bytes + 3) / 4 * 4;
            return left-- == 0 || after > room ? 0 : std::exchange(image->end, after);
        };
        done = str_CopyWorkAreaToSMem(allocate, segment, &records, &count);
    }
};

#endif
