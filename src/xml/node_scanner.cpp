// node_scanner.cpp - ScanNode cuts the text into nodes, and TokenText
// copies a token.
//
// The scanner is lenient: it finds the extent of a tag without validating
// its inside, and reports only what stops it from finding that extent. It
// looks at every character once, copies nothing and never writes the text.
// Per character, in order: the end of the text; the name being read; the
// inside of a node whose terminator is known (with quote tracking); and the
// openers between nodes, where the five syntax faults arise.
#include "xml/char_sets.h"
#include "xml/token.h"
#include "text/result_log.h"

namespace vetra::xml {

namespace {

// The scan's state bits.
enum ScanState : uint32_t {
    ScanAfterLess = 0x1, ScanAfterBang = 0x2, ScanAfterDash = 0x4, ScanAfterBracket = 0x8,
    ScanInSpace = 0x10, ScanInDocType = 0x20, ScanInSingle = 0x40, ScanInDouble = 0x80,
    ScanAfterEquals = 0x100, ScanInBare = 0x200,
};
// Skip classes: which characters end a run that the scan can pass over in a
// tight loop. A run's characters would change nothing but `prev` and
// `prev2`; NUL ends every run, and no character above 127 ends any.
enum SkipStop : uint8_t {
    StopText = 0x01,    // a text run: < and >
    StopDouble = 0x02,  // inside "...": the closing quote
    StopSingle = 0x04,  // inside '...': the closing quote
    StopBare = 0x08,    // an unquoted value: whitespace and >
    StopTag = 0x10,     // a start tag outside values: = and >
    StopClose = 0x20,   // end tags, comments, CDATA, instructions: >
    StopDecl = 0x40,    // a declaration inside a document type: > and quotes
    StopDocType = 0x80, // between declarations of a document type: < and >
};

constexpr uint8_t StopsOf(int c) {
    switch (c) {
    case 0: return 0xFF;
    case '<': return StopText | StopDocType;
    case '>': return StopText | StopBare | StopTag | StopClose | StopDecl | StopDocType;
    case '"': return StopDouble | StopDecl;
    case '\'': return StopSingle | StopDecl;
    case '=': return StopTag;
    case '\t': case '\n': case '\r': case ' ': return StopBare;
    default: return 0;
    }
}

struct StopTable {
    uint8_t v[128];
    constexpr StopTable() : v() {
        for (int c = 0; c < 128; ++c) v[c] = StopsOf(c);
    }
};
constexpr StopTable kStops;

// The first offset from i whose character is in `stops`.
inline int32_t SkipTo(const wchar* text, int32_t i, uint8_t stops) {
    for (;; ++i) {
        wchar c = text[i];
        if (c < 128 && (kStops.v[c] & stops)) return i;
    }
}

const wchar* TypeWord(uint32_t state, int32_t type) {
    if ((state & ScanInDocType) || type == NodeDocType) return u"document_type";
    switch (type) {
    case NodeElement: return u"start_tag";
    case ScanEndTag: return u"end_tag";
    case NodeCData: return u"cdata_section";
    case NodeProcessing: return u"processing_instruction";
    case NodeComment: return u"comment";
    default: return u"tag";
    }
}
} // namespace

WideString TokenText(const TokenCursor& c) {
    int32_t n = c.tokenEnd - c.tokenStart + 1;
    return n > 0 ? WideString(c.text + c.tokenStart, size_t(n)) : WideString();
}

int32_t ScanNode(TokenCursor& cursor, NodeToken& node) {
    const wchar* text = cursor.text;
    node.start = cursor.next;
    node.flags = 0;
    int32_t type = -1;
    const wchar* terminator = nullptr;
    int32_t termLength = 0;
    int32_t nameStart = 0;
    wchar prev = 0, prev2 = 0;
    uint32_t state = 0;
    auto fault = [&](const wchar* key) {
        terminator = u">";
        termLength = 1;
        type = ScanError;
        text::LogResult(node.report, key, nullptr, 0, cursor.next, -1);
    };
    for (int32_t i = cursor.next;; ++i) {
        // Pass over runs in which no rule would do more than shift `prev`.
        if (nameStart != 0) {
            while (text[i] >= 128 || (text[i] != 0 && !InSet(text[i], NameEndChars))) ++i;
        } else if (terminator != nullptr) {
            uint8_t stops = 0;
            if (type == NodeText) {
                stops = StopText;
            } else if (type == NodeElement) {
                stops = (state & ScanInDouble)      ? StopDouble
                        : (state & ScanInSingle)    ? StopSingle
                        : (state & ScanInBare)      ? StopBare
                        : (state & ScanAfterEquals) ? 0
                                                    : StopTag;
            } else if (type == NodeDocType) {
                stops = StopDecl;
            } else if (type != ScanError) {
                stops = StopClose;
            }
            if (stops != 0) {
                int32_t from = i;
                i = SkipTo(text, i, stops);
                if (type == NodeElement && i > from) {
                    prev2 = i - from >= 2 ? text[i - 2] : prev;
                    prev = text[i - 1];
                }
            }
        } else if (state == ScanInSpace) {
            while (InSet(text[i], WhitespaceChars)) ++i;
        } else if (state == ScanInDocType) {
            i = SkipTo(text, i, StopDocType);
        }
        wchar c = text[i];
        if (c == 0) {
            cursor.next = i;
            node.length = i - node.start;
            if (cursor.next == node.start) {
                node.length = 0;
                node.type = ScanEnd;
                return ScanEnd;
            }
            if (type == NodeText || type == NodeWhitespace) return node.type = type;
            text::LogResult(node.report, u"unterminated_tag_syntax", TypeWord(state, type),
                            text::LogType, node.start, -1);
            return node.type = ScanError;
        }
        if (nameStart != 0) {
            if (!InSet(c, NameEndChars)) continue;
            cursor.tokenStart = nameStart;
            cursor.tokenEnd = i - 1;
            nameStart = 0;
            prev = prev2 = 0;
        }
        if (terminator != nullptr) {
            if (c == u'>' && !(state & (ScanInSingle | ScanInDouble))) {
                cursor.next = i + 1;
                if (termLength == 1) {
                    terminator = nullptr;
                    if (type == 1 && prev == u'/' &&
                        !(prev2 != 0 && (state & ScanInBare) && !InSet(prev2, BeforeSlashChars)))
                        node.flags |= NodeEmptyTag;
                } else if (i > termLength) {
                    bool same = true;
                    for (int32_t k = 0; k < termLength - 1; ++k)
                        if (text[i - (termLength - 1) + k] != terminator[k]) same = false;
                    if (same) terminator = nullptr;
                }
                state &= ~ScanInBare;
                if (terminator != nullptr) continue;
                if (state & ScanInDocType) continue;
                node.length = cursor.next - node.start;
                return node.type = type;
            }
            if (c == u'<' && (type == NodeText || type == -1)) {
                cursor.next = i;
                node.length = i - node.start;
                return node.type = type;
            }
            if (type == 1 || type == -1) {
                if (state & ScanInDouble) {
                    if (c == u'"') state &= ~ScanInDouble;
                } else if (state & ScanInSingle) {
                    if (c == u'\'') state &= ~ScanInSingle;
                } else if (state & ScanInBare) {
                    if (InSet(c, WhitespaceChars)) state &= ~ScanInBare;
                } else if (c == u'"' && (state & ScanAfterEquals)) {
                    state = (state & ~ScanAfterEquals) | ScanInDouble;
                } else if (c == u'\'' && (state & ScanAfterEquals)) {
                    state = (state & ~ScanAfterEquals) | ScanInSingle;
                } else if (c == u'=' && !(state & ScanAfterEquals) && prev != u'=') {
                    state |= ScanAfterEquals;
                } else if (!InSet(c, WhitespaceChars) && (state & ScanAfterEquals)) {
                    state = (state & ~ScanAfterEquals) | ScanInBare;
                }
                prev2 = prev;
                prev = c;
            } else if (type == NodeDocType) {
                if (c == u'"' && !(state & ScanInSingle)) state ^= ScanInDouble;
                else if (c == u'\'' && !(state & ScanInDouble)) state ^= ScanInSingle;
            }
            continue;
        }
        if (state == 0) {
            if (c == u'<') {
                state = ScanAfterLess;
            } else if (InSet(c, WhitespaceChars)) {
                type = NodeWhitespace;
                state = ScanInSpace;
            } else {
                type = NodeText;
                terminator = u"<";
                termLength = 1;
            }
        } else if (state & ScanInSpace) {
            if (c == u'<') {
                cursor.next = i;
                node.length = i - node.start;
                return node.type = NodeWhitespace;
            }
            if (!InSet(c, WhitespaceChars)) {
                state &= ~ScanInSpace;
                type = NodeText;
                terminator = u"<";
                termLength = 1;
            }
        } else if (state & ScanAfterLess) {
            state &= ~ScanAfterLess;
            if (CanBeginName(c)) {
                type = 1; terminator = u">"; termLength = 1; nameStart = i;
            } else if (c == u'/') {
                type = 0; terminator = u">"; termLength = 1; nameStart = i + 1;
            } else if (c == u'!') {
                state |= ScanAfterBang;
            } else if (c == u'?') {
                type = 16; terminator = u"?>"; termLength = 2; nameStart = i + 1;
            } else {
                fault(u"first_tag_syntax");
            }
        } else if (state & ScanAfterBang) {
            state &= ~ScanAfterBang;
            if (c == u'-') {
                state |= ScanAfterDash;
            } else if (state & ScanInDocType) {
                if (InSet(c, DeclStartChars)) { type = 64; terminator = u">"; termLength = 1; }
                else fault(u"doctype_tag_syntax");
            } else if (c == u'[') {
                state |= ScanAfterBracket;
            } else if (c == u'D') {
                state |= ScanInDocType;
            } else {
                fault(u"exclamation_tag_syntax");
            }
        } else if (state & ScanAfterDash) {
            state &= ~ScanAfterDash;
            if (c == u'-') { type = 32; terminator = u"-->"; termLength = 3; }
            else fault(u"comment_tag_syntax");
        } else if (state & ScanAfterBracket) {
            state &= ~ScanAfterBracket;
            if (c == u'C') { type = 8; terminator = u"]]>"; termLength = 3; }
            else fault(u"cdata_section_syntax");
        } else if (state & ScanInDocType) {
            if (c == u'<') {
                state |= ScanAfterLess;
            } else if (c == u'>') {
                cursor.next = i + 1;
                node.length = cursor.next - node.start;
                return node.type = NodeDocType;
            }
        }
    }
}

} // namespace vetra::xml
