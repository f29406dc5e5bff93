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
    doc.SetDoc(u"<r><a>1</a><b>2</b></r>");
    EXPECT_EQ(doc.RestorePos(u"never"), 0); // no table yet
    EXPECT_EQ(doc.SavePos(u"top"), 1);      // parent position 0
    doc.FindElem();
    doc.FindChildElem(u"b");
    EXPECT_EQ(doc.SavePos(u"child"), 1);
    doc.ResetChildPos();
    EXPECT_EQ(doc.SavePos(u"main"), 1);
    doc.IntoElem(); // no child selected: inside r, no main position
    EXPECT_EQ(doc.SavePos(u"inside"), 1);

    doc.ResetPos();
    EXPECT_EQ(doc.RestorePos(u"child"), 1);
    EXPECT_EQ(S(doc.GetTagName()), u"r");
    EXPECT_EQ(S(doc.GetChildData()), u"2");
    EXPECT_EQ(doc.RestorePos(u"main"), 1);
    EXPECT_EQ(S(doc.GetChildTagName()), u"");
    EXPECT_EQ(doc.RestorePos(u"inside"), 1);
    EXPECT_EQ(S(doc.GetTagName()), u"");
    EXPECT_EQ(doc.FindElem(), 1);
    EXPECT_EQ(S(doc.GetTagName()), u"a");
    EXPECT_EQ(doc.RestorePos(u"top"), 1);
    EXPECT_EQ(doc.FindElem(), 1);
    EXPECT_EQ(S(doc.GetTagName()), u"r");
    EXPECT_EQ(doc.RestorePos(u"nope"), 0);
    EXPECT_EQ(S(doc.GetTagName()), u"r");
    // Null and empty are one name; case matters.
    EXPECT_EQ(doc.SavePos(), 1);
    doc.ResetPos();
    EXPECT_EQ(doc.RestorePos(u""), 1);
    EXPECT_EQ(S(doc.GetTagName()), u"r");
    EXPECT_EQ(doc.RestorePos(u"TOP"), 0);
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
    doc.SetDoc(u"<r><a/><b>data</b><c><d/></c></r>");
    doc.FindElem();
    doc.FindChildElem(u"b");
    doc.SavePos(u"b");
    doc.FindChildElem(u"c");
    doc.IntoElem();
    doc.FindElem(u"d");
    doc.SavePos(u"d");
    doc.OutOfElem();
    doc.OutOfElem();
    doc.SavePos(u"c"); // main r, child c
    // Edits before and on the saved element don't disturb it.
    doc.ResetPos();
    doc.FindElem();
    doc.InsertElem(u"before");
    doc.FindElem(u"r");
    doc.IntoElem();
    doc.FindElem(u"b");
    doc.SetAttrib(u"k", u"a long value that moves everything behind it");
    doc.ResetPos();
    EXPECT_EQ(doc.RestorePos(u"b"), 1);
    EXPECT_EQ(S(doc.GetChildData()), u"data");
    // Removing an ancestor drops the entries below it.
    EXPECT_EQ(doc.RestorePos(u"c"), 1);
    EXPECT_EQ(doc.RemoveChildElem(), 1);
    EXPECT_EQ(doc.RestorePos(u"d"), 0);
    EXPECT_EQ(doc.RestorePos(u"c"), 0);
    EXPECT_EQ(doc.RestorePos(u"b"), 1);
    doc.SetDoc(doc.GetDoc());
    EXPECT_EQ(doc.RestorePos(u"b"), 0);
}

} // namespace
