// SPDX-License-Identifier: Apache-2.0
//
// The builder: the text of a format and its arguments.
//
// Strings, bytes and the digits of plain integers are copied.  The C library prints all other
// values, one directive at a time.  It never sees the caller's directive: one is written here from
// the parsed fields, with width and precision as arguments.  So no format, however malformed, makes
// it read an argument that is not there.
#include <str/format.h>

#include "str/core/buffer.h"
#include "str/core/directive.h"
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
#include <type_traits>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_fmtstr";

// The print buffer: the text built last, and a NUL.
Buffer<char> theBuffer;

constexpr size_t kLeastGrowth = 128;
constexpr size_t kMostCapacity = INT_MAX - kLeastGrowth; // results are counted in ints

void GrowPrintBuffer(uint64_t need)
{
    if (theBuffer.capacity != 0 && need <= theBuffer.capacity)
        return;
    if (need > kMostCapacity)
        frame::Raise(kSource, OS_ESC_MEMORY);
    Grow(&theBuffer, std::max(static_cast<size_t>(need), theBuffer.capacity + kLeastGrowth));
}

// ---- Room ----------------------------------------------------------------------------------

// The arguments of str_buildpfstring, and the length of its result so far.
struct Build {
    const CSDescriptor *cs;
    const ParameterRecord *table;
    int maxParam;
    const short *shorts;
    const int *ints;
    const long *longs;
    const float *floats;
    const double *doubles;
    const long double *longDoubles;
    void *const *pointers;
    unsigned int length; // less than the buffer's capacity
};

// Makes room for so many more bytes and the NUL.
void MakeRoom(const Build &build, size_t bytes)
{
    if (theBuffer.capacity - build.length <= bytes)
        GrowPrintBuffer(uint64_t{theBuffer.capacity} + bytes);
}

struct Bytes {
    const char *at;
    size_t size;
};
constexpr Bytes kNothing = {"", 0};

// Put and PutSpaces write where MakeRoom has made room.
void Put(Build *build, Bytes bytes)
{
    std::memcpy(theBuffer.at + build->length, bytes.at, bytes.size);
    build->length += static_cast<unsigned int>(bytes.size);
}

void PutSpaces(Build *build, size_t count)
{
    std::memset(theBuffer.at + build->length, ' ', count);
    build->length += static_cast<unsigned int>(count);
}

void AppendText(Build *build, Bytes text)
{
    if (text.size == 0)
        return;
    MakeRoom(*build, text.size);
    Put(build, text);
}

// ---- Layout --------------------------------------------------------------------------------

// A directive's flags, width and precision, with the values of those that are arguments.
struct Layout {
    unsigned int flags;
    int width;     // 0 for none
    int precision; // negative for none
};

// False when the argument of that number is not an int.
bool FetchInt(const Build &build, int number, int *value)
{
    if (number < 1 || number > build.maxParam || build.table[number].type != STR_ARG_INT)
        return false;
    *value = build.ints[number];
    return true;
}

bool FetchLayout(const Build &build, int k, const Directive &directive, Layout *layout)
{
    *layout = {directive.flags, directive.width, directive.precision};
    const ArgumentNumbers numbers = NumbersBefore(k, directive);
    if (numbers.width != 0) {
        if (!FetchInt(build, numbers.width, &layout->width))
            return false;
        if (layout->width < 0) {
            layout->flags |= kLeftFlag;
            layout->width = layout->width == INT_MIN ? INT_MAX : -layout->width;
        }
    }
    return numbers.precision == 0 || FetchInt(build, numbers.precision, &layout->precision);
}

// Appends the bytes, padded with spaces to the width, and then `suffix`.
void AppendPadded(Build *build, const Layout &layout, Bytes bytes, Bytes suffix)
{
    const auto width = static_cast<size_t>(layout.width);
    const size_t padding = width > bytes.size ? width - bytes.size : 0;
    const bool left = (layout.flags & kLeftFlag) != 0;
    MakeRoom(*build, padding + bytes.size + suffix.size);
    if (padding != 0 && !left)
        PutSpaces(build, padding);
    Put(build, bytes);
    if (padding != 0 && left)
        PutSpaces(build, padding);
    if (suffix.size != 0)
        Put(build, suffix);
}

