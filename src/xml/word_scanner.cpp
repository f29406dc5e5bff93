// word_scanner.cpp - takes a start tag apart in place: ScanWord reads the next
// word, and ScanAttrib finds an attribute by name or index (or the place where
// a new one belongs).
//
// Nothing is copied or written, and no scan looks past the text's NUL. Tags
// aren't validated here: whatever the node scanner accepted is taken apart.
#include "xml/char_sets.h"
#include "xml/token.h"

namespace vetra::xml {

bool ScanWord(TokenCursor& cursor) {
    int32_t start;
    const int32_t length = WordSpan(cursor.text, cursor.next, start);
    cursor.tokenStart = start;
    cursor.next = start + length;
    cursor.tokenEnd = start + length - 1;
    return length != 0;
}

namespace {

// The matched name becomes the token again, for a match that has no value.
bool RestoreMatchedName(TokenCursor& cursor, int32_t found) {
    cursor.tokenStart = cursor.matchGap + cursor.matchOrigin;
    cursor.next = found + 1;
    cursor.tokenEnd = found;
    return true;
}

} // namespace

bool ScanAttrib(TokenCursor& cursor, const wchar* name, int32_t index) {
    return ScanAttribFrom(cursor, name, index, -1, 0);
}

bool ScanAttribFrom(TokenCursor& cursor, const wchar* name, int32_t index, int32_t counter,
                    int32_t found) {
    // counter: -1 while the tag's own name is still to come.
    // found: tokenEnd of the matched name, 0 until a match.
    const wchar* text = cursor.text;
    bool afterEquals = false;

    for (;;) {
        afterEquals = false;
        for (;;) {
            const int32_t origin = cursor.next;
            int32_t i = origin;
            while (InSet(text[i], WhitespaceChars))
                ++i;
            cursor.next = i;
            cursor.tokenStart = i;
            cursor.tokenEnd = i - 1;
            if (text[i] == 0) {
                if (found == 0) return false;
                // The value is empty when the text ends right behind the =.
                if (afterEquals) return true;
                return RestoreMatchedName(cursor, found);
            }
            const int32_t gap = i - origin;

            const wchar first = text[i];
            if (first == u'"' || first == u'\'') {
                cursor.flags |= CursorQuoted;
                ++i;
                cursor.tokenStart = i;
                while (text[i] != 0 && text[i] != first)
                    ++i;
                cursor.tokenEnd = i - 1;
                if (text[i] == first) ++i;
                cursor.next = i;
            } else {
                cursor.flags &= ~CursorQuoted;
                const uint8_t ends = afterEquals ? AttribValueEndChars : AttribNameEndChars;
                while (text[i] != 0 && !InSet(text[i], ends))
                    ++i;
                if (i == cursor.next) ++i;
                cursor.next = i;
                cursor.tokenEnd = i - 1;
            }

            // A value that belongs to no match is passed over, and so is a
            // quoted token where a name should stand.
            if (afterEquals || (cursor.flags & CursorQuoted) != 0) {
                if (found == 0) break;
                if (afterEquals) return true;
                return RestoreMatchedName(cursor, found);
            }

            const wchar lead = text[cursor.tokenStart];
            if (lead == u'=') {
                afterEquals = true;
                continue;
            }
            if (lead == u'>' || lead == u'/' || lead == u'?') {
                // End of the attributes: stand in front of the whitespace that
                // precedes the tag's end, where a new attribute goes.
                cursor.next = origin;
                if (found == 0) return false;
                return RestoreMatchedName(cursor, found);
            }

            // A name. One after a match means the match had no value.
            if (found != 0) return RestoreMatchedName(cursor, found);
            if (counter != -1) {
                if (name == nullptr) {
                    if (counter == index) return true;
                } else if (TokenEquals(cursor, name)) {
                    found = cursor.tokenEnd;
                    if (found != 0) {
                        cursor.matchOrigin = origin;
                        cursor.matchGap = gap;
                    }
                }
            }
            ++counter;
            break;
        }
    }
}

} // namespace vetra::xml
