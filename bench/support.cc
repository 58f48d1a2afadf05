// SPDX-License-Identifier: Apache-2.0
#include "bench/support.h"

#include <platform/ccs.h>

#include <map>
#include <stdexcept>
#include <utility>

namespace bench
{
namespace
{

iconv_t Open(const char *to, const char *from)
{
    const iconv_t converter = iconv_open(to, from);
    if (converter == reinterpret_cast<iconv_t>(-1))
        throw std::runtime_error(std::string("iconv cannot convert ") + from + " to " + to);
    return converter;
}

// The converter, opened at the first call and kept.
iconv_t Kept(const char *to, const char *from)
{
    static std::map<std::pair<std::string, std::string>, iconv_t> all;
    const auto [at, isNew] = all.try_emplace({to, from});
    if (isNew)
        at->second = Open(to, from);
    return at->second;
}

// As many of the pieces as `count`, again and again.
std::string Joined(const std::vector<std::string> &pieces, size_t count)
{
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += pieces[i % pieces.size()];
    return text;
}

} // namespace

std::string Recode(const char *to, const char *from, const std::string &bytes)
{
    const iconv_t converter = Open(to, from);
    std::string recoded(bytes.size() * 4 + 16, '\0');
    char *in = const_cast<char *>(bytes.data()), *out = recoded.data();
    size_t inLeft = bytes.size(), outLeft = recoded.size();
    const bool done = iconv(converter, &in, &inLeft, &out, &outLeft) == 0 &&
                      iconv(converter, nullptr, nullptr, &out, &outLeft) == 0;
    iconv_close(converter);
    if (!done)
        throw std::runtime_error(std::string("no ") + to + " for this " + from + ": " + bytes);
    recoded.resize(recoded.size() - outLeft);
    return recoded;
}

Text MakeText(const Sort &sort, const std::vector<std::string> &pieces, size_t size)
{
    const auto encoded = [&](size_t count) {
        return Recode(sort.iconv, "UTF-8", Joined(pieces, count));
    };
    size_t fits = 0, tooMany = size + 1; // a piece has a byte at least
    while (tooMany - fits > 1) {
        const size_t count = fits + (tooMany - fits) / 2;
        (encoded(count).size() <= size ? fits : tooMany) = count;
    }
    Text text = {sort, {}, Kept("WCHAR_T", sort.iconv), Kept(sort.iconv, "WCHAR_T"), {}, 0, {}};
    if (ccs_GetCSDescriptor(sort.set, &text.cs) == 0)
        throw std::runtime_error(std::string("no set ") + sort.set);
    text.bytes = encoded(fits);
    text.characters = Recode("WCHAR_T", sort.iconv, text.bytes).size() / sizeof(wchar_t);
    return text;
}

std::string Answer(const Text &, size_t answer) { return std::to_string(answer); }

const char *Dissenter(const Text &text, const std::vector<Way> &ways, Outcome outcome)
{
    const std::string ours = outcome(text, ways.front().call(text));
    for (const Way &way : ways)
        if (outcome(text, way.call(text)) != ours)
            return way.name;
    return nullptr;
}

} // namespace bench
