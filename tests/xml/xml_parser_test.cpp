// Tests of the exported class: a new object, SetDoc and GetDoc, and copying
// and moving whole documents.
#include <gtest/gtest.h>

#include <utility>

#include "support/doc_script.h"

using vetra::test::S;

namespace {

TEST(XmlParser, NewOrClearedObjectIsAnEmptyDocument) {
    for (int how = 0; how < 3; ++how) { // new, set to null, set to ""
        CVTXmlParser doc;
        if (how > 0) {
            doc.SetDoc(VT("<a><b/></a>"));
            EXPECT_EQ(doc.SetDoc(how == 1 ? nullptr : VT("")), 0);
        }
        EXPECT_EQ(S(doc.GetDoc()), VT(""));
        EXPECT_EQ(doc.FindElem(VT("a")), 0);
        EXPECT_EQ(S(doc.GetTagName()), VT(""));
        EXPECT_EQ(doc.IntoElem(), 0);
        EXPECT_EQ(doc.OutOfElem(), 0);
        EXPECT_EQ(S(doc.GetResultLog()), VT(""));
    }
}

TEST(XmlParser, SetDocResults) {
    for (const auto& [text, result] : {std::pair<const vtchar*, int>{VT("<a/>"), 1},
                                       {VT("<a/><b/>"), 0},
                                       {VT("text"), 0},
                                       {VT("<a>"), 0}}) {
        CVTXmlParser doc;
        EXPECT_EQ(doc.SetDoc(text), result);
        EXPECT_EQ(S(doc.GetDoc()), S(text));
    }
    // Its own text parses again; computed results leave the text in place.
    CVTXmlParser doc;
    ASSERT_EQ(doc.SetDoc(VT("<r><a/></r>")), 1);
    EXPECT_EQ(doc.SetDoc(doc.GetDoc()), 1);
    const vtchar* text = doc.GetDoc();
    doc.GetResultLog();
    doc.GetResultLog();
    EXPECT_EQ(text, doc.GetDoc());
    EXPECT_EQ(S(text), VT("<r><a/></r>"));
}

TEST(XmlParser, CopiesAreIndependentAndMovesTransfer) {
    CVTXmlParser a;
    a.SetDoc(VT("<r><x/></r>"));
    CVTXmlParser b(a);
    EXPECT_NE(a.GetDoc(), b.GetDoc());
    a.SetDoc(VT("<other/>"));
    EXPECT_EQ(S(b.GetDoc()), VT("<r><x/></r>"));
    CVTXmlParser c;
    c.SetDoc(VT("<c/>"));
    c = b;
    b.SetDoc(nullptr);
    c = c; // self-assignment keeps the document
    EXPECT_EQ(S(c.GetDoc()), VT("<r><x/></r>"));

    const vtchar* text = c.GetDoc();
    CVTXmlParser d(std::move(c));
    EXPECT_EQ(d.GetDoc(), text);      // no copy of the text
    EXPECT_EQ(S(c.GetDoc()), VT("")); // the source is an empty document
    EXPECT_EQ(c.SetDoc(VT("<again/>")), 1);
    d = std::move(c);
    EXPECT_EQ(S(d.GetDoc()), VT("<again/>"));
    EXPECT_EQ(S(c.GetDoc()), VT("<r><x/></r>")); // assignment exchanges
}

} // namespace