// The escapes that must follow a string so that the format's text after it reads as ASCII.
// `length` as in a walk.
Bytes EscapesAfter(const char *string, int length, const CSDescriptor *cs)
{
    if (!SwitchesSets(cs))
        return kNothing;
    uint16_t last = CS_SEG_END;
    SegmentWalk walk;
    WalkSegments(&walk, string, cs, length);
    while (NextSegment(&walk))
        last = walk.kind;
    uint32_t unused;
    if (!IsText(last) && last != CS_SEG_RAW)
        last = ccs_GetCP(0, &unused);
    if (HoldsAscii(FlagsOf(last)))
        return kNothing;
    int escLen = 0;
    if (walk.own)
        WalkToEnd(string, cs, length);
    const char *escapes = ccs_GetConfAsciiEscs(cs, static_cast<int16_t>(cs->escMode), &escLen);
    if (escapes == nullptr || escLen < 0)
        return kNothing;
    return {escapes, static_cast<size_t>(escLen)};
}

constexpr int kMostRounds = 8; // only badly malformed texts need more; nothing of them is kept

// Samples of what may follow a cut string: bytes that complete a character or an escape sequence,
// in either half, in any set and in UTF-8.
constexpr char kSequels[][5] = {"~~~~", "\xBF\xBF\xBF\xBF", "\x80\x80\x80\x80"};

