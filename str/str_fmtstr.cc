// SPDX-License-Identifier: Apache-2.0
//
// The builder: the text of a format and its arguments.
//
// Strings, bytes and the digits of plain integers are copied.  The C library prints all other
// values, one directive at a time.  It never sees the caller's directive: one is written here from
// the parsed fields, with width and precision as arguments.  So no format, however malformed, makes
// it read an argument that is not there.
#include <str/format.h>

#include "base/switches.h"
#include "str/core/buffer.h"
#include "str/core/build.h"
#include "str/core/frame.h"
#include "str/core/segments.h"
#include "str/core/sets.h"
#include "str/core/truncation.h"
#include "str/core/utf8.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstring>
#include <functional>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_fmtstr";

// The print buffer: the text built last, and a NUL.
thread_local ThreadBuffer<char> theBuffer;

constexpr size_t kLeastGrowth = 128;
constexpr size_t kMostCapacity = INT_MAX - kLeastGrowth; // results are counted in ints

void EnlargeTo(ThreadBuffer<char> *buffer, uint64_t need)
{
    if (need > kMostCapacity)
        frame::Raise(kSource, OS_ESC_MEMORY);
    Grow(buffer, std::max(static_cast<size_t>(need), buffer->capacity + kLeastGrowth));
}

// ---- Escapes -------------------------------------------------------------------------------
//
// What appends to the text returns false when an escape of the library has ended the work.  Only
// what may raise one runs protected.

template <class Body>
bool Protect(Body &&body)
{
    return frame::Protect(kSource, frame::Accept(ER_CLASS_LIBRARY), body, [] {});
}

[[gnu::noinline]] bool EnlargeProtected(ThreadBuffer<char> *buffer, uint64_t need)
{
    return Protect([=] { EnlargeTo(buffer, need); });
}

constexpr Bytes kNothing = {"", 0};

void PutSpaces(Build *build, size_t count)
{
    std::memset(build->buffer->at + build->length, ' ', count);
    build->length += static_cast<unsigned int>(count);
}

// ---- Strings and bytes ---------------------------------------------------------------------

constexpr size_t kLong = 128; // bytes of a string that is not worth a second copy

bool IsInBuffer(const Build &build, const char *at)
{
    const std::less<> before;
    return !before(at, build.buffer->at) && before(at, build.buffer->at + build.buffer->capacity);
}

// Puts bytes of the caller's, or leaves a gap for them.
void PutOrOmit(Build *build, Bytes bytes)
{
    if (!build->isCopied || bytes.size < kLong || build->omitted.size != 0 ||
        IsInBuffer(*build, bytes.at)) {
        Put(build, bytes);
        return;
    }
    build->omission = build->length;
    build->omitted = bytes;
    build->length += static_cast<unsigned int>(bytes.size);
}

// Appends the bytes, padded with spaces to the width, and then `suffix`.  Where there are many,
// they are the caller's.
bool AppendPadded(Build *build, const Directive &directive, Bytes bytes, Bytes suffix)
{
    const auto width = static_cast<size_t>(directive.width);
    const size_t padding = width > bytes.size ? width - bytes.size : 0;
    const bool left = (directive.flags & kLeftFlag) != 0;
    if (!MakeRoom(*build, padding + bytes.size + suffix.size))
        return false;
    if (padding != 0 && !left)
        PutSpaces(build, padding);
    PutOrOmit(build, bytes);
    if (padding != 0 && left)
        PutSpaces(build, padding);
    if (suffix.size != 0)
        Put(build, suffix);
    return true;
}

// The same without a suffix.  Most bytes are few, and not padded.
inline bool AppendBytes(Build *build, const Directive &directive, Bytes bytes)
{
    if (bytes.size < kLong && static_cast<size_t>(directive.width) <= bytes.size)
        return AppendText(build, bytes);
    return AppendPadded(build, directive, bytes, kNothing);
}

