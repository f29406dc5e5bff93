// attrib_index.cpp - incremental scanning of a start tag's attribute names.
//
// Each name is found by resuming ScanAttrib where the previous one stopped,
// which is what a scan from the tag's start would do at that point; a
// value is found by resuming behind the first matching name.
#include "xml/attrib_index.h"

#include "xml/char_sets.h"

namespace vetra::xml {

void AttribIndex::Select(uint64_t generation, int32_t tagNext) {
    if (generation == m_generation && tagNext == m_tagNext) return;
    m_generation = generation;
    m_tagNext = tagNext;
    m_complete = false;
    m_names.clear();
}

bool AttribIndex::ScanOn(const TokenCursor& base) {
    if (m_complete) return false;
    TokenCursor cursor = base;
    int32_t index = int32_t(m_names.size());
    cursor.next = index == 0 ? m_tagNext : m_names.back().resume;
    if (!ScanAttribFrom(cursor, nullptr, index, index == 0 ? -1 : index, 0)) {
        m_complete = true;
        return false;
    }
    Entry e;
    // Where the scan stood before the whitespace in front of the name.
    e.origin = cursor.tokenStart;
    while (InSet(cursor.text[e.origin - 1], WhitespaceChars))
        --e.origin;
    e.start = cursor.tokenStart;
    e.end = cursor.tokenEnd;
    e.next = cursor.next;
    // Go on as a search that matched this name would: the value is read
    // once, and the next name's scan starts behind it.
    cursor.matchOrigin = e.origin;
    cursor.matchGap = e.start - e.origin;
    ScanAttribFrom(cursor, nullptr, 0, index + 1, e.end);
    e.valueStart = cursor.tokenStart;
    e.valueEnd = cursor.tokenEnd;
    e.valueNext = cursor.next;
    e.valueQuoted = cursor.flags & CursorQuoted;
    e.resume = cursor.tokenStart == e.start ? e.next : cursor.next; // no value: behind the name
    m_names.push_back(e);
    return true;
}

bool AttribIndex::Name(const TokenCursor& base, int32_t index, TokenCursor& out) {
    if (index < 0) return false;
    while (int32_t(m_names.size()) <= index)
        if (!ScanOn(base)) return false;
    const Entry& e = m_names[size_t(index)];
    out = base;
    out.tokenStart = e.start;
    out.tokenEnd = e.end;
    out.next = e.next;
    return true;
}

bool AttribIndex::Value(const TokenCursor& base, const wchar* name, TokenCursor& out) {
    for (size_t k = 0;; ++k) {
        if (k == m_names.size() && !ScanOn(base)) return false;
        const Entry& e = m_names[k];
        out = base;
        out.tokenStart = e.start;
        out.tokenEnd = e.end;
        if (!TokenEquals(out, name)) continue;
        out.tokenStart = e.valueStart;
        out.tokenEnd = e.valueEnd;
        out.next = e.valueNext;
        out.flags = (base.flags & ~CursorQuoted) | e.valueQuoted;
        out.matchOrigin = e.origin;
        out.matchGap = e.start - e.origin;
        return true;
    }
}

} // namespace vetra::xml
