// Tests of reading names and values: data with mixed content, attribute
// values and names, sub-document text, whitespace flags, and the attribute
// index against a fresh scan.
#include <gtest/gtest.h>

#include <functional>

#include "support/doc_script.h"
#include "support/edit_ops.h"
#include "xml/text_escape.h"
#include "xml/token.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;
using namespace vetra::test;

namespace {

#define READ(call) [](CVTXmlParser& d) { return S(d.call); }

TEST(Reading, ValuesAtThePosition) {
    const struct {
        const vtchar* doc;
        const char* place; // position script, see Place()
        std::function<vtstring(CVTXmlParser&)> read;
        const vtchar* expect;
    } cases[] = {
        // Data: text and CDATA only; whitespace counts only beside text.
        {VT("<a>x</a>"), "m a", READ(GetData()), VT("x")},
        {VT("<a/>"), "m a", READ(GetData()), VT("")},
        {VT("<a>"), "m a", READ(GetData()), VT("")},
        {VT("<a>  </a>"), "m a", READ(GetData()), VT("  ")},
        {VT("<a>  <![CDATA[x]]>  </a>"), "m a", READ(GetData()), VT("x")},
        {VT("<a> y <![CDATA[x]]></a>"), "m a", READ(GetData()), VT(" y x")},
        {VT("<a>x&amp;<![CDATA[&amp;]]></a>"), "m a", READ(GetData()), VT("x&&amp;")},
        {VT("<a>x<!--c-->y</a>"), "m a", READ(GetData()), VT("xy")},
        {VT("<a>x<!x>y</a>"), "m a", READ(GetData()), VT("xy")},
        {VT("<a>t<b/></a>"), "m a", READ(GetData()), VT("")},
        // A reference that swallows a '<' doesn't hide the markup behind it.
        {VT("<a>&#60<;x</a>"), "m a", READ(GetData()), VT("<")},
        {VT("<a>x&amp;y&#60;</a>"), "m a", READ(GetData()), VT("x&y<")},
        // Attribute values by every quoting.
        {VT("<e k='a\"b'/>"), "m e", READ(GetAttrib(VT("k"))), VT("a\"b")},
        {VT("<e k=v/>"), "m e", READ(GetAttrib(VT("k"))), VT("v/")},
        {VT("<e k/>"), "m e", READ(GetAttrib(VT("k"))), VT("k")},
        {VT("<e k=\"1\" k=\"2\"/>"), "m e", READ(GetAttrib(VT("k"))), VT("1")},
        {VT("<e k=\"&lt;&#233;\"/>"), "m e", READ(GetAttrib(VT("k"))), VT("<\u00E9")},
        {VT("<e a=\"1\"/>"), "m e", READ(GetAttrib(VT("e"))), VT("")},
        {VT("<e a=\"1\"/>"), "m e", READ(GetAttrib(nullptr)), VT("")},
        {VT("<e a=\"1\"/>"), "m e", READ(GetAttrib(VT("a=x"))), VT("1")},
        {VT("<e/ k=\"v\">"), "m e", READ(GetAttrib(VT("k"))), VT("")},
        // Attribute names by index, raw.
        {VT("<a b c=\"1\">"), "m a", READ(GetAttribName(1)), VT("c")},
        {VT("<a \"x\" b=\"1\">"), "m a", READ(GetAttribName(0)), VT("b")},
        {VT("<a b&#120;=\"1\"/>"), "m a", READ(GetAttribName(0)), VT("b&#120;")},
        {VT("<a k=\"1\" k=\"2\"/>"), "m a", READ(GetAttribName(1)), VT("k")},
        // Sub-documents carry the line end when a tag or the end follows.
        {VT("<r><a>x</a>\r\n<b/></r>"), "c a", READ(GetChildSubDoc()), VT("<a>x</a>\r\n")},
        {VT("<r><a>x</a>\r\n text</r>"), "c a", READ(GetChildSubDoc()), VT("<a>x</a>")},
        {VT("<a>x</a> \r\n"), "m a", READ(GetSubDoc()), VT("<a>x</a> \r\n")},
        // Nothing at the position.
        {VT("<a;b/>"), "", READ(GetTagName()), VT("")},
        {VT("<a;b/>"), "", READ(GetChildSubDoc()), VT("")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.doc) + " | " + c.place);
        CVTXmlParser doc;
        doc.SetDoc(c.doc);
        ASSERT_TRUE(Place(doc, c.place));
        EXPECT_EQ(Show(c.read(doc)), Show(c.expect));
    }
}

