// text_escape.h - the border between plain values and document text: reference
// decoding with optional whitespace trimming, escaping, CDATA wrapping and the
// XML form of a single node.
//
// Only wide text. The entity table serves the decoder alone; the encoder
// writes the five texts of EscapeTexts and no other entity.
#ifndef VETRA_XML_TEXT_ESCAPE_H
#define VETRA_XML_TEXT_ESCAPE_H

#include <cstdint>
#include <string_view>

#include "xml/xml_types.h"

namespace vetra::xml {

/// The named entities as a hash table of packed rows: per bucket one text of
/// rows "<length digit><4-digit code><lower-case name>" side by side. The
/// bucket is the sum of the folded name's units modulo kEntityBuckets; where
/// two names fold alike, the capitalised one's row comes first.
constexpr int32_t kEntityBuckets = 130;
extern const wchar* const EntityTable[kEntityBuckets];

/// What the encoder writes for < & > " ' in this order.
constexpr std::u16string_view EscapeTexts[5] = {u"&lt;", u"&amp;", u"&gt;", u"&quot;", u"&apos;"};

/// Resolves named and numeric references in `length` characters of `text`
/// (-1: up to the NUL); an unresolvable one stays as written. A reference
/// begun inside the range may end beyond it, but never beyond the NUL, which
/// must exist. `flags` are document flags: DocTrimSpace and DocCollapseSpace.
WideString DecodeText(const wchar* text, int32_t length, uint32_t flags);
/// As DecodeText, appending to `out`; the whitespace flags act on the
/// appended piece alone.
void DecodeTextTo(const wchar* text, int32_t length, uint32_t flags, WideString& out);

/// As DecodeTextTo of `length` characters without whitespace flags, in one
/// pass, as long as no '<' stands in them: false if one does, with part of
/// the text appended to `out`.
bool DecodeTextUnlessMarkup(const wchar* text, int32_t length, WideString& out);

/// Escapes < & > (and with EditAttribText the quotes) of the NUL-terminated
/// `text`, which must not be null. With EditKeepRefs a well-formed reference
/// passes unchanged.
WideString EncodeText(const wchar* text, uint32_t flags);
/// As EncodeText, appending to `out`.
void EncodeTextTo(const wchar* text, uint32_t flags, WideString& out);

/// `text` as one CDATA section, split into several where it holds "]]>".
WideString EncodeCData(const wchar* text);

/// Sets `out` to the XML text of a node of `type` with inner text `text`.
/// False only for a CDATA text holding "]]>"; an unknown type leaves `out`
/// alone and succeeds.
bool FormatNode(int32_t type, const wchar* text, WideString& out);

} // namespace vetra::xml

#endif // VETRA_XML_TEXT_ESCAPE_H
