// SPDX-License-Identifier: Apache-2.0
//
// A call of each export that needs no file, with what it traces.
#ifndef TESTS_SUPPORT_CALLS_H
#define TESTS_SUPPORT_CALLS_H

#include "tests/support/test.h"

inline const CSDescriptor kMail = DescriptorOf("ISO-2022-JP"), kT61 = DescriptorOf("T.61"),
                          kUtf8 = DescriptorOf("UTF8"), kIa5 = DescriptorOf("IA5");
constexpr char kText[] = "a \x1B$B\x46\x7C\x4B\x5C\x1B(B bc\n\x1B$B#a#b\x1B(B Re: No. 5",
               kOther[] = "A \x1B$B\x46\x7C\x4B\x5C\x1B(B BC\n\x1B$B#A#B\x1B(B RE: no. 5",
               kTele[] = "Ren\xC2\x65 M\xC8uller #", kUpTele[] = "REN\xC2\x45 m\xC8Uller #",
               kWide[] = "\xC3\xA9t\xC3\xA9 \xCE\xB1\xCF\x82", kUs[] = "\x1F\x62",
               kUpWide[] = "\xC3\x89T\xC3\x89 \xCE\x91\xCE\xA3", kMiddle[] = "\x1F\x62\x63\x1F";
inline const char *const kReplacements[] = {"<b>"};

// What a thread works with, and what it was answered.
struct Own {
    int number = 0;
    char room[1000] = "";
    std::string answer = "";
    char *rest = nullptr;
    unsigned int size = 0, restSize = 0;
    int length = 0;

    void Say(int64_t value) { Say(std::to_string(value).c_str()); }
    void Say(const char *text)
    {
        for (const char *const said : {text, static_cast<const char *>(rest)})
            answer += std::string(said == nullptr ? "-" : said) + " ";
        rest = nullptr;
    }
    char *Room(const char *text) { return std::strcpy(room, text); }
};

