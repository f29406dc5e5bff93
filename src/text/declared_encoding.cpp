// declared_encoding.cpp - reads the encoding a document names for itself: the
// `encoding` of an XML declaration at the very start, or the charset in the
// `content` of an HTML meta element with http-equiv="Content-Type".
//
// It walks the text node by node with the XML engine's scanner and stops at
// the first node that settles the question; it never changes the text, logs
// nothing, and, like the scanner, never reads past the text's null.
#include "text/declared_encoding.h"

#include "xml/token.h"

namespace vetra::text {

using xml::TokenCursor;
using xml::wchar;
using xml::WideString;

namespace {

// Every name and word here compares without regard to ASCII case, whatever
// the document's own flags say.
TokenCursor CursorAt(const wchar* text, int32_t at) {
    return TokenCursor(text, xml::DocIgnoreCase, at);
}

bool WordIs(const wchar* text, int32_t at, const wchar* word) {
    TokenCursor cursor = CursorAt(text, at);
    return xml::ScanWord(cursor) && xml::TokenEquals(cursor, word);
}

// The attribute lookup takes the first word it meets for the tag's name, so
// the first attribute behind that word is never matched.
bool FindAttrib(const wchar* text, int32_t at, const wchar* name, TokenCursor& cursor) {
    cursor = CursorAt(text, at);
    return xml::ScanAttrib(cursor, name, -1);
}

// The word behind "charset" and "=" in the `content` of the tag whose name
// starts at `tagName`. Words are read from the value's first character while
// they start inside the value; the word itself may run on behind it.
WideString CharsetOfContent(const wchar* text, int32_t tagName) {
    TokenCursor cursor;
    if (!FindAttrib(text, tagName, u"content", cursor)) return {};
    const int32_t limit = cursor.tokenEnd + 1;
    cursor.next = cursor.tokenStart;
    while (cursor.next < limit) {
        if (!xml::ScanWord(cursor)) return {};
        if (!xml::TokenEquals(cursor, u"charset")) continue;
        if (!xml::ScanWord(cursor)) return {};
        if (!xml::TokenEquals(cursor, u"=")) continue;
        if (!xml::ScanWord(cursor)) return {};
        return xml::TokenText(cursor);
    }
    return {};
}

} // namespace

WideString FindDeclaredEncoding(const wchar* text) {
    TokenCursor cursor = CursorAt(text, 0);
    bool insideHtml = false;
    for (;;) {
        xml::NodeToken node;
        const int32_t type = xml::ScanNode(cursor, node);
        if (type < 0) return {};
        const int32_t start = node.start;
        switch (type) {
        case xml::NodeProcessing: {
            // Only a declaration at the very start counts; any other
            // instruction is passed over.
            if (start != 0) break;
            TokenCursor word = CursorAt(text, 2);
            if (!xml::ScanWord(word) || !xml::TokenEquals(word, u"xml")) break;
            TokenCursor attrib = CursorAt(text, word.next);
            if (!xml::ScanAttrib(attrib, u"encoding", -1)) return {};
            return xml::TokenText(attrib);
        }
        case xml::ScanEndTag:
            if (WordIs(text, start + 2, u"head")) return {};
            break;
        case xml::NodeElement: {
            // The first element of an XML document ends the search; an HTML
            // document is searched for its meta elements up to </head>.
            if (!insideHtml) {
                if (!WordIs(text, start + 1, u"html")) return {};
                insideHtml = true;
                break;
            }
            if (!WordIs(text, start + 1, u"meta")) break;
            TokenCursor equiv;
            if (!FindAttrib(text, start + 1, u"http-equiv", equiv) ||
                !xml::TokenEquals(equiv, u"Content-Type")) {
                break;
            }
            return CharsetOfContent(text, start + 1);
        }
        default:
            break;
        }
    }
}

} // namespace vetra::text
