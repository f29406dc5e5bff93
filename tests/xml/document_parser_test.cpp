// Tests of the document parser at the level of records: what each text
// gives as result, records in document order and the flags of record 0,
// including the repairs of ill-formed text, deep nesting and stream modes.
#include <gtest/gtest.h>

#include "support/record_check.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;
using vetra::test::CheckRecords;
using vetra::test::DocumentOrder;
using vetra::test::RecordView;

namespace {

constexpr uint32_t F = ElemFirstSibling, U = ElemUnended, I = ElemFaultInside, W = ElemIllFormed;

TEST(DocumentParser, RecordsOfEachText) {
    const struct {
        const char16_t* text;
        bool result;
        uint32_t docFlags; // flags of record 0
        // start, length, startTagChars, endTagChars, level, flags, depth, childCount
        std::vector<RecordView> records;
    } cases[] = {
        {u"", false, 0, {}},
        {u"<?xml version=\"1.0\"?><!-- c --><a>t</a>\r\n  ", true, 0, {{31, 8, 3, 4, 0, F, 0, 0}}},
        {u"<a/><b/>", false, 0, {{0, 4, 4, 0, 0, F, 0, 0}, {4, 4, 4, 0, 0, 0, 0, 0}}},
        {u"<a></b></a>", false, W, {{0, 11, 3, 4, 0, F | I, 0, 0}}},
        {u"<a><b></a>", false, W, {{0, 10, 3, 4, 0, F, 0, 1}, {3, 3, 3, 0, 1, F | U, 1, 0}}},
        // An unended element's children become its following siblings and
        // keep their levels.
        {u"<a><b/><c/>",
         false,
         W,
         {{0, 3, 3, 0, 0, F | U, 0, 0}, {3, 4, 4, 0, 1, 0, 0, 0}, {7, 4, 4, 0, 1, 0, 0, 0}}},
        {u"<a><b>x</a>y</b>",
         false,
         W | I,
         {{0, 11, 3, 4, 0, F, 0, 1}, {3, 3, 3, 0, 1, F | U, 1, 0}}},
        {u"<a></a  >", true, 0, {{0, 9, 3, 6, 0, F, 0, 0}}},
        {u"<a b=\"c></a>", false, W | I, {}},
        // The end tag matches the innermost open name first, and the name
        // of a start tag runs to whitespace, / or >.
        {u"<a;b x='1'><c></c></a;b>",
         true,
         0,
         {{0, 24, 11, 6, 0, F, 0, 1}, {11, 7, 3, 4, 1, F, 1, 0}}},
        // Nested unended elements unfold into a row, innermost last.
        {u"<r><a><b><c></r>",
         false,
         W,
         {{0, 16, 3, 4, 0, F, 0, 3},
          {3, 3, 3, 0, 1, F | U, 1, 0},
          {6, 3, 3, 0, 2, U, 1, 0},
          {9, 3, 3, 0, 3, U, 1, 0}}},
        // Text, CDATA, PIs and doctype nodes give no records.
        {u"<!DOCTYPE r [<!ENTITY e \"<x>\">]><r><![CDATA[<y/>]]><?p <z/>?>t</r>",
         true,
         0,
         {{32, 34, 3, 4, 0, F, 0, 0}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.text, c.text + std::char_traits<char16_t>::length(c.text)));
        XmlEngine engine;
        EXPECT_EQ(engine.SetDocText(c.text), c.result);
        EXPECT_EQ(engine.Rec(0).Flags(), c.docFlags);
        EXPECT_EQ(engine.Rec(0).length, int32_t(std::char_traits<char16_t>::length(c.text)));
        std::vector<RecordView> got = DocumentOrder(engine);
        ASSERT_EQ(got.size(), c.records.size());
        for (size_t i = 0; i < got.size(); ++i)
            EXPECT_TRUE(got[i] == c.records[i])
                << "record " << i << " at " << got[i].start << " length " << got[i].length;
        EXPECT_EQ(CheckRecords(engine), "");
        EXPECT_EQ(engine.m_mainIndex, 0);
        EXPECT_EQ(engine.m_nodeType, 0);
    }
}

TEST(DocumentParser, DeepAndLongTexts) {
    // Deep nesting grows the stack and keeps every record exact.
    const int32_t depth = 5000;
    std::u16string text;
    for (int i = 0; i < depth; ++i)
        text += u"<e>";
    for (int i = 0; i < depth; ++i)
        text += u"</e>";
    XmlEngine engine;
    ASSERT_TRUE(engine.SetDocText(text.c_str()));
    EXPECT_EQ(CheckRecords(engine, {true}), ""); // exact levels, nested extents
    EXPECT_EQ(engine.Rec(depth).Level(), depth - 1);
    EXPECT_EQ(engine.Rec(depth).start, 3 * (depth - 1));
    // 100,000 start tags and no end tag close without recursion: all become
    // a row of siblings.
    text.clear();
    for (int i = 0; i < 100000; ++i)
        text += u"<e>";
    EXPECT_FALSE(engine.SetDocText(text.c_str()));
    EXPECT_EQ(CheckRecords(engine), "");
    EXPECT_EQ(DocumentOrder(engine).size(), 100000u);
    // An end tag too long for its record field closes nothing.
    const std::u16string name(1100, u'n');
    EXPECT_FALSE(engine.SetDocText((u"<" + name + u">x</" + name + u">").c_str()));
    EXPECT_TRUE(engine.Rec(1).Has(ElemUnended));
    EXPECT_EQ(CheckRecords(engine), "");
}

// A stale record count or freed chain would fail the check.
TEST(DocumentParser, ReparseResetsRecordsPositionAndFreedChain) {
    XmlEngine engine(u"<r><a/><b/></r>");
    engine.m_mainIndex = 1;
    engine.FreeRecord(3);
    EXPECT_TRUE(engine.SetDocText(u"<x/>"));
    EXPECT_EQ(engine.m_mainIndex, 0);
    EXPECT_EQ(CheckRecords(engine, {true}), "");
}

TEST(DocumentParser, FlagsDecideTheResult) {
    XmlEngine engine;
    engine.m_docFlags = DocIgnoreCase; // end tags match in any case
    EXPECT_TRUE(engine.SetDocText(u"<A><b></B></a>"));
    engine.m_docFlags = 0;
    EXPECT_FALSE(engine.SetDocText(u"<A><b></B></a>"));
    engine.SetDocText(u"<a/><b/>");
    engine.m_docFlags = DocReadStream;
    EXPECT_TRUE(engine.ParseDocument()); // two roots, but not ill-formed
    engine.m_docText.assign(u"<a>", 3);
    EXPECT_FALSE(engine.ParseDocument());
    engine.m_docFlags = DocWriteStream;
    EXPECT_TRUE(engine.ParseDocument());
    EXPECT_FALSE(engine.SetDocText(u"<a/>")); // refused in a stream mode
    EXPECT_EQ(engine.m_docText.View(), u"<a>");
}

} // namespace
