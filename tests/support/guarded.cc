// SPDX-License-Identifier: Apache-2.0
#include "tests/support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

GuardedRoom::GuardedRoom(std::size_t size)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t used = (size + page) / page * page;
    mapped_ = used + page;
    void *pages =
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED || mprotect(static_cast<char *>(pages) + used, page, PROT_NONE) != 0)
        throw std::runtime_error("no guarded pages");
    pages_ = static_cast<char *>(pages);
    data_ = pages_ + used - size;
    std::memset(data_, 0xEE, size);
}

GuardedRoom::~GuardedRoom() { munmap(pages_, mapped_); }

Guarded::Guarded(std::string_view bytes) : room_(bytes.size() + 1)
{
    std::memcpy(room_.data(), bytes.data(), bytes.size());
    room_.data()[bytes.size()] = '\0';
}
