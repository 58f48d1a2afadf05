// SPDX-License-Identifier: Apache-2.0
//
// Texts and buffers that end right before a page that cannot be touched: a look beyond ends the test.
#ifndef TESTS_SUPPORT_GUARDED_H
#define TESTS_SUPPORT_GUARDED_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

// Pages of memory that go with it.
struct Unmap {
    size_t size;
    void operator()(char *pages) const { munmap(pages, size); }
};
using Pages = std::unique_ptr<char, Unmap>;

inline Pages MapPages(size_t size)
{
    void *const pages = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages == MAP_FAILED)
        throw std::runtime_error("no pages");
    return {static_cast<char *>(pages), {size}};
}

// So many bytes, all of them 0xEE at first; or a text and its NUL.
class Guarded
{
  public:
    explicit Guarded(size_t size) : pages_(MapPages((size / kPage + 2) * kPage))
    {
        char *const end = pages_.get() + (size / kPage + 1) * kPage;
        mprotect(end, kPage, PROT_NONE);
        data_ = static_cast<char *>(std::memset(end - size, 0xEE, size));
    }
    explicit Guarded(std::string_view bytes) : Guarded(bytes.size() + 1)
    {
        *std::copy(bytes.begin(), bytes.end(), data_) = '\0';
    }

    char *data() const { return data_; }
    const char *c_str() const { return data_; }

  private:
    inline static const auto kPage = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    Pages pages_;
    char *data_;
};

// A text of so many bytes over the same few pages of memory, again and again.
class LongText
{
  public:
    explicit LongText(size_t size) : pages_(MapPages((size / kPiece + 1) * kPiece))
    {
        const int fd = memfd_create("text", 0);
        if (write(fd, std::string(kPiece, 'x').data(), kPiece) != ssize_t{kPiece})
            throw std::runtime_error("no pages to repeat");
        for (size_t at = 0; at < pages_.get_deleter().size; at += kPiece)
            mmap(pages_.get() + at, kPiece, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED, fd, 0);
        close(fd);
        pages_.get()[size] = '\0';
    }

    const char *c_str() const { return pages_.get(); }

  private:
    static constexpr size_t kPiece = 1 << 21;
    Pages pages_;
};

#endif
