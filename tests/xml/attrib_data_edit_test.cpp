// Tests of writing attributes and data: the tag or element text each case
// produces, values round-tripping through the readers, and the records
// behind the edit moving by the right amount.
#include <gtest/gtest.h>

#include "support/doc_script.h"
#include "support/record_check.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;
using namespace vetra::test;

namespace {

TEST(AttribEdit, TagAfterSettingAnAttribute) {
    const struct {
        const char16_t* before;
        const char16_t* value;
        const char16_t* after;
    } cases[] = {
        {u"<e/>", u"v", u"<e k=\"v\"/>"},
        {u"<e />", u"v", u"<e k=\"v\" />"},
        {u"<e></e>", u"v", u"<e k=\"v\"></e>"},
        {u"<e   ></e>", u"v", u"<e k=\"v\"   ></e>"},
        {u"<e a=\"1\"/>", u"v", u"<e a=\"1\" k=\"v\"/>"},
        {u"<e a=\"1\" />", u"v", u"<e a=\"1\" k=\"v\" />"},
        {u"<e k=\"old\"/>", u"v", u"<e k=\"v\"/>"},
        {u"<e k='old'/>", u"v", u"<e k=\"v\"/>"},
        {u"<e k=old />", u"v", u"<e k=\"v\" />"},
        {u"<e k = \"old\"/>", u"v", u"<e k = \"v\"/>"},
        {u"<e k=\"\"/>", u"v", u"<e k=\"v\"/>"},
        {u"<e k/>", u"v", u"<e k=\"v\"/>"},
        {u"<e k=\"old\"/>", u"", u"<e k=\"\"/>"},
        {u"<e/>", u"a<b\"c", u"<e k=\"a&lt;b&quot;c\"/>"},
        {u"<e/>", u"", u"<e k=\"\"/>"},
        {u"<e k='a\"b'/>", u"a\"b", u"<e k=\"a&quot;b\"/>"},
        {u"<e/>", u"line\r\n\tend", u"<e k=\"line\r\n\tend\"/>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.before));
        CVTXmlParser doc;
        doc.SetDoc(c.before);
        ASSERT_EQ(doc.FindElem(), 1);
        EXPECT_EQ(doc.SetAttrib(u"k", c.value), 1);
        EXPECT_EQ(Show(S(doc.GetDoc())), Show(c.after));
        EXPECT_EQ(S(doc.GetAttrib(u"k")), c.value);
    }
}

TEST(AttribEdit, OverloadsAndRefusals) {
    CVTXmlParser doc;
    doc.SetDoc(u"<e/>");
    EXPECT_EQ(doc.SetAttrib(u"k", u"v"), 0); // no main position
    EXPECT_EQ(doc.SetChildAttrib(u"k", u"v"), 0);
    EXPECT_EQ(S(doc.GetDoc()), u"<e/>");
    doc.FindElem();
    EXPECT_EQ(doc.AddAttrib(u"k", u"1"), 1);
    EXPECT_EQ(doc.AddAttrib(u"k", u"2"), 1); // still one attribute
    EXPECT_EQ(doc.AddAttrib(u"i", -5), 1);
    EXPECT_EQ(doc.AddAttrib(u"d", 0.5), 1);
    EXPECT_EQ(doc.AddAttrib(u"u", 7u), 1);
    EXPECT_EQ(doc.AddAttrib(u"l", -1LL), 1);
    EXPECT_EQ(doc.AddAttrib(u"q", 1ULL), 1);
    EXPECT_EQ(doc.AddAttrib(u"n", nullptr), 1);
    EXPECT_EQ(doc.AddAttrib(u"big", -1e300), 0);
    EXPECT_EQ(S(doc.GetDoc()),
              u"<e k=\"2\" i=\"-5\" d=\"0.500000\" u=\"7\" l=\"-1\" q=\"1\" n=\"\"/>");
    EXPECT_EQ(doc.AddChildElem(u"c"), 1);
    EXPECT_EQ(doc.SetChildAttrib(u"x", 3), 1);
    EXPECT_EQ(S(doc.GetChildAttrib(u"x")), u"3");
}

TEST(AttribEdit, RecordsBehindTheTagMove) {
    XmlEngine e(u"<r><e/><f/></r>");
    e.FindElem(nullptr);
    e.FindChildElem(u"e");
    int32_t r = e.m_mainIndex, el = e.m_childIndex, f = e.Rec(el).nextSibling;
    int32_t fLength = e.Rec(f).length, fStart = e.Rec(f).start, rLength = e.Rec(r).length;
    ASSERT_TRUE(e.WriteAttrib(el, u"k", u"12345", 0)); // ` k="12345"` is 10 characters
    EXPECT_EQ(e.Rec(r).length, rLength + 10);
    EXPECT_EQ(e.Rec(f).start, fStart + 10);
    EXPECT_EQ(e.Rec(f).length, fLength);
    EXPECT_EQ(CheckRecords(e), "");
    // On an element with children, the children move with the tag.
    e.ResetPos();
    e.FindElem(nullptr);
    ASSERT_TRUE(e.WriteAttrib(r, u"z", u"1", 0));
    EXPECT_EQ(e.FindChildElem(u"f"), 1);
    EXPECT_EQ(e.ElementName(e.m_childIndex), u"f");
    EXPECT_EQ(CheckRecords(e), "");
}

TEST(DataEdit, ElementAfterSettingData) {
    const struct {
        const char16_t* before;
        const char16_t* text;
        int flags;
        const char16_t* after;
    } cases[] = {
        {u"<e/>", u"x", 0, u"<e>x</e>"},
        {u"<e />", u"x", 0, u"<e >x</e>"},
        {u"<e k=\"v\"/>", u"x", 0, u"<e k=\"v\">x</e>"},
        {u"<e></e>", u"x", 0, u"<e>x</e>"},
        {u"<e>old</e>", u"x", 0, u"<e>x</e>"},
        {u"<e>\r\n</e>", u"x", 0, u"<e>x</e>"},
        {u"<e>t<!--c-->u</e>", u"x", 0, u"<e>x</e>"},
        {u"<e>old</e>", u"", 0, u"<e></e>"},
        {u"<e/>", u"", 0, u"<e></e>"},
        {u"<e>old</e>", u"a<b", 0, u"<e>a&lt;b</e>"},
        {u"<e>old</e>", u"a<b", 1, u"<e><![CDATA[a<b]]></e>"},
        {u"<e>old</e>", u"p]]>q", 1, u"<e><![CDATA[p]]]]><![CDATA[>q]]></e>"},
        {u"<e>old</e>", u"", 1, u"<e><![CDATA[]]></e>"},
        {u"<e>old</e>", u"&#169;&", 8, u"<e>&#169;&amp;</e>"},
        {u"<e>old</e>", u"it's", 0x100, u"<e>it&apos;s</e>"},
        {u"<e>", u"x", 0, u"<e>x</e>"},
        {u"<e>old</e>", u"a  ", 0, u"<e>a  </e>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.before));
        CVTXmlParser doc;
        doc.SetDoc(c.before);
        ASSERT_EQ(doc.FindElem(), 1);
        EXPECT_EQ(doc.SetData(c.text, c.flags), 1);
        EXPECT_EQ(Show(S(doc.GetDoc())), Show(c.after));
        // Reading gives the text back; a kept reference comes back decoded.
        std::u16string expect = c.flags == 8 ? u"\u00A9&" : c.text;
        EXPECT_EQ(Show(S(doc.GetData())), Show(expect));
    }
}

TEST(DataEdit, RefusalsAndRecords) {
    CVTXmlParser doc;
    doc.SetDoc(u"<r><a/></r>");
    EXPECT_EQ(doc.SetData(u"x"), 0); // no main position
    EXPECT_EQ(doc.SetChildData(u"x"), 0);
    doc.FindElem();
    EXPECT_EQ(doc.SetData(u"x"), 0); // r has a child element
    EXPECT_EQ(S(doc.GetDoc()), u"<r><a/></r>");
    doc.FindChildElem();
    EXPECT_EQ(doc.RemoveChildElem(), 1);
    EXPECT_EQ(doc.SetData(u"x"), 1);
    EXPECT_EQ(S(doc.GetDoc()), u"<r>x</r>");

    XmlEngine e(u"<r><e/><f/></r>");
    e.FindElem(nullptr);
    e.FindChildElem(u"e");
    int32_t el = e.m_childIndex, f = e.Rec(el).nextSibling;
    ASSERT_TRUE(e.WriteData(el, u"x", 0));
    EXPECT_EQ(e.Rec(el).length, 8);
    EXPECT_EQ(e.Rec(el).StartTagChars(), 3);
    EXPECT_EQ(e.Rec(el).EndTagChars(), 4);
    EXPECT_EQ(e.Rec(1).length, 15 + 4);
    EXPECT_EQ(e.Rec(f).start, 7 + 4);
    EXPECT_EQ(e.m_mainIndex, 1); // the position doesn't move
    EXPECT_EQ(e.m_childIndex, el);
    EXPECT_EQ(CheckRecords(e, {true}), "");
}

TEST(DataEdit, ClearsFaultInsideOnlyOnTheElement) {
    XmlEngine e(u"<r><e><!x></e></r>");
    int32_t el = e.Rec(1).firstChild;
    ASSERT_TRUE(e.Rec(el).Has(ElemFaultInside));
    e.FindElem(nullptr);
    e.FindChildElem(nullptr);
    ASSERT_TRUE(e.WriteData(el, u"ok", 0));
    EXPECT_FALSE(e.Rec(el).Has(ElemFaultInside));
    EXPECT_TRUE(e.Rec(0).Has(ElemIllFormed));
    EXPECT_EQ(e.m_docText.View(), u"<r><e>ok</e></r>");
}

} // namespace
