// SPDX-License-Identifier: Apache-2.0
#include "tests/support/home.h"

#include "services/services.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

TempHome::TempHome() : path_((fs::temp_directory_path() / "libstr.XXXXXX").string())
{
    if (mkdtemp(path_.data()) == nullptr || os_SetHome(path_.c_str()) != 0)
        throw std::runtime_error("no temporary home");
    fs::create_directory(PathOf("toupper"));
    fs::create_directory(PathOf("sys"));
}

TempHome::~TempHome()
{
    os_SetHome(nullptr);
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void TempHome::Write(const std::string &name, std::string_view bytes) const
{
    std::ofstream file(PathOf(name), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush())
        throw std::runtime_error(name + " cannot be written");
}

std::string TempHome::Read(const std::string &name) const
{
    std::ifstream file(PathOf(name), std::ios::binary);
    if (!file)
        throw std::runtime_error(name + " cannot be read");
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

std::vector<std::string> TempHome::List(const std::string &directory) const
{
    std::vector<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(PathOf(directory)))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}
