// Tests of adding and removing elements and sub-documents: the text each
// operation produces, refusals, result logs and the position afterwards.
// Record consistency after edits is left to the editing property test.
#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "support/doc_script.h"
#include "support/record_check.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;
using namespace vetra::test;

namespace {

#define OP(call) [](CVTXmlParser& d) { return d.call; }

TEST(ElementEdit, TextOfEachOperation) {
    const struct {
        const vtchar* before;
        const char* place; // position script, see Place()
        std::function<int(CVTXmlParser&)> edit;
        const vtchar* after;
        int result;
    } cases[] = {
        {VT(""), "", OP(AddElem(VT("a"))), VT("<a/>\r\n"), 1},
        // A new element goes behind the line end that follows the main one.
        {VT("<a/>\r\n"), "m a", OP(AddElem(VT("b"))), VT("<a/>\r\n<b/>\r\n"), 1},
        {VT("<a><b/>  y</a>"), "m a in m b", OP(AddElem(VT("c"))), VT("<a><b/><c/>\r\n  y</a>"), 1},
        {VT("<a>\r\n<b/>\r\n</a>"), "m a in", OP(AddElem(VT("c"))),
         VT("<a>\r\n<b/>\r\n<c/>\r\n</a>"), 1},
        {VT("<a>\r\n<b/>\r\n</a>"), "m a in m b", OP(InsertElem(VT("c"))),
         VT("<a>\r\n<c/>\r\n<b/>\r\n</a>"), 1},
        {VT("<a>\r\n<b/>\r\n</a>"), "m a in", OP(InsertElem(VT("c"))),
         VT("<a>\r\n<c/>\r\n<b/>\r\n</a>"), 1},
        {VT("<a>x</a>"), "m a in", OP(InsertElem(VT("c"))), VT("<a><c/>\r\nx</a>"), 1},
        // A first child opens the parent onto its own line.
        {VT("<a />"), "m a", OP(AddChildElem(VT("b"))), VT("<a >\r\n<b/>\r\n</a>"), 1},
        {VT("<a></a>"), "m a", OP(AddChildElem(VT("b"))), VT("<a>\r\n<b/>\r\n</a>"), 1},
        {VT("<a>\r\n</a>"), "m a", OP(AddChildElem(VT("b"))), VT("<a>\r\n<b/>\r\n</a>"), 1},
        {VT("<a>x</a>"), "m a", OP(AddChildElem(VT("b"))), VT("<a>x<b/>\r\n</a>"), 1},
        {VT("<a>\r\n<b/>\r\n</a>"), "m a", OP(AddChildElem(VT("c"))),
         VT("<a>\r\n<b/>\r\n<c/>\r\n</a>"), 1},
        {VT("<r><a></r>"), "m r in m a", OP(AddChildElem(VT("b"))),
         VT("<r><a>\r\n<b/>\r\n</a></r>"), 1},
        // Sub-documents: trimmed and given line ends only when well-formed.
        {VT("<a/>\r\n"), "m a", OP(AddChildSubDoc(VT(" <b>x</b> "))),
         VT("<a>\r\n<b>x</b>\r\n</a>\r\n"), 1},
        {VT("<a/>\r\n"), "m a", OP(AddChildSubDoc(VT("<b/><c/>"))),
         VT("<a>\r\n<b/><c/>\r\n</a>\r\n"), 0},
        {VT("<a/>\r\n"), "m a", OP(AddChildSubDoc(VT("<b><c></b>"))), VT("<a><b><c></b></a>\r\n"),
         0},
        {VT("<a/>\r\n"), "m a", OP(AddChildSubDoc(VT("t"))), VT("<a>t</a>\r\n"), 0},
        {VT("<r>\r\n<first/>\r\n</r>"), "m r in m first",
         OP(InsertSubDoc(VT("<x><y>deep</y></x><p/><q/>"))),
         VT("<r>\r\n<x><y>deep</y></x><p/><q/>\r\n<first/>\r\n</r>"), 0},
        // Removal takes the line end behind the element along.
        {VT("<a>\r\n<b/>\r\n<c/>\r\n</a>"), "m a c b", OP(RemoveChildElem()),
         VT("<a>\r\n<c/>\r\n</a>"), 1},
        {VT("<a>x<b/>y</a>"), "m a c b", OP(RemoveChildElem()), VT("<a>xy</a>"), 1},
        {VT("<a/>\r\n"), "m a", OP(RemoveElem() && d.AddElem(VT("new"))), VT("<new/>\r\n"), 1},
        // Refusals change nothing.
        {VT("<a/>"), "", OP(AddChildElem(VT("b"))), VT("<a/>"), 0},
        {VT("<a/>"), "", OP(RemoveElem()), VT("<a/>"), 0},
        {VT("<a/>"), "m a", OP(RemoveChildElem()), VT("<a/>"), 0},
        {VT("<a/>"), "m a", OP(AddElem(nullptr)), VT("<a/>"), 0},
        {VT(""), "", OP(AddSubDoc(VT(""))), VT(""), 0},
        // Values and names as given.
        {VT(""), "", OP(AddElem(VT("a b"), VT("x<y"))), VT("<a b>x&lt;y</a b>\r\n"), 1},
        {VT(""), "", OP(AddElem(VT("a"), 1e200)), VT(""), 0},
        {VT(""), "", OP(AddElem(VT("a"), -9223372036854775807LL - 1)),
         VT("<a>-9223372036854775808</a>\r\n"), 1},
        {VT(""), "", OP(AddElem(VT("a"), 18446744073709551615ULL)),
         VT("<a>18446744073709551615</a>\r\n"), 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.before) + " | " + c.place + " -> " + Show(c.after));
        CVTXmlParser doc;
        doc.SetDoc(c.before);
        ASSERT_TRUE(Place(doc, c.place));
        EXPECT_EQ(c.edit(doc), c.result);
        EXPECT_EQ(Show(S(doc.GetDoc())), Show(c.after));
    }
}

