// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_HOME_H
#define TESTS_SUPPORT_HOME_H

#include "services/services.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

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

#endif
