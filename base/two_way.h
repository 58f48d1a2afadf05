// SPDX-License-Identifier: Apache-2.0
//
// The search for a piece in a text, of which neither has to be in one row of bytes: the two-way
// algorithm of Crochemore and Perrin (1991).  Its time is linear in both, and it needs no memory.
//
// A reader is a place in a sequence of symbols.  It is copied freely and moves forward only:
//
//     IsEnd()        no symbol is left
//     Symbol()       the symbol there, a number
//     Skip(count)    moves on by so many symbols, or to the end
//     Seek(symbol)   of the text: moves on to that symbol or to the end; returns how many it passed
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

// The suffix of a piece that is the last of all in the order of its symbols, or in the reverse
// order.  `other` is the start of one that has its first `same` symbols in common with it.
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

// The piece, divided so that a place where the right half is says how far on the next may be.
template <class Piece>
struct Halves {
    Piece right;
    size_t left;  // symbols before it
    size_t shift; // from a place with the right half to the next where the piece may be
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

// Moves the text on by the symbols that it has in common with the piece, and returns how many these
// are.  `whole` receives whether the piece ends with them.
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

// Calls `take` at the places where the right half of the piece is, from the leftmost on, until it
// returns true.  False when it never does.  `take` compares the whole piece, from its first symbol
// on; the time is linear when it returns true wherever all symbols agree.  The piece is not empty.
template <class Text, class Piece, class Take>
bool Find(Text place, const Piece &piece, Take take)
{
    const Halves<Piece> halves = Divide(piece);
    const auto first = halves.right.Symbol();
    while (!place.IsEnd()) {
        Text at = place;
        at.Skip(halves.left);
        size_t count = 0; // from the place to the one that is tried
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