// Whether the next text reads as ASCII, if the last segment is of that kind.
bool EndsInAscii(uint16_t lastKind)
{
    uint32_t unused;
    const bool isKnown = IsText(lastKind) || lastKind == CS_SEG_RAW;
    return HoldsAscii(FlagsOf(isKnown ? lastKind : ccs_GetCP(0, &unused)));
}

// As EscapesAfter, by the service's walk.
Bytes EscapesOfService(const char *string, int length, const CSDescriptor *cs)
{
    uint16_t last = CS_SEG_END;
    SegmentWalk walk;
    WalkSegments(&walk, string, cs, length);
    while (NextSegment(&walk))
        last = walk.kind;
    if (EndsInAscii(last))
        return kNothing;
    int escLen = 0;
    const char *escapes = ccs_GetConfAsciiEscs(cs, static_cast<int16_t>(cs->escMode), &escLen);
    if (escapes == nullptr || escLen < 0)
        return kNothing;
    return {escapes, static_cast<size_t>(escLen)};
}

// The escapes that must follow the string, which is not empty, so that the format's text after it
// reads as ASCII.  `room` has room for kMostEscapes.
Bytes EscapesAfter(Bytes string, bool isCut, const CSDescriptor *cs, char *room)
{
    const int length = isCut ? static_cast<int>(string.size) : -1;
    CSWalk walk;
    if (!BeginOwnWalk(&walk, string.at, cs, length))
        return EscapesOfService(string.at, length, cs);
    const CSWalk beginning = walk;
    CSMeasure unused;
    ccs_MeasureText(&walk, SIZE_MAX, SIZE_MAX, &unused);
    const auto size = static_cast<size_t>(ccs_GetWalkEscapes(&walk, 1, room));
    if (size == 0)
        return kNothing;
    walk = beginning;
    ccs_MeasureText(&walk, string.size - 1, SIZE_MAX, &unused); // all but the last unit
    uint16_t last = CS_SEG_END;
    for (CSSegment segment; ccs_NextSegments(&walk, &segment, 1) != 0;)
        last = segment.kind;
    return EndsInAscii(last) ? kNothing : Bytes{room, size};
}

constexpr int kMostRounds = 8; // only badly malformed texts need more; nothing of them is kept

// Samples of what may follow a cut string: bytes that complete a character or an escape sequence,
// in either half, in any set and in UTF-8.
constexpr char kSequels[][5] = {"~~~~", "\xBF\xBF\xBF\xBF", "\x80\x80\x80\x80"};

// How many of the first `n` bytes are whole characters and escape sequences, whatever follows them.
// Nothing after them may be read, so a copy in the print buffer is walked.
unsigned int WholeBytes(Build *build, const char *string, unsigned int n)
{
    const size_t need = n + sizeof *kSequels;
    if (!HasRoom(*build, need))
        EnlargeTo(build->buffer, uint64_t{build->buffer->capacity} + need);
    char *const copy = build->buffer->at + build->length;
    std::memcpy(copy, string, n);
    unsigned int whole = n;
    for (const auto &sequel : kSequels) {
        std::memcpy(copy + n, sequel, sizeof sequel);
        whole = std::min(whole, WalkedTruncation(copy, n, build->cs));
    }
    return whole;
}

// The bytes up to the end of the last character.
unsigned int BytesToLastCharacter(const char *string, unsigned int n, const CSDescriptor *cs)
{
    unsigned int bytes = 0;
    SegmentWalk walk;
    WalkSegments(&walk, string, cs, static_cast<int>(n));
    while (NextSegment(&walk))
        if (!IsIgnored(walk.kind))
            bytes = static_cast<unsigned int>(walk.at - string) + walk.size;
    return std::min(bytes, n);
}

