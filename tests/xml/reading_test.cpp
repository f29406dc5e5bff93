// Tests of reading names and values: data with mixed content, attribute
// values by every quoting, attribute names by index, sub-document text,
// and the engine's answers for a position on a non-element node.
#include <gtest/gtest.h>

#include "support/doc_script.h"
#include "xml/text_escape.h"
#include "xml/token.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;
using namespace vetra::test;

namespace {

TEST(Reading, DataOfTheRootElement) {
    const struct {
        const char16_t* doc;
        const char16_t* data;
    } cases[] = {
        {u"<a>x</a>", u"x"},
        {u"<a></a>", u""},
        {u"<a/>", u""},
        {u"<a>", u""},
        {u"<a>  </a>", u"  "},
        {u"<a>  <![CDATA[x]]>  </a>", u"x"},
        {u"<a> y <![CDATA[x]]></a>", u" y x"},
        {u"<a>x&amp;<![CDATA[&amp;]]></a>", u"x&&amp;"},
        {u"<a>x<!--c-->y</a>", u"xy"},
        {u"<a>x<?p?>y</a>", u"xy"},
        {u"<a><![CDATA[p]]]]><![CDATA[>q]]></a>", u"p]]>q"},
        {u"<a>t<b/></a>", u""},
        {u"<a>&lt;&#x41;&#66;</a>", u"<AB"},
        {u"<a>x<!x>y</a>", u"xy"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.doc));
        CVTXmlParser doc;
        doc.SetDoc(c.doc);
        doc.FindElem();
        EXPECT_EQ(Show(S(doc.GetData())), Show(c.data));
    }
    CVTXmlParser doc;
    doc.SetDoc(u"<a>t<b/></a>");
    doc.FindChildElem();
    EXPECT_EQ(S(doc.GetChildData()), u"");
}

TEST(Reading, AttributeValues) {
    const struct {
        const char16_t* tag;
        const char16_t* name;
        const char16_t* value;
    } cases[] = {
        {u"<e k=\"v\"/>", u"k", u"v"},
        {u"<e k='a\"b'/>", u"k", u"a\"b"},
        {u"<e k = \"v\"/>", u"k", u"v"},
        {u"<e k=v/>", u"k", u"v/"},
        {u"<e k/>", u"k", u"k"},
        {u"<e k=\"\"/>", u"k", u""},
        {u"<e k=\"1\" k=\"2\"/>", u"k", u"1"},
        {u"<e k=\"&lt;&#233;\"/>", u"k", u"<\u00E9"},
        {u"<e a=\"1\"/>", u"e", u""},
        {u"<e a=\"1\"/>", nullptr, u""},
        {u"<e a=\"1\"/>", u"a=x", u"1"},
        {u"<e/ k=\"v\">", u"k", u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.tag));
        CVTXmlParser doc;
        doc.SetDoc(c.tag);
        doc.FindElem();
        EXPECT_EQ(Show(S(doc.GetAttrib(c.name))), Show(c.value));
    }
}

TEST(Reading, AttributeNamesByIndex) {
    const struct {
        const char16_t* tag;
        std::vector<std::u16string> names; // index 0, 1, ... then one more gives ""
    } cases[] = {
        {u"<a b=\"1\" c=\"2\"/>", {u"b", u"c"}}, {u"<a/>", {}},
        {u"<a b c=\"1\">", {u"b", u"c"}},        {u"<a \"x\" b=\"1\">", {u"b"}},
        {u"<a b&#120;=\"1\"/>", {u"b&#120;"}},   {u"<a k=\"1\" k=\"2\"/>", {u"k", u"k"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.tag));
        CVTXmlParser doc;
        doc.SetDoc(c.tag);
        doc.FindElem();
        for (size_t i = 0; i < c.names.size(); ++i)
            EXPECT_EQ(S(doc.GetAttribName(int(i))), c.names[i]);
        EXPECT_EQ(S(doc.GetAttribName(int(c.names.size()))), u"");
        EXPECT_EQ(S(doc.GetAttribName(-1)), u"");
    }
}

TEST(Reading, NamesAndMisses) {
    CVTXmlParser doc;
    EXPECT_EQ(S(doc.GetTagName()), u"");
    doc.SetDoc(u"<a;b/>");
    EXPECT_EQ(S(doc.GetTagName()), u"");
    EXPECT_EQ(S(doc.GetChildTagName()), u"");
    EXPECT_EQ(S(doc.GetChildAttrib(u"x")), u"");
    EXPECT_EQ(S(doc.GetChildSubDoc()), u"");
    doc.FindElem();
    const vtchar* first = doc.GetTagName();
    EXPECT_EQ(S(first), u"a");
    doc.GetAttribName(0);
    EXPECT_EQ(S(first), u""); // the pointer shows the latest computed result
}

