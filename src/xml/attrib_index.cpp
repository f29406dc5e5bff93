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
    cursor.next = index == 0 ? m_tagNext : m_names.back().next;
    if (!ScanAttribFrom(cursor, nullptr, index, index == 0 ? -1 : index, 0)) {
        m_complete = true;
        return false;
    }
    // Where the scan stood before the whitespace in front of the name.
    int32_t origin = cursor.tokenStart;
    while (InSet(cursor.text[origin - 1], WhitespaceChars))
        --origin;
    m_names.push_back({origin, cursor.tokenStart, cursor.tokenEnd, cursor.next});
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
        out.next = e.next;
        out.matchOrigin = e.origin;
        out.matchGap = e.start - e.origin;
        return ScanAttribFrom(out, name, 0, int32_t(k) + 1, e.end);
    }
}

} // namespace vetra::xml
