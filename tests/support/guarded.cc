// SPDX-License-Identifier: Apache-2.0
#include "tests/support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <string>

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

LongText::LongText(std::size_t size) : mapped_((size / kPiece + 1) * kPiece)
{
    const int fd = memfd_create("text", 0);
    const std::string piece(kPiece, 'x');
    if (write(fd, piece.data(), kPiece) != ssize_t{kPiece})
        throw std::runtime_error("no pages to repeat");
    text_ =
        static_cast<char *>(mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    for (std::size_t at = 0; at < mapped_; at += kPiece)
        mmap(text_ + at, kPiece, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED, fd, 0);
    close(fd);
    text_[size] = '\0';
}

LongText::~LongText() { munmap(text_, mapped_); }
