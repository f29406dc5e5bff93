// Tests of writing attributes and data: the tag or element text each case
// produces, values round-tripping through the readers, and refusals.
#include <gtest/gtest.h>

#include "support/doc_script.h"

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
        {u"<e a=\"1\"/>", u"v", u"<e a=\"1\" k=\"v\"/>"},
        // An existing value is replaced in place, always double-quoted.
        {u"<e k=\"old\"/>", u"v", u"<e k=\"v\"/>"},
        {u"<e k='old'/>", u"v", u"<e k=\"v\"/>"},
        {u"<e k=old />", u"v", u"<e k=\"v\" />"},
        {u"<e k = \"old\"/>", u"v", u"<e k = \"v\"/>"},
        {u"<e k/>", u"v", u"<e k=\"v\"/>"},
        {u"<e/>", u"", u"<e k=\"\"/>"},
        {u"<e/>", u"a<b\"c", u"<e k=\"a&lt;b&quot;c\"/>"},
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

TEST(DataEdit, ElementAfterSettingData) {
    const struct {
        const char16_t* before;
        const char16_t* text;
        int flags;
        const char16_t* after;
    } cases[] = {
        {u"<e/>", u"x", 0, u"<e>x</e>"},
        {u"<e />", u"x", 0, u"<e >x</e>"},
        {u"<e/>", u"", 0, u"<e></e>"},
        {u"<e>", u"x", 0, u"<e>x</e>"},
        {u"<e>t<!--c-->u</e>", u"x", 0, u"<e>x</e>"},
        {u"<e>old</e>", u"", 0, u"<e></e>"},
        {u"<e>old</e>", u"a<b", 0, u"<e>a&lt;b</e>"},
        {u"<e>old</e>", u"a<b", 1, u"<e><![CDATA[a<b]]></e>"},
        {u"<e>old</e>", u"p]]>q", 1, u"<e><![CDATA[p]]]]><![CDATA[>q]]></e>"},
        {u"<e>old</e>", u"", 1, u"<e><![CDATA[]]></e>"},
        {u"<e>old</e>", u"&#169;&", 8, u"<e>&#169;&amp;</e>"},
        {u"<e>old</e>", u"it's", 0x100, u"<e>it&apos;s</e>"},
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

TEST(DataEdit, Refusals) {
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
}

} // namespace
