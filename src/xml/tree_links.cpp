// tree_links.cpp - hanging records into the tree and taking them out:
// LinkElement, UnlinkElement and FreeElements.
//
// Siblings form a forward chain ending in 0 and a backward ring whose first
// child points at the last; ElemFirstSibling marks exactly the first child.
#include "xml/xml_engine.h"

namespace vetra::xml {

void XmlEngine::LinkElement(int32_t parent, int32_t previous, int32_t index) {
    ElementRecord& rec = Rec(index);
    ElementRecord& par = Rec(parent);
    rec.parent = parent;
    if (previous != 0) {
        ElementRecord& prev = Rec(previous);
        rec.Clear(ElemFirstSibling);
        rec.nextSibling = prev.nextSibling;
        if (rec.nextSibling != 0)
            Rec(rec.nextSibling).prevSibling = index;
        else
            Rec(par.firstChild).prevSibling = index; // the new element is last
        prev.nextSibling = index;
        rec.prevSibling = previous;
    } else {
        rec.Set(ElemFirstSibling);
        if (par.firstChild != 0) {
            ElementRecord& oldFirst = Rec(par.firstChild);
            rec.nextSibling = par.firstChild;
            rec.prevSibling = oldFirst.prevSibling;
            oldFirst.prevSibling = index;
            oldFirst.Clear(ElemFirstSibling);
        } else {
            rec.prevSibling = index;
            rec.nextSibling = 0;
        }
        par.firstChild = index;
    }
    if (parent != 0) rec.SetLevel(par.Level() + 1);
}

int32_t XmlEngine::UnlinkElement(int32_t index) {
    ElementRecord& rec = Rec(index);
    ElementRecord& par = Rec(rec.parent);
    int32_t previous = 0;
    if (rec.Has(ElemFirstSibling)) {
        par.firstChild = rec.nextSibling;
        if (rec.nextSibling != 0) {
            ElementRecord& next = Rec(rec.nextSibling);
            next.prevSibling = rec.prevSibling; // keeps the ring to the last child
            next.Set(ElemFirstSibling);
        }
    } else {
        previous = rec.prevSibling;
        Rec(previous).nextSibling = rec.nextSibling;
        if (rec.nextSibling != 0)
            Rec(rec.nextSibling).prevSibling = previous;
        else
            Rec(par.firstChild).prevSibling = previous;
    }
    FreeElements(index);
    return previous;
}

void XmlEngine::FreeElements(int32_t index) {
    // Post-order without recursion: FreeRecord overwrites nextSibling, so it
    // is read first; firstChild and parent survive freeing.
    int32_t node = index;
    while (Rec(node).firstChild != 0)
        node = Rec(node).firstChild;
    for (;;) {
        if (node == index) {
            FreeRecord(node);
            return;
        }
        int32_t sibling = Rec(node).nextSibling;
        int32_t parent = Rec(node).parent;
        FreeRecord(node);
        if (sibling != 0) {
            node = sibling;
            while (Rec(node).firstChild != 0)
                node = Rec(node).firstChild;
        } else {
            node = parent;
        }
    }
}

} // namespace vetra::xml
