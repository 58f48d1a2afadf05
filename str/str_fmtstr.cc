// SPDX-License-Identifier: Apache-2.0
//
// The builder: the text of a format and its arguments.
//
// Strings, bytes and the digits of plain integers are copied.  The C library prints all other
// values, one directive at a time.  It never sees the caller's directive: one is written here from
// the parsed fields, with width and precision as arguments.  So no format, however malformed, makes
// it read an argument that is not there.
#include <str/format.h>

#include "base/blocks.h"
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
#include <type_traits>

using namespace libstr;

namespace
{

constexpr char kSource[] = "str/str_fmtstr";

// The print buffer: the text built last, and a NUL.
Buffer<char> theBuffer;

constexpr size_t kLeastGrowth = 128;
constexpr size_t kMostCapacity = INT_MAX - kLeastGrowth; // results are counted in ints

void Enlarge(uint64_t need)
{
    if (need > kMostCapacity)
        frame::Raise(kSource, OS_ESC_MEMORY);
    Grow(&theBuffer, std::max(static_cast<size_t>(need), theBuffer.capacity + kLeastGrowth));
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

[[gnu::noinline]] bool EnlargeProtected(uint64_t need)
{
    return Protect([need] { Enlarge(need); });
}

// ---- Room ----------------------------------------------------------------------------------

bool HasRoom(const Build &build, size_t bytes) { return theBuffer.capacity - build.length > bytes; }

// Makes room for so many more bytes and the NUL.
bool MakeRoom(const Build &build, size_t bytes)
{
    return HasRoom(build, bytes) || EnlargeProtected(uint64_t{theBuffer.capacity} + bytes);
}

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

// ---- Strings and bytes ---------------------------------------------------------------------

// Appends the bytes, padded with spaces to the width, and then `suffix`.
bool AppendPadded(Build *build, const Directive &directive, Bytes bytes, Bytes suffix = kNothing)
{
    const auto width = static_cast<size_t>(directive.width);
    const size_t padding = width > bytes.size ? width - bytes.size : 0;
    const bool left = (directive.flags & kLeftFlag) != 0;
    if (!MakeRoom(*build, padding + bytes.size + suffix.size))
        return false;
    if (padding != 0 && !left)
        PutSpaces(build, padding);
    Put(build, bytes);
    if (padding != 0 && left)
        PutSpaces(build, padding);
    if (suffix.size != 0)
        Put(build, suffix);
    return true;
}

// The kind of the last segment, which may be none.  `length` as in a walk.
uint16_t LastKind(const char *string, int length, const CSDescriptor *cs)
{
    uint16_t last = CS_SEG_END;
    SegmentWalk walk;
    WalkSegments(&walk, string, cs, length);
    while (NextSegment(&walk))
        last = walk.kind;
    uint32_t unused;
    return IsText(last) || last == CS_SEG_RAW ? last : ccs_GetCP(0, &unused);
}

// The escapes that must follow a string so that the format's text after it reads as ASCII.
// `length` as in a walk; `room` has room for kMostEscapes.
Bytes EscapesAfter(const char *string, int length, const CSDescriptor *cs, char *room)
{
    CSWalk walk;
    if (BeginOwnWalk(&walk, string, cs, length)) {
        CSMeasure unused;
        ccs_MeasureText(&walk, SIZE_MAX, SIZE_MAX, &unused);
        const auto size = static_cast<size_t>(ccs_GetWalkEscapes(&walk, 1, room));
        return size == 0 || HoldsAscii(FlagsOf(LastKind(string, length, cs))) ? kNothing
                                                                              : Bytes{room, size};
    }
    if (HoldsAscii(FlagsOf(LastKind(string, length, cs))))
        return kNothing;
    int escLen = 0;
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
    if (!HasRoom(*build, n + sizeof *kSequels))
        Enlarge(uint64_t{theBuffer.capacity} + n + sizeof *kSequels);
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

// Whether the text has controls.  Nothing else switches sets.
bool HasControls(const char *at, size_t size)
{
    for (; size >= blocks::kSize; at += blocks::kSize, size -= blocks::kSize)
        if (blocks::Mask(blocks::Controls(blocks::Load(at, blocks::kSize))) != 0)
            return true;
    const uint32_t text = (uint32_t{1} << size) - 1; // zeros follow it
    return (blocks::Mask(blocks::Controls(blocks::Load(at, size))) & text) != 0;
}

bool AppendString(Build *build, const char *string, const Directive &directive)
{
    const auto limit = static_cast<unsigned int>(directive.precision);
    if (string == nullptr)
        string = directive.precision < 0 || directive.precision >= 6 ? "(null)" : "";
    size_t size = directive.precision < 0 ? std::strlen(string) : strnlen(string, limit);
    const bool isCut = directive.precision >= 0 && size == limit;
    const bool switches = SwitchesSets(build->set) && HasControls(string, size);
    if (!isCut && !switches)
        return AppendPadded(build, directive, {string, size});
    char room[kMostEscapes];
    Bytes escapes = kNothing;
    auto look = [&] {
        if (isCut)
            size = KeptBytes(build, string, limit);
        if (switches)
            escapes = EscapesAfter(string, isCut ? static_cast<int>(size) : -1, build->cs, room);
    };
    return Protect(look) && AppendPadded(build, directive, {string, size}, escapes);
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
    return std::snprintf(theBuffer.at + build.length, theBuffer.capacity - build.length,
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
    if (printed >= 0 && static_cast<size_t>(printed) >= theBuffer.capacity - build->length) {
        if (!MakeRoom(*build, static_cast<size_t>(printed)))
            return false;
        printed = Print(*build, written, directive, value);
    }
    if (printed < 0)
        return Protect([] { frame::Raise(kSource, OS_ESC_MEMORY); });
    build->length += static_cast<unsigned int>( // a 'c' may print a NUL
        strnlen(theBuffer.at + build->length, static_cast<size_t>(printed)));
    return true;
}

// ---- Integers ------------------------------------------------------------------------------

constexpr int BaseOf(char conversion)
{
    return conversion == 'x' || conversion == 'X' ? 16 : conversion == 'o' ? 8 : 10;
}

// Most integers need only digits and spaces, which cost a fraction of a call of the C library.
template <class Value>
bool AppendInteger(Build *build, const Directive &directive, const char *size, Value value)
{
    const char conversion = directive.conversion;
    if ((directive.flags & ~kLeftFlag) != 0 || directive.precision >= 0 || conversion == 'X')
        return AppendValue(build, directive, size, conversion, value);
    char digits[3 * sizeof value + 2];
    char *const end = digits + sizeof digits;
    const bool isSigned = conversion == 'd' || conversion == 'i';
    const auto unsignedValue = static_cast<std::make_unsigned_t<Value>>(value);
    const auto written = isSigned ? std::to_chars(digits, end, value)
                                  : std::to_chars(digits, end, unsignedValue, BaseOf(conversion));
    return AppendPadded(build, directive, {digits, static_cast<size_t>(written.ptr - digits)});
}

// A NUL is left to the C library, which pads it too.
bool AppendByte(Build *build, const Directive &directive, int value)
{
    const char byte = static_cast<char>(value);
    if (byte == '\0')
        return AppendValue(build, directive, "", 'c', value);
    return AppendPadded(build, directive, {&byte, 1});
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
    *value = build.values.ints[number];
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
    if (!BeginText(static_cast<size_t>(end - format)))
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

bool libstr::BeginText(size_t formatSize)
{
    const uint64_t need = uint64_t{formatSize} * 2;
    return (theBuffer.capacity != 0 && need <= theBuffer.capacity) || EnlargeProtected(need);
}

bool libstr::AppendText(Build *build, Bytes text)
{
    if (text.size == 0)
        return true;
    if (!MakeRoom(*build, text.size))
        return false;
    Put(build, text);
    return true;
}

bool libstr::AppendArgument(Build *build, int number, int type, const Directive &directive)
{
    const Values &values = build->values;
    const char conversion = directive.conversion;
    switch (type) {
    case STR_ARG_SHORT:
        if (directive.halved)
            return AppendInteger(build, directive, "hh",
                                 static_cast<signed char>(values.shorts[number]));
        return AppendInteger(build, directive, "h", values.shorts[number]);
    case STR_ARG_INT:
        if (conversion == 'c')
            return AppendByte(build, directive, values.ints[number]);
        return AppendInteger(build, directive, "", values.ints[number]);
    case STR_ARG_LONG:
        return AppendInteger(build, directive, "l", values.longs[number]);
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
    theBuffer.at[build->length] = '\0';
    return theBuffer.at;
}

char *str_buildpfstring(const CSDescriptor *cs, unsigned int *outLen, const char *format,
                        const ParameterRecord *table, int maxParam, const short *shorts,
                        const int *ints, const long *longs, const float *floats,
                        const double *doubles, const long double *longDoubles,
                        void *const *pointers)
{
    Build build = {cs, cs, {shorts, ints, longs, floats, doubles, longDoubles, pointers}, 0};
    BuildText(&build, {table, maxParam}, format);
    *outLen = build.length;
    return EndText(&build);
}
