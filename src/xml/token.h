// token.h - the scanner's state (TokenCursor) and the result of one node
// scan (NodeToken), and the scanner operations over them.
//
// The scanner never writes to the text and copies nothing but in TokenText.
// ScanNode is in node_scanner.cpp; ScanWord and ScanAttrib in
// word_scanner.cpp; TokenEquals, small and hot, is here.
#ifndef VETRA_XML_TOKEN_H
#define VETRA_XML_TOKEN_H

#include <cstdint>

#include "xml/char_sets.h"
#include "xml/xml_types.h"

namespace vetra::xml {

/// Scanner state, set up on the spot by each reading operation.
struct TokenCursor {
    int32_t tokenStart = 0;      // first character of the current token
    int32_t tokenEnd = -1;       // last character; tokenStart - 1 when empty
    int32_t next = 0;            // where scanning goes on
    const wchar* text = nullptr; // the null-terminated text
    uint32_t flags = 0;          // a copy of the document flags, plus CursorQuoted
    int32_t matchOrigin = 0;     // ScanAttrib: where the scan stood before the match's whitespace
    int32_t matchGap = 0;        // ScanAttrib: whitespace characters before the matched name
    void* stream = nullptr;      // stream context; always null in this library

    TokenCursor() = default;
    TokenCursor(const wchar* t, uint32_t docFlags, int32_t from = 0)
        : next(from), text(t), flags(docFlags) {}
    bool IgnoreCase() const { return (flags & DocIgnoreCase) != 0; }
    int32_t TokenLength() const { return tokenEnd - tokenStart + 1; }
};

/// The result of one ScanNode.
struct NodeToken {
    int32_t type = ScanEnd; // the result code (a NodeType)
    int32_t start = 0;      // offset of the node's first character
    int32_t length = 0;     // length of the node
    uint32_t flags = 0;     // 0 or NodeEmptyTag
    WideString report;      // result-log text of the syntax faults met; only appended to
};

/// Scans the next node from `cursor.next`: see node_scanner.cpp.
int32_t ScanNode(TokenCursor& cursor, NodeToken& node);
/// ScanNode by the general state machine alone, without the loops for the
/// usual nodes; both give the same results (the tests compare them).
int32_t ScanNodeByRules(TokenCursor& cursor, NodeToken& node);

/// A copy of the cursor's token.
WideString TokenText(const TokenCursor& cursor);

/// The word ScanWord reads from offset `i`: its first offset in `start`, and
/// its length, 0 at the end of the text. A delimiter is a word of its own.
inline int32_t WordSpan(const wchar* text, int32_t i, int32_t& start) {
    while (InSet(text[i], WhitespaceChars))
        ++i;
    start = i;
    if (text[i] == 0) return 0;
    const int32_t end = SkipToStop<WordEndChars>(text, i);
    return end == i ? 1 : end - i;
}

/// Reads the next word into the token; false at the end of the text.
bool ScanWord(TokenCursor& cursor);

/// Finds an attribute of the tag whose name follows `cursor.next`: by name
/// (its value, or its name if it has none, is left in the token), or with a
/// null name by index from 0 (its name is left in the token). On failure
/// `next` stands where a new attribute belongs.
bool ScanAttrib(TokenCursor& cursor, const wchar* name, int32_t index);

/// ScanAttrib taken up where an earlier scan of the same tag stood:
/// `counter` is the index the next name gets (-1 before the tag's name),
/// `found` the tokenEnd of a name already matched (with matchOrigin and
/// matchGap set), else 0. ScanAttrib itself is ScanAttribFrom(..., -1, 0).
bool ScanAttribFrom(TokenCursor& cursor, const wchar* name, int32_t index, int32_t counter,
                    int32_t found);

/// Does the token match `name`? The name may go on behind the token with a
/// member of PathEndChars.
inline bool TokenEquals(const wchar* token, int32_t length, const wchar* name, bool ignoreCase) {
    if (name == nullptr || length < 0) return false;
    // Most names that differ do so in their first unit.
    if (length > 0 && !ignoreCase && token[0] != name[0]) return false;
    // CompareNames stops at the first difference, and the token holds no NUL,
    // so a name shorter than the token is never read past its end.
    if (CompareNames(token, name, length, ignoreCase) != 0) return false;
    const wchar after = name[length];
    return after == 0 || InSet(after, PathEndChars);
}
inline bool TokenEquals(const TokenCursor& cursor, const wchar* name) {
    return TokenEquals(cursor.text + cursor.tokenStart, cursor.TokenLength(), name,
                       cursor.IgnoreCase());
}

} // namespace vetra::xml

#endif // VETRA_XML_TOKEN_H
