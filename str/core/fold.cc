// SPDX-License-Identifier: Apache-2.0
//
// Case-folding where two texts differ, and only there.
//
// GLib folds character by character, without regard to what stands around it, so a text's folded
// form is its characters' folded forms in a row, and equal characters need not be folded to be
// equal.  Each character that had to be folded is kept with its folded form, since asking GLib costs
// an allocation.
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
constexpr size_t kMostFolded = 12; // of a folded form, which is up to three characters of four

struct Folded {
    gunichar character; // 0 for a free place, as no text holds a NUL
    uint8_t length;
    char bytes[kMostFolded];
};

// Folded forms, by the low bits of their characters; a newer one takes the place of an older.
constexpr size_t kPlaces = 1024;
Folded theFolded[kPlaces];

// The form of a character, good until another is asked for.
const Folded *FoldedForm(const char *at, size_t length, gunichar character)
{
    Folded *const place = &theFolded[character % kPlaces];
    if (place->character == character)
        return place;
    char *const folded = utf8::ChangeCase(g_utf8_casefold, at, length);
    place->length = static_cast<uint8_t>(std::min(std::strlen(folded), kMostFolded));
    std::memcpy(place->bytes, folded, place->length);
    place->character = character;
    g_free(folded);
    return place;
}

// A text in folded form: the form of one character, its own copy, and the text after it.
struct FoldedText {
    const char *at;
    const char *end;
    Folded form;
    size_t used; // bytes of the form that are compared
};

FoldedText Begin(const char *text) { return {text, text + std::strlen(text), {}, 0}; }

size_t Pending(const FoldedText &text) { return text.form.length - text.used; }

bool HasEnded(const FoldedText &text) { return Pending(text) == 0 && text.at == text.end; }

// Makes the next character pending.
void TakeCharacter(FoldedText *text)
{
    const auto left = static_cast<size_t>(text->end - text->at);
    const gunichar character = g_utf8_get_char_validated(text->at, static_cast<gssize>(left));
    const bool wellFormed = character < 0x80000000;
    const size_t length =
        wellFormed ? static_cast<size_t>(g_utf8_skip[static_cast<uint8_t>(*text->at)]) : 1;
    text->form = wellFormed ? *FoldedForm(text->at, length, character) : Folded{0, 1, {*text->at}};
    text->used = 0;
    text->at += length;
}

bool IsContinuation(char byte) { return (static_cast<uint8_t>(byte) & 0xC0) == 0x80; }

// How many of the `same` bytes that both texts begin with belong to whole characters.  A character
// begins at a byte that is no continuation, at most three before its last one.
size_t WholeCharacters(const char *at1, const char *at2, size_t same)
{
    for (size_t back = 0; back < kMostBytes && back <= same; ++back)
        if (!IsContinuation(at1[same - back]) && !IsContinuation(at2[same - back]))
            return same - back;
    return same;
}

// Passes over the characters that both texts have in the same bytes, and over ASCII letters that
// differ in case alone.
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
