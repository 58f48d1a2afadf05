// SPDX-License-Identifier: Apache-2.0
//
// Transformation of UTF-8 input.  Only a prefix may have been validated, so every step checks for
// malformed bytes.
#include <str/transform.h>

#include "base/utf8.h"
#include "str/core/frame.h"

#include <platform/dstring.h>
#include <platform/er.h>

#include <glib.h>

#include <algorithm>
#include <climits>
#include <cstring>

using namespace libstr;

namespace
{

constexpr char kInvalidText[] = "str_TransformUTF8InputStr(), Invalid UTF8 in input string: ";

// The transform buffer; the first call initialises it.
dstring theBuffer;
bool theBufferIsNew = true;

constexpr char kEsc = 0x1B;
constexpr gunichar kNone = 0; // no character of the input is a NUL
constexpr int kMostDigits = 3;
constexpr int kMostControl = 31; // numbers up to this one mean control functions
constexpr int kControlShift = 64;
constexpr int kMostGroups = 4; // in the prefix

void EmptyBuffer()
{
    if (theBufferIsNew)
        dstring_init(&theBuffer);
    else
        dstring_setLength(&theBuffer, 0);
    theBufferIsNew = false;
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
void Append(const char *from, const char *to)
{
    if (from != to)
        dstring_appendN(
            &theBuffer, from,
            static_cast<unsigned int>(std::min(static_cast<size_t>(to - from), size_t{UINT_MAX})));
}

void AppendText(const char *text)
{
    if (text != nullptr)
        Append(text, text + std::strlen(text));
}

void AppendNumber(int number)
{
    if (number > kMostControl) {
        dstring_appendChar(&theBuffer, static_cast<char>(number));
    } else {
        dstring_appendChar(&theBuffer, kEsc);
        dstring_appendChar(&theBuffer, static_cast<char>(number + kControlShift));
    }
}

// Appends what the escape character before `at` makes of the input there.  Returns where that ends.
const char *AppendEscaped(const char *at)
{
    Char c = CharAt(at);
    int digits = 0, number = 0;
    for (; digits < kMostDigits && g_unichar_isdigit(c.code); ++digits) {
        number = number * 10 + g_unichar_digit_value(c.code);
        at += c.length;
        c = CharAt(at);
    }
    if (digits > 0) {
        AppendNumber(number);
        return at;
    }
    Append(at, at + c.length); // even a NUL
    return After(at);
}

// Appends the input, changed by the rules.
void Rewrite(const char *at, const Rules &rules, Prefix prefix)
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
            Append(pending, at);
            AppendText(rules.replacements[special - rules.specials]);
            pending = at = next;
        } else if (c.code == rules.escape) {
            Append(pending, at);
            pending = at = AppendEscaped(next);
        } else if (FindIn(rules.dropChars, c) != nullptr) {
            Append(pending, at);
            pending = at = After(next);
        } else {
            at = next;
        }
    }
    Append(pending, at);
}

// The buffer's text.  When that is empty: an empty text for an empty input, else null.
char *Result(const char *input, int maxLen)
{
    if (theBuffer.length > 0)
        return theBuffer.text;
    if (maxLen > 0 || (maxLen < 0 && *input != '\0'))
        return nullptr;
    dstring_set(&theBuffer, "", 0);
    return theBuffer.text;
}

} // namespace

char *str_TransformUTF8InputStr(const char *input, int maxLen, const char *specials,
                                const char *const *replacements, const char *dropChars,
                                char escChar, int prefixMode, unsigned int *outLen)
{
    frame::TraceEntry();
    EmptyBuffer();
    const auto escape = static_cast<guchar>(escChar);
    const Prefix prefix = {prefixMode == 0, false, 0};
    const char *bad;
    if (g_utf8_validate(input, maxLen, &bad))
        Rewrite(input, {specials, replacements, dropChars, escape < 0x80 ? escape : kNone}, prefix);
    else
        er_LogMsg(11, 100, STR_LOG_INVALID_UTF8, kInvalidText, bad, 0);
    *outLen = theBuffer.length;
    char *const result = Result(input, maxLen);
    frame::TraceExit();
    return result;
}
