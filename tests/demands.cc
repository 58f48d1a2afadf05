// SPDX-License-Identifier: Apache-2.0
//
// What a fuzzer demands, of random texts or bytes: linked with one, it needs no fuzzing engine.
#include "tests/support/test.h"

#include <glib.h>

extern "C" int LLVMFuzzerTestOneInput(const char *bytes, size_t size);

namespace
{

constexpr char kOfFormats[] = "%%%%%%**..$$$$0123456789ab:/-+ #'hlLdiouxXceEfgGnPspjzF\x1B(B\xC3";

// Of another text, or the same with other case, with directives and with what matches anything.
std::string Varied(std::mt19937 &random, const std::string &text)
{
    const char *const others[] = {"%s", "%.4s", "%-c", "%d", "\x1F", "a", ""};
    std::string varied = random() % 8 == 0 ? RandomText(random, 20) : text;
    for (char &byte : varied)
        if (g_ascii_isalpha(byte) && random() % 4 == 0)
            byte = static_cast<char>(byte ^ 0x20);
    for (auto changes = random() % 4; changes > 0; --changes) {
        const size_t at = random() % (varied.size() + 1);
        varied.replace(at, random() % 4, others[random() % std::size(others)]);
    }
    return varied;
}

} // namespace

// With an argument, an input is any bytes.
int main(int count, char **)
{
    const char *const rounds = std::getenv("STR_TEST_ROUNDS");
    std::mt19937 random(TestSeed());
    for (int round = rounds == nullptr ? 20'000 : std::atoi(rounds); round > 0; --round) {
        std::string input(4, '\0');
        std::generate(input.begin(), input.end(), random);
        input[1] = random() % 2 == 0 ? input[0] : input[1];
        input[3] = static_cast<char>(input[3] >> random() % 7); // most limits are within the text
        std::string text = RandomText(random, 20);
        if (random() % 4 == 0)
            std::generate(text.begin(), text.end(),
                          [&] { return kOfFormats[random() % (sizeof kOfFormats - 1)]; });
        input += random() % 2 == 0 ? text : Varied(random, text);
        input += '\0' + Varied(random, text);
        if (count > 1)
            std::generate(input.begin(), input.end(), random);
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
}
