// SPDX-License-Identifier: Apache-2.0
//
// Texts that are made of others: joined, formatted, transformed.
#include "fuzz/text.h"

static std::string CheckJoin(const Input &input, const char *first, const char *second)
{
    int length = 0;
    const char *const escapes = str_GetEscapes(first, second, &input.cs, &length);
    const std::string between = escapes == nullptr ? "" : escapes;
    Demand(static_cast<size_t>(length) == between.size() && length <= 81);
    for (const size_t n : {size_t{input.limit}, input.second.size()}) {
        const std::string whole = input.first + between + input.second.substr(0, n);
        char *const room = std::strcpy(Room(2, whole.size() + 1), first);
        Demand((n == input.second.size() ? str_strcat(room, second, &input.cs)
                                         : str_strncat(room, second, n, &input.cs)) == whole);
    }
    return between;
}

// Whether the C library knows the directive, whose value has the type.
static bool IsCommon(const ParameterRecord &record, int type)
{
    if (record.isConversion == 0 || record.type != type)
        return false;
    const char *at = record.text + 1;
    at += std::strspn(at, "-+ #0");
    at += *at == '*' ? 1 : std::strspn(at, "0123456789");
    at += *at != '.' ? 0 : at[1] == '*' ? 2 : 1 + std::strspn(at + 1, "0123456789");
    return at + 1 == record.text + record.textLen;
}

// A format of any bytes.  What the C library has too is as it makes it, from values of one type.
static std::string CheckFormat(const Input &input, const char *format, const char *text)
{
    int count = 0, digits = 0; // which count wherever in the directive they are
    for (const char *at = format; *at != '\0' && digits < 4; ++at)
        digits = *at == '%' ? 0 : digits + g_ascii_isdigit(*at);
    if (digits == 4)
        return ""; // too long to print
    const auto all = [](auto value) { return std::vector(STR_PARAMETERS, value); };
    // A value that the table does not ask for shows when it is looked at.
    std::vector ints = all(1 << 24);
    std::vector pointers = all(reinterpret_cast<void *>(1));
    const int number = static_cast<int>(input.limit) - 20;
    ParameterRecord table[STR_PARAMETERS];
    const CSSegment *const list = ccs_GetAllStrs(&input.cs, format, -1, &count);
    const uint16_t most = str_GetParams(&input.cs, format, list, count, table);
    for (size_t k = 1; k <= most; ++k) {
        ints[k] = table[k].type == STR_ARG_INT ? number : ints[k];
        pointers[k] = table[k].type == STR_ARG_STRING ? const_cast<char *>(text) : pointers[k];
    }
    unsigned int length = 1;
    const char *const built = str_buildpfstring(
        &input.cs, &length, format, table, most, all(short{-7}).data(), ints.data(),
        all(-8L).data(), nullptr, all(2.25e10).data(), all(3.5L).data(), pointers.data());
    const std::string result = built == nullptr ? "" : built;
    Demand(most < STR_PARAMETERS && (built == nullptr) == (length == 0) && result.size() == length);
    Demand(length < 1 << 24 && (most != 0 || result == format));
    const int type = most == 0 ? STR_ARG_INT : table[1].type;
    ptrdiff_t common = std::count_if(table + 1, table + 1 + most,
                                     [type](const auto &record) { return IsCommon(record, type); });
    if (most > 8 || (type != STR_ARG_INT && common != most) ||
        common != std::count(format, format + input.first.size(), '%') ||
        (number == 0 && std::strchr(format, 'c') != nullptr)) // which may print a NUL
        return result;
    static int (*const print)(char *, size_t, const char *, ...) = std::snprintf;
    char out[16384];
    const auto made = [&](auto v) {
        print(out, sizeof out, format, v, v, v, v, v, v, v, v);
        return out == result;
    };
    Demand(type == STR_ARG_INT      ? made(number)
           : type == STR_ARG_DOUBLE ? made(2.25e10)
                                    : type != STR_ARG_STRING || !input.plain || made(text));
    return result;
}

// Directives anywhere, also in parts of sequences.
static std::string CheckPrint(const Input &input, const char *first, const char *second)
{
    static char room[4096], more[4096];
    std::string format = input.first + input.second;
    std::replace(format.begin(), format.end(), '%', '$');
    format.insert(input.limit % (format.size() + 1), "%.4s");
    format += input.choice % 2 == 0 ? "%s%-c" : "%1$s%-c";
    PrintfError = 0;
    const int size = str_simplesprintf(&input.cs, room, format.c_str(), first, second, first);
    str_simplesprintf(&input.cs, more, "%s|%.*s", first, input.limit, second);
    return std::to_string(size) + (size < 0 ? "" : room) + std::to_string(PrintfError) + more;
}

// Whole characters, whatever the precision; and what follows reads as written, except where an
// escape sequence, or half a character, ends a string that is not cut.
static void CheckWhatFollows(const Input &input, const char *text)
{
    static constexpr uint16_t sets[] = {103, 1001, 1002}; // those with escape sequences
    const CSDescriptor cs = {sets[input.choice % 3], 1};
    const bool isWhole = input.limit > input.first.size();
    const size_t size = isWhole ? input.first.size() + 1 : input.limit;
    char *const slice = std::copy_n(text, size, Room(2, size)) - size, *const out = Room(3, 4096);
    int count = 0;
    const CSSegment *const list = ccs_GetAllStrs(&cs, text, -1, &count);
    if (isWhole && count > 1 && list[count - 2].kind >= CS_SEG_IGNORE)
        return;
    str_simplesprintf(&cs, out, "[%.*s] done", isWhole ? -1 : static_cast<int>(size), slice);
    const Kinds said = KindsOf(cs, out), all = KindsOf(cs, text);
    Kinds expected = KindsOf(cs, "[] done");
    const size_t kept = isWhole ? all.size() : std::min(all.size(), said.size() - expected.size());
    Demand(kept < said.size());
    const CSDescriptor last = {said[kept].first, 0};
    if (said[kept].second < 0 && (ccs_GetCSFlags(&last) & CS_FLAG_ASCII_SUPERSET) != 0)
        return; // the other half may hold another set, and the kind does not say so
    expected.insert(expected.begin() + 1, all.data(), all.data() + kept);
    Demand(std::equal(said.begin(), said.end(), expected.begin(), expected.end(), IsSame));
}

static std::string CheckTransform(const Input &input, const char *text, const char *specials)
{
    static const char *const rules[] = {"", nullptr, "ab", "\x1B$B"};
    const std::vector<const char *> replacements(input.second.size(), rules[input.limit % 4]);
    unsigned int length = 7;
    const char *const made =
        str_TransformUTF8InputStr(text, -1, specials, replacements.data(), "#", '\\',
                                  static_cast<int>(input.choice % 2), &length);
    Demand(made == nullptr
               ? length == 0 || !input.wellFormed
               : input.wellFormed && made[length] == '\0' && length <= 3 * input.first.size());
    const std::string said = made == nullptr ? "null" : std::string(made, length);
    const char *const same = str_TransformUTF8InputStr(text, -1, "", nullptr, "", 1, 0, &length);
    Demand(input.first.find('\x01') != std::string::npos ||
           (input.wellFormed ? same == input.first : same == nullptr));
    return said;
}

std::string Try(const Input &input, const char *first, const char *second)
{
    CheckWhatFollows(input, first);
    return CheckJoin(input, first, second) + CheckFormat(input, first, second) +
           CheckPrint(input, first, second) + CheckTransform(input, first, second);
}
