// element_store.cpp - growth and release of the segmented record array.
//
// A new segment's memory is not cleared: whoever takes a record writes
// every field of it.
#include "xml/element_store.h"

#include <cstring>

namespace vetra::xml {

void ElementStore::Grow(int32_t newSize) {
    int32_t lastSegment = m_size == 0 ? 0 : (m_size - 1) >> kSegmentBits;
    int32_t targetSegment = (newSize - 1) >> kSegmentBits;
    // One call adds at most one segment; TakeRecord grows again when full.
    if (targetSegment > lastSegment + 1) {
        targetSegment = lastSegment + 1;
        newSize = (lastSegment + 2) << kSegmentBits;
    }
    if (m_tableCapacity <= targetSegment) {
        int32_t capacity = targetSegment * 2 + 4;
        ElementRecord** table = new ElementRecord*[capacity];
        int32_t used = SegmentCount();
        for (int32_t i = 0; i < used; ++i)
            table[i] = m_pSegments[i];
        delete[] m_pSegments;
        m_pSegments = table;
        m_tableCapacity = capacity;
    }
    int32_t lastCount = m_size - (lastSegment << kSegmentBits);
    if (lastSegment < targetSegment && lastCount < kSegmentSize) {
        // Fill the partial last segment up to a whole one before adding the next.
        ElementRecord* full = new ElementRecord[kSegmentSize];
        if (lastCount != 0) {
            std::memcpy(full, m_pSegments[lastSegment], size_t(lastCount) * sizeof(ElementRecord));
            delete[] m_pSegments[lastSegment];
        }
        m_pSegments[lastSegment] = full;
    }
    ElementRecord* segment = new ElementRecord[size_t(newSize - (targetSegment << kSegmentBits))];
    if (targetSegment == lastSegment && lastCount != 0) {
        std::memcpy(segment, m_pSegments[lastSegment], size_t(lastCount) * sizeof(ElementRecord));
        delete[] m_pSegments[lastSegment];
    }
    m_pSegments[targetSegment] = segment;
    m_size = newSize;
}

void ElementStore::Release() {
    int32_t used = SegmentCount();
    for (int32_t i = 0; i < used; ++i)
        delete[] m_pSegments[i];
    delete[] m_pSegments;
    m_pSegments = nullptr;
    m_size = 0;
    m_tableCapacity = 0;
}

} // namespace vetra::xml
