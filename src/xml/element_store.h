// element_store.h - ElementRecord, the fixed-size description of one element,
// and ElementStore, the segmented growing array that holds the records.
//
// The store only holds memory: it knows nothing of the tree the links
// describe. Taking and freeing records is the engine's (xml_engine.cpp).
#ifndef VETRA_XML_ELEMENT_STORE_H
#define VETRA_XML_ELEMENT_STORE_H

#include <cstdint>

#include "xml/xml_types.h"

namespace vetra::xml {

/// One element: where it lies in the text and how it hangs in the tree.
/// Eight 32-bit values; offsets count 16-bit units of the document text.
struct ElementRecord {
    static constexpr uint32_t kStartTagMask = 0x3FFFFF; // bits 0..21
    static constexpr uint32_t kEndTagMax = 0x3FF;       // 10 bits from bit 22
    static constexpr uint32_t kLevelMask = 0xFFFF;      // bits 0..15
    static constexpr uint32_t kFlagsMask = 0xFFFF0000;  // bits 16..31

    int32_t start;       // offset of the element's '<'
    int32_t length;      // from '<' to the end of the end tag (or of the start tag)
    uint32_t tagLengths; // startTagChars | endTagChars << 22
    uint32_t levelFlags; // level | ElemFlag bits
    int32_t parent;      // 0 at document level
    int32_t firstChild;  // 0 if none
    int32_t nextSibling; // 0 after the last; in a freed record, the next freed one
    int32_t prevSibling; // in the first child: the last sibling (itself if alone)

    int32_t StartTagChars() const { return int32_t(tagLengths & kStartTagMask); }
    int32_t EndTagChars() const { return int32_t(tagLengths >> 22); }
    // Setters keep each value inside its own bit-field: a value too large
    // for the field saturates rather than spilling into the neighbour.
    void SetStartTagChars(int32_t n) {
        uint32_t v = n < 0 ? 0 : uint32_t(n) > kStartTagMask ? kStartTagMask : uint32_t(n);
        tagLengths = (tagLengths & ~kStartTagMask) | v;
    }
    void SetEndTagChars(int32_t n) {
        uint32_t v = n < 0 ? 0 : uint32_t(n) > kEndTagMax ? kEndTagMax : uint32_t(n);
        tagLengths = (tagLengths & kStartTagMask) | (v << 22);
    }
    int32_t Level() const { return int32_t(levelFlags & kLevelMask); }
    void SetLevel(int32_t n) {
        uint32_t v = n < 0 ? 0 : uint32_t(n) > kLevelMask ? kLevelMask : uint32_t(n);
        levelFlags = (levelFlags & kFlagsMask) | v;
    }
    uint32_t Flags() const { return levelFlags & kFlagsMask; }
    bool Has(uint32_t flag) const { return (levelFlags & flag) != 0; }
    void Set(uint32_t flag) { levelFlags |= flag; }
    void Clear(uint32_t flag) { levelFlags &= ~flag; }
    /// Characters between the start tag and the end tag.
    int32_t ContentLength() const { return length - StartTagChars() - EndTagChars(); }
    int32_t ContentStart() const { return start + StartTagChars(); }
};
static_assert(sizeof(ElementRecord) == 32, "a record is eight 32-bit values");

/// The records, in segments of 65,536; record i lies in segment i >> 16 at
/// place i & 0xFFFF. Full segments never move, so growth copies at most the
/// partly filled last segment.
class ElementStore {
  public:
    static constexpr int32_t kSegmentBits = 16;
    static constexpr int32_t kSegmentSize = 1 << kSegmentBits;

    ElementStore() = default;
    ~ElementStore() { Release(); }
    ElementStore(const ElementStore&) = delete;
    ElementStore& operator=(const ElementStore&) = delete;

    /// The record at `index`; no check. Void after anything that may Grow.
    ElementRecord& At(int32_t index) const {
        return m_pSegments[index >> kSegmentBits][index & (kSegmentSize - 1)];
    }
    /// Enlarges the store towards `newSize`, adding at most one segment per
    /// call. Callers only ever enlarge. Raises std::bad_alloc.
    void Grow(int32_t newSize);
    /// Frees all segments and the table.
    void Release();

    int32_t Size() const { return m_size; }
    int32_t TableCapacity() const { return m_tableCapacity; }
    /// Records held by segment `segment` (for tests).
    int32_t SegmentCount() const { return m_size == 0 ? 0 : ((m_size - 1) >> kSegmentBits) + 1; }

  private:
    ElementRecord** m_pSegments = nullptr; // null while the store is empty
    int32_t m_size = 0;                    // records in all segments together
    int32_t m_tableCapacity = 0;           // slots in the segment table
};

} // namespace vetra::xml

#endif // VETRA_XML_ELEMENT_STORE_H
