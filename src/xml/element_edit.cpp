// element_edit.cpp - adding elements and sub-documents, and removing
// elements: each is one splice of the text plus one walk of AdjustOffsets.
//
// A sub-document is parsed into a holder record that stands in for the
// parent, shifted to its place in the text, and linked in; the document
// is never re-parsed.
#include "xml/text_escape.h"
#include "xml/wide_text.h"
#include "xml/xml_engine.h"

namespace vetra::xml {

bool XmlEngine::EndTagFits(int32_t parent, ElementSplice& splice) const {
    // Opening an empty parent writes its end tag; a name too long for the
    // record's end-tag field can't be described, so such an edit is refused.
    if (parent == 0) return true;
    const ElementRecord& p = Rec(parent);
    if (p.StartTagChars() != p.length) return true;
    splice.parentNameLength = ElementNameSpan(parent, splice.parentName);
    return splice.parentNameLength + 3 <= int32_t(ElementRecord::kEndTagMax);
}

bool XmlEngine::AddElement(const wchar* name, const wchar* value, uint32_t flags) {
    if (m_docFlags & DocReadStream) return false;
    if ((flags & EditChild) && (m_mainIndex == 0 || (m_docFlags & DocWriteStream))) return false;
    bool hasValue = value != nullptr && value[0] != 0;
    if ((flags & EditNoEndTag) && hasValue) return false;

    int32_t parent = (flags & EditChild) ? m_mainIndex : m_parentIndex;
    int32_t reference = (flags & EditChild) ? m_childIndex : m_mainIndex;
    size_t nameLength = std::char_traits<wchar>::length(name);
    ElementSplice splice(m_editText);
    splice.flags = flags;
    // Tags whose lengths the record fields can't hold are refused.
    if (nameLength + 3 > ElementRecord::kStartTagMask ||
        (hasValue && nameLength + 3 > ElementRecord::kEndTagMax) || !EndTagFits(parent, splice))
        return false;

    // Opening an empty parent puts ">" and a line end in front of the new
    // element: written first, they needn't be inserted later.
    if (splice.parentNameLength >= 0) {
        if (flags & EditNoLineEnds)
            splice.text += u'>';
        else
            AppendShort(splice.text, u">\r\n");
        splice.openerWritten = true;
    }
    const int32_t opener = int32_t(splice.text.size());

    int32_t length, startTag, endTag = 0;
    if (!hasValue) {
        ReserveMore(splice.text, nameLength + 6);
        splice.text += u'<';
        splice.text.append(name, nameLength);
        if (flags & EditNoEndTag)
            splice.text += u'>';
        else if (flags & EditSpacedSlash)
            AppendShort(splice.text, u" />");
        else
            AppendShort(splice.text, u"/>");
        length = startTag = int32_t(splice.text.size()) - opener;
    } else {
        ReserveMore(splice.text, 2 * nameLength + 7);
        splice.text += u'<';
        splice.text.append(name, nameLength);
        splice.text += u'>';
        if (flags & EditCData)
            splice.text += EncodeCData(value);
        else
            EncodeTextTo(value, flags, splice.text);
        AppendShort(splice.text, u"</");
        splice.text.append(name, nameLength);
        splice.text += u'>';
        length = int32_t(splice.text.size()) - opener;
        startTag = int32_t(nameLength) + 2;
        endTag = int32_t(nameLength) + 3;
    }

    int32_t index = TakeRecord();
    int32_t replaced = SpliceElement(parent, reference, splice);
    ElementRecord& rec = Rec(index);
    rec.start = splice.start;
    rec.length = length;
    rec.tagLengths = 0;
    rec.SetStartTagChars(startTag);
    rec.SetEndTagChars(endTag);
    rec.firstChild = 0;
    rec.levelFlags = (flags & EditNoEndTag) ? uint32_t(ElemUnended) : 0u;
    LinkElement(parent, reference, index);
    AdjustOffsets(index, int32_t(splice.text.size()) - replaced, false);

    m_nodeOffset = m_nodeLength = 0;
    if (flags & EditChild) {
        m_childIndex = index;
    } else {
        m_parentIndex = parent;
        m_mainIndex = index;
        m_childIndex = 0;
    }
    m_nodeType = NodeElement;
    return true;
}

bool XmlEngine::AddSubDocument(const wchar* text, uint32_t flags) {
    if (m_docFlags & DocReadStream) return false;
    if ((flags & EditChild) && (m_docFlags & DocWriteStream)) return false;
    m_resultLog.clear(); // the reports of this parse replace what stood there

    int32_t parent = m_parentIndex, reference = m_mainIndex;
    if (flags & EditChild) {
        parent = m_mainIndex;
        reference = m_childIndex;
        if (parent == 0) return false;
    }
    ElementSplice splice(m_editText);
    splice.flags = flags;
    if (!EndTagFits(parent, splice)) return false;

    int32_t holder = TakeRecord();
    Rec(holder) = ElementRecord{};
    Rec(holder).SetLevel(Rec(parent).Level() + 1);
    TokenCursor cursor(text, m_docFlags);
    int32_t first = ParseElements(holder, cursor);

    bool wellFormed = first != 0 && !Rec(holder).Has(ElemIllFormed);
    if (Rec(holder).Has(ElemFaultInside)) Rec(parent).Set(ElemFaultInside);
    int32_t last = first != 0 ? Rec(first).prevSibling : 0;
    bool result = wellFormed;

    int32_t subStart = 0;
    if (wellFormed) {
        // Only the elements are taken over: a declaration or whitespace
        // around them stays behind.
        subStart = Rec(first).start;
        int32_t subEnd = Rec(last).start + Rec(last).length;
        splice.text.assign(text + subStart, size_t(subEnd - subStart));
        if (first != last) result = false;
    } else {
        splice.text.assign(text);
        splice.flags |= EditNoLineEnds;
    }

    int32_t replaced = SpliceElement(parent, reference, splice);
    int32_t shift = splice.start - subStart;
    if (first != 0 && shift != 0) {
        AdjustOffsets(first, shift, false); // stops at the holder
        Rec(first).start += shift;
    }
    for (int32_t e = first, previous = reference; e != 0;) {
        int32_t next = Rec(e).nextSibling;
        LinkElement(parent, previous, e);
        previous = e;
        e = next;
    }
    FreeRecord(holder);

    int32_t delta = int32_t(splice.text.size()) - replaced;
    if (first != 0)
        AdjustOffsets(last, delta, true);
    else
        AdjustForText(parent, reference, delta);

    m_nodeOffset = m_nodeLength = 0;
    if (flags & EditChild) {
        m_childIndex = first;
        m_nodeType = NodeElement;
    } else {
        m_mainIndex = first;
        m_childIndex = 0;
        m_nodeType = first != 0 ? NodeElement : 0;
    }
    return result;
}

int32_t XmlEngine::RemoveElement(int32_t index) {
    int32_t start = Rec(index).start;
    int32_t end = ElementTextEnd(index);
    SpliceDoc(start, end - start, nullptr, 0);
    AdjustOffsets(index, start - end, true);
    int32_t previous = UnlinkElement(index);
    PurgeSavedPositions();
    return previous;
}

int XmlEngine::RemoveElem() {
    if (m_docFlags & DocStreamModes) return 0;
    if (m_mainIndex == 0 || m_nodeType != NodeElement) return 0;
    m_mainIndex = RemoveElement(m_mainIndex);
    m_childIndex = 0;
    SettleNode();
    return 1;
}

int XmlEngine::RemoveChildElem() {
    if (m_docFlags & DocStreamModes) return 0;
    if (m_childIndex == 0) return 0;
    m_childIndex = RemoveElement(m_childIndex);
    SettleNode();
    return 1;
}

} // namespace vetra::xml