// The bytes to keep of a string that is cut after `n` bytes, none of them NUL: whole characters,
// and the escape sequences before them.  Not inlined, since most strings are not cut.
[[gnu::noinline]] unsigned int KeptBytes(Build *build, const char *string, unsigned int n)
{
    if (IsUtf8(build->cs))
        return Utf8Truncation(string, n);
    if (IsPlainByteSet(build->set))
        return n;
    for (int round = 0; round < kMostRounds; ++round) {
        const unsigned int kept =
            BytesToLastCharacter(string, WholeBytes(build, string, n), build->cs);
        if (kept == n)
            return n;
        n = kept; // what follows may complete a character at the new end too
    }
    return 0;
}

// Appends a string that is cut after `size` bytes, or that may switch sets.
[[gnu::noinline]] bool AppendLookedAt(Build *build, const Directive &directive, Bytes string,
                                      bool isCut, bool switches)
{
    char room[kMostEscapes];
    Bytes escapes = kNothing;
    auto look = [&] {
        if (isCut)
            string.size = KeptBytes(build, string.at, static_cast<unsigned int>(string.size));
        if (switches && string.size != 0)
            escapes = EscapesAfter(string, isCut, build->cs, room);
    };
    return Protect(look) && AppendPadded(build, directive, string, escapes);
}

bool AppendString(Build *build, const char *string, const Directive &directive)
{
    const auto limit = static_cast<unsigned int>(directive.precision);
    if (string == nullptr)
        string = directive.precision < 0 || directive.precision >= 6 ? "(null)" : "";
    const size_t size = directive.precision < 0 ? std::strlen(string) : strnlen(string, limit);
    const bool isCut = directive.precision >= 0 && size == limit;
    const bool switches = SwitchesSets(build->set) && HasSwitches(string, size);
    return isCut || switches ? AppendLookedAt(build, directive, {string, size}, isCut, switches)
                             : AppendBytes(build, directive, {string, size});
}

// ---- Values of the C library ---------------------------------------------------------------

// A directive for the C library, with width and precision as arguments.
struct CDirective {
    char text[16];
};

