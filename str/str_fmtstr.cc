// SPDX-License-Identifier: Apache-2.0
//
// The builder: the text of a format and its arguments.
//
// Strings, bytes and the digits of plain integers are put in as they are.  All other values go
// through the C library, one directive at a time.  What it is handed is written here from what the
// directive was read to mean, with width and precision as arguments of their own: whatever the
// format says, it finds the arguments that it looks for.
#include <str/format.h>

#include "str/core/directive.h"
#include "str/core/frame.h"
#include "str/core/segments.h"
#include "str/core/truncation.h"
#include "str/core/utf8.h"

#include <platform/os.h>

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

// The print buffer: the text that was built last, and a NUL.
char *theBuffer;
unsigned int theCapacity;

constexpr unsigned int kLeastGrowth = 128;
constexpr unsigned int kMostCapacity = INT_MAX - kLeastGrowth; // results are counted in ints

void GrowPrintBuffer(uint64_t need)
{
    if (theCapacity != 0 && need <= theCapacity)
        return;
    if (need > kMostCapacity)
        frame::Raise(kSource, OS_ESC_MEMORY);
    const unsigned int capacity =
        std::max(static_cast<unsigned int>(need), theCapacity + kLeastGrowth);
    theBuffer = static_cast<char *>(theCapacity == 0 ? os_malloc(capacity)
                                                     : os_realloc(theBuffer, capacity));
    theCapacity = capacity;
}

// ---- Room ----------------------------------------------------------------------------------

// What a build works on.
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
    unsigned int length; // bytes in the print buffer, always less than its capacity
};

// Room for so many bytes more, and the NUL.
void MakeRoom(const Build &build, size_t bytes)
{
    if (theCapacity - build.length <= bytes)
        GrowPrintBuffer(uint64_t{theCapacity} + bytes);
}

struct Bytes {
    const char *at;
    size_t size;
};
constexpr Bytes kNothing = {"", 0};

// Put what there is room for.
void Put(Build *build, Bytes bytes)
{
    std::memcpy(theBuffer + build->length, bytes.at, bytes.size);
    build->length += static_cast<unsigned int>(bytes.size);
}

