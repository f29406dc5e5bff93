// Tests of the exported class: a new object, SetDoc and GetDoc, computed
// results, and copying and moving whole documents.
#include <gtest/gtest.h>

#include <utility>

#include "vetra/xml_parser.h"

namespace {

std::u16string S(const vtchar* p) {
    return std::u16string(p);
}

TEST(XmlParser, NewObjectIsAnEmptyDocument) {
    // A new object, and one whose document was set to null or to the empty
    // text, behave alike.
    for (int how = 0; how < 3; ++how) {
        CVTXmlParser doc;
        if (how > 0) {
            doc.SetDoc(u"<a><b/></a>");
            EXPECT_EQ(doc.SetDoc(how == 1 ? nullptr : u""), 0);
        }
        EXPECT_EQ(S(doc.GetDoc()), u"");
        EXPECT_EQ(doc.FindElem(), 0);
        EXPECT_EQ(doc.FindElem(u"a"), 0);
        EXPECT_EQ(S(doc.GetTagName()), u"");
        EXPECT_EQ(doc.IntoElem(), 0);
        EXPECT_EQ(doc.OutOfElem(), 0);
        EXPECT_EQ(S(doc.GetResultLog()), u"");
    }
}

TEST(XmlParser, SetDocResults) {
    const struct {
        const vtchar* text;
        int result;
    } cases[] = {
        {nullptr, 0}, {u"", 0}, {u"<a/>", 1}, {u"<a/><b/>", 0}, {u"text", 0}, {u"<a>", 0},
    };
    for (const auto& c : cases) {
        CVTXmlParser doc;
        EXPECT_EQ(doc.SetDoc(c.text), c.result);
        EXPECT_EQ(S(doc.GetDoc()), c.text ? S(c.text) : u"");
    }
}

TEST(XmlParser, SetDocWithItsOwnTextParsesItAgain) {
    CVTXmlParser doc;
    ASSERT_EQ(doc.SetDoc(u"<r><a/></r>"), 1);
    EXPECT_EQ(doc.SetDoc(doc.GetDoc()), 1);
    EXPECT_EQ(S(doc.GetDoc()), u"<r><a/></r>");
}

TEST(XmlParser, GetDocIsUnaffectedByComputedResults) {
    CVTXmlParser doc;
    doc.SetDoc(u"<a/>");
    const vtchar* text = doc.GetDoc();
    doc.GetResultLog();
    doc.GetResultLog();
    EXPECT_EQ(text, doc.GetDoc());
    EXPECT_EQ(S(text), u"<a/>");
}

TEST(XmlParser, CopiesAreIndependent) {
    CVTXmlParser a;
    a.SetDoc(u"<r><x/></r>");
    CVTXmlParser b(a);
    EXPECT_NE(a.GetDoc(), b.GetDoc());
    EXPECT_EQ(S(b.GetDoc()), u"<r><x/></r>");
    a.SetDoc(u"<other/>");
    EXPECT_EQ(S(b.GetDoc()), u"<r><x/></r>");

    CVTXmlParser c;
    c.SetDoc(u"<c/>");
    c = b;
    b.SetDoc(nullptr);
    EXPECT_EQ(S(c.GetDoc()), u"<r><x/></r>");
    c = c; // self-assignment keeps the document
    EXPECT_EQ(S(c.GetDoc()), u"<r><x/></r>");
}

TEST(XmlParser, MovesTransferTheDocument) {
    CVTXmlParser a;
    a.SetDoc(u"<moved/>");
    const vtchar* text = a.GetDoc();
    CVTXmlParser b(std::move(a));
    EXPECT_EQ(b.GetDoc(), text);   // no copy of the text
    EXPECT_EQ(S(a.GetDoc()), u""); // the source is an empty document
    EXPECT_EQ(a.SetDoc(u"<again/>"), 1);

    CVTXmlParser c;
    c.SetDoc(u"<c/>");
    c = std::move(b);
    EXPECT_EQ(S(c.GetDoc()), u"<moved/>");
    EXPECT_EQ(S(b.GetDoc()), u"<c/>"); // assignment exchanges
}

} // namespace
