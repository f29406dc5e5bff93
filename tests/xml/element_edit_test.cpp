// Tests of adding and removing elements and sub-documents: the text each
// operation produces, the position afterwards, and records kept true
// (checked against the invariants and against a fresh parse).
#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "support/doc_script.h"
#include "support/record_check.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;
using namespace vetra::test;

namespace {

struct EditCase {
    const char16_t* before;
    const char* place; // position script, see Place()
    std::function<int(CVTXmlParser&)> edit;
    const char16_t* after;
    int result;
};

TEST(ElementEdit, TextOfEachOperation) {
    const EditCase cases[] = {
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a"); }, u"<a/>\r\n", 1},
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a", u"x"); }, u"<a>x</a>\r\n", 1},
        {u"<a/>\r\n", "m a", [](CVTXmlParser& d) { return d.AddElem(u"b"); }, u"<a/>\r\n<b/>\r\n",
         1},
        {u"<a/>", "m a", [](CVTXmlParser& d) { return d.AddElem(u"b"); }, u"<a/><b/>\r\n", 1},
        {u"<a/>\r\n", "m a", [](CVTXmlParser& d) { return d.AddChildElem(u"b"); },
         u"<a>\r\n<b/>\r\n</a>\r\n", 1},
        {u"<a />", "m a", [](CVTXmlParser& d) { return d.AddChildElem(u"b"); },
         u"<a >\r\n<b/>\r\n</a>", 1},
        {u"<a></a>", "m a", [](CVTXmlParser& d) { return d.AddChildElem(u"b"); },
         u"<a>\r\n<b/>\r\n</a>", 1},
        {u"<a>\r\n</a>", "m a", [](CVTXmlParser& d) { return d.AddChildElem(u"b"); },
         u"<a>\r\n<b/>\r\n</a>", 1},
        {u"<a>x</a>", "m a", [](CVTXmlParser& d) { return d.AddChildElem(u"b"); },
         u"<a>x<b/>\r\n</a>", 1},
        {u"<a>\r\n<b/>\r\n</a>", "m a c b",
         [](CVTXmlParser& d) { return d.AddChildElem(u"c", u"y"); },
         u"<a>\r\n<b/>\r\n<c>y</c>\r\n</a>", 1},
        {u"<a>\r\n<b/>\r\n</a>", "m a", [](CVTXmlParser& d) { return d.AddChildElem(u"c"); },
         u"<a>\r\n<b/>\r\n<c/>\r\n</a>", 1},
        {u"<a>\r\n<b/>\r\n</a>", "m a in m b", [](CVTXmlParser& d) { return d.InsertElem(u"c"); },
         u"<a>\r\n<c/>\r\n<b/>\r\n</a>", 1},
        {u"<a>\r\n<b/>\r\n</a>", "m a in", [](CVTXmlParser& d) { return d.InsertElem(u"c"); },
         u"<a>\r\n<c/>\r\n<b/>\r\n</a>", 1},
        {u"<a>\r\n<b/>\r\n</a>", "m a in", [](CVTXmlParser& d) { return d.AddElem(u"c"); },
         u"<a>\r\n<b/>\r\n<c/>\r\n</a>", 1},
        {u"<a>x</a>", "m a in", [](CVTXmlParser& d) { return d.InsertElem(u"c"); },
         u"<a><c/>\r\nx</a>", 1},
        {u"<a><b/>  y</a>", "m a in m b", [](CVTXmlParser& d) { return d.AddElem(u"c"); },
         u"<a><b/><c/>\r\n  y</a>", 1},
        {u"<r><a></r>", "m r in m a", [](CVTXmlParser& d) { return d.AddChildElem(u"b"); },
         u"<r><a>\r\n<b/>\r\n</a></r>", 1},
        {u"<a/>\r\n", "m a", [](CVTXmlParser& d) { return d.AddChildSubDoc(u" <b>x</b> "); },
         u"<a>\r\n<b>x</b>\r\n</a>\r\n", 1},
        {u"<a/>\r\n", "m a", [](CVTXmlParser& d) { return d.AddChildSubDoc(u"<b/><c/>"); },
         u"<a>\r\n<b/><c/>\r\n</a>\r\n", 0},
        {u"<a/>\r\n", "m a", [](CVTXmlParser& d) { return d.AddChildSubDoc(u"<b><c></b>"); },
         u"<a><b><c></b></a>\r\n", 0},
        {u"<a/>\r\n", "m a", [](CVTXmlParser& d) { return d.AddChildSubDoc(u"t"); },
         u"<a>t</a>\r\n", 0},
        {u"<a>\r\n<b/>\r\n<c/>\r\n</a>", "m a c b",
         [](CVTXmlParser& d) { return d.RemoveChildElem(); }, u"<a>\r\n<c/>\r\n</a>", 1},
        {u"<a>\r\n<b/>\r\n</a>", "m a c b", [](CVTXmlParser& d) { return d.RemoveChildElem(); },
         u"<a>\r\n</a>", 1},
        {u"<a>x<b/>y</a>", "m a c b", [](CVTXmlParser& d) { return d.RemoveChildElem(); },
         u"<a>xy</a>", 1},
        {u"<a><b/> y</a>", "m a c b", [](CVTXmlParser& d) { return d.RemoveChildElem(); },
         u"<a> y</a>", 1},
        {u"<a/>\r\n", "m a", [](CVTXmlParser& d) { return d.RemoveElem(); }, u"", 1},
        // Refusals change nothing.
        {u"<a/>", "", [](CVTXmlParser& d) { return d.AddChildElem(u"b"); }, u"<a/>", 0},
        {u"<a/>", "", [](CVTXmlParser& d) { return d.AddChildSubDoc(u"<b/>"); }, u"<a/>", 0},
        {u"<a/>", "", [](CVTXmlParser& d) { return d.RemoveElem(); }, u"<a/>", 0},
        {u"<a/>", "m a", [](CVTXmlParser& d) { return d.RemoveChildElem(); }, u"<a/>", 0},
        {u"<a/>", "m a", [](CVTXmlParser& d) { return d.AddElem(nullptr); }, u"<a/>", 0},
        // Values and names as given.
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a", u""); }, u"<a/>\r\n", 1},
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a", 1.5); }, u"<a>1.500000</a>\r\n", 1},
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a", -7); }, u"<a>-7</a>\r\n", 1},
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a", 4294967295u); },
         u"<a>4294967295</a>\r\n", 1},
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a", -9223372036854775807LL - 1); },
         u"<a>-9223372036854775808</a>\r\n", 1},
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a", 18446744073709551615ULL); },
         u"<a>18446744073709551615</a>\r\n", 1},
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a", 1e200); }, u"", 0},
        {u"", "", [](CVTXmlParser& d) { return d.AddElem(u"a b", u"x<y"); },
         u"<a b>x&lt;y</a b>\r\n", 1},
        {u"", "", [](CVTXmlParser& d) { return d.AddSubDoc(u""); }, u"", 0},
    };
    for (const EditCase& c : cases) {
        SCOPED_TRACE(Show(c.before) + " | " + c.place + " -> " + Show(c.after));
        CVTXmlParser doc;
        doc.SetDoc(c.before);
        ASSERT_TRUE(Place(doc, c.place));
        EXPECT_EQ(c.edit(doc), c.result);
        EXPECT_EQ(Show(S(doc.GetDoc())), Show(c.after));
    }
}

