// SPDX-License-Identifier: Apache-2.0
#include "tests/support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

Guarded::Guarded(std::string_view bytes)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t used = (bytes.size() + 1 + page - 1) / page * page;
    mapped_ = used + page;
    void *pages =
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED || mprotect(static_cast<char *>(pages) + used, page, PROT_NONE) != 0)
        throw std::runtime_error("no guarded pages");
    pages_ = static_cast<char *>(pages);
    text_ = pages_ + used - bytes.size() - 1;
    std::memcpy(text_, bytes.data(), bytes.size());
    text_[bytes.size()] = '\0';
}

Guarded::~Guarded() { munmap(pages_, mapped_); }
