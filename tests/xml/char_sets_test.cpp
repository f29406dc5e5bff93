// Tests of the scanner's character sets over every unit, of CanBeginName and
// of the name comparisons' case rule.
#include <gtest/gtest.h>

#include <string>

#include "xml/char_sets.h"

using namespace vetra::xml;

namespace {

// Every 16-bit unit. The NUL and units above ASCII belong to no set: a table
// read by the low byte alone would, say, put U+013C in the sets of <. A name
// begins at 0x3A and above, except at ; < = > ? @ [ \ ] ^ and the backquote.
TEST(CharSets, SetsAndNameStartsOverAllUnits) {
    const std::u16string excluded = u";<=>?@[\\]^`";
    for (int c = 0; c < 0x10000; ++c) {
        bool begins = c >= 0x3A && excluded.find(char16_t(c)) == std::u16string::npos;
        ASSERT_EQ(CanBeginName(wchar(c)), begins) << std::hex << c;
        for (int set = 1; set < 256; set <<= 1)
            ASSERT_EQ(InSet(wchar(c), uint8_t(set)), c < 128 && (CharClassOf(c) & set) != 0)
                << set << " U+" << std::hex << c;
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
        {u"z", u"Z", true, true},
        // Only ASCII letters fold.
        {u"\u00E9", u"\u00C9", true, false},
        {u"a[", u"A{", true, false},
        // Behind an identical non-ASCII character the comparison is exact ...
        {u"a\u00E9B", u"a\u00E9b", true, false},
        // ... but a pair before it folds.
        {u"A\u00E9B", u"a\u00E9B", true, true},
        // Exactly `count` characters are looked at.
        {u"x", u"y", false, true, 0},
        {u"abX", u"ABY", true, true, 2},
        // Longer names are compared four units a step, the last four overlapping.
        {u"sub-class-of", u"sub-class-of", false, true},
        {u"sub-class-of", u"Sub-class-of", false, false},
        {u"sub-class-of", u"sub-class-ox", false, false},
        {u"mime-type", u"mime-typo", false, false},
        {u"mime-type", u"mime-tYpe", false, false},
        {u"glob", u"glob", false, true},
        {u"glob", u"glub", false, false},
    };
    for (const auto& c : cases) {
        int32_t n = c.count >= 0 ? c.count : int32_t(std::char_traits<char16_t>::length(c.a));
        EXPECT_EQ(CompareNames(c.a, c.b, n, c.ignoreCase) == 0, c.equal)
            << int(c.ignoreCase) << " " << n;
        EXPECT_EQ(SameNames(c.a, c.b, n, c.ignoreCase), c.equal) << int(c.ignoreCase) << " " << n;
    }
}

} // namespace
