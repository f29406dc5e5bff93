// values.cpp - element data, attribute values and sub-document text, read
// from the text on demand: the text and the records are the only state.
//
// Data of an element with child elements is empty; content that holds
// CDATA sections, comments or instructions is scanned node by node, and
// only text and CDATA contribute.
#include "xml/char_sets.h"
#include "xml/run_search.h"
#include "xml/text_escape.h"
#include "xml/wide_text.h"
#include "xml/xml_engine.h"

namespace vetra::xml {

namespace {

// Data of a current non-element node, by its type.
void NodeData(const DocText& text, int32_t type, int32_t offset, int32_t length, uint32_t flags,
              WideString& out) {
    const wchar* p = text.c_str() + offset;
    auto raw = [&](int32_t skip, int32_t less) {
        int32_t n = length - less;
        if (n > 0) out.assign(p + skip, size_t(n));
    };
    switch (type) {
    case NodeComment:
        return raw(4, 7);
    case NodeProcessing:
        return raw(2, 4);
    case NodeCData:
        return raw(9, 12);
    case NodeText:
        return DecodeTextTo(p, length, flags, out);
    case NodeLoneEndTag:
        return raw(2, 3);
    default:
        return raw(0, 0);
    }
}

} // namespace

int32_t XmlEngine::ElementTextEnd(int32_t index) const {
    const wchar* text = m_docText.c_str();
    int32_t end = Rec(index).start + Rec(index).length;
    int32_t p = end;
    while (InSet(text[p], WhitespaceChars))
        ++p;
    // The whitespace belongs to the element only when a tag or the end of
    // the text follows it; before text it stays with the text.
    return (text[p] == 0 || text[p] == u'<') ? p : end;
}

void XmlEngine::ElementData(int32_t index, WideString& out) const {
    out.clear();
    if (index == m_mainIndex && m_nodeLength != 0)
        return NodeData(m_docText, m_nodeType, m_nodeOffset, m_nodeLength, m_docFlags, out);
    if (index == 0) return;
    const ElementRecord& r = Rec(index);
    if (r.StartTagChars() == r.length || r.firstChild != 0) return;

    const wchar* text = m_docText.c_str();
    int32_t contentStart = r.ContentStart();
    int32_t contentEnd = contentStart + r.ContentLength();
    // Text alone, the usual data, is decoded in one pass: plain text is one
    // search and one copy.
    if ((m_docFlags & (DocTrimSpace | DocCollapseSpace)) == 0) {
        if (DecodeTextUnlessMarkup(text + contentStart, contentEnd - contentStart, out)) return;
        out.clear();
    } else if (FindAnyBefore(text, contentStart, contentEnd, u'<') == contentEnd) {
        return DecodeTextTo(text + contentStart, contentEnd - contentStart, m_docFlags, out);
    }

    // The content holds more than text: keep text and CDATA, drop the rest.
    TokenCursor cursor(text, m_docFlags, contentStart);
    NodeToken node;
    while (cursor.next < contentEnd) {
        int32_t type = ScanNode(cursor, node);
        if (type == NodeText)
            DecodeTextTo(text + node.start, node.length, m_docFlags, out);
        else if (type == NodeCData && node.length >= 12)
            out.append(text + node.start + 9, size_t(node.length - 12));
        else if (type == ScanEnd)
            break;
    }
}

void XmlEngine::AttribValue(int32_t index, const wchar* name, WideString& out) const {
    out.clear();
    if (name == nullptr || SelectTag(index) < 0) return;
    const wchar* text = m_docText.c_str();
    AttribIndex::Span value;
    if (!m_attribIndex.Value(text, m_docFlags, name, value)) return;
    if (value.plain && (m_docFlags & (DocTrimSpace | DocCollapseSpace)) == 0)
        return SetUnits(out, text + value.start, size_t(value.length));
    DecodeTextTo(text + value.start, value.length, m_docFlags, out);
}

void XmlEngine::ElementSubDoc(int32_t index, WideString& out) const {
    out.clear();
    if (index == 0 || (m_docFlags & DocStreamModes)) return;
    const ElementRecord& r = Rec(index);
    out.assign(m_docText.c_str() + r.start, size_t(ElementTextEnd(index) - r.start));
}

} // namespace vetra::xml
