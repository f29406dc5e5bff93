// attrib_edit.cpp - WriteAttrib: sets an attribute in a start tag by one
// splice, then corrects the element's tag length and everything behind it.
//
// Adding never makes a second attribute of the same name: an existing one
// gets the new value, always in double quotes. New attributes stand last,
// before any whitespace that precedes the end of the tag.
#include "xml/text_escape.h"
#include "xml/wide_text.h"
#include "xml/xml_engine.h"

namespace vetra::xml {

bool XmlEngine::WriteAttrib(int32_t index, const wchar* name, const wchar* value, uint32_t flags) {
    if (m_docFlags & DocReadStream || name == nullptr) return false;
    int32_t start = SelectTag(index);
    if (start < 0) return false;
    bool onElement = index != 0 && m_nodeType == NodeElement;
    // The attribute index finds what ScanAttrib by name would find; the
    // splice below makes it stale, unless it adds a new attribute last.
    TokenCursor cursor;

    // The replacement is built in one string: its head, the encoded value
    // appended in place, and the closing quote.
    ScratchText scratch(m_editText);
    WideString& replacement = scratch.text;
    int32_t position, count = 0;
    const bool found =
        m_attribIndex.Value(TokenCursor(m_docText.c_str(), m_docFlags, start), name, cursor);
    if (found) {
        if (cursor.tokenStart == cursor.matchOrigin + cursor.matchGap) {
            // The name stands alone: it stays, and the value goes behind it.
            AppendShort(replacement, u"=\"");
            position = cursor.tokenEnd + 1;
        } else {
            // The old value goes, with its quotes if it had any.
            replacement += u'"';
            bool quoted = (cursor.flags & CursorQuoted) != 0;
            position = quoted ? cursor.tokenStart - 1 : cursor.tokenStart;
            count = cursor.TokenLength() + (quoted ? 2 : 0);
        }
    } else {
        size_t nameLength = std::char_traits<wchar>::length(name);
        replacement += u' ';
        replacement.append(name, nameLength);
        AppendShort(replacement, u"=\"");
        position = cursor.next;
    }
    EncodeTextTo(value, flags | EditAttribText, replacement);
    replacement += u'"';

    int32_t delta = int32_t(replacement.size()) - count;
    if (onElement && Rec(index).StartTagChars() + int64_t(delta) > ElementRecord::kStartTagMask)
        return false; // the start tag would outgrow its record field
    SpliceDoc(position, count, replacement);
    if (!found) m_attribIndex.Appended(m_textGeneration, position);
    if (onElement) {
        ElementRecord& rec = Rec(index);
        rec.SetStartTagChars(rec.StartTagChars() + delta);
        rec.length += delta;
        AdjustOffsets(index, delta, false);
    } else {
        AdjustForText(m_parentIndex, m_mainIndex, delta);
        m_nodeLength += delta;
    }
    return true;
}

} // namespace vetra::xml