// The engine behind a parser, for record-level checks.
struct Doc {
    XmlEngine engine;
    explicit Doc(const char16_t* text) { engine.SetDocText(text); }
    std::string Check() { return CheckRecords(engine); }
    // The records of the edited text and of a fresh parse of it agree.
    void ExpectSameAsReparse() {
        XmlEngine fresh(engine.m_docText.c_str());
        std::vector<RecordView> a = DocumentOrder(engine), b = DocumentOrder(fresh);
        ASSERT_EQ(a.size(), b.size());
        for (size_t i = 0; i < a.size(); ++i)
            EXPECT_TRUE(a[i] == b[i]) << "element " << i;
    }
};

TEST(ElementEdit, RecordsAfterAddChildToEmptyElement) {
    Doc d(u"");
    ASSERT_TRUE(d.engine.AddElement(u"a", nullptr, 0));
    ASSERT_TRUE(d.engine.AddElement(u"b", nullptr, EditChild));
    const ElementRecord& a = d.engine.Rec(d.engine.m_mainIndex);
    const ElementRecord& b = d.engine.Rec(d.engine.m_childIndex);
    EXPECT_EQ(a.StartTagChars(), 3);
    EXPECT_EQ(a.EndTagChars(), 4);
    EXPECT_EQ(a.length, 15);
    EXPECT_EQ(b.start, 5);
    EXPECT_EQ(d.Check(), "");
    d.ExpectSameAsReparse();
    // A second child takes the normal path before the end tag.
    ASSERT_TRUE(d.engine.AddElement(u"c", u"x", EditChild));
    EXPECT_EQ(d.engine.m_docText.View(), u"<a>\r\n<b/>\r\n<c>x</c>\r\n</a>\r\n");
    EXPECT_EQ(d.Check(), "");
    d.ExpectSameAsReparse();
}