CDirective WriteDirective(unsigned int flags, const char *size, char conversion)
{
    CDirective directive;
    char *at = directive.text;
    *at++ = '%';
    for (unsigned int i = 0; kFlags[i] != '\0'; ++i)
        if ((flags >> i & 1U) != 0)
            *at++ = kFlags[i];
    for (const char *part : {"*.*", size})
        while (*part != '\0')
            *at++ = *part++;
    *at++ = conversion;
    *at = '\0';
    return directive;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the directive is ours, not the caller's

template <class Value>
int Print(const Build &build, const CDirective &written, const Directive &directive, Value value)
{
    return std::snprintf(build.buffer->at + build.length, build.buffer->capacity - build.length,
                         written.text, directive.width, directive.precision, value);
}

#pragma GCC diagnostic pop

template <class Value>
bool AppendValue(Build *build, const Directive &directive, const char *size, char conversion,
                 Value value)
{
    // At least so much is printed.  The C library would take long to find out that it does not fit.
    if (!MakeRoom(*build, static_cast<size_t>(std::max({directive.width, directive.precision, 0}))))
        return false;
    const CDirective written = WriteDirective(directive.flags, size, conversion);
    int printed = Print(*build, written, directive, value);
    if (printed >= 0 && static_cast<size_t>(printed) >= build->buffer->capacity - build->length) {
        if (!MakeRoom(*build, static_cast<size_t>(printed)))
            return false;
        printed = Print(*build, written, directive, value);
    }
    if (printed < 0)
        return Protect([] { frame::Raise(kSource, OS_ESC_MEMORY); });
    build->length += static_cast<unsigned int>( // a 'c' may print a NUL
        strnlen(build->buffer->at + build->length, static_cast<size_t>(printed)));
    return true;
}

// ---- Integers ------------------------------------------------------------------------------

constexpr int BaseOf(char conversion)
{
    return conversion == 'x' || conversion == 'X' ? 16 : conversion == 'o' ? 8 : 10;
}

// The value as an unsigned number of so many bytes.
unsigned long WithoutSign(long value, size_t bytes)
{
    return static_cast<unsigned long>(value) & ULONG_MAX >> (sizeof value - bytes) * CHAR_BIT;
}

// A value of so many bytes.  Most integers need only digits and spaces, which cost a fraction of a
// call of the C library.
bool AppendInteger(Build *build, const Directive &directive, size_t bytes, long value)
{
    const char conversion = directive.conversion;
    const bool isSigned = conversion == 'd' || conversion == 'i';
    const unsigned long positive = WithoutSign(value, bytes);
    if ((directive.flags & ~kLeftFlag) != 0 || directive.precision >= 0 || conversion == 'X')
        return AppendValue(build, directive, "l", conversion,
                           isSigned ? value : static_cast<long>(positive));
    char digits[3 * sizeof value + 2];
    char *const end = digits + sizeof digits;
    const auto written = isSigned ? std::to_chars(digits, end, value)
                                  : std::to_chars(digits, end, positive, BaseOf(conversion));
    return AppendBytes(build, directive, {digits, static_cast<size_t>(written.ptr - digits)});
}

// A NUL is left to the C library, which pads it too.
bool AppendByte(Build *build, const Directive &directive, int value)
{
    const char byte = static_cast<char>(value);
    if (byte == '\0')
        return AppendValue(build, directive, "", 'c', value);
    return AppendBytes(build, directive, {&byte, 1});
}

// ---- Tables --------------------------------------------------------------------------------

// The arguments of str_buildpfstring that describe a format.
struct Table {
    const ParameterRecord *records;
    int maxParam;
};

// False when the argument of that number is not an int.
bool FetchInt(const Build &build, const Table &table, int number, int *value)
{
    if (number < 1 || number > table.maxParam || table.records[number].type != STR_ARG_INT)
        return false;
    *value = build.values->ints[number];
    return true;
}

// Sets width and precision where they are arguments; false when one is not an int.
bool FetchMeasures(const Build &build, const Table &table, int k, Directive *directive)
{
    const ArgumentNumbers numbers = NumbersBefore(k, *directive);
    if (numbers.width != 0) {
        int width;
        if (!FetchInt(build, table, numbers.width, &width))
            return false;
        SetWidth(directive, width);
    }
    return numbers.precision == 0 ||
           FetchInt(build, table, numbers.precision, &directive->precision);
}

// Whether the conversion prints arguments of this type.
bool Suits(int type, const Directive &directive)
{
    const bool integer = directive.type <= STR_ARG_LONG && directive.conversion != 'c';
    if (integer)
        return type >= STR_ARG_SHORT && type <= STR_ARG_LONG;
    if (directive.type == STR_ARG_DOUBLE || directive.type == STR_ARG_LONG_DOUBLE)
        return type >= STR_ARG_FLOAT && type <= STR_ARG_LONG_DOUBLE;
    return type == directive.type;
}

bool AppendDirective(Build *build, const Table &table, int k)
{
    const ParameterRecord &record = table.records[k];
    Directive directive = ReadDirective(record.text, record.text + record.textLen);
    if (directive.end != nullptr && !directive.misnumbered && Suits(record.type, directive) &&
        FetchMeasures(*build, table, k, &directive))
        return AppendArgument(build, k, record.type, directive);
    return AppendText(build, {record.text, record.textLen});
}

// The numbers of the directives, in the order of the format.
struct Sequence {
    int numbers[STR_PARAMETERS];
    int count;
};

// Sorts by insertion: most directives are in order and take one comparison each.
void Arrange(const Table &table, Sequence *sequence)
{
    sequence->count = 0;
    for (int k = 1; k <= table.maxParam && k < STR_PARAMETERS; ++k) {
        const ParameterRecord &record = table.records[k];
        if (record.text == nullptr || record.type == STR_ARG_UNUSED)
            continue;
        int place = sequence->count++;
        for (; place > 0; --place) {
            const int before = sequence->numbers[place - 1];
            if (table.records[before].text <= record.text)
                break;
            sequence->numbers[place] = before;
        }
        sequence->numbers[place] = k;
    }
}

bool BuildText(Build *build, const Table &table, const char *format)
{
    const char *const end = format + std::strlen(format);
    if (!BeginText(build, static_cast<size_t>(end - format)))
        return false;
    Sequence sequence;
    Arrange(table, &sequence);
    const char *at = format;
    for (int i = 0; i < sequence.count; ++i) {
        const ParameterRecord &record = table.records[sequence.numbers[i]];
        if (record.text < at || record.text > end ||
            record.textLen > static_cast<size_t>(end - record.text))
            continue;
        if (!AppendText(build, {at, static_cast<size_t>(record.text - at)}) ||
            !AppendDirective(build, table, sequence.numbers[i]))
            return false;
        at = record.text + record.textLen;
    }
    return AppendText(build, {at, static_cast<size_t>(end - at)});
}

} // namespace

