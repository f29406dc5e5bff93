// xml_engine.h - XmlEngine, the internal document behind CVTXmlParser: one
// UTF-16 text, a result log, the position triple and the element records.
//
// This header is the engine's table of contents. Each group of operations
// lives in its own file, named in the group's heading. The engine is not
// exported; tests reach it through the internal library target.
#ifndef VETRA_XML_ENGINE_H
#define VETRA_XML_ENGINE_H

#include <cstdint>

#include "xml/attrib_index.h"
#include "xml/doc_text.h"
#include "xml/element_store.h"
#include "xml/token.h"
#include "xml/xml_types.h"

namespace vetra::xml {

struct SavedTables; // saved_positions.cpp

/// A parsed element path, made for one search (path_query.cpp).
struct PathQuery {
    enum Kind : int32_t {
        PathInvalid = -1, // failed to parse: the search fails
        PathAny = 0,      // null or empty: any next element
        PathRelative = 1, // begins with a name: the next element of that name
        PathAbsolute = 2, // begins with '/': the search fails
        PathAnywhere = 3, // begins with "//": the search fails
    };
    int32_t kind = PathAny;
    const wchar* text = nullptr; // the path, or null
    int32_t position = 0;        // offset of the first step in `text`
};

/// Validates and classifies `query.text`; on success `position` is the
/// offset of the first step. False if the path doesn't parse: `kind` is then
/// left as the head classified it, and the caller sets it to PathInvalid.
bool ParsePath(PathQuery& query);

/// What a caller hands to SpliceElement (element_splice.cpp).
/// The text an edit splices in, built in the engine's scratch string so that
/// its memory serves edit after edit: emptied when the edit takes it, and
/// given back at the end of the edit if it has grown large.
struct ScratchText {
    explicit ScratchText(WideString& buffer) : text(buffer) { text.clear(); }
    ~ScratchText() {
        if (text.capacity() > 4096) WideString().swap(text);
    }
    ScratchText(const ScratchText&) = delete;
    ScratchText& operator=(const ScratchText&) = delete;
    WideString& text;
};

struct ElementSplice : ScratchText {
    using ScratchText::ScratchText;
    int32_t start = 0;  // out: offset of the new text's element after the splice
    int32_t length = 0; // 0 throughout this library
    uint32_t flags = 0; // editing flags
    // text, in: the new text; out: the replacement that went in
    // The name of an empty parent, which the splice writes into its new end
    // tag, once EndTagFits has read it from the text: length -1 until then.
    const wchar* parentName = nullptr;
    int32_t parentNameLength = -1;
    // The text begins with what opens an empty parent (">" and a line end),
    // written by the caller before the element rather than put in front of it.
    bool openerWritten = false;
};

class XmlEngine {
  public:
    // --- Life (xml_engine.cpp) ---------------------------------------------
    /// The empty state, then SetDocText(text). Raises std::bad_alloc.
    explicit XmlEngine(const wchar* text = nullptr);
    ~XmlEngine();
    XmlEngine(const XmlEngine&) = delete;
    XmlEngine& operator=(const XmlEngine&) = delete;
    /// Makes this engine an independent copy of `other`: text, log, flags,
    /// records, position and saved positions.
    void CopyFrom(const XmlEngine& other);

    /// Sets the document text (null releases text and store) and parses it.
    /// False if a stream mode is set (nothing changes) or the text isn't
    /// well-formed.
    bool SetDocText(const wchar* text);
    /// As SetDocText, taking over `text` without copying it.
    bool SetDocText(DocText&& text);
    /// Replaces `count` characters at `position`; the only way editing
    /// changes the text. Reserves half again plus 128 when it must grow.
    void SpliceDoc(int32_t position, int32_t count, const WideString& replacement);
    void SpliceDoc(int32_t position, int32_t count, const wchar* replacement, int32_t length);

    // --- Records (xml_engine.cpp) ------------------------------------------
    ElementRecord& Rec(int32_t index) const { return m_pStore->At(index); }
    /// The next record never handed out; grows the store by half when full.
    int32_t TakeRecord() {
        if (m_nextRecord == m_pStore->Size()) GrowForRecord();
        return m_nextRecord++;
    }
    /// Chains the record on the freed list; it stays out of use until the next parse.
    void FreeRecord(int32_t index);

    // --- Parsing (document_parser.cpp) -------------------------------------
    /// Parses m_docText into the store, resets the position and judges the
    /// document: true only if well-formed with exactly one root element.
    bool ParseDocument();
    /// Builds the elements of the cursor's text as children of `startRecord`;
    /// gives the first record taken, or 0.
    int32_t ParseElements(int32_t startRecord, TokenCursor& cursor);

    // --- Navigation (navigation.cpp) ---------------------------------------
    int FindElem(const wchar* path);
    int FindChildElem(const wchar* path);
    int IntoElem();
    int OutOfElem();
    void ResetPos();
    void ResetMainPos();
    void ResetChildPos();
    /// The next sibling after `after` (or the first child of `parent`) that
    /// matches the query; 0 if none.
    int32_t FindSibling(int32_t parent, int32_t after, const PathQuery& query);

    // --- Names (names.cpp) -------------------------------------------------
    // Each read sets `out` (reusing its memory); the by-value forms wrap them.
    void ElementName(int32_t index, WideString& out) const;
    /// The element's name where it stands in the text: its length, and its
    /// first character in `name`; 0 if it has none.
    int32_t ElementNameSpan(int32_t index, const wchar*& name) const;
    void NodeName(WideString& out) const;
    void AttribName(int32_t attribIndex, WideString& out) const;
    WideString ElementName(int32_t index) const { return Read(&XmlEngine::ElementName, index); }
    WideString NodeName() const {
        WideString out;
        NodeName(out);
        return out;
    }
    WideString AttribName(int32_t attribIndex) const {
        return Read(&XmlEngine::AttribName, attribIndex);
    }