// How many of the first `n` bytes are whole characters and escape sequences, whatever follows them.
// Nothing after them may be read, so a copy in the print buffer is walked.
unsigned int WholeBytes(Build *build, const char *string, unsigned int n)
{
    MakeRoom(*build, n + sizeof *kSequels);
    char *const copy = theBuffer.at + build->length;
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
    if (IsPlainByteSet(build->cs))
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

void AppendString(Build *build, const char *string, const Layout &layout)
{
    const auto limit = static_cast<unsigned int>(layout.precision);
    if (string == nullptr)
        string = layout.precision < 0 || layout.precision >= 6 ? "(null)" : "";
    size_t size = layout.precision < 0 ? std::strlen(string) : strnlen(string, limit);
    int walked = -1;
    if (layout.precision >= 0 && size == limit) {
        size = KeptBytes(build, string, limit);
        walked = static_cast<int>(size);
    }
    AppendPadded(build, layout, {string, size}, EscapesAfter(string, walked, build->cs));
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
int Print(const Build &build, const CDirective &directive, const Layout &layout, Value value)
{
    return std::snprintf(theBuffer.at + build.length, theBuffer.capacity - build.length,
                         directive.text, layout.width, layout.precision, value);
}

#pragma GCC diagnostic pop

template <class Value>
void AppendValue(Build *build, const Layout &layout, const char *size, char conversion, Value value)
{
    // At least so much is printed.  The C library would take long to find out that it does not fit.
    MakeRoom(*build, static_cast<size_t>(std::max({layout.width, layout.precision, 0})));
    const CDirective directive = WriteDirective(layout.flags, size, conversion);
    int printed = Print(*build, directive, layout, value);
    if (printed >= 0 && static_cast<size_t>(printed) >= theBuffer.capacity - build->length) {
        MakeRoom(*build, static_cast<size_t>(printed));
        printed = Print(*build, directive, layout, value);
    }
    if (printed < 0)
        frame::Raise(kSource, OS_ESC_MEMORY);
    build->length += static_cast<unsigned int>( // a 'c' may print a NUL
        strnlen(theBuffer.at + build->length, static_cast<size_t>(printed)));
}

// ---- Integers ------------------------------------------------------------------------------

constexpr int BaseOf(char conversion)
{
    return conversion == 'x' || conversion == 'X' ? 16 : conversion == 'o' ? 8 : 10;
}

// Most integers need only digits and spaces, which cost a fraction of a call of the C library.
template <class Value>
void AppendInteger(Build *build, const Layout &layout, const char *size, char conversion,
                   Value value)
{
    if ((layout.flags & ~kLeftFlag) != 0 || layout.precision >= 0 || conversion == 'X')
        return AppendValue(build, layout, size, conversion, value);
    char digits[3 * sizeof value + 2];
    char *const end = digits + sizeof digits;
    const bool isSigned = conversion == 'd' || conversion == 'i';
    const auto unsignedValue = static_cast<std::make_unsigned_t<Value>>(value);
    const auto written = isSigned ? std::to_chars(digits, end, value)
                                  : std::to_chars(digits, end, unsignedValue, BaseOf(conversion));
    AppendPadded(build, layout, {digits, static_cast<size_t>(written.ptr - digits)}, kNothing);
}

// A NUL is left to the C library, which pads it too.
void AppendByte(Build *build, const Layout &layout, int value)
{
    const char byte = static_cast<char>(value);
    if (byte == '\0')
        return AppendValue(build, layout, "", 'c', value);
    AppendPadded(build, layout, {&byte, 1}, kNothing);
}

// ---- Directives ----------------------------------------------------------------------------

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

void AppendArgument(Build *build, int k, const Directive &directive, const Layout &layout)
{
    const char conversion = directive.conversion;
    switch (build->table[k].type) {
    case STR_ARG_SHORT:
        if (directive.halved)
            return AppendInteger(build, layout, "hh", conversion,
                                 static_cast<signed char>(build->shorts[k]));
        return AppendInteger(build, layout, "h", conversion, build->shorts[k]);
    case STR_ARG_INT:
        if (conversion == 'c')
            return AppendByte(build, layout, build->ints[k]);
        return AppendInteger(build, layout, "", conversion, build->ints[k]);
    case STR_ARG_LONG:
        return AppendInteger(build, layout, "l", conversion, build->longs[k]);
    case STR_ARG_FLOAT:
        return AppendValue(build, layout, "", conversion, static_cast<double>(build->floats[k]));
    case STR_ARG_DOUBLE:
        return AppendValue(build, layout, "", conversion, build->doubles[k]);
    case STR_ARG_LONG_DOUBLE:
        return AppendValue(build, layout, "L", conversion, build->longDoubles[k]);
    case STR_ARG_STRING:
        return AppendString(build, static_cast<const char *>(build->pointers[k]), layout);
    default: // a pointer; n prints nothing
        if (conversion == 'P')
            AppendValue(build, layout, "", 'p', build->pointers[k]);
    }
}

void AppendDirective(Build *build, int k)
{
    const ParameterRecord &record = build->table[k];
    const Directive directive = ReadDirective(record.text, record.text + record.textLen);
    Layout layout;
    if (directive.end != nullptr && !directive.misnumbered && Suits(record.type, directive) &&
        FetchLayout(*build, k, directive, &layout))
        AppendArgument(build, k, directive, layout);
    else
        AppendText(build, {record.text, record.textLen});
}

// The numbers of the directives, in the order of the format.
struct Sequence {
    int numbers[STR_PARAMETERS];
    int count;
};

// Sorts by insertion: most directives are in order and take one comparison each.
void Arrange(const Build &build, Sequence *sequence)
{
    sequence->count = 0;
    for (int k = 1; k <= build.maxParam && k < STR_PARAMETERS; ++k) {
        const ParameterRecord &record = build.table[k];
        if (record.text == nullptr || record.type == STR_ARG_UNUSED)
            continue;
        int place = sequence->count++;
        for (; place > 0; --place) {
            const int before = sequence->numbers[place - 1];
            if (build.table[before].text <= record.text)
                break;
            sequence->numbers[place] = before;
        }
        sequence->numbers[place] = k;
    }
}

void BuildText(Build *build, const char *format)
{
    const char *const end = format + std::strlen(format);
    GrowPrintBuffer(static_cast<uint64_t>(end - format) * 2);
    Sequence sequence;
    Arrange(*build, &sequence);
    const char *at = format;
    for (int i = 0; i < sequence.count; ++i) {
        const ParameterRecord &record = build->table[sequence.numbers[i]];
        if (record.text < at || record.text > end ||
            record.textLen > static_cast<size_t>(end - record.text))
            continue;
        AppendText(build, {at, static_cast<size_t>(record.text - at)});
        AppendDirective(build, sequence.numbers[i]);
        at = record.text + record.textLen;
    }
    AppendText(build, {at, static_cast<size_t>(end - at)});
}

} // namespace

char *str_buildpfstring(const CSDescriptor *cs, unsigned int *outLen, const char *format,
                        const ParameterRecord *table, int maxParam, const short *shorts,
                        const int *ints, const long *longs, const float *floats,
                        const double *doubles, const long double *longDoubles,
                        void *const *pointers)
{
    Build build = {cs,     table,   maxParam,    shorts,   ints, longs,
                   floats, doubles, longDoubles, pointers, 0};
    frame::Protect(
        kSource, frame::Accept(ER_CLASS_LIBRARY), [&] { BuildText(&build, format); }, [] {});
    *outLen = build.length;
    if (build.length == 0)
        return nullptr;
    theBuffer.at[build.length] = '\0';
    return theBuffer.at;
}