void PutSpaces(Build *build, size_t count)
{
    std::memset(theBuffer + build->length, ' ', count);
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

// A directive's flags, width and precision, with the arguments that some of them are.
struct Layout {
    unsigned int flags;
    int width;     // 0 for none
    int precision; // negative for none
};

// False when there is no int of that number.
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

// Appends the bytes, with spaces up to the width, and what follows them.
void AppendPadded(Build *build, const Layout &layout, Bytes bytes, Bytes behind)
{
    const auto width = static_cast<size_t>(layout.width);
    const size_t padding = width > bytes.size ? width - bytes.size : 0;
    const bool left = (layout.flags & kLeftFlag) != 0;
    MakeRoom(*build, padding + bytes.size + behind.size);
    if (padding != 0 && !left)
        PutSpaces(build, padding);
    Put(build, bytes);
    if (padding != 0 && left)
        PutSpaces(build, padding);
    if (behind.size != 0)
        Put(build, behind);
}

// What has to follow a string so that text of the format reads as such again.  `length` as in a
// walk.
Bytes EscapesAfter(const char *string, int length, const CSDescriptor *cs)
{
    if ((ccs_GetCSFlags(cs) & CS_FLAG_ESCAPES) == 0)
        return kNothing;
    uint16_t last = CS_SEG_END;
    SegmentWalk walk = WalkSegments(string, cs, length);
    while (NextSegment(&walk))
        last = walk.kind;
    uint32_t unused;
    if (!IsText(last) && last != CS_SEG_RAW)
        last = ccs_GetCP(0, &unused);
    const CSDescriptor segCs = SegmentDescriptor(last, cs);
    if ((ccs_GetCSFlags(&segCs) & CS_FLAG_ASCII_SUPERSET) != 0)
        return kNothing;
    int escLen = 0;
    const char *escapes = ccs_GetConfAsciiEscs(cs, static_cast<int16_t>(cs->escMode), &escLen);
    if (escapes == nullptr || escLen < 0)
        return kNothing;
    return {escapes, static_cast<size_t>(escLen)};
}

constexpr int kMostRounds = 8; // more are for the most malformed of texts, of which nothing is kept

// What may come after the bytes of a cut string: bytes that complete a character or an escape
// sequence, in either half, in any set and in UTF-8.
constexpr char kSequels[][5] = {"~~~~", "\xBF\xBF\xBF\xBF", "\x80\x80\x80\x80"};

// The bytes at the front of `n` that hold no part of a longer character or escape sequence,
// whatever comes after them.  They are walked in a copy, in the print buffer, as nothing after them
// is read.
unsigned int WholeBytes(Build *build, const char *string, unsigned int n)
{
    MakeRoom(*build, n + sizeof *kSequels);
    char *const copy = theBuffer + build->length;
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
    SegmentWalk walk = WalkSegments(string, cs, static_cast<int>(n));
    while (NextSegment(&walk))
        if (!IsIgnored(walk.kind))
            bytes = static_cast<unsigned int>(walk.at - string) + walk.size;
    return std::min(bytes, n);
}

// The bytes of a string that are kept when it is cut after `n` bytes, of which none is a NUL: whole
// characters, and the escape sequences before them.  Out of line, as most strings are not cut.
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
        n = kept; // where it ends now, what follows may complete something too
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

// A directive as the C library gets it: width and precision are always arguments.
struct Order {
    char text[16];
};

Order WriteOrder(unsigned int flags, const char *size, char conversion)
{
    Order order;
    char *at = order.text;
    *at++ = '%';
    for (unsigned int i = 0; kFlags[i] != '\0'; ++i)
        if ((flags >> i & 1U) != 0)
            *at++ = kFlags[i];
    for (const char *part : {"*.*", size})
        while (*part != '\0')
            *at++ = *part++;
    *at++ = conversion;
    *at = '\0';
    return order;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the order is ours, not the caller's

template <class Value>
int Print(const Build &build, const Order &order, const Layout &layout, Value value)
{
    return std::snprintf(theBuffer + build.length, theCapacity - build.length, order.text,
                         layout.width, layout.precision, value);
}

#pragma GCC diagnostic pop

template <class Value>
void AppendValue(Build *build, const Layout &layout, const char *size, char conversion, Value value)
{
    // That much is printed at least.  Where there is no room for it, the C library, which would take
    // long to find out, is not asked.
    MakeRoom(*build, static_cast<size_t>(std::max({layout.width, layout.precision, 0})));
    const Order order = WriteOrder(layout.flags, size, conversion);
    int printed = Print(*build, order, layout, value);
    if (printed >= 0 && static_cast<unsigned int>(printed) >= theCapacity - build->length) {
        MakeRoom(*build, static_cast<size_t>(printed));
        printed = Print(*build, order, layout, value);
    }
    if (printed < 0)
        frame::Raise(kSource, OS_ESC_MEMORY);
    build->length += static_cast<unsigned int>( // a 'c' may print a NUL
        strnlen(theBuffer + build->length, static_cast<size_t>(printed)));
}

// ---- Integers ------------------------------------------------------------------------------

constexpr int BaseOf(char conversion)
{
    return conversion == 'x' || conversion == 'X' ? 16 : conversion == 'o' ? 8 : 10;
}

// Most integers are laid out no further than strings are: their digits need no help, and cost a
// fraction of a call of the C library.
template <class Value>
void AppendInteger(Build *build, const Layout &layout, const char *size, char conversion,
                   Value value)
{
    if ((layout.flags & ~kLeftFlag) != 0 || layout.precision >= 0 || conversion == 'X')
        return AppendValue(build, layout, size, conversion, value);
    char digits[3 * sizeof value + 2];
    char *const end = digits + sizeof digits;
    const bool isSigned = conversion == 'd' || conversion == 'i';
    const char *const behind =
        isSigned ? std::to_chars(digits, end, value).ptr
                 : std::to_chars(digits, end, static_cast<std::make_unsigned_t<Value>>(value),
                                 BaseOf(conversion))
                       .ptr;
    AppendPadded(build, layout, {digits, static_cast<size_t>(behind - digits)}, kNothing);
}

// The C library pads a NUL too.
void AppendByte(Build *build, const Layout &layout, int value)
{
    const char byte = static_cast<char>(value);
    if (byte == '\0')
        return AppendValue(build, layout, "", 'c', value);
    AppendPadded(build, layout, {&byte, 1}, kNothing);
}

// ---- Directives ----------------------------------------------------------------------------

// Whether the type that the table gives is one that the conversion prints.
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
    default: // of the pointers, n prints nothing
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

// The numbers of the directives, in the order in which they stand in the format.
struct Sequence {
    int numbers[STR_PARAMETERS];
    int count;
};

// By insertion, which takes one comparison for each that stands behind the one before it.
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
    theBuffer[build.length] = '\0';
    return theBuffer;
}
