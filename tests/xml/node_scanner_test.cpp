// Tests of the node scanner: the node each text starts with (type, length,
// empty-tag flag, name token), the faults it reports, and whole texts cut
// into node sequences that always end in ScanEnd.
#include <gtest/gtest.h>

#include "support/doc_script.h"
#include "xml/token.h"

using namespace vetra::xml;
using vetra::test::Show;

namespace {

struct NodeCase {
    const char16_t* text;
    int32_t start;      // where the scan begins
    int32_t type;
    int32_t length;
    bool emptyTag;
    const char16_t* name; // the token after the scan, or null if not set by it
    const char16_t* report;
};

TEST(NodeScanner, FirstNodeOfEachText) {
    const NodeCase cases[] = {
        {u"", 0, ScanEnd, 0, false, nullptr, u""},
        {u"<a>", 0, NodeElement, 3, false, u"a", u""},
        {u"<a/>", 0, NodeElement, 4, true, u"a", u""},
        {u"<a b=c/>", 0, NodeElement, 8, false, u"a", u""},
        {u"<a b=c />", 0, NodeElement, 9, true, u"a", u""},
        {u"<a b=\"c\"/>", 0, NodeElement, 10, true, u"a", u""},
        {u"<a b=\"x>y\">", 0, NodeElement, 11, false, u"a", u""},
        {u"<a b=x>y>", 0, NodeElement, 7, false, u"a", u""},
        {u"<a \"x>y\">", 0, NodeElement, 6, false, u"a", u""},
        {u"<a b='x\"y'/>", 0, NodeElement, 12, true, u"a", u""},
        {u"<a b==\"x>y\">", 0, NodeElement, 9, false, u"a", u""},
        {u"<ns:a\tk='1'>", 0, NodeElement, 12, false, u"ns:a", u""},
        {u"</a  >", 0, ScanEndTag, 6, false, u"a", u""},
        {u"a>b", 0, NodeText, 2, false, nullptr, u""},
        {u"   <a/>", 0, NodeWhitespace, 3, false, nullptr, u""},
        {u"  x <a/>", 0, NodeText, 4, false, nullptr, u""},
        {u" \r\n\t", 0, NodeWhitespace, 4, false, nullptr, u""},
        {u"<!-- c -->x", 0, NodeComment, 10, false, nullptr, u""},
        {u"<!-->x", 0, NodeComment, 5, false, nullptr, u""},
        {u"<!-- a > b -- c -->", 0, NodeComment, 19, false, nullptr, u""},
        {u"<![CDATA[a]]>x", 0, NodeCData, 13, false, nullptr, u""},
        {u"<![C]]>", 0, NodeCData, 7, false, nullptr, u""},
        {u"<![CDATA[a]>b]]>", 0, NodeCData, 16, false, nullptr, u""},
        {u"<?xml version=\"1.0\"?>", 0, NodeProcessing, 21, false, u"xml", u""},
        {u"<?a?>", 0, NodeProcessing, 5, false, u"a?", u""},
        {u"x<?>", 1, NodeProcessing, 3, false, u"", u""},
        {u"<!Dx>", 0, NodeDocType, 5, false, nullptr, u""},
        {u"<!DOCTYPE a [<!ENTITY b \"c>d\">]>", 0, NodeDocType, 32, false, nullptr, u""},
        {u"<!DOCTYPE a [<!-- > -->]>", 0, NodeDocType, 25, false, nullptr, u""},
        // The inner fault is written to the report, but the node still ends
        // as a declaration at its own >.
        {u"<!DOCTYPE a [<!x>]>", 0, NodeDocType, 19, false, nullptr,
         u"<doctype_tag_syntax offset=\"0\"/>"},
        {u"<!DOCTYPE a [<!ENTITY b \"c\"><!x>]>", 0, NodeDocType, 34, false, nullptr,
         u"<doctype_tag_syntax offset=\"28\"/>"},
        {u"<1>", 0, ScanError, 3, false, nullptr, u"<first_tag_syntax offset=\"0\"/>"},
        {u"x<<a>", 1, ScanError, 4, false, nullptr, u"<first_tag_syntax offset=\"1\"/>"},
        {u"<!x>", 0, ScanError, 4, false, nullptr, u"<exclamation_tag_syntax offset=\"0\"/>"},
        {u"<!-x>", 0, ScanError, 5, false, nullptr, u"<comment_tag_syntax offset=\"0\"/>"},
        {u"<![x>", 0, ScanError, 5, false, nullptr, u"<cdata_section_syntax offset=\"0\"/>"},
        {u"<1 \"<\">", 0, ScanError, 4, false, nullptr, u"<first_tag_syntax offset=\"0\"/>"},
        {u"<?>", 0, ScanError, 3, false, u"",
         u"<unterminated_tag_syntax type=\"processing_instruction\" offset=\"0\"/>"},
        {u"<a", 0, ScanError, 2, false, nullptr,
         u"<unterminated_tag_syntax type=\"start_tag\" offset=\"0\"/>"},
        {u"<", 0, ScanError, 1, false, nullptr,
         u"<unterminated_tag_syntax type=\"tag\" offset=\"0\"/>"},
        {u"</a", 0, ScanError, 3, false, nullptr,
         u"<unterminated_tag_syntax type=\"end_tag\" offset=\"0\"/>"},
        {u"<!-- x", 0, ScanError, 6, false, nullptr,
         u"<unterminated_tag_syntax type=\"comment\" offset=\"0\"/>"},
        {u"<![CDATA[x", 0, ScanError, 10, false, nullptr,
         u"<unterminated_tag_syntax type=\"cdata_section\" offset=\"0\"/>"},
        {u"<!DOCTYPE a [", 0, ScanError, 13, false, nullptr,
         u"<unterminated_tag_syntax type=\"document_type\" offset=\"0\"/>"},
        {u"<a b=\"c>", 0, ScanError, 8, false, u"a",
         u"<unterminated_tag_syntax type=\"start_tag\" offset=\"0\"/>"},
        // A fault and an unterminated entry from one node.
        {u"<1 'x", 0, ScanError, 5, false, nullptr,
         u"<first_tag_syntax offset=\"0\"/><unterminated_tag_syntax type=\"tag\" offset=\"0\"/>"},
    };
    for (const NodeCase& c : cases) {
        SCOPED_TRACE(Show(c.text));
        std::u16string text(c.text); // exact-size copy: ASan sees any read past the NUL
        TokenCursor cursor(text.c_str(), 0, c.start);
        cursor.tokenStart = 99;
        NodeToken node;
        EXPECT_EQ(ScanNode(cursor, node), c.type);
        EXPECT_EQ(node.type, c.type);
        EXPECT_EQ(node.start, c.start);
        EXPECT_EQ(node.length, c.length);
        EXPECT_EQ(cursor.next, c.start + c.length);
        EXPECT_EQ((node.flags & NodeEmptyTag) != 0, c.emptyTag);
        if (c.name != nullptr)
            EXPECT_EQ(Show(TokenText(cursor)), Show(c.name));
        else
            EXPECT_EQ(cursor.tokenStart, 99);
        EXPECT_EQ(Show(node.report), Show(c.report));
    }
}

TEST(NodeScanner, TextsCutIntoNodesEndInScanEnd) {
    const struct {
        const char16_t* text;
        std::vector<std::pair<int32_t, int32_t>> nodes; // type, length
    } cases[] = {
        {u"a>b", {{NodeText, 2}, {NodeText, 1}}},
        {u"  <a>x</a>\r\n", {{NodeWhitespace, 2}, {NodeElement, 3}, {NodeText, 1},
                             {ScanEndTag, 4}, {NodeWhitespace, 2}}},
        {u"<<a>", {{ScanError, 4}}},
        {u"<a <b>", {{NodeElement, 6}}},
        {u"x<1 y<a/>", {{NodeText, 1}, {ScanError, 4}, {NodeElement, 4}}},
        {u"<!x <a/>", {{ScanError, 4}, {NodeElement, 4}}},
        {u"<?p a='>'?>t", {{NodeProcessing, 11}, {NodeText, 1}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.text));
        std::u16string text(c.text);
        TokenCursor cursor(text.c_str(), 0);
        NodeToken node;
        for (auto [type, length] : c.nodes) {
            EXPECT_EQ(ScanNode(cursor, node), type);
            EXPECT_EQ(node.length, length);
        }
        EXPECT_EQ(ScanNode(cursor, node), ScanEnd);
        EXPECT_EQ(node.length, 0);
        EXPECT_EQ(ScanNode(cursor, node), ScanEnd);
    }
}

TEST(NodeScanner, ReportIsOnlyAppendedTo) {
    std::u16string text = u"<1><2>";
    TokenCursor cursor(text.c_str(), 0);
    NodeToken node;
    ScanNode(cursor, node);
    ScanNode(cursor, node);
    EXPECT_EQ(Show(node.report),
              Show(u"<first_tag_syntax offset=\"0\"/><first_tag_syntax offset=\"3\"/>"));
}

} // namespace
