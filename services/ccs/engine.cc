// SPDX-License-Identifier: Apache-2.0
//
// UnitAt says what every byte means; it alone decides.  NextSegment repeats it over a run, and
// passes over the bytes whose meaning cannot change within the run by a table of byte classes.
//
// Bad text is read as the standards' readers do: of a malformed escape sequence only its first
// byte is an (empty) control sequence and what follows is text; a sequence that the end of the
// text cuts off is ignored whole; a byte that cannot be a character is raw.
#include "services/ccs/engine.h"

#include <glib.h>

#include <array>
#include <bit>
#include <cstring>

namespace ccs
{
namespace
{

constexpr unsigned char kEsc = 0x1B;
constexpr unsigned char kSo = 0x0E;
constexpr unsigned char kSi = 0x0F;
constexpr unsigned char kSs2 = 0x8E;
constexpr unsigned char kSs3 = 0x8F;
constexpr unsigned char kCsi = 0x9B;

// A base unit takes no more marks than this, so that a run of marks costs linear time.
constexpr size_t kMostMarks = 4;

constexpr Unit kEnd = {CS_SEG_END, 0};

unsigned char Byte(const char *at) { return static_cast<unsigned char>(*at); }
bool InRange(unsigned char byte, unsigned char first, unsigned char last)
{
    return byte >= first && byte <= last;
}
bool IsControl(unsigned char byte) { return (byte & 0x60) == 0; }
bool IsGraphic94(unsigned char byte) { return InRange(byte & 0x7F, 0x21, 0x7E); }
bool IsMark(unsigned char byte) { return InRange(byte, 0xC1, 0xCF); }

// The byte at an offset, 0 where the text ends before it: whoever asks stops at 0.
unsigned char ByteWithin(const char *at, size_t offset, size_t avail)
{
    return offset < avail ? Byte(at + offset) : 0;
}

// ---- Sequences -----------------------------------------------------------------------------

enum class Form { complete, malformed, cutOff };

struct Sequence {
    Form form;
    size_t length; // of a malformed one, what is bad of it; of one cut off, what there is
};

// What a length service answers: a sequence that is cut off has no length.
size_t LengthOf(const Sequence &sequence)
{
    return sequence.form == Form::cutOff ? 0 : sequence.length;
}

size_t SkipRange(const char *at, size_t offset, size_t avail, unsigned char first,
                 unsigned char last)
{
    while (InRange(ByteWithin(at, offset, avail), first, last))
        ++offset;
    return offset;
}

// Ends a sequence whose final byte, from `firstFinal` to 0x7E, must stand at `offset`.
Sequence Finish(const char *at, size_t offset, size_t avail, unsigned char firstFinal)
{
    const unsigned char byte = ByteWithin(at, offset, avail);
    if (byte == 0)
        return {Form::cutOff, offset};
    if (!InRange(byte, firstFinal, 0x7E))
        return {Form::malformed, 1};
    return {Form::complete, offset + 1};
}

// A control sequence, whose parameters begin at `offset`.
Sequence ControlSequence(const char *at, size_t offset, size_t avail)
{
    offset = SkipRange(at, offset, avail, 0x30, 0x3F);
    offset = SkipRange(at, offset, avail, 0x20, 0x2F);
    return Finish(at, offset, avail, 0x40);
}

Sequence EscapeSequence(const char *at, size_t avail)
{
    if (ByteWithin(at, 1, avail) == '[')
        return ControlSequence(at, 2, avail);
    return Finish(at, SkipRange(at, 1, avail, 0x20, 0x2F), avail, 0x30);
}

// The single shift at `at`: its bytes and the element that it shifts to; 0 bytes for none.
struct SingleShift {
    size_t length;
    uint8_t element;
};

SingleShift SingleShiftAt(const char *at, size_t avail, bool escapes)
{
    const unsigned char byte = Byte(at);
    if (byte == kSs2 || byte == kSs3)
        return {1, static_cast<uint8_t>(byte - kSs2 + 2)};
    const unsigned char second = byte == kEsc && escapes ? ByteWithin(at, 1, avail) : 0;
    if (second == 'N' || second == 'O')
        return {2, static_cast<uint8_t>(second - 'N' + 2)};
    return {0, 0};
}

// ---- Characters ----------------------------------------------------------------------------

// The marks and the base of a base unit.  The base of a right half's mark may stand in either half.
Sequence BaseUnit(const char *at, size_t avail)
{
    size_t marks = 1;
    while (marks < kMostMarks && IsMark(ByteWithin(at, marks, avail)))
        ++marks;
    const unsigned char base = ByteWithin(at, marks, avail);
    if (base == 0)
        return {Form::cutOff, marks};
    const bool isBase = InRange(base, 0x20, 0x7E) || (InRange(base, 0xA1, 0xFE) && !IsMark(base));
    return isBase ? Sequence{Form::complete, marks + 1} : Sequence{Form::malformed, 1};
}

Sequence Utf8Character(const char *at, size_t avail)
{
    constexpr auto incomplete = static_cast<gunichar>(-2);
    const size_t length = static_cast<size_t>(g_utf8_skip[Byte(at)]);
    const size_t within = length < avail ? length : avail;
    const gunichar c = g_utf8_get_char_validated(at, static_cast<gssize>(within));
    if (c == incomplete)
        return {Form::cutOff, 1};
    return c == static_cast<gunichar>(-1) ? Sequence{Form::malformed, 1}
                                          : Sequence{Form::complete, length};
}

// The character of `set` at `at`, a byte above 0x20 that is no control.
Sequence Character(const SetRow &set, const char *at, size_t avail)
{
    if (set.units == Units::utf8)
        return Utf8Character(at, avail);
    if (set.units == Units::marked && IsMark(Byte(at)))
        return BaseUnit(at, avail);
    if (set.bytes == 1)
        return {Form::complete, 1};
    const unsigned char trail = ByteWithin(at, 1, avail);
    if (trail == 0)
        return {Form::cutOff, 1};
    const bool sameHalf = ((trail ^ Byte(at)) & 0x80) == 0;
    return IsGraphic94(trail) && sameHalf ? Sequence{Form::complete, 2}
                                          : Sequence{Form::malformed, 1};
}

// The character at `at`, a graphic byte of `half`, as a unit.  A mark needs its base in the left
// half, so where another set stands there (`alone`) it has none.
Unit CharacterUnit(const Half &half, bool alone, const char *at, size_t avail)
{
    const unsigned char byte = Byte(at);
    if (half.set == nullptr || (!half.is96 && !IsGraphic94(byte)))
        return {CS_SEG_RAW, 1};
    const Sequence character = Character(*half.set, at, avail);
    if (character.form != Form::complete)
        return {CS_SEG_RAW, 1};
    const unsigned char last = Byte(at + character.length - 1);
    if (alone && half.set->units == Units::marked && last < 0x80)
        return {CS_SEG_RAW, 1};
    return {half.kind, character.length};
}

bool IsAlone(const View &view) { return view.left.kind != view.right.kind; }

bool IsMarked(const Half &half) { return half.set != nullptr && half.set->units == Units::marked; }

// ---- Views ---------------------------------------------------------------------------------

constexpr Half kRawHalf = {nullptr, CS_SEG_RAW, 1, true};

Half HalfOf(const Designation &held, uint16_t SetRow::*side)
{
    const SetRow *set = held.set;
    if (set == nullptr || set->*side == 0)
        return kRawHalf;
    return {set, set->*side, set->bytes, set->graphic == Graphic::set96};
}

Half HalfOf(const State &state, uint8_t element, uint16_t SetRow::*side)
{
    return element == kNowhere ? kRawHalf : HalfOf(state.g[element], side);
}

bool Holds(const Designation &held) { return held.final != 0 || held.set != nullptr; }

// ---- Units of a view -----------------------------------------------------------------------

// The character that a single shift shifts stands in the half of its own byte, and the two are one
// unit.  A shift to nothing, or before what is no character, is an empty control function.
Unit ShiftedUnit(const State &state, SingleShift shift, const char *at, size_t avail)
{
    const Unit empty = {CS_SEG_IGNORE, shift.length};
    const unsigned char byte = ByteWithin(at, shift.length, avail);
    const Designation &held = state.g[shift.element];
    if (IsControl(byte) || !Holds(held))
        return empty;
    const Half half = HalfOf(held, byte < 0x80 ? &SetRow::left : &SetRow::right);
    if (half.set == nullptr)
        return {CS_SEG_RAW, shift.length + 1};
    const Unit character = CharacterUnit(half, true, at + shift.length, avail - shift.length);
    if (character.kind == CS_SEG_RAW)
        return empty;
    return {character.kind, shift.length + character.length};
}

// The unit at a byte that may begin an escape or shift sequence; length 0 when it begins none.
Unit SequenceUnit(const State &state, const View &view, const char *at, size_t avail)
{
    const unsigned char byte = Byte(at);
    if (byte >= 0x80 && (!view.rightUsed || view.utf8))
        return {CS_SEG_RAW, 0};
    const SingleShift shift = SingleShiftAt(at, avail, view.escapes);
    if (shift.length != 0 && (byte == kEsc || Holds(state.g[shift.element])))
        return ShiftedUnit(state, shift, at, avail);
    if (!view.escapes)
        return {CS_SEG_RAW, 0};
    if (byte == kEsc)
        return {CS_SEG_IGNORE, EscapeSequence(at, avail).length};
    if (byte == kCsi)
        return {CS_SEG_IGNORE, ControlSequence(at, 1, avail).length};
    return {CS_SEG_IGNORE, byte == kSo || byte == kSi ? 1U : 0U};
}

// ---- Byte classes --------------------------------------------------------------------------

// Of every byte, what its meaning depends on.  A NUL is of no class, so every run stops there.
enum : uint8_t {
    kLow = 0x01,       // C0 control, space or DEL
    kShiftC0 = 0x02,   // ESC, SO, SI
    kLeft94 = 0x04,    // graphic character of the left half
    kC1 = 0x08,        // C1 control
    kShiftC1 = 0x10,   // SS2, SS3, CSI
    kRight94 = 0x20,   // graphic character of the right half
    kRightMark = 0x40, // ... where a marked set has a mark
    kRightEdge = 0x80, // graphic character of a 96-set alone
};

constexpr auto kClasses = [] {
    std::array<uint8_t, 256> classes{};
    for (size_t byte = 1; byte < 256; ++byte) {
        const size_t low = byte & 0x7F;
        const bool isRight = byte >= 0x80;
        if (low < 0x20)
            classes[byte] = isRight ? kC1 : kLow;
        else if (low == 0x20 || low == 0x7F)
            classes[byte] = isRight ? kRightEdge : kLow;
        else
            classes[byte] = isRight ? kRight94 : kLeft94;
    }
    classes[kEsc] = classes[kSo] = classes[kSi] = kShiftC0;
    classes[kSs2] = classes[kSs3] = classes[kCsi] = kShiftC1;
    for (size_t byte = 0xC1; byte <= 0xCF; ++byte)
        classes[byte] = kRightMark;
    return classes;
}();

constexpr uint8_t kRightPair = kRight94 | kRightMark;

// How the bytes of a run of one kind are passed over: the classes whose bytes are units by
// themselves, those whose bytes begin units of two, and the classes of the second byte behind a
// first one of the left and of the right half.  What neither settles, UnitAt decides.
struct RunClasses {
    uint8_t single;
    uint8_t leads;
    uint8_t leftTrails;
    uint8_t rightTrails;
};

uint8_t LeftSingles(const View &view)
{
    unsigned int classes = kLow;
    if (!view.escapes)
        classes |= kShiftC0;
    if (view.rightUsed && !view.utf8)
        classes |= kC1;
    if (view.left.bytes == 1)
        classes |= kLeft94;
    return static_cast<uint8_t>(classes);
}

uint8_t RightSingles(const View &view)
{
    if (view.utf8 || view.right.bytes != 1)
        return 0;
    unsigned int classes = kRight94;
    if (!IsMarked(view.right))
        classes |= kRightMark;
    if (view.right.is96)
        classes |= kRightEdge;
    if (!view.rightUsed)
        classes |= kC1 | kShiftC1;
    return static_cast<uint8_t>(classes);
}

RunClasses ClassesOf(const View &view, uint16_t kind)
{
    RunClasses classes = {0, 0, kLeft94, kRightPair};
    if (view.left.kind == kind) {
        classes.single |= LeftSingles(view);
        if (view.left.bytes == 2)
            classes.leads |= kLeft94;
    }
    if (view.right.kind == kind) {
        classes.single |= RightSingles(view);
        if (view.right.bytes == 2) {
            classes.leads |= kRightPair;
        } else if (IsMarked(view.right) && !IsAlone(view)) {
            classes.leads |= kRightMark;
            classes.rightTrails = kLeft94;
        }
    }
    return classes;
}

uint8_t ClassAt(const char *at) { return kClasses[Byte(at)]; }

bool IsPair(const RunClasses &classes, const char *at, size_t avail)
{
    const uint8_t lead = ClassAt(at) & classes.leads;
    if (lead == 0 || avail < 2)
        return false;
    const uint8_t trails = lead == kLeft94 ? classes.leftTrails : classes.rightTrails;
    return (ClassAt(at + 1) & trails) != 0;
}

// How a run is passed over eight bytes at a time: in `half` stands the top bit of the bytes that
// belong to it, and `edges` are the two bytes of that half that do not.
struct WordRule {
    bool usable;
    bool bothHalves;
    bool pairs;
    bool hasEdges;
    uint64_t half;
    uint64_t edges[2];
};

constexpr uint64_t kOnes = 0x0101010101010101;
constexpr uint64_t kTops = kOnes << 7;

WordRule WordRuleOf(RunClasses classes)
{
    const bool pairs = (classes.leads & (kLeft94 | kRight94)) != 0;
    const unsigned int graphic = pairs ? classes.leads : classes.single;
    const bool left = (graphic & kLeft94) != 0;
    const bool right = (graphic & kRightPair) == kRightPair;
    const bool hasEdges = pairs || (right && (classes.single & kRightEdge) == 0);
    const uint64_t half = right ? kTops : 0;
    return {pairs ? left != right : left || right,     left && right, pairs, hasEdges, half,
            {half | kOnes * 0x20, half | kOnes * 0x7F}};
}

// The first bytes at `at`, eight or as many as there are, with zeros behind them; the first in memory
// is the lowest of the word.
uint64_t LoadWord(const char *at, size_t avail)
{
    if (avail >= 8) {
        uint64_t word;
        std::memcpy(&word, at, 8);
        return word;
    }
    if (avail >= 4) { // two halves that overlap
        uint32_t low;
        uint32_t high;
        std::memcpy(&low, at, 4);
        std::memcpy(&high, at + avail - 4, 4);
        return low | static_cast<uint64_t>(high) << (avail - 4) * 8;
    }
    uint64_t word = 0;
    for (size_t i = 0; i < avail; ++i)
        word |= static_cast<uint64_t>(Byte(at + i)) << i * 8;
    return word;
}

// How many of the bytes of a word, from its first on, need no closer look: no controls and nothing
// that is not of the run.  Whole characters only.
size_t PlainBytes(const WordRule &rule, uint64_t word)
{
    // Sets the top bit of every zero byte; above the lowest of these it may err.
    const auto zeros = [](uint64_t bytes) { return (bytes - kOnes) & ~bytes & kTops; };
    const uint64_t printable = word << 1 | word << 2; // in the top bit: bit 5 or 6
    uint64_t others = ~printable & kTops;
    if (!rule.bothHalves)
        others |= (word ^ rule.half) & kTops;
    if (rule.hasEdges)
        others |= zeros(word ^ rule.edges[0]) | zeros(word ^ rule.edges[1]);
    if (others == 0)
        return sizeof word;
    const auto plain = static_cast<size_t>(std::countr_zero(others)) / 8;
    return rule.pairs ? plain & ~size_t{1} : plain;
}

// The byte switches sets, by itself or with what follows, so that every run ends before it.
bool EndsRuns(const View &view, const char *at, size_t avail)
{
    return view.escapes && ClassAt(at) == kShiftC0 && SingleShiftAt(at, avail, true).length == 0;
}

size_t RunLength(const State &state, const View &view, uint16_t kind, const char *at, size_t avail)
{
    const RunClasses classes = ClassesOf(view, kind);
    const WordRule words = WordRuleOf(classes);
    size_t length = 0;
    while (length < avail) {
        if (words.usable) {
            const size_t plain = PlainBytes(words, LoadWord(at + length, avail - length));
            length += plain;
            if (plain == 8 || length == avail)
                continue;
        }
        const char *here = at + length;
        if ((ClassAt(here) & classes.single) != 0) {
            ++length;
        } else if (IsPair(classes, here, avail - length)) {
            length += 2;
        } else if (EndsRuns(view, here, avail - length)) {
            break;
        } else {
            const Unit unit = UnitAt(state, view, here, avail - length);
            if (unit.kind != kind)
                break;
            length += unit.length;
        }
    }
    return length;
}

// ---- Designations --------------------------------------------------------------------------

constexpr char k94Selectors[] = "()*+";
constexpr char k96Selectors[] = ",-./"; // the first is not to be used

// The element that an intermediate byte selects, and whether for a 96-set; -1 for none.
int ElementOf(char selector, bool *is96)
{
    *is96 = InRange(static_cast<unsigned char>(selector), ',', '/');
    if (*is96)
        return selector == ',' ? -1 : selector - ',';
    return InRange(static_cast<unsigned char>(selector), '(', '+') ? selector - '(' : -1;
}

// ESC I F, ESC I I F and ESC $ ...: a graphic set for one of G0 to G3.  Anything else is without
// effect on how text is read.
void Designate(State *state, const char *at, size_t length)
{
    const bool manyBytes = at[1] == '$';
    size_t offset = manyBytes ? 2 : 1;
    bool is96 = false;
    int element = 0; // ESC $ @, ESC $ A and ESC $ B go to G0 without being told
    if (!manyBytes || length > 3)
        element = ElementOf(at[offset++], &is96);
    if (element < 0)
        return;
    const size_t extra = length - 1 - offset; // bytes between the selector and the final byte
    const Graphic graphic = manyBytes ? (is96 ? Graphic::set96n : Graphic::set94n)
                                      : (is96 ? Graphic::set96 : Graphic::set94);
    const char intermediate = extra != 0 ? at[offset] : '\0';
    const char final = at[length - 1];
    state->g[element] = {FindGraphicSet(graphic, intermediate, final), graphic, intermediate,
                         final};
}

void SwitchCoding(State *state, const char *at, size_t length)
{
    const char final = at[length - 1];
    state->codingFinal = final;
    state->coding = length != 3    ? Coding::unknown
                    : final == '@' ? Coding::iso2022
                    : final == 'G' ? Coding::utf8
                                   : Coding::unknown;
}

void LockingShift(State *state, char final)
{
    switch (final) {
    case 'n':
        state->left = 2;
        break;
    case 'o':
        state->left = 3;
        break;
    case '~':
        state->right = 1;
        break;
    case '}':
        state->right = 2;
        break;
    case '|':
        state->right = 3;
        break;
    default:
        break;
    }
}

// ---- Escapes for a state -------------------------------------------------------------------

bool SameDesignation(const Designation &a, const Designation &b)
{
    return a.graphic == b.graphic && a.intermediate == b.intermediate && a.final == b.final;
}

size_t Append(char *out, size_t length, const char *text)
{
    const size_t more = std::strlen(text);
    std::memcpy(out + length, text, more);
    return length + more;
}

// Writes the sequence that designates a set to G0..G3 (`element`); returns its length.
size_t DesignatingEscape(const Designation &designation, int element, char *out)
{
    const Graphic graphic = designation.graphic;
    const bool is96 = graphic == Graphic::set96 || graphic == Graphic::set96n;
    const bool manyBytes = graphic == Graphic::set94n || graphic == Graphic::set96n;
    const auto final = static_cast<unsigned char>(designation.final);
    const bool isShort = graphic == Graphic::set94n && element == 0 && InRange(final, '@', 'B');
    size_t length = 0;
    out[length++] = static_cast<char>(kEsc);
    if (manyBytes)
        out[length++] = '$';
    if (!isShort)
        out[length++] = (is96 ? k96Selectors : k94Selectors)[element];
    if (designation.intermediate != 0)
        out[length++] = designation.intermediate;
    out[length++] = designation.final;
    return length;
}

constexpr const char *kLeftShifts[] = {"\x0F", "\x0E", "\x1Bn", "\x1Bo"};
constexpr const char *kRightShifts[] = {"", "\x1B~", "\x1B}", "\x1B|"};

} // namespace

View ViewOf(const State &state, bool escapes)
{
    if (state.coding == Coding::utf8) {
        const SetRow *utf8 = FindSet(kUtf8);
        const Half half = {utf8, kUtf8, 1, true};
        return {half, half, true, true, escapes};
    }
    if (state.coding == Coding::unknown)
        return {kRawHalf, kRawHalf, false, false, escapes};
    Half left = HalfOf(state, state.left, &SetRow::left);
    const Half right = HalfOf(state, state.right, &SetRow::right);
    const bool partners =
        left.set != nullptr && right.set != nullptr && right.set->partner == left.set->number;
    if (partners)
        left.kind = right.kind;
    const bool rightUsed = state.right != kNowhere && Holds(state.g[state.right]);
    return {left, right, rightUsed, false, escapes};
}

Unit UnitAt(const State &state, const View &view, const char *at, size_t avail)
{
    const unsigned char byte = ByteWithin(at, 0, avail);
    if (byte == 0)
        return kEnd;
    if ((kClasses[byte] & (kShiftC0 | kShiftC1)) != 0) {
        const Unit sequence = SequenceUnit(state, view, at, avail);
        if (sequence.length != 0)
            return sequence;
    }
    if (view.utf8)
        return CharacterUnit(view.left, false, at, avail);
    if (IsControl(byte) && byte >= 0x80 && !view.rightUsed)
        return {CS_SEG_RAW, 1};
    if (IsControl(byte) || byte == 0x20 || byte == 0x7F)
        return {view.left.kind, 1};
    return CharacterUnit(byte < 0x80 ? view.left : view.right, IsAlone(view), at, avail);
}

void Apply(State *state, const char *at, size_t length)
{
    if (Byte(at) == kSo)
        state->left = 1;
    else if (Byte(at) == kSi)
        state->left = 0;
    else if (Byte(at) != kEsc || EscapeSequence(at, length).form != Form::complete)
        return;
    else if (length == 2)
        LockingShift(state, at[1]);
    else if (at[1] == '%')
        SwitchCoding(state, at, length);
    else if (at[1] != '[')
        Designate(state, at, length);
}

State InitialState(const SetRow &set)
{
    State state = {};
    state.left = set.start.left;
    state.right = set.start.right;
    state.coding = set.units == Units::utf8 ? Coding::utf8 : Coding::iso2022;
    state.codingFinal = set.units == Units::utf8 ? 'G' : '@';
    for (int element = 0; element < 4; ++element)
        if (const SetRow *held = FindSet(set.start.g[element]); held != nullptr)
            state.g[element] = {held, held->graphic, '\0', held->final};
    return state;
}

void Begin(Walk *walk, const CSDescriptor &cs)
{
    walk->set = FindSet(cs.csNum);
    walk->plain = cs.escMode == 0 && walk->set != nullptr && (walk->set->flags & CS_FLAG_BYTE) != 0;
    walk->state = walk->set != nullptr ? InitialState(*walk->set) : State{};
    walk->view = ViewOf(walk->state, cs.escMode != 0);
}

Unit NextSegment(Walk *walk, const char *at, size_t avail)
{
    if (walk->plain) {
        const size_t length = strnlen(at, avail);
        return length == 0 ? kEnd : Unit{walk->set->number, length};
    }
    const Unit first = UnitAt(walk->state, walk->view, at, avail);
    if (first.kind == CS_SEG_END)
        return first;
    if (first.kind == CS_SEG_IGNORE) {
        Apply(&walk->state, at, first.length);
        walk->view = ViewOf(walk->state, walk->view.escapes);
        return first;
    }
    return {first.kind, first.length + RunLength(walk->state, walk->view, first.kind,
                                                 at + first.length, avail - first.length)};
}

size_t CharacterLength(const SetRow *set, const char *at, size_t avail)
{
    if (ByteWithin(at, 0, avail) == 0)
        return 0;
    if (set == nullptr)
        return 1;
    return LengthOf(Character(*set, at, avail));
}

size_t ControlLength(const SetRow *set, const char *at, size_t avail)
{
    const unsigned char byte = ByteWithin(at, 0, avail);
    if (byte == 0)
        return 0;
    const SingleShift shift = SingleShiftAt(at, avail, true);
    if (shift.length != 0) {
        const size_t after = avail - shift.length;
        const size_t character = CharacterLength(set, at + shift.length, after);
        return character != 0 ? shift.length : 0;
    }
    const Sequence sequence = byte == kEsc   ? EscapeSequence(at, avail)
                              : byte == kCsi ? ControlSequence(at, 1, avail)
                                             : Sequence{Form::complete, 1};
    return LengthOf(sequence);
}

AnyUnit AnyUnitAt(const SetRow *set, const char *at, size_t avail)
{
    const unsigned char byte = ByteWithin(at, 0, avail);
    if (byte == 0)
        return {0, false};
    if (byte == 0x20 || byte == 0x7F)
        return {1, true};
    const size_t length =
        IsControl(byte) ? ControlLength(set, at, avail) : CharacterLength(set, at, avail);
    if (length == 0)
        return {1, true};
    return {length, !IsControl(byte) || SingleShiftAt(at, avail, true).length == 0};
}

size_t RestoringEscapes(const State &from, const State &to, char *out)
{
    size_t length = 0;
    const bool sameCoding = from.codingFinal == to.codingFinal;
    if (!sameCoding && from.coding != Coding::iso2022)
        length = Append(out, length, "\x1B%@");
    for (int element = 0; element < 4; ++element) {
        const Designation &wanted = to.g[element];
        if (wanted.final != 0 && !SameDesignation(from.g[element], wanted))
            length += DesignatingEscape(wanted, element, out + length);
    }
    if (to.left != from.left && to.left != kNowhere)
        length = Append(out, length, kLeftShifts[to.left]);
    if (to.right != from.right && to.right != kNowhere)
        length = Append(out, length, kRightShifts[to.right]);
    if (!sameCoding && to.coding != Coding::iso2022) {
        length = Append(out, length, "\x1B%");
        out[length++] = to.codingFinal;
    }
    return length;
}

} // namespace ccs
