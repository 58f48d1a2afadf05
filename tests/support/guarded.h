// SPDX-License-Identifier: Apache-2.0
//
// Texts and buffers that end right before a page that cannot be touched, so that a look beyond them
// ends the test.
#ifndef TESTS_SUPPORT_GUARDED_H
#define TESTS_SUPPORT_GUARDED_H

#include <cstddef>
#include <string_view>

// So many bytes, all of them 0xEE at first.
class GuardedRoom
{
  public:
    explicit GuardedRoom(std::size_t size);
    ~GuardedRoom();
    GuardedRoom(const GuardedRoom &) = delete;
    GuardedRoom &operator=(const GuardedRoom &) = delete;

    char *data() const { return data_; }

  private:
    char *pages_;
    std::size_t mapped_;
    char *data_;
};

// The bytes and a NUL.
class Guarded
{
  public:
    explicit Guarded(std::string_view bytes);

    const char *c_str() const { return room_.data(); }

  private:
    GuardedRoom room_;
};

// A text of so many bytes over the same few pages of memory, again and again.
class LongText
{
  public:
    explicit LongText(std::size_t size);
    ~LongText();
    LongText(const LongText &) = delete;
    LongText &operator=(const LongText &) = delete;

    const char *c_str() const { return text_; }

  private:
    static constexpr std::size_t kPiece = 1 << 21;
    std::size_t mapped_;
    char *text_;
};

#endif
