// document_parser.cpp - turns a text into element records: ParseDocument
// prepares the engine and judges the result, ParseElements walks the nodes
// that ScanNode finds and builds the tree.
//
// One pass, iterative, with an explicit stack of open names. The text is
// never changed and never refused: what is wrong goes to the result log
// and into flag bits, and unended start tags are repaired.
#include "text/result_log.h"
#include "xml/char_sets.h"
#include "xml/open_element_stack.h"
#include "xml/run_search.h"
#include "xml/saved_positions.h"
#include "xml/xml_engine.h"

namespace vetra::xml {

using text::LogResult;

bool XmlEngine::ParseDocument() {
    ++m_textGeneration; // callers may have set the text directly
    m_parentIndex = m_mainIndex = m_childIndex = 0;
    m_nodeType = m_nodeOffset = m_nodeLength = 0;
    DiscardSavedPositions();
    m_nextRecord = 1;
    int32_t length = int32_t(m_docText.size());
    int32_t wanted = length / 64 + 8;
    if (m_pStore->Size() < wanted) m_pStore->Grow(wanted);
    m_freedHead = 0;
    Rec(0) = ElementRecord{};

    if (length != 0) {
        TokenCursor cursor(m_docText.c_str(), m_docFlags);
        int32_t first = ParseElements(0, cursor);
        ElementRecord& doc = Rec(0);
        doc.length = length;
        if (first > 0) {
            doc.firstChild = first;
            if (Rec(first).nextSibling != 0)
                LogResult(m_resultLog, u"root_has_sibling", nullptr, 0, -1, -1);
        } else {
            LogResult(m_resultLog, u"no_root_element", nullptr, 0, -1, -1);
        }
    }
    m_parentIndex = m_mainIndex = m_childIndex = 0;
    m_nodeType = m_nodeOffset = m_nodeLength = 0;

    const ElementRecord& doc = Rec(0);
    if (m_docFlags & DocWriteStream) return true;
    if (m_docFlags & DocReadStream) return !doc.Has(ElemIllFormed);
    return !doc.Has(ElemIllFormed) && doc.firstChild != 0 && Rec(doc.firstChild).nextSibling == 0;
}

namespace {

// The state of one element walk, with the repair of unended elements.
struct ElementWalk {
    XmlEngine& engine;
    TokenCursor& cursor;
    int32_t startRecord;
    int32_t current;
    int32_t firstRecord = 0;
    int32_t baseLevel;
    OpenElementStack stack;
    NodeToken token;

    ElementWalk(XmlEngine& e, TokenCursor& c, int32_t start)
        : engine(e), cursor(c), startRecord(start), current(start),
          baseLevel(e.Rec(start).Level()) {}

