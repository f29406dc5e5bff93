// document_bytes.h - a document set from bytes in any code page, converted
// by the platform layer straight into the text the engine keeps.
//
// This is the step that turns a block the file reader has read into a
// document; it doesn't read files or look for byte-order marks itself.
#ifndef VETRA_TEXT_DOCUMENT_BYTES_H
#define VETRA_TEXT_DOCUMENT_BYTES_H

#include <cstdint>

#include "xml/xml_engine.h"

namespace vetra::text {

/// Converts `length` bytes of code page `codePage` (65001 for UTF-8) into
/// the engine's text, without an intermediate copy, and parses it. Returns
/// what SetDocText returns; if the bytes can't be converted, the document
/// becomes empty and the result is false.
bool SetDocBytes(xml::XmlEngine& engine, uint32_t codePage, const char* bytes, int32_t length);

} // namespace vetra::text

#endif // VETRA_TEXT_DOCUMENT_BYTES_H
