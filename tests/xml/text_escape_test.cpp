// Tests of reference decoding with the whitespace rules, escaping with and
// without kept references, CDATA splitting and the node forms.
#include <gtest/gtest.h>

#include <memory>

#include "xml/text_escape.h"

using namespace vetra::xml;

namespace {

TEST(DecodeText, ReferencesAndWhitespace) {
    constexpr uint32_t kTrim = DocTrimSpace, kCollapse = DocCollapseSpace;
    const struct {
        WideString text;
        WideString expected;
        int32_t length = -1;
        uint32_t flags = 0;
    } cases[] = {
        {u"&lt;&amp;&gt;&quot;&apos;", u"<&>\"'"},
        {u"&#65;&#x41;&#X41;&#0065;", u"AAAA"},
        {u"&#x1F600;|&#128512;", u"\xD83D\xDE00|\xD83D\xDE00"},
        {u"&#12345678;", u"\xDAD8\xDD4E"}, // 9 characters behind '&'
        {u"&#123456789;", u"&#123456789;"},
        {u"&#0;&#;&#x;&#xg;&#-0;", u"&#0;&#;&#x;&#xg;&#-0;"},
        {u"&# 65;&#+65;&#x0x41;&#65a;", u"AAAA"},          // read as wcstol would
        {u"&#x110000;&#-1;", u"\xD800\xDC00\xDBBF\xDFFF"}, // low bits, no range check
        {u"&eacute;&Eacute;&EACUTE;", u"\x00E9\x00C9\x00C9"},
        {u"&amp;&AMP;&Amp;&aMp;", u"&&&&"},
        {u"AT&T, a & b, &nosuch; &; &a; &am;p;", u"AT&T, a & b, &nosuch; &; &a; &am;p;"},
        {u"&\x00E9;&lt", u"&\x00E9;&lt"},
        {u"&lt&gt;", u"&lt>"}, // the first attempt ends at '&'
        // A slice: plain copying stops at the length, a reference begun inside
        // it reads on to its ';'.
        {u"a&lt;b", u"a<", 2},
        {WideString(u"a\0b", 3), WideString(u"a\0b", 3), 3}, // a NUL inside the slice is text
        // Whitespace: trimmed, or collapsed (which trims too); a decoded space is text.
        {u"   ", u"", -1, kTrim},
        {u"  a \r\n b\t ", u"a \r\n b", -1, kTrim},
        {u"a  \r\n b ", u"a b", -1, kCollapse},
        {u"a&#32;", u"a ", -1, kTrim},
        {u" & ", u"&", -1, kTrim},
        {u" a b c ", u"a", 3, kTrim},
    };
    for (const auto& c : cases) {
        // From a heap copy of exactly the text and its NUL, so that a read
        // past the NUL is caught under the address sanitizer.
        std::unique_ptr<wchar[]> copy(new wchar[c.text.size() + 1]);
        std::char_traits<wchar>::copy(copy.get(), c.text.c_str(), c.text.size() + 1);
        EXPECT_EQ(DecodeText(copy.get(), c.length, c.flags), c.expected)
            << testing::PrintToString(c.text) << " flags: " << c.flags;
    }
}

// EncodeText with each flag, and EncodeCData, which splits at section ends.
TEST(EncodeText, EscapesKeepsReferencesAndSplitsCData) {
    constexpr uint32_t kAttrib = EditAttribText, kKeep = EditKeepRefs;
    constexpr uint32_t kCData = ~0u; // by EncodeCData
    const struct {
        const wchar* text;
        uint32_t flags;
        const wchar* expected;
    } cases[] = {
        {u"]]> & <", 0, u"]]&gt; &amp; &lt;"},
        {u"\"q\" 'x'", 0, u"\"q\" 'x'"},
        {u"\"q\" 'x'", kAttrib, u"&quot;q&quot; &apos;x&apos;"},
        {u"&amp;&#169;&nosuch;&#x41;&#;", kKeep, u"&amp;&#169;&nosuch;&#x41;&#;"},
        {u"&_x.y-z:1;&\x00E9;&:a\x4E00;", kKeep, u"&_x.y-z:1;&\x00E9;&:a\x4E00;"},
        {u"&1a;", kKeep, u"&amp;1a;"},
        {u"&a#;", kKeep, u"&amp;a#;"},
        {u"x &amp", kKeep, u"x &amp;amp"},
        {u"\"&lt;'", kKeep | kAttrib, u"&quot;&lt;&apos;"},
        {u"", kCData, u"<![CDATA[]]>"},
        {u"]]>]]>", kCData, u"<![CDATA[]]]]><![CDATA[>]]]]><![CDATA[>]]>"},
        {u"]]]>", kCData, u"<![CDATA[]]]]]><![CDATA[>]]>"},
        {u"]] >", kCData, u"<![CDATA[]] >]]>"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.flags == kCData ? EncodeCData(c.text) : EncodeText(c.text, c.flags), c.expected)
            << testing::PrintToString(c.text);
    }
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
        {NodeCData, u"x<y]]", true, u"<![CDATA[x<y]]]]>"},
        {NodeCData, u"a]]>b", false, u"old"},
        {NodeProcessing, u"pi a=\"?\"", true, u"<?pi a=\"?\"?>"},
        {NodeComment, u"a -- b -->", true, u"<!--a -- b -->-->"},
        {NodeDocType, u"<!DOCTYPE x>", true, u"<!DOCTYPE x>"},
        {NodeLoneEndTag, u"b", true, u"</b>"},
        {0, u"x", true, u"old"},
    };
    for (const auto& c : cases) {
        WideString out = u"old";
        EXPECT_EQ(FormatNode(c.type, c.text, out), c.ok) << "type: " << c.type;
        EXPECT_EQ(out, c.expected) << "type: " << c.type;
    }
    // The text may be the output itself.
    WideString out = u"a long enough name to live on the heap";
    ASSERT_TRUE(FormatNode(NodeLoneEndTag, out.c_str(), out));
    EXPECT_EQ(out, u"</a long enough name to live on the heap>");
}

} // namespace
