// Tests of reference decoding with the whitespace rules, escaping with and
// without kept references, CDATA splitting and the node forms.
#include <gtest/gtest.h>

#include <memory>

#include "xml/text_escape.h"

using namespace vetra::xml;

namespace {

// Decodes from a heap copy of exactly the text and its NUL, so that a read
// past the NUL is caught under the address sanitizer.
WideString Decode(const WideString& text, int32_t length, uint32_t flags) {
    std::unique_ptr<wchar[]> copy(new wchar[text.size() + 1]);
    std::char_traits<wchar>::copy(copy.get(), text.c_str(), text.size() + 1);
    return DecodeText(copy.get(), length, flags);
}

struct DecodeCase {
    WideString text;
    WideString expected;
    int32_t length = -1;
    uint32_t flags = 0;
};

TEST(DecodeText, References) {
    const DecodeCase cases[] = {
        {u"&lt;&amp;&gt;&quot;&apos;", u"<&>\"'"},
        {u"&#65;&#x41;&#X41;&#0065;", u"AAAA"},
        {u"&#x1F600;|&#128512;", u"\xD83D\xDE00|\xD83D\xDE00"},
        {u"&#12x;z", u"\x000Cz"},          // conversion stops at x, the reference runs to ';'
        {u"&#12345678;", u"\xDAD8\xDD4E"}, // 9 characters behind '&'
        {u"&#123456789;", u"&#123456789;"},
        {u"&#0;&#;&#x;&#xg;&#-0;", u"&#0;&#;&#x;&#xg;&#-0;"},
        {u"&# 65;&#+65;&#x0x41;&#65a;", u"AAAA"}, // read as wcstol would
        {u"&#xD800;&#xFFFF;", u"\xD800\xFFFF"},
        {u"&#x110000;&#-1;", u"\xD800\xDC00\xDBBF\xDFFF"}, // low bits, no range check
        {u"&eacute;&Eacute;&EACUTE;", u"\x00E9\x00C9\x00C9"},
        {u"&amp;&AMP;&Amp;&aMp;", u"&&&&"},
        {u"&oslash;&Oslash;&rarr;&rArr;&RARR;", u"\x00F8\x00D8\x2192\x21D2\x21D2"},
        {u"&apos;&APOS;", u"''"},
        {u"AT&T, a & b, &nosuch; &; &a; &am;p;", u"AT&T, a & b, &nosuch; &; &a; &am;p;"},
        {u"&\x00E9;&lt", u"&\x00E9;&lt"},
        {u"x&", u"x&"},
        {u"&lt&gt;", u"&lt>"}, // the first attempt ends at '&'
        // A slice: plain copying stops at the length, a reference begun inside
        // it reads on to its ';'.
        {u"a&lt;b", u"a<", 2},
        {u"ab&lt;", u"ab", 2},
        {u"a&b;&lt;", u"a&b;", 4},
        {WideString(u"a\0b", 3), WideString(u"a\0b", 3), 3}, // a NUL inside the slice is text
    };
    for (const DecodeCase& c : cases) {
        EXPECT_EQ(Decode(c.text, c.length, c.flags), c.expected) << testing::PrintToString(c.text);
    }
}

TEST(DecodeText, Whitespace) {
    constexpr uint32_t kTrim = DocTrimSpace, kCollapse = DocCollapseSpace;
    const DecodeCase cases[] = {
        {u" \t\r\n ", u" \t\r\n "},
        {u" a  b ", u" a  b "},
        {u"   ", u"", -1, kTrim},
        {u"  a \r\n b\t ", u"a \r\n b", -1, kTrim},
        {u"   ", u"", -1, kCollapse},
        {u"a  \r\n b ", u"a b", -1, kCollapse},
        {u"\t a\tb\n", u"a b", -1, kCollapse | kTrim},
        {u"a&#32;", u"a ", -1, kTrim}, // a decoded space is text
        {u"a &#32; ", u"a  ", -1, kCollapse},
        {u" &#9;", u"\t", -1, kTrim},
        {u" & ", u"&", -1, kTrim},
        {u"  &lt; x  ", u"< x", -1, kCollapse},
        {u" a b c ", u"a", 3, kTrim},
    };
    for (const DecodeCase& c : cases) {
        EXPECT_EQ(Decode(c.text, c.length, c.flags), c.expected)
            << testing::PrintToString(c.text) << " flags: " << c.flags;
    }
}

TEST(EncodeText, EscapesAndKeptReferences) {
    constexpr uint32_t kAttrib = EditAttribText, kKeep = EditKeepRefs;
    const struct {
        const wchar* text;
        uint32_t flags;
        const wchar* expected;
    } cases[] = {
        {u"", 0, u""},
        {u"a<b", 0, u"a&lt;b"},
        {u"]]> & <", 0, u"]]&gt; &amp; &lt;"},
        {u"\"q\" 'x'", 0, u"\"q\" 'x'"},
        {u"\"q\" 'x'", kAttrib, u"&quot;q&quot; &apos;x&apos;"},
        {u"\x0001\x00E9\xFFFF\t", kAttrib, u"\x0001\x00E9\xFFFF\t"},
        {u"&amp;", 0, u"&amp;amp;"},
        {u"&amp;&#169;&nosuch;&#x41;&#;", kKeep, u"&amp;&#169;&nosuch;&#x41;&#;"},
        {u"&_x.y-z:1;&\x00E9;&:a\x4E00;", kKeep, u"&_x.y-z:1;&\x00E9;&:a\x4E00;"},
        {u"&;", kKeep, u"&amp;;"},
        {u"&a b;", kKeep, u"&amp;a b;"},
        {u"&1a;", kKeep, u"&amp;1a;"},
        {u"&a#;", kKeep, u"&amp;a#;"},
        {u"x &amp", kKeep, u"x &amp;amp"},
        {u"&", kKeep, u"&amp;"},
        {u"\"&lt;'", kKeep | kAttrib, u"&quot;&lt;&apos;"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(EncodeText(c.text, c.flags), c.expected) << testing::PrintToString(c.text);
    }
}

TEST(EncodeCData, SplitsAtSectionEnds) {
    const struct {
        const wchar* text;
        const wchar* expected;
    } cases[] = {
        {u"", u"<![CDATA[]]>"},
        {u"a<&>\"", u"<![CDATA[a<&>\"]]>"},
        {u"]]>", u"<![CDATA[]]]]><![CDATA[>]]>"},
        {u"p]]>q", u"<![CDATA[p]]]]><![CDATA[>q]]>"},
        {u"]]>]]>", u"<![CDATA[]]]]><![CDATA[>]]]]><![CDATA[>]]>"},
        {u"]]]>", u"<![CDATA[]]]]]><![CDATA[>]]>"},
        {u"]] >", u"<![CDATA[]] >]]>"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(EncodeCData(c.text), c.expected) << testing::PrintToString(c.text);
}

TEST(FormatNode, EachType) {
    const struct {
        int32_t type;
        const wchar* text;
        bool ok;
        const wchar* expected; // "old" where `out` must stay as it was
    } cases[] = {
        {NodeElement, u"a x=\"1\"", true, u"<a x=\"1\"/>"},
        {NodeText, u"a<b&c\"", true, u"a&lt;b&amp;c\""},
        {NodeWhitespace, u" \r\n", true, u" \r\n"},
        {NodeCData, u"x<y]]", true, u"<![CDATA[x<y]]]]>"},
        {NodeCData, u"a]]>b", false, u"old"},
        {NodeProcessing, u"pi a=\"?\"", true, u"<?pi a=\"?\"?>"},
        {NodeComment, u"a -- b -->", true, u"<!--a -- b -->-->"},
        {NodeDocType, u"<!DOCTYPE x>", true, u"<!DOCTYPE x>"},
        {NodeLoneEndTag, u"b", true, u"</b>"},
        {0, u"x", true, u"old"},
        {256, u"x", true, u"old"},
    };
    for (const auto& c : cases) {
        WideString out = u"old";
        EXPECT_EQ(FormatNode(c.type, c.text, out), c.ok) << "type: " << c.type;
        EXPECT_EQ(out, c.expected) << "type: " << c.type;
    }
}

TEST(FormatNode, TextMayBeTheOutput) {
    WideString out = u"a long enough name to live on the heap";
    ASSERT_TRUE(FormatNode(NodeLoneEndTag, out.c_str(), out));
    EXPECT_EQ(out, u"</a long enough name to live on the heap>");
}

} // namespace
