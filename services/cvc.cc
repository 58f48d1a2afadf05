// SPDX-License-Identifier: Apache-2.0
//
// Conversion from one character set to another, by GLib's iconv.  Every text passes through UTF-8,
// since that is what GLib upper-cases.  Converters stay open and buffers stay allocated: opening
// and allocating takes longer than converting a short text.  So the loop around g_iconv is our own:
// g_convert_with_iconv would allocate each result.
#include <platform/cvc.h>

#include <platform/er.h>
#include <platform/os.h>

#include "base/utf8.h"
#include "services/services.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

using namespace libstr;

namespace
{

constexpr int kDone = 0;
constexpr int kFailed = 1;

// ---- What a thread keeps ---------------------------------------------------------------------

struct Buffer {
    char *text;
    size_t length;
    size_t capacity;
};

// The names are constant texts; equal names have equal addresses.
struct Converter {
    const char *from;
    const char *to;
    GIConv open; // null: none
};

struct Workspace {
    Converter decoder; // to UTF-8
    Converter encoder; // from UTF-8
    Buffer decoded;
    Buffer result;
    gchar *upper; // released when it is encoded, or after an escape by the next conversion
};

void Close(Converter *converter)
{
    if (converter->open != nullptr)
        g_iconv_close(converter->open);
    converter->open = nullptr;
}

void HoldUpper(Workspace *workspace, gchar *upper)
{
    g_free(workspace->upper);
    workspace->upper = upper;
}

void Release(gpointer data)
{
    auto *const workspace = static_cast<Workspace *>(data);
    Close(&workspace->decoder);
    Close(&workspace->encoder);
    os_free(workspace->decoded.text);
    os_free(workspace->result.text);
    HoldUpper(workspace, nullptr);
    os_free(workspace);
}

GPrivate theWorkspace = G_PRIVATE_INIT(Release);

Workspace *OfThread()
{
    auto *workspace = static_cast<Workspace *>(g_private_get(&theWorkspace));
    if (workspace == nullptr) {
        workspace = static_cast<Workspace *>(os_malloc(sizeof *workspace));
        *workspace = {};
        g_private_set(&theWorkspace, workspace);
    }
    return workspace;
}

// ---- Sets ------------------------------------------------------------------------------------

struct Set {
    const char *name;
    const char *iconv; // null: no such set
    bool upper;
};

constexpr char kUtf8[] = "UTF-8";
constexpr char kUtf7[] = "UTF-7";
constexpr char kUtf16[] = "UTF-16BE"; // the two-byte set, and pairs for characters beyond it

constexpr Set kUniversal[] = {
    {"UCS2", kUtf16, false},  {"UCS2,7", kUtf7, false},  {"UCS2,8", kUtf8, false},
    {"UCS2UP", kUtf16, true}, {"UCS2UP,7", kUtf7, true}, {"UCS2UP,8", kUtf8, true},
};

Set FindSet(const char *name)
{
    for (const Set &set : kUniversal)
        if (std::strcmp(set.name, name) == 0)
            return set;
    ccs_SetInfo info;
    for (int i = 0; ccs_GetSetInfo(i, &info) != 0; ++i)
        if (std::strcmp(info.name, name) == 0)
            return {info.name, info.iconvName, false};
    return {name, nullptr, false};
}

// The bytes of a text of at most `limit` bytes, negative for no limit, up to its NUL.
size_t LengthOf(const Set &set, const char *text, int limit)
{
    const size_t most = limit < 0 ? SIZE_MAX : static_cast<size_t>(limit);
    if (set.iconv != kUtf16)
        return limit < 0 ? std::strlen(text) : strnlen(text, most);
    size_t length = 0;
    while (length + 1 < most && (text[length] != 0 || text[length + 1] != 0))
        length += 2;
    return length + 1 == most ? most : length; // with half a character at the limit
}

// ---- Converting ------------------------------------------------------------------------------

struct Bytes {
    const char *text; // null: malformed
    size_t length;
};

void MakeRoom(Buffer *buffer, size_t more)
{
    const size_t need = buffer->length + more;
    if (need <= buffer->capacity)
        return;
    const size_t capacity = std::max(need, buffer->capacity * 2);
    buffer->text = static_cast<char *>(os_realloc(buffer->text, capacity));
    buffer->capacity = capacity;
}

// Prepares the converter for a new text; false when iconv does not know the codes.
bool Open(Converter *converter, const char *from, const char *to)
{
    if (converter->from == from && converter->to == to && converter->open != nullptr) {
        g_iconv(converter->open, nullptr, nullptr, nullptr, nullptr);
        return true;
    }
    Close(converter);
    GIConv opened = g_iconv_open(to, from);
    if (reinterpret_cast<intptr_t>(opened) == -1) {
        if (errno == ENOMEM)
            er_TracedEscape(ER_CLASS_LIBRARY, OS_ESC_MEMORY, "services/cvc", __LINE__);
        return false;
    }
    *converter = {from, to, opened};
    return true;
}

// Appends what the bytes convert to; for null, what ends the text.  False when they are malformed.
bool Append(Buffer *out, const Converter &converter, const char *in, size_t left)
{
    constexpr size_t kSpare = 16; // more than any character or ending takes
    constexpr auto kStopped = static_cast<size_t>(-1);
    char *from = const_cast<char *>(in);
    for (;;) {
        MakeRoom(out, left + kSpare);
        char *to = out->text + out->length;
        size_t room = out->capacity - out->length;
        const size_t answer =
            g_iconv(converter.open, in == nullptr ? nullptr : &from, &left, &to, &room);
        out->length = out->capacity - room;
        if (answer != kStopped)
            return true;
        if (errno != E2BIG)
            return false;
    }
}

bool IsBase64(char byte) { return g_ascii_isalnum(byte) || byte == '+' || byte == '/'; }

// Whether the UTF-7 text has a plus sign that neither begins coded text nor is followed by a minus.
bool HasEmptyRun(Bytes in)
{
    bool coded = false;
    for (size_t i = 0; i < in.length; ++i) {
        const bool begins = !coded && in.text[i] == '+';
        const char next = i + 1 < in.length ? in.text[i + 1] : '\0';
        if (begins && next != '-' && !IsBase64(next))
            return true;
        coded = begins || (coded && IsBase64(in.text[i]));
    }
    return false;
}

// iconv ignores such a plus sign, and a character that the end of the text cuts off.  It does
// object to a line feed after such a character, so one is appended and removed again.
bool EndUtf7(Workspace *workspace, Bytes in)
{
    if (HasEmptyRun(in) || !Append(&workspace->decoded, workspace->decoder, "\n", 1))
        return false;
    --workspace->decoded.length;
    return true;
}

Bytes ToUtf8(Workspace *workspace, const Set &source, Bytes in)
{
    if (source.iconv == kUtf8)
        return in;
    workspace->decoded.length = 0;
    if (!Open(&workspace->decoder, source.iconv, kUtf8) ||
        !Append(&workspace->decoded, workspace->decoder, in.text, in.length) ||
        (source.iconv == kUtf7 && !EndUtf7(workspace, in)))
        return {nullptr, 0};
    return {workspace->decoded.text, workspace->decoded.length};
}

bool FromUtf8(Workspace *workspace, const Set &target, Bytes text)
{
    Buffer *const result = &workspace->result;
    result->length = 0;
    if (target.iconv == kUtf8) {
        MakeRoom(result, text.length + 1); // is there even for an empty text
        std::memcpy(result->text, text.text, text.length);
        result->length = text.length;
        return true;
    }
    return Open(&workspace->encoder, kUtf8, target.iconv) &&
           Append(result, workspace->encoder, text.text, text.length) &&
           Append(result, workspace->encoder, nullptr, 0);
}

// Leaves the converted text in the workspace; false when the text cannot be converted.
bool Convert(Workspace *workspace, const Set &source, const Set &target, Bytes in)
{
    Bytes text = ToUtf8(workspace, source, in);
    // iconv lets through bytes that are not a character, and a NUL, which would end the text.
    const auto length = static_cast<gssize>(text.length);
    if (text.text == nullptr || g_utf8_validate(text.text, length, nullptr) == FALSE)
        return false;
    if (target.upper) {
        HoldUpper(workspace, utf8::ChangeCase(g_utf8_strup, text.text, text.length));
        text = {workspace->upper, std::strlen(workspace->upper)};
    }
    const bool converted = FromUtf8(workspace, target, text);
    HoldUpper(workspace, nullptr);
    return converted && workspace->result.length <= INT_MAX;
}

} // namespace

extern "C" {

int cvc_ConvertString(int, int, const char *in, int inLength, const char *from, const char *to,
                      char **result, int *resultLength, int *detail1, int *detail2, int *detail3)
{
    *result = nullptr;
    *resultLength = *detail1 = *detail2 = *detail3 = 0;
    const Set source = FindSet(from);
    const Set target = FindSet(to);
    if (in == nullptr || source.iconv == nullptr || source.upper || target.iconv == nullptr)
        return kFailed;
    Workspace *const workspace = OfThread();
    if (!Convert(workspace, source, target, {in, LengthOf(source, in, inLength)}))
        return kFailed;
    Buffer *const converted = &workspace->result;
    MakeRoom(converted, 2);
    std::memset(converted->text + converted->length, 0, 2);
    *result = converted->text;
    *resultLength = static_cast<int>(converted->length);
    return kDone;
}

} // extern "C"