TEST(ElementEdit, SubDocumentReportsReplaceTheLog) {
    CVTXmlParser doc;
    doc.SetDoc(VT("<a/><b/>"));
    EXPECT_EQ(S(doc.GetResultLog()), VT("<root_has_sibling/>"));
    doc.FindElem(VT("a"));
    EXPECT_EQ(doc.AddChildSubDoc(VT("<c></d></c>")), 0);
    EXPECT_EQ(S(doc.GetResultLog()), VT("<lone_end_tag tagname=\"d\" offset=\"3\"/>"));
    doc.ResetPos();
    EXPECT_EQ(doc.AddChildSubDoc(VT("<c/>")), 0); // no main position: refused, log cleared
    EXPECT_EQ(S(doc.GetResultLog()), VT(""));
}

// Records never lie about the text: edits whose tags the record fields
// can't hold are refused and change nothing.
TEST(ElementEdit, TagsTooLongForTheirFieldsAreRefused) {
    const vtstring name1021(1021, VT('n')), name1020(1020, VT('n'));
    CVTXmlParser doc;
    EXPECT_EQ(doc.AddElem(name1021.c_str(), VT("x")), 0); // end tag of 1,024 characters
    EXPECT_EQ(S(doc.GetDoc()), VT(""));
    EXPECT_EQ(doc.AddElem(name1021.c_str()), 1); // <name/> needs no end tag
    EXPECT_EQ(doc.AddChildElem(VT("c")), 0);     // opening it would need one
    EXPECT_EQ(doc.SetData(VT("x")), 0);
    EXPECT_EQ(doc.AddChildSubDoc(VT("<c/>")), 0);
    EXPECT_EQ(doc.AddElem(name1020.c_str(), VT("x")), 1); // 1,023 fits
    XmlEngine check(Units(doc.GetDoc()));
    EXPECT_EQ(CheckRecords(check), "");
}

#define EDIT(expr) [](XmlEngine& e) { return expr; }

TEST(ElementEdit, PositionAfterEachOperation) {
    const struct {
        const char* place; // in <r><a/><b><c/><d/></b></r>: m = FindElem, c = FindChildElem, in
        std::function<bool(XmlEngine&)> edit; // true when it gave the expected result
        const char* triple;                   // parent, main, child afterwards
    } cases[] = {
        {"m r in m a", EDIT(e.AddElement(u"n", nullptr, 0)), "r,n,-"},
        {"m r in m b", EDIT(e.AddElement(u"n", nullptr, EditInsertBefore)), "r,n,-"},
        {"m r c a", EDIT(e.AddElement(u"n", u"v", EditChild)), "-,r,n"},
        {"m r in m a", EDIT(!e.AddSubDocument(u"<n/><o/>", 0)), "r,n,-"},
        {"m r c b", EDIT(e.AddSubDocument(u"<n/>", EditChild)), "-,r,n"},
        {"m r in m a", EDIT(!e.AddSubDocument(u"text", 0)), "r,-,-"},
        {"m r in m b", EDIT(e.RemoveElem() == 1), "r,a,-"},
        {"m r in m a", EDIT(e.RemoveElem() == 1), "r,-,-"},
        {"m r in m b c d", EDIT(e.RemoveChildElem() == 1), "r,b,c"},
        {"m r in m b c c", EDIT(e.RemoveChildElem() == 1), "r,b,-"},
        {"m r in m a", EDIT(e.WriteData(e.m_mainIndex, u"x", 0)), "r,a,-"},
        // Refusals leave the position as it was.
        {"m r in", EDIT(!e.AddElement(u"n", nullptr, EditChild)), "r,-,-"},
        {"m r in", EDIT(e.RemoveElem() == 0), "r,-,-"},
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
    }
}

} // namespace
