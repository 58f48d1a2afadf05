// SPDX-License-Identifier: Apache-2.0
#include "tools/input.h"

#include "tools/convert.h"

#include <CLI/CLI.hpp>
#include <glib.h>
#include <platform/ccs.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>

namespace strtool
{
namespace
{

int HexDigit(std::string_view text, size_t at)
{
    return at < text.size() ? g_ascii_xdigit_value(text[at]) : -1;
}

// Why the UTF-8 `text` cannot be written in the set, because of its byte `at`.
std::string WhyNot(std::string_view text, size_t at, const ccs_SetInfo &set)
{
    const std::string_view rest = text.substr(at);
    const auto c = g_utf8_get_char_validated(rest.data(), static_cast<gssize>(rest.size()));
    if (static_cast<gint32>(c) < 0)
        return "byte " + std::to_string(at + 1) + " does not begin a UTF-8 character";
    const auto length = static_cast<size_t>(g_unichar_to_utf8(c, nullptr));
    return "there is no '" + std::string(rest.substr(0, length)) + "' in " + set.name;
}

// Converts UTF-8 texts to a set.
class Recoder
{
  public:
    explicit Recoder(const ccs_SetInfo &to) : set(to), fromUtf8(to.iconvName, "UTF-8") {}

    std::string Recode(const std::string &text)
    {
        if (!fromUtf8.IsOpen())
            throw TextError(std::string("iconv cannot write ") + set.name);
        std::string recoded;
        const size_t done = fromUtf8.Convert(text, recoded);
        if (done < text.size())
            throw TextError(WhyNot(text, done, set));
        return recoded;
    }

  private:
    ccs_SetInfo set;
    Converter fromUtf8;
};

std::string UnescapeBytes(std::string_view written)
{
    std::string bytes;
    for (size_t at = 0; at < written.size(); ++at) {
        if (written[at] != '\\') {
            bytes += written[at];
            continue;
        }
        const char kind = ++at < written.size() ? written[at] : '\0';
        const int high = HexDigit(written, at + 1);
        const int low = HexDigit(written, at + 2);
        if (kind == 'e')
            bytes += '\x1B';
        else if (kind == 'n')
            bytes += '\n';
        else if (kind == 't')
            bytes += '\t';
        else if (kind == '\\')
            bytes += '\\';
        else if (kind == 'x' && high >= 0 && low >= 0) {
            bytes += static_cast<char>(high << 4 | low);
            at += 2;
        } else
            throw UsageError("'" + std::string(written) +
                             "': a backslash must come before xHH, e, n, t or another backslash");
    }
    return bytes;
}

// The library ignores what follows a NUL.
void RefuseNul(std::string_view text)
{
    if (const size_t nul = text.find('\0'); nul != text.npos)
        throw TextError("byte " + std::to_string(nul + 1) + " is NUL, which a text cannot have");
}

// Prepares texts and passes them to the verb.
class Feed
{
  public:
    Feed(const TextOptions &options, const TextHandler &handler)
        : cs(DescriptorOf(FindSet(options.charset))), handle(handler)
    {
        if (options.utf8In)
            recoder.emplace(FindSet(options.charset));
    }

    // `name` is the name of the text in messages.
    void Take(const std::string &text, const std::string &name)
    {
        try {
            RefuseNul(text);
            handle(recoder ? recoder->Recode(text) : text, cs);
        } catch (const TextError &error) {
            Complain(name + ": " + error.what());
            status = kFailed;
        }
    }

    // Says that a file failed, for the reason in errno.
    void Fail(const std::string &file)
    {
        Complain(file + ": " + std::strerror(errno));
        status = kFailed;
    }

    int status = kDone;

  private:
    CSDescriptor cs;
    const TextHandler &handle;
    std::optional<Recoder> recoder;
};

void TakeArguments(const TextOptions &options, Feed &feed)
{
    const std::vector<std::string> &arguments = options.arguments;
    // All of them first, so that a usage error comes before any output.
    std::vector<std::string> texts;
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(texts), UnescapeBytes);
    for (size_t i = 0; i < texts.size(); ++i)
        feed.Take(texts[i], "text " + std::to_string(options.firstNumber + i));
}

// The buffer of getline.
struct Line {
    ~Line() { std::free(bytes); }

