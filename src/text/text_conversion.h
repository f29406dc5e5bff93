// text_conversion.h - moving text between UTF-16 and any named encoding, and
// the two questions a reader of blocks asks: is this block UTF-8, and does
// it end in the middle of a character.
//
// Every conversion is described by one TextConversion and made by
// ConvertText, which picks one of seven ways from the two names: four made
// by hand (to and from UTF-32), the others through the platform's converter.
// Whole texts only; no byte-order mark is added or removed.
#ifndef VETRA_TEXT_TEXT_CONVERSION_H
#define VETRA_TEXT_TEXT_CONVERSION_H

#include <cstdint>

#include "xml/xml_types.h"

namespace vetra::text {

using xml::wchar;
using xml::WideString;

/// One conversion: its names, its source, and the destination's room.
struct TextConversion {
    TextConversion(const wchar* from, const void* src, int32_t length)
        : fromEncoding(from), source(src), sourceLength(length) {}

    WideString toEncoding;   // destination encoding, as CodePageFromName reads it
    WideString fromEncoding; // source encoding
    const void* source;      // not owned
    int32_t sourceLength;    // in source units: bytes, UTF-16 units, or UTF-32 units
    int32_t destCapacity = 0; // in: units the destination holds; out: the result
    uint32_t lossy = 0;       // set when a character had no equivalent in the destination
};

/// Converts `conversion.source` to the encoding `toName` (null keeps the
/// record's `toEncoding`). Returns the number of destination units (bytes,
/// UTF-16 units for "UTF-16", 32-bit units for UTF-32), which also goes into
/// `destCapacity`; 0 on failure. With `dest` null (and, on the platform's
/// ways, `destCapacity` 0) it only measures, so the usual pattern is a
/// measuring call with the name, then a filling call with null.
int32_t ConvertText(TextConversion& conversion, void* dest, const wchar* toName);

/// True if the `length` bytes may be taken for UTF-8 (lead bytes read
/// loosely). A sequence cut off by the block's end is no fault when
/// `moreFollows` is true.
bool TestUtf8Block(const unsigned char* bytes, int32_t length, bool moreFollows);

/// How many bytes at the end of the block that `conversion` describes
/// (`fromEncoding`, `source`, `sourceLength`) belong to a character cut off
/// by the block's end: in `tail`. False if no clean boundary was found. The
/// record is used up by the call.
bool MeasureBrokenTail(TextConversion& conversion, int32_t& tail);

} // namespace vetra::text

#endif // VETRA_TEXT_TEXT_CONVERSION_H
