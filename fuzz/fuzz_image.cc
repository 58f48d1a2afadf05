// SPDX-License-Identifier: Apache-2.0
//
// An image with any words changed: what may be attached can be read whatever it says.
#include "fuzz/case_table.h"
#include "tests/support/test.h"

static uint32_t records, firstFree = 4;
static int32_t recordCount;

static std::string MakeImage()
{
    kHome.Write("toupper/6.s", "T C x\na=A");
    kHome.Write("toupper/100.s", "T C y\na=A \\xDF=SS \\xC2a=AB \\xC2b=B \\xC3q=qq");
    str_ReadStrToWkArea(0, nullptr);
    std::string bytes(4 + str_TotalWorkArea(), '\0');
    const auto take = [](char *, uint32_t size) {
        return std::exchange(firstFree, firstFree + (size + 3) / 4 * 4);
    };
    Demand(str_CopyWorkAreaToSMem(take, bytes.data(), &records, &recordCount) == 1);
    return bytes;
}

// A byte whose pairs are looked up, one for each value to attach, and words after their places.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    static const std::string image = MakeImage();
    static const Guarded segment(image.size());
    if (size < 3)
        return 0;
    char *const at = segment.data();
    std::copy(image.begin(), image.end(), at);
    for (const uint8_t *word = bytes + 3; word + 6 <= bytes + size; word += 6)
        std::memcpy(at + (word[0] + 256U * word[1]) % (image.size() / 4) * 4, word + 2, 4);
    const uint32_t place = records + bytes[1] % 16 * 4U;
    const int32_t count = recordCount + static_cast<int8_t>(bytes[2]) / 16;
    if (str_CheckSMem(place, count, at, image.size()) == 0)
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
