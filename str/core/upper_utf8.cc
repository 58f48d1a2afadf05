// SPDX-License-Identifier: Apache-2.0
//
// GLib's answer for each character is kept.  GLib looks further than at one character only in the
// locales of three languages, and for one mark: then it gets the whole text.
#include "str/core/upper_utf8.h"

#include "base/blocks.h"
#include "base/thread_memory.h"
#include "base/utf8.h"
#include "base/utf8_blocks.h"
#include "str/core/case_forms.h"
#include "str/core/sizes.h"

#include <glib.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <clocale>
#include <cstring>
#include <iterator>

namespace libstr
{

namespace
{

constexpr char kSource[] = "str/str_ToUpp";

// ---- The thread's result, which GLib allocates ---------------------------------------------

struct Upper : KeptByThread {
    char *at;
    size_t capacity;
};
thread_local Upper theResult;

void ReleaseResult(KeptByThread *)
{
    g_free(theResult.at);
    theResult.at = nullptr;
    theResult.capacity = 0;
}

// What is written beyond a part of the result: less than a block, and a form.
constexpr size_t kSpare = blocks::kSize + CaseBytes::kMost;

// What cannot be released at the end of the thread stays allocated.
void Reserve(Upper *result, size_t size)
{
    if (size <= result->capacity)
        return;
    KeepByThread(result, ReleaseResult);
    result->at = static_cast<char *>(g_realloc(result->at, size));
    result->capacity = size;
}

// Returns the end of the result.
char *ByGLib(const char *text, size_t length, Upper *result)
{
    KeepByThread(result, ReleaseResult);
    g_free(result->at);
    result->at = utf8::ChangeCase(g_utf8_strup, text, length);
    const size_t size = std::strlen(result->at);
    result->capacity = size + 1;
    return result->at + size;
}

// ---- What GLib makes of a character --------------------------------------------------------

// GLib goes by the first letters of the name: Turkish, Azerbaijani and Lithuanian have rules of
// their own for the letter i.
bool HasRulesOfItsOwn(const char *locale)
{
    const auto begins = [locale](char c1, char c2) { return locale[0] == c1 && locale[1] == c2; };
    return begins('t', 'r') || begins('a', 'z') || begins('l', 't');
}

constexpr gunichar kIotaSubscript = 0x345; // its upper case comes after the marks that follow

// No form where the upper case depends on what follows.
gchar *UpperCharacter(const gchar *text, gssize length)
{
    return g_utf8_get_char(text) == kIotaSubscript ? g_strdup("") : g_utf8_strup(text, length);
}

CaseFormStore theStore;
constexpr CaseForms kUpper = {UpperCharacter, &theStore};

// Most blocks of 256 characters have no case at all.
enum class Case : uint8_t { unknown, none, some };
constexpr unsigned int kBlockBits = 8;
std::atomic<Case> theCases[kFormsEnd >> kBlockBits];

[[gnu::noinline]] Case LearnCase(gunichar block)
{
    constexpr gunichar kSize = 1U << kBlockBits;
    gunichar characters[kSize];
    for (gunichar i = 0; i < kSize; ++i)
        characters[i] = block * kSize + i;
    gchar *const text = g_ucs4_to_utf8(characters, kSize, nullptr, nullptr, nullptr);
    gchar *const upper = g_utf8_strup(text, -1);
    const Case found = std::strcmp(text, upper) == 0 ? Case::none : Case::some;
    theCases[block].store(found, std::memory_order_relaxed);
    g_free(upper);
    g_free(text);
    return found;
}

// Of a character of three bytes or more.
bool HasNoCase(const char *at)
{
    const bool isLong = static_cast<guchar>(at[0]) >= 0xF0;
    const gunichar high = utf8::AppendBits(static_cast<guchar>(at[0]) & 0x0F, at[1]);
    const gunichar block = (isLong ? utf8::AppendBits(high, at[2]) << 6 : high << 6) >> kBlockBits;
    if (block >= std::size(theCases))
        return false;
    const Case known = theCases[block].load(std::memory_order_relaxed);
    return (known != Case::unknown ? known : LearnCase(block)) == Case::none;
}

// ---- Texts ---------------------------------------------------------------------------------

// The text that is left, and the end of the result, which has room for that text and kSpare bytes.
struct Progress {
    const char *in;
    const char *end;
    char *out;
    uint32_t open; // 1 when the byte before `in` begins a character that is not in upper case yet
    Upper *result;
};

// Restores the room after a character that may have grown.
void MakeRoom(Progress *progress)
{
    const auto used = static_cast<size_t>(progress->out - progress->result->at);
    const auto left = static_cast<size_t>(progress->end - progress->in);
    if (used + left + kSpare > progress->result->capacity)
        Reserve(progress->result, used + left + left / 2 + 2 * kSpare);
    progress->out = progress->result->at + used;
}

// Writes the upper case of the character at `in`, and passes over it.  Returns false when it has no
// form.
bool UpperOne(Progress *progress, const char *in)
{
    const utf8::Char c = utf8::CharAt(in);
    const CaseBytes form = BytesOf(kUpper, c.code);
    char *const out = progress->out + (in - progress->in);
    std::memcpy(out, form.bytes, sizeof form.bytes);
    *progress = {in + c.length, progress->end, out + form.length, 0, progress->result};
    MakeRoom(progress);
    return form.length != 0;
}

// The first bytes of characters that may have case.  From U+3000 to U+9FFF none has: there are
// kana, bopomofo and ideographs.
inline uint32_t Leads(blocks::Block block)
{
    if (blocks::Mask(block) == 0)
        return 0;
    return blocks::Mask(blocks::AtLeast(block, '\xC0') ^ blocks::AtLeast(block, '\xE3') ^
                        blocks::AtLeast(block, '\xEA'));
}

// Writes the upper case of the next block, or of its beginning.  The next block takes a character
// that begins with the last byte: wherever characters begin, blocks follow each other without a
// gap, and none waits for the one before.  Returns false at a character without a form.
bool UpperBlock(Progress *progress)
{
    const blocks::Block block =
        blocks::Load(progress->in, static_cast<size_t>(progress->end - progress->in));
    const blocks::Block upper = blocks::Upper(block);
    std::memcpy(progress->out, &upper, sizeof upper);
    const uint32_t leads = Leads(block) << 1 | progress->open;
    for (uint32_t left = leads & blocks::kAll; left != 0; left &= left - 1) {
        const int at = std::countr_zero(left) - 1;
        const char *const in = progress->in + at;
        const bool isTwo = static_cast<guchar>(*in) < 0xE0;
        if (const uint16_t pair = isTwo ? PairOf(kUpper, in) : 0; pair != 0)
            std::memcpy(progress->out + at, &pair, sizeof pair);
        else if (isTwo || !HasNoCase(in))
            return UpperOne(progress, in);
    }
    *progress = {progress->in + blocks::kSize, progress->end, progress->out + blocks::kSize,
                 leads >> blocks::kSize, progress->result};
    return true;
}

// Returns the end of the result, or null.
char *ByBlocks(const char *text, size_t length, Upper *result)
{
    Reserve(result, length + 2 * kSpare);
    Progress progress = {text, text + length, result->at, 0, result};
    while (progress.in < progress.end)
        if (!UpperBlock(&progress))
            return nullptr;
    return progress.out - (progress.in - progress.end); // the last block may have been shorter
}

} // namespace

char *UpperCaseUtf8(const char *text, size_t length, int *outLen)
{
    if (utf8::CountValid(text, length) == utf8::kNotUtf8)
        return nullptr;
    const char *const locale = setlocale(LC_CTYPE, nullptr);
    const bool hasRules = locale != nullptr && HasRulesOfItsOwn(locale);
    Upper *const result = &theResult;
    char *end = hasRules ? nullptr : ByBlocks(text, length, result);
    if (end == nullptr)
        end = ByGLib(text, length, result);
    *end = '\0';
    *outLen = Fit<int>(kSource, end - result->at);
    return result->at;
}

} // namespace libstr