// Removed records go to the freed chain, every one of a large subtree; new
// elements take records never handed out.
TEST(ElementEdit, RemovingFreesRecordsAndAddingTakesNewOnes) {
    std::u16string text = u"<r><big>";
    for (int i = 0; i < 500; ++i)
        text += u"<e><f/></e>";
    text += u"</big><after/></r>";
    Doc d(text.c_str());
    ASSERT_TRUE(d.engine.FindElem(nullptr) && d.engine.FindChildElem(u"big"));
    int32_t taken = d.engine.m_nextRecord;
    ASSERT_EQ(d.engine.RemoveChildElem(), 1);
    EXPECT_EQ(d.engine.m_nextRecord, taken);
    int freed = 0;
    for (int32_t f = d.engine.m_freedHead; f != 0; f = d.engine.Rec(f).nextSibling)
        ++freed;
    EXPECT_EQ(freed, 1001);
    EXPECT_EQ(d.engine.m_childIndex, 0); // big was the first child
    EXPECT_EQ(d.Check(), "");
    EXPECT_EQ(d.engine.m_docText.View(), u"<r><after/></r>");
    EXPECT_EQ(d.engine.FindChildElem(u"after"), 1);
    EXPECT_TRUE(d.engine.AddElement(u"n", nullptr, EditChild));
    EXPECT_EQ(d.engine.m_childIndex, taken);
    EXPECT_EQ(d.Check(), "");
    d.ExpectSameAsReparse();
}

TEST(ElementEdit, FindAndRemoveLoopSeesEveryElementOnce) {
    CVTXmlParser doc;
    doc.SetDoc(u"<r><a/><b/><a/><a/><c/></r>");
    doc.FindElem();
    doc.IntoElem();
    int removed = 0;
    while (doc.FindElem(u"a"))
        removed += doc.RemoveElem();
    EXPECT_EQ(removed, 3);
    EXPECT_EQ(S(doc.GetDoc()), u"<r><b/><c/></r>");
}

TEST(ElementEdit, RemovingTheOnlyElementLeavesAnEmptyDocument) {
    Doc d(u"<a/>\r\n");
    d.engine.FindElem(nullptr);
    EXPECT_EQ(d.engine.RemoveElem(), 1);
    EXPECT_EQ(d.engine.m_docText.View(), u"");
    EXPECT_EQ(d.engine.Rec(0).length, 0);
    EXPECT_EQ(d.engine.Rec(0).firstChild, 0);
    EXPECT_TRUE(d.engine.AddElement(u"new", nullptr, 0));
    EXPECT_EQ(d.engine.m_docText.View(), u"<new/>\r\n");
    EXPECT_EQ(d.Check(), "");
}

TEST(ElementEdit, SubDocumentsLinkEveryTopLevelElement) {
    Doc d(u"<r>\r\n<first/>\r\n</r>");
    d.engine.FindElem(nullptr);
    d.engine.IntoElem();
    d.engine.FindElem(u"first");
    // Inserted before a first child: the new first element takes the flag.
    EXPECT_FALSE(d.engine.AddSubDocument(u"<x><y>deep</y></x><p/><q/>", EditInsertBefore));
    EXPECT_EQ(d.engine.m_docText.View(), u"<r>\r\n<x><y>deep</y></x><p/><q/>\r\n<first/>\r\n</r>");
    int32_t x = d.engine.m_mainIndex;
    EXPECT_TRUE(d.engine.Rec(x).Has(ElemFirstSibling));
    EXPECT_EQ(d.engine.ElementName(d.engine.Rec(x).nextSibling), u"p");
    EXPECT_EQ(d.Check(), "");
    d.ExpectSameAsReparse();
    // Inner records are true at once: the grandchild reads its data.
    EXPECT_EQ(d.engine.ElementData(d.engine.Rec(x).firstChild), u"deep");
}

TEST(ElementEdit, SubDocumentReportsReplaceTheLog) {
    CVTXmlParser doc;
    doc.SetDoc(u"<a/><b/>");
    EXPECT_EQ(S(doc.GetResultLog()), u"<root_has_sibling/>");
    doc.FindElem(u"a");
    EXPECT_EQ(doc.AddChildSubDoc(u"<c></d></c>"), 0);
    EXPECT_EQ(S(doc.GetResultLog()), u"<lone_end_tag tagname=\"d\" offset=\"3\"/>");
    doc.ResetPos();
    EXPECT_EQ(doc.AddChildSubDoc(u"<c/>"), 0); // no main position: refused, log cleared
    EXPECT_EQ(S(doc.GetResultLog()), u"");
}

} // namespace

