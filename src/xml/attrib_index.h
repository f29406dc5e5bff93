// attrib_index.h - the attribute names of the last start tag read, kept so
// that reading attributes one by one doesn't rescan the tag from its start
// for every index and every value.
//
// It holds positions only, never text, and is keyed by the text generation:
// any change of the text makes it stale. Edits scan the tag afresh.
#ifndef VETRA_XML_ATTRIB_INDEX_H
#define VETRA_XML_ATTRIB_INDEX_H

#include <cstdint>
#include <vector>

#include "xml/token.h"

namespace vetra::xml {

class AttribIndex {
  public:
    /// Starts over on the tag whose scans begin at `tagNext`, the start tag
    /// of element `record` (0 for none), unless it holds that tag already
    /// for this text generation.
    void Select(uint64_t generation, int32_t tagNext, int32_t record);
    /// Where the scans of element `record`'s tag begin if it holds that tag
    /// for this generation (an element's tag stays put until the text
    /// changes); else -1.
    int32_t Held(uint64_t generation, int32_t record) const {
        return record != 0 && record == m_record && generation == m_generation ? m_tagNext : -1;
    }
    /// A stretch of the text: `plain` when it holds no '&', so that
    /// decoding it is a copy (known only for values read the quick way).
    struct Span {
        int32_t start;
        int32_t length;
        bool plain;
    };
    /// The name of attribute `index`, scanning on as far as needed. False if
    /// the tag has no such attribute. `text` and `flags` are the document's.
    bool Name(const wchar* text, uint32_t flags, int32_t index, Span& out);
    /// The value (or name) that ScanAttrib by `name` would leave in its
    /// token; false if the tag has no attribute called `name`.
    bool Value(const wchar* text, uint32_t flags, const wchar* name, Span& out);
    /// ScanAttrib by name: the first attribute called `name`, its value (or
    /// name) left in `out`'s token. On failure `out.next` stands where a new
    /// attribute belongs, as after a failed ScanAttrib.
    bool Value(const TokenCursor& base, const wchar* name, TokenCursor& out);

    /// Keeps the index through a splice that put a new attribute at the end
    /// of the tag it holds, at `position`, where a failed Value left `next`,
    /// if a scan of the new text reads the same names up to there; the new
    /// one is then read when asked for. Otherwise the index stays stale for
    /// the new text `generation`, as after any splice.
    void Appended(uint64_t generation, int32_t position);

  private:
    // A name as ScanAttrib leaves it, and what a search by that name then
    // finds behind it: its value, or the name itself if it has none.
    struct Entry {
        int32_t origin, start, end, next; // the name
        int32_t valueStart, valueEnd, valueNext;
        uint32_t valueQuoted; // CursorQuoted or 0
        int32_t resume;       // where the next name's scan starts
        bool valuePlain;      // the quick scan saw no '&' in the value
        // The first units of the names in front of it, one bit per unit
        // modulo 64: a name whose bit isn't set has no namesake before it.
        uint64_t firstsBefore;
    };
    void NoteFirstUnit(const wchar* text, Entry& e); // sets firstsBefore, adds e's bit
    // Appends the next name; false at the end.
    bool ScanOn(const wchar* text, uint32_t flags);
    // ScanOn's general scan from `from`, for the entry it has just added.
    bool ScanOnByRules(const wchar* text, uint32_t flags, int32_t from, int32_t counter);
    // The first entry called `name`, scanning on as far as needed; null if none.
    const Entry* Find(const wchar* text, uint32_t flags, const wchar* name);
    // Find's search from the first name on.
    const Entry* FindByScan(const wchar* text, uint32_t flags, const wchar* name);
    // The usual attribute (name="value") read without the general scan; Unsure
    // leaves any other shape to it.
    enum class Step { Found, End, Unsure };
    static Step QuickScan(const wchar* text, int32_t from, Entry& e);

    uint64_t m_generation = 0; // 0 never matches: the engine counts from 1
    int32_t m_tagNext = -1;
    int32_t m_record = 0; // the element whose tag starts at m_tagNext, or 0
    bool m_complete = false;
    bool m_quickEnd = false;  // complete by the quick scan, at m_end
    bool m_quickNames = true; // every name so far read by the quick scan
    int32_t m_end = -1;       // once complete: where the scan stopped
    uint64_t m_firsts = 0;    // the first units of all names read, as in firstsBefore
    int32_t m_lastNamed = -1; // the last index Name gave, or -1
    std::vector<Entry> m_names;
};

} // namespace vetra::xml

#endif // VETRA_XML_ATTRIB_INDEX_H
