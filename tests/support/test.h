// SPDX-License-Identifier: Apache-2.0
//
// What nearly every test uses.
#ifndef TESTS_SUPPORT_TEST_H
#define TESTS_SUPPORT_TEST_H

#include "services/services.h"

#include <gtest/gtest.h>
#include <platform/ccs.h>
#include <platform/er.h>
#include <platform/os.h>
#include <str/str.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

using namespace std::string_literals;

// ---- Escapes, traces, logs -------------------------------------------------------------------

// The code of the escape that ends `body`, which is cleared; 0 when none does.  Escapes are jumps:
// nothing that `body` makes may have a destructor.
inline int Escaped(std::function<void()> body)
{
    const auto call = [](void *function) { (*static_cast<std::function<void()> *>(function))(); };
    if (er_Protect(call, &body) != 0)
        return 0;
    er_Clear();
    return er_GetLastCode();
}

// Both sinks are its own while it lives; the trace level is 0 afterwards.
struct Sinks {
    inline static std::string traced; // "19+name 17-name "
    inline static std::string logged; // a line each: the code and the text

    Sinks()
    {
        traced.clear();
        logged.clear();
        er_SetTraceSink([](int traceClass, const char *text, int marker) {
            if (marker >= 0)
                traced += std::to_string(traceClass) + (marker == 1 ? "+" : "-") + text + " ";
        });
        er_SetLogSink(
            [](int code, const char *text) { logged += std::to_string(code) + " " + text + "\n"; });
    }
    ~Sinks()
    {
        er_SetTraceSink(nullptr);
        er_SetLogSink(nullptr);
        er_SubSystemLoggingLevel = 0;
    }
    Sinks(Sinks &&) = delete;
};

// ---- Memory ----------------------------------------------------------------------------------

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

// ---- Texts -----------------------------------------------------------------------------------

CSDescriptor DescriptorOf(const char *setName);

// "6x5 -x3 87x14": kind and bytes of each segment; - is CS_SEG_IGNORE, ? is CS_SEG_RAW.  Checks
// that all services find the same ones.
std::string SegmentsOf(const CSDescriptor &cs, const char *text, int length = -1);
std::string Notation(uint16_t kind, unsigned int length);

// Each byte with its kind, without those of escape sequences.
using Kinds = std::vector<std::pair<uint16_t, char>>;
Kinds KindsOf(const CSDescriptor &cs, const std::string &text, int length = -1);

// In the rows of tests, _ stands for US.
inline std::string WithUs(std::string text)
{
    std::replace(text.begin(), text.end(), '_', '\x1F');
    return text;
}

// The code points of the bytes, nothing when iconv cannot read them whole.
std::optional<std::u32string> Decode(const char *iconvName, std::string_view bytes);

// The UTF-8 text folded character by character; a byte of none stays.
std::string Folded(std::string_view text);

// A slow and obvious reader of ISO 2022 text, byte by byte.  Returns the segments of `bytes`, read
// as a string of the named set with or without escapes.  Knows the sets of kCodes.
std::string ReadSlowly(const std::string &set, std::string_view bytes, bool escapes = true);

// What random tests begin with: the number in STR_TEST_SEED, which CI makes anew each time, else 7.
unsigned int TestSeed();

// The codes that random text is read in.
inline const char *const kCodes[] = {"IA5",  "ISO-2022-JP", "ISO-2022-KR", "EUC-JP", "EUC-KR",
                                     "T.61", "ISO-8859-1",  "JIS X 0201",  "UTF8",   "no such set"};

// Text of less than `mostPieces` pieces: whole sequences, their parts, characters, a random byte.
std::string RandomText(std::mt19937 &random, size_t mostPieces);

#endif
