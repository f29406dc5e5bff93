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

TEST(Navigation, WalkRowByRow) {
    XmlEngine e(u"<r><a><x/></a><b/></r>");
    const struct {
        std::function<int(XmlEngine&)> op;
        int result; // -1 for the void operations
        const char* triple;
    } rows[] = {
        {[](XmlEngine& d) { return d.FindElem(nullptr); }, 1, "-,r,-"},
        {[](XmlEngine& d) { return d.FindChildElem(u"b"); }, 1, "-,r,b"},
        {[](XmlEngine& d) { return d.IntoElem(); }, 1, "r,b,-"},
        {[](XmlEngine& d) { return d.FindElem(nullptr); }, 0, "r,b,-"},
        {[](XmlEngine& d) { return d.ResetMainPos(), -1; }, -1, "r,-,-"},
        {[](XmlEngine& d) { return d.FindElem(u"a"); }, 1, "r,a,-"},
        {[](XmlEngine& d) { return d.IntoElem(); }, 1, "a,-,-"},
        {[](XmlEngine& d) { return d.OutOfElem(); }, 1, "r,a,-"},
        {[](XmlEngine& d) { return d.OutOfElem(); }, 1, "-,r,a"},
        {[](XmlEngine& d) { return d.OutOfElem(); }, 0, "-,r,a"},
        {[](XmlEngine& d) { return d.ResetChildPos(), -1; }, -1, "-,r,-"},
        {[](XmlEngine& d) { return d.ResetPos(), -1; }, -1, "-,-,-"},
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
        const char16_t* doc;
        const char* place;
        const char16_t* path;
        int result;
        const char* main; // tag at the main position afterwards, "" for none
    } cases[] = {
        {u"<r/>", "", nullptr, 1, "r"},
        {u"<r/>", "", u"", 1, "r"},
        {u"<r/>", "m r", nullptr, 0, "r"},
        {u"<a/><a x='2'/><b/><a x='3'/>", "m a", u"a", 1, "a"},
        {u"<a/><b/><a/>", "m a", u"a[2]", 1, "a"},
        {u"<a/><a/>", "", u"a[@x=1]", 1, "a"},
        {u"<a/><a/>", "", u"a/b", 1, "a"},
        {u"<a/><a/>", "", u"a/@x", 1, "a"},
        {u"<a/><a/>", "", u"a//b", 1, "a"},
        {u"<a/>", "", u"a/@", 1, "a"},
        {u"<a/>", "", u"a[]", 1, "a"},
        {u"<a/>", "", u"a[0]", 1, "a"},
        {u"<a/>", "", u"a[x]", 1, "a"},
        {u"<a/>", "", u"[1]", 0, ""},
        {u"<a/>", "", u"@a", 0, ""},
        {u"<a/>", "", u"/a", 0, ""},
        {u"<a/>", "", u"//a", 0, ""},
        {u"<ab/>", "", u"a", 0, ""},
        {u"<a/>", "", u"ab", 0, ""},
        {u"<a;b/>", "", u"a", 1, "a"},
        {u"<a\tx='1'/>", "", u"a", 1, "a"},
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

TEST(Navigation, RepeatedSearchVisitsAllInOrderThenStops) {
    XmlEngine e(u"<r><a n='1'/><b/><a n='2'/><a n='3'/></r>");
    e.FindElem(nullptr);
    e.IntoElem();
    WideString seen;
    while (e.FindElem(u"a"))
        seen += e.AttribValue(e.m_mainIndex, u"n");
    EXPECT_EQ(seen, u"123");
    EXPECT_EQ(e.AttribValue(e.m_mainIndex, u"n"), u"3"); // stays on the last one
    EXPECT_EQ(e.FindElem(nullptr), 0);
}

TEST(Navigation, InvalidPathsFailWithoutMoving) {
    const char16_t* paths[] = {u"a b",    u"a=b",     u"a]", u"a[1",    u"a[1a]",
                               u"a[1]b",  u"a[1][2]", u"a/", u"a/@x/y", u"//a/b",
                               u"//a/@x", u"/",       u"//"};
    for (const char16_t* path : paths) {
        SCOPED_TRACE(Show(path));
        CVTXmlParser doc;
        doc.SetDoc(u"<r><a/><a/></r>");
        doc.FindElem();
        EXPECT_EQ(doc.FindChildElem(path), 0);
        EXPECT_EQ(S(doc.GetChildTagName()), u"");
        doc.IntoElem();
        EXPECT_EQ(doc.FindElem(path), 0);
        EXPECT_EQ(S(doc.GetTagName()), u"");
    }
}

TEST(Navigation, ChildSearchWithoutMainPosition) {
    CVTXmlParser doc;
    doc.SetDoc(u"<r><x/><y/></r>");
    EXPECT_EQ(doc.FindChildElem(), 1); // takes r as main, then its first child
    EXPECT_EQ(S(doc.GetTagName()), u"r");
    EXPECT_EQ(S(doc.GetChildTagName()), u"x");

    doc.ResetPos();
    EXPECT_EQ(doc.FindChildElem(u"none"), 0);
    EXPECT_EQ(S(doc.GetTagName()), u"r"); // the first step's move stays

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

TEST(Navigation, IntoAndOutOf) {
    CVTXmlParser doc;
    doc.SetDoc(u"<r><a/></r>");
    EXPECT_EQ(doc.IntoElem(), 0);  // no main position
    EXPECT_EQ(doc.OutOfElem(), 0); // document level
    doc.FindElem();
    EXPECT_EQ(doc.IntoElem(), 1); // no child position: empty main position
    EXPECT_EQ(S(doc.GetTagName()), u"");
    EXPECT_EQ(doc.FindElem(), 1);
    EXPECT_EQ(S(doc.GetTagName()), u"a");
    EXPECT_EQ(doc.OutOfElem(), 1);
    EXPECT_EQ(S(doc.GetChildTagName()), u"a");
    EXPECT_EQ(doc.FindChildElem(), 0); // goes on behind the old main position
}

TEST(Navigation, IgnoreCaseSearch) {
    XmlEngine e(u"<R><Item/></R>");
    EXPECT_EQ(e.FindElem(u"r"), 0);
    e.m_docFlags = DocIgnoreCase;
    EXPECT_EQ(e.FindElem(u"r"), 1);
    EXPECT_EQ(e.FindChildElem(u"ITEM"), 1);
}

} // namespace
