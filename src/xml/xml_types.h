// xml_types.h - the engine's shared vocabulary: the wide string, node types
// and every flag word of the XML engine, each bit named once.
//
// Holds no code. The record layout is in element_store.h, the scanner's
// state in token.h.
#ifndef VETRA_XML_TYPES_H
#define VETRA_XML_TYPES_H

#include <cstdint>
#include <string>

namespace vetra::xml {

/// One UTF-16 code unit of document text.
using wchar = char16_t;
/// Document text, names and values: 16-bit units, null-terminated.
using WideString = std::u16string;

/// Node types, which are also the results of ScanNode.
enum NodeType : int32_t {
    ScanEnd = -2,         // nothing: the end of the text
    ScanError = -1,       // a piece of malformed tag text
    ScanEndTag = 0,       // an end tag
    NodeElement = 1,      // a start tag or empty-element tag
    NodeText = 2,         // a run of text that isn't only whitespace
    NodeWhitespace = 4,   // a run of whitespace
    NodeCData = 8,        // a CDATA section
    NodeProcessing = 16,  // a processing instruction
    NodeComment = 32,     // a comment
    NodeDocType = 64,     // a document type declaration
    NodeLoneEndTag = 128, // a current node that is a stray end tag (never scanned)
};

/// The document flag word, XmlEngine::m_docFlags.
enum DocFlag : uint32_t {
    DocUtf16Le = 0x1,         // the file is UTF-16 LE with a byte-order mark
    DocUtf8Bom = 0x4,         // the file has a UTF-8 byte-order mark
    DocIgnoreCase = 0x8,      // names compare without regard to ASCII case
    DocReadStream = 0x10,     // read-stream mode (never entered in this library)
    DocWriteStream = 0x20,    // write-stream mode (never entered in this library)
    DocAppend = 0x40,         // file opened for appending (file operations only)
    DocUtf16Be = 0x80,        // the file is UTF-16 BE with a byte-order mark
    DocTrimSpace = 0x100,     // decoded values lose outer whitespace
    DocCollapseSpace = 0x200, // ... and inner runs become one space
};
constexpr uint32_t DocStreamModes = DocReadStream | DocWriteStream;

/// Element flags, in the upper half of an ElementRecord's fourth word.
enum ElemFlag : uint32_t {
    ElemFreed = 0x20000,        // the record was given back; the only bit then set
    ElemFirstSibling = 0x80000, // first child of its parent
    ElemUnended = 0x100000,     // no end tag, and not an empty-element tag
    ElemFaultInside = 0x200000, // a fault or lone end tag within the content
    ElemIllFormed = 0x800000,   // on the record a parse started from: text ill-formed
};

/// Editing flags, given to the element and data writers and to EncodeText.
enum EditFlag : uint32_t {
    EditCData = 0x1,             // the value becomes a CDATA section
    EditNoLineEnds = 0x2,        // no line end is written
    EditSpacedSlash = 0x4,       // an empty element ends in " />"
    EditKeepRefs = 0x8,          // well-formed references in the value stay
    EditNoEndTag = 0x10,         // a start tag without end tag; a value is refused
    EditAttribText = 0x100,      // quotes are escaped too
    EditReplaceContent = 0x1000, // the text replaces the parent's whole content
    EditInsertBefore = 0x2000,   // before the reference element, not after it
    EditChild = 0x4000,          // work on the child level
};

/// TokenCursor::flags: the current token stood in quotes.
constexpr uint32_t CursorQuoted = 0x8000;
/// NodeToken::flags: the start tag ends in "/>".
constexpr uint32_t NodeEmptyTag = 0x10000;

} // namespace vetra::xml

#endif // VETRA_XML_TYPES_H
