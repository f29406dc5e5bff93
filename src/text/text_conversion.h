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

    WideString toEncoding;    // destination encoding, as CodePageFromName reads it
    WideString fromEncoding;  // source encoding
    const void* source;       // not owned
    int32_t sourceLength;     // in source units: bytes, UTF-16 units, or UTF-32 units
    int32_t destCapacity = 0; // in: units the destination holds; out: the result
    uint32_t lossy = 0;       // set when a character had no equivalent in the destination
};

/// Converts `conversion.source` to the encoding `toName` (null keeps the
/// record's `toEncoding`; a name the table lacks means the system's default
/// page, on either side). Returns the number of destination units (bytes,
/// UTF-16 units for "UTF-16", 32-bit units for "UTF-32"), which also goes
/// into `destCapacity`; 0 on failure, for an empty source, and for pairs no
/// way joins (UTF-16 to UTF-16, UTF-32 to anything but UTF-8 and UTF-16).
///
/// With `dest` null, or `destCapacity` 0, the call only measures, so the
/// usual pattern is a measuring call with the name, then a filling call with
/// null and a destination of the measured size. A filling call writes at most
/// `destCapacity` units and gives 0 if the text needs more (what `dest` then
/// holds is unspecified). `lossy` is cleared, then set if a character became
/// the page's default character, never for pages that hide loss
/// (CodePageHidesLoss) nor on the UTF-32 ways, which write `?` silently.
/// Safe on different records from several threads at once.
int32_t ConvertText(TextConversion& conversion, void* dest, const wchar* toName);

/// True if the `length` bytes may be taken for UTF-8 (lead bytes read
/// loosely). A sequence cut off by the block's end is no fault when
/// `moreFollows` is true.
bool TestUtf8Block(const unsigned char* bytes, int32_t length, bool moreFollows);

/// How many bytes at the end of the block that `conversion` describes
/// (`fromEncoding`, `source`, `sourceLength`) belong to a character cut off
/// by the block's end: in `tail` (bytes; for "UTF-16" 2 when the last unit is
/// a surrogate). UTF-8 is read backwards by the loose lead-byte rule;
/// multi-byte pages are searched by converting pieces of the last 40 bytes;
/// other pages give 0. False if no clean boundary was found (`tail` is then
/// 0). An empty name means the system's default page, which is read as UTF-8
/// where it is UTF-8 (the usual case on Linux); a name the table lacks counts
/// as a single-byte page. The record is used up by the call.
bool MeasureBrokenTail(TextConversion& conversion, int32_t& tail);

/// The platform calls behind ConvertText and MeasureBrokenTail, in one table
/// so that tests can watch them or make them fail. Not a hot path: one call
/// per conversion.
struct ConversionCalls {
    int32_t (*toWide)(uint32_t codePage, const char* bytes, int32_t length, char16_t* out,
                      int32_t capacity);
    int32_t (*fromWide)(uint32_t codePage, const char16_t* text, int32_t length, char* out,
                        int32_t capacity, bool* usedDefault);
    uint32_t (*systemCodePage)();
};

/// Puts `calls` in place of the platform's (null puts the platform's back)
/// and returns the table that was in place. For tests: not safe while any
/// conversion runs.
ConversionCalls SwapConversionCalls(const ConversionCalls* calls);

} // namespace vetra::text

#endif // VETRA_TEXT_TEXT_CONVERSION_H
