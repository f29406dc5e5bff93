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

TEST(CharSets, WhatCanBeginAName) {
    // All of them: 0x3A and above, except ; < = > ? @ [ \ ] ^ and the backquote.
    const std::u16string excluded = u";<=>?@[\\]^`";
    for (int c = 0; c < 0x10000; ++c) {
        bool expected = c >= 0x3A && excluded.find(char16_t(c)) == std::u16string::npos;
        ASSERT_EQ(CanBeginName(wchar(c)), expected) << std::hex << c;
    }
}

TEST(CharSets, CompareNames) {
    const struct {
        const char16_t* a;
        const char16_t* b;
        bool ignoreCase;
        bool equal;
        int32_t count = -1; // characters compared; -1: all of `a`
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
        // Exactly `count` characters are looked at.
        {u"x", u"y", false, true, 0},
        {u"abX", u"abY", false, true, 2},
        {u"abX", u"ABY", true, true, 2},
    };
    for (const auto& c : cases) {
        int32_t n = c.count >= 0 ? c.count : int32_t(std::char_traits<char16_t>::length(c.a));
        EXPECT_EQ(CompareNames(c.a, c.b, n, c.ignoreCase) == 0, c.equal)
            << int(c.ignoreCase) << " " << n;
    }
}

} // namespace
