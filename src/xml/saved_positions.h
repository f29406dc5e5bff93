// saved_positions.h - the tables behind SavePos and RestorePos: 7 buckets of
// small arrays that grow 2, 14, 38, 86 entries, never rehashed.
//
// The engine owns one SavedTables holder for its whole life; the table in
// it lives from the first save or restore until the next parse.
#ifndef VETRA_XML_SAVED_POSITIONS_H
#define VETRA_XML_SAVED_POSITIONS_H

#include <cstdint>
#include <vector>

#include "xml/xml_types.h"

namespace vetra::xml {

/// SavedPosition::flags.
enum SavedFlag : uint32_t {
    SavedMain = 0x1,  // index is the main position; there was no child
    SavedChild = 0x2, // index is the child position
    SavedUsed = 0x4,  // the entry is occupied
    SavedLast = 0x8,  // the entry is the last of its array
};

struct SavedPosition {
    WideString name;    // the name it was saved under
    int32_t index = 0;  // record index; with neither position bit, the parent
    uint32_t flags = 0; // SavedFlag bits
};

/// A bucket array knows its length; occupied entries stand at its front.
using SavedBucket = std::vector<SavedPosition>;

struct SavedPositionTable {
    static constexpr int32_t kBuckets = 7;
    SavedBucket* buckets[kBuckets] = {}; // each null or an array
    int32_t bucketCount = kBuckets;
    ~SavedPositionTable();
};

/// The holder that m_pSavedTables points to: a null-terminated list of
/// tables, of which only the first is used. Null while none exists.
struct SavedTables {
    SavedPositionTable** list = nullptr;
    SavedPositionTable* Table() const { return list ? list[0] : nullptr; }
    /// Creates the list and an empty table if there is none.
    SavedPositionTable& Ensure();
    /// Destroys the table and the list.
    void Discard();
    /// Replaces this holder's table by a deep copy of `other`'s.
    void CopyFrom(const SavedTables& other);
    ~SavedTables() { Discard(); }
};

/// The bucket of a name: the sum of its units, modulo 7.
int32_t SavedBucketOf(const wchar* name);

} // namespace vetra::xml

#endif // VETRA_XML_SAVED_POSITIONS_H