    // --- Values (values.cpp) -----------------------------------------------
    void ElementData(int32_t index, WideString& out) const;
    void AttribValue(int32_t index, const wchar* name, WideString& out) const;
    void ElementSubDoc(int32_t index, WideString& out) const;
    WideString ElementData(int32_t index) const { return Read(&XmlEngine::ElementData, index); }
    WideString AttribValue(int32_t index, const wchar* name) const {
        WideString out;
        AttribValue(index, name, out);
        return out;
    }
    WideString ElementSubDoc(int32_t index) const { return Read(&XmlEngine::ElementSubDoc, index); }
    /// Where the text of an element ends when it is taken out whole: behind
    /// the whitespace that follows it if a tag or the end of the text comes
    /// next, else at the element's own end.
    int32_t ElementTextEnd(int32_t index) const;
    /// Where a scan of the attributes at `index` starts: behind the '<' of
    /// an element's start tag, or behind the "<?" of a current processing
    /// instruction at the main position; -1 if there is neither.
    int32_t TagScanStart(int32_t index) const {
        if (index != 0 && m_nodeType == NodeElement) return Rec(index).start + 1;
        if (index == m_mainIndex && m_nodeLength != 0 && m_nodeType == NodeProcessing)
            return m_nodeOffset + 2;
        return -1;
    }
    /// Sets the attribute index to the tag at `index`, so that names are
    /// read one after another without rescanning it, and gives its
    /// TagScanStart. An element's tag that the index holds already is known
    /// by its record, which then isn't read.
    int32_t SelectTag(int32_t index) const {
        const int32_t record = index != 0 && m_nodeType == NodeElement ? index : 0;
        const int32_t held = m_attribIndex.Held(m_textGeneration, record);
        if (held >= 0) return held;
        const int32_t start = TagScanStart(index);
        if (start >= 0) m_attribIndex.Select(m_textGeneration, start, record);
        return start;
    }

    // --- Element editing (element_edit.cpp, element_splice.cpp, offsets.cpp)
    bool AddElement(const wchar* name, const wchar* value, uint32_t flags);
    bool AddSubDocument(const wchar* text, uint32_t flags);
    int32_t RemoveElement(int32_t index);
    int RemoveElem();
    int RemoveChildElem();
    int32_t SpliceElement(int32_t parent, int32_t& before, ElementSplice& splice);
    void LinkElement(int32_t parent, int32_t previous, int32_t index);
    int32_t UnlinkElement(int32_t index);
    void FreeElements(int32_t index);
    void AdjustOffsets(int32_t index, int32_t delta, bool skipChildren);
    void AdjustForText(int32_t parent, int32_t previous, int32_t delta);
    /// False when `parent` is an empty element whose end tag, once opened,
    /// would be too long for its record: edits that would open it refuse.
    /// The name it reads is kept in `splice` for SpliceElement.
    bool EndTagFits(int32_t parent, ElementSplice& splice) const;

    // --- Attribute and data editing (attrib_edit.cpp, data_edit.cpp) -------
    bool WriteAttrib(int32_t index, const wchar* name, const wchar* value, uint32_t flags);
    bool WriteData(int32_t index, const wchar* text, uint32_t flags);

    // --- Saved positions (saved_positions.cpp) -----------------------------
    bool SavePosition(const wchar* name);
    bool RestorePosition(const wchar* name);
    void PurgeSavedPositions();
    void DiscardSavedPositions();

    // --- Fields, in the documented order -----------------------------------
    DocText m_docText;                     // the document; record offsets count its units
    WideString m_resultLog;                // what parsing and file operations found
    int32_t m_parentIndex = 0;             // the position triple: parent,
    int32_t m_mainIndex = 0;               //   main element,
    int32_t m_childIndex = 0;              //   and child of the main element
    int32_t m_nextRecord = 1;              // next record never handed out
    int32_t m_freedHead = 0;               // chain of freed records
    int32_t m_nodeType = 0;                // 1 on an element, 0 on nothing, else a NodeType
    int32_t m_nodeOffset = 0;              // a current non-element node: offset,
    int32_t m_nodeLength = 0;              //   and length (always 0 in this library)
    uint32_t m_docFlags = 0;               // DocFlag bits
    void* m_pStream = nullptr;             // stream context; always null here
    SavedTables* m_pSavedTables = nullptr; // owned
    ElementStore* m_pStore = nullptr;      // owned

    // Not part of the document: a count of text changes, and the attribute
    // names of the last tag read, valid for one count.
    uint64_t m_textGeneration = 1;
    mutable AttribIndex m_attribIndex;
    WideString m_editText; // the scratch string behind ScratchText

  private:
    void GrowForRecord();
    WideString Read(void (XmlEngine::*read)(int32_t, WideString&) const, int32_t arg) const {
        WideString out;
        (this->*read)(arg, out);
        return out;
    }
    /// Sets the node fields after a move: on an element if main isn't 0.
    void SettleNode() {
        m_nodeType = m_mainIndex != 0 ? NodeElement : 0;
        m_nodeOffset = 0;
        m_nodeLength = 0;
    }
};

} // namespace vetra::xml

#endif // VETRA_XML_ENGINE_H
