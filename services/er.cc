// SPDX-License-Identifier: Apache-2.0
//
// The error and trace service: one error environment and one live escape per thread, sinks for
// traces and logs, and the catalogue of messages.
//
// Nothing here allocates: a message may have to say that memory ran out.
#include <platform/er.h>
#include <platform/os.h>

#include "base/protected.h"
#include "services/services.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {
int32_t er_SubSystemLoggingLevel = 0;
}

namespace
{

thread_local sigjmp_buf *theEnvironment;
thread_local er_Status theStatus;

er_TraceSink theTraceSink;
er_LogSink theLogSink;

struct Message {
    int32_t code;
    const char *text; // with %s and %d in place of its arguments
};

constexpr Message kCatalogue[] = {
    {STR_LOG_NO_TABLE, "case table %s could not be read"},
    {STR_ESC_NAME_TOO_LONG, "the name of the character set is longer than 39 characters"},
    {STR_ESC_ENDS_TOO_EARLY, "the compiled case table ends too early"},
    {STR_ESC_NOT_A_CASE_TABLE, "this is not a compiled case table of this version"},
    {STR_LOG_NOT_COMPILED, "case table source %s could not be compiled: line %d"},
    {STR_ESC_NOT_TOUPPER, "the first word of a case table source must be TOUPPER"},
    {STR_ESC_NOT_CHARSET, "the second word of a case table source must be CHARSET"},
    {STR_ESC_WORD_MISSING, "a word is missing at the end of the line"},
    {STR_ESC_NO_LEFT_SIDE, "the rule has no left side"},
    {STR_ESC_NO_RIGHT_SIDE, "the rule has no right side"},
    {STR_ESC_LEFT_TOO_LONG, "the left side of the rule is too long"},
    {STR_ESC_RIGHT_TOO_LONG, "the right side of the rule is too long"},
    {STR_ESC_NO_HEADER, "the case table source has no header"},
    {STR_ESC_NOT_GIVEN, "the compiled case table could not be given to the service account"},
    {STR_ESC_NO_OPERATOR, "the rule has no operator"},
    {STR_LOG_GIVEN_UP, "an operation on a text was given up"},
    {STR_LOG_INVALID_UTF8, "%s%s"},
    {OS_ESC_MEMORY, "out of memory"},
    {OS_ESC_FILE, "a file or directory could not be opened, read, written or locked"},
    {ENC_ESC_MALFORMED, "malformed notation of bytes"},
    {LKF_ESC_TIMEOUT, "the lock was not granted in time"},
};
constexpr char kUnknownCode[] = "no message for this code";

const char *FindText(int32_t code)
{
    for (const Message &message : kCatalogue)
        if (message.code == code)
            return message.text;
    return nullptr;
}

// ---- Lines ---------------------------------------------------------------------------------

// A line under construction; what does not fit is left out.
struct Line {
    std::array<char, 1024> text;
    size_t length;
};

void Put(Line *line, const char *bytes, size_t count)
{
    const size_t room = line->text.size() - 1 - line->length;
    const size_t taken = count < room ? count : room;
    std::memcpy(line->text.data() + line->length, bytes, taken);
    line->length += taken;
    line->text[line->length] = '\0';
}

// Puts as much of a text as leaves room for the rest of the message, and for a number in it.
void PutText(Line *line, const char *text, const char *rest)
{
    constexpr size_t kDigits = 9; // of a number, beyond the two bytes of %d
    const size_t kept = std::strlen(rest) + (std::strstr(rest, "%d") != nullptr ? kDigits : 0);
    const size_t room = line->text.size() - 1 - line->length;
    Put(line, text, std::min(std::strlen(text), room - std::min(room, kept)));
}

void PutNumber(Line *line, int number)
{
    char digits[16];
    const int length = std::snprintf(digits, sizeof digits, "%d", number);
    Put(line, digits, static_cast<size_t>(length));
}

// Puts `text` with its %s and %d replaced by the arguments.
void PutMessage(Line *line, const char *text, va_list arguments)
{
    for (const char *at = text; *at != '\0';) {
        if (at[0] == '%' && at[1] == 's') {
            at += 2;
            PutText(line, va_arg(arguments, const char *), at);
        } else if (at[0] == '%' && at[1] == 'd') {
            PutNumber(line, va_arg(arguments, int));
            at += 2;
        } else {
            Put(line, at++, 1);
        }
    }
}

// Whether the default sink has written this before.  Notes it for the next time.
bool WasSaid(const char *text)
{
    static std::atomic<uint32_t> said[256]; // by their hashes, 0 for a free place
    const uint32_t hash = g_str_hash(text) | 1;
    for (std::atomic<uint32_t> &place : said) {
        uint32_t there = 0;
        if (place.compare_exchange_strong(there, hash) || there == hash)
            return there == hash;
    }
    return true; // enough
}

// Whether the line says why a set has no table.  Each use of the set finds that out again.
bool IsReason(int32_t code)
{
    return theStatus.live != 0 && (code == 0 || code == STR_LOG_NOT_COMPILED);
}

void Log(int32_t code, const char *text)
{
    if (theLogSink != nullptr)
        return theLogSink(code, text);
    Line line{{}, 0};
    if (IsReason(code)) {
        for (const char *part :
             {text, ": ", er_GetCodeText(theStatus.code), " (~ is ", os_GetHome(), ")"})
            Put(&line, part, std::strlen(part));
        text = line.text.data();
        if (WasSaid(text))
            return;
    }
    if (code == 0)
        std::fprintf(stderr, "libstr: %s\n", text);
    else
        std::fprintf(stderr, "libstr: %d: %s\n", static_cast<int>(code), text);
}

bool TracesAreAskedFor() { return er_SubSystemLoggingLevel > 9; }

void TracePlace(const char *what, const char *sourceFile, int line)
{
    if (!TracesAreAskedFor())
        return;
    char text[256];
    std::snprintf(text, sizeof text, "%s %d at %s:%d", what, static_cast<int>(theStatus.code),
                  sourceFile, line);
    er_RealLogProc(ER_TRACE_CALL, text, -1);
}

// Ends the process when there is no environment for the escape to jump to.
void RequireEnvironment(const char *sourceFile, int line)
{
    if (theEnvironment != nullptr)
        return;
    std::fprintf(stderr, "libstr: %d: %s (no error environment, %s:%d)\n",
                 static_cast<int>(theStatus.code), er_GetCodeText(theStatus.code), sourceFile,
                 line);
    std::abort();
}

} // namespace

