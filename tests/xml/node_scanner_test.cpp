// Tests of the node scanner.
//
// 1. The first node of each text: type, start, length, empty-tag flag, the
//    name token where the scan sets one, and the faults reported.
// 2. Whole texts cut into node sequences that tile the text and end in
//    ScanEnd; the quick loops against the state machine on all short texts.
// 3. Texts that end right before an unreadable page: a read past the NUL
//    would crash.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#include <sys/mman.h>
#include <unistd.h>
#define VETRA_TEST_GUARD_PAGE 1
#endif

#include "support/doc_script.h"
#include "xml/token.h"

using namespace vetra::xml;
using vetra::test::Show;

// The report entries of a fault and of a tag cut off by the end of the text.
#define FAULT(key, at) u"<" key "_syntax offset=\"" #at "\"/>"
#define CUT_OFF(type) u"<unterminated_tag_syntax type=\"" type "\" offset=\"0\"/>"

namespace {

// ---------------------------------------------------------------------------
// 1. The first node of each text

struct NodeCase {
    const char16_t* text;
    int32_t start; // where the scan begins
    int32_t type;
    int32_t length;
    bool emptyTag = false;
    const char16_t* name = nullptr; // the token after the scan; null: left alone
    const char16_t* report = u"";
};

TEST(NodeScanner, FirstNodeOfEachText) {
    const NodeCase cases[] = {
        // Start tags; "/>" makes an empty-element tag unless the slash ends
        // an unquoted value.
        {u"<a x/>", 0, NodeElement, 6, true, u"a"},
        {u"<a b=c/>", 0, NodeElement, 8, false, u"a"},
        {u"<a b=c\"/>", 0, NodeElement, 9, true, u"a"}, // a quote before the slash
        // Quotes hide a > only behind an =.
        {u"<a b=\"1\" c='>' d=\">\">", 0, NodeElement, 21, false, u"a"},
        {u"<a b=c\td=\"x>y\">", 0, NodeElement, 15, false, u"a"}, // a tab ends a value
        {u"<a b=x>y>", 0, NodeElement, 7, false, u"a"},
        {u"<a \"x>y\">", 0, NodeElement, 6, false, u"a"},
        {u"<a b==\"x>y\">", 0, NodeElement, 9, false, u"a"},
        // Names: what can begin one, and where it ends.
        {u"<\u00E9\u4E00/>", 0, NodeElement, 5, true, u"\u00E9\u4E00"},
        {u"<a-1.b=\"x\">", 0, NodeElement, 11, false, u"a-1.b=\"x\""},
        {u"x<a>", 1, NodeElement, 3, false, u"a"},
        // End tags: no quotes.
        {u"</a  >", 0, ScanEndTag, 6, false, u"a"},
        {u"</>", 0, ScanEndTag, 3, false, u""},
        {u"</a b=\">\">", 0, ScanEndTag, 8, false, u"a"},
        // Text ends before a < or behind a > that isn't its first character.
        {u"x<a>", 0, NodeText, 1},
        {u"abc", 0, NodeText, 3},
        {u"  >x", 0, NodeText, 4},
        {u"  x <a/>", 0, NodeText, 4},
        {u" \r\n\t", 0, NodeWhitespace, 4},
        // Comments, CDATA sections and instructions end at their terminator
        // (which may share characters with the opener), whatever the quotes.
        {u"<!-->x", 0, NodeComment, 5},
        {u"<!-- a > b -- c -->", 0, NodeComment, 19},
        {u"<![C]]>", 0, NodeCData, 7},
        {u"<![CDATA[a]>b]]>", 0, NodeCData, 16},
        {u"<?a?>", 0, NodeProcessing, 5, false, u"a?"},
        {u"<?a b=\"?>\"?>", 0, NodeProcessing, 9, false, u"a"},
        // The ? of "<?" also begins "?>", except at the start of the text.
        {u"x<?>", 1, NodeProcessing, 3, false, u""},
        {u"<?>", 0, ScanError, 3, false, u"", CUT_OFF("processing_instruction")},
        // Document type declarations: quotes count only inside the brackets.
        {u"<!Dx>", 0, NodeDocType, 5},
        {u"<!DOCTYPE a \"x>y\">", 0, NodeDocType, 15},
        {u"<!DOCTYPE a [<!ATTLIST b c '>'><!NOTATION d>]>", 0, NodeDocType, 46},
        {u"<!DOCTYPE a [<?p > ?>]>", 0, NodeDocType, 23, false, u"p"},
        // An inner fault is reported, and the node still ends as a
        // declaration at its own >.
        {u"<!DOCTYPE a [<!ENTITY b \"c\"><!x>]>", 0, NodeDocType, 34, false, nullptr,
         FAULT("doctype_tag", 28)},
        // Quote tracking goes on from where the last start tag inside left
        // it: behind "b=" a quote opens a value, and a slash right behind a
        // name makes an empty-element tag.
        {u"<!DOCTYPE x [<a b=><!x\"a>b\">]>", 0, NodeDocType, 30, false, u"a",
         FAULT("doctype_tag", 19)},
        {u"<!DOCTYPE x [<a b=><c/>]>", 0, NodeDocType, 25, true, u"c"},
        // Malformed tag text ends at a <, and the declaration with it.
        {u"<!DOCTYPE a [<!x <b>]>", 0, ScanError, 17, false, nullptr, FAULT("doctype_tag", 0)},
        // The five faults: the character at fault is consumed, and the node
        // ends at the next > outside quotes or the next <.
        {u"x<<a>", 1, ScanError, 4, false, nullptr, FAULT("first_tag", 1)},
        {u"<!x>", 0, ScanError, 4, false, nullptr, FAULT("exclamation_tag", 0)},
        {u"<!-x>", 0, ScanError, 5, false, nullptr, FAULT("comment_tag", 0)},
        {u"<![x>", 0, ScanError, 5, false, nullptr, FAULT("cdata_section", 0)},
        {u"<1 a=\"<\">", 0, ScanError, 6, false, nullptr, FAULT("first_tag", 0)},
        {u"<1 a=\">\">", 0, ScanError, 9, false, nullptr, FAULT("first_tag", 0)},
        {u"<1 \">\">", 0, ScanError, 5, false, nullptr, FAULT("first_tag", 0)},
        // The end of the text inside a tag, named by what the tag had become.
        {u"<>", 0, ScanError, 2, false, nullptr, FAULT("first_tag", 0) CUT_OFF("tag")},
        {u"<a b='>", 0, ScanError, 7, false, u"a", CUT_OFF("start_tag")},
        {u"</a", 0, ScanError, 3, false, nullptr, CUT_OFF("end_tag")},
        {u"<!-- x", 0, ScanError, 6, false, nullptr, CUT_OFF("comment")},
        {u"<![CDATA[x", 0, ScanError, 10, false, nullptr, CUT_OFF("cdata_section")},
        {u"<!DOCTYPE a [<!-- x", 0, ScanError, 19, false, nullptr, CUT_OFF("document_type")},
        // At the end of the text: ScanEnd, with node.type 0 and the token left alone.
        {u"", 0, ScanEnd, 0},
    };
    for (const NodeCase& c : cases) {
        SCOPED_TRACE(Show(c.text));
        std::u16string text(c.text); // exact-size copy: ASan sees any read past the NUL
        TokenCursor cursor(text.c_str(), 0, c.start);
        cursor.tokenStart = 99;
        cursor.tokenEnd = 77;
        NodeToken node;
        node.flags = 0xFFFF;   // ScanNode sets the flags; it doesn't add to them
        node.report = u"<k/>"; // ... but only appends to the report
        EXPECT_EQ(ScanNode(cursor, node), c.type);
        EXPECT_EQ(node.type, c.type == ScanEnd ? 0 : c.type);
        EXPECT_EQ(node.start, c.start);
        EXPECT_EQ(node.length, c.length);
        EXPECT_EQ(cursor.next, c.start + c.length);
        EXPECT_EQ(node.flags, c.emptyTag ? NodeEmptyTag : 0u);
        if (c.name != nullptr) {
            EXPECT_EQ(Show(TokenText(cursor)), Show(c.name));
            EXPECT_EQ(cursor.tokenEnd - cursor.tokenStart + 1,
                      int32_t(std::char_traits<char16_t>::length(c.name)));
        } else {
            EXPECT_EQ(cursor.tokenStart, 99);
            EXPECT_EQ(cursor.tokenEnd, 77);
        }
        EXPECT_EQ(Show(node.report), Show(u"<k/>" + std::u16string(c.report)));
    }
}

// ---------------------------------------------------------------------------
// 2. Node sequences over one text

struct Expected {
    int32_t type;
    int32_t length;
    bool emptyTag = false;
    const char16_t* name = nullptr; // checked where not null
};

TEST(NodeScanner, TextsCutIntoNodesEndInScanEnd) {
    const struct {
        const char16_t* text;
        std::vector<Expected> nodes;
    } cases[] = {
        {u"<?xml version=\"1.0\"?>\r\n<!DOCTYPE r [<!ENTITY e \"v\">]>\r\n<r><!-- c -->"
         u"<![CDATA[<x>]]><e a='1'/>t &amp; u</r>",
         {{NodeProcessing, 21, false, u"xml"},
          {NodeWhitespace, 2},
          {NodeDocType, 30},
          {NodeWhitespace, 2},
          {NodeElement, 3, false, u"r"},
          {NodeComment, 10},
          {NodeCData, 15},
          {NodeElement, 10, true, u"e"},
          {NodeText, 9},
          {ScanEndTag, 4, false, u"r"}}},
        {u"x<1 y<a/>", {{NodeText, 1}, {ScanError, 4}, {NodeElement, 4, true, u"a"}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.text));
        std::u16string text(c.text);
        TokenCursor cursor(text.c_str(), 0);
        NodeToken node;
        int32_t at = 0;
        for (const Expected& e : c.nodes) {
            SCOPED_TRACE(at);
            EXPECT_EQ(ScanNode(cursor, node), e.type);
            EXPECT_EQ(node.type, e.type);
            EXPECT_EQ(node.start, at);
            EXPECT_EQ(node.length, e.length);
            EXPECT_EQ((node.flags & NodeEmptyTag) != 0, e.emptyTag);
            if (e.name != nullptr) {
                EXPECT_EQ(Show(TokenText(cursor)), Show(e.name));
            }
            at += e.length;
            EXPECT_EQ(cursor.next, at);
        }
        EXPECT_EQ(at, int32_t(text.size()));
        EXPECT_EQ(ScanNode(cursor, node), ScanEnd);
        EXPECT_EQ(node.length, 0);
        EXPECT_EQ(ScanNode(cursor, node), ScanEnd);
        EXPECT_EQ(cursor.next, int32_t(text.size()));
    }
}

// The loops for the usual nodes must agree with the state machine on every
// text: all texts of up to six characters over an alphabet of the characters
// that matter, and longer ones at random. (A scan from an offset never looks
// behind it, so the texts' suffixes stand in for later offsets.)
TEST(NodeScanner, QuickLoopsAgreeWithTheRules) {
    std::u16string text;
    auto compare = [&]() {
        TokenCursor quick(text.c_str(), 0), rules(text.c_str(), 0);
        NodeToken a, b;
        for (;;) {
            const int32_t type = ScanNode(quick, a);
            ASSERT_EQ(type, ScanNodeByRules(rules, b)) << Show(text);
            ASSERT_EQ(std::tie(a.start, a.length, a.flags, a.report),
                      std::tie(b.start, b.length, b.flags, b.report))
                << Show(text);
            ASSERT_EQ(std::tie(quick.next, quick.tokenStart, quick.tokenEnd),
                      std::tie(rules.next, rules.tokenStart, rules.tokenEnd))
                << Show(text);
            if (type == ScanEnd) break;
        }
    };
    const char16_t alphabet[] = u"<>/=\"' a!";
    for (int32_t length = 1, count = 9; length <= 6; ++length, count *= 9) {
        for (int32_t n = 0; n < count; ++n) {
            text.clear();
            for (int32_t k = 0, d = n; k < length; ++k, d /= 9)
                text += alphabet[d % 9];
            compare();
            if (testing::Test::HasFatalFailure()) return;
        }
    }
    // Longer texts at random, for tags with several attributes and names
    // that run across blocks of eight, with control characters, a tab and
    // units above ASCII among them.
    const char16_t wider[] = u"<>/=\"' a!aaaa\x01\t\u00E9\uFFFF";
    uint32_t state = 2024;
    for (int round = 0; round < 100000; ++round) {
        state = state * 1103515245 + 12345;
        text.assign(7 + (state >> 16) % 30, u' ');
        for (char16_t& c : text) {
            state = state * 1103515245 + 12345;
            c = wider[(state >> 16) % 17];
        }
        compare();
        if (testing::Test::HasFatalFailure()) return;
    }
}

// ---------------------------------------------------------------------------
// 3. No read past the NUL

#ifdef VETRA_TEST_GUARD_PAGE
TEST(NodeScanner, NeverReadsPastTheNul) {
    size_t page = size_t(sysconf(_SC_PAGESIZE));
    void* map = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(map, MAP_FAILED);
    ASSERT_EQ(mprotect(static_cast<char*>(map) + page, page, PROT_NONE), 0);
    wchar* pageEnd = reinterpret_cast<wchar*>(static_cast<char*>(map) + page);
    // Each text is also scanned from every later offset.
    const char16_t* texts[] = {
        u"",         u"<a",      u"<a/",          u"<a b=",
        u"<a b=c/",  u"<a b='x", u"</a",          u"<!-",
        u"<!-- x -", u"<?a ?",   u"<1 \"",        u"x>",
        u" \t",      u"\r\n x",  u"<![CDATA[x]]", u"<!DOCTYPE a [<!ENTITY \""};
    for (const char16_t* t : texts) {
        size_t n = std::char_traits<char16_t>::length(t);
        wchar* copy = pageEnd - (n + 1); // the NUL is the page's last character
        std::char_traits<char16_t>::copy(copy, t, n + 1);
        for (int32_t from = 0; from <= int32_t(n); ++from) {
            TokenCursor cursor(copy, 0, from);
            NodeToken node;
            int32_t calls = 0;
            while (ScanNode(cursor, node) != ScanEnd)
                ASSERT_LE(++calls, int32_t(n)) << Show(t);
            EXPECT_EQ(cursor.next, int32_t(n));
        }
    }
    munmap(map, 2 * page);
}
#endif

} // namespace
