// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_HOME_H
#define TESTS_SUPPORT_HOME_H

#include <string>
#include <string_view>
#include <vector>

// A service home of its own, as "~/" finds it, with the empty directories toupper and sys.  It is
// the home until it goes, and goes with all that it holds.  Names are those behind "~/".
class TempHome
{
  public:
    TempHome();
    ~TempHome();
    TempHome(const TempHome &) = delete;
    TempHome &operator=(const TempHome &) = delete;

    const std::string &path() const { return path_; }
    std::string PathOf(const std::string &name) const { return path_ + "/" + name; }

    void Write(const std::string &name, std::string_view bytes) const;
    std::string Read(const std::string &name) const; // throws where there is no such file
    std::vector<std::string> List(const std::string &directory) const; // sorted

  private:
    std::string path_;
};

#endif
