// names.cpp - tag and attribute names, read out of the text each time they
// are asked for; nothing is cached, so a name read after an edit shows the
// edited text. Names come back raw, without decoding.
//
// NodeName also answers for a position on a node that isn't an element,
// which no exported operation can reach.
#include "xml/xml_engine.h"

namespace vetra::xml {

WideString XmlEngine::ElementName(int32_t index) const {
    if (index == 0) return WideString();
    TokenCursor cursor(m_docText.c_str(), m_docFlags, Rec(index).start + 1);
    if (!ScanWord(cursor)) return WideString();
    return TokenText(cursor);
}

WideString XmlEngine::NodeName() const {
    if (m_nodeLength == 0) return ElementName(m_mainIndex);
    TokenCursor cursor(m_docText.c_str(), m_docFlags, m_nodeOffset + 2);
    switch (m_nodeType) {
    case NodeText:
    case NodeWhitespace:
        return u"#text";
    case NodeCData:
        return u"#cdata-section";
    case NodeComment:
        return u"#comment";
    case NodeProcessing:
    case NodeLoneEndTag:
        return ScanWord(cursor) ? TokenText(cursor) : WideString();
    case NodeDocType:
        // The first word is the keyword; the second is the declared name.
        if (!ScanWord(cursor) || !ScanWord(cursor)) return WideString();
        return TokenText(cursor);
    default:
        return WideString();
    }
}

WideString XmlEngine::AttribName(int32_t attribIndex) const {
    TokenCursor cursor(m_docText.c_str(), m_docFlags);
    if (m_mainIndex != 0 && m_nodeType == NodeElement)
        cursor.next = Rec(m_mainIndex).start + 1;
    else if (m_nodeLength != 0 && m_nodeType == NodeProcessing)
        cursor.next = m_nodeOffset + 2;
    else
        return WideString();
    if (!ScanAttrib(cursor, nullptr, attribIndex)) return WideString();
    return TokenText(cursor);
}

} // namespace vetra::xml
