// element_splice.cpp - SpliceElement: where new element text goes in its
// parent, which line ends go with it, and how an empty parent is opened up.
//
// The engine doesn't indent: the only layout it writes is "\r\n" behind a
// new element, and around it when the parent has to be opened. Records are
// left to the caller, apart from the parent's tag lengths when it opens.
#include "xml/char_sets.h"
#include "xml/wide_text.h"
#include "xml/xml_engine.h"

namespace vetra::xml {

int32_t XmlEngine::SpliceElement(int32_t parent, int32_t& before, ElementSplice& splice) {
    const uint32_t flags = splice.flags;
    const bool lineEnds = !(flags & EditNoLineEnds);
    bool emptyParent = false, hollowParent = false;
    int32_t contentStart = 0, contentEnd = int32_t(m_docText.size());
    if (parent != 0) {
        const ElementRecord& p = Rec(parent);
        emptyParent = p.StartTagChars() == p.length;
        hollowParent = p.length - p.EndTagChars() == p.StartTagChars();
        contentStart = p.ContentStart();
        contentEnd = p.start + p.length - p.EndTagChars();
    }

    int32_t at;
    if (before != 0) {
        const ElementRecord& b = Rec(before);
        at = b.start + ((flags & EditInsertBefore) ? 0 : b.length);
    } else if (emptyParent) {
        const ElementRecord& p = Rec(parent);
        at = p.start + p.StartTagChars() - (p.Has(ElemUnended) ? 0 : 1);
    } else if (flags & (EditInsertBefore | EditReplaceContent)) {
        at = contentStart;
    } else {
        at = contentEnd;
    }

    // A line end behind the reference element stays with it, so the new
    // element starts the next line; before text, whitespace stays with the text.
    if (!emptyParent && lineEnds && !(flags & EditReplaceContent)) {
        const wchar* text = m_docText.c_str();
        int32_t p = at;
        while (InSet(text[p], WhitespaceChars))
            ++p;
        if (text[p] == u'<' || text[p] == 0) at = p;
    }

    // `before` becomes the new element's previous sibling.
    if (flags & EditInsertBefore) {
        if (before != 0) before = Rec(before).Has(ElemFirstSibling) ? 0 : Rec(before).prevSibling;
    } else if (before == 0 && Rec(parent).firstChild != 0) {
        before = Rec(Rec(parent).firstChild).prevSibling;
    }

    if (lineEnds) {
        if (emptyParent || hollowParent) at += 2; // the line end before the new element
        AppendShort(splice.text, u"\r\n");
    }
    splice.start = at;

    int32_t position, count = 0;
    if (emptyParent) {
        // The parent's final '>' stays and closes the new end tag.
        ElementRecord& p = Rec(parent);
        // The name as EndTagFits read it, in the text, which is unchanged yet.
        const wchar* name = splice.parentName;
        int32_t nameLength = splice.parentNameLength;
        if (nameLength < 0) nameLength = ElementNameSpan(parent, name);
        if (!splice.openerWritten) splice.text.insert(0, lineEnds ? u">\r\n" : u">");
        AppendShort(splice.text, u"</");
        splice.text.append(name, size_t(nameLength));
        if (p.Has(ElemUnended)) {
            position = p.start + p.length - 1;
            p.Clear(ElemUnended);
        } else {
            position = p.start + p.length - 2; // replaces the '/'
            count = 1;
            p.SetStartTagChars(p.StartTagChars() - 1);
        }
        p.SetEndTagChars(nameLength + 3);
    } else if (flags & EditReplaceContent) {
        position = contentStart;
        count = contentEnd - contentStart;
    } else if (hollowParent && lineEnds) {
        splice.text.insert(0, u"\r\n");
        position = contentStart;
    } else {
        position = at;
    }
    SpliceDoc(position, count, splice.text);
    return count;
}

} // namespace vetra::xml
