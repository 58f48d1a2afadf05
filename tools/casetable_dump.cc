// SPDX-License-Identifier: Apache-2.0
//
// strtool casetable dump: reads the bytes of a compiled file itself, so that it can also show one
// that the library refuses.
#include "tools/casetable.h"
#include "tools/show.h"
#include "tools/stream.h"

#include <str/casetable.h>

#include <glib.h>

#include <algorithm>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace strtool
{
namespace
{

using ByteSet = std::bitset<256>;

uint8_t ByteAt(std::string_view bytes, size_t at) { return static_cast<uint8_t>(bytes[at]); }

int32_t IntAt(std::string_view bytes, size_t at)
{
    int32_t value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return GINT32_FROM_LE(value);
}

std::string Visible(uint8_t byte)
{
    const char c = static_cast<char>(byte);
    return c == ' ' ? "\\x20" : VisibleBytes({&c, 1});
}

std::string Visible(const std::string &bytes)
{
    std::string visible;
    for (const char byte : bytes)
        visible += Visible(static_cast<uint8_t>(byte));
    return visible;
}

// "a-z \xC1-\xCF".
std::string Visible(const ByteSet &set)
{
    std::string visible;
    for (size_t first = 0; first < set.size(); ++first) {
        if (!set[first])
            continue;
        size_t last = first;
        while (last + 1 < set.size() && set[last + 1])
            ++last;
        visible += (visible.empty() ? "" : " ") + Visible(static_cast<uint8_t>(first));
        if (last > first)
            visible += "-" + Visible(static_cast<uint8_t>(last));
        first = last;
    }
    return visible;
}

// A byte and its upper case: an entry of the map, or of a list.
struct Rule {
    uint8_t byte;
    std::string upper;
};

bool Follows(const Rule &rule, const Rule &before)
{
    const std::string &upper = rule.upper, &upperBefore = before.upper;
    return rule.byte == before.byte + 1 && upper.size() == upperBefore.size() &&
           upper.compare(0, upper.size() - 1, upperBefore, 0, upper.size() - 1) == 0 &&
           static_cast<uint8_t>(upper.back()) == static_cast<uint8_t>(upperBefore.back()) + 1;
}

struct Lead {
    uint8_t byte;
    std::vector<Rule> trails;
};

class Dump
{
  public:
    explicit Dump(std::string_view bytes) : file(bytes) {}

    // Shows the whole file.  Returns false when something is odd.
    bool Show(const std::string &name)
    {
        Line(0, name + ": " + std::to_string(file.size()) + " bytes");
        if (Header() && Record() && at < file.size())
            Odd(std::to_string(file.size() - at) + " bytes follow the end");
        for (const std::string &what : oddities)
            Line(1, "odd: " + what);
        Put(text);
        return oddities.empty();
    }

  private:
    void Line(size_t depth, const std::string &line)
    {
        text.append(2 * depth, ' ').append(line).append("\n");
    }
    void Odd(const std::string &what) { oddities.push_back(what); }

    // The next `size` bytes, or those that are left.
    std::string_view Take(uint64_t size, const std::string &what)
    {
        const std::string_view left = file.substr(at);
        const std::string_view taken =
            left.substr(0, static_cast<size_t>(std::min<uint64_t>(size, left.size())));
        at += taken.size();
        if (taken.size() < size && isWhole) {
            Odd("cut short: " + what + ", " + std::to_string(taken.size()) + " of " +
                std::to_string(size) + " bytes");
            isWhole = false;
        }
        return taken;
    }

    void ExpectZero(std::string_view bytes, const std::string &what)
    {
        if (bytes.find_first_not_of('\0') != bytes.npos)
            Odd("reserved bytes of " + what + " are not 0");
    }

    bool Header()
    {
        const std::string_view header = Take(sizeof(CaseTableHeader), "the header");
        if (!isWhole)
            return false;
        const int32_t version = IntAt(header, offsetof(CaseTableHeader, version));
        if (IntAt(header, offsetof(CaseTableHeader, magic)) != CASE_TABLE_MAGIC) {
            Odd("this is not a compiled case table, which begins differently");
            return false;
        }
        Line(1, "version " + std::to_string(version));
        if (version != CASE_TABLE_VERSION)
            Odd("the version is not " + std::to_string(CASE_TABLE_VERSION));
        ExpectZero(header.substr(offsetof(CaseTableHeader, zero)), "the header");
        return true;
    }

    // Returns whether the file was read to its proper end.
    bool Record()
    {
        const std::string_view record = Take(sizeof(CaseTableRecord), "the record");
        if (!isWhole)
            return false;
        Name(record.substr(0, sizeof CaseTableRecord::CharSetName));
        ExpectZero(
            record.substr(offsetof(CaseTableRecord, reserved), sizeof CaseTableRecord::reserved),
            "the record");
        const std::string_view map = Take(CASE_TABLE_MAP_SIZE, "the byte map");
        if (!isWhole)
            return false;
        Map(map);
        const std::vector<Rule> expansions =
            Expansions(Count(record, offsetof(CaseTableRecord, MaxExpansions), "the expansions"));
        const std::vector<Lead> leads =
            Leads(Count(record, offsetof(CaseTableRecord, MaxLeads), "the lead bytes"));
        if (isWhole)
            Compare(map, expansions, leads);
        return isWhole;
    }

    void Name(std::string_view field)
    {
        const size_t length = field.find('\0');
        const std::string_view name = field.substr(0, length);
        Line(1, "name " + VisibleBytes(name));
        if (length == field.npos)
            Odd("the name is not terminated");
        else
            ExpectZero(field.substr(length), "the name");
        if (name.empty() || !std::all_of(name.begin(), name.end(), IsGraphic))
            Odd("the name is not printable");
    }
    static bool IsGraphic(char c) { return g_ascii_isgraph(c); }

    void Map(std::string_view map)
    {
        std::vector<Rule> changes;
        ByteSet byRules;
        for (size_t byte = 1; byte < map.size(); ++byte) {
            const uint8_t upper = ByteAt(map, byte);
            byRules[byte] = upper == 0;
            if (upper != 0 && upper != byte)
                changes.push_back({static_cast<uint8_t>(byte), {static_cast<char>(upper)}});
        }
        Line(1, "byte map: " + std::to_string(changes.size()) + " bytes change");
        Changes(changes, 2);
        if (byRules.any())
            Line(2, Visible(byRules) + " by rules");
    }

    struct Counted {
        uint64_t count; // as the file has it, even if it is too large
        std::string text;
    };

    // The count after the capacity at `offset`, in the same record or lead entry.
    Counted Count(std::string_view bytes, size_t offset, const std::string &what)
    {
        const int32_t capacity = IntAt(bytes, offset);
        const int32_t count = IntAt(bytes, offset + sizeof capacity);
        if (count < 0 || count > CASE_TABLE_MOST_ENTRIES || count > capacity)
            Odd(what + ": " + std::to_string(count) + " in use with room for " +
                std::to_string(capacity));
        return {static_cast<uint64_t>(std::max(count, 0)),
                std::to_string(count) + ", room for " + std::to_string(capacity)};
    }

    // The next `count` rules, as far as the file has them.
    std::vector<Rule> Rules(uint64_t count, const std::string &what)
    {
        const std::string_view bytes = Take(count * CASE_TABLE_RULE_SIZE, what);
        std::vector<Rule> rules;
        ByteSet seen, again;
        for (size_t i = 0; i + CASE_TABLE_RULE_SIZE <= bytes.size(); i += CASE_TABLE_RULE_SIZE) {
            const uint8_t byte = ByteAt(bytes, i);
            rules.push_back({byte, std::string(bytes.substr(i + 1, CASE_TABLE_RULE_SIZE - 1))});
            again[byte] = again[byte] || seen[byte];
            seen.set(byte);
        }
        if (again.any())
            Odd(what + ": more than one for " + Visible(again));
        return rules;
    }

    std::vector<Rule> Expansions(const Counted &counted)
    {
        Line(1, "expansions: " + counted.text);
        std::vector<Rule> rules = Rules(counted.count, "the expansions");
        Changes(rules, 2);
        return rules;
    }

    // A line for each run of changes.
    void Changes(const std::vector<Rule> &rules, size_t depth)
    {
        for (size_t first = 0, last; first < rules.size(); first = last + 1) {
            last = first;
            while (last + 1 < rules.size() && Follows(rules[last + 1], rules[last]))
                ++last;
            const auto range = [&](const std::string &from, const std::string &to) {
                return first == last ? from : std::string(from).append("-").append(to);
            };
            Line(depth, range(Visible(rules[first].byte), Visible(rules[last].byte)) + " to " +
                            range(Visible(rules[first].upper), Visible(rules[last].upper)));
        }
    }

    std::vector<Lead> Leads(const Counted &counted)
    {
        Line(1, "lead bytes: " + counted.text);
        const std::string_view entries = Take(counted.count * sizeof(LeadEntry), "the lead bytes");
        std::vector<Lead> leads;
        size_t unchanged = 0;
        ByteSet seen, again;
        for (size_t i = 0; i + sizeof(LeadEntry) <= entries.size(); i += sizeof(LeadEntry)) {
            const std::string_view entry = entries.substr(i, sizeof(LeadEntry));
            const uint8_t byte = ByteAt(entry, offsetof(LeadEntry, LeadByte));
            const std::string trails = "the trails of " + Visible(byte);
            ExpectZero(entry.substr(offsetof(LeadEntry, reserved), sizeof LeadEntry::reserved),
                       "the lead byte " + Visible(byte));
            const Counted trailCount = Count(entry, offsetof(LeadEntry, MaxTrails), trails);
            leads.push_back({byte, Rules(trailCount.count, trails)});
            unchanged += ShowLead(leads.back(), trailCount.text);
            again[byte] = again[byte] || seen[byte];
            seen.set(byte);
        }
        if (unchanged > 0)
            Line(2, "pairs that stay as they are: " + std::to_string(unchanged));
        if (again.any())
            Odd("the lead bytes: more than one for " + Visible(again));
        return leads;
    }

    // Returns how many of its pairs are their own upper case, and not shown.
    size_t ShowLead(const Lead &lead, const std::string &trailCount)
    {
        std::vector<Rule> changes = lead.trails;
        const size_t unchanged = std::erase_if(changes, [&lead](const Rule &trail) {
            return ByteAt(trail.upper, 0) == lead.byte && ByteAt(trail.upper, 1) == trail.byte;
        });
        for (Rule &change : changes)
            if (change.upper.back() == '\0')
                change.upper.pop_back();
        if (!changes.empty() || lead.trails.empty()) {
            Line(2, Visible(lead.byte) + ": " + trailCount);
            Changes(changes, 3);
        }
        return unchanged;
    }

    // Checks that the byte map, the expansions and the lead bytes agree on each byte.
    void Compare(std::string_view map, const std::vector<Rule> &expansions,
                 const std::vector<Lead> &leads)
    {
        ByteSet expanded, led;
        for (const Rule &rule : expansions)
            expanded.set(rule.byte);
        for (const Lead &lead : leads)
            led.set(lead.byte);
        for (size_t i = 1; i < map.size(); ++i) {
            const std::string byte = Visible(static_cast<uint8_t>(i));
            const bool isMapped = ByteAt(map, i) != 0;
            if (isMapped && (expanded[i] || led[i]))
                Odd("the rules of " + byte + " never apply: the byte map has an entry");
            else if (expanded[i] && led[i])
                Odd("the pairs of " + byte + " never apply: it has an expansion");
            else if (!isMapped && !expanded[i] && !led[i])
                Odd(byte + " has neither an entry in the byte map nor a rule");
        }
    }

    const std::string_view file;
    size_t at = 0;
    bool isWhole = true; // so far
    std::string text;
    std::vector<std::string> oddities;
};

} // namespace

bool DumpTable(const std::filesystem::path &file)
{
    const std::string bytes = ReadFile(file);
    return Dump(bytes).Show(file.string());
}

} // namespace strtool
