// SPDX-License-Identifier: Apache-2.0
#include "base/switches.h"

#include "base/blocks.h"
#include "base/vector.h"

#include <algorithm>

namespace libstr
{

namespace
{

#if defined(STR_AVX2)

using Window = __m256i;

STR_AVX2 inline Window LoadWindow(const char *at)
{
    return _mm256_loadu_si256(static_cast<const Window *>(static_cast<const void *>(at)));
}

STR_AVX2 inline Window SwitchesIn(Window window)
{
    const Window shifts = _mm256_or_si256(window, _mm256_set1_epi8(1));
    return _mm256_or_si256(_mm256_cmpeq_epi8(shifts, _mm256_set1_epi8('\x0F')),
                           _mm256_cmpeq_epi8(window, _mm256_set1_epi8('\x1B')));
}

// Of at least 32 bytes.  Most texts have few controls, so their bytes are looked at only where one
// of 128 bytes is as low as ESC.
STR_AVX2 bool HasSwitchesInWindows(const char *at, size_t size)
{
    constexpr size_t kWindow = 32, kStride = 4 * kWindow;
    const char *const end = at + size;
    Window switches = _mm256_setzero_si256();
    for (; static_cast<size_t>(end - at) >= kStride; at += kStride) {
        const Window a = LoadWindow(at), b = LoadWindow(at + kWindow),
                     c = LoadWindow(at + 2 * kWindow), d = LoadWindow(at + 3 * kWindow);
        const Window least = _mm256_min_epu8(_mm256_min_epu8(a, b), _mm256_min_epu8(c, d));
        const Window low =
            _mm256_cmpeq_epi8(_mm256_min_epu8(least, _mm256_set1_epi8('\x1B')), least);
        if (_mm256_movemask_epi8(low) != 0)
            switches = _mm256_or_si256(_mm256_or_si256(SwitchesIn(a), SwitchesIn(b)),
                                       _mm256_or_si256(SwitchesIn(c), SwitchesIn(d)));
        if (_mm256_testz_si256(switches, switches) == 0)
            return true;
    }
    for (size_t i = 0; i < 4; ++i) // not as many as are left, which no branch could predict
        switches = _mm256_or_si256(
            switches, SwitchesIn(LoadWindow(std::min(at + i * kWindow, end - kWindow))));
    return _mm256_testz_si256(switches, switches) == 0;
}

#endif

} // namespace

bool HasSwitches(const char *at, size_t size)
{
#if defined(STR_AVX2)
    if (size >= 32 && HasAvx2())
        return HasSwitchesInWindows(at, size);
#endif
    for (const char *const end = at + size; at < end; at += blocks::kSize) {
        const blocks::Block block = blocks::Load(at, static_cast<size_t>(end - at));
        const blocks::Block shifts = blocks::Equal(block, '\x0E') | blocks::Equal(block, '\x0F');
        if (blocks::Mask(shifts | blocks::Equal(block, '\x1B')) != 0)
            return true;
    }
    return false;
}

} // namespace libstr
