// SPDX-License-Identifier: Apache-2.0
//
// strtool truncate: what fits of texts in a number of bytes.
#include "tools/output.h"
#include "tools/verbs.h"

#include <str/truncate.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstring>
#include <memory>

namespace strtool
{
namespace
{

struct TruncateOptions : TextOptions {
    std::optional<int> bytes;
    bool close = false;
};

// By str_strncpy, which serves every set: str_truncate does not treat UTF-8 specially.
std::string Truncated(const std::string &text, size_t budget, bool close, const CSDescriptor &cs)
{
    constexpr size_t kMostEscapes = 81;
    std::string kept(std::min(budget, text.size() + kMostEscapes), '\0'); // the rest would be NULs
    const auto n = static_cast<unsigned int>(kept.size());
    if (close)
        str_truncateclosed(kept.data(), text.c_str(), n, &cs);
    else
        str_strncpy(kept.data(), text.c_str(), n, &cs);
    kept.resize(strnlen(kept.data(), kept.size()));
    return kept;
}

int Truncate(const TruncateOptions &options)
{
    Output output(options.utf8Out);
    return ForEachText(options, [&](const std::string &text, const CSDescriptor &cs) {
        const auto bytes = static_cast<size_t>(*options.bytes);
        output.Print({Truncated(text, bytes, options.close, cs)}, cs);
    });
}

} // namespace

void AddTruncate(CLI::App &app, int &status)
{
    CLI::App *verb =
        app.add_subcommand("truncate", "Keep what fits of each text in a number of bytes");
    const auto options = std::make_shared<TruncateOptions>();
    AddNumber(*verb, "--bytes", options->bytes, "The bytes that the result may have").required();
    verb->add_flag("--close", options->close,
                   "End the result in the state in which texts of the set begin");
    AddTextOptions(*verb, *options);
    AddOutputOption(*verb, *options);
    verb->callback([options, &status] { status = Truncate(*options); });
}

} // namespace strtool
