// Tests of moving the position: the walk over a small document row by row,
// searches by name and path, and the moves that must fail without moving.
#include <gtest/gtest.h>

#include <functional>

#include "support/doc_script.h"
#include "support/record_check.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;
using namespace vetra::test;

namespace {

#define MOVE(expr) [](XmlEngine& d) { return expr; }

TEST(Navigation, WalkRowByRow) {
    XmlEngine e(u"<r><a><x/></a><b/></r>");
    const struct {
        std::function<int(XmlEngine&)> op;
        int result; // -1 for the void operations
        const char* triple;
    } rows[] = {
        {MOVE(d.FindElem(nullptr)), 1, "-,r,-"},
        {MOVE(d.FindChildElem(u"b")), 1, "-,r,b"},
        {MOVE(d.IntoElem()), 1, "r,b,-"},
        {MOVE(d.FindElem(nullptr)), 0, "r,b,-"},
        {MOVE((d.ResetMainPos(), -1)), -1, "r,-,-"},
        {MOVE(d.FindElem(u"a")), 1, "r,a,-"},
        {MOVE(d.IntoElem()), 1, "a,-,-"}, // no child position: nothing is main inside
        {MOVE(d.OutOfElem()), 1, "r,a,-"},
        {MOVE(d.OutOfElem()), 1, "-,r,a"},
        {MOVE(d.OutOfElem()), 0, "-,r,a"},
        {MOVE(d.FindChildElem(nullptr)), 1, "-,r,b"}, // goes on behind the old main position
        {MOVE((d.ResetChildPos(), -1)), -1, "-,r,-"},
        {MOVE((d.ResetPos(), -1)), -1, "-,-,-"},
        {MOVE(d.IntoElem()), 0, "-,-,-"},
    };
    int n = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(++n);
        EXPECT_EQ(row.op(e), row.result);
        EXPECT_EQ(Triple(e), row.triple);
        EXPECT_EQ(e.m_nodeType, e.m_mainIndex != 0 ? 1 : 0);
    }
}

TEST(Navigation, SearchesByNameAndPath) {
    const struct {
        const vtchar* doc;
        const char* place;
        const vtchar* path;
        int result;
        const char* main; // tag at the main position afterwards, "" for none
    } cases[] = {
        {VT("<r/>"), "", nullptr, 1, "r"},
        {VT("<r/>"), "", VT(""), 1, "r"},
        {VT("<r/>"), "m r", nullptr, 0, "r"},
        {VT("<a/><b/><a/>"), "m a", VT("a[2]"), 1, "a"},
        // Only the first step's name is compared; the rest is validated.
        {VT("<a/><a/>"), "", VT("a[@x=1]"), 1, "a"},
        {VT("<a/><a/>"), "", VT("a/@x"), 1, "a"},
        {VT("<a/>"), "", VT("[1]"), 0, ""},
        {VT("<a/>"), "", VT("/a"), 0, ""},
        {VT("<a/>"), "", VT("//a"), 0, ""},
        {VT("<ab/>"), "", VT("a"), 0, ""},
        {VT("<a/>"), "", VT("ab"), 0, ""},
        {VT("<a;b/>"), "", VT("a"), 1, "a"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.doc) + " / " + (c.path ? Show(c.path) : "null"));
        CVTXmlParser doc;
        doc.SetDoc(c.doc);
        ASSERT_TRUE(Place(doc, c.place));
        EXPECT_EQ(doc.FindElem(c.path), c.result);
        EXPECT_EQ(Show(S(doc.GetTagName())), c.main);
    }
}

TEST(Navigation, InvalidPathsFailWithoutMoving) {
    for (const vtchar* path : {VT("a b"), VT("a[1][2]"), VT("a/"), VT("//a/b"), VT("/")}) {
        SCOPED_TRACE(Show(path));
        CVTXmlParser doc;
        doc.SetDoc(VT("<r><a/><a/></r>"));
        doc.FindElem();
        EXPECT_EQ(doc.FindChildElem(path), 0);
        EXPECT_EQ(S(doc.GetChildTagName()), VT(""));
        doc.IntoElem();
        EXPECT_EQ(doc.FindElem(path), 0);
        EXPECT_EQ(S(doc.GetTagName()), VT(""));
    }
}

TEST(Navigation, ChildSearchWithoutMainPosition) {
    CVTXmlParser doc;
    doc.SetDoc(VT("<r><x/><y/></r>"));
    EXPECT_EQ(doc.FindChildElem(), 1); // takes r as main, then its first child
    EXPECT_EQ(S(doc.GetTagName()), VT("r"));
    EXPECT_EQ(S(doc.GetChildTagName()), VT("x"));

    doc.ResetPos();
    EXPECT_EQ(doc.FindChildElem(VT("none")), 0);
    EXPECT_EQ(S(doc.GetTagName()), VT("r")); // the first step's move stays

    // No element at the level: the search then looks at the children of the
    // document, and can stand on the root as a child with nothing above it.
    XmlEngine e(u"<r/>");
    e.FindElem(nullptr);
    e.IntoElem();
    EXPECT_EQ(e.FindChildElem(nullptr), 1);
    EXPECT_EQ(e.m_childIndex, 1);
    EXPECT_EQ(e.m_mainIndex, 0);
    EXPECT_EQ(e.m_parentIndex, 0);
}

TEST(Navigation, IgnoreCaseSearch) {
    XmlEngine e(u"<R><Item/></R>");
    EXPECT_EQ(e.FindElem(u"r"), 0);
    e.m_docFlags = DocIgnoreCase;
    EXPECT_EQ(e.FindElem(u"r"), 1);
    EXPECT_EQ(e.FindChildElem(u"ITEM"), 1);
}

} // namespace