extern "C" {

void er_SetTraceSink(er_TraceSink sink) { theTraceSink = sink; }

void er_SetLogSink(er_LogSink sink) { theLogSink = sink; }

const char *er_GetCodeText(int32_t code)
{
    const char *text = FindText(code);
    return text == nullptr ? kUnknownCode : text;
}

int32_t er_GetLastCode(void) { return theStatus.code; }

void er_RealLogProc(int traceClass, const char *text, int marker)
{
    if (theTraceSink != nullptr)
        theTraceSink(traceClass, text, marker);
    else if (TracesAreAskedFor())
        std::fprintf(stderr, "libstr: trace %d: %s %s\n", traceClass,
                     marker == 1   ? "enter"
                     : marker == 0 ? "leave"
                                   : "-----",
                     text);
}

sigjmp_buf *er_SetCurrEnv(sigjmp_buf *env)
{
    sigjmp_buf *const replaced = theEnvironment;
    theEnvironment = env;
    return replaced;
}

sigjmp_buf *er_GetCurrEnv(void) { return theEnvironment; }

int er_Protect(void (*body)(void *), void *context)
{
    return libstr::RunProtected<er_SetCurrEnv>(body, context) ? 1 : 0;
}

void er_TracedEscape(int escapeClass, int code, const char *sourceFile, int line)
{
    theStatus = {escapeClass, code, 1};
    TracePlace("escape", sourceFile, line);
    RequireEnvironment(sourceFile, line);
    siglongjmp(*theEnvironment, 1);
}

void er_TraceBeforeJump(const char *sourceFile, int line)
{
    TracePlace("passing on", sourceFile, line);
    if (theStatus.live != 0)
        RequireEnvironment(sourceFile, line);
}

void er_Accept(int escapeClass)
{
    if (theStatus.escapeClass == escapeClass)
        theStatus.live = 0;
}

int er_GetLive(void) { return theStatus.live; }

void er_Clear(void) { theStatus.live = 0; }

void er_RecordStatus(er_Status *status) { *status = theStatus; }

void er_RestoreStatus(const er_Status *status) { theStatus = *status; }

void er_LogMsg(int, int, int code, ...)
{
    Line line{{}, 0};
    va_list arguments;
    va_start(arguments, code);
    PutMessage(&line, er_GetCodeText(code), arguments);
    va_end(arguments);
    Log(code, line.text.data());
}

// The caller gives the types, so even a code without a text shows its arguments.
void er_EnhLogMsg(int, int, int code, const char *types, ...)
{
    Line line{{}, 0};
    const char *text = FindText(code);
    va_list arguments;
    va_start(arguments, types);
    PutMessage(&line, text == nullptr ? types : text, arguments);
    va_end(arguments);
    Log(code, line.text.data());
}

void er_LogInfo(int, const char *text, ...) { Log(0, text); }

} // extern "C"
