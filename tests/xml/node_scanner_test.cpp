// Tests of the node scanner.
//
// 1. The first node of each text: type, start, length, empty-tag flag, the
//    name token where the scan sets one, and the faults reported.
// 2. Whole texts cut into node sequences that tile the text and end in ScanEnd.
// 3. A literal model of the scanning rules, one character at a time, against
//    ScanNode on every short text over two alphabets and on random texts made
//    of tag pieces, from every node boundary and from arbitrary offsets. The
//    fast passes over runs in ScanNode must change nothing that the rules see.
// 4. Texts that end right before an unreadable page: a read past the NUL
//    would crash.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#include <sys/mman.h>
#include <unistd.h>
#define VETRA_TEST_GUARD_PAGE 1
#endif

#include "support/doc_script.h"
#include "text/result_log.h"
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

TEST(NodeScanner, TokenTextCopiesTheToken) {
    std::u16string text = u"<abc d>";
    TokenCursor cursor(text.c_str(), 0);
    EXPECT_EQ(Show(TokenText(cursor)), ""); // a new cursor's token is empty
    cursor.tokenStart = 1;
    cursor.tokenEnd = 3;
    EXPECT_EQ(Show(TokenText(cursor)), "abc");
    cursor.tokenEnd = 0;
    EXPECT_EQ(Show(TokenText(cursor)), "");
    cursor.tokenStart = 5;
    cursor.tokenEnd = 5;
    EXPECT_EQ(Show(TokenText(cursor)), "d");
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
        {u"<<a>", {{ScanError, 4}}},
        {u"<a <b>", {{NodeElement, 6, false, u"a"}}},
        {u"x<1 y<a/>", {{NodeText, 1}, {ScanError, 4}, {NodeElement, 4, true, u"a"}}},
        {u"<!x <a/>", {{ScanError, 4}, {NodeElement, 4, true, u"a"}}},
        {u"<?p a='>'?>t", {{NodeProcessing, 11, false, u"p"}, {NodeText, 1}}},
        {u"<?a b=\"?>\"?>", {{NodeProcessing, 9, false, u"a"}, {NodeText, 3}}},
        {u"<?>", {{ScanError, 3}}},
        {u"x<?>", {{NodeText, 1}, {NodeProcessing, 3}}},
        {u"<!DOCTYPE a [<!x <b>]>",
         {{ScanError, 17}, {NodeElement, 3, false, u"b"}, {NodeText, 2}}},
        {u"<a b=\"c>", {{ScanError, 8}}},
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

// ---------------------------------------------------------------------------
// 3. The scanning rules, literally, one character at a time

// The character sets, written out anew rather than taken from the table.
bool RefSpace(wchar c) {
    return c == 9 || c == 10 || c == 13 || c == 32;
}
bool RefNameEnd(wchar c) {
    return RefSpace(c) || c == u'/' || c == u'>';
}
bool RefBeforeSlash(wchar c) {
    return RefSpace(c) || c == u'"' || c == u'\'';
}
bool RefDeclStart(wchar c) {
    return c == u'A' || c == u'E' || c == u'N';
}
bool RefBeginsName(wchar c) {
    if (c < 0x3A) return false;
    for (wchar x : u";<=>?@[\\]^`")
        if (c == x) return false;
    return true;
}

enum : uint32_t {
    AfterLess = 0x1,
    AfterBang = 0x2,
    AfterDash = 0x4,
    AfterBracket = 0x8,
    InSpace = 0x10,
    InDocType = 0x20,
    InSingle = 0x40,
    InDouble = 0x80,
    AfterEquals = 0x100,
    InBare = 0x200,
};

int32_t ModelScanNode(TokenCursor& cursor, NodeToken& node) {
    const wchar* text = cursor.text;
    node.start = cursor.next;
    node.flags = 0;
    int32_t type = -1;
    std::u16string terminator; // empty: none
    int32_t nameStart = 0;
    wchar prev = 0, prev2 = 0;
    uint32_t state = 0;
    auto finish = [&](int32_t result) {
        node.type = result;
        node.length = cursor.next - node.start;
        return result;
    };
    auto fault = [&](const wchar* key) {
        terminator = u">";
        type = -1;
        vetra::text::LogResult(node.report, key, nullptr, 0, cursor.next, -1);
    };
    for (int32_t i = cursor.next;; ++i) {
        wchar c = text[i];
        // Rule 1.
        if (c == 0) {
            cursor.next = i;
            if (cursor.next == node.start) {
                node.length = 0;
                node.type = 0;
                return ScanEnd;
            }
            if (type == 2 || type == 4) return finish(type);
            const wchar* word = u"tag";
            if ((state & InDocType) || type == 64)
                word = u"document_type";
            else if (type == 1)
                word = u"start_tag";
            else if (type == 0)
                word = u"end_tag";
            else if (type == 8)
                word = u"cdata_section";
            else if (type == 16)
                word = u"processing_instruction";
            else if (type == 32)
                word = u"comment";
            vetra::text::LogResult(node.report, u"unterminated_tag_syntax", word,
                                   vetra::text::LogType, node.start, -1);
            return finish(-1);
        }
        // Rule 2.
        if (nameStart != 0) {
            if (!RefNameEnd(c)) continue;
            cursor.tokenStart = nameStart;
            cursor.tokenEnd = i - 1;
            nameStart = 0;
            prev = prev2 = 0;
        }
        // Rule 3.
        if (!terminator.empty()) {
            if (c == u'>' && !(state & (InSingle | InDouble))) {
                cursor.next = i + 1;
                int32_t n = int32_t(terminator.size());
                if (n == 1) {
                    terminator.clear();
                    if (type == 1 && prev == u'/' &&
                        !(prev2 != 0 && (state & InBare) && !RefBeforeSlash(prev2)))
                        node.flags |= NodeEmptyTag;
                } else if (i > n) {
                    if (std::u16string(text + i - (n - 1), size_t(n - 1)) ==
                        terminator.substr(0, size_t(n - 1)))
                        terminator.clear();
                }
                state &= ~InBare;
                if (!terminator.empty()) continue;
                if (state & InDocType) continue;
                return finish(type);
            }
            if (c == u'<' && (type == 2 || type == -1)) {
                cursor.next = i;
                return finish(type);
            }
            if (type == 1 || type == -1) {
                if (state & InDouble) {
                    if (c == u'"') state &= ~InDouble;
                } else if (state & InSingle) {
                    if (c == u'\'') state &= ~InSingle;
                } else if (state & InBare) {
                    if (RefSpace(c)) state &= ~InBare;
                } else if (c == u'"' && (state & AfterEquals)) {
                    state = (state & ~AfterEquals) | InDouble;
                } else if (c == u'\'' && (state & AfterEquals)) {
                    state = (state & ~AfterEquals) | InSingle;
                } else if (c == u'=' && !(state & AfterEquals) && prev != u'=') {
                    state |= AfterEquals;
                } else if (!RefSpace(c) && (state & AfterEquals)) {
                    state = (state & ~AfterEquals) | InBare;
                }
                prev2 = prev;
                prev = c;
            } else if (type == 64) {
                if (c == u'"' && !(state & InSingle))
                    state ^= InDouble;
                else if (c == u'\'' && !(state & InDouble))
                    state ^= InSingle;
            }
            continue;
        }
        // Rule 4.
        if (state == 0) {
            if (c == u'<') {
                state |= AfterLess;
            } else if (RefSpace(c)) {
                type = 4;
                state |= InSpace;
            } else {
                type = 2;
                terminator = u"<";
            }
        } else if (state & InSpace) {
            if (c == u'<') {
                cursor.next = i;
                return finish(4);
            }
            if (!RefSpace(c)) {
                state &= ~InSpace;
                type = 2;
                terminator = u"<";
            }
        } else if (state & AfterLess) {
            state &= ~AfterLess;
            if (RefBeginsName(c)) {
                type = 1, terminator = u">", nameStart = i;
            } else if (c == u'/') {
                type = 0, terminator = u">", nameStart = i + 1;
            } else if (c == u'!') {
                state |= AfterBang;
            } else if (c == u'?') {
                type = 16, terminator = u"?>", nameStart = i + 1;
            } else {
                fault(u"first_tag_syntax");
            }
        } else if (state & AfterBang) {
            state &= ~AfterBang;
            if (c == u'-') {
                state |= AfterDash;
            } else if (state & InDocType) {
                if (RefDeclStart(c))
                    type = 64, terminator = u">";
                else
                    fault(u"doctype_tag_syntax");
            } else if (c == u'[') {
                state |= AfterBracket;
            } else if (c == u'D') {
                state |= InDocType;
            } else {
                fault(u"exclamation_tag_syntax");
            }
        } else if (state & AfterDash) {
            state &= ~AfterDash;
            if (c == u'-')
                type = 32, terminator = u"-->";
            else
                fault(u"comment_tag_syntax");
        } else if (state & AfterBracket) {
            state &= ~AfterBracket;
            if (c == u'C')
                type = 8, terminator = u"]]>";
            else
                fault(u"cdata_section_syntax");
        } else if (state & InDocType) {
            if (c == u'<') {
                state |= AfterLess;
            } else if (c == u'>') {
                cursor.next = i + 1;
                return finish(64);
            }
        }
    }
}

// Scans `text` from `from` on with both the model and ScanNode, node by
// node up to ScanEnd, and compares everything the two leave behind.
void Compare(const std::u16string& text, int32_t from) {
    TokenCursor model(text.c_str(), 0, from), real(text.c_str(), 0, from);
    model.tokenStart = real.tokenStart = -7;
    model.tokenEnd = real.tokenEnd = -9;
    NodeToken modelNode, realNode;
    for (int32_t calls = 0;; ++calls) {
        int32_t expected = ModelScanNode(model, modelNode);
        int32_t got = ScanNode(real, realNode);
        ASSERT_EQ(got, expected) << Show(text) << " from " << real.next;
        ASSERT_EQ(realNode.type, modelNode.type) << Show(text);
        ASSERT_EQ(realNode.start, modelNode.start) << Show(text);
        ASSERT_EQ(realNode.length, modelNode.length) << Show(text);
        ASSERT_EQ(realNode.flags, modelNode.flags) << Show(text);
        ASSERT_EQ(real.next, model.next) << Show(text);
        ASSERT_EQ(real.tokenStart, model.tokenStart) << Show(text);
        ASSERT_EQ(real.tokenEnd, model.tokenEnd) << Show(text);
        ASSERT_EQ(realNode.report, modelNode.report) << Show(text);
        if (got == ScanEnd) {
            ASSERT_EQ(real.next, int32_t(text.size()));
            return;
        }
        // Progress: every node but the end is at least one character.
        ASSERT_GT(realNode.length, 0) << Show(text);
        ASSERT_LE(calls, int32_t(text.size()));
    }
}

// Every text of up to `maxLength` characters over `alphabet`.
void CompareAll(const std::u16string& alphabet, size_t maxLength) {
    std::u16string text;
    std::vector<size_t> digits;
    for (size_t length = 0; length <= maxLength; ++length) {
        digits.assign(length, 0);
        for (;;) {
            text.resize(length);
            for (size_t k = 0; k < length; ++k)
                text[k] = alphabet[digits[k]];
            Compare(text, 0);
            if (::testing::Test::HasFatalFailure()) return;
            size_t k = 0;
            while (k < length && ++digits[k] == alphabet.size())
                digits[k++] = 0;
            if (k == length) break;
        }
    }
}

TEST(NodeScannerModel, EveryShortTextOverTagCharacters) {
    CompareAll(u"<>/!-=\"' a", 5);
}

TEST(NodeScannerModel, EveryShortTextOverOpenerCharacters) {
    CompareAll(u"<>!-[CD]E?\t\u00E9", 4);
}

TEST(NodeScannerModel, RandomTextsOfTagPieces) {
    const std::u16string pieces[] = {
        u"<",         u">",          u"/",
        u"/>",        u"</",         u"!",
        u"-",         u"--",         u"-->",
        u"<!--",      u"[",          u"]]>",
        u"<![CDATA[", u"<![",        u"C",
        u"D",         u"<!DOCTYPE ", u"<!D",
        u"<!ENTITY ", u"<!A",        u"<!N",
        u"<?",        u"?>",         u"?",
        u"=",         u"==",         u"\"",
        u"'",         u"=\"",        u"='",
        u" ",         u"\t",         u"\r\n",
        u"a",         u"xy",         u"b=c",
        u"1",         u"@",          u"\u00E9",
        u"\u3000",    u"<a",         u"<a b=\"c\">",
        u"<a b=c/>",  u"</a>",       u"text ",
        u"<a b==>",   u"<a b=>",     u"<!x",
        u"<!x=",      u"]>",         u"<!DOCTYPE a [",
    };
    std::mt19937 rng(20240611);
    std::uniform_int_distribution<size_t> pick(0, std::size(pieces) - 1);
    std::uniform_int_distribution<int> count(0, 24);
    for (int round = 0; round < 30000; ++round) {
        std::u16string text;
        for (int n = count(rng); n > 0; --n)
            text += pieces[pick(rng)];
        Compare(text, 0);
        // From any offset: the caller may start where it likes.
        if (!text.empty()) Compare(text, int32_t(rng() % text.size()));
        if (HasFatalFailure()) return;
    }
}

// ---------------------------------------------------------------------------
// 4. No read past the NUL

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
