// SPDX-License-Identifier: Apache-2.0
//
// Parts of a text: those that fit, and those of a split.
#include "fuzz/text.h"

static bool IsBeginning(const Kinds &part, const Kinds &whole)
{
    return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

static void CheckTruncation(const Input &input, const char *text)
{
    const CSDescriptor *const cs = &input.cs;
    unsigned int n = input.limit, kept = str_truncstrlen(text, n, cs), length = 0;
    const std::string part = input.first.substr(0, kept);
    char *const room = Room(2, n);
    str_truncate(room, text, n, cs, &length);
    Demand(length == kept && kept <= n);
    Demand(part + std::string(n - part.size(), '\0') == std::string(room, n));
    const std::string copied = str_strlcpy(room - 1, text, n + 1, cs);
    Demand(copied == part || (input.utf8 && input.first.starts_with(copied)));
    if (input.plain)
        return;
    Demand(kept == input.first.size() || (n < input.first.size() && kept < input.first.size()));
    Demand(str_truncstrlen(text, n + 1, cs) >= kept);
    Demand(str_truncstrlen(part.c_str(), n, cs) == kept);
    Demand(IsBeginning(KindsOf(*cs, part), KindsOf(*cs, input.first)));
}

// A letter after what is closed is read as at the beginning, and so is what comes before it.
static std::string CheckClosed(const Input &input, const char *text)
{
    char *const room = Room(2, input.limit);
    const unsigned int length = str_truncateclosed(room, text, input.limit, &input.cs);
    const std::string written(room, input.limit), closed = written.substr(0, length);
    Demand(written == closed + std::string(input.limit - length, '\0'));
    Kinds kinds = KindsOf(input.cs, closed);
    Demand(IsBeginning(kinds, KindsOf(input.cs, input.first)) || closed.starts_with(input.first));
    kinds.push_back(KindsOf(input.cs, "N").back());
    Demand(input.plain || KindsOf(input.cs, closed + "N") == kinds);
    return closed;
}

static std::string CheckSplit(const Input &input, const char *text)
{
    const CSDescriptor *const cs = &input.cs;
    const int mode = static_cast<int>(input.choice % 2), limit = static_cast<int>(input.limit);
    char *second = nullptr;
    unsigned int firstLen = 0, secondLen = 0;
    const char *const first = str_DoSplit(text, mode, limit, &second, &firstLen, &secondLen, cs);
    if (first == nullptr)
        return "null";
    const std::string part = first, rest = second == nullptr ? "" : second;
    Demand(str_FindSplitPoint(text, mode, limit, cs) == static_cast<int>(firstLen) ||
           (input.plain && cs->escMode == 0));
    Demand(part == input.first.substr(0, firstLen) && rest.size() == secondLen);
    Demand(second == nullptr ? part == input.first : rest.ends_with(text + firstLen));
    Demand(rest.size() <= input.first.size() - firstLen + 81);
    const Kinds whole = KindsOf(*cs, text), parts = KindsOf(*cs, part), after = KindsOf(*cs, rest);
    Demand(IsBeginning(parts, whole));
    Demand(IsBeginning({after.rbegin(), after.rend()}, {whole.rbegin(), whole.rend()}));
    // A sequence that is not complete may end the first part, and goes on with no other byte.
    const size_t lost = whole.size() - parts.size() - after.size();
    Demand(lost == 0 || lost < part.size() - std::min(part.find_last_of("\x1B\x9B"), part.size()));
    const unsigned int columns = str_dispstrlen(part.c_str(), cs);
    Demand(input.utf8 || columns <= input.limit);
    Demand(lost != 0 || (input.utf8 && cs->escMode != 0) || // there the escapes of the rest count
           columns + str_dispstrlen(rest.c_str(), cs) == str_dispstrlen(text, cs));
    return part + "|" + rest;
}

std::string Try(const Input &input, const char *text, const char *)
{
    CheckTruncation(input, text);
    return CheckClosed(input, text) + "|" + CheckSplit(input, text);
}