bool libstr::BeginText(Build *build, size_t formatSize)
{
    const uint64_t need = uint64_t{formatSize} * 2;
    ThreadBuffer<char> *const buffer = &theBuffer;
    build->buffer = buffer;
    build->length = build->omission = 0;
    build->omitted = kNothing;
    return (buffer->capacity != 0 && need <= buffer->capacity) || EnlargeProtected(buffer, need);
}

bool libstr::Enlarge(const Build &build, size_t bytes)
{
    return EnlargeProtected(build.buffer, uint64_t{build.buffer->capacity} + bytes);
}

bool libstr::AppendArgument(Build *build, int number, int type, const Directive &directive)
{
    const Values &values = *build->values;
    const char conversion = directive.conversion;
    switch (type) {
    case STR_ARG_SHORT:
        if (directive.halved)
            return AppendInteger(build, directive, sizeof(char),
                                 static_cast<signed char>(values.shorts[number]));
        return AppendInteger(build, directive, sizeof(short), values.shorts[number]);
    case STR_ARG_INT:
        if (conversion == 'c')
            return AppendByte(build, directive, values.ints[number]);
        return AppendInteger(build, directive, sizeof(int), values.ints[number]);
    case STR_ARG_LONG:
        return AppendInteger(build, directive, sizeof(long), values.longs[number]);
    case STR_ARG_FLOAT:
        return AppendValue(build, directive, "", conversion,
                           static_cast<double>(values.floats[number]));
    case STR_ARG_DOUBLE:
        return AppendValue(build, directive, "", conversion, values.doubles[number]);
    case STR_ARG_LONG_DOUBLE:
        return AppendValue(build, directive, "L", conversion, values.longDoubles[number]);
    case STR_ARG_STRING:
        return AppendString(build, static_cast<const char *>(values.pointers[number]), directive);
    default: // a pointer; n prints nothing
        return conversion != 'P' || AppendValue(build, directive, "", 'p', values.pointers[number]);
    }
}

char *libstr::EndText(Build *build)
{
    if (build->length == 0)
        return nullptr;
    build->buffer->at[build->length] = '\0';
    return build->buffer->at;
}

char *str_buildpfstring(const CSDescriptor *cs, unsigned int *outLen, const char *format,
                        const ParameterRecord *table, int maxParam, const short *shorts,
                        const int *ints, const long *longs, const float *floats,
                        const double *doubles, const long double *longDoubles,
                        void *const *pointers)
{
    const Values values = {shorts, ints, longs, floats, doubles, longDoubles, pointers};
    Build build(cs, cs, &values, false);
    BuildText(&build, {table, maxParam}, format);
    *outLen = build.length;
    return EndText(&build);
}
