// Tests of the scanner's character sets, of CanBeginName and of
// CompareNames' case rule.
#include <gtest/gtest.h>

#include <string>

#include "xml/char_sets.h"

using namespace vetra::xml;

namespace {

const struct {
    uint8_t set;
    const char* name;
    const char* members;
} kSets[] = {
    {WhitespaceChars, "WhitespaceChars", "\t\n\r "},
    {WordEndChars, "WordEndChars", "\t\n\r !\"'/;<=>?\\"},
    {PathEndChars, "PathEndChars", " /=[]"},
    {NameEndChars, "NameEndChars", "\t\n\r />"},
    {AttribNameEndChars, "AttribNameEndChars", "\t\n\r /=>?"},
    {AttribValueEndChars, "AttribValueEndChars", "\t\n\r >"},
    {BeforeSlashChars, "BeforeSlashChars", "\t\n\r \"'"},
    {DeclStartChars, "DeclStartChars", "AEN"},
};

// Every 16-bit value against every set: exactly the listed ASCII members.
// A table read by the low byte alone would, say, put U+013C in the sets of <.
TEST(CharSets, ExactlyTheListedMembers) {
    for (const auto& s : kSets) {
        std::string members(s.members);
        for (int c = 0; c < 0x10000; ++c) {
            bool expected = c < 128 && c != 0 && members.find(char(c)) != std::string::npos;
            ASSERT_EQ(InSet(wchar(c), s.set), expected) << s.name << " U+" << std::hex << c;
        }
    }
}

TEST(CharSets, SpotChecks) {
    const struct {
        wchar c;
        uint8_t inSets; // the sets c belongs to
    } cases[] = {
        {u' ', WhitespaceChars | WordEndChars | PathEndChars | NameEndChars | AttribNameEndChars |
                   AttribValueEndChars | BeforeSlashChars},
        {u'\t', WhitespaceChars | WordEndChars | NameEndChars | AttribNameEndChars |
                    AttribValueEndChars | BeforeSlashChars},
        {u'/', WordEndChars | PathEndChars | NameEndChars | AttribNameEndChars},
        {u'>', WordEndChars | NameEndChars | AttribNameEndChars | AttribValueEndChars},
        {u'=', WordEndChars | PathEndChars | AttribNameEndChars},
        {u'?', WordEndChars | AttribNameEndChars},
        {u'"', WordEndChars | BeforeSlashChars},
        {u'[', PathEndChars},
        {u'E', DeclStartChars},
        {u'e', 0},
        {u'D', 0},
        {u'\v', 0},
        {u'\f', 0},
        {u'\0', 0},
        {u'-', 0},
        // Non-ASCII is in no set: no-break space, line separator, ideographic
        // space, fullwidth >, and values whose low byte is a member.
        {u'\u00A0', 0},
        {u'\u0085', 0},
        {u'\u2028', 0},
        {u'\u3000', 0},
        {u'\uFF1E', 0},
        {u'\u0120', 0},
        {u'\u013E', 0},
        {u'\uFF09', 0},
        {u'\uFFFF', 0},
    };
    for (const auto& k : cases) {
        for (const auto& s : kSets)
            EXPECT_EQ(InSet(k.c, s.set), (k.inSets & s.set) != 0)
                << s.name << " U+" << std::hex << int(k.c);
    }
}

TEST(CharSets, WhatCanBeginAName) {
    const std::u16string yes = u":_AZaz{|}~\u007F\u0080\u00E9\u0130\u4E00\uFF1E\uFFFF";
    const std::u16string no = u"0123456789-.;<=>?@[\\]^` \t\r\n!\"#$%&'()*+,/";
    for (char16_t c : yes)
        EXPECT_TRUE(CanBeginName(c)) << std::hex << int(c);
    for (char16_t c : no)
        EXPECT_FALSE(CanBeginName(c)) << std::hex << int(c);
    // All of them: 0x3A and above, except ; < = > ? @ [ \ ] ^ and the backquote.
    const std::u16string excluded = u";<=>?@[\\]^`";
    for (int c = 0; c < 0x10000; ++c) {
        bool expected = c >= 0x3A && excluded.find(char16_t(c)) == std::u16string::npos;
        ASSERT_EQ(CanBeginName(wchar(c)), expected) << std::hex << c;
    }
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
        {u"aBc", u"AbC", true, true},
        {u"abc", u"abc", false, true},
        // Only ASCII letters fold.
        {u"\u00E9", u"\u00C9", true, false},
        {u"a[", u"A{", true, false},
        {u"@", u"`", true, false},
        {u"z", u"Z", true, true},
        // Behind an identical non-ASCII character the comparison is exact ...
        {u"a\u00E9B", u"a\u00E9b", true, false},
        {u"\u00E9a", u"\u00E9A", true, false},
        // ... but a pair before it folds.
        {u"A\u00E9B", u"a\u00E9B", true, true},
        {u"\u00E9\u4E00", u"\u00E9\u4E00", true, true},
        {u"x", u"y", true, false},
        {u"", u"", true, true},
    };
    for (const auto& c : cases) {
        int32_t n = int32_t(std::char_traits<char16_t>::length(c.a));
        EXPECT_EQ(CompareNames(c.a, c.b, n, c.ignoreCase) == 0, c.equal)
            << int(c.ignoreCase) << " " << n;
    }
}

TEST(CharSets, CompareNamesCountAndDifference) {
    // Exactly `count` characters: 0 gives 0, what lies behind is not looked at.
    EXPECT_EQ(CompareNames(u"x", u"y", 0, false), 0);
    EXPECT_EQ(CompareNames(u"x", u"y", 0, true), 0);
    EXPECT_EQ(CompareNames(u"abX", u"abY", 2, false), 0);
    EXPECT_EQ(CompareNames(u"abX", u"ABY", 2, true), 0);
    // The difference of the first differing pair: raw, folded, or raw again
    // behind an identical non-ASCII character.
    EXPECT_EQ(CompareNames(u"a", u"b", 1, false), -1);
    EXPECT_EQ(CompareNames(u"b", u"A", 1, false), 'b' - 'A');
    EXPECT_EQ(CompareNames(u"a", u"B", 1, true), 'A' - 'B');
    EXPECT_EQ(CompareNames(u"\u00E9a", u"\u00E9B", 2, true), 'a' - 'B');
    EXPECT_EQ(CompareNames(u"\u00E9", u"\u00C9", 1, true), 0xE9 - 0xC9);
}

} // namespace
