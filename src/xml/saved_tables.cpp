// saved_tables.cpp - life of the saved-position holder and its table:
// creation, destruction and deep copy. The save, restore and purge
// algorithms are in saved_positions.cpp.
#include "xml/saved_positions.h"

namespace vetra::xml {

SavedPositionTable::~SavedPositionTable() {
    for (SavedBucket*& bucket : buckets) {
        delete bucket;
        bucket = nullptr;
    }
}

SavedPositionTable& SavedTables::Ensure() {
    if (list == nullptr) {
        SavedPositionTable** fresh = new SavedPositionTable*[2];
        fresh[1] = nullptr;
        try {
            fresh[0] = new SavedPositionTable;
        } catch (...) {
            delete[] fresh;
            throw;
        }
        list = fresh;
    }
    return *list[0];
}

void SavedTables::Discard() {
    if (list == nullptr) return;
    for (SavedPositionTable** t = list; *t != nullptr; ++t)
        delete *t;
    delete[] list;
    list = nullptr;
}

void SavedTables::CopyFrom(const SavedTables& other) {
    if (this == &other) return;
    Discard();
    const SavedPositionTable* source = other.Table();
    if (source == nullptr) return;
    SavedPositionTable& table = Ensure();
    for (int32_t b = 0; b < SavedPositionTable::kBuckets; ++b)
        if (source->buckets[b] != nullptr) table.buckets[b] = new SavedBucket(*source->buckets[b]);
}

int32_t SavedBucketOf(const wchar* name) {
    uint32_t sum = 0;
    for (; *name != 0; ++name)
        sum += *name;
    return int32_t(sum % SavedPositionTable::kBuckets);
}

} // namespace vetra::xml
