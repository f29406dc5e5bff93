// Tests of the character sets and of CompareNames' case rule.
#include <gtest/gtest.h>

#include <string>

#include "xml/char_sets.h"

using namespace vetra::xml;

namespace {

TEST(CharSets, MembersOfEachSet) {
    const struct {
        uint8_t set;
        const char* members;
    } sets[] = {
        {WhitespaceChars, "\t\n\r "},
        {WordEndChars, "\t\n\r !\"'/;<=>?\\"},
        {PathEndChars, " /=[]"},
        {NameEndChars, "\t\n\r />"},
        {AttribNameEndChars, "\t\n\r /=>?"},
        {AttribValueEndChars, "\t\n\r >"},
        {BeforeSlashChars, "\t\n\r \"'"},
        {DeclStartChars, "AEN"},
    };
    for (const auto& s : sets) {
        std::string members(s.members);
        for (int c = 0; c < 0x10000; ++c) {
            bool expected = c < 128 && members.find(char(c)) != std::string::npos;
            ASSERT_EQ(InSet(wchar(c), s.set), expected) << "set " << int(s.set) << " char " << c;
        }
    }
}

TEST(CharSets, CharactersThatBeginANames) {
    const std::u16string yes = u":_AZaz\u00E9\u4E00\uFFFF";
    const std::u16string no = u"09-.;<=>?@[\\]^` \t!\"/";
    for (char16_t c : yes) EXPECT_TRUE(CanBeginName(c)) << int(c);
    for (char16_t c : no) EXPECT_FALSE(CanBeginName(c)) << int(c);
}

TEST(CharSets, CompareNamesFoldsOnlyUntilAnIdenticalNonAscii) {
    const struct {
        const char16_t* a;
        const char16_t* b;
        bool ignoreCase;
        bool equal;
    } cases[] = {
        {u"abc", u"ABC", true, true},
        {u"abc", u"ABC", false, false},
        {u"\u00E9", u"\u00C9", true, false},
        {u"a\u00E9B", u"a\u00E9b", true, false},
        {u"A\u00E9B", u"a\u00E9B", true, true},
        {u"a[", u"A{", true, false},
        {u"", u"", true, true},
    };
    for (const auto& c : cases) {
        int32_t n = int32_t(std::char_traits<char16_t>::length(c.a));
        EXPECT_EQ(CompareNames(c.a, c.b, n, c.ignoreCase) == 0, c.equal);
    }
    EXPECT_EQ(CompareNames(u"x", u"y", 0, false), 0);
    EXPECT_LT(CompareNames(u"a", u"b", 1, false), 0);
}

} // namespace