    char *bytes = nullptr;
    size_t room = 0;
};

// The lines of `file`; `prefix` comes before their names in messages.
void TakeLines(std::FILE *stream, const std::string &file, const std::string &prefix, Feed &feed)
{
    Line line;
    ssize_t length;
    for (size_t number = 1; (length = getline(&line.bytes, &line.room, stream)) >= 0; ++number) {
        std::string_view text(line.bytes, static_cast<size_t>(length));
        if (text.ends_with('\n'))
            text.remove_suffix(1);
        feed.Take(std::string(text), prefix + "line " + std::to_string(number));
    }
    if (!std::feof(stream))
        feed.Fail(file);
}

void TakeFile(const std::string &file, Feed &feed)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream(std::fopen(file.c_str(), "re"),
                                                                  std::fclose);
    if (stream == nullptr)
        return feed.Fail(file);
    TakeLines(stream.get(), file, file + ": ", feed);
}

} // namespace

void AddTexts(CLI::App &verb, TextOptions &options)
{
    // Taken as they are: CLI11's own conversion to a list interprets some texts.
    const auto take = [&options](const CLI::results_t &texts) {
        options.arguments = texts;
        return true;
    };
    verb.add_option("TEXT", take,
                    "A text each, with \\xHH \\e \\n \\t \\\\ for bytes; without any, "
                    "the lines of standard input")
        ->type_name("")
        ->expected(1, -1)
        ->allow_extra_args()
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    verb.footer("Put '--' before a text that begins with '-'.");
}

void AddTextOptions(CLI::App &verb, TextOptions &options)
{
    AddTexts(verb, options);
    verb.add_option("--charset", options.charset, "The set of the texts: see strtool sets")
        ->type_name("NAME")
        ->capture_default_str();
    verb.add_flag("--utf8-in", options.utf8In,
                  "The texts are written in UTF-8: convert them first");
}

CLI::Option &AddNumber(CLI::App &verb, const std::string &name, std::optional<int> &number,
                       const std::string &description)
{
    const auto take = [&number, name](const std::string &written) {
        const char *end = written.data() + written.size();
        int value = 0;
        const auto [stop, error] = std::from_chars(written.data(), end, value);
        if (error != std::errc{} || stop != end || value < 0)
            throw UsageError(name + ": '" + written + "' is not a number from 0 to " +
                             std::to_string(INT_MAX));
        number = value;
    };
    return *verb.add_option_function<std::string>(name, take, description)->type_name("N");
}

std::vector<std::string> CommandLine(int argc, char **argv)
{
    std::vector<std::string> words(argv + 1, argv + argc);
    // CLI11 takes a text in brackets for a list of texts, so the bracket is escaped.  Every
    // argument that may be in brackets is unescaped later; other words in brackets are wrong in any
    // case.
    for (std::string &word : words)
        if (word.starts_with('[') && word.ends_with(']'))
            word.replace(0, 1, "\\x5B");
    std::reverse(words.begin(), words.end());
    return words;
}

ccs_SetInfo FindSet(const std::string &name)
{
    CSDescriptor cs;
    ccs_SetInfo set;
    if (ccs_GetCSDescriptor(name.c_str(), &cs) != 0)
        for (int i = 0; ccs_GetSetInfo(i, &set) != 0; ++i)
            if (set.number == cs.csNum)
                return set;
    throw UsageError("there is no set '" + name +
                     "'; 'strtool sets' lists them, 'strtool sets --why NAME' says why");
}

CSDescriptor DescriptorOf(const ccs_SetInfo &set) { return {set.number, set.escMode}; }

std::string Unescape(std::string_view written)
{
    std::string bytes = UnescapeBytes(written);
    try {
        RefuseNul(bytes);
    } catch (const TextError &error) {
        throw TextError("'" + std::string(written) + "': " + error.what());
    }
    return bytes;
}

int OneByte(const std::string &written)
{
    const std::string bytes = Unescape(written);
    if (bytes.size() != 1)
        throw UsageError("'" + written + "' is not one byte");
    return static_cast<signed char>(bytes.front());
}

std::string FromUtf8(const std::string &text, const ccs_SetInfo &set)
{
    return Recoder(set).Recode(text);
}

int ForEachText(const TextOptions &options, const TextHandler &handle)
{
    Feed feed(options, handle);
    if (options.file)
        TakeFile(*options.file, feed);
    else if (options.arguments.empty())
        TakeLines(stdin, "standard input", "", feed);
    else
        TakeArguments(options, feed);
    return feed.status;
}

} // namespace strtool
