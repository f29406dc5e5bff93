// data_edit.cpp - WriteData: replaces the whole content of an element with
// encoded text or CDATA, opening an empty element on the way.
//
// An element with child elements has no data to replace, and is refused.
// No line end is written: nothing outside the element's tags changes.
#include "xml/text_escape.h"
#include "xml/xml_engine.h"

namespace vetra::xml {

bool XmlEngine::WriteData(int32_t index, const wchar* text, uint32_t flags) {
    if (m_docFlags & DocReadStream) return false;
    if (index == m_mainIndex && m_nodeLength != 0) {
        // A position on a node: its whole text is rebuilt.
        WideString out;
        if (!FormatNode(m_nodeType, text, out)) return false;
        SpliceDoc(m_nodeOffset, m_nodeLength, out);
        AdjustForText(m_parentIndex, index, int32_t(out.size()) - m_nodeLength);
        m_nodeLength = int32_t(out.size());
        return true;
    }
    if (index == 0 || Rec(index).firstChild != 0) return false;
    ElementSplice splice(m_editText);
    splice.flags = EditNoLineEnds | EditReplaceContent;
    if (!EndTagFits(index, splice)) return false;

    if (flags & EditCData)
        splice.text = EncodeCData(text);
    else
        EncodeTextTo(text, flags, splice.text);
    int32_t reference = 0;
    int32_t replaced = SpliceElement(index, reference, splice);
    int32_t delta = int32_t(splice.text.size()) - replaced;
    AdjustOffsets(index, delta, false);
    ElementRecord& rec = Rec(index);
    rec.length += delta;
    rec.Clear(ElemFaultInside); // the faulty content has gone
    return true;
}

} // namespace vetra::xml
