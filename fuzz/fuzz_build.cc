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
    int count = 0, run = 0;
    for (const char *at = format; *at != '\0' && run < 4; ++at)
        run = g_ascii_isdigit(*at) ? run + 1 : 0;
    if (run == 4)
        return ""; // too long to print
    const auto all = [](auto value) { return std::vector(STR_PARAMETERS, value); };
    const int number = static_cast<int>(input.limit) - 20;
    ParameterRecord table[STR_PARAMETERS];
    const CSSegment *const list = ccs_GetAllStrs(&input.cs, format, -1, &count);
    const uint16_t most = str_GetParams(&input.cs, format, list, count, table);
    unsigned int length = 1;
    const char *const built = str_buildpfstring(
        &input.cs, &length, format, table, most, all(short{-7}).data(), all(number).data(),
        all(-8L).data(), nullptr, all(2.25e10).data(), all(3.5L).data(),
        all(static_cast<void *>(const_cast<char *>(text))).data());
    const std::string result = built == nullptr ? "" : built;
    Demand(most < STR_PARAMETERS && (built == nullptr) == (length == 0) && result.size() == length);
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
    static constexpr auto kChecks = {CheckJoin, CheckFormat, CheckPrint, CheckTransform};
    return kChecks.begin()[input.choice / 8 % 4](input, first, second);
}
