// offsets.cpp - keeping record offsets true after a splice of the text.
//
// AdjustOffsets visits, in document order, every element behind the point
// of the splice and moves its start, and lengthens every ancestor. Adding
// at the end of a document has nothing behind it, so the walk only climbs
// the ancestors: O(depth).
#include "xml/xml_engine.h"

namespace vetra::xml {

void XmlEngine::AdjustOffsets(int32_t index, int32_t delta, bool skipChildren) {
    // Record 0 and a sub-document's holder have no start tag: nothing to walk.
    if (Rec(index).StartTagChars() == 0) return;
    int32_t pos = index;
    int32_t ancestor = Rec(pos).parent;
    bool skip = skipChildren;
    for (;;) {
        const ElementRecord& at = Rec(pos);
        int32_t next = 0;
        if (pos == ancestor) {
            ancestor = at.parent; // that ancestor was just lengthened
        } else if (!skip && at.firstChild != 0) {
            next = at.firstChild;
        }
        if (next == 0) next = at.nextSibling;
        if (next == 0) {
            int32_t up = at.parent;
            while (up != ancestor && Rec(up).nextSibling == 0)
                up = Rec(up).parent;
            next = up == ancestor ? up : Rec(up).nextSibling;
        }
        skip = false;
        ElementRecord& rec = Rec(next);
        if (next == ancestor)
            rec.length += delta;
        else
            rec.start += delta;
        pos = next;
        if (rec.StartTagChars() == 0) return;
    }
}

void XmlEngine::AdjustForText(int32_t parent, int32_t previous, int32_t delta) {
    if (previous != 0) {
        AdjustOffsets(previous, delta, true);
    } else if (int32_t child = Rec(parent).firstChild; child != 0) {
        Rec(child).start += delta;
        AdjustOffsets(child, delta, false);
    } else {
        Rec(parent).length += delta;
        AdjustOffsets(parent, delta, true);
    }
}

} // namespace vetra::xml
