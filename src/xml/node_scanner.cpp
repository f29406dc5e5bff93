// node_scanner.cpp - ScanNode cuts the text into nodes, and TokenText copies
// a token.
//
// The scanner is lenient: it finds the extent of a tag without validating
// its inside, and reports only what stops it from finding that extent. It
// looks at every character once, copies nothing and never writes the text,
// and it reads no further than the NUL that ends it.
//
// Map of this file:
//   ScanState        the bits of the scan's `state`, one name per bit
//   Runs             the runs that no rule acts on, the table of what ends
//                    each, SkipRun, and TagRunOf for the runs of a start tag
//   TrackQuotes      the quote tracking of start tags and malformed tag text
//   EndOfText        rule 1, with the type words of the unterminated entry
//   QuickNode        the usual nodes, each by a loop of its own
//   TokenText
//   ScanNodeByRules  the state machine: a pass over the current run, then
//                    for the character that ends it rule 1 (end of the
//                    text), rule 2 (name), rule 3 (inside a node with a
//                    terminator) and rule 4 (between nodes, the openers)
#include "text/result_log.h"
#include "xml/char_sets.h"
#include "xml/run_search.h"
#include "xml/token.h"

namespace vetra::xml {

namespace {

// The scan's state bits.
enum ScanState : uint32_t {
    ScanAfterLess = 0x1,     // the last character was <
    ScanAfterBang = 0x2,     // the last two characters were <!
    ScanAfterDash = 0x4,     // the last three characters were <!-
    ScanAfterBracket = 0x8,  // the last three characters were <![
    ScanInSpace = 0x10,      // in a run of whitespace
    ScanInDocType = 0x20,    // inside a document type declaration
    ScanInSingle = 0x40,     // inside a single-quoted value
    ScanInDouble = 0x80,     // inside a double-quoted value
    ScanAfterEquals = 0x100, // behind the = of an attribute
    ScanInBare = 0x200,      // inside an unquoted value
};

// ---------------------------------------------------------------------------
// Runs
//
// A run is a stretch of characters on which the rules would do nothing but
// shift `prev` and `prev2`; the scan passes over it in a tight loop. Each
// kind of run has a bit, and kRunEnds[c] holds the bits of the runs that c
// ends: every character that a rule acts on is ASCII, and the NUL ends
// every run. Ending a run at a character that no rule acts on is harmless:
// the rules see it as usual.

enum Run : uint8_t {
    NoRun = 0,         // each character goes through the rules
    NameRun = 0x01,    // a name: ends at NameEndChars
    TextRun = 0x02,    // a text node: < and >
    DocTypeRun = 0x02, // between the declarations of a document type: < and >
    DeclRun = 0x04,    // a declaration inside a document type: > and quotes
    CloseRun = 0x08,   // end tags, instructions, comments, CDATA sections: >
    TagRun = 0x10,     // a start tag between values: = and >
    DoubleRun = 0x20,  // a double-quoted value: "
    SingleRun = 0x40,  // a single-quoted value: '
    BareRun = 0x80,    // an unquoted value: whitespace and >
    // The runs of a start tag behind its name: passing over one moves prev
    // and prev2.
    TagRuns = TagRun | DoubleRun | SingleRun | BareRun,
};

constexpr uint8_t RunEndsOf(int c) {
    switch (c) {
    case 0:
        return 0xFF;
    case '\t':
    case '\n':
    case '\r':
    case ' ':
        return NameRun | BareRun;
    case '/':
        return NameRun;
    case '>':
        return NameRun | TextRun | DeclRun | CloseRun | TagRun | BareRun;
    case '<':
        return TextRun;
    case '"':
        return DeclRun | DoubleRun;
    case '\'':
        return DeclRun | SingleRun;
    case '=':
        return TagRun;
    default:
        return 0;
    }
}

constexpr AsciiTable<RunEndsOf> kRunEnds;

// The first offset from i that ends the run. Nothing above '>' ends one.
inline int32_t SkipRun(const wchar* text, int32_t i, uint8_t run) {
    constexpr wchar last = LastMarked<RunEndsOf>();
    static_assert(last == u'>', "the markup characters end the runs");
    for (;; ++i) {
        const wchar c = text[i];
        if (c <= last && (kRunEnds.v[c] & run) != 0) return i;
    }
}

// Does the table end `run` at exactly the NUL, a, b and c?
constexpr bool RunEndsAre(uint8_t run, int a, int b, int c) {
    for (int k = 0; k < 128; ++k)
        if (((RunEndsOf(k) & run) != 0) != (k == 0 || k == a || k == b || k == c)) return false;
    return true;
}
static_assert(RunEndsAre(CloseRun, '>', '>', '>') && RunEndsAre(TextRun, '<', '>', '>') &&
                  RunEndsAre(DeclRun, '>', '"', '\''),
              "SkipLongRun searches for what the table says ends each run");

// SkipRun for the runs that are usually long, comments and the like: eight
// units at a time. (Runs inside start tags are short, and a search of eight
// costs more there than the loop.)
inline int32_t SkipLongRun(const wchar* text, int32_t i, uint8_t run) {
    switch (run) {
    case CloseRun:
        return FindAny(text, i, u'>', u'>', u'>');
    case TextRun:
        return FindAny(text, i, u'<', u'>', u'>');
    case DeclRun:
        return FindAny(text, i, u'>', u'"', u'\'');
    default:
        return SkipRun(text, i, run);
    }
}

// The run in a start tag behind its name, by the quote state: a table over
// the four bits from ScanInSingle to ScanInBare, of which at most one is set.
constexpr uint32_t QuoteShift = 6;
static_assert(ScanInSingle == 1u << QuoteShift && ScanInDouble == 2u << QuoteShift &&
                  ScanAfterEquals == 4u << QuoteShift && ScanInBare == 8u << QuoteShift,
              "the quote bits are adjacent");

struct TagRunTable {
    Run v[16];
    constexpr TagRunTable() : v() {
        for (uint32_t q = 0; q < 16; ++q) {
            const uint32_t state = q << QuoteShift;
            v[q] = (state & ScanInDouble)      ? DoubleRun
                   : (state & ScanInSingle)    ? SingleRun
                   : (state & ScanInBare)      ? BareRun
                   : (state & ScanAfterEquals) ? NoRun
                                               : TagRun;
        }
    }
};
constexpr TagRunTable kTagRuns;

inline Run TagRunOf(uint32_t state) {
    return kTagRuns.v[(state >> QuoteShift) & 15];
}

// ---------------------------------------------------------------------------
// Quote tracking in a start tag and in malformed tag text: the new state.

inline uint32_t TrackQuotes(uint32_t state, wchar c, wchar prev) {
    if (state & ScanInDouble) return c == u'"' ? state & ~ScanInDouble : state;
    if (state & ScanInSingle) return c == u'\'' ? state & ~ScanInSingle : state;
    if (state & ScanInBare) return InSet(c, WhitespaceChars) ? state & ~ScanInBare : state;
    if (state & ScanAfterEquals) {
        if (c == u'"') return (state & ~ScanAfterEquals) | ScanInDouble;
        if (c == u'\'') return (state & ~ScanAfterEquals) | ScanInSingle;
        if (!InSet(c, WhitespaceChars)) return (state & ~ScanAfterEquals) | ScanInBare;
        return state;
    }
    // A = directly behind a = is a plain character.
    if (c == u'=' && prev != u'=') return state | ScanAfterEquals;
    return state;
}

// ---------------------------------------------------------------------------
// Rule 1: the NUL at offset i.

const wchar* TypeWord(uint32_t state, int32_t type) {
    if ((state & ScanInDocType) || type == NodeDocType) return u"document_type";
    switch (type) {
    case NodeElement:
        return u"start_tag";
    case ScanEndTag:
        return u"end_tag";
    case NodeCData:
        return u"cdata_section";
    case NodeProcessing:
        return u"processing_instruction";
    case NodeComment:
        return u"comment";
    default:
        return u"tag";
    }
}

int32_t EndOfText(TokenCursor& cursor, NodeToken& node, int32_t i, int32_t type, uint32_t state) {
    cursor.next = i;
    if (i == node.start) {
        node.length = 0;
        node.type = 0;
        return ScanEnd;
    }
    node.length = i - node.start;
    if (type != NodeText && type != NodeWhitespace) {
        text::LogResult(node.report, u"unterminated_tag_syntax", TypeWord(state, type),
                        text::LogType, node.start, -1);
        type = ScanError;
    }
    node.type = type;
    return type;
}

// ---------------------------------------------------------------------------
// The usual nodes, read by loops of their own: whitespace and text, start
// tags, end tags. Each loop does exactly what the state machine below would
// do for that node; at the NUL, or at anything else it doesn't handle, it
// gives kUnsure before it has changed anything, and the machine starts the
// node over.

constexpr int32_t kUnsure = ScanEnd - 1;

int32_t Done(TokenCursor& cursor, NodeToken& node, int32_t next, int32_t type) {
    cursor.next = next;
    node.length = next - node.start;
    node.type = type;
    return type;
}

// Text runs to a < (not taken) or a > (taken), and may begin with whitespace.
int32_t QuickText(TokenCursor& cursor, NodeToken& node, int32_t i) {
    const wchar* text = cursor.text;
    while (InSet(text[i], WhitespaceChars))
        ++i;
    const wchar c = text[i];
    if (c == 0) return kUnsure;
    if (c == u'<') return Done(cursor, node, i, NodeWhitespace);
    // c is text even if it is a >: the run starts behind it.
    i = FindAny(text, i + 1, u'<', u'>', u'>'); // the text run, eight at a time
    if (text[i] == 0) return kUnsure;
    return Done(cursor, node, text[i] == u'>' ? i + 1 : i, NodeText);
}

// `<` then a name, then names, values and whitespace up to the >.
int32_t QuickStartTag(TokenCursor& cursor, NodeToken& node, int32_t i) {
    const wchar* text = cursor.text;
    const int32_t nameStart = i + 1;
    i = SkipRun(text, i + 2, NameRun);
    wchar c = text[i];
    if (c == 0) return kUnsure;
    const int32_t nameEnd = i - 1;
    uint32_t state = 0;
    wchar prev = 0, prev2 = 0;
    if (c != u'>') {
        // The character that ended the name is whitespace or /.
        prev = c;
        Run run = TagRun;
        for (;;) {
            ++i;
            if (run != NoRun) {
                const int32_t from = i;
                i = SkipLongRun(text, i, run);
                if (i != from) {
                    prev2 = i - from > 1 ? text[i - 2] : prev;
                    prev = text[i - 1];
                }
            }
            c = text[i];
            if (c == 0) return kUnsure;
            if (c == u'>' && !(state & (ScanInSingle | ScanInDouble))) break;
            // The usual attribute, = and a quoted value: its steps through
            // the quote states end where they began, with the closing quote
            // last and what came before it next to last.
            const wchar quote = text[i + 1];
            if (state == 0 && c == u'=' && prev != u'=' && (quote == u'"' || quote == u'\'')) {
                i = SkipRun(text, i + 2, quote == u'"' ? DoubleRun : SingleRun);
                if (text[i] == 0) return kUnsure;
                prev2 = text[i - 1];
                prev = quote;
                continue;
            }
            state = TrackQuotes(state, c, prev);
            prev2 = prev;
            prev = c;
            run = TagRunOf(state);
        }
        if (prev == u'/' &&
            !(prev2 != 0 && (state & ScanInBare) && !InSet(prev2, BeforeSlashChars)))
            node.flags |= NodeEmptyTag;
    }
    cursor.tokenStart = nameStart;
    cursor.tokenEnd = nameEnd;
    return Done(cursor, node, i + 1, NodeElement);
}

// `</`, a name, and anything up to the >.
int32_t QuickEndTag(TokenCursor& cursor, NodeToken& node, int32_t i) {
    const wchar* text = cursor.text;
    const int32_t nameStart = i + 2;
    i = SkipRun(text, nameStart, NameRun);
    const int32_t nameEnd = i - 1;
    if (text[i] == 0) return kUnsure;
    if (text[i] != u'>') i = SkipRun(text, i + 1, CloseRun);
    if (text[i] == 0) return kUnsure;
    cursor.tokenStart = nameStart;
    cursor.tokenEnd = nameEnd;
    return Done(cursor, node, i + 1, ScanEndTag);
}

int32_t QuickNode(TokenCursor& cursor, NodeToken& node) {
    const wchar* text = cursor.text;
    const int32_t i = cursor.next;
    const wchar c = text[i];
    if (c != u'<') return c == 0 ? kUnsure : QuickText(cursor, node, i);
    const wchar after = text[i + 1];
    if (after == u'/') return QuickEndTag(cursor, node, i);
    if (CanBeginName(after)) return QuickStartTag(cursor, node, i);
    return kUnsure;
}

} // namespace

WideString TokenText(const TokenCursor& cursor) {
    const int32_t n = cursor.tokenEnd - cursor.tokenStart + 1;
    return n > 0 ? WideString(cursor.text + cursor.tokenStart, size_t(n)) : WideString();
}

int32_t ScanNode(TokenCursor& cursor, NodeToken& node) {
    node.start = cursor.next;
    node.flags = 0;
    const int32_t quick = QuickNode(cursor, node);
    return quick != kUnsure ? quick : ScanNodeByRules(cursor, node);
}

// Kept out of ScanNode, so that the usual nodes don't pay for saving the
// registers that the state machine needs.
VETRA_NO_INLINE int32_t ScanNodeByRules(TokenCursor& cursor, NodeToken& node) {
    const wchar* const text = cursor.text;
    node.start = cursor.next;
    node.flags = 0;

    int32_t type = ScanError;
    const wchar* terminator = nullptr; // what ends the node; null: none yet
    int32_t nameStart = 0;             // 0: no name being read
    wchar prev = 0, prev2 = 0;         // the last two characters of quote tracking
    uint32_t state = 0;
    uint8_t run = NoRun; // the run the scan stands in

    auto finish = [&](int32_t result) {
        node.length = cursor.next - node.start;
        node.type = result;
        return result;
    };
    auto open = [&](int32_t nodeType, const wchar* term, Run nodeRun) {
        type = nodeType;
        terminator = term;
        run = nodeRun;
    };
    // One of the five faults of rule 4: the rest is malformed tag text, read
    // one character at a time.
    auto fault = [&](const wchar* key) {
        open(ScanError, u">", NoRun);
        text::LogResult(node.report, key, nullptr, 0, cursor.next, -1);
    };

    for (int32_t i = cursor.next;; ++i) {
        if (run != NoRun) {
            const int32_t from = i;
            i = SkipLongRun(text, i, run);
            if ((run & TagRuns) != 0 && i != from) {
                prev2 = i - from > 1 ? text[i - 2] : prev;
                prev = text[i - 1];
            }
        }
        const wchar c = text[i];

        // Rule 1: the end of the text.
        if (c == 0) return EndOfText(cursor, node, i, type, state);

        // Rule 2: the name's run ends only at a member of NameEndChars (or
        // the NUL), which is passed on to rule 3.
        if (nameStart != 0) {
            cursor.tokenStart = nameStart;
            cursor.tokenEnd = i - 1;
            nameStart = 0;
            prev = prev2 = 0;
            run = CloseRun; // a start tag's run is set by its quote tracking below
        }

        // Rule 3: inside a node with a terminator.
        if (terminator != nullptr) {
            if (c == u'>' && !(state & (ScanInSingle | ScanInDouble))) {
                cursor.next = i + 1;
                if (terminator[1] == 0) {
                    terminator = nullptr;
                    if (type == NodeElement && prev == u'/' &&
                        !(prev2 != 0 && (state & ScanInBare) && !InSet(prev2, BeforeSlashChars)))
                        node.flags |= NodeEmptyTag;
                } else {
                    // Compare the characters before i with all but the last
                    // of the terminator, if i is greater than its length.
                    int32_t last = 1;
                    while (terminator[last + 1] != 0)
                        ++last;
                    if (i > last + 1) {
                        const wchar* before = text + i - last;
                        int32_t k = 0;
                        while (k < last && before[k] == terminator[k])
                            ++k;
                        if (k == last) terminator = nullptr;
                    }
                }
                state &= ~ScanInBare;
                if (terminator != nullptr) continue;
                if (!(state & ScanInDocType)) return finish(type);
                // A declaration inside a document type ended: back between them.
                run = DocTypeRun;
                continue;
            }
            if (c == u'<' && (type == NodeText || type == ScanError)) {
                cursor.next = i;
                return finish(type);
            }
            if (type == NodeElement || type == ScanError) {
                state = TrackQuotes(state, c, prev);
                prev2 = prev;
                prev = c;
                if (type == NodeElement) run = TagRunOf(state);
            } else if (type == NodeDocType) {
                if (c == u'"' && !(state & ScanInSingle))
                    state ^= ScanInDouble;
                else if (c == u'\'' && !(state & ScanInDouble))
                    state ^= ScanInSingle;
            }
            continue;
        }

        // Rule 4: between nodes and in the openers.
        if (state == 0) {
            if (c == u'<') {
                state = ScanAfterLess;
            } else if (InSet(c, WhitespaceChars)) {
                type = NodeWhitespace;
                state = ScanInSpace;
                while (InSet(text[i + 1], WhitespaceChars))
                    ++i; // the run of whitespace
            } else {
                open(NodeText, u"<", TextRun);
            }
        } else if (state & ScanInSpace) {
            // The whitespace was passed over in 4.1: c ends it.
            if (c == u'<') {
                cursor.next = i;
                return finish(NodeWhitespace);
            }
            state &= ~ScanInSpace;
            open(NodeText, u"<", TextRun); // the whitespace is the head of a text node
        } else if (state & ScanAfterLess) {
            state &= ~ScanAfterLess;
            if (CanBeginName(c)) {
                open(NodeElement, u">", NameRun);
                nameStart = i;
            } else if (c == u'/') {
                open(ScanEndTag, u">", NameRun);
                nameStart = i + 1;
            } else if (c == u'!') {
                state |= ScanAfterBang;
            } else if (c == u'?') {
                open(NodeProcessing, u"?>", NameRun);
                nameStart = i + 1;
            } else {
                fault(u"first_tag_syntax");
            }
        } else if (state & ScanAfterBang) {
            state &= ~ScanAfterBang;
            if (c == u'-') {
                state |= ScanAfterDash;
            } else if (state & ScanInDocType) {
                if (InSet(c, DeclStartChars))
                    open(NodeDocType, u">", DeclRun);
                else
                    fault(u"doctype_tag_syntax");
            } else if (c == u'[') {
                state |= ScanAfterBracket;
            } else if (c == u'D') {
                state |= ScanInDocType;
                run = DocTypeRun;
            } else {
                fault(u"exclamation_tag_syntax");
            }
        } else if (state & ScanAfterDash) {
            state &= ~ScanAfterDash;
            if (c == u'-')
                open(NodeComment, u"-->", CloseRun);
            else
                fault(u"comment_tag_syntax");
        } else if (state & ScanAfterBracket) {
            state &= ~ScanAfterBracket;
            if (c == u'C')
                open(NodeCData, u"]]>", CloseRun);
            else
                fault(u"cdata_section_syntax");
        } else if (state & ScanInDocType) {
            if (c == u'<') {
                state |= ScanAfterLess;
                run = NoRun;
            } else if (c == u'>') {
                cursor.next = i + 1;
                return finish(NodeDocType);
            }
        }
    }
}

} // namespace vetra::xml
