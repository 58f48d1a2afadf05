// SPDX-License-Identifier: Apache-2.0
//
// Conversion from one character set to another.  iconv, as GLib wraps it, knows the codes; UTF-8 is
// what every text passes through, since that is what GLib upper-cases.
#include <platform/cvc.h>

#include <platform/os.h>

#include "services/services.h"

#include <glib.h>

#include <climits>
#include <cstring>

namespace
{

constexpr int kDone = 0;
constexpr int kFailed = 1;

// What a thread keeps: the buffer of its results, and the text under way, which an escape may have
// left behind.
struct Workspace {
    char *buffer;
    size_t capacity;
    gchar *text;
};

void Release(gpointer data)
{
    auto *const workspace = static_cast<Workspace *>(data);
    g_free(workspace->text);
    os_free(workspace->buffer);
    os_free(workspace);
}

GPrivate theWorkspace = G_PRIVATE_INIT(Release);

Workspace *OfThread()
{
    auto *workspace = static_cast<Workspace *>(g_private_get(&theWorkspace));
    if (workspace == nullptr) {
        workspace = static_cast<Workspace *>(os_malloc(sizeof *workspace));
        *workspace = {nullptr, 0, nullptr};
        g_private_set(&theWorkspace, workspace);
    }
    return workspace;
}

void Hold(Workspace *workspace, gchar *text)
{
    g_free(workspace->text);
    workspace->text = text;
}

// Moves the text under way, of `length` bytes, to the buffer, where it has room for a NUL of two
// bytes behind it.
char *Keep(Workspace *workspace, size_t length)
{
    const size_t need = length + 2;
    if (need > workspace->capacity) {
        workspace->buffer = static_cast<char *>(os_realloc(workspace->buffer, need));
        workspace->capacity = need;
    }
    std::memcpy(workspace->buffer, workspace->text, length);
    std::memset(workspace->buffer + length, 0, 2);
    Hold(workspace, nullptr);
    return workspace->buffer;
}

struct Set {
    const char *name;
    const char *iconv; // null: no such set
    bool upper;
};

constexpr char kUtf8[] = "UTF-8";
constexpr char kUtf7[] = "UTF-7";
constexpr char kUtf16[] = "UTF-16BE"; // the two-byte set, and what lies beyond it in pairs

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

gchar *ToUtf8(const Set &set, const char *in, size_t length, gsize *written)
{
    return g_convert(in, static_cast<gssize>(length), kUtf8, set.iconv, nullptr, written, nullptr);
}

bool IsBase64(char byte) { return g_ascii_isalnum(byte) || byte == '+' || byte == '/'; }

// Whether a plus sign of UTF-7 text, which something else follows, neither begins anything coded nor
// stands for itself.
bool HasEmptyRun(const char *line, size_t length)
{
    bool coded = false;
    for (const char *end = line + length; line < end; ++line) {
        const bool begins = !coded && *line == '+';
        if (begins && line[1] != '-' && !IsBase64(line[1]))
            return true;
        coded = begins || (coded && IsBase64(*line));
    }
    return false;
}

// iconv passes over such a plus sign.  Nor does it object to a character that the end of the text
// cuts off, but to what then comes behind it: a line feed, which is taken away again.
gchar *Utf7ToUtf8(const Set &set, const char *in, size_t length, gsize *written)
{
    auto *const line = static_cast<gchar *>(g_malloc(length + 1));
    std::memcpy(line, in, length);
    line[length] = '\n';
    gchar *const text =
        HasEmptyRun(line, length) ? nullptr : ToUtf8(set, line, length + 1, written);
    g_free(line);
    if (text != nullptr)
        text[--*written] = '\0';
    return text;
}

// Leaves the converted text under way and its bytes in `length`; false when there is none.
bool Convert(Workspace *workspace, const Set &source, const Set &target, const char *in,
             size_t inLength, gsize *length)
{
    const auto toUtf8 = source.iconv == kUtf7 ? Utf7ToUtf8 : ToUtf8;
    Hold(workspace, toUtf8(source, in, inLength, length));
    // Not all that iconv lets through is a character; and a NUL among them would end the text.
    if (workspace->text == nullptr ||
        g_utf8_validate(workspace->text, static_cast<gssize>(*length), nullptr) == FALSE)
        return false;
    if (target.upper)
        Hold(workspace, g_utf8_strup(workspace->text, -1));
    Hold(workspace, g_convert(workspace->text, -1, target.iconv, kUtf8, nullptr, length, nullptr));
    return workspace->text != nullptr && *length <= INT_MAX;
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
    gsize length = 0;
    if (!Convert(workspace, source, target, in, LengthOf(source, in, inLength), &length))
        return kFailed;
    *result = Keep(workspace, length);
    *resultLength = static_cast<int>(length);
    return kDone;
}

} // extern "C"
