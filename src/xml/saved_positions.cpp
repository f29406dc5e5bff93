// saved_positions.cpp - SavePos, RestorePos and the purge after a removal.
//
// A saved position is a record index plus which level it names; parent and
// main are worked out from the records when it is restored, so text moving
// under it needs no correction. Only the removal of its element ends it.
#include "xml/saved_positions.h"

#include "xml/xml_engine.h"

namespace vetra::xml {

namespace {

void WriteEntry(SavedPosition& entry, const wchar* name, int32_t index, uint32_t bits) {
    entry.flags = (entry.flags & SavedLast) | bits;
    entry.name.assign(name);
    entry.index = index;
}

bool IsUsed(const SavedPosition& entry) {
    return (entry.flags & SavedUsed) != 0;
}

} // namespace

void XmlEngine::DiscardSavedPositions() {
    m_pSavedTables->Discard();
}

bool XmlEngine::SavePosition(const wchar* name) {
    if ((m_docFlags & DocStreamModes) || name == nullptr) return false;
    SavedPositionTable& table = m_pSavedTables->Ensure();

    int32_t index = m_parentIndex;
    uint32_t bits = SavedUsed;
    if (m_childIndex != 0) {
        index = m_childIndex;
        bits |= SavedChild;
    } else if (m_mainIndex != 0) {
        index = m_mainIndex;
        bits |= SavedMain;
    }

    SavedBucket*& bucket = table.buckets[SavedBucketOf(name)];
    if (bucket == nullptr) {
        bucket = new SavedBucket(2);
        (*bucket)[1].flags = SavedLast;
        WriteEntry((*bucket)[0], name, index, bits);
        return true;
    }
    SavedBucket& entries = *bucket;
    if (!IsUsed(entries[0])) {
        WriteEntry(entries[0], name, index, bits);
        return true;
    }
    size_t i = 0;
    for (;; ++i) {
        if (entries[i].name == name) {
            WriteEntry(entries[i], name, index, bits);
            return true;
        }
        if (entries[i].flags & SavedLast) break;
        if (!IsUsed(entries[i + 1])) {
            WriteEntry(entries[i + 1], name, index, bits);
            return true;
        }
    }
    // Full: grow to 2i + 12 entries (2, 14, 38, 86, ...). The array in use
    // is replaced only once the copy exists.
    SavedBucket* larger = new SavedBucket(2 * i + 12);
    for (size_t k = 0; k <= i; ++k)
        (*larger)[k] = entries[k];
    (*larger)[i].flags &= ~SavedLast;
    larger->back().flags = SavedLast;
    WriteEntry((*larger)[i + 1], name, index, bits);
    delete bucket;
    bucket = larger;
    return true;
}

bool XmlEngine::RestorePosition(const wchar* name) {
    if ((m_docFlags & DocStreamModes) || name == nullptr) return false;
    SavedPositionTable& table = m_pSavedTables->Ensure();
    const SavedBucket* bucket = table.buckets[SavedBucketOf(name)];
    if (bucket == nullptr || !IsUsed((*bucket)[0])) return false;
    const SavedBucket& entries = *bucket;
    size_t i = 0;
    while (entries[i].name != name) {
        if ((entries[i].flags & SavedLast) || !IsUsed(entries[i + 1])) return false;
        ++i;
    }
    const SavedPosition& found = entries[i];
    if (found.flags & SavedChild) {
        m_childIndex = found.index;
        m_mainIndex = Rec(m_childIndex).parent;
        m_parentIndex = Rec(m_mainIndex).parent;
    } else if (found.flags & SavedMain) {
        m_childIndex = 0;
        m_mainIndex = found.index;
        m_parentIndex = Rec(m_mainIndex).parent;
    } else {
        m_parentIndex = found.index;
        m_mainIndex = 0;
        m_childIndex = 0;
    }
    SettleNode();
    return true;
}

void XmlEngine::PurgeSavedPositions() {
    SavedPositionTable* table = m_pSavedTables->Table();
    if (table == nullptr) return;
    for (SavedBucket* bucket : table->buckets) {
        if (bucket == nullptr) continue;
        SavedBucket& entries = *bucket;
        size_t write = 0;
        for (size_t i = 0; i < entries.size(); ++i) {
            SavedPosition& entry = entries[i];
            if (IsUsed(entry) && !Rec(entry.index).Has(ElemFreed)) {
                if (write < i) {
                    entries[write].name = entry.name;
                    entries[write].index = entry.index;
                    entries[write].flags =
                        (entries[write].flags & SavedLast) | (entry.flags & ~SavedLast);
                }
                ++write;
            }
            if (entry.flags & SavedLast) break;
        }
        for (size_t k = write; k < entries.size(); ++k)
            entries[k].flags &= ~SavedUsed;
    }
}

} // namespace vetra::xml
