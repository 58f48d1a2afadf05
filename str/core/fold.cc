// SPDX-License-Identifier: Apache-2.0
//
// Case-folding only where two texts differ.
//
// GLib folds each character without regard to its neighbours, so the folded form of a text is the
// folded forms of its characters in a row, and equal characters are equal when folded.
#include "str/core/fold.h"

#include "base/blocks.h"
#include "base/utf8.h"
#include "str/core/case_forms.h"

#include <glib.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace libstr
{

namespace
{

constexpr size_t kMostBytes = 4; // of a character

CaseFormStore theStore;
constexpr CaseForms kFolded = {g_utf8_casefold, &theStore};

// A text in folded form: the form of one character, and the text after that character.
struct FoldedText {
    const char *at;
    const char *end;
    CaseBytes form;
    size_t used; // bytes of the form that have been compared
};

FoldedText Begin(const char *text) { return {text, text + std::strlen(text), {0, {}}, 0}; }

size_t Pending(const FoldedText &text) { return text.form.length - text.used; }

bool HasEnded(const FoldedText &text) { return Pending(text) == 0 && text.at == text.end; }

// Makes the next character pending.
void TakeCharacter(FoldedText *text)
{
    const utf8::Char c = utf8::CharAt(text->at);
    text->form = utf8::IsMalformed(c) ? CaseBytes{1, {*text->at}} : BytesOf(kFolded, c.code);
    text->used = 0;
    text->at += c.length;
}

// How many of the `same` bytes at the start of both texts belong to whole characters.  A character
// begins at a byte that is not a continuation, at most three before its last byte.
size_t WholeCharacters(const char *at1, const char *at2, size_t same)
{
    for (size_t back = 0; back < kMostBytes && back <= same; ++back)
        if (!utf8::IsContinuation(at1[same - back]) && !utf8::IsContinuation(at2[same - back]))
            return same - back;
    return same;
}

// Whether both are well-formed characters of two bytes, and folded the same two bytes.
inline bool AreAlikePairs(const char *at1, const char *at2)
{
    const auto isPair = [](const char *at) {
        const auto lead = static_cast<guchar>(*at);
        return lead >= 0xC2 && lead < 0xE0 && utf8::IsContinuation(at[1]);
    };
    if (!isPair(at1) || !isPair(at2))
        return false;
    const uint16_t pair = PairOf(kFolded, at1);
    return pair == PairOf(kFolded, at2) && pair != 0;
}

// The texts are alike before `at`.  When the two characters there are alike too, and equally long,
// returns where they end, else `at`.
size_t EndOfAlike(const char *at1, const char *at2, size_t at)
{
    const size_t begin = WholeCharacters(at1, at2, at);
    const utf8::Char c1 = utf8::CharAt(at1 + begin);
    const utf8::Char c2 = utf8::CharAt(at2 + begin);
    if (c1.length != c2.length || c1.code >= kFormsEnd || c2.code >= kFormsEnd)
        return at;
    const bool areAlike = FormOf(kFolded, c1.code) == FormOf(kFolded, c2.code);
    return areAlike ? begin + c1.length : at;
}

// The bytes that differ even in lower case: of a character of two bytes, the first one.  The lowest
// bit stands for the byte before the block.
inline uint32_t Different(blocks::Block block1, blocks::Block block2)
{
    const uint32_t differ =
        blocks::Mask(blocks::Differ(blocks::Lower(block1), blocks::Lower(block2)));
    const uint32_t seconds =
        differ & blocks::Mask(block1) & ~blocks::Mask(blocks::AtLeast(block1, '\xC0'));
    return (differ ^ seconds) << 1 | seconds;
}

// The texts are alike before `from`.  Returns a place after it up to which they are alike: a block
// later or within, where to begin the next block.  Returns a place that is not after it when the
// characters there are not alike.  `most` bytes of both may be read.
size_t PassBlock(const FoldedText &text1, const FoldedText &text2, size_t from, size_t most)
{
    uint32_t differ = Different(blocks::Load(text1.at + from, most - from),
                                blocks::Load(text2.at + from, most - from));
    if (from == 0 && (differ & 1) != 0)
        return 0; // no character begins before
    for (; differ != 0; differ &= differ - 1) {
        const size_t at = from + static_cast<size_t>(std::countr_zero(differ)) - 1;
        if (!AreAlikePairs(text1.at + at, text2.at + at))
            return EndOfAlike(text1.at, text2.at, at);
    }
    return from + blocks::kSize;
}

// Passes over characters that are alike one by one.
void SkipAlike(FoldedText *text1, FoldedText *text2)
{
    const auto most = static_cast<size_t>(std::min(text1->end - text1->at, text2->end - text2->at));
    size_t from = 0;
    size_t same = 0;
    do {
        from = same;
        same = PassBlock(*text1, *text2, from, most);
    } while (same > from && same < most);
    same = WholeCharacters(text1->at, text2->at, std::min(same, most));
    text1->at += same;
    text2->at += same;
}

} // namespace

bool AreAlikeFolded(const char *s1, const char *s2)
{
    FoldedText text1 = Begin(s1);
    FoldedText text2 = Begin(s2);
    for (;;) {
        if (Pending(text1) == 0 && Pending(text2) == 0)
            SkipAlike(&text1, &text2);
        if (HasEnded(text1) || HasEnded(text2))
            return HasEnded(text1) && HasEnded(text2);
        if (Pending(text1) == 0)
            TakeCharacter(&text1);
        if (Pending(text2) == 0)
            TakeCharacter(&text2);
        const size_t length = std::min(Pending(text1), Pending(text2));
        if (std::memcmp(text1.form.bytes + text1.used, text2.form.bytes + text2.used, length) != 0)
            return false;
        text1.used += length;
        text2.used += length;
    }
}

} // namespace libstr
