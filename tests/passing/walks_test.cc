// SPDX-License-Identifier: Apache-2.0
//
// Every family gives the same on walks of its own as by the readers.
#include "tests/passing/services.h"
#include "tests/support/casetable.h"

#include <glib.h>

namespace
{

using Walks = CaseTableTest;

std::string Said(const char *text) { return text == nullptr ? "null" : text; }

// What all families say of the texts, with a limit of bytes, columns or characters.
std::vector<std::string> Answers(const std::string &first, const std::string &second, int limit,
                                 const CSDescriptor &cs)
{
    const Guarded a(first), b(second);
    const char *const text = a.c_str(), *const other = b.c_str();
    const auto n = static_cast<unsigned int>(limit);
    std::string room(2 * first.size() + 2 * second.size() + 500, '\0');
    std::vector<std::string> answers;
    const auto add = [&](auto number) { answers.push_back(std::to_string(number)); };
    add(str_dispstrlen(text, &cs));
    add(str_truncstrlen(text, n, &cs));
    add(str_truncateclosed(room.data(), text, n, &cs));
    answers.push_back(room.c_str());
    for (const auto split : {str_SplitByDispLen, str_SplitByDispBytes}) {
        char *rest = nullptr;
        unsigned int length;
        answers.push_back(Said(split(text, limit, &rest, &length, &length, &cs)));
        answers.push_back(Said(rest));
    }
    for (const int caseless : {0, 1}) {
        add(str_DoCompareToEnd(text, other, caseless, &cs, &cs));
        add(str_DoCompareByByteLen(text, other, n, n, caseless, &cs, &cs));
        add(str_DoCompareByCharLen(text, other, n, caseless, &cs, &cs));
        add(str_cmpTextStr(text, other, caseless, &cs, &cs));
    }
    answers.push_back(str_strcat(std::strcpy(room.data(), text), other, &cs));
    answers.push_back(Said(str_strchr(text, 'a', &cs)));
    add(str_USPatternMatch(text, other, &cs));
    int length = 0;
    answers.push_back(Said(str_ToUpper(text, -1, &length, &cs)));
    str_simplesprintf(&cs, room.data(), "%s|%.*s", text, limit, other);
    answers.push_back(room.c_str());
    std::string format = first + second; // with directives in any set and in parts of sequences
    std::replace(format.begin(), format.end(), '%', '$');
    format = format.insert(n % (format.size() + 1), "%.4s") + (n % 2 == 0 ? "%s" : "%1$s") + "%-c";
    PrintfError = 0;
    add(str_simplesprintf(&cs, room.data(), format.c_str(), text, other, text));
    answers.push_back(room.c_str() + std::to_string(PrintfError));
    return answers;
}

TEST_F(Walks, SayWhatTheReadersSay)
{
    ASSERT_EQ(std::system(("cp -r " STR_DATA_DIR "/toupper " + home.PathOf("")).c_str()), 0);
    const char *const rounds = std::getenv("STR_TEST_ROUNDS");
    std::mt19937 random(TestSeed());
    for (int round = rounds == nullptr ? 4000 : std::atoi(rounds); round > 0; --round) {
        const std::string first = RandomText(random, 20);
        std::string second = random() % 8 == 0 ? RandomText(random, 20) : first;
        for (char &byte : second)
            if (g_ascii_isalpha(byte) && random() % 2)
                byte = static_cast<char>(byte ^ 0x20);
        if (random() % 8 == 0 && !second.empty())
            second[random() % second.size()] = 'a';
        ccs_SetInfo set;
        ccs_GetSetInfo(static_cast<int>(random() % static_cast<unsigned>(ccs_GetSetCount())), &set);
        const CSDescriptor cs = {set.number, random() % 4 != 0};
        const int limit = static_cast<int>(random() % (first.size() + 3));
        passing::ownWalks = false;
        const auto expected = Answers(first, second, limit, cs);
        passing::ownWalks = true;
        const auto answers = Answers(first, second, limit, cs);
        passing::ownWalks = false;
        ASSERT_EQ(answers, expected) << set.name << cs.escMode << testing::PrintToString(first)
                                     << limit << testing::PrintToString(second);
    }
}

} // namespace
