// SPDX-License-Identifier: Apache-2.0
//
// O/R names, in the slash form and in the semicolon form.  A value is returned as a part of the
// text, so the notation has no escapes: nothing is ever rewritten.
#include <platform/nm.h>

#include <glib.h>

#include <cstring>

namespace
{

constexpr char kEscape = 0x1B;
constexpr char kShiftOut = 0x0E;
constexpr char kShiftIn = 0x0F;

struct Keyword {
    const char *text;
    int field;
};

constexpr Keyword kKeywords[] = {
    {"O", 0},     {"OU1", 1},    {"OU2", 2},   {"OU3", 3},    {"OU4", 4},   {"S", 5},
    {"G", 6},     {"I", 7},      {"Q", 8},     {"GQ", 8},     {"C", 9},     {"A", 10},
    {"ADMD", 10}, {"P", 11},     {"PRMD", 11}, {"X.121", 12}, {"X121", 12}, {"T-ID", 13},
    {"N-ID", 14}, {"UA-ID", 14}, {"DDT1", 15}, {"DDV1", 16},  {"DDT2", 17}, {"DDV2", 18},
    {"DDT3", 19}, {"DDV3", 20},  {"DDT4", 21}, {"DDV4", 22},
};

// Attributes of which a name may have four: `width` numbers for each, from `first` on.
struct Series {
    int first;
    int width;
};
constexpr Series kUnits = {1, 1};
constexpr Series kPairs = {15, 2};
constexpr int kMost = 4;

constexpr char kUnit[] = "OU";
constexpr const char *kPairPrefixes[] = {"DDA:", "DD."};

constexpr int kNoField = -1;

struct Bytes {
    const char *begin;
    const char *end;
};

bool IsEmpty(Bytes bytes) { return bytes.begin == bytes.end; }

Bytes Trimmed(Bytes bytes)
{
    while (!IsEmpty(bytes) && g_ascii_isspace(*bytes.begin))
        ++bytes.begin;
    while (!IsEmpty(bytes) && g_ascii_isspace(bytes.end[-1]))
        --bytes.end;
    return bytes;
}

// Removes `prefix`, whatever the case of its letters; false if it is not there.
bool TakePrefix(Bytes *bytes, const char *prefix)
{
    const size_t length = std::strlen(prefix);
    if (static_cast<size_t>(bytes->end - bytes->begin) < length ||
        g_ascii_strncasecmp(bytes->begin, prefix, length) != 0)
        return false;
    bytes->begin += length;
    return true;
}

bool Equals(Bytes bytes, const char *text) { return TakePrefix(&bytes, text) && IsEmpty(bytes); }

int FieldOf(Bytes identifier)
{
    for (const Keyword &keyword : kKeywords)
        if (Equals(identifier, keyword.text))
            return keyword.field;
    return kNoField;
}

bool SwitchesSets(Bytes bytes)
{
    for (; !IsEmpty(bytes); ++bytes.begin)
        if (*bytes.begin == kEscape || *bytes.begin == kShiftOut || *bytes.begin == kShiftIn)
            return true;
    return false;
}

bool IsSevenBit(Bytes bytes)
{
    for (; !IsEmpty(bytes); ++bytes.begin)
        if (static_cast<unsigned char>(*bytes.begin) >= 0x80)
            return false;
    return true;
}

bool IsT61Form(Bytes bytes) { return SwitchesSets(bytes) || !IsSevenBit(bytes); }

// ---- Reading -------------------------------------------------------------------------------

struct Reader {
    const char *at;
    char separator;
    bool shifted; // by SO or another locking shift: the low bytes are not those of G0
    bool foreign; // G0 is neither ASCII nor like it
};

// Whether the next byte is `byte` itself, and not part of a character of another set.
bool IsAt(const Reader &reader, char byte)
{
    return *reader.at == byte && !reader.shifted && !reader.foreign;
}

bool IsAtEnd(const Reader &reader) { return *reader.at == '\0' || IsAt(reader, reader.separator); }

// Follows the escape sequence after an ESC.
void StepOverEscape(Reader *reader)
{
    const char *const begin = reader->at;
    while (*reader->at >= ' ' && *reader->at <= '/')
        ++reader->at;
    const Bytes intermediates = {begin, reader->at};
    const char final = *reader->at;
    if (final < '0' || final > '~')
        return;
    ++reader->at;
    if (IsEmpty(intermediates) && (final == 'n' || final == 'o')) // locking shifts 2 and 3
        reader->shifted = true;
    else if (Equals(intermediates, "("))
        reader->foreign = std::strchr("@ABJu", final) == nullptr; // what has ASCII's separators
    else if (Equals(intermediates, "$") || Equals(intermediates, "$("))
        reader->foreign = true;
}

void Step(Reader *reader)
{
    const char byte = *reader->at++;
    if (byte == kEscape)
        StepOverEscape(reader);
    else if (byte == kShiftOut || byte == kShiftIn)
        reader->shifted = byte == kShiftOut;
}

void SkipSpace(Reader *reader)
{
    while (g_ascii_isspace(*reader->at))
        ++reader->at;
}

// The bytes up to the next `stop` or the end of the attribute.
Bytes ReadUpTo(Reader *reader, char stop)
{
    const char *const begin = reader->at;
    while (!IsAtEnd(*reader) && !IsAt(*reader, stop))
        Step(reader);
    return Trimmed({begin, reader->at});
}

// A value, in quotes or not; false when its quotes are malformed.
bool ReadValue(Reader *reader, Bytes *value)
{
    SkipSpace(reader);
    if (!IsAt(*reader, '"')) {
        *value = ReadUpTo(reader, reader->separator);
        return true;
    }
    value->begin = ++reader->at;
    while (*reader->at != '\0' && !IsAt(*reader, '"'))
        Step(reader);
    value->end = reader->at;
    if (*reader->at == '\0')
        return false;
    ++reader->at;
    SkipSpace(reader);
    return IsAtEnd(*reader);
}

// ---- Fields --------------------------------------------------------------------------------

bool Has(const nm_ORName *parsed, int field) { return parsed->field[field].offset >= 0; }

// The first number of the next of a series, of which the name has neither form yet.
int NextOf(Series series, const nm_ORName *parsed)
{
    for (int i = 0; i < kMost; ++i) {
        const int first = series.first + i * series.width;
        bool free = true;
        for (int field = first; field < first + series.width; ++field)
            free = free && !Has(parsed, field) && !Has(parsed, field + NM_T61_FORM);
        if (free)
            return first;
    }
    return kNoField;
}

bool Put(nm_ORName *parsed, const char *name, int field, Bytes value)
{
    if (IsT61Form(value)) {
        if (!NM_HAS_T61_FORM(field))
            return false;
        field += NM_T61_FORM;
    }
    if (field < 0 || Has(parsed, field))
        return false;
    parsed->field[field] = {static_cast<int32_t>(value.begin - name),
                            static_cast<int32_t>(value.end - value.begin)};
    return true;
}

bool ReadAttribute(Reader *reader, const char *name, nm_ORName *parsed)
{
    Bytes keyword = ReadUpTo(reader, '=');
    if (!IsAt(*reader, '='))
        return false;
    ++reader->at;
    Bytes value;
    if (!ReadValue(reader, &value))
        return false;
    for (const char *prefix : kPairPrefixes)
        if (TakePrefix(&keyword, prefix)) {
            const Bytes type = Trimmed(keyword);
            const int pair = NextOf(kPairs, parsed);
            return !IsEmpty(type) && pair != kNoField && Put(parsed, name, pair, type) &&
                   Put(parsed, name, pair + 1, value);
        }
    const int field = Equals(keyword, kUnit) ? NextOf(kUnits, parsed) : FieldOf(keyword);
    return Put(parsed, name, field, value);
}

bool ReadName(const char *name, nm_ORName *parsed)
{
    Reader reader = {name, ';', false, false};
    SkipSpace(&reader);
    if (*reader.at == '/')
        reader.separator = *reader.at++;
    for (SkipSpace(&reader); *reader.at != '\0'; SkipSpace(&reader)) {
        if (!ReadAttribute(&reader, name, parsed))
            return false;
        if (*reader.at != '\0')
            ++reader.at;
    }
    return true;
}

} // namespace

