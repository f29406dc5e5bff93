// names.cpp - tag and attribute names, read out of the text each time they
// are asked for; nothing is cached, so a name read after an edit shows the
// edited text. Names come back raw, without decoding.
//
// NodeName also answers for a position on a node that isn't an element,
// which no exported operation can reach.
#include "xml/wide_text.h"
#include "xml/xml_engine.h"

namespace vetra::xml {

namespace {

void SetToken(const TokenCursor& cursor, WideString& out) {
    int32_t n = cursor.TokenLength();
    SetUnits(out, cursor.text + cursor.tokenStart, n > 0 ? size_t(n) : 0);
}

} // namespace

int32_t XmlEngine::ElementNameSpan(int32_t index, const wchar*& name) const {
    name = m_docText.c_str();
    if (index == 0) return 0;
    int32_t start;
    const int32_t length = WordSpan(name, Rec(index).start + 1, start);
    if (length != 0) name += start;
    return length;
}

void XmlEngine::ElementName(int32_t index, WideString& out) const {
    const wchar* name;
    const int32_t length = ElementNameSpan(index, name);
    SetUnits(out, name, size_t(length));
}

void XmlEngine::NodeName(WideString& out) const {
    if (m_nodeLength == 0) return ElementName(m_mainIndex, out);
    out.clear();
    TokenCursor cursor(m_docText.c_str(), m_docFlags, m_nodeOffset + 2);
    switch (m_nodeType) {
    case NodeText:
    case NodeWhitespace:
        out = u"#text";
        break;
    case NodeCData:
        out = u"#cdata-section";
        break;
    case NodeComment:
        out = u"#comment";
        break;
    case NodeProcessing:
    case NodeLoneEndTag:
        if (ScanWord(cursor)) SetToken(cursor, out);
        break;
    case NodeDocType:
        // The first word is the keyword; the second is the declared name.
        if (ScanWord(cursor) && ScanWord(cursor)) SetToken(cursor, out);
        break;
    default:
        break;
    }
}

void XmlEngine::AttribName(int32_t attribIndex, WideString& out) const {
    out.clear();
    if (SelectTag(m_mainIndex) < 0) return;
    const wchar* text = m_docText.c_str();
    AttribIndex::Span name;
    if (m_attribIndex.Name(text, m_docFlags, attribIndex, name))
        SetUnits(out, text + name.start, name.length > 0 ? size_t(name.length) : 0);
}

} // namespace vetra::xml
