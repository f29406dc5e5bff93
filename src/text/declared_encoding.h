// declared_encoding.h - the encoding a document names for itself, in an XML
// declaration or in an HTML meta element.
//
// A reader only: nothing in the library adds, changes or removes a
// declaration.
#ifndef VETRA_TEXT_DECLARED_ENCODING_H
#define VETRA_TEXT_DECLARED_ENCODING_H

#include "xml/xml_types.h"

namespace vetra::text {

/// The encoding name that `text` (null-terminated, possibly a cut-off head
/// of a document) declares, as written; empty if it declares none.
xml::WideString FindDeclaredEncoding(const xml::wchar* text);

} // namespace vetra::text

#endif // VETRA_TEXT_DECLARED_ENCODING_H
