// xml_engine.cpp - the engine's life: construction, destruction, copying,
// setting the text, the text splice, and taking and freeing records.
//
// Parsing is in document_parser.cpp; everything that reads or edits lives
// in the files named in xml_engine.h.
#include "xml/xml_engine.h"

#include <cstring>
#include <utility>

#include "xml/run_search.h"
#include "xml/saved_positions.h"

namespace vetra::xml {

XmlEngine::XmlEngine(const wchar* text) {
    m_pSavedTables = new SavedTables;
    try {
        m_pStore = new ElementStore;
        SetDocText(text);
    } catch (...) {
        delete m_pStore;
        delete m_pSavedTables;
        throw;
    }
}

XmlEngine::~XmlEngine() {
    delete m_pSavedTables;
    delete m_pStore;
}

void XmlEngine::CopyFrom(const XmlEngine& other) {
    if (this == &other) return;
    // Copy into locals first, so that a failed allocation leaves this
    // engine as it was.
    DocText text = other.m_docText;
    WideString log = other.m_resultLog;
    ElementStore* store = new ElementStore;
    try {
        int32_t used = other.m_nextRecord;
        while (store->Size() < other.m_pStore->Size())
            store->Grow(other.m_pStore->Size());
        for (int32_t i = 0; i < used; ++i)
            store->At(i) = other.m_pStore->At(i);
        m_pSavedTables->CopyFrom(*other.m_pSavedTables);
    } catch (...) {
        delete store;
        throw;
    }
    delete m_pStore;
    m_pStore = store;
    m_docText.swap(text);
    m_resultLog.swap(log);
    m_parentIndex = other.m_parentIndex;
    m_mainIndex = other.m_mainIndex;
    m_childIndex = other.m_childIndex;
    m_nextRecord = other.m_nextRecord;
    m_freedHead = other.m_freedHead;
    m_nodeType = other.m_nodeType;
    m_nodeOffset = other.m_nodeOffset;
    m_nodeLength = other.m_nodeLength;
    m_docFlags = other.m_docFlags;
    ++m_textGeneration;
}

bool XmlEngine::SetDocText(const wchar* text) {
    if (m_docFlags & DocStreamModes) return false;
    if (text != nullptr) {
        // assign() copes with a text that lies inside m_docText itself.
        m_docText.assign(text, size_t(FindAny(text, 0, 0, 0, 0)));
    } else {
        DocText().swap(m_docText);
        m_pStore->Release();
    }
    m_resultLog.clear();
    ++m_textGeneration;
    return ParseDocument();
}

bool XmlEngine::SetDocText(DocText&& text) {
    if (m_docFlags & DocStreamModes) return false;
    m_docText = std::move(text);
    m_resultLog.clear();
    ++m_textGeneration;
    return ParseDocument();
}

void XmlEngine::SpliceDoc(int32_t position, int32_t count, const wchar* replacement,
                          int32_t length) {
    ++m_textGeneration;
    int32_t newLength = int32_t(m_docText.size()) + length - count;
    if (size_t(newLength) > m_docText.capacity())
        m_docText.reserve(size_t(newLength) + 128 + size_t(newLength / 2));
    m_docText.replace(size_t(position), size_t(count), replacement, size_t(length));
}

void XmlEngine::SpliceDoc(int32_t position, int32_t count, const WideString& replacement) {
    SpliceDoc(position, count, replacement.data(), int32_t(replacement.size()));
}

void XmlEngine::GrowForRecord() {
    // The store grows by half of what it holds.
    int32_t wanted = m_nextRecord + (m_nextRecord >> 1);
    if (m_pStore->Size() < wanted) m_pStore->Grow(wanted);
}

void XmlEngine::FreeRecord(int32_t index) {
    ElementRecord& r = Rec(index);
    r.nextSibling = m_freedHead;
    r.levelFlags = ElemFreed;
    m_freedHead = index;
}

} // namespace vetra::xml
