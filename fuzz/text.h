// SPDX-License-Identifier: Apache-2.0
//
// What the fuzzers of text share.  A program defines Try, and includes this once.
#ifndef FUZZ_TEXT_H
#define FUZZ_TEXT_H

#include "fuzz/case_table.h"
#include "tests/support/test.h"

#include <dlfcn.h>
#include <glib.h>

// Four bytes choose the sets, what is done and a limit.  A text follows, a NUL, and another text,
// which is the first once more where there is no NUL.
struct Input {
    CSDescriptor cs, cs2;
    unsigned int choice, limit;
    std::string first, second;
    uint32_t flags;
    bool utf8, plain, wellFormed; // the first text
};

// Demands what must hold, and returns what must be the same whichever way texts are read.
std::string Try(const Input &input, const char *first, const char *second);

inline bool IsSame(const Kinds::value_type &a, const Kinds::value_type &b)
{
    const CSDescriptor cs = {a.first, 0}, cs2 = {b.first, 0};
    const uint32_t flags = ccs_GetCSFlags(&cs), flags2 = ccs_GetCSFlags(&cs2);
    return a.second == b.second &&
           (a.first == b.first || ((flags & CS_FLAG_ASCII) && (flags2 & CS_FLAG_ASCII_SUPERSET)) ||
            ((flags2 & CS_FLAG_ASCII) && (flags & CS_FLAG_ASCII_SUPERSET)));
}

// One of four rooms before a page that must not be touched, mapped once.
inline char *Room(size_t number, size_t size)
{
    static const Guarded rooms[] = {Guarded(4096), Guarded(4096), Guarded(4096), Guarded(4096)};
    return rooms[number].data() + 4096 - size;
}

inline bool ownWalks;

extern "C" int ccs_BeginWalk(CSWalk *walk, const CSDescriptor *cs, const char *text, int length,
                             const CSReaders *readers)
{
    static const auto begin =
        reinterpret_cast<decltype(&ccs_BeginWalk)>(dlsym(RTLD_NEXT, "ccs_BeginWalk"));
    return ownWalks ? begin(walk, cs, text, length, readers) : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const char *bytes, size_t size)
{
    static const int copied =
        std::system(("cp -r " STR_DATA_DIR "/toupper " + kHome.path()).c_str());
    Demand(copied == 0);
    if (size < 4)
        return 0;
    const std::string all(bytes + 4, size - 4), first = all.c_str();
    ccs_SetInfo set, set2;
    ccs_GetSetInfo(static_cast<uint8_t>(bytes[0]) % ccs_GetSetCount(), &set);
    ccs_GetSetInfo(static_cast<uint8_t>(bytes[1]) % ccs_GetSetCount(), &set2);
    const auto escapes = static_cast<uint16_t>(bytes[2] & 1);
    const Input input = {{set.number, escapes},
                         {set2.number, escapes},
                         static_cast<uint8_t>(bytes[2]) / 2U,
                         static_cast<uint8_t>(bytes[3]),
                         first,
                         all.size() == first.size() ? first : all.c_str() + first.size() + 1,
                         set.flags,
                         set.name == "UTF8"s,
                         (set.flags & (CS_FLAG_BYTE | CS_FLAG_T61)) == CS_FLAG_BYTE,
                         g_utf8_validate(first.c_str(), -1, nullptr) != 0};
    const char *const one = std::strcpy(Room(0, first.size() + 1), first.c_str());
    const char *const two = std::strcpy(Room(1, input.second.size() + 1), input.second.c_str());
    ownWalks = false;
    const std::string read = Try(input, one, two);
    ownWalks = true;
    Demand(Try(input, one, two) == read);
    return 0;
}

#endif
