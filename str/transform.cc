// SPDX-License-Identifier: Apache-2.0
//
// Transformation of UTF-8 input.  Only a prefix may have been validated, so every step checks for
// malformed bytes.
#include <str/transform.h>

#include "base/thread_memory.h"
#include "base/utf8.h"
#include "str/core/exclusive.h"

#include <platform/dstring.h>
#include <platform/er.h>
#include <platform/os.h>

#include <glib.h>

#include <algorithm>
#include <climits>
#include <cstring>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/transform";
constexpr char kInvalidText[] = "str_TransformUTF8InputStr(), Invalid UTF8 in input string: ";

// A transform buffer.  The service cannot release the string in it, so when its thread ends, the
// next thread that needs one takes it over.
struct TransformBuffer : KeptByThread {
    dstring string;
    TransformBuffer *nextFree;
};

thread_local TransformBuffer *theBuffer;
TransformBuffer *theFirstFree;

constexpr char kEsc = 0x1B;
constexpr gunichar kNone = 0; // no character of the input is a NUL
constexpr int kMostDigits = 3;
constexpr int kMostControl = 31; // numbers up to this one mean control functions
constexpr int kControlShift = 64;
constexpr int kMostGroups = 4; // in the prefix

void GiveBack(KeptByThread *kept)
{
    auto *const buffer = static_cast<TransformBuffer *>(kept);
    theBuffer = nullptr;
    exclusive::Enter();
    buffer->nextFree = theFirstFree;
    theFirstFree = buffer;
    exclusive::Leave();
}

TransformBuffer *MakeBuffer()
{
    auto *const buffer = static_cast<TransformBuffer *>(os_malloc(sizeof(TransformBuffer)));
    *buffer = {};
    dstring_init(&buffer->string);
    return buffer;
}

TransformBuffer *TakeBuffer()
{
    exclusive::Enter();
    TransformBuffer *const buffer = theFirstFree;
    if (buffer != nullptr)
        theFirstFree = buffer->nextFree;
    exclusive::Leave();
    return buffer;
}

// The thread's buffer, without a text.
dstring *EmptyBuffer()
{
    if (theBuffer == nullptr) {
        TransformBuffer *const taken = TakeBuffer();
        TransformBuffer *const buffer = taken != nullptr ? taken : MakeBuffer();
        if (!KeepByThread(buffer, GiveBack)) {
            GiveBack(buffer);
            frame::Raise(kSource, OS_ESC_MEMORY);
        }
        theBuffer = buffer;
    }
    dstring_setLength(&theBuffer->string, 0);
    return &theBuffer->string;
}

// ---- Characters ----------------------------------------------------------------------------

using utf8::Char;
using utf8::CharAt;

// The place after the character; a NUL is not passed.
const char *After(const char *at) { return *at == '\0' ? at : at + CharAt(at).length; }

// Where the character is in the set; null when it is not there.
const char *FindIn(const char *set, const Char &c)
{
    for (Char member; *set != '\0'; set += member.length) {
        member = CharAt(set);
        if (member.code == c.code)
            return set;
    }
    return nullptr;
}

// ---- Rules ---------------------------------------------------------------------------------

// The leading groups in parentheses.
struct Prefix {
    bool over;
    bool inGroup;
    int groups; // closed so far
};

// Whether the next character belongs to the prefix.
bool IsInPrefix(Prefix *prefix, gunichar code)
{
    if (prefix->over)
        return false;
    if (!prefix->inGroup) {
        prefix->over = code == '=';
        prefix->inGroup = code == '(';
        return prefix->inGroup;
    }
    if (code == ')') {
        prefix->inGroup = false;
        prefix->over = ++prefix->groups == kMostGroups;
    }
    return true;
}

struct Rules {
    const char *specials;
    const char *const *replacements;
    const char *dropChars;
    gunichar escape;
};

// The service refuses more bytes than a string can hold; UINT_MAX is more.
void Append(dstring *text, const char *from, const char *to)
{
    if (from != to)
        dstring_appendN(
            text, from,
            static_cast<unsigned int>(std::min(static_cast<size_t>(to - from), size_t{UINT_MAX})));
}

void AppendReplacement(dstring *text, const char *replacement)
{
    if (replacement != nullptr)
        Append(text, replacement, replacement + std::strlen(replacement));
}

void AppendNumber(dstring *text, int number)
{
    if (number > kMostControl) {
        dstring_appendChar(text, static_cast<char>(number));
    } else {
        dstring_appendChar(text, kEsc);
        dstring_appendChar(text, static_cast<char>(number + kControlShift));
    }
}

// Appends what the escape character before `at` makes of the input there.  Returns where that ends.
const char *AppendEscaped(dstring *text, const char *at)
{
    Char c = CharAt(at);
    int digits = 0, number = 0;
    for (; digits < kMostDigits && g_unichar_isdigit(c.code); ++digits) {
        number = number * 10 + g_unichar_digit_value(c.code);
        at += c.length;
        c = CharAt(at);
    }
    if (digits > 0) {
        AppendNumber(text, number);
        return at;
    }
    Append(text, at, at + c.length); // even a NUL
    return After(at);
}

// Appends the input, changed by the rules.
void Rewrite(dstring *text, const char *at, const Rules &rules, Prefix prefix)
{
    const char *pending = at; // the input from here on is still to be copied
    while (*at != '\0') {
        const Char c = CharAt(at);
        const char *const next = at + c.length;
        if (IsInPrefix(&prefix, c.code)) {
            at = next;
            continue;
        }
        if (const char *special = FindIn(rules.specials, c); special != nullptr) {
            Append(text, pending, at);
            AppendReplacement(text, rules.replacements[special - rules.specials]);
            pending = at = next;
        } else if (c.code == rules.escape) {
            Append(text, pending, at);
            pending = at = AppendEscaped(text, next);
        } else if (FindIn(rules.dropChars, c) != nullptr) {
            Append(text, pending, at);
            pending = at = After(next);
        } else {
            at = next;
        }
    }
    Append(text, pending, at);
}

// The result.  When the text is empty: an empty text for an empty input, else null.
char *Result(dstring *text, const char *input, int maxLen)
{
    if (text->length > 0)
        return text->text;
    if (maxLen > 0 || (maxLen < 0 && *input != '\0'))
        return nullptr;
    dstring_set(text, "", 0);
    return text->text;
}

} // namespace

char *str_TransformUTF8InputStr(const char *input, int maxLen, const char *specials,
                                const char *const *replacements, const char *dropChars,
                                char escChar, int prefixMode, unsigned int *outLen)
{
    frame::TraceEntry();
    dstring *const text = EmptyBuffer();
    const auto escape = static_cast<guchar>(escChar);
    const Prefix prefix = {prefixMode == 0, false, 0};
    const char *bad;
    if (g_utf8_validate(input, maxLen, &bad))
        Rewrite(text, input, {specials, replacements, dropChars, escape < 0x80 ? escape : kNone},
                prefix);
    else
        er_LogMsg(11, 100, STR_LOG_INVALID_UTF8, kInvalidText, bad, 0);
    *outLen = text->length;
    char *const result = Result(text, input, maxLen);
    frame::TraceExit();
    return result;
}
