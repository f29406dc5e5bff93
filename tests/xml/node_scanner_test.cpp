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

namespace {

// ---------------------------------------------------------------------------
// 1. The first node of each text

struct NodeCase {
    const char16_t* text;
    int32_t start; // where the scan begins
    int32_t type;
    int32_t length;
    bool emptyTag;
    const char16_t* name; // the token after the scan, or null if the scan leaves it alone
    const char16_t* report;
};

TEST(NodeScanner, FirstNodeOfEachText) {
    const NodeCase cases[] = {
        // Elements, and when "/>" makes an empty-element tag.
        {u"<a>", 0, NodeElement, 3, false, u"a", u""},
        {u"<a/>", 0, NodeElement, 4, true, u"a", u""},
        {u"<a />", 0, NodeElement, 5, true, u"a", u""},
        {u"<a\n/>", 0, NodeElement, 5, true, u"a", u""},
        {u"<a/ >", 0, NodeElement, 5, false, u"a", u""},
        {u"<a x/>", 0, NodeElement, 6, true, u"a", u""},
        {u"<a b=c/>", 0, NodeElement, 8, false, u"a", u""},
        {u"<a b=c />", 0, NodeElement, 9, true, u"a", u""},
        {u"<a b=\"c\"/>", 0, NodeElement, 10, true, u"a", u""},
        {u"<a b='x\"y'/>", 0, NodeElement, 12, true, u"a", u""},
        {u"<a b=c\"/>", 0, NodeElement, 9, true, u"a", u""}, // a quote before the slash
        {u"<a b=/>", 0, NodeElement, 7, false, u"a", u""},   // the slash is the value
        {u"<a b= \"c\"/>", 0, NodeElement, 11, true, u"a", u""},
        {u"<a b=c\td=\"x>y\">", 0, NodeElement, 15, false, u"a", u""}, // a tab ends a value
        // Quotes hide a > only behind an =.
        {u"<a b=\"x>y\">", 0, NodeElement, 11, false, u"a", u""},
        {u"<a b='x>y'>", 0, NodeElement, 11, false, u"a", u""},
        {u"<a b=x>y>", 0, NodeElement, 7, false, u"a", u""},
        {u"<a \"x>y\">", 0, NodeElement, 6, false, u"a", u""},
        {u"<a b==\"x>y\">", 0, NodeElement, 9, false, u"a", u""},
        {u"<a b=\"1\" c='>' d=\">\">", 0, NodeElement, 21, false, u"a", u""},
        {u"<a <b>", 0, NodeElement, 6, false, u"a", u""},
        // Names: what can begin one, and where it ends.
        {u"<ns:a\tk='1'>", 0, NodeElement, 12, false, u"ns:a", u""},
        {u"<:a>", 0, NodeElement, 4, false, u":a", u""},
        {u"<_>", 0, NodeElement, 3, false, u"_", u""},
        {u"<{|}~>", 0, NodeElement, 6, false, u"{|}~", u""},
        {u"<\u00E9\u4E00/>", 0, NodeElement, 5, true, u"\u00E9\u4E00", u""},
        {u"<a\u3000b>", 0, NodeElement, 5, false, u"a\u3000b", u""}, // no whitespace above 127
        {u"<a-1.b=\"x\">", 0, NodeElement, 11, false, u"a-1.b=\"x\"", u""},
        {u"x<a>", 1, NodeElement, 3, false, u"a", u""},
        // End tags.
        {u"</a>", 0, ScanEndTag, 4, false, u"a", u""},
        {u"</a  >", 0, ScanEndTag, 6, false, u"a", u""},
        {u"</>", 0, ScanEndTag, 3, false, u"", u""},
        {u"</a b=\">\">", 0, ScanEndTag, 8, false, u"a", u""}, // no quotes in an end tag
        {u"</a/>", 0, ScanEndTag, 5, false, u"a", u""},
        // Text and whitespace.
        {u"a>b", 0, NodeText, 2, false, nullptr, u""},
        {u"a\"b>c", 0, NodeText, 4, false, nullptr, u""},
        {u"abc", 0, NodeText, 3, false, nullptr, u""},
        {u">", 0, NodeText, 1, false, nullptr, u""},
        {u"x<a>", 0, NodeText, 1, false, nullptr, u""},
        {u"   <a/>", 0, NodeWhitespace, 3, false, nullptr, u""},
        {u"  x <a/>", 0, NodeText, 4, false, nullptr, u""},
        {u"  >x", 0, NodeText, 4, false, nullptr, u""}, // the > is the text's first character
        {u">>x", 0, NodeText, 2, false, nullptr, u""},
        {u" \r\n\t", 0, NodeWhitespace, 4, false, nullptr, u""},
        {u" \v ", 0, NodeText, 3, false, nullptr, u""},
        {u"\u3000<a>", 0, NodeText, 1, false, nullptr, u""},
        // Comments, CDATA sections, processing instructions.
        {u"<!-- c -->x", 0, NodeComment, 10, false, nullptr, u""},
        {u"<!-->x", 0, NodeComment, 5, false, nullptr, u""},
        {u"<!--->", 0, NodeComment, 6, false, nullptr, u""},
        {u"<!-- a > b -- c -->", 0, NodeComment, 19, false, nullptr, u""},
        {u"<!-- \"a -->", 0, NodeComment, 11, false, nullptr, u""},
        {u"<![CDATA[a]]>x", 0, NodeCData, 13, false, nullptr, u""},
        {u"<![C]]>", 0, NodeCData, 7, false, nullptr, u""},
        {u"<![CDATA[a]>b]]>", 0, NodeCData, 16, false, nullptr, u""},
        {u"<![CDATA[<a>\"]]>", 0, NodeCData, 16, false, nullptr, u""},
        {u"<?xml version=\"1.0\"?>", 0, NodeProcessing, 21, false, u"xml", u""},
        {u"<?a?>", 0, NodeProcessing, 5, false, u"a?", u""},
        {u"<?a b=\"?>\"?>", 0, NodeProcessing, 9, false, u"a", u""},
        {u"<?a > ?>", 0, NodeProcessing, 8, false, u"a", u""},
        {u"<?"
         u"?>",
         0, NodeProcessing, 4, false, u"?", u""}, // split: no trigraph
        {u"x<?>", 1, NodeProcessing, 3, false, u"", u""},
        // Document type declarations.
        {u"<!Dx>", 0, NodeDocType, 5, false, nullptr, u""},
        {u"<!DOCTYPE a>", 0, NodeDocType, 12, false, nullptr, u""},
        {u"<!DOCTYPE a \"x>y\">", 0, NodeDocType, 15, false, nullptr, u""}, // no quotes outside
        {u"<!DOCTYPE a [<!ENTITY b \"c>d\">]>", 0, NodeDocType, 32, false, nullptr, u""},
        {u"<!DOCTYPE a [<!ATTLIST b c '>'><!NOTATION d>]>", 0, NodeDocType, 46, false, nullptr,
         u""},
        {u"<!DOCTYPE a [<!-- > -->]>", 0, NodeDocType, 25, false, nullptr, u""},
        {u"<!DOCTYPE a [<?p > ?>]>", 0, NodeDocType, 23, false, u"p", u""},
        {u"<!DOCTYPE a [<![CDATA[>]]>]>", 0, NodeDocType, 26, false, nullptr,
         u"<doctype_tag_syntax offset=\"0\"/>"},
        // The inner fault is written to the report, but the node still ends
        // as a declaration at its own >.
        {u"<!DOCTYPE a [<!x>]>", 0, NodeDocType, 19, false, nullptr,
         u"<doctype_tag_syntax offset=\"0\"/>"},
        {u"<!DOCTYPE a [<!ENTITY b \"c\"><!x>]>", 0, NodeDocType, 34, false, nullptr,
         u"<doctype_tag_syntax offset=\"28\"/>"},
        // Quote tracking in malformed text goes on from where the last start
        // tag inside left it: behind "==" the next = is plain, so the quote
        // behind it opens nothing; behind "b=" a quote opens a value.
        {u"<!DOCTYPE x [<a b==>= <!x=\"a>b\">]>", 0, NodeDocType, 32, false, u"a",
         u"<doctype_tag_syntax offset=\"20\"/>"},
        {u"<!DOCTYPE x [<a b=><!x\"a>b\">]>", 0, NodeDocType, 30, false, u"a",
         u"<doctype_tag_syntax offset=\"19\"/>"},
        // A > ends an unquoted value: behind it an = counts again.
        {u"<!DOCTYPE x [<a b=c><!x=\"y>z\">]>", 0, NodeDocType, 32, false, u"a",
         u"<doctype_tag_syntax offset=\"20\"/>"},
        // So does the state of the value: a slash that follows the name
        // directly makes an empty-element tag even in a bare value, and the
        // declaration gets the flag.
        {u"<!DOCTYPE x [<a b=><c/>]>", 0, NodeDocType, 25, true, u"c", u""},
        {u"<!DOCTYPE x [<a b=><c d/>]>", 0, NodeDocType, 27, false, u"c", u""},
        // ... unless a < comes first: malformed tag text ends there.
        {u"<!DOCTYPE a [<!x <b>]>", 0, ScanError, 17, false, nullptr,
         u"<doctype_tag_syntax offset=\"0\"/>"},
        // The five faults: the character at fault is consumed, and the node
        // ends at the next > outside quotes or the next <.
        {u"<1>", 0, ScanError, 3, false, nullptr, u"<first_tag_syntax offset=\"0\"/>"},
        {u"x<<a>", 1, ScanError, 4, false, nullptr, u"<first_tag_syntax offset=\"1\"/>"},
        {u"< a>", 0, ScanError, 4, false, nullptr, u"<first_tag_syntax offset=\"0\"/>"},
        {u"<>", 0, ScanError, 2, false, nullptr,
         u"<first_tag_syntax offset=\"0\"/><unterminated_tag_syntax type=\"tag\" offset=\"0\"/>"},
        {u"<@a>", 0, ScanError, 4, false, nullptr, u"<first_tag_syntax offset=\"0\"/>"},
        {u"<!x>", 0, ScanError, 4, false, nullptr, u"<exclamation_tag_syntax offset=\"0\"/>"},
        {u"<!d>", 0, ScanError, 4, false, nullptr, u"<exclamation_tag_syntax offset=\"0\"/>"},
        {u"<!-x>", 0, ScanError, 5, false, nullptr, u"<comment_tag_syntax offset=\"0\"/>"},
        {u"<![x>", 0, ScanError, 5, false, nullptr, u"<cdata_section_syntax offset=\"0\"/>"},
        {u"<1 \"<\">", 0, ScanError, 4, false, nullptr, u"<first_tag_syntax offset=\"0\"/>"},
        {u"<1 a=\"<\">", 0, ScanError, 6, false, nullptr, u"<first_tag_syntax offset=\"0\"/>"},
        {u"<1 a=\">\">", 0, ScanError, 9, false, nullptr, u"<first_tag_syntax offset=\"0\"/>"},
        {u"<1 \">\">", 0, ScanError, 5, false, nullptr, u"<first_tag_syntax offset=\"0\"/>"},
        // The end of the text inside a tag.
        {u"<?>", 0, ScanError, 3, false, u"",
         u"<unterminated_tag_syntax type=\"processing_instruction\" offset=\"0\"/>"},
        {u"<?x", 0, ScanError, 3, false, nullptr,
         u"<unterminated_tag_syntax type=\"processing_instruction\" offset=\"0\"/>"},
        {u"<a", 0, ScanError, 2, false, nullptr,
         u"<unterminated_tag_syntax type=\"start_tag\" offset=\"0\"/>"},
        {u"<a b='>", 0, ScanError, 7, false, u"a",
         u"<unterminated_tag_syntax type=\"start_tag\" offset=\"0\"/>"},
        {u"<", 0, ScanError, 1, false, nullptr,
         u"<unterminated_tag_syntax type=\"tag\" offset=\"0\"/>"},
        {u"<!", 0, ScanError, 2, false, nullptr,
         u"<unterminated_tag_syntax type=\"tag\" offset=\"0\"/>"},
        {u"<!-", 0, ScanError, 3, false, nullptr,
         u"<unterminated_tag_syntax type=\"tag\" offset=\"0\"/>"},
        {u"</a", 0, ScanError, 3, false, nullptr,
         u"<unterminated_tag_syntax type=\"end_tag\" offset=\"0\"/>"},
        {u"<!-- x", 0, ScanError, 6, false, nullptr,
         u"<unterminated_tag_syntax type=\"comment\" offset=\"0\"/>"},
        {u"<!-- x >", 0, ScanError, 8, false, nullptr,
         u"<unterminated_tag_syntax type=\"comment\" offset=\"0\"/>"},
        {u"<![CDATA[x", 0, ScanError, 10, false, nullptr,
         u"<unterminated_tag_syntax type=\"cdata_section\" offset=\"0\"/>"},
        {u"<!D", 0, ScanError, 3, false, nullptr,
         u"<unterminated_tag_syntax type=\"document_type\" offset=\"0\"/>"},
        {u"<!DOCTYPE a [", 0, ScanError, 13, false, nullptr,
         u"<unterminated_tag_syntax type=\"document_type\" offset=\"0\"/>"},
        {u"<!DOCTYPE a [<!-- x", 0, ScanError, 19, false, nullptr,
         u"<unterminated_tag_syntax type=\"document_type\" offset=\"0\"/>"},
        {u"<a b=\"c>", 0, ScanError, 8, false, u"a",
         u"<unterminated_tag_syntax type=\"start_tag\" offset=\"0\"/>"},
        // A fault and an unterminated entry from one node.
        {u"<1 'x", 0, ScanError, 5, false, nullptr,
         u"<first_tag_syntax offset=\"0\"/><unterminated_tag_syntax type=\"tag\" offset=\"0\"/>"},
        {u"<!->", 0, ScanError, 4, false, nullptr,
         u"<comment_tag_syntax offset=\"0\"/><unterminated_tag_syntax type=\"tag\" offset=\"0\"/>"},
    };
    for (const NodeCase& c : cases) {
        SCOPED_TRACE(Show(c.text));
        std::u16string text(c.text); // exact-size copy: ASan sees any read past the NUL
        TokenCursor cursor(text.c_str(), 0, c.start);
        cursor.tokenStart = 99;
        cursor.tokenEnd = 77;
        NodeToken node;
        node.flags = 0xFFFF; // ScanNode sets the flags; it doesn't add to them
        EXPECT_EQ(ScanNode(cursor, node), c.type);
        EXPECT_EQ(node.type, c.type);
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
        EXPECT_EQ(Show(node.report), Show(c.report));
    }
}

// At the end of the text: ScanEnd, with node.type and node.length 0, from
// an empty text and from the end of a longer one; the other fields as usual.
TEST(NodeScanner, EndOfTheText) {
    for (int32_t at : {0, 3}) {
        std::u16string text = at == 0 ? u"" : u"<a>";
        TokenCursor cursor(text.c_str(), 0, at);
        NodeToken node;
        node.type = 5;
        node.length = 5;
        node.flags = 5;
        node.report = u"<k/>";
        EXPECT_EQ(ScanNode(cursor, node), ScanEnd);
        EXPECT_EQ(node.type, 0);
        EXPECT_EQ(node.length, 0);
        EXPECT_EQ(node.start, at);
        EXPECT_EQ(node.flags, 0u);
        EXPECT_EQ(cursor.next, at);
        EXPECT_EQ(cursor.tokenStart, 0);
        EXPECT_EQ(cursor.tokenEnd, -1);
        EXPECT_EQ(Show(node.report), "<k/>");
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
        {u"a>b", {{NodeText, 2}, {NodeText, 1}}},
        {u"<a b=x>y>", {{NodeElement, 7, false, u"a"}, {NodeText, 2}}},
        {u"<a \"x>y\">", {{NodeElement, 6, false, u"a"}, {NodeText, 3}}},
        {u"  <a>x</a>\r\n",
         {{NodeWhitespace, 2},
          {NodeElement, 3, false, u"a"},
          {NodeText, 1},
          {ScanEndTag, 4, false, u"a"},
          {NodeWhitespace, 2}}},
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
        {u"<!x <a/>", {{ScanError, 4}, {NodeElement, 4, true, u"a"}}},
        {u"<?p a='>'?>t", {{NodeProcessing, 11, false, u"p"}, {NodeText, 1}}},
        {u"<?a b=\"?>\"?>", {{NodeProcessing, 9, false, u"a"}, {NodeText, 3}}},
        {u"x<?>", {{NodeText, 1}, {NodeProcessing, 3}}},
        {u"<!DOCTYPE a [<!x <b>]>",
         {{ScanError, 17}, {NodeElement, 3, false, u"b"}, {NodeText, 2}}},
        {u"  ", {{NodeWhitespace, 2}}},
        {u"t  ", {{NodeText, 3}}},
        {u"<a/>  <", {{NodeElement, 4, true}, {NodeWhitespace, 2}, {ScanError, 1}}},
        {u"</a></b>", {{ScanEndTag, 4, false, u"a"}, {ScanEndTag, 4, false, u"b"}}},
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

TEST(NodeScanner, ReportIsOnlyAppendedTo) {
    std::u16string text = u"<1><2>";
    TokenCursor cursor(text.c_str(), 0);
    NodeToken node;
    ScanNode(cursor, node);
    ScanNode(cursor, node);
    EXPECT_EQ(Show(node.report),
              Show(u"<first_tag_syntax offset=\"0\"/><first_tag_syntax offset=\"3\"/>"));
}

// The loops for the usual nodes must agree with the state machine on every
// text: all texts of up to six characters over an alphabet of the characters
// that matter, and longer ones at random. (A scan from an offset never looks
// behind it, so the texts' suffixes stand in for later offsets.)
TEST(NodeScanner, QuickLoopsAgreeWithTheRules) {
    const char16_t alphabet[] = u"<>/=\"' a!";
    const int32_t letters = 9;
    std::u16string text;
    auto compare = [&]() {
        TokenCursor quick(text.c_str(), 0), rules(text.c_str(), 0);
        NodeToken a, b;
        for (;;) {
            const int32_t type = ScanNode(quick, a);
            ASSERT_EQ(type, ScanNodeByRules(rules, b)) << Show(text);
            ASSERT_EQ(a.start, b.start) << Show(text);
            ASSERT_EQ(a.length, b.length) << Show(text);
            ASSERT_EQ(a.flags, b.flags) << Show(text);
            ASSERT_EQ(quick.next, rules.next) << Show(text);
            ASSERT_EQ(quick.tokenStart, rules.tokenStart) << Show(text);
            ASSERT_EQ(quick.tokenEnd, rules.tokenEnd) << Show(text);
            ASSERT_EQ(a.report, b.report) << Show(text);
            if (type == ScanEnd) break;
        }
    };
    std::vector<int32_t> digits;
    for (int32_t length = 1; length <= 6; ++length) {
        digits.assign(size_t(length), 0);
        for (;;) {
            text.clear();
            for (int32_t d : digits)
                text += alphabet[d];
            compare();
            if (testing::Test::HasFatalFailure()) return;
            int32_t k = 0;
            while (k < length && ++digits[size_t(k)] == letters)
                digits[size_t(k++)] = 0;
            if (k == length) break;
        }
    }
    // Longer texts at random, for tags with several attributes and names
    // that run across blocks of eight, with control characters, a tab and
    // units above ASCII among them.
    const char16_t wider[] = u"<>/=\"' a!aaaa\x01\t\u00E9\uFFFF";
    const uint32_t wideLetters = 17;
    uint32_t state = 2024;
    for (int round = 0; round < 100000; ++round) {
        state = state * 1103515245 + 12345;
        text.assign(7 + (state >> 16) % 30, u' ');
        for (char16_t& c : text) {
            state = state * 1103515245 + 12345;
            c = wider[(state >> 16) % wideLetters];
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
    const char16_t* texts[] = {
        u"",
        u"<",
        u"<a",
        u"<a ",
        u"<a b",
        u"<a b=",
        u"<a b=c",
        u"<a b=\"",
        u"<a b='x",
        u"</",
        u"</a",
        u"<!",
        u"<!-",
        u"<!--",
        u"<!-- x -",
        u"<![",
        u"<![C",
        u"<![CDATA[x]]",
        u"<?",
        u"<?a",
        u"<?a ?",
        u"<!D",
        u"<!DOCTYPE a [<!ENTITY \"",
        u"<!DOCTYPE a [<",
        u"<1",
        u"<1 \"",
        u"x",
        u"x>",
        u" ",
        u"\t\r\n",
        u" x",
        u"<a/",
        u"<a b=c/",
    };
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