TEST(Reading, ResultPointerShowsTheLatestResult) {
    CVTXmlParser doc;
    doc.SetDoc(VT("<a;b/>"));
    doc.FindElem();
    const vtchar* first = doc.GetTagName();
    EXPECT_EQ(S(first), VT("a"));
    doc.GetAttribName(0);
    EXPECT_EQ(S(first), VT(""));
}

TEST(Reading, WhitespaceFlagsApplyToDecodedValues) {
    XmlEngine e(u"<r k=\"  a  b \">  x \r\n y  </r>");
    e.FindElem(nullptr);
    e.m_docFlags = DocTrimSpace;
    EXPECT_EQ(e.ElementData(1), u"x \r\n y");
    EXPECT_EQ(e.AttribValue(1, u"k"), u"a  b");
    e.m_docFlags = DocCollapseSpace;
    EXPECT_EQ(e.ElementData(1), u"x y");
    EXPECT_EQ(e.AttribValue(1, u"k"), u"a b");
}

// The attribute index must give what a scan of the tag from its start gives,
// whatever order the reads come in, and forget a tag once the text changes.
TEST(Reading, AttributeIndexAgreesWithAFreshScan) {
    const char16_t alphabet[] = u"ab=\"' />?\t\u00E9&";
    const char16_t* names[] = {u"a", u"b", u"ab", u"a=", u"/", u""};
    uint32_t state = 12345;
    auto next = [&](uint32_t n) {
        state = state * 1103515245 + 12345;
        return (state >> 8) % n;
    };
    for (int round = 0; round < 20000; ++round) {
        const char16_t* starts[] = {u"<e ", u"<e", u"<ab\t", u"< e "};
        std::u16string tag = starts[next(4)];
        for (uint32_t k = next(14); k > 0; --k)
            tag += alphabet[next(12)];
        XmlEngine e((tag + u"/>").c_str());
        if (e.Rec(0).firstChild == 0) continue;
        e.FindElem(nullptr);
        const int32_t start = e.Rec(e.m_mainIndex).start + 1;
        AttribIndex kept;
        kept.Select(1, start, 0);
        for (int read = 0; read < 12; ++read) {
            TokenCursor fresh(e.m_docText.c_str(), 0, start);
            if (next(2) == 0) {
                int32_t index = int32_t(next(7)) - 1;
                WideString expect = ScanAttrib(fresh, nullptr, index) ? TokenText(fresh) : u"";
                ASSERT_EQ(e.AttribName(index), expect) << Show(tag) << " index " << index;
            } else {
                const char16_t* name = names[next(6)];
                const bool found = ScanAttrib(fresh, name, 0);
                WideString expect = found ? TokenText(fresh) : u"";
                ASSERT_EQ(e.AttribValue(e.m_mainIndex, name), expect)
                    << Show(tag) << " " << Show(name);
                // Where the attribute editor splices: the same places as a scan.
                TokenCursor got;
                ASSERT_EQ(kept.Value(TokenCursor(e.m_docText.c_str(), 0, start), name, got), found);
                EXPECT_EQ(got.next, fresh.next) << Show(tag) << " " << Show(name);
                if (found) {
                    EXPECT_EQ(got.tokenStart, fresh.tokenStart) << Show(tag);
                    EXPECT_EQ(got.tokenEnd, fresh.tokenEnd) << Show(tag);
                    EXPECT_EQ(got.flags & CursorQuoted, fresh.flags & CursorQuoted) << Show(tag);
                    EXPECT_EQ(got.matchOrigin + got.matchGap, fresh.matchOrigin + fresh.matchGap);
                }
            }
        }
        // Edits of the tag: the index either goes stale or, for a new
        // attribute added last, reads on into it; either way it must agree
        // with a scan of the new text.
        const char16_t* written[] = {u"z", u"a", u"b c", u"=", u"", u"y/", u"x"};
        const char16_t* values[] = {u"1", u"", u"\"q'", u"a b", u"<&>"};
        for (int edit = 0; edit < 3; ++edit) {
            e.WriteAttrib(e.m_mainIndex, written[next(7)], values[next(5)], 0);
            ASSERT_EQ(CompareAttributes(e), "") << Show(WideString(e.m_docText.View()));
        }
    }
}

} // namespace
