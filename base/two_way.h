// SPDX-License-Identifier: Apache-2.0
//
// The search for a piece in a text: the two-way algorithm of Crochemore and Perrin (1991).  It
// takes linear time and no memory, and neither text nor piece need be contiguous.
//
// A reader is a place in a sequence of symbols.  It can be copied, and moves only forward:
//
//     IsEnd()        no symbol is left
//     Symbol()       the symbol at the place, a number
//     Skip(count)    moves on by so many symbols, or to the end
//     Seek(symbol)   moves on to that symbol or to the end, and returns how many it passed; only the
//                    text's reader needs it
#ifndef BASE_TWO_WAY_H
#define BASE_TWO_WAY_H

#include <algorithm>
#include <cstddef>

namespace libstr::twoway
{

template <class Piece>
struct Suffix {
    Piece at;
    size_t start, period;
    size_t end; // of the whole piece
};

// The suffix of a piece that comes last in the order of its symbols, or in the reverse order.
// `other` is the start of another suffix, of which the first `same` symbols have been compared and
// are equal.
template <class Piece>
Suffix<Piece> LastSuffix(const Piece &piece, bool reverse)
{
    Suffix<Piece> last = {piece, 0, 1, 0};
    Piece other = piece;
    other.Skip(1);
    Piece a = other, b = piece;
    size_t start = 1, same = 0; // of `other`
    while (!a.IsEnd()) {
        const auto x = a.Symbol(), y = b.Symbol();
        if (x != y && (x < y) == reverse) {
            last = {other, start, 1, 0};
            b = other;
            other.Skip(1);
            a = other;
            ++start;
            same = 0;
            continue;
        }
        a.Skip(1);
        b.Skip(1);
        ++same;
        if (x == y && same < last.period)
            continue;
        other = a;
        b = last.at;
        start += same;
        same = 0;
        if (x != y)
            last.period = start - last.start;
    }
    last.end = start + same;
    return last;
}

// The piece divided in two.  After a place with the right half, the piece can next be `shift`
// symbols further on.
template <class Piece>
struct Halves {
    Piece right;
    size_t left; // symbols before it
    size_t shift;
};

template <class Piece>
Halves<Piece> Divide(const Piece &piece)
{
    const Suffix<Piece> a = LastSuffix(piece, false), b = LastSuffix(piece, true);
    const Suffix<Piece> &right = a.start > b.start ? a : b;
    Piece x = piece, y = piece;
    y.Skip(right.period);
    size_t same = 0;
    for (; same < right.start && x.Symbol() == y.Symbol(); ++same) {
        x.Skip(1);
        y.Skip(1);
    }
    const bool repeats = same == right.start;
    return {right.at, right.start,
            repeats ? right.period : std::max(right.start, right.end - right.start) + 1};
}

// Moves the text on while its symbols equal those of the piece, and returns how many did.  `whole`
// receives whether these are the whole piece.
template <class Text, class Piece>
size_t Compare(Text *text, Piece piece, bool *whole)
{
    size_t same = 0;
    for (; !piece.IsEnd() && !text->IsEnd() && text->Symbol() == piece.Symbol(); ++same) {
        text->Skip(1);
        piece.Skip(1);
    }
    *whole = piece.IsEnd();
    return same;
}

// Calls `take` at each place where the right half of the piece matches, from left to right, until
// it returns true.  Returns false when it never does.  `take` compares the whole piece.  The time
// is linear when `take` accepts every place where all symbols are equal.  The piece must not be
// empty.
template <class Text, class Piece, class Take>
bool Find(Text place, const Piece &piece, Take take)
{
    const Halves<Piece> halves = Divide(piece);
    const auto first = halves.right.Symbol();
    while (!place.IsEnd()) {
        Text at = place;
        at.Skip(halves.left);
        size_t count = 0; // symbols from the place to the one that is tried
        bool whole = false;
        while (!whole && !at.IsEnd()) {
            count += at.Seek(first);
            const size_t same = Compare(&at, halves.right, &whole);
            if (!whole) {
                at.Skip(1);
                count += same + 1;
            }
        }
        if (!whole)
            return false;
        place.Skip(count);
        if (take(place))
            return true;
        place.Skip(halves.shift);
    }
    return false;
}

} // namespace libstr::twoway

#endif
