// SPDX-License-Identifier: Apache-2.0
//
// Case-folding only where two texts differ.
//
// GLib folds each character without regard to its neighbours, so the folded form of a text is the
// folded forms of its characters in a row, and equal characters are equal when folded.  Each folded
// form is kept, since GLib allocates for every call.
#include "str/core/fold.h"

#include "base/blocks.h"
#include "base/utf8.h"

#include <glib.h>

#include <algorithm>
#include <cstring>

namespace libstr
{

namespace
{

constexpr size_t kMostBytes = 4;   // of a character
constexpr size_t kMostFolded = 12; // of a folded form: up to three characters

struct Folded {
    gunichar character; // 0 for a free place: no text contains a NUL
    uint8_t length;
    char bytes[kMostFolded];
};

// Folded forms, by the low bits of their characters.  A newer one replaces an older one.
constexpr size_t kPlaces = 1024;
Folded theFolded[kPlaces];

// The folded form of the well-formed character `c` at `at`, valid until the next call.
const Folded *FoldedForm(const char *at, const utf8::Char &c)
{
    Folded *const place = &theFolded[c.code % kPlaces];
    if (place->character == c.code)
        return place;
    char *const folded = utf8::ChangeCase(g_utf8_casefold, at, c.length);
    place->length = static_cast<uint8_t>(std::min(std::strlen(folded), kMostFolded));
    std::memcpy(place->bytes, folded, place->length);
    place->character = c.code;
    g_free(folded);
    return place;
}

// A text in folded form: the form of one character, and the text after that character.
struct FoldedText {
    const char *at;
    const char *end;
    Folded form;
    size_t used; // bytes of the form that have been compared
};

FoldedText Begin(const char *text) { return {text, text + std::strlen(text), {}, 0}; }

size_t Pending(const FoldedText &text) { return text.form.length - text.used; }

bool HasEnded(const FoldedText &text) { return Pending(text) == 0 && text.at == text.end; }

// Makes the next character pending.
void TakeCharacter(FoldedText *text)
{
    const utf8::Char c = utf8::CharAt(text->at);
    text->form = utf8::IsMalformed(c) ? Folded{0, 1, {*text->at}} : *FoldedForm(text->at, c);
    text->used = 0;
    text->at += c.length;
}

bool IsContinuation(char byte) { return (static_cast<uint8_t>(byte) & 0xC0) == 0x80; }

// How many of the `same` bytes at the start of both texts belong to whole characters.  A character
// begins at a byte that is not a continuation, at most three before its last byte.
size_t WholeCharacters(const char *at1, const char *at2, size_t same)
{
    for (size_t back = 0; back < kMostBytes && back <= same; ++back)
        if (!IsContinuation(at1[same - back]) && !IsContinuation(at2[same - back]))
            return same - back;
    return same;
}

// Passes over equal characters, and over ASCII letters that differ only in case.
void SkipAlike(FoldedText *text1, FoldedText *text2)
{
    const auto most = static_cast<size_t>(std::min(text1->end - text1->at, text2->end - text2->at));
    size_t same = 0;
    while (same < most) {
        const blocks::Block block1 = blocks::Load(text1->at + same, most - same);
        const blocks::Block block2 = blocks::Load(text2->at + same, most - same);
        const uint32_t differ =
            blocks::Mask(blocks::Differ(blocks::Lower(block1), blocks::Lower(block2)));
        const unsigned int alike = blocks::Free(differ, 0);
        same += alike;
        if (alike < blocks::kSize)
            break;
    }
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
