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

#include "xml/token.h"

using namespace vetra::xml;

namespace {

// A NUL-terminated copy with nothing behind the terminator.
struct ExactText {
    explicit ExactText(const WideString& s) : data(new wchar[s.size() + 1]) {
        s.copy(data.get(), s.size());
        data[s.size()] = 0;
    }
    std::unique_ptr<wchar[]> data;
};

WideString Token(const TokenCursor& c) {
    return WideString(c.text + c.tokenStart, c.text + c.tokenEnd + 1);
}

std::string Narrow(const WideString& s) {
    std::string out;
    for (wchar c : s)
        out += c < 128 ? char(c) : '?';
    return out;
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
        {u"x!y?z\\w'v<u", 0, {u"x", u"!", u"y", u"?", u"z", u"\\", u"w", u"'", u"v", u"<", u"u"}},
        {u"a[1]/b-c.d", 0, {u"a[1]", u"/", u"b-c.d"}},
        {u"\u00e9t\u00e9 x", 0, {u"\u00e9t\u00e9", u"x"}},
        {u"\u3000a", 0, {u"\u3000a"}}, // only ASCII whitespace is skipped
        {u" \t\r\n", 0, {}},
        {u"", 0, {}},
    };
    for (const auto& tc : cases) {
        SCOPED_TRACE(Narrow(tc.text));
        const WideString text = tc.text;
        ExactText exact(text);
        TokenCursor cursor(exact.data.get(), 0, tc.from);
        std::vector<WideString> words;
        while (ScanWord(cursor)) {
            ASSERT_LE(cursor.next, int32_t(text.size()));
            ASSERT_EQ(cursor.next, cursor.tokenEnd + 1);
            words.push_back(Token(cursor));
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

constexpr int32_t kUnset = -100; // a value no scan stores

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
        {u"<a b c=\"d\">", nullptr, 0, 0, true, u"b", false, 4},
        {u"<a b c=\"d\">", nullptr, 1, 0, true, u"c", false, 6},
        {u"<a b c=\"d\">", nullptr, 2, 0, false, u"", false, 10},
        {u"<a b>", u"b", 0, 0, true, u"b", false, 4},
        // The tag's own name isn't an attribute.
        {u"<a/>", u"a", 0, 0, false, u"", false, 2},
        {u"<a/>", nullptr, 0, 0, false, u"", false, 2},
        // An unquoted value runs to whitespace or >, slash included.
        {u"<a b=c/>", u"b", 0, 0, true, u"c/", false, 7},
        {u"<a b= >", u"b", 0, 0, true, u">", false, 7},
        {u"<a b=", u"b", 0, 0, true, u"", false, 5},
        {u"<a b = 'v' >", u"b", 0, 0, true, u"v", true, 10},
        {u"<a b='x\"y'>", u"b", 0, 0, true, u"x\"y", true, 10},
        {u"<a b=\"x", u"b", 0, 0, true, u"x", true, 7},
        {u"<a b=\"1\"c='2'>", u"c", 0, 0, true, u"2", true, 13},
        // Duplicates: the first wins, with or without a value.
        {u"<a b=\"1\" b=\"2\">", u"b", 0, 0, true, u"1", true, 8},
        {u"<a b b=\"2\">", u"b", 0, 0, true, u"b", false, 4},
        // Values and quoted tokens in name places are never names.
        {u"<a x=\"b\" b=\"y\">", u"b", 0, 0, true, u"y", true, 14},
        {u"<a x=b b=y>", u"b", 0, 0, true, u"y", false, 10},
        {u"<a \"b\" b='x'>", u"b", 0, 0, true, u"x", true, 12},
        {u"<a \"b\" c>", nullptr, 0, 0, true, u"c", false, 8},
        // Names compare in full, and by the document's case rule.
        {u"<a bc=\"1\">", u"b", 0, 0, false, u"", false, 9},
        {u"<a b=\"1\">", u"bc", 0, 0, false, u"", false, 8},
        {u"<a B=\"1\">", u"b", 0, 0, false, u"", false, 8},
        {u"<a B=\"1\">", u"b", 0, DocIgnoreCase, true, u"1", true, 8},
        // A processing instruction is scanned from behind its <?.
        {u"<?xml version=\"1.0\"?>", u"version", 0, 0, true, u"1.0", true, 19, 2},
        {u"<?xml v=\"1\"?>", u"x", 0, 0, false, u"", false, 11, 2},
        // Where a new attribute belongs: in front of the closing whitespace.
        {u"<e   >", u"x", 0, 0, false, u"", false, 2},
        {u"<e a=\"1\" />", u"x", 0, 0, false, u"", false, 8},
        {u"<e a=\"1\"\r\n/>", u"x", 0, 0, false, u"", false, 8},
        {u"<e a", u"x", 0, 0, false, u"", false, 4},
    };
    for (const auto& tc : cases) {
        SCOPED_TRACE(Narrow(tc.text) + " name=" + (tc.name ? Narrow(tc.name) : "null") +
                     " index=" + std::to_string(tc.index));
        const WideString text = tc.text;
        ExactText exact(text);
        TokenCursor cursor(exact.data.get(), tc.flags, tc.from);
        ASSERT_EQ(ScanAttrib(cursor, tc.name, tc.index), tc.found);
        EXPECT_EQ(cursor.next, tc.next);
        if (!tc.found) continue;
        EXPECT_EQ(Narrow(Token(cursor)), Narrow(tc.token));
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
        {u"<a b>", 1, 1, u"a/b", 0, true},
        {u"<a b>", 1, 1, u"a[1]", 0, true},
        {u"<a b>", 1, 1, u"a=x", 0, true},
        {u"<a b>", 1, 1, u"a x", 0, true},
        {u"<a b>", 1, 1, u"a]", 0, true},
        {u"<a b>", 1, 1, u"ab", 0, false},
        {u"<a b>", 1, 1, u"a;", 0, false},
        {u"<a b>", 1, 1, u"a\t", 0, false}, // only the space ends a path name
        {u"<a b>", 1, 1, u"", 0, false},
        {u"<ab>", 1, 2, u"a", 0, false},
        {u"<ab>", 1, 2, u"a/", 0, false},
        {u"<ab>", 1, 2, u"ab", 0, true},
        {u"<A>", 1, 1, u"a", 0, false},
        {u"<A>", 1, 1, u"a", DocIgnoreCase, true},
        {u"<Ab>", 1, 2, u"aB[2]", DocIgnoreCase, true},
        {u"<\u00e9A>", 1, 2, u"\u00e9a", DocIgnoreCase, false},
        {u"<a>", 1, 0, u"", 0, true},
        {u"<a>", 1, 0, u"[1]", 0, true},
        {u"<a>", 1, 0, u"a", 0, false},
    };
    for (const auto& tc : cases) {
        SCOPED_TRACE(Narrow(tc.text) + " vs " + Narrow(tc.name));
        ExactText name(tc.name);
        TokenCursor cursor(tc.text, tc.flags);
        cursor.tokenStart = tc.start;
        cursor.tokenEnd = tc.start + tc.length - 1;
        EXPECT_EQ(TokenEquals(cursor, name.data.get()), tc.equal);
    }
}

} // namespace