namespace {

// Records never lie about the text: edits whose tags the record fields
// can't hold are refused and change nothing.
TEST(ElementEdit, TagsTooLongForTheirFieldsAreRefused) {
    const std::u16string name1021(1021, u'n'), name1020(1020, u'n');
    CVTXmlParser doc;
    EXPECT_EQ(doc.AddElem(name1021.c_str(), u"x"), 0); // end tag of 1,024 characters
    EXPECT_EQ(S(doc.GetDoc()), u"");
    EXPECT_EQ(doc.AddElem(name1021.c_str()), 1); // <name/> needs no end tag
    EXPECT_EQ(doc.AddChildElem(u"c"), 0);        // opening it would need one
    EXPECT_EQ(doc.SetData(u"x"), 0);
    EXPECT_EQ(doc.AddChildSubDoc(u"<c/>"), 0);
    EXPECT_EQ(doc.AddElem(name1020.c_str(), u"x"), 1); // 1,023 fits
    XmlEngine check(doc.GetDoc());
    EXPECT_EQ(CheckRecords(check), "");
}

} // namespace

namespace {

TEST(ElementEdit, PositionAfterEachOperation) {
    const struct {
        const char* place; // in <r><a/><b><c/><d/></b></r>: m = FindElem, c = FindChildElem, in
        std::function<bool(XmlEngine&)> edit; // true when it gave the expected result
        const char* triple;                   // parent, main, child afterwards
    } cases[] = {
        {"m r in m a", [](XmlEngine& e) { return e.AddElement(u"n", nullptr, 0); }, "r,n,-"},
        {"m r in m b", [](XmlEngine& e) { return e.AddElement(u"n", nullptr, EditInsertBefore); },
         "r,n,-"},
        {"m r c a", [](XmlEngine& e) { return e.AddElement(u"n", u"v", EditChild); }, "-,r,n"},
        {"m r in m a", [](XmlEngine& e) { return !e.AddSubDocument(u"<n/><o/>", 0); }, "r,n,-"},
        {"m r in m b", [](XmlEngine& e) { return e.AddSubDocument(u"<n/>", EditInsertBefore); },
         "r,n,-"},
        {"m r c b", [](XmlEngine& e) { return e.AddSubDocument(u"<n/>", EditChild); }, "-,r,n"},
        {"m r in m a", [](XmlEngine& e) { return !e.AddSubDocument(u"text", 0); }, "r,-,-"},
        {"m r in m b", [](XmlEngine& e) { return e.RemoveElem() == 1; }, "r,a,-"},
        {"m r in m a", [](XmlEngine& e) { return e.RemoveElem() == 1; }, "r,-,-"},
        {"m r in m b c d", [](XmlEngine& e) { return e.RemoveChildElem() == 1; }, "r,b,c"},
        {"m r in m b c c", [](XmlEngine& e) { return e.RemoveChildElem() == 1; }, "r,b,-"},
        {"m r c b", [](XmlEngine& e) { return e.WriteAttrib(e.m_childIndex, u"k", u"v", 0); },
         "-,r,b"},
        {"m r in m a", [](XmlEngine& e) { return e.WriteData(e.m_mainIndex, u"x", 0); }, "r,a,-"},
        // Refusals leave the position as it was.
        {"m r in", [](XmlEngine& e) { return !e.AddElement(u"n", nullptr, EditChild); }, "r,-,-"},
        {"m r", [](XmlEngine& e) { return !e.WriteData(e.m_mainIndex, u"x", 0); }, "-,r,-"},
        {"m r in", [](XmlEngine& e) { return e.RemoveElem() == 0; }, "r,-,-"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.place);
        XmlEngine e(u"<r><a/><b><c/><d/></b></r>");
        std::istringstream words(c.place);
        std::string word, name;
        while (words >> word) {
            if (word == "in") {
                ASSERT_EQ(e.IntoElem(), 1);
                continue;
            }
            words >> name;
            std::u16string wide(name.begin(), name.end());
            ASSERT_EQ(word == "m" ? e.FindElem(wide.c_str()) : e.FindChildElem(wide.c_str()), 1);
        }
        EXPECT_TRUE(c.edit(e));
        EXPECT_EQ(Triple(e), c.triple);
        EXPECT_EQ(CheckRecords(e), "");
    }
}

} // namespace
