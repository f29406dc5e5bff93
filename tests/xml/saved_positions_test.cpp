// Tests of saved positions: what is saved at each level, names sharing a
// bucket, growth of a bucket, and entries dropped when their element goes.
#include <gtest/gtest.h>

#include "support/doc_script.h"
#include "xml/saved_positions.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;
using namespace vetra::test;

namespace {

TEST(SavedPositions, EachLevelRestores) {
    CVTXmlParser doc;
    doc.SetDoc(VT("<r><a>1</a><b>2</b></r>"));
    EXPECT_EQ(doc.RestorePos(VT("never")), 0); // no table yet
    EXPECT_EQ(doc.SavePos(VT("top")), 1);      // parent position 0
    doc.FindElem();
    doc.FindChildElem(VT("b"));
    EXPECT_EQ(doc.SavePos(VT("child")), 1);
    doc.ResetChildPos();
    EXPECT_EQ(doc.SavePos(VT("main")), 1);
    doc.IntoElem(); // no child selected: inside r, no main position
    EXPECT_EQ(doc.SavePos(VT("inside")), 1);

    doc.ResetPos();
    EXPECT_EQ(doc.RestorePos(VT("child")), 1);
    EXPECT_EQ(S(doc.GetTagName()), VT("r"));
    EXPECT_EQ(S(doc.GetChildData()), VT("2"));
    EXPECT_EQ(doc.RestorePos(VT("main")), 1);
    EXPECT_EQ(S(doc.GetChildTagName()), VT(""));
    EXPECT_EQ(doc.RestorePos(VT("inside")), 1);
    EXPECT_EQ(S(doc.GetTagName()), VT(""));
    EXPECT_EQ(doc.FindElem(), 1);
    EXPECT_EQ(S(doc.GetTagName()), VT("a"));
    EXPECT_EQ(doc.RestorePos(VT("top")), 1);
    EXPECT_EQ(doc.FindElem(), 1);
    EXPECT_EQ(S(doc.GetTagName()), VT("r"));
    EXPECT_EQ(doc.RestorePos(VT("nope")), 0);
    EXPECT_EQ(S(doc.GetTagName()), VT("r"));
    // Null and empty are one name; case matters.
    EXPECT_EQ(doc.SavePos(), 1);
    doc.ResetPos();
    EXPECT_EQ(doc.RestorePos(VT("")), 1);
    EXPECT_EQ(S(doc.GetTagName()), VT("r"));
    EXPECT_EQ(doc.RestorePos(VT("TOP")), 0);
}

TEST(SavedPositions, SharedBucketGrowsAndPurges) {
    // ab, ba and h all land in bucket (97 + 98) % 7 == 104 % 7 == 6.
    ASSERT_EQ(SavedBucketOf(u"ab"), SavedBucketOf(u"ba"));
    ASSERT_EQ(SavedBucketOf(u"ab"), SavedBucketOf(u"h"));
    XmlEngine e(u"<r><x>1</x><y>2</y><z>3</z></r>");
    e.FindElem(nullptr);
    e.IntoElem();
    for (const char16_t* name : {u"ab", u"ba", u"h"}) {
        ASSERT_EQ(e.FindElem(nullptr), 1);
        ASSERT_TRUE(e.SavePosition(name));
    }
    // The third name grows the bucket; removing an element purges only its entry.
    ASSERT_TRUE(e.RestorePosition(u"ba"));
    EXPECT_EQ(e.RemoveElem(), 1);
    EXPECT_FALSE(e.RestorePosition(u"ba"));
    ASSERT_TRUE(e.RestorePosition(u"h"));
    EXPECT_EQ(e.ElementData(e.m_mainIndex), u"3");
    ASSERT_TRUE(e.RestorePosition(u"ab"));
    EXPECT_EQ(e.ElementData(e.m_mainIndex), u"1");
    // A dropped name saves anew.
    ASSERT_TRUE(e.SavePosition(u"ba"));
    EXPECT_TRUE(e.RestorePosition(u"ba"));
}

TEST(SavedPositions, SurviveEditsButNotRemovalOrReparse) {
    CVTXmlParser doc;
    doc.SetDoc(VT("<r><a/><b>data</b><c><d/></c></r>"));
    doc.FindElem();
    doc.FindChildElem(VT("b"));
    doc.SavePos(VT("b"));
    doc.FindChildElem(VT("c"));
    doc.IntoElem();
    doc.FindElem(VT("d"));
    doc.SavePos(VT("d"));
    doc.OutOfElem();
    doc.OutOfElem();
    doc.SavePos(VT("c")); // main r, child c
    // Edits before and on the saved element don't disturb it.
    doc.ResetPos();
    doc.FindElem();
    doc.InsertElem(VT("before"));
    doc.FindElem(VT("r"));
    doc.IntoElem();
    doc.FindElem(VT("b"));
    doc.SetAttrib(VT("k"), VT("a long value that moves everything behind it"));
    doc.ResetPos();
    EXPECT_EQ(doc.RestorePos(VT("b")), 1);
    EXPECT_EQ(S(doc.GetChildData()), VT("data"));
    // Removing an ancestor drops the entries below it.
    EXPECT_EQ(doc.RestorePos(VT("c")), 1);
    EXPECT_EQ(doc.RemoveChildElem(), 1);
    EXPECT_EQ(doc.RestorePos(VT("d")), 0);
    EXPECT_EQ(doc.RestorePos(VT("c")), 0);
    EXPECT_EQ(doc.RestorePos(VT("b")), 1);
    doc.SetDoc(doc.GetDoc());
    EXPECT_EQ(doc.RestorePos(VT("b")), 0);
}

} // namespace
