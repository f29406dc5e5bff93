// Tests of taking a start tag apart: the words ScanWord reads, what ScanAttrib
// finds by name and by index and where it leaves the cursor, and which names
// TokenEquals accepts for a token.
//
// Texts are copied to exactly sized heap blocks, so that the address
// sanitizer catches a scan that reads past the terminator.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/doc_script.h"
#include "xml/token.h"

using namespace vetra::xml;
using vetra::test::Show;

namespace {

// A NUL-terminated copy with nothing behind the terminator.
std::unique_ptr<wchar[]> Exact(const WideString& s) {
    std::unique_ptr<wchar[]> copy(new wchar[s.size() + 1]);
    std::char_traits<wchar>::copy(copy.get(), s.c_str(), s.size() + 1);
    return copy;
}

TEST(ScanWord, ReadsWordsAndDelimiters) {
    const struct {
        const char16_t* text;
        int32_t from;
        std::vector<WideString> words;
    } cases[] = {
        {u"  ab \t\r\ncd  ", 0, {u"ab", u"cd"}},
        {u"<a b=\"c d\">", 1, {u"a", u"b", u"=", u"\"", u"c", u"d", u"\"", u">"}},
        {u"a;b/>", 0, {u"a", u";", u"b", u"/", u">"}},
        {u"a[1]/b-c.d", 0, {u"a[1]", u"/", u"b-c.d"}},
    };
    for (const auto& tc : cases) {
        SCOPED_TRACE(Show(tc.text));
        const WideString text = tc.text;
        const auto exact = Exact(text);
        TokenCursor cursor(exact.get(), 0, tc.from);
        std::vector<WideString> words;
        while (ScanWord(cursor)) {
            ASSERT_LE(cursor.next, int32_t(text.size()));
            ASSERT_EQ(cursor.next, cursor.tokenEnd + 1);
            words.push_back(TokenText(cursor));
        }
        EXPECT_EQ(words, tc.words);
        // At the end: an empty token at the terminator, and next stays there.
        const int32_t end = int32_t(text.size());
        EXPECT_EQ(cursor.tokenStart, end);
        EXPECT_EQ(cursor.tokenEnd, end - 1);
        EXPECT_EQ(cursor.next, end);
        EXPECT_FALSE(ScanWord(cursor));
        EXPECT_EQ(cursor.next, end);
    }
}

TEST(ScanAttrib, FindsByNameAndIndex) {
    const struct {
        const char16_t* text;
        const char16_t* name; // null: by index
        int32_t index;
        uint32_t flags;
        bool found;
        const char16_t* token;
        bool quoted;
        int32_t next;
        int32_t from = 1;
    } cases[] = {
        // By name and by index; a name without value is its own token.
        {u"<a b c=\"d\">", u"b", 0, 0, true, u"b", false, 4},
        {u"<a b c=\"d\">", u"c", 0, 0, true, u"d", true, 10},
        {u"<a b c=\"d\">", nullptr, 1, 0, true, u"c", false, 6},
        {u"<a b>", u"b", 0, 0, true, u"b", false, 4},
        // The tag's own name isn't an attribute.
        {u"<a/>", u"a", 0, 0, false, u"", false, 2},
        // An unquoted value runs to whitespace or >, slash included; any value
        // ends at the end of the text.
        {u"<a b=c/>", u"b", 0, 0, true, u"c/", false, 7},
        {u"<a b= >", u"b", 0, 0, true, u">", false, 7},
        {u"<a b=", u"b", 0, 0, true, u"", false, 5},
        {u"<a b=\"x", u"b", 0, 0, true, u"x", true, 7},
        // Duplicates: the first wins.
        {u"<a b=\"1\" b=\"2\">", u"b", 0, 0, true, u"1", true, 8},
        // A value is never a name.
        {u"<a x=\"b\" b=\"y\">", u"b", 0, 0, true, u"y", true, 14},
        // Names compare by the document's case rule.
        {u"<a B=\"1\">", u"b", 0, DocIgnoreCase, true, u"1", true, 8},
        // A processing instruction is scanned from behind its <?.
        {u"<?xml version=\"1.0\"?>", u"version", 0, 0, true, u"1.0", true, 19, 2},
        // Where a new attribute belongs: in front of the closing whitespace.
        {u"<e a=\"1\" />", u"x", 0, 0, false, u"", false, 8},
        {u"<e a", u"x", 0, 0, false, u"", false, 4},
    };
    for (const auto& tc : cases) {
        SCOPED_TRACE(Show(tc.text) + " name=" + (tc.name ? Show(tc.name) : "null") +
                     " index=" + std::to_string(tc.index));
        const WideString text = tc.text;
        const auto exact = Exact(text);
        TokenCursor cursor(exact.get(), tc.flags, tc.from);
        ASSERT_EQ(ScanAttrib(cursor, tc.name, tc.index), tc.found);
        EXPECT_EQ(cursor.next, tc.next);
        if (!tc.found) continue;
        EXPECT_EQ(Show(TokenText(cursor)), Show(tc.token));
        EXPECT_EQ((cursor.flags & CursorQuoted) != 0, tc.quoted);
        EXPECT_EQ(cursor.flags & ~CursorQuoted, tc.flags);
    }
}

TEST(TokenEquals, AcceptsNameThatGoesOnWithPathEnd) {
    const struct {
        const char16_t* text; // the token is [start, start + length)
        int32_t start;
        int32_t length;
        const char16_t* name;
        uint32_t flags;
        bool equal;
    } cases[] = {
        {u"<a b>", 1, 1, u"a", 0, true},
        {u"<a b>", 1, 1, u"a x", 0, true},
        {u"<a b>", 1, 1, u"ab", 0, false},
        {u"<a b>", 1, 1, u"a\t", 0, false}, // only the space ends a path name
        {u"<ab>", 1, 2, u"a", 0, false},
        {u"<A>", 1, 1, u"a", 0, false},
        {u"<Ab>", 1, 2, u"aB[2]", DocIgnoreCase, true},
        {u"<a>", 1, 0, u"a", 0, false},
    };
    for (const auto& tc : cases) {
        SCOPED_TRACE(Show(tc.text) + " vs " + Show(tc.name));
        const auto name = Exact(tc.name);
        TokenCursor cursor(tc.text, tc.flags);
        cursor.tokenStart = tc.start;
        cursor.tokenEnd = tc.start + tc.length - 1;
        EXPECT_EQ(TokenEquals(cursor, name.get()), tc.equal);
    }
}

} // namespace