// clang-format off
#define CALL(...) [](Own &own) { own.Say(__VA_ARGS__); }
inline const struct {
    void (*call)(Own &own);
    const char *traced; // "name(name())", without str_
} kCalls[] = {
    {CALL(str_strcmp(kText, kText, &kMail)), "strcmp3()"},
    {CALL(str_strcmp3(kTele, "Re", &kT61, &kMail)), "strcmp3()"},
    {CALL(str_strncmp(kText, kText, 4, &kMail)), "strnccmp3()"},
    {CALL(str_strncmp2(kTele, kTele, 4, 4, &kT61)), "strnbcmp3()"},
    {CALL(str_strnccmp3(kText, "a ", 2, &kMail, &kT61)), "strnccmp3()"},
    {CALL(str_strnbcmp3(kText, "a ", 2, 2, &kMail, &kT61)), "strnbcmp3()"},
    {CALL(str_strucasecmp(kText, kOther, &kMail)), "strucasecmp3()"},
    {CALL(str_strucasecmp3(kTele, kUpTele, &kT61, &kT61)), "strucasecmp3()"},
    {CALL(str_strucasecmp(kWide, kUpWide, &kUtf8)), "strucasecmp3()"},
    {CALL(str_strucasencmp(kText, kOther, 4, &kMail)), "strucasenccmp3()"},
    {CALL(str_strucasencmp2(kTele, kTele, 4, 4, &kT61)), "strucasenbcmp3()"},
    {CALL(str_strucasenccmp3(kText, "A ", 2, &kMail, &kT61)), "strucasenccmp3()"},
    {CALL(str_strucasenbcmp3(kText, "A ", 2, 2, &kMail, &kT61)), "strucasenbcmp3()"},
    {CALL(str_DoCompareToEnd(kText, kOther, 1, &kMail, &kMail)), ""},
    {CALL(str_DoCompareByByteLen(kText, kOther, 9, 9, 1, &kMail, &kMail)), ""},
    {CALL(str_DoCompareByCharLen(kText, kOther, 9, 1, &kMail, &kMail)), ""},
    {CALL(str_cmpTextStr("Ab", "aB", 1, &kT61, &kMail) < 0), ""},
    {CALL(str_cmpORName("/S=X/C=gb/", "/S=x/C=GB/", "T.61", 0, "C,S") == 0), ""},
    {CALL(str_strcasecmpUni("\xC3\xA9", "\xC3\x89", 4)), "strcasecmpUni(ToUpperUni()ToUpperUni())"},
    {CALL(str_SplitByDispLen(kText, 4, &own.rest, &own.size, &own.restSize, &kMail)),
     "SplitByDispLen(DoSplit(FindSplitPoint(CountSSDispChars()CountSSDispChars())))"},
    {CALL(str_SplitByDispBytes(kText, 5, &own.rest, &own.size, &own.restSize, &kMail)),
     "SplitByDispBytes(DoSplit(FindSplitPoint(CountSSDispBytes()CountSSDispBytes())))"},
    {CALL(str_DoSplit(kTele, 0, 3, &own.rest, &own.size, &own.restSize, &kT61)),
     "DoSplit(FindSplitPoint(CountSSDispChars()))"},
    {CALL(str_FindSplitPoint(kText, 0, 3, &kMail)),
     "FindSplitPoint(CountSSDispChars()CountSSDispChars())"},
    {CALL(str_CountSSDispChars("abc", 3, 2, &own.length, &kT61)), "CountSSDispChars()"},
    {CALL(str_CountSSDispBytes("abc", 3, 2, &own.length, &kT61)), "CountSSDispBytes()"},
    {CALL(str_dispstrlen(kText, &kMail)), "dispstrlen()"},
    {CALL(str_dispstrlen(kTele, &kT61)), "dispstrlen()"},
    {CALL(str_GetDispLen("abc", 3, &kT61)), ""},
    {CALL(str_utf8DispStrLen(kWide, -1, 0)), "utf8DispStrLen()"},
    {CALL(str_truncstrlen(kText, 9, &kMail)), "truncstrlen()"},
    {CALL(str_FindTruncPt(kTele, 4, &kT61)), ""},
    {CALL(str_truncate(own.room, kText, 24, &kMail, &own.size)), "truncate(truncstrlen())"},
    {CALL(str_truncateclosed(own.room, kText, 9, &kMail)), "truncateclosed()"},
    {CALL(str_strncpy(own.room, kTele, 40, &kT61)), "strncpy(truncstrlen())"},
    {CALL(str_strlcpy(own.room, kText, 40, &kMail)), "strncpy(truncstrlen())"},
    {CALL(str_strcat(own.Room("a\x1B$BF|"), "b", &kMail)), "strcat()"},
    {CALL(str_strncat(own.Room("a\x1B$BF|"), "b", 1, &kMail)), "strncat()"},
    {CALL(str_GetEscapes(kText, "b", &kMail, &own.length)), ""},
    {CALL(str_strchr(kText, 'c', &kMail)), "strchr()"},
    {CALL(str_dostrchr("abc", 'c', 3)), ""},
    {CALL(str_ToUpper(kText, -1, &own.length, &kMail)), "ToUpper()"},
    {CALL(str_ToUpper(kTele, -1, &own.length, &kT61)), "ToUpper()"},
    {CALL(str_ToUpper(kWide, -1, &own.length, &kUtf8)), "ToUpper()"},
    {CALL(str_ToUpperUni(kWide, -1, &own.length, 4)), "ToUpperUni()"},
    {CALL(str_TransformUTF8InputStr("a(\\1.x", -1, "(", kReplacements, ".", '\\', 0, &own.size)),
     "TransformUTF8InputStr()"},
    {CALL((str_simplesprintf(&kMail, own.room, "%d %s.", own.number, kText), own.room)),
     "simplesprintf()"},
    {CALL((str_simplesprintf(&kT61, own.room, "%2$s %1$s", kTele, "b"), own.room)),
     "simplesprintf()"},
    {CALL(str_simplefprintf(&kMail, stderr, "%n", nullptr)), "simplefprintf()"},
    {CALL(str_simpleprintf(&kMail, "%n", nullptr)), "simpleprintf()"},
    {CALL(str_USPatternMatch("a", "b", &kMail)), "USPatternMatch("},
    {CALL(str_USPatternMatch(kText, kUs, &kMail)), "USPatternMatch("},
    {CALL(str_USPatternMatch(kText, kMiddle, &kMail)), "USPatternMatch()"},
    {CALL(str_USPatternMatch("ab", "a\x1F\x62", &kIa5)), "USPatternMatch("}, // one segment
    {CALL(str_USPatternMatch("a\xE9", "a\x1F\x62", &kIa5)), "USPatternMatch()"},
    {CALL(str_utf8USPatternMatch(kWide, "\xC3\x89\x1F")), "utf8USPatternMatch()"},
    {CALL(str_EquivTypes(6, 100)), ""},
};
// clang-format on

#endif
