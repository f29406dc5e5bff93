// Tests of writing attributes and data: the tag or element text each case
// produces, values round-tripping through the readers, and refusals.
#include <gtest/gtest.h>

#include "support/doc_script.h"

using namespace vetra::test;

namespace {

TEST(AttribEdit, TagAfterSettingAnAttribute) {
    const struct {
        const vtchar* before;
        const vtchar* value;
        const vtchar* after;
    } cases[] = {
        {VT("<e/>"), VT("v"), VT("<e k=\"v\"/>")},
        {VT("<e />"), VT("v"), VT("<e k=\"v\" />")},
        {VT("<e></e>"), VT("v"), VT("<e k=\"v\"></e>")},
        {VT("<e a=\"1\"/>"), VT("v"), VT("<e a=\"1\" k=\"v\"/>")},
        // An existing value is replaced in place, always double-quoted.
        {VT("<e k=\"old\"/>"), VT("v"), VT("<e k=\"v\"/>")},
        {VT("<e k='old'/>"), VT("v"), VT("<e k=\"v\"/>")},
        {VT("<e k=old />"), VT("v"), VT("<e k=\"v\" />")},
        {VT("<e k = \"old\"/>"), VT("v"), VT("<e k = \"v\"/>")},
        {VT("<e k/>"), VT("v"), VT("<e k=\"v\"/>")},
        {VT("<e/>"), VT(""), VT("<e k=\"\"/>")},
        {VT("<e/>"), VT("a<b\"c"), VT("<e k=\"a&lt;b&quot;c\"/>")},
        {VT("<e/>"), VT("line\r\n\tend"), VT("<e k=\"line\r\n\tend\"/>")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.before));
        CVTXmlParser doc;
        doc.SetDoc(c.before);
        ASSERT_EQ(doc.FindElem(), 1);
        EXPECT_EQ(doc.SetAttrib(VT("k"), c.value), 1);
        EXPECT_EQ(Show(S(doc.GetDoc())), Show(c.after));
        EXPECT_EQ(S(doc.GetAttrib(VT("k"))), c.value);
    }
}

TEST(AttribEdit, OverloadsAndRefusals) {
    CVTXmlParser doc;
    doc.SetDoc(VT("<e/>"));
    EXPECT_EQ(doc.SetAttrib(VT("k"), VT("v")), 0); // no main position
    EXPECT_EQ(doc.SetChildAttrib(VT("k"), VT("v")), 0);
    EXPECT_EQ(S(doc.GetDoc()), VT("<e/>"));
    doc.FindElem();
    EXPECT_EQ(doc.AddAttrib(VT("k"), VT("1")), 1);
    EXPECT_EQ(doc.AddAttrib(VT("k"), VT("2")), 1); // still one attribute
    EXPECT_EQ(doc.AddAttrib(VT("i"), -5), 1);
    EXPECT_EQ(doc.AddAttrib(VT("d"), 0.5), 1);
    EXPECT_EQ(doc.AddAttrib(VT("u"), 7u), 1);
    EXPECT_EQ(doc.AddAttrib(VT("l"), -1LL), 1);
    EXPECT_EQ(doc.AddAttrib(VT("q"), 1ULL), 1);
    EXPECT_EQ(doc.AddAttrib(VT("n"), nullptr), 1);
    EXPECT_EQ(doc.AddAttrib(VT("big"), -1e300), 0);
    EXPECT_EQ(S(doc.GetDoc()),
              VT("<e k=\"2\" i=\"-5\" d=\"0.500000\" u=\"7\" l=\"-1\" q=\"1\" n=\"\"/>"));
    EXPECT_EQ(doc.AddChildElem(VT("c")), 1);
    EXPECT_EQ(doc.SetChildAttrib(VT("x"), 3), 1);
    EXPECT_EQ(S(doc.GetChildAttrib(VT("x"))), VT("3"));
}

TEST(DataEdit, ElementAfterSettingData) {
    const struct {
        const vtchar* before;
        const vtchar* text;
        int flags;
        const vtchar* after;
    } cases[] = {
        {VT("<e/>"), VT("x"), 0, VT("<e>x</e>")},
        {VT("<e />"), VT("x"), 0, VT("<e >x</e>")},
        {VT("<e/>"), VT(""), 0, VT("<e></e>")},
        {VT("<e>"), VT("x"), 0, VT("<e>x</e>")},
        {VT("<e>t<!--c-->u</e>"), VT("x"), 0, VT("<e>x</e>")},
        {VT("<e>old</e>"), VT(""), 0, VT("<e></e>")},
        {VT("<e>old</e>"), VT("a<b"), 0, VT("<e>a&lt;b</e>")},
        {VT("<e>old</e>"), VT("a<b"), 1, VT("<e><![CDATA[a<b]]></e>")},
        {VT("<e>old</e>"), VT("p]]>q"), 1, VT("<e><![CDATA[p]]]]><![CDATA[>q]]></e>")},
        {VT("<e>old</e>"), VT(""), 1, VT("<e><![CDATA[]]></e>")},
        {VT("<e>old</e>"), VT("&#169;&"), 8, VT("<e>&#169;&amp;</e>")},
        {VT("<e>old</e>"), VT("it's"), 0x100, VT("<e>it&apos;s</e>")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.before));
        CVTXmlParser doc;
        doc.SetDoc(c.before);
        ASSERT_EQ(doc.FindElem(), 1);
        EXPECT_EQ(doc.SetData(c.text, c.flags), 1);
        EXPECT_EQ(Show(S(doc.GetDoc())), Show(c.after));
        // Reading gives the text back; a kept reference comes back decoded.
        vtstring expect = c.flags == 8 ? VT("\u00A9&") : c.text;
        EXPECT_EQ(Show(S(doc.GetData())), Show(expect));
    }
}

TEST(DataEdit, Refusals) {
    CVTXmlParser doc;
    doc.SetDoc(VT("<r><a/></r>"));
    EXPECT_EQ(doc.SetData(VT("x")), 0); // no main position
    EXPECT_EQ(doc.SetChildData(VT("x")), 0);
    doc.FindElem();
    EXPECT_EQ(doc.SetData(VT("x")), 0); // r has a child element
    EXPECT_EQ(S(doc.GetDoc()), VT("<r><a/></r>"));
    doc.FindChildElem();
    EXPECT_EQ(doc.RemoveChildElem(), 1);
    EXPECT_EQ(doc.SetData(VT("x")), 1);
    EXPECT_EQ(S(doc.GetDoc()), VT("<r>x</r>"));
}

} // namespace