extern "C" {

void nm_ParseORN(const char *orName, nm_ORName *parsed, int *status)
{
    for (auto &field : parsed->field)
        field = {-1, 0};
    const bool fits = strnlen(orName, size_t{INT32_MAX} + 1) <= INT32_MAX;
    *status = fits && ReadName(orName, parsed) ? 0 : 1;
}

const char *nm_GetFieldMemPtr(const char *orName, const nm_ORName *parsed, int field, int *length)
{
    const bool found = field >= 0 && field < NM_FIELD_COUNT && Has(parsed, field);
    *length = found ? parsed->field[field].length : 0;
    return found ? orName + parsed->field[field].offset : nullptr;
}

int da_AttIdToORNIndex(const char *identifier, int length)
{
    const size_t bytes = length < 0 ? std::strlen(identifier) : static_cast<size_t>(length);
    const Bytes trimmed = Trimmed({identifier, identifier + bytes});
    return Equals(trimmed, kUnit) ? kUnits.first : FieldOf(trimmed);
}

const char *t61_ParseO61Str(const char *value, int length)
{
    const Bytes bytes = {value, value + (length < 0 ? 0 : length)};
    if (!IsT61Form(bytes))
        return "";
    const bool utf8 = !SwitchesSets(bytes) && g_utf8_validate(value, length, nullptr) != FALSE;
    return utf8 ? "UTF8" : "T.61";
}

} // extern "C"