    // A fault or a lone end tag: the text is ill-formed, with the fault
    // inside the innermost open element.
    void MarkFault() {
        engine.Rec(startRecord).Set(ElemIllFormed);
        engine.Rec(current).Set(ElemFaultInside);
    }
    void OpenElement();
    void CloseElement();
    void CloseUnended(int32_t downTo, bool textEnded);
};

void ElementWalk::OpenElement() {
    int32_t i = engine.TakeRecord(); // may move records: take references after it
    if (firstRecord == 0) firstRecord = i;
    ElementRecord& rec = engine.Rec(i);
    ElementRecord& parent = engine.Rec(current);
    rec.parent = current;
    rec.nextSibling = 0;
    rec.firstChild = 0;
    if (parent.firstChild != 0) {
        ElementRecord& first = engine.Rec(parent.firstChild);
        engine.Rec(first.prevSibling).nextSibling = i;
        rec.prevSibling = first.prevSibling;
        first.prevSibling = i;
        rec.levelFlags = 0;
    } else {
        parent.firstChild = i;
        rec.prevSibling = i;
        rec.levelFlags = ElemFirstSibling;
    }
    rec.SetLevel(baseLevel + stack.depth);
    rec.start = token.start;
    rec.tagLengths = 0;
    rec.SetStartTagChars(token.length);
    if (token.flags & NodeEmptyTag) {
        rec.length = token.length;
    } else {
        current = i;
        stack.Push(cursor.text + cursor.tokenStart, cursor.TokenLength());
    }
}

void ElementWalk::CloseElement() {
    const wchar* name = cursor.text + cursor.tokenStart;
    int32_t nameLength = cursor.TokenLength();
    bool ignoreCase = cursor.IgnoreCase();
    int32_t m = stack.depth;
    int32_t probe = current;
    // An end tag longer than its record field can hold closes nothing: the
    // record could not describe it truthfully.
    if (token.length > int32_t(ElementRecord::kEndTagMax)) m = 0;
    for (; m != 0; --m, probe = engine.Rec(probe).parent) {
        // The open name may go on behind the end tag's name only with a
        // member of PathEndChars.
        const OpenElementStack::Name& entry = stack.Entry(m);
        if (entry.length < nameLength) continue;
        if (!SameNames(name, entry.name, nameLength, ignoreCase)) continue;
        if (entry.length == nameLength || InSet(entry.name[nameLength], PathEndChars)) break;
    }
    if (m == 0) {
        MarkFault();
        WideString tagName(name, size_t(nameLength));
        LogResult(engine.m_resultLog, u"lone_end_tag", tagName.c_str(), 0, token.start, -1);
        return;
    }
    ElementRecord& ended = engine.Rec(probe);
    ended.SetEndTagChars(token.length);
    ended.length = token.start + token.length - ended.start;
    if (stack.depth > m) CloseUnended(m, false);
    current = engine.Rec(current).parent;
    stack.Pop();
}

// Closes the open elements above depth `downTo`: each becomes an element
// with nothing in it, and its children become its following siblings.
// Children moved by one level may move again at the next, so their parent
// links are set once, when the closing is over: nothing in between reads
// them, and closing a deep run of unended elements stays linear.
void ElementWalk::CloseUnended(int32_t downTo, bool textEnded) {
    engine.Rec(startRecord).Set(ElemIllFormed);
    int32_t outermost = 0;
    while (stack.depth > downTo) {
        int32_t e = current;
        ElementRecord& rec = engine.Rec(e);
        int32_t p = rec.parent;
        ElementRecord& parent = engine.Rec(p);
        int32_t child = rec.firstChild;
        rec.firstChild = 0;
        rec.SetEndTagChars(0);
        rec.length = rec.StartTagChars();
        rec.Set(ElemUnended);
        if (rec.Has(ElemFaultInside)) {
            rec.Clear(ElemFaultInside);
            parent.Set(ElemFaultInside);
        }
        if (child != 0) {
            // e was the last child of p; its children follow it in order.
            ElementRecord& firstMoved = engine.Rec(child);
            int32_t lastMoved = firstMoved.prevSibling;
            firstMoved.Clear(ElemFirstSibling);
            firstMoved.prevSibling = e;
            rec.nextSibling = child;
            engine.Rec(parent.firstChild).prevSibling = lastMoved;
        }
        int32_t end = textEnded ? int32_t(engine.m_docText.size()) : cursor.tokenStart - 1;
        const OpenElementStack::Name& entry = stack.Entry(stack.depth);
        WideString name(entry.name, size_t(entry.length));
        LogResult(engine.m_resultLog, u"unended_start_tag", name.c_str(), 0, rec.start, end);
        outermost = e;
        current = p;
        stack.Pop();
    }
    for (int32_t c = engine.Rec(outermost).nextSibling; c != 0; c = engine.Rec(c).nextSibling)
        engine.Rec(c).parent = current;
}

} // namespace

// The scan of the usual nodes is inlined here, where the loop keeps its
// registers from node to node.
VETRA_FLATTEN int32_t XmlEngine::ParseElements(int32_t startRecord, TokenCursor& cursor) {
    ElementWalk walk(*this, cursor, startRecord);
    cursor.next = 0;
    for (;;) {
        // Whitespace between tags is a node the tree keeps no trace of:
        // passed over here, it costs no scan. Before text it stays, as the
        // head of the text node.
        int32_t next = cursor.next;
        while (InSet(cursor.text[next], WhitespaceChars))
            ++next;
        if (cursor.text[next] == u'<') cursor.next = next;
        switch (ScanNode(cursor, walk.token)) {
        case NodeElement:
            walk.OpenElement();
            break;
        case ScanEndTag:
            walk.CloseElement();
            break;
        case ScanError:
            walk.MarkFault();
            // Each fault reaches the log once: the report is emptied after
            // it has been handed over.
            m_resultLog += walk.token.report;
            walk.token.report.clear();
            break;
        case ScanEnd:
            if (walk.stack.depth > 0) walk.CloseUnended(0, true);
            return walk.firstRecord;
        default:
            break; // text, CDATA, comments and the like stay in the text only
        }
    }
}

} // namespace vetra::xml
