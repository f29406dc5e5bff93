// attrib_index.cpp - incremental scanning of a start tag's attribute names.
//
// Each name is found by resuming ScanAttrib where the previous one stopped,
// which is what a scan from the tag's start would do at that point; a
// value is found by resuming behind the first matching name.
#include "xml/attrib_index.h"

#include "xml/char_sets.h"
#include "xml/run_search.h"

namespace vetra::xml {

void AttribIndex::Select(uint64_t generation, int32_t tagNext, int32_t record) {
    m_record = record;
    if (generation == m_generation && tagNext == m_tagNext) return;
    m_generation = generation;
    m_tagNext = tagNext;
    m_complete = false;
    m_quickEnd = false;
    m_quickNames = true;
    m_end = -1;
    m_firsts = 0;
    m_lastNamed = -1;
    m_names.clear();
}

void AttribIndex::Appended(uint64_t generation, int32_t position) {
    // The quick scan met the end of the tag at `position`, behind names it
    // read without looking past their values: a scan of the new text takes
    // the same steps up to there, and then reads the new attribute.
    if (m_generation + 1 != generation || !m_quickEnd || !m_quickNames || position != m_end)
        return; // stale, as after any other splice
    m_generation = generation;
    m_complete = false;
    m_quickEnd = false;
    m_end = -1;
}

namespace {

bool IsQuote(wchar c) {
    return c == u'"' || c == u'\'';
}

// Can `c` stand first in an attribute name the way the general scan reads
// one: not the end, not whitespace or a tag delimiter, not a quote.
bool StartsName(wchar c) {
    return c != 0 && !InSet(c, AttribNameEndChars) && !IsQuote(c);
}

int32_t NameEnd(const wchar* text, int32_t i) {
    return SkipToStop<AttribNameEndChars>(text, i);
}

// Where a scan stood before the whitespace in front of the name at `start`.
int32_t OriginOf(const wchar* text, int32_t start) {
    while (InSet(text[start - 1], WhitespaceChars))
        --start;
    return start;
}

// What stops the loop over a quoted value: its end, either quote, and the
// '&' that makes it need decoding.
constexpr uint8_t ValueStopOf(int c) {
    return c == 0 || c == '"' || c == '\'' || c == '&';
}
constexpr AsciiTable<ValueStopOf> kValueStops;

int32_t SkipToValueStop(const wchar* text, int32_t i) {
    constexpr wchar last = LastMarked<ValueStopOf>();
    for (wchar c = text[i]; c > last || !kValueStops.v[c]; c = text[++i]) {
    }
    return i;
}

int32_t SkipWhitespace(const wchar* text, int32_t i) {
    while (InSet(text[i], WhitespaceChars))
        ++i;
    return i;
}

} // namespace

VETRA_ALWAYS_INLINE AttribIndex::Step AttribIndex::QuickScan(const wchar* text, int32_t from,
                                                             Entry& e) {
    int32_t i = SkipWhitespace(text, from);
    const wchar c = text[i];
    if (c == u'>' || c == u'/' || c == u'?') return Step::End;
    if (!StartsName(c)) return Step::Unsure;
    e.start = i;
    e.next = NameEnd(text, i);
    e.end = e.next - 1;
    // The common shape behind a name: = and a quoted value.
    int32_t k = SkipWhitespace(text, e.next);
    if (text[k] != u'=') return Step::Unsure;
    k = SkipWhitespace(text, k + 1);
    const wchar quote = text[k];
    if (!IsQuote(quote)) return Step::Unsure;
    e.valueStart = ++k;
    // Whether the value needs decoding is learnt on the way.
    e.valuePlain = true;
    for (;; ++k) {
        k = SkipToValueStop(text, k);
        if (text[k] == quote || text[k] == 0) break;
        if (text[k] == u'&') e.valuePlain = false;
    }
    e.valueEnd = k - 1;
    e.valueNext = text[k] == quote ? k + 1 : k;
    e.valueQuoted = CursorQuoted;
    e.resume = e.valueNext;
    // Only whitespace stands between `from` and the name.
    e.origin = OriginOf(text, from);
    return Step::Found;
}

VETRA_ALWAYS_INLINE bool AttribIndex::ScanOn(const wchar* text, uint32_t flags) {
    if (m_complete) return false;
    int32_t index = int32_t(m_names.size());
    int32_t from = index == 0 ? m_tagNext : m_names.back().resume;
    int32_t counter = index == 0 ? -1 : index;
    // The tag's own name, read the way the general scan reads a name.
    if (index == 0 && StartsName(text[from])) {
        from = NameEnd(text, from);
        counter = 0;
    }
    // The entry is filled where it will stay: one built aside and copied in
    // would be read back whole before its parts were stored.
    Entry& e = m_names.emplace_back();
    switch (QuickScan(text, from, e)) {
    case Step::Found:
        NoteFirstUnit(text, e);
        return true;
    case Step::End:
        m_names.pop_back();
        m_complete = true;
        m_quickEnd = true;
        m_end = from; // in front of the whitespace before the tag's end
        return false;
    case Step::Unsure:
        break;
    }
    return ScanOnByRules(text, flags, from, counter);
}

// Kept out of line, so that the usual names, read by the quick scan, don't
// pay for what the general scan needs.
VETRA_NO_INLINE bool AttribIndex::ScanOnByRules(const wchar* text, uint32_t flags, int32_t from,
                                                int32_t counter) {
    const int32_t index = int32_t(m_names.size()) - 1;
    Entry& e = m_names.back();
    m_quickNames = false;
    TokenCursor cursor(text, flags, from);
    if (!ScanAttribFrom(cursor, nullptr, index, counter, 0)) {
        m_names.pop_back();
        m_complete = true;
        m_end = cursor.next;
        return false;
    }
    e.origin = OriginOf(text, cursor.tokenStart);
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
    e.valuePlain = false;
    e.resume = cursor.tokenStart == e.start ? e.next : cursor.next; // no value: behind the name
    NoteFirstUnit(text, e);
    return true;
}

void AttribIndex::NoteFirstUnit(const wchar* text, Entry& e) {
    e.firstsBefore = m_firsts;
    // A name without units would match whatever its neighbours match.
    m_firsts |= e.end >= e.start ? uint64_t(1) << (text[e.start] & 63) : ~uint64_t(0);
}

namespace {

// `out` as `base` with the given token. Every field is set on its own: the
// engine builds `base` just before the call, and a whole copy of it would be
// read back in wider pieces than it was written, which the processor can't
// forward from its stores.
void SetCursor(TokenCursor& out, const TokenCursor& base, int32_t start, int32_t end,
               int32_t next) {
    out.tokenStart = start;
    out.tokenEnd = end;
    out.next = next;
    out.text = base.text;
    out.flags = base.flags;
    out.matchOrigin = base.matchOrigin;
    out.matchGap = base.matchGap;
    out.stream = base.stream;
}

} // namespace

bool AttribIndex::Name(const wchar* text, uint32_t flags, int32_t index, Span& out) {
    if (index < 0) return false;
    while (int32_t(m_names.size()) <= index)
        if (!ScanOn(text, flags)) return false;
    const Entry& e = m_names[size_t(index)];
    out = {e.start, e.end - e.start + 1, false};
    m_lastNamed = index;
    return true;
}

VETRA_ALWAYS_INLINE const AttribIndex::Entry* AttribIndex::Find(const wchar* text, uint32_t flags,
                                                                const wchar* name) {
    // The usual search is for the name read last. It is the first of that
    // name if no name in front of it begins with the same unit, as a match
    // must (without folding).
    if (m_lastNamed >= 0 && (flags & DocIgnoreCase) == 0) {
        const Entry& e = m_names[size_t(m_lastNamed)];
        const uint64_t first = uint64_t(1) << (text[e.start] & 63);
        if ((e.firstsBefore & first) == 0 &&
            TokenEquals(text + e.start, e.end - e.start + 1, name, false))
            return &e;
    }
    return FindByScan(text, flags, name);
}

// Kept out of line, so that the search for the name read last doesn't pay
// for the registers the scan needs.
VETRA_NO_INLINE const AttribIndex::Entry* AttribIndex::FindByScan(const wchar* text, uint32_t flags,
                                                                  const wchar* name) {
    const bool ignoreCase = (flags & DocIgnoreCase) != 0;
    for (size_t k = 0;; ++k) {
        if (k == m_names.size() && !ScanOn(text, flags)) return nullptr;
        const Entry& e = m_names[k];
        if (TokenEquals(text + e.start, e.end - e.start + 1, name, ignoreCase)) return &e;
    }
}

bool AttribIndex::Value(const wchar* text, uint32_t flags, const wchar* name, Span& out) {
    const Entry* e = Find(text, flags, name);
    if (e == nullptr) return false;
    out = {e->valueStart, e->valueEnd - e->valueStart + 1, e->valuePlain};
    return true;
}

bool AttribIndex::Value(const TokenCursor& base, const wchar* name, TokenCursor& out) {
    const Entry* e = Find(base.text, base.flags, name);
    if (e == nullptr) {
        SetCursor(out, base, base.tokenStart, base.tokenEnd, m_end);
        return false;
    }
    SetCursor(out, base, e->valueStart, e->valueEnd, e->valueNext);
    out.flags = (base.flags & ~CursorQuoted) | e->valueQuoted;
    out.matchOrigin = e->origin;
    out.matchGap = e->start - e->origin;
    return true;
}

} // namespace vetra::xml
