// SPDX-License-Identifier: Apache-2.0
//
// Texts whose terminating NUL is the last byte before a page that cannot be read, so that a look
// beyond it ends the test.
#ifndef TESTS_SUPPORT_GUARDED_H
#define TESTS_SUPPORT_GUARDED_H

#include <cstddef>
#include <string_view>

class Guarded
{
  public:
    explicit Guarded(std::string_view bytes);
    ~Guarded();
    Guarded(const Guarded &) = delete;
    Guarded &operator=(const Guarded &) = delete;

    const char *c_str() const { return text_; }

  private:
    char *pages_;
    std::size_t mapped_;
    char *text_;
};

#endif