TEST(Reading, SubDocumentCarriesItsLineEnd) {
    const struct {
        const char16_t* doc;
        const char16_t* sub;
    } cases[] = {
        {u"<r><a>x</a>\r\n<b/></r>", u"<a>x</a>\r\n"},
        {u"<r><a>x</a>\r\n text</r>", u"<a>x</a>"},
        {u"<r><a>x</a></r>", u"<a>x</a>"},
    };
    for (const auto& c : cases) {
        CVTXmlParser doc;
        doc.SetDoc(c.doc);
        doc.FindChildElem(u"a");
        EXPECT_EQ(Show(S(doc.GetChildSubDoc())), Show(c.sub));
    }
    CVTXmlParser doc;
    doc.SetDoc(u"<a>x</a> \r\n");
    doc.FindElem();
    EXPECT_EQ(Show(S(doc.GetSubDoc())), Show(u"<a>x</a> \r\n")); // the end of the text follows
}

TEST(Reading, NonElementNodePositionsAtEngineLevel) {
    // No exported operation moves to such a node; the engine answers anyway.
    XmlEngine e(u"<r>t&amp;<![CDATA[c]]><?pi a=\"1\"?><!--note--></x><!DOCTYPE dt></r>");
    const std::u16string_view text = e.m_docText.View();
    auto at = [&](const char16_t* piece) { return int32_t(text.find(piece)); };
    const struct {
        int32_t type;
        const char16_t* piece;
        int32_t length;
        const char16_t* name;
        const char16_t* data;
    } cases[] = {
        {NodeText, u"t&amp;", 6, u"#text", u"t&"},
        {NodeCData, u"<![CDATA[", 13, u"#cdata-section", u"c"},
        {NodeProcessing, u"<?pi", 12, u"pi", u"pi a=\"1\""},
        {NodeComment, u"<!--", 11, u"#comment", u"note"},
        {NodeLoneEndTag, u"</x>", 4, u"x", u"x"},
        {NodeDocType, u"<!DOCTYPE", 13, u"dt", u"<!DOCTYPE dt>"},
    };
    for (const auto& c : cases) {
        e.m_mainIndex = 1;
        e.m_nodeType = c.type;
        e.m_nodeOffset = at(c.piece);
        e.m_nodeLength = c.length;
        EXPECT_EQ(Show(e.NodeName()), Show(c.name));
        EXPECT_EQ(Show(e.ElementData(1)), Show(c.data));
    }
    e.m_nodeType = NodeProcessing;
    e.m_nodeOffset = at(u"<?pi");
    e.m_nodeLength = 12;
    EXPECT_EQ(e.AttribName(0), u"a");
    EXPECT_EQ(e.AttribValue(1, u"a"), u"1");
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

} // namespace

namespace {

// The attribute index must give what a scan of the tag from its start gives,
// whatever order the reads come in, and forget a tag once the text changes.
TEST(Reading, AttributeIndexAgreesWithAFreshScan) {
    const char16_t alphabet[] = u"ab=\"' />?\t\u00E9";
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
            tag += alphabet[next(11)];
        XmlEngine e((tag + u"/>").c_str());
        if (e.Rec(0).firstChild == 0) continue;
        e.FindElem(nullptr);
        const int32_t start = e.Rec(e.m_mainIndex).start + 1;
        AttribIndex kept;
        kept.Select(1, start);
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
            for (int32_t index = 0; index < 8; ++index) {
                TokenCursor fresh(e.m_docText.c_str(), 0, start);
                WideString expect = ScanAttrib(fresh, nullptr, index) ? TokenText(fresh) : u"";
                ASSERT_EQ(e.AttribName(index), expect)
                    << Show(WideString(e.m_docText.View())) << " index " << index;
            }
            for (const char16_t* name : written) {
                TokenCursor fresh(e.m_docText.c_str(), 0, start);
                const WideString expect =
                    ScanAttrib(fresh, name, 0)
                        ? DecodeText(fresh.text + fresh.tokenStart, fresh.TokenLength(), 0)
                        : u"";
                ASSERT_EQ(e.AttribValue(e.m_mainIndex, name), expect)
                    << Show(WideString(e.m_docText.View())) << " " << Show(name);
            }
        }
    }
}

} // namespace
