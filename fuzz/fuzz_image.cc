// SPDX-License-Identifier: Apache-2.0
//
// An image with any words changed: what may be attached can be read whatever it says.
#include "fuzz/case_table.h"
#include "tests/support/test.h"

static std::string MakeImage(Image *image)
{
    kHome.Write("toupper/6.s", "T C x\na=A");
    kHome.Write("toupper/100.s", "T C y\na=A \\xDF=SS \\xC2a=AB \\xC2b=B \\xC3q=qq");
    str_ReadStrToWkArea(0, nullptr);
    std::string bytes(4 + str_TotalWorkArea(), '\0');
    *image = Image(bytes.data(), bytes.size());
    Demand(image->done == 1);
    return bytes;
}

// A byte whose pairs are looked up, one for each value to attach, and how many bytes are missing
// and words are changed; then the place and the new value of each.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    static Image good(nullptr, 0);
    static const std::string image = MakeImage(&good);
    static const Guarded segment(image.size());
    if (size < 4)
        return 0;
    const uint32_t place = good.records + (bytes[1] < 16 ? bytes[1] * 4U : 0);
    const int32_t count = good.count + (bytes[2] < 16 ? bytes[2] - 8 : 0);
    const size_t cut = bytes[3] % 64 < 8 ? bytes[3] % 64 * 4 : 0, words = bytes[3] / 64,
                 held = image.size() - cut;
    char *const at = segment.data() + cut;
    std::copy_n(image.begin(), held, at);
    for (size_t i = 1; i <= words && 4 * i + 4 <= size; ++i) {
        char *const word = at + (bytes[4 * i] + 256U * bytes[4 * i + 1]) % (held / 4) * 4;
        uint32_t old;
        std::memcpy(&old, word, sizeof old);
        const uint32_t values[] = {old,    0,        old + (old < image.size() ? 256 : 0),
                                   0x8000, 1U << 31, static_cast<uint32_t>(held)};
        const uint32_t value = values[bytes[4 * i + 2] % 6] +
                               static_cast<uint32_t>(static_cast<int8_t>(bytes[4 * i + 3]) / 16);
        std::memcpy(word, &value, sizeof value);
    }
    const int isHeld = str_CheckSMem(place, count, at, held);
    Demand(isHeld != 0 || place != good.records || count != good.count || cut + words != 0);
    Demand(str_CheckSMem(place, count, at + 1, held - 1) == 0);
    if (isHeld == 0)
        return 0;
    str_AttachSMem(place, count, at);
    for (int32_t pair = 0; pair < 512 * count; ++pair) {
        const auto byte = static_cast<uint8_t>(pair / 2);
        const uint8_t in[] = {pair % 2 == 0 ? bytes[0] : byte, pair % 2 == 0 ? byte : bytes[0]};
        uint8_t out[3] = {0, 0, 0xEE};
        int written = 0;
        const int taken = str_UpShiftChar(in, 2, &pCaseTabs[pair / 512], out, &written);
        Demand((taken | 3) == 3 && taken > 0 && (written | 3) == 3 && out[2] == 0xEE);
    }
    return 0;
}
